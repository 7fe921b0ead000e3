// The shapes and where the random numbers put them.
#include "generators/GLIF_StarField.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <complex>
#include <numbers>

using namespace support;
using drawing::FillRule;
using drawing::Path;
using drawing::Recording;
using foundation::Color;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_StarField";
constexpr double kPi = std::numbers::pi;

std::vector<Recording::Fill> shapes(const Dictionary& attributes, unsigned seed = 1)
{
    return drawn<Recording::Fill>(generate(kClass, 120, 90, attributes, seed));
}

using Complex = std::complex<double>;

Complex from(Point center, Point p)
{
    return {p.x - center.x, p.y - center.y};
}

} // namespace

TEST(StarField, PutsEachShapeByFiveDraws)
{
    const int size = 40;
    const auto fills = shapes(
        {{"GLIFDensity", -5}, {"GLIFSize", size}, {"GLIFCount", 2}, {"GLIFColorScheme", 7}}, 11);
    EXPECT_EQ(generators::randomDraws(), 25u);
    ASSERT_EQ(fills.size(), 5u);
    std::srand(11);
    for (const Recording::Fill& fill : fills) {
        const double x = std::rand() % (120 + size);
        const double y = std::rand() % (size + 90);
        const Complex turn = std::polar(1.0, std::rand() % 360 * kPi / 180);
        const float position = static_cast<float>(std::rand()) / 2147483648.0f;
        const double extent = std::rand() % size + 1;
        EXPECT_EQ(fill.color, Color::hsb(position, 1, 1));
        EXPECT_EQ(fill.rule, FillRule::EvenOdd);
        // The rightmost point of the outer ring, from the point that it was turned about.
        const auto points = pointsOf(fill.path);
        ASSERT_EQ(points.size(), 10u);
        const Complex outer = from({x, y}, points[0]) / turn;
        EXPECT_NEAR(outer.real(), extent - size, 1e-4);
        EXPECT_NEAR(outer.imag(), extent / 2 - size, 1e-4);
        // Two rings leave a hole of half the size.
        const Complex inner = from({x, y}, points[5]) / turn;
        EXPECT_NEAR(inner.real(), 0.75 * extent - size, 1e-4);
        const Complex middle = Complex(extent / 2 - size, extent / 2 - size) * turn;
        const Point center{x + middle.real(), y + middle.imag()};
        EXPECT_FALSE(fill.path.contains(center, fill.rule));
    }
}

TEST(StarField, KeepsTheNumbersOfThePictureBefore)
{
    GLIF_StarField generator;
    const auto count = [&](const Dictionary& attributes) {
        return drawn<Recording::Fill>(generate(generator, 50, 50, attributes)).size();
    };
    EXPECT_EQ(count({}), 350u);
    EXPECT_EQ(count({{"GLIFDensity", 3}}), 3u);
    EXPECT_EQ(count({{"GLIFShapesType", 2}}), 3u);
    EXPECT_EQ(count({{"GLIFDensity", 0}}), 0u);
}

TEST(StarField, StarsReachOutThreeTimesAsFarAsTheirNotches)
{
    // Four spikes about (12, 21), stretched to twice the width.
    const Path star = generators::PathStar(10, 20, 4, 2, 3.0, 4);
    const auto points = pointsOf(star);
    ASSERT_EQ(points.size(), 8u);
    EXPECT_EQ(points[0], (Point{12, 20}));
    for (int i = 0; i < 8; ++i) {
        const Complex p((points[i].x - 12) / 2, points[i].y - 21);
        const Complex expected = std::polar(i % 2 == 0 ? 1.0 : 3.0, -kPi / 2 + i * kPi / 4);
        EXPECT_NEAR(std::abs(p - expected), 0, 1e-5) << i;
    }
    EXPECT_EQ(pointsOf(generators::PathStar(0, 0, 1, 1, 3.0, 1)).size(), 4u);
    // Without a reach the inner corners all but meet in the middle.
    EXPECT_NEAR(pointsOf(generators::PathStar(0, 0, 2, 2, 0, 5))[1].y, 1, 0.01);
}

TEST(StarField, PolygonsAreRegularOrDrawHowFarOnEachCornerLies)
{
    for (const int n : {-4, 2, 3, 6}) {
        const int corners = std::max(n, 3);
        const auto even = pointsOf(generators::PathPolygon(1, 2, 8, 8, 3.0, n));
        std::srand(5);
        const auto odd = pointsOf(generators::PathHaosPolygon(1, 2, 8, 8, 3.0, n));
        ASSERT_EQ(even.size(), std::size_t(corners));
        ASSERT_EQ(odd.size(), std::size_t(corners));
        std::srand(5);
        double angle = -kPi / 2;
        for (int i = 0; i < corners; ++i) {
            const Complex regular = std::polar(4.0, -kPi / 2 + i * 2 * kPi / corners);
            EXPECT_NEAR(std::abs(from({5, 6}, even[i]) - regular), 0, 1e-5);
            EXPECT_NEAR(std::abs(from({5, 6}, odd[i]) - std::polar(4.0, angle)), 0, 1e-5);
            angle += 2 * kPi / corners + double(std::rand() % 3) / corners;
        }
    }
}

TEST(StarField, KindsDifferInBoxRuleAndDraws)
{
    const auto one = [](int kind, int count) {
        return shapes({{"GLIFDensity", 1}, {"GLIFShapesType", kind}, {"GLIFCount", count}})[0];
    };
    const auto distance = [](const Recording::Fill& fill) {
        const auto points = pointsOf(fill.path);
        return std::abs(from(points[0], points[3]));
    };
    // Opposite corners: spikes to notches of a star in the box that a polygon has twice as large.
    EXPECT_NEAR(distance(one(2, 3)), distance(one(3, 6)), 1e-3);
    EXPECT_EQ(one(3, 6).rule, FillRule::NonZero);
    EXPECT_EQ(generators::randomDraws(), 5u);
    EXPECT_EQ(one(4, 6).rule, FillRule::NonZero);
    EXPECT_EQ(generators::randomDraws(), 10u);
    for (const int kind : {7, -1, INT_MIN})
        EXPECT_EQ(pointsOf(one(kind, 3).path), pointsOf(one(1, 3).path));
    EXPECT_EQ(one(1, 3).rule, FillRule::EvenOdd);
}

TEST(StarField, NumbersWithoutAMeaningStillDraw)
{
    // No remainder by 0; five draws all the same.
    for (const int size : {0, -120, -90, INT_MIN, INT_MAX}) {
        EXPECT_EQ(shapes({{"GLIFDensity", 2}, {"GLIFSize", size}}).size(), 2u);
        EXPECT_EQ(generators::randomDraws(), 10u);
    }
    EXPECT_TRUE(shapes({{"GLIFDensity", 2}, {"GLIFCount", -3}}).empty());
    EXPECT_EQ(shapes({{"GLIFDensity", INT_MIN}, {"GLIFCount", INT_MAX}}).size(), 50u);
}

TEST(StarField, Pictures)
{
    const Tolerance tolerance = {.largest = 8, .mean = 0.2};
    Dictionary attributes = {
        {"GLIFDensity", 40}, {"GLIFSize", 40}, {"GLIFCount", 3}, {"GLIFSchemeKeyColor", 0.07f}};
    expectGolden("starfield-three-rings", *generate(kClass, 96, 72, attributes, 4)->bitmap(),
                 tolerance);
    attributes.set("GLIFShapesType", 2);
    attributes.set("GLIFCount", 5);
    attributes.set("GLIFSize", 24);
    expectGolden("starfield-stars", *generate(kClass, 96, 72, attributes, 4)->bitmap(), tolerance);
}
