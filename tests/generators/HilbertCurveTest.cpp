// The walk, read back from the recorded strokes.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_HilbertCurve";

std::vector<Recording::Stroke> strokesOf(const PictureRef& picture)
{
    std::vector<Recording::Stroke> strokes;
    for (const Recording::Op& op : picture->recording()->ops)
        if (const auto* stroke = std::get_if<Recording::Stroke>(&op))
            strokes.push_back(*stroke);
    return strokes;
}

using Cell = std::pair<int, int>;

// The segments of all strokes as steps between cells; each must be straight, `step` long and reach
// `overlap` past both cells.
std::multimap<Cell, Cell> stepsOf(const std::vector<Recording::Stroke>& strokes, int step,
                                  int overlap)
{
    std::multimap<Cell, Cell> steps;
    for (const Recording::Stroke& stroke : strokes) {
        const auto& elements = stroke.path.elements();
        EXPECT_EQ(elements.size(), 6u);
        for (std::size_t i = 0; i + 1 < elements.size(); i += 2) {
            const Point from = elements[i].points[0], to = elements[i + 1].points[0];
            const double dx = to.x - from.x, dy = to.y - from.y;
            EXPECT_TRUE(dx == 0 || dy == 0);
            EXPECT_EQ(std::abs(dx + dy), step + 2 * overlap);
            const int ux = (dx > 0) - (dx < 0), uy = (dy > 0) - (dy < 0);
            const Cell a((from.x + ux * overlap) / step, (from.y + uy * overlap) / step);
            const Cell b((to.x - ux * overlap) / step, (to.y - uy * overlap) / step);
            steps.emplace(a, b);
            steps.emplace(b, a);
        }
    }
    return steps;
}

} // namespace

TEST(HilbertCurve, VisitsEveryCellOnce)
{
    for (int order = 1; order <= 6; ++order) {
        const int cells = 1 << order;
        const int step = 100 / (cells - 1) + 1;
        // Without "GLIFSize" the pen is 5 wide, half of it truncated is 2.
        const auto strokes = strokesOf(generate(kClass, 60, 100, {{"GLIFCurveRange", order}}));
        EXPECT_EQ(strokes.size(), (std::size_t(cells) * cells - 1) / 3);
        EXPECT_EQ(strokes.front().path.lineWidth, 5);
        const auto steps = stepsOf(strokes, step, 2);

        std::set<Cell> visited;
        Cell at{0, 0};
        while (visited.insert(at).second)
            for (auto [next, end] = steps.equal_range(at); next != end; ++next)
                if (!visited.contains(next->second)) {
                    at = next->second;
                    break;
                }
        EXPECT_EQ(visited.size(), std::size_t(cells) * cells);
        EXPECT_EQ(steps.size(), 2 * (visited.size() - 1));
        EXPECT_EQ(at, Cell(0, cells - 1)) << "ends above its start";
        EXPECT_EQ(visited.rbegin()->first, cells - 1);
    }
}

TEST(HilbertCurve, PaintsInFourColorsDrawnAfterFourThatCountForNothing)
{
    const PictureRef picture = generate(
        kClass, 100, 100, {{"GLIFCurveRange", 3}, {"GLIFColorScheme", 7}, {"GLIFTypeCaps", 2}}, 11);
    EXPECT_EQ(generators::randomDraws(), 8u);
    std::srand(11);
    Color colors[4];
    for (int i = 0; i < 4; ++i)
        std::rand();
    for (Color& color : colors)
        color = Color::hsb(static_cast<float>(std::rand()) / 2147483648.0f, 1, 1);

    const auto strokes = strokesOf(picture);
    std::string order;
    for (const auto& stroke : strokes) {
        const auto* found = std::find(colors, colors + 4, stroke.color);
        ASSERT_NE(found, colors + 4);
        order += static_cast<char>('0' + (found - colors));
        EXPECT_EQ(stroke.path.cap, drawing::LineCap::Square);
    }
    // A bend takes the colour of the last bend inside it: the fourth stroke is around the third.
    EXPECT_EQ(order.substr(0, 5), "02330");
    // The last operation fills a figure without an area.
    const auto& ops = picture->recording()->ops;
    ASSERT_EQ(ops.size(), strokes.size() + 1);
    const auto* fill = std::get_if<Recording::Fill>(&ops.back());
    ASSERT_TRUE(fill);
    EXPECT_EQ(fill->path.controlBounds().width, 0);
}

TEST(HilbertCurve, OrdersOutOfReachDrawTheBackgroundOrTheFinestCurve)
{
    for (const int order : {0, -3, -2'000'000'000})
        EXPECT_EQ(generate(kClass, 10, 10,
                           {{"GLIFCurveRange", order},
                            {"GLIFUseBackgroundColor", true},
                            {"GLIFBackgroundColor", Color::white()}})
                      ->recording()
                      ->ops.size(),
                  1u);
    const auto countOf = [](int order) {
        return generate(kClass, 10, 10, {{"GLIFCurveRange", order}})->recording()->ops.size();
    };
    EXPECT_EQ(countOf(31), countOf(10));
    EXPECT_LT(countOf(9), countOf(10));
}

TEST(HilbertCurve, IsDrawnAfreshAtAnySize)
{
    const Dictionary attributes = {{"GLIFCurveRange", 4}, {"GLIFTypeCaps", 1}};
    const PictureRef picture = generate(kClass, 60, 40, attributes, 3);
    const auto twice = picture->bitmapOfSize(120, 80);
    const auto direct = drawing::rasterize(*picture->recording(), 120, 80);
    ASSERT_TRUE(twice && direct);
    EXPECT_EQ(compare(*twice, **direct).largest, 0);
}

// Edges are antialiased by the drawing library, whose versions may differ in the last levels.
TEST(HilbertCurve, Pictures)
{
    const Tolerance tolerance = {.largest = 8, .mean = 0.2};
    expectGolden("hilbert-order4-butt-caps",
                 *generate(kClass, 96, 96,
                           {{"GLIFCurveRange", 4},
                            {"GLIFSize", 3.0f},
                            {"GLIFColorScheme", 1},
                            {"GLIFSchemeKeyColor", 0.5f}},
                           2)
                      ->bitmap(),
                 tolerance);
    expectGolden("hilbert-order3-round-caps-on-yellow",
                 *generate(kClass, 96, 64,
                           {{"GLIFCurveRange", 3},
                            {"GLIFSize", 7.0f},
                            {"GLIFTypeCaps", 1},
                            {"GLIFColorScheme", 7},
                            {"GLIFUseBackgroundColor", true},
                            {"GLIFBackgroundColor", Color::rgb(1, 1, 0.6f)}},
                           5)
                      ->bitmap(),
                 tolerance);
}
