// The shapes of a cell, and cells laid side by side against cells drawn one by one.
#include "platform/drawing/Scaling.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;
using Points = std::vector<Point>;

namespace {

constexpr const char* kClass = "GLIF_Parquet";

std::vector<Recording::Fill> shapes(int width, int height, int cellWidth, int cellHeight,
                                    int density, int figure)
{
    return drawn<Recording::Fill>(generate(kClass, width, height,
                                           {{"GLIFCellWidth", cellWidth},
                                            {"GLIFCellHeight", cellHeight},
                                            {"GLIFDencity", density},
                                            {"GLIFIdFigure", figure},
                                            {"GLIFColorScheme", 7}}));
}

Rect boundsOf(const Recording::Fill& fill)
{
    return fill.path.controlBounds();
}

} // namespace

TEST(Parquet, NestsRectanglesColumnByColumn)
{
    const auto fills = shapes(40, 30, 20, 20, 10, 0);
    ASSERT_EQ(fills.size(), 3u * 2 * 3) << "three columns, the last begins at the edge";
    EXPECT_EQ(boundsOf(fills[0]), (Rect{-1, -1, 23, 23}));
    EXPECT_EQ(boundsOf(fills[1]), (Rect{0, 0, 21, 21}));
    EXPECT_EQ(boundsOf(fills[2]), (Rect{1, 1, 19, 19}));
    EXPECT_EQ(boundsOf(fills[3]), (Rect{-1, 19, 23, 23}));
    EXPECT_EQ(boundsOf(fills[6]), (Rect{19, -1, 23, 23}));
    // Positions -1, 0 and 1: red, as hues below and above the wheel are.
    for (const auto& fill : fills)
        EXPECT_EQ(fill.color, Color::rgb(1, 0, 0));
    EXPECT_EQ(shapes(40, 30, 20, 20, 20, 0)[2].color, Color::hsb(0.5f, 1, 1)) << "step 1 of 2";
}

TEST(Parquet, DrawsInTheEndsOfTheDiagonalBetweenTwoTriangles)
{
    // The longer side shrinks by a point a step, the other by half of one.
    const auto wide = shapes(10, 10, 40, 20, 100, 1);
    ASSERT_EQ(wide.size(), 22u);
    EXPECT_EQ(pointsOf(wide[3].path),
              (Points{{2, 19}, {38, 1}, {0, 0}, {2, 19}, {38, 1}, {40, 20}}));
    const auto high = shapes(10, 10, 20, 80, 50, 7);
    ASSERT_EQ(high.size(), 22u);
    EXPECT_EQ(pointsOf(high[5].path)[0], (Point{1, 76}));
    EXPECT_EQ(pointsOf(high[5].path)[1], (Point{19, 4}));
}

TEST(Parquet, NumbersOutOfReachGiveADefinedPicture)
{
    // A cell of one point has step 0 as its last: positions are minus infinity and no number.
    EXPECT_EQ(shapes(1, 1, -5, 0, 90, 0).size(), 2u * 2 * 2);
    EXPECT_TRUE(shapes(5, 5, 20, 20, -500, 0).empty());
    EXPECT_EQ(boundsOf(shapes(9, 9, std::numeric_limits<int>::max(), 20, 0, 0)[0]).x, -1);

    LogRecorder log;
    EXPECT_FALSE(generate(kClass, 9, 9, {{"GLIFDencity", 1e30}}));
    EXPECT_FALSE(generate(kClass, 20'000, 20'000, {{"GLIFCellWidth", 1}, {"GLIFCellHeight", 1}}));
    EXPECT_EQ(log.lines, std::vector<std::string>(2, "GLIF_Parquet: can't generate"));
}

TEST(Parquet, LaidCellsAreThoseDrawn)
{
    const Dictionary cases[] = {
        {{"GLIFCellWidth", 21}, {"GLIFCellHeight", 34}, {"GLIFIdFigure", 1}},
        {{"GLIFCellWidth", 50}, {"GLIFCellHeight", 17}, {"GLIFDencity", 100}},
        {{"GLIFCellWidth", 4}, {"GLIFCellHeight", 4}, {"GLIFIdFigure", 1}},
        {{"GLIFCellWidth", 30}, {"GLIFCellHeight", 30}, {"GLIFDencity", 130}}, // drawn
        {{"GLIFCellWidth", 63},
         {"GLIFCellHeight", 20},
         {"GLIFDencity", 10},
         {"GLIFUseBackgroundColor", true},
         {"GLIFBackgroundColor", Color::white()}},
    };
    for (Dictionary attributes : cases) {
        attributes.set("GLIFColorScheme", 1);
        const PictureRef picture = generate(kClass, 331, 257, attributes);
        EXPECT_TRUE(picture->isVector());
        const auto drawn = drawing::rasterize(*picture->recording(), 331, 257);
        EXPECT_LE(compare(*picture->bitmap(), **drawn).largest, 8 / 255.0);
        const auto twice = drawing::rasterize(*picture->recording(), 662, 514);
        EXPECT_EQ(compare(*picture->bitmapOfSize(662, 514), **twice).largest, 0);

        // Parts at the own size are cut from the pixels, smaller ones averaged.
        const auto part = picture->part({33, 60, 200, 150}, 200, 150);
        ASSERT_TRUE(part);
        for (int y = 0; y < 150; ++y)
            ASSERT_EQ(std::memcmp(part->row(y), (*picture->bitmap()).row(257 - 210 + y) + 4 * 33,
                                  4 * 200),
                      0)
                << y;
        const auto half = picture->part({0, 0, 331, 257}, 165, 128);
        ASSERT_TRUE(half);
        EXPECT_LT(compare(*half, *drawing::scaledBitmap(**drawn, 165, 128)).mean, 4 / 255.0);
        EXPECT_TRUE(picture->part({-10, 0, 331, 257}, 165, 128));
        EXPECT_TRUE(picture->part({0, 0, 20, 20}, 165, 128));
    }
}

TEST(Parquet, Pictures)
{
    const Tolerance tolerance = {.largest = 8, .mean = 0.2};
    expectGolden("parquet-triangles-brightness",
                 *generate(kClass, 96, 64,
                           {{"GLIFCellWidth", 40},
                            {"GLIFCellHeight", 30},
                            {"GLIFIdFigure", 1},
                            {"GLIFColorScheme", 4},
                            {"GLIFSchemeKeyColor", 0.06}})
                      ->bitmap(),
                 tolerance);
}
