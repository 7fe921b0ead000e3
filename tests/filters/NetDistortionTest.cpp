// The net of ripples.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace support;

namespace {

// Red is the column's middle, green the row's height: what is sampled says where it was.
BitmapRef positions(int width, int height)
{
    return bitmapFrom(width, height, [=](int x, int y) {
        return Rgba{float(x) + 0.5f, float(height - y) - 0.5f, 0, 1};
    });
}

} // namespace

TEST(NetDistortion, MovesBySineAndCosineWithinOnePixelOfTheFrame)
{
    constexpr int kWidth = 700, kHeight = 300;
    const BitmapRef out = apply("CIFNetDistortion", positions(kWidth, kHeight),
                                {{"inputWidth", 7.0}, {"inputHeight", 5.0}});
    for (int y = 0; y < kHeight; y += 7)
        for (int x = 0; x < kWidth; x += 3) {
            const double ax = x + 0.5, ay = kHeight - y - 0.5;
            const Rgba p = pixel(*out, x, y);
            ASSERT_NEAR(p.r, std::clamp(ax + 7 * std::cos(ax), 1.0, kWidth - 1.0), 2e-4) << x;
            ASSERT_NEAR(p.g, std::clamp(ay + 5 * std::sin(ay), 1.0, kHeight - 1.0), 2e-4) << y;
            ASSERT_EQ(p.a, 1);
        }
}

TEST(NetDistortion, AtNoughtOnlyTheOutermostPixelsMove)
{
    const BitmapRef out =
        apply("CIFNetDistortion", positions(8, 6), {{"inputWidth", 0.0}, {"inputHeight", 0.0}});
    // Half-way to their neighbours, as the limit lies on the border between two pixels.
    EXPECT_EQ(pixel(*out, 0, 2), (Rgba{1, 3.5f, 0, 1}));
    EXPECT_EQ(pixel(*out, 7, 0), (Rgba{7, 5, 0, 1}));
    EXPECT_EQ(pixel(*out, 3, 2), (Rgba{3.5f, 3.5f, 0, 1}));
}

GOLDEN("CIFNetDistortion", "photo-96x64", {{"inputWidth", 4.0}, {"inputHeight", 2.0}},
       {.largest = 2});
