// Chords by type, and the washes on their two sides.
#include "generators/ColorSchemes.h"
#include "generators/GLIF_AbstractLines.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;
using Points = std::vector<Point>;

namespace {

constexpr const char* kClass = "GLIF_AbstractLines";

PictureRef lines(int width, int height, int count, int type, unsigned seed = 1)
{
    return generate(kClass, width, height, {{"GLIFCountLines", count}, {"GLIFShapesType", type}},
                    seed);
}

std::vector<Points> chordsOf(const PictureRef& picture)
{
    std::vector<Points> chords;
    for (const auto& stroke : drawn<Recording::Stroke>(picture))
        chords.push_back(pointsOf(stroke.path));
    return chords;
}

} // namespace

TEST(AbstractLines, WashBothSidesOfAChord)
{
    constexpr int kWidth = 70, kHeight = 50, kCount = 20;
    const double key = 0.28;
    const PictureRef picture = generate(
        kClass, kWidth, kHeight,
        {{"GLIFCountLines", kCount}, {"GLIFColorScheme", 5}, {"GLIFSchemeKeyColor", key}}, 4);
    EXPECT_EQ(generators::randomDraws(), 4u + 6 * kCount);
    const auto fills = drawn<Recording::Fill>(picture);
    const auto chords = chordsOf(picture);
    ASSERT_EQ(fills.size(), 1u + 2 * kCount);
    ASSERT_EQ(chords.size(), std::size_t{kCount});
    EXPECT_EQ(fills[0].color, generators::computeSchemeColor(1, static_cast<float>(key), 5));

    std::srand(4);
    for (int discarded = 0; discarded < 4; ++discarded)
        std::rand();
    std::set<int> shapes; // which sides the ends lie on
    for (int i = 0; i < kCount; ++i) {
        const int a = std::rand() % (kWidth + kHeight);
        const int b = std::rand() % (kWidth + kHeight);
        Points corner = {{0, 0}};
        if (a <= kHeight)
            corner.push_back({0, double(a)});
        else
            for (const Point& p : {Point{0, kHeight}, Point{double(a - kHeight), kHeight}})
                corner.push_back(p);
        if (b > kWidth)
            corner.push_back({kWidth, double(b - kWidth)});
        corner.push_back({double(std::min(b, kWidth)), 0});
        corner.push_back({0, 0});
        shapes.insert((a <= kHeight) + 2 * (b <= kWidth));
        EXPECT_EQ(pointsOf(fills[1 + 2 * i].path), corner);
        EXPECT_EQ(chords[i],
                  (Points{a <= kHeight ? Point{0, double(a)} : Point{double(a - kHeight), kHeight},
                          b <= kWidth ? Point{double(b), 0} : Point{kWidth, double(b - kWidth)}}));
        // The rest of the picture, by the even-odd rule.
        EXPECT_EQ(fills[2 + 2 * i].rule, drawing::FillRule::EvenOdd);
        EXPECT_EQ(fills[2 + 2 * i].path.elements().size(), corner.size() + 5);

        const auto alpha = static_cast<float>(1.0 - static_cast<float>(i) / kCount);
        for (int side = 0; side < 2; ++side) {
            const double wander = std::rand() * 0.2 / 2147483647.0 * (kCount / -10.0);
            const double hue =
                side == 0 ? std::abs(std::fmod(key + wander, 1.0)) : 1 - key + 0.4 + wander;
            const float position = static_cast<float>(std::rand()) / 2147483648.0f;
            EXPECT_EQ(fills[1 + 2 * i + side].color,
                      Color::hsb(static_cast<float>(hue), position, 1, alpha));
        }
    }
    EXPECT_EQ(shapes.size(), 4u) << "the seed shows every kind of corner";
}

TEST(AbstractLines, LieOnGridsByTheirType)
{
    const auto grid = chordsOf(lines(200, 100, 20, 1));
    for (std::size_t i = 0; i < grid.size(); ++i) {
        const Point a = grid[i][0], b = grid[i][1];
        EXPECT_EQ(i % 2 == 0 ? a.x : a.y, i % 2 == 0 ? b.x : b.y);
        EXPECT_EQ(std::fmod(i % 2 == 0 ? a.x : a.y, 20), 0);
    }
    // Both signs of either slant occur among these.
    std::set<std::pair<bool, bool>> slants;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const auto slanted = chordsOf(lines(600, 500, 20, 2, seed));
        std::set<double> places[2];
        const double slantX = slanted[0][1].x - slanted[0][0].x;
        const double slantY = slanted[1][1].y - slanted[1][0].y;
        slants.emplace(slantX < 0, slantY < 0);
        for (std::size_t i = 0; i < slanted.size(); ++i) {
            const Point a = slanted[i][0], b = slanted[i][1];
            if (i % 2 == 0)
                EXPECT_EQ(b.x - a.x, slantX);
            else
                EXPECT_EQ(b.y - a.y, slantY);
            EXPECT_TRUE(places[i % 2].insert(i % 2 == 0 ? a.x : a.y).second) << "taken twice";
        }
        EXPECT_LE(std::abs(slantX), 150);
        EXPECT_LE(std::abs(slantY), 125);
    }
    EXPECT_EQ(slants.size(), 4u);
    for (const Points& chord : chordsOf(lines(200, 100, 20, 3)))
        EXPECT_EQ(chord, (Points{{0, 0}, {0, 0}}));
}

TEST(AbstractLines, AreBoundedOnPicturesSmallerThanTheirGrid)
{
    for (const int type : {0, 1, 2})
        for (const int side : {1, 19, 20, 45})
            EXPECT_EQ(chordsOf(lines(side, side, 1'000'000, type)).size(), 30u);
    EXPECT_EQ(lines(9, 9, -5, 2)->recording()->ops.size(), 1u) << "the background";
}

TEST(AbstractLines, StrokeRoundCapsInTheBackgroundColor)
{
    const auto strokes =
        drawn<Recording::Stroke>(generate(kClass, 50, 50,
                                          {{"GLIFWidthLine", 4.5f},
                                           {"GLIFUseBackgroundColor", true},
                                           {"GLIFBackgroundColor", Color::rgb(0, 0, 1)}}));
    ASSERT_EQ(strokes.size(), 6u) << "without a count";
    EXPECT_EQ(strokes[0].path.lineWidth, 4.5);
    EXPECT_EQ(strokes[0].path.cap, drawing::LineCap::Round);
    EXPECT_EQ(strokes[0].color, Color::rgb(0, 0, 1));
    EXPECT_EQ(GLIF_AbstractLines().ComputeColorLocal(0.5), Color::hsb(0.5f, 0.5f, 0.9f));
}

TEST(AbstractLines, Pictures)
{
    expectGolden("abstractlines-slanted-grid-8",
                 *generate(kClass, 128, 96,
                           {{"GLIFCountLines", 8},
                            {"GLIFShapesType", 2},
                            {"GLIFWidthLine", 1.0f},
                            {"GLIFColorScheme", 5},
                            {"GLIFSchemeKeyColor", 0.28}},
                           6)
                      ->bitmap(),
                 {.largest = 8, .mean = 0.2});
}
