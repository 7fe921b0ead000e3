// The reflection below the line.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

using namespace support;
using foundation::Vector;

namespace {

// Eight rows; red is the height of a row's middle.
BitmapRef heights()
{
    return bitmapFrom(2, 8, [](int, int y) { return Rgba{7.5f - float(y), 0, 0, 1}; });
}

// Bottom row first.
std::vector<Rgba> rowsAbove(double line)
{
    const BitmapRef out = apply("CIFMirrorFilter", heights(), {{"inputCenter", Vector(1, line)}});
    std::vector<Rgba> rows;
    for (int y = 7; y >= 0; --y)
        rows.push_back(pixel(*out, 0, y));
    return rows;
}

} // namespace

TEST(Mirror, ReflectsWhatLiesAboveTheLineAndFadesDownward)
{
    const auto rows = rowsAbove(4);
    for (int y = 0; y < 8; ++y) {
        EXPECT_FLOAT_EQ(rows[y].r, y < 4 ? 7.5f - float(y) : 0.5f + float(y)) << y;
        EXPECT_FLOAT_EQ(rows[y].a, y < 4 ? (0.5f + float(y)) / 4 : 1) << y;
    }
}

TEST(Mirror, ClearsWhatWouldReflectFromAboveTheTop)
{
    // A line at 6: rows below 2·6 - 8 = 4 have nothing to reflect.
    const auto rows = rowsAbove(6);
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(rows[y].a, 0) << y;
    EXPECT_FLOAT_EQ(rows[4].r, 7.5f);
    EXPECT_FLOAT_EQ(rows[4].a, 0.75f);
    EXPECT_FLOAT_EQ(rows[7].a, 1);
}

TEST(Mirror, ALineBelowThePictureMirrorsAtItsDistanceAndFadesOverIt)
{
    // The distance alone counts for the reflection, the height for what is cleared: nothing is.
    const auto rows = rowsAbove(-2);
    EXPECT_FLOAT_EQ(rows[0].r, 3.5f);
    EXPECT_FLOAT_EQ(rows[0].a, 0.25f);
    EXPECT_FLOAT_EQ(rows[5].r, 5.5f);
    EXPECT_FLOAT_EQ(rows[5].a, 1);
}

TEST(Mirror, ALineAtTheBottomChangesNothing)
{
    // Half of nought is infinite, and limited to 1.
    const auto rows = rowsAbove(0);
    for (int y = 0; y < 8; ++y)
        EXPECT_EQ(rows[y], (Rgba{0.5f + float(y), 0, 0, 1})) << y;
}

GOLDEN("CIFMirrorFilter", "photo-96x64", {{"inputCenter", Vector(48, 24)}}, {.largest = 1});
