// Pixels near a colour become transparent.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

using namespace support;
using foundation::Color;

namespace {

Rgba through(Rgba p, const Dictionary& inputs)
{
    const BitmapRef one = bitmapFrom(1, 1, [&](int, int) { return p; });
    return pixel(*apply("CIFTransparentColorFilter", one, inputs), 0, 0);
}

} // namespace

TEST(TransparentColor, TheColorItselfLosesItsAlphaOnly)
{
    EXPECT_EQ(through({1, 1, 1, 1}, {}), (Rgba{1, 1, 1, 0}));
    // Black is √3 away from white: beyond any factor.
    EXPECT_EQ(through({0, 0, 0, 1}, {{"inputFactor", 1}}), (Rgba{0, 0, 0, 1}));
}

TEST(TransparentColor, AlphaReturnsWithTheDistance)
{
    // A quarter of the factor: 3/16 - 2/64; half of it: one half.
    const Dictionary wide = {{"inputFactor", 0.5}};
    EXPECT_FLOAT_EQ(through({1, 1, 0.875f, 1}, wide).a, 0.15625f);
    EXPECT_FLOAT_EQ(through({0.75f, 1, 1, 1}, wide).a, 0.5f);
    EXPECT_FLOAT_EQ(through({1, 1, 0.5f, 1}, wide).a, 1);
}

TEST(TransparentColor, AlphaIsPartOfTheDistanceAndOfTheColor)
{
    const Dictionary halfRed = {{"inputColor", Color::rgb(1, 0, 0, 0.5f)}, {"inputFactor", 1}};
    EXPECT_EQ(through({0.5f, 0, 0, 0.5f}, halfRed).a, 0);
    // Distance √½: twice it cubed from thrice its square.
    EXPECT_NEAR(through({1, 0, 0, 1}, halfRed).a, 1.5 - 0.7071068, 1e-6);
}

TEST(TransparentColor, AFactorOfNoughtSparesAllOtherColors)
{
    EXPECT_EQ(through({1, 1, 1, 1}, {{"inputFactor", 0}}).a, 0);
    EXPECT_EQ(through({1, 1, 0.99f, 1}, {{"inputFactor", 0}}).a, 1);
}

GOLDEN("CIFTransparentColorFilter", "photo-96x64",
       {{"inputColor", Color::rgb(0.45f, 0.65f, 0.9f)}, {"inputFactor", 0.5}}, {.largest = 1});
