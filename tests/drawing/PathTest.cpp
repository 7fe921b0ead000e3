// Where paths run and what lies inside them.
#include "platform/drawing/Path.h"
#include "platform/drawing/Flatten.h"

#include <gtest/gtest.h>

namespace drawing {
namespace {

using Kind = Path::Element::Kind;

// Points along the path, eight to an element.
std::vector<Point> along(const Path& path)
{
    std::vector<Point> points;
    Point at;
    for (const Path::Element& e : path.elements()) {
        for (int i = 1; e.kind == Kind::CurveTo && i <= 8; ++i)
            points.push_back(curvePoint(at, e.points[0], e.points[1], e.points[2], i / 8.0));
        at = e.kind == Kind::CurveTo ? e.points[2] : e.points[0];
    }
    return points;
}

Path star()
{
    // A pentagram in one stroke: winding 2 in its middle, 1 in its tips.
    Path path;
    for (int i = 0; i < 5; ++i) {
        const double angle = (90 + 144 * i) * 3.14159265358979 / 180;
        const Point p{100 * std::cos(angle), 100 * std::sin(angle)};
        i == 0 ? path.moveTo(p) : path.lineTo(p);
    }
    path.close();
    return path;
}

TEST(Path, OvalLiesOnItsEllipseFromItsRightmostPointUpwards)
{
    const Path oval = Path::ovalInRect({10, 20, 200, 100});
    ASSERT_EQ(oval.elements().size(), 6u); // a move, four curves, a close
    EXPECT_EQ(oval.elements()[0].points[0], (Point{210, 70}));
    EXPECT_EQ(oval.elements()[1].points[2], (Point{110, 120}));
    for (const Point& p : along(oval))
        EXPECT_NEAR(std::hypot((p.x - 110) / 100, (p.y - 70) / 50), 1, 1e-3);
    EXPECT_EQ(oval.controlBounds(), (Rect{10, 20, 200, 100}));
    // With both radii negative it is the same curve, begun on the other side.
    EXPECT_EQ(Path::ovalInRect({210, 120, -200, -100}).controlBounds(), (Rect{10, 20, 200, 100}));
}

TEST(Path, ArcKeepsToTheCircleAndTurnsTheRightWay)
{
    struct Case {
        double start, end;
        bool clockwise;
        double sweep; // degrees, counter-clockwise above 0
    };
    for (const auto& [start, end, clockwise, sweep] :
         {Case{0, 360, false, 360}, Case{0, 90, false, 90}, Case{90, 0, false, 270},
          Case{90, 0, true, -90}, Case{0, 90, true, -270}, Case{350, 370, false, 20},
          Case{10, -350, true, -360}, Case{-720, -710, false, 10}, Case{30, 30, false, 0}}) {
        SCOPED_TRACE(testing::Message()
                     << start << " to " << end << (clockwise ? " clockwise" : ""));
        Path path;
        path.appendArc({5, -3}, 40, start, end, clockwise);
        EXPECT_LE(path.elements().size(), 1 + std::ceil(std::abs(sweep) / 90));
        double turned = 0;
        Point before = path.elements()[0].points[0];
        for (const Point& p : along(path)) {
            const Point u{before.x - 5, before.y + 3}, v{p.x - 5, p.y + 3};
            EXPECT_NEAR(std::hypot(v.x, v.y), 40, 0.04);
            turned += std::atan2(u.x * v.y - u.y * v.x, u.x * v.x + u.y * v.y);
            before = p;
        }
        EXPECT_NEAR(turned * 180 / 3.14159265358979, sweep, 1e-6);
    }
}

TEST(Path, ArcJoinsTheCurrentPoint)
{
    Path slice;
    slice.moveTo({0, 0});
    slice.appendArc({0, 0}, 10, 0, 90);
    slice.close();
    EXPECT_EQ(slice.elements()[1].kind, Kind::LineTo);
    EXPECT_EQ(slice.elements()[1].points[0], (Point{10, 0}));
    EXPECT_EQ(slice.currentPoint(), (Point{0, 0}));
    EXPECT_TRUE(slice.contains({3, 3}, FillRule::NonZero));
    EXPECT_FALSE(slice.contains({-3, 3}, FillRule::NonZero));
}

TEST(Path, ContainsAgreesWithTheShapesThemselves)
{
    const Path oval = Path::ovalInRect({-60, -30, 120, 60});
    const Path pentagram = star();
    int inOval = 0;
    for (double x = -99.5; x < 100; x += 1)
        for (double y = -99.3; y < 100; y += 1) {
            const double r = std::hypot(x / 60, y / 30);
            if (std::abs(r - 1) > 2e-3) {
                EXPECT_EQ(oval.contains({x, y}, FillRule::NonZero), r < 1) << x << ' ' << y;
            }
            inOval += r < 1;
            // The middle of the star is the pentagon inside its inner circle, no more than that.
            const double inner = 100 * (3 - std::sqrt(5)) / 2;
            const double distance = std::hypot(x, y);
            if (distance < inner * std::cos(3.14159265358979 / 5) - 0.01) {
                EXPECT_TRUE(pentagram.contains({x, y}, FillRule::NonZero));
                EXPECT_FALSE(pentagram.contains({x, y}, FillRule::EvenOdd));
            } else if (distance > inner + 0.01) {
                EXPECT_EQ(pentagram.contains({x, y}, FillRule::NonZero),
                          pentagram.contains({x, y}, FillRule::EvenOdd));
            }
        }
    EXPECT_GT(inOval, 5000);
}

TEST(Path, ContainsCountsSharedCornersOnceAndClosesOpenFigures)
{
    // Two triangles that share an edge: a point on the edge lies in exactly one of them, and a ray
    // through a corner is not fooled.
    Path lower, upper;
    lower.moveTo({0, 0}), lower.lineTo({10, 0}), lower.lineTo({10, 10});
    upper.moveTo({0, 0}), upper.lineTo({10, 10}), upper.lineTo({0, 10});
    for (double t : {1.0, 2.5, 5.0, 9.0})
        EXPECT_NE(lower.contains({t, t}, FillRule::NonZero),
                  upper.contains({t, t}, FillRule::NonZero));
    Path diamond;
    diamond.moveTo({10, 0}), diamond.lineTo({20, 10}), diamond.lineTo({10, 20}),
        diamond.lineTo({0, 10});
    EXPECT_FALSE(diamond.contains({-5, 10}, FillRule::NonZero));
    EXPECT_TRUE(diamond.contains({5, 10}, FillRule::NonZero));
    EXPECT_FALSE(diamond.contains({25, 10}, FillRule::NonZero));
    EXPECT_FALSE(diamond.contains({NAN, 10}, FillRule::NonZero));
    EXPECT_FALSE(Path().contains({0, 0}, FillRule::NonZero));
}

TEST(Path, BuildsOddSequencesSensibly)
{
    Path path;
    EXPECT_EQ(path.currentPoint(), (Point{}));
    path.close(); // nothing to close
    EXPECT_TRUE(path.isEmpty());
    path.lineTo({1, 2}); // begins there
    path.moveTo({3, 4}); // takes its place
    path.lineTo({5, 4});
    path.close();
    EXPECT_EQ(path.currentPoint(), (Point{3, 4}));
    ASSERT_EQ(path.elements().size(), 3u);

    Path other;
    other.appendRect({0, 0, 1, 1});
    path.append(other);
    path.append(Path());
    path.transform({0, 1, -1, 0, 10, 0}); // a quarter turn and a shift
    EXPECT_EQ(path.currentPoint(), (Point{10, 0}));
    EXPECT_EQ(path.controlBounds(), Rect::fromEdges(6, 0, 10, 5));
}

} // namespace
} // namespace drawing
