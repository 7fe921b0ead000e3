// Stripes, checkerboards, gradients and noise at single pixels.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>

using namespace support;
using foundation::Color;
using foundation::Vector;

namespace {

Floats row(const Image& image, int x, int y, int count)
{
    return reds(*render(image, {double(x), double(y), double(count), 1}));
}

Image stripes(double start, double width, double sharpness)
{
    return outputOf(
        "CIStripesGenerator", nullptr,
        {{"inputCenter", Vector(start, 0)}, {"inputWidth", width}, {"inputSharpness", sharpness}});
}

} // namespace

TEST(Stripes, TheFirstStripeBeginsAtTheCenterAndRunsRight)
{
    EXPECT_EQ(row(stripes(10, 4, 1), 6, 33, 12), (Floats{0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0}));
    // A border through the middle of pixels is half and half there.
    EXPECT_EQ(row(stripes(10.5, 3, 1), 9, 0, 6), (Floats{0, 0.5f, 1, 1, 0.5f, 0}));
}

TEST(Stripes, SoftStripesFadeFromMiddleToMiddle)
{
    EXPECT_EQ(row(stripes(10, 4, 0), 10, 0, 8),
              (Floats{0.625f, 0.875f, 0.875f, 0.625f, 0.375f, 0.125f, 0.125f, 0.375f}));
}

TEST(Stripes, AreAsSharpFarAway)
{
    const int far = 800'000'000;
    EXPECT_EQ(row(stripes(10, 4, 0), far + 10, 0, 600), row(stripes(10, 4, 0), 10, 0, 600));
}

TEST(Stripes, TooNarrowOnesAreTheirMean)
{
    for (const double width : {0.0, -5.0, 0.0005, std::nan("")})
        EXPECT_EQ(row(stripes(10, width, 1), 10, 0, 3), (Floats{0.5f, 0.5f, 0.5f})) << width;
}

TEST(Checkerboard, TheSquareAboveRightOfTheCenterHasTheFirstColor)
{
    const Image board = outputOf("CICheckerboardGenerator", nullptr,
                                 {{"inputCenter", Vector(20, 30)},
                                  {"inputWidth", 3},
                                  {"inputColor0", Color::rgb(1, 0.5f, 0, 0.5f)},
                                  {"inputColor1", Color::rgb(0, 0, 1, 1)}});
    const Rgba first{0.5f, 0.25f, 0, 0.5f}, second{0, 0, 1, 1};
    EXPECT_EQ(at(board, 20, 30), first);
    EXPECT_EQ(at(board, 22, 32), first);
    EXPECT_EQ(at(board, 19, 30), second);
    EXPECT_EQ(at(board, 20, 29), second);
    EXPECT_EQ(at(board, 19, 29), first);
    EXPECT_EQ(at(board, 23, 33), first);
}

TEST(GaussianGradient, FallsFromTheFirstColorToTheSecondAtTheRadius)
{
    const auto gradient = [](double radius) {
        return outputOf("CIGaussianGradient", nullptr,
                        {{"inputCenter", Vector(0.5, 0.5)},
                         {"inputRadius", radius},
                         {"inputColor0", Color::rgb(1, 1, 0, 1)},
                         {"inputColor1", Color::rgb(0, 0, 1, 0.5f)}});
    };
    const Rgba outside{0, 0, 0.5f, 0.5f};
    const float half = 0.317065f; // (e^-1.125 - e^-4.5) / (1 - e^-4.5)
    EXPECT_THAT(at(gradient(10), 0, 0), IsColor(Rgba{1, 1, 0, 1}, 1e-6f));
    EXPECT_THAT(at(gradient(10), 0, 5),
                IsColor(Rgba{half, half, 0.5f - 0.5f * half, 0.5f + 0.5f * half}, 1e-5f));
    EXPECT_EQ(at(gradient(10), -10, 0), outside);
    EXPECT_EQ(at(gradient(0), 0, 0), outside);
    EXPECT_EQ(at(gradient(-4), 0, 0), outside);
}

TEST(Random, PixelsAreTheHashOfTheirCoordinates)
{
    const struct {
        int i, j;
        unsigned hash[4];
    } known[] = {
        {0, 0, {0x6a57d152, 0x8edd6daa, 0x674c17e7, 0x57693f00}},
        {1, 0, {0x546933c4, 0xcaf7d852, 0x3a269a47, 0x87462dcd}},
        {0, 1, {0x241bbe9e, 0xfa72c0d3, 0x3e9b909e, 0x1588a449}},
        {-1, -1, {0x9fc44c7f, 0x79dd4ac2, 0x115881d3, 0xf602ad0a}},
        {1000, 2000, {0x9c8d02f3, 0x8aa450bf, 0x9f392505, 0xe67d5153}},
    };
    const Image noise = outputOf("CIRandomGenerator", nullptr);
    for (const auto& k : known) {
        const auto unit = [&](int c) { return float(k.hash[c] >> 8) / 16777216; };
        const Rgba expected{unit(0), unit(1), unit(2), unit(3)};
        EXPECT_EQ(at(noise, k.i, k.j), expected);
        // From another corner and another place within the lanes.
        const BitmapRef around = render(noise, {k.i - 5.0, k.j - 2.0, 11, 6});
        EXPECT_EQ(pixel(*around, 5, 3), expected);
    }
}

TEST(Random, NeighboursDifferFarFromTheOrigin)
{
    const Image noise = outputOf("CIRandomGenerator", nullptr);
    const Floats far = row(noise, 1'000'000'000, -1'000'000'000, 64);
    for (std::size_t i = 1; i < far.size(); ++i)
        EXPECT_NE(far[i], far[i - 1]);
}

TEST(Patterns, Goldens)
{
    const Rect small{0, 0, 96, 64};
    expectGolden("checkerboard-half-sharp",
                 *render(outputOf("CICheckerboardGenerator", nullptr,
                                  {{"inputCenter", Vector(48, 32)},
                                   {"inputWidth", 20},
                                   {"inputSharpness", 0.5},
                                   {"inputColor0", Color::rgb(1, 0.8f, 0.2f)},
                                   {"inputColor1", Color::rgb(0.1f, 0.2f, 0.5f)}}),
                         small),
                 {.largest = 1});
    expectGolden("gaussian-gradient-orange-to-clear",
                 *render(outputOf("CIGaussianGradient", nullptr,
                                  {{"inputCenter", Vector(40, 30)},
                                   {"inputRadius", 36},
                                   {"inputColor0", Color::rgb(1, 0.5f, 0)}}),
                         small),
                 {.largest = 1});
    expectGolden("random-from-the-origin",
                 *render(outputOf("CIRandomGenerator", nullptr), {0, 0, 48, 32}));
}
