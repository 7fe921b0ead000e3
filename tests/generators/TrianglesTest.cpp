// The splitting of triangles, repeated in whole numbers.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;
using Points = std::vector<Point>;

namespace {

constexpr const char* kClass = "GLIF_Triangles";

// Twice the area of a triangle, by its orientation.
double area(Point a, Point b, Point c)
{
    return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
}

// All corners are whole numbers, so this is exact; no seed below puts a point onto an edge.
bool holds(const Points& triangle, Point p)
{
    const double u = area(triangle[0], triangle[1], p), v = area(triangle[1], triangle[2], p),
                 w = area(triangle[2], triangle[0], p);
    return (u > 0 && v > 0 && w > 0) || (u < 0 && v < 0 && w < 0);
}

std::vector<Points> reference(int width, int height, int count, unsigned seed)
{
    std::srand(seed);
    const double far = width + height + 10;
    std::vector<Points> triangles = {
        {{double(-width / 2), double(-height / 2)}, {0, far}, {far, 0}}};
    for (int i = 0; i < count - 1; ++i) {
        const double y = std::rand() % height;
        const double x = std::rand() % width;
        const Point p = {x, y};
        const auto found =
            std::ranges::find_if(triangles, [&](const Points& t) { return holds(t, p); });
        if (found == triangles.end())
            continue;
        const Points t = *found;
        triangles.erase(found);
        for (const auto& [a, b] : {std::array{0, 1}, std::array{0, 2}, std::array{1, 2}})
            triangles.push_back({p, t[a], t[b]});
    }
    return triangles;
}

} // namespace

TEST(Triangles, SplitTheFirstTriangleThatHoldsAPoint)
{
    for (const auto& [count, seed] : {std::array{2, 5}, std::array{7, 1}, std::array{50, 3}}) {
        const auto expected = reference(640, 481, count, seed);
        EXPECT_EQ(expected.size(), 2u * count - 1);
        const auto picture =
            generate(kClass, 640, 481, {{"GLIFCount", count}, {"GLIFColorScheme", 5}}, seed);
        EXPECT_EQ(generators::randomDraws(), 2u * (count - 1));
        const auto fills = drawn<Recording::Fill>(picture);
        ASSERT_EQ(fills.size(), expected.size());
        for (std::size_t k = 0; k < fills.size(); ++k) {
            EXPECT_EQ(pointsOf(fills[k].path), expected[k]);
            const float position = static_cast<float>(k) / static_cast<float>(fills.size());
            EXPECT_EQ(fills[k].color, generators::computeSchemeColor(position, 0, 5));
        }
    }
}

TEST(Triangles, CloseTheirSeamsAndThenOutlineThemselves)
{
    const Color yellow = Color::rgb(1, 1, 0);
    const auto strokesWith = [&](const Dictionary& attributes) {
        return drawn<Recording::Stroke>(generate(kClass, 60, 40, attributes));
    };
    const auto strokes = strokesWith({{"GLIFCount", 3}, {"GLIFWidthLine", 2.5f}});
    ASSERT_EQ(strokes.size(), 10u);
    for (std::size_t k = 0; k < strokes.size(); k += 2) {
        EXPECT_EQ(strokes[k].path.lineWidth, 1);
        EXPECT_EQ(strokes[k + 1].path.lineWidth, 2.5);
        EXPECT_EQ(strokes[k + 1].color, Color::black());
        EXPECT_EQ(strokes[k].path.join, drawing::LineJoin::Bevel);
    }
    EXPECT_EQ(strokesWith({{"GLIFCount", 2}})[1].path.lineWidth, 3) << "without a width";
    EXPECT_EQ(
        strokesWith({{"GLIFUseBackgroundColor", true}, {"GLIFBackgroundColor", yellow}})[1].color,
        yellow);
    const auto unset = strokesWith({{"GLIFUseBackgroundColor", true}});
    EXPECT_EQ(unset[1].color, unset[0].color) << "a colour that is not set changes nothing";
}

TEST(Triangles, CountsOutOfReachAreBounded)
{
    for (const int count : {1, 0, -7})
        EXPECT_TRUE(generate(kClass, 9, 9, {{"GLIFCount", count}})->recording()->ops.empty());
    // Most points fall onto corners and edges here; each splits at most one triangle.
    const auto fills = drawn<Recording::Fill>(generate(kClass, 3, 2, {{"GLIFCount", 1e30}}));
    EXPECT_GT(fills.size(), 3u);
    EXPECT_LT(fills.size(), 6001u);
}

TEST(Triangles, Pictures)
{
    const Tolerance tolerance = {.largest = 8, .mean = 0.2};
    expectGolden("triangles-12-white-outlines",
                 *generate(kClass, 96, 64,
                           {{"GLIFCount", 12},
                            {"GLIFWidthLine", 1.5f},
                            {"GLIFColorScheme", 2},
                            {"GLIFSchemeKeyColor", 0.28},
                            {"GLIFUseBackgroundColor", true},
                            {"GLIFBackgroundColor", Color::white()}},
                           3)
                      ->bitmap(),
                 tolerance);
}
