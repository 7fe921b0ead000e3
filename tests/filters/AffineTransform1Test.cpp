// Turning, squeezing and skewing about the middle.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <numbers>

using namespace support;

namespace {

BitmapRef numbered(int width, int height)
{
    return bitmapFrom(width, height, [=](int x, int y) {
        return Rgba{float(x), float(height - 1 - y), 0, 1};
    });
}

Image transformed(const Image& image, double angle, double squeeze, double skew)
{
    return outputOf("CIFAffineTransform2Filter", nullptr,
                    {{"inputImage", image.node()},
                     {"inputAngle", angle},
                     {"inputSqueeze", squeeze},
                     {"inputSkew", skew}});
}

} // namespace

TEST(AffineTransform1, AtNoughtItChangesNothing)
{
    // Also of odd sides, whose middle is no whole pixel.
    const BitmapRef source = numbered(5, 7);
    EXPECT_EQ(compare(*renderWhole(transformed(image(source), 0, 0, 0)), *source).largest, 0);
}

TEST(AffineTransform1, SqueezesTheWidthOrTheHeight)
{
    const Image source = image(numbered(8, 8));
    EXPECT_EQ(transformed(source, 0, 0.5, 0).extent(), Rect::fromEdges(2, 0, 6, 8));
    EXPECT_EQ(transformed(source, 0, -0.5, 0).extent(), Rect::fromEdges(0, 2, 8, 6));
    EXPECT_TRUE(transformed(source, 0, 1, 0).extent().isEmpty());
}

TEST(AffineTransform1, SkewsUpwardToTheRight)
{
    // A column's height above the middle row grows by its distance from the middle.
    const Image skewed = transformed(image(numbered(8, 8)), 0, 0, 1);
    EXPECT_EQ(skewed.extent(), Rect::fromEdges(0, -4, 8, 12));
    // Column 7 lies 3.5 to the right of the middle.
    EXPECT_EQ(pixel(*renderWhole(skewed), 7, 11 - 8), (Rgba{7, 4.5f, 0, 1}));
}

TEST(AffineTransform1, TurnsAboutTheMiddleThatAPictureAtTheOriginHas)
{
    const Image moved = image(numbered(8, 8)).translated(10, 0);
    // About (4, 4), by half a turn; single precision leaves a sliver, rounded outward.
    const Rect turned = transformed(moved, std::numbers::pi, 0, 0).extent();
    EXPECT_NEAR(turned.midX(), -6, 1);
    EXPECT_NEAR(turned.width, 8, 2);
    const BitmapRef out =
        render(transformed(image(numbered(8, 8)), std::numbers::pi, 0, 0), {0, 0, 8, 8});
    EXPECT_NEAR(pixel(*out, 2, 3).r, 5, 1e-4);
    EXPECT_NEAR(pixel(*out, 2, 3).g, 3, 1e-4);
}

GOLDEN("CIFAffineTransform2Filter", "photo-96x64", {{"inputAngle", 0.3}, {"inputSkew", 0.4}},
       {.largest = 1});
