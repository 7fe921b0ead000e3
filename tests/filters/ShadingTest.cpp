// Shading is a relief lit like a ball.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace support;

namespace {

// Red shows how far right a surface looks, green how far up.
BitmapRef ball()
{
    constexpr int kSide = 64;
    return bitmapFrom(kSide, kSide, [](int x, int y) {
        return Rgba{(float(x) + 0.5f) / kSide, (float(kSide - y) - 0.5f) / kSide, 0.2f, 1};
    });
}

BitmapRef square()
{
    return bitmapFrom(64, 48, [](int x, int y) {
        const float v = x >= 16 && x < 48 && y >= 12 && y < 36 ? 1.0f : 0.0f;
        return Rgba{v, v, v, 1};
    });
}

} // namespace

TEST(Shading, SlopesShowTheSideOfTheBallThatTheyFace)
{
    const BitmapRef out = apply(
        "CIFShadingFilter", square(),
        {{"inputShadingImage", imageValue(ball())}, {"inputScale", 2.0}, {"inputRadius", 6.0}});
    const Rgba left = pixel(*out, 18, 24), right = pixel(*out, 45, 24), top = pixel(*out, 32, 14),
               middle = pixel(*out, 32, 24), outside = pixel(*out, 4, 4);
    EXPECT_LT(left.r, 0.45f);
    EXPECT_NEAR(left.r + right.r, 1, 0.01);
    EXPECT_GT(top.g, 0.55f);
    EXPECT_NEAR(top.r, 0.5, 0.01);
    // Flat ground shows the middle of the ball.
    EXPECT_NEAR(outside.r, 0.5, 0.01);
    EXPECT_NEAR(outside.g, 0.5, 0.01);
    EXPECT_NEAR(middle.r, 0.5, 0.02);
}

TEST(Shading, WithoutAMaterialThereIsNoImage)
{
    EXPECT_FALSE(outputOf("CIFShadingFilter", square(), {}));
}

TEST(Shading, TheCatalogueScaleIsSteeperThanTheSlider)
{
    // 5.5 is what the list starts with; nothing limits it to the described 2.
    const auto steepness = [](double scale) {
        const BitmapRef out = apply("CIFShadingFilter", square(),
                                    {{"inputShadingImage", imageValue(ball())},
                                     {"inputScale", scale},
                                     {"inputRadius", 6.0}});
        return std::abs(pixel(*out, 18, 24).r - 0.5f);
    };
    EXPECT_GT(steepness(5.5), 1.5f * steepness(2));
}
