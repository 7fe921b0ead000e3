// The corners of the whirl.
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_TwistPolygons";

std::vector<Recording::Fill> polygons(const Dictionary& attributes)
{
    return drawn<Recording::Fill>(generate(kClass, 200, 200, attributes));
}

} // namespace

TEST(TwistPolygons, HalfwayAlongItsSidesASquareTurnsByAnEighthAndShrinks)
{
    // Without a radius the first one reaches 200 × 100 % / 2 from the centre.
    const auto fills =
        polygons({{"GLIFCountAngle", 4}, {"GLIFCountCircle", 4}, {"GLIFDeltaPercent", 50}});
    ASSERT_EQ(fills.size(), 4u);
    const std::vector<Point> expected[] = {
        {{200, 100}, {100, 200}, {0, 100}, {100, 0}},
        {{150, 150}, {50, 150}, {50, 50}, {150, 50}, {150, 150}},
        {{100, 150}, {50, 100}, {100, 50}, {150, 100}, {100, 150}},
        {{75, 125}, {75, 75}, {125, 75}, {125, 125}, {75, 125}},
    };
    for (int k = 0; k < 4; ++k) {
        const auto points = pointsOf(fills[k].path);
        ASSERT_EQ(points.size(), expected[k].size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            EXPECT_NEAR(points[i].x, expected[k][i].x, 1e-4) << k << " " << i;
            EXPECT_NEAR(points[i].y, expected[k][i].y, 1e-4) << k << " " << i;
        }
        EXPECT_EQ(fills[k].color, Color::hsb(static_cast<float>(k) / 4, 1, 1));
    }
    EXPECT_EQ(generators::randomDraws(), 0u);
}

TEST(TwistPolygons, LastCornerFollowsTheFirstOneAsItWas)
{
    const auto fills = polygons({{"GLIFCountAngle", 3},
                                 {"GLIFCountCircle", 2},
                                 {"GLIFDeltaPercent", 25},
                                 {"GLIFRadius", 50.0f},
                                 {"GLIFColorRangeMax", 0.5f}});
    const auto first = pointsOf(fills[0].path), second = pointsOf(fills[1].path);
    EXPECT_NEAR(first[0].x, 150, 1e-4);
    for (int i = 0; i < 3; ++i) {
        const Point next = first[(i + 1) % 3];
        EXPECT_NEAR(second[i].x, 0.75 * first[i].x + 0.25 * next.x, 1e-4);
        EXPECT_NEAR(second[i].y, 0.75 * first[i].y + 0.25 * next.y, 1e-4);
    }
    EXPECT_EQ(fills[1].color, Color::hsb(0.25f, 1, 1));
}

TEST(TwistPolygons, StartsFromFallbacksEveryTime)
{
    const auto generator = makeGenerator(kClass);
    generate(*generator, 50, 50, {{"GLIFCountAngle", 3}, {"GLIFRadius", 10.0f}});
    const auto fills = drawn<Recording::Fill>(generate(*generator, 300, 200, {}));
    EXPECT_EQ(fills.size(), 150u);
    EXPECT_EQ(pointsOf(fills[0].path).size(), 8u);
    EXPECT_EQ(pointsOf(fills[0].path)[0], (Point{250, 100}));
}

TEST(TwistPolygons, CountsOutOfReachAreTheNearestThatThereAre)
{
    const auto sides = [](int corners) {
        return pointsOf(polygons({{"GLIFCountAngle", corners}, {"GLIFCountCircle", 1}})[0].path)
            .size();
    };
    EXPECT_EQ(sides(41), 41u);
    EXPECT_EQ(sides(INT_MAX), 41u);
    EXPECT_EQ(sides(2), 2u);
    EXPECT_EQ(sides(INT_MIN), 1u);
    EXPECT_EQ(polygons({{"GLIFCountCircle", INT_MIN}}).size(), 1u);
    EXPECT_EQ(polygons({{"GLIFCountCircle", INT_MAX}}).size(), 2000u);
}

TEST(TwistPolygons, Pictures)
{
    expectGolden("twistpolygons-pentagons-on-white",
                 *generate(kClass, 96, 72,
                           {{"GLIFCountAngle", 5},
                            {"GLIFCountCircle", 14},
                            {"GLIFDeltaPercent", 20},
                            {"GLIFRadius", 110.0f},
                            {"GLIFColorRangeMax", 0.38f},
                            {"GLIFUseBackgroundColor", true},
                            {"GLIFBackgroundColor", Color::white()}})
                      ->bitmap(),
                 {.largest = 8, .mean = 0.2});
}
