// Transforms obey the laws of maps: order of application, inverses, bounds.
#include "platform/foundation/Geometry.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

namespace {

using namespace foundation;

class Random {
public:
    double within(double low, double high)
    {
        return std::uniform_real_distribution(low, high)(_engine);
    }
    Point point() { return {within(-100, 100), within(-100, 100)}; }
    // Invertible, of moderate size.
    AffineTransform transform()
    {
        for (;;) {
            const AffineTransform t{within(-3, 3), within(-3, 3),   within(-3, 3),
                                    within(-3, 3), within(-50, 50), within(-50, 50)};
            if (std::abs(t.determinant()) > 0.1)
                return t;
        }
    }

private:
    std::mt19937 _engine{7};
};

void expectNear(Point a, Point b, double tolerance)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
}

TEST(AffineTransform, FollowedByAppliesTheReceiverFirst)
{
    expectNear(AffineTransform::scaling(2, 3)
                   .followedBy(AffineTransform::translation(10, 20))
                   .apply({1, 1}),
               {12, 23}, 0);
    Random random;
    for (int i = 0; i < 500; ++i) {
        const AffineTransform a = random.transform(), b = random.transform();
        const Point p = random.point();
        expectNear(a.followedBy(b).apply(p), b.apply(a.apply(p)), 1e-9);
        EXPECT_NEAR(a.followedBy(b).determinant(), a.determinant() * b.determinant(), 1e-9);
    }
}

TEST(AffineTransform, FollowedByIsAssociative)
{
    Random random;
    for (int i = 0; i < 500; ++i) {
        const AffineTransform a = random.transform(), b = random.transform(),
                              c = random.transform();
        const Point p = random.point();
        expectNear(a.followedBy(b).followedBy(c).apply(p), a.followedBy(b.followedBy(c)).apply(p),
                   1e-7);
    }
}

TEST(AffineTransform, InverseUndoesFromBothSides)
{
    Random random;
    for (int i = 0; i < 500; ++i) {
        const AffineTransform t = random.transform();
        const Point p = random.point();
        expectNear(t.followedBy(t.inverse()).apply(p), p, 1e-8);
        expectNear(t.inverse().followedBy(t).apply(p), p, 1e-8);
    }
}

TEST(AffineTransform, RotatesCounterClockwise)
{
    expectNear(AffineTransform::rotation(std::numbers::pi / 2).apply({1, 0}), {0, 1}, 1e-15);
}

TEST(AffineTransform, KnowsWholePixelTranslations)
{
    EXPECT_TRUE(AffineTransform::translation(3, -4).isWholePixelTranslation());
    EXPECT_FALSE(AffineTransform::translation(3.5, 0).isWholePixelTranslation());
    EXPECT_FALSE(AffineTransform::scaling(2, 1).isWholePixelTranslation());
    EXPECT_FALSE(AffineTransform::translation(1e12, 0).isWholePixelTranslation());
    EXPECT_FALSE(AffineTransform::translation(std::nan(""), 0).isWholePixelTranslation());
}

TEST(Rect, BoundsHoldEveryTransformedPointAndTouchTheCorners)
{
    Random random;
    for (int i = 0; i < 200; ++i) {
        const AffineTransform t = random.transform();
        const Point origin = random.point();
        const Rect r{origin.x, origin.y, random.within(0.1, 50), random.within(0.1, 50)};
        const Rect bounds = boundsOf(t, r);
        double left = 1e9, top = -1e9;
        for (double u = 0; u <= 1; u += 0.25) {
            for (double v = 0; v <= 1; v += 0.25) {
                const Point p = t.apply({r.x + u * r.width, r.y + v * r.height});
                EXPECT_GE(p.x, bounds.x - 1e-9);
                EXPECT_LE(p.x, bounds.right() + 1e-9);
                EXPECT_GE(p.y, bounds.y - 1e-9);
                EXPECT_LE(p.y, bounds.top() + 1e-9);
                left = std::min(left, p.x);
                top = std::max(top, p.y);
            }
        }
        EXPECT_NEAR(left, bounds.x, 1e-9);
        EXPECT_NEAR(top, bounds.top(), 1e-9);
    }
}

TEST(Rect, TheInfiniteOneStaysInfinite)
{
    const Rect all = Rect::infinite();
    EXPECT_TRUE(all.isInfinite());
    EXPECT_FALSE(all.isEmpty());
    EXPECT_TRUE(std::isinf(all.right()));
    EXPECT_TRUE(boundsOf(AffineTransform::rotation(1), all).isInfinite());
    EXPECT_TRUE((Rect{0, 0, 0, 5}.isEmpty()));
    EXPECT_TRUE((Rect{0, 0, std::nan(""), 5}.isEmpty()));
}

} // namespace
