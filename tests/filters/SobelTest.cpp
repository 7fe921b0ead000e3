// Edges of the red channel.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include "platform/imaging/Filter.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace support;

namespace {

Floats edges(int width, int height, const std::function<Rgba(int, int)>& fn, double intensity = 1)
{
    return reds(*apply("CIFSobel", bitmapFrom(width, height, fn), {{"inputIntensity", intensity}}));
}

} // namespace

TEST(Sobel, APointHasARingOfEdges)
{
    // Beside it 2, diagonally √1² + 1²; the point itself sees nothing but itself.
    const float d = std::sqrt(2.0f);
    const Floats ring = {0, 0, 0, 0, 0, 0, d, 2, d, 0, 0, 2, 0, 2, 0, 0, d, 2, d, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(edges(5, 5,
                    [](int x, int y) {
                        return Rgba{x == 2 && y == 2 ? 1.0f : 0, 0, 0, 1};
                    }),
              ring);
}

TEST(Sobel, OnlyRedCountsAndAlphaStays)
{
    const BitmapRef out = apply("CIFSobel",
                                bitmapFrom(3, 3,
                                           [](int x, int) {
                                               return Rgba{0, float(x), 0.5f, 0.25f * float(x)};
                                           }),
                                {{"inputIntensity", 3}});
    for (int x = 0; x < 3; ++x)
        EXPECT_EQ(pixel(*out, x, 1), (Rgba{0, 0, 0, 0.25f * float(x)}));
}

TEST(Sobel, OutsideThePictureThereIsNoRed)
{
    // A red picture is flat inside; its frame is a step of height 1, times 4 by the weights.
    const Floats e = edges(
        4, 4,
        [](int, int) {
            return Rgba{1, 0, 0, 1};
        },
        0.5);
    EXPECT_EQ(e[4 + 1], 0);
    EXPECT_EQ(e[4], 2);
    EXPECT_EQ(e[1], 2);
    EXPECT_FLOAT_EQ(e[0], 0.5f * std::sqrt(18.0f));
}

TEST(Sobel, TheResultIsGreyAndNotLimited)
{
    const BitmapRef out = apply("CIFSobel",
                                bitmapFrom(4, 4,
                                           [](int x, int) {
                                               return Rgba{float(x / 2), 0, 0, 1};
                                           }),
                                {{"inputIntensity", 7}});
    EXPECT_EQ(pixel(*out, 1, 1), (Rgba{28, 28, 28, 1}));
}

TEST(Sobel, AnUnsetIntensityIsNought)
{
    registerFilters();
    const auto filter = imaging::Filter::filterWithName("CIFSobel");
    filter->setValueForKey(image(picture("edges-64x48")), "inputImage");
    for (const float v : reds(*renderWhole(filter->outputImage())))
        ASSERT_EQ(v, 0);
    // The description of the picture is its class alone.
    const auto described = filter->attributes()["inputImage"].dictionary();
    EXPECT_EQ((*described)["CIAttributeClass"], Value("CIImage"));
    EXPECT_FALSE(described->contains("CIAttributeType"));
}

GOLDEN("CIFSobel", "photo-96x64", {{"inputIntensity", 1}});
