// Two colours about a level.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

using namespace support;
using foundation::Color;

namespace {

Rgba through(Rgba p, const Dictionary& inputs = {})
{
    const BitmapRef one = bitmapFrom(1, 1, [&](int, int) { return p; });
    return pixel(*apply("CIFBlackWhiteFilter", one, inputs), 0, 0);
}

// White's luminance is 1 but for rounding, so that a trace of the other color stays.
void expectNear(const Rgba& actual, const Rgba& expected)
{
    EXPECT_NEAR(actual.r, expected.r, 1e-6) << actual;
    EXPECT_NEAR(actual.g, expected.g, 1e-6) << actual;
    EXPECT_NEAR(actual.b, expected.b, 1e-6) << actual;
    EXPECT_NEAR(actual.a, expected.a, 1e-6) << actual;
}

constexpr Rgba kWhite{1, 1, 1, 1}, kBlack{0, 0, 0, 1};

} // namespace

TEST(BlackWhite, BrighterThanTheLevelIsTheFirstColor)
{
    expectNear(through({0.6f, 0.6f, 0.6f, 1}), kWhite);
    expectNear(through({0.4f, 0.4f, 0.4f, 1}), kBlack);
    // Green is brighter than red and blue together.
    expectNear(through({0, 0.75f, 0, 1}), kWhite);
    expectNear(through({1, 0, 1, 1}), kBlack);
}

TEST(BlackWhite, TheLevelItselfIsNotBrighter)
{
    // 0.2125 · 1 exactly.
    expectNear(through({1, 0, 0, 1}, {{"inputLevel", 0.2125f}}), kBlack);
    expectNear(through({0, 0, 0, 1}, {{"inputLevel", 0.0}}), kBlack);
}

TEST(BlackWhite, TheColorsCarryTheirAlphaIntoThePixels)
{
    const Dictionary colors = {{"inputColor0", Color{1, 0.5f, 0, 1}},
                               {"inputColor1", Color{0, 0, 1, 0.5f}}};
    expectNear(through({1, 1, 1, 1}, colors), (Rgba{1, 0.5f, 0, 1}));
    expectNear(through({0, 0, 0, 1}, colors), (Rgba{0, 0, 0.5f, 0.5f}));
    expectNear(through({0, 0, 0, 0.5f}, colors), (Rgba{0, 0, 0.25f, 0.25f}));
    expectNear(through({0, 0, 0, 0}, colors), (Rgba{0, 0, 0, 0}));
}

GOLDEN("CIFBlackWhiteFilter", "photo-96x64", {{"inputColor1", Color{0.2f, 0, 0.4f, 1}}});
