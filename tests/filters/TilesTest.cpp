// The filters that tile the plane: their transforms and what a tile holds.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include "platform/imaging/Filter.h"

#include <gtest/gtest.h>

#include <numbers>

using namespace support;
using foundation::Vector;

namespace {

constexpr int kSide = 8;

// Red is the column, green the row counted from below.
BitmapRef numbered()
{
    return bitmapFrom(kSide, kSide, [](int x, int y) {
        return Rgba{float(x), float(kSide - 1 - y), 0, 1};
    });
}

// Column and row of what the tiled plane shows at a pixel.
std::pair<float, float> shownAt(const Image& tiled, int x, int y)
{
    const Rgba p = pixel(*render(tiled, {double(x), double(y), 1, 1}), 0, 0);
    EXPECT_FLOAT_EQ(p.a, 1);
    return {p.r, p.g};
}

using At = std::pair<float, float>;

Image tile2(double scale, double angle, double stretch, double skew)
{
    return outputOf("CIFAffineTile2Filter", numbered(),
                    {{"inputScale", scale},
                     {"inputAngle", angle},
                     {"inputStretch", stretch},
                     {"inputSkew", skew},
                     {"inputCenter", Vector(10, 10)}});
}

Image offset(double scale, double angle, Vector center)
{
    return outputOf("CIFOffset", numbered(),
                    {{"inputScale", scale}, {"inputAngle", angle}, {"inputCenter", center}});
}

} // namespace

TEST(AffineTile2, AtRestItRepeatsThePictureFromItsCenter)
{
    const Image tiled = tile2(1, 0, 1, 0);
    EXPECT_TRUE(tiled.extent().isInfinite());
    EXPECT_EQ(shownAt(tiled, 10, 10), At(0, 0));
    EXPECT_EQ(shownAt(tiled, 13, 17), At(3, 7));
    EXPECT_EQ(shownAt(tiled, 9 - 2 * kSide, 10 + 5 * kSide), At(7, 0));
}

TEST(AffineTile2, SkewLiftsAndAnglesTurn)
{
    // A column's height grows by its distance from the corner.
    EXPECT_EQ(shownAt(tile2(1, 0, 1, 1), 13, 15), At(3, 1.5f));
    // A quarter turn to the left about the centre: the row runs upward, the column to the left.
    const auto [column, row] = shownAt(tile2(1, std::numbers::pi / 2, 1, 0), 8, 13);
    EXPECT_NEAR(column, 3, 1e-5);
    EXPECT_NEAR(row, 1, 1e-5);
    // The stretch is along the picture's own columns, the scale both ways.
    EXPECT_EQ(shownAt(tile2(1, 0, 3, 0), 10 + 7, 10), At(2, 0));
    EXPECT_EQ(shownAt(tile2(3, 0, 1, 0), 10 + 7, 10 + 4), At(2, 1));
}

TEST(AffineTile2, TheRegisteredDescriptionsAreTheOnesInEffect)
{
    registerFilters();
    const auto filter = imaging::Filter::filterWithName("CIFAffineTile2Filter");
    const auto scale = filter->attributes()["inputScale"].dictionary();
    EXPECT_EQ((*scale)["CIAttributeDefault"], Value(1.2));
    EXPECT_EQ((*filter->attributes()["inputAngle"].dictionary())["CIAttributeDefault"], Value(0.0));
    // Numbers that nobody set are 0: nothing to see.
    filter->setValueForKey(image(numbered()), "inputImage");
    EXPECT_TRUE(filter->outputImage().extent().isEmpty());
}

TEST(Offset, AScaleOfTwoHalvesThePicture)
{
    const Image tiled = offset(2, 0, Vector(0, 0));
    // Four columns to a tile; a pixel shows the middle between two.
    EXPECT_EQ(shownAt(tiled, 1, 2), At(2.5f, 4.5f));
    EXPECT_EQ(shownAt(tiled, 1 + 4, 2 - 4), At(2.5f, 4.5f));
}

TEST(Offset, MovesAndTurnsAboutTheCorner)
{
    EXPECT_EQ(shownAt(offset(1, 0, Vector(3, 2)), 3, 2), At(0, 0));
    EXPECT_EQ(shownAt(offset(1, 0, Vector(3, 2)), 2, 1), At(7, 7));
    const auto [column, row] = shownAt(offset(1, std::numbers::pi / 2, Vector(3, 2)), 1, 5);
    EXPECT_NEAR(column, 3, 1e-5);
    EXPECT_NEAR(row, 1, 1e-5);
    EXPECT_TRUE(offset(0, 0, Vector(3, 2)).extent().isEmpty());
}

TEST(Offset, TellsNothingAboutItsAngle)
{
    registerFilters();
    const auto filter = imaging::Filter::filterWithName("CIFOffset");
    const auto angle = filter->attributes()["inputAngle"].dictionary();
    EXPECT_EQ((*angle)["CIAttributeClass"], Value("NSNumber"));
    EXPECT_FALSE(angle->contains("CIAttributeDefault"));
}

TEST(MirrorTile, ATileIsThePictureAtHalfSizeInFourQuadrants)
{
    const Image tiled =
        outputOf("CIFMirrorTileFilter", numbered(),
                 {{"inputScale", 1.0}, {"inputStretch", 1.0}, {"inputCenter", Vector(0, 0)}});
    // Pixel i samples |2i + 1 - 8 + 0.5|, which is a pixel's middle: to the right of the middle
    // columns 1, 3, 5, 7 and, on the left, 0, 2, 4, 6 outward.
    const float expected[kSide] = {6, 4, 2, 0, 1, 3, 5, 7};
    for (int x = 0; x < kSide; ++x) {
        EXPECT_EQ(shownAt(tiled, x, 4), At(expected[x], 1)) << x;
        EXPECT_EQ(shownAt(tiled, x + kSide, 3 - kSide), At(expected[x], 0)) << x;
    }
}

GOLDEN("CIFMirrorTileFilter", "photo-96x64",
       {{"inputScale", 0.6},
        {"inputAngle", 0.3},
        {"inputStretch", 1.0},
        {"inputCenter", Vector(48, 32)}},
       {.largest = 1});
GOLDEN("CIFAffineTile2Filter", "photo-96x64",
       {{"inputScale", 0.4}, {"inputAngle", -0.4}, {"inputStretch", 1.5}, {"inputSkew", 0.3}},
       {.largest = 1});
GOLDEN("CIFOffset", "photo-96x64", {{"inputScale", 2.5}, {"inputAngle", 0.2}}, {.largest = 1});
