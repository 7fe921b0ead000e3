// The colour maps at single colours.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>
#include <limits>
#include <numbers>

using namespace support;
using foundation::Color;
using foundation::Vector;

namespace {

constexpr double kThirdOfATurn = 2 * std::numbers::pi / 3;
constexpr float kClose = 2e-6f;

} // namespace

TEST(ColorMaps, AdjustmentsAtTheirDefaultsChangeNothing)
{
    // To the bit, also where colours exceed 0…1 and alpha.
    const BitmapRef odd = bitmapFrom(7, 1, [](int x, int) {
        return Rgba{0.37f * float(x) - 0.3f, 0.1f, 1.7f, 1};
    });
    for (const char* name : {"CIColorControls", "CIExposureAdjust", "CIHueAdjust",
                             "CIWhitePointAdjust", "CIColorMatrix"})
        EXPECT_EQ(compare(*apply(name, odd, {}), *odd).largest, 0) << name;
}

TEST(ColorMaps, WhatIsTransparentStaysSo)
{
    // A source may carry colour where it has no alpha; it shows nowhere.
    const Dictionary lit = {{"inputBrightness", 0.5}};
    for (const Rgba p : {Rgba{0, 0, 0, 0}, Rgba{0.5f, 0.2f, 0, 0}}) {
        EXPECT_EQ(through("CIColorControls", p, lit), (Rgba{0, 0, 0, 0}));
        EXPECT_EQ(through("CIGammaAdjust", p, {{"inputPower", 0}}), (Rgba{0, 0, 0, 0}));
        for (const char* name :
             {"CIExposureAdjust", "CIHueAdjust", "CIWhitePointAdjust", "CIColorMonochrome",
              "CIColorPosterize", "CIColorInvert", "CIFalseColor", "CIColorMatrix"})
            EXPECT_EQ(through(name, p), (Rgba{0, 0, 0, 0})) << name;
    }
}

TEST(ColorMaps, ControlsGoBySaturationThenContrastThenBrightness)
{
    // Luminance 0.47058; twice its distance from ½, and then 0.1 more.
    const Dictionary inputs = {
        {"inputSaturation", 0}, {"inputContrast", 2}, {"inputBrightness", 0.1}};
    EXPECT_THAT(through("CIColorControls", {0.8f, 0.4f, 0.2f}, inputs),
                IsColor(Rgba{0.54116f, 0.54116f, 0.54116f}, kClose));
    // The unpremultiplied colour counts.
    EXPECT_THAT(through("CIColorControls", {0.4f, 0.2f, 0.1f, 0.5f}, inputs),
                IsColor(Rgba{0.27058f, 0.27058f, 0.27058f, 0.5f}, kClose));
    // Negative saturation turns to the other side of grey.
    EXPECT_THAT(through("CIColorControls", {1, 0, 0}, {{"inputSaturation", -1}}),
                IsColor(Rgba{-0.575f, 0.425f, 0.425f}, kClose));
}

TEST(ColorMaps, ExposureDoublesLightAStop)
{
    EXPECT_THAT(through("CIExposureAdjust", {0.3f, 0.1f, 0.6f}, {{"inputEV", 2.2}}),
                IsColor(Rgba{0.6f, 0.2f, 1.2f}, kClose));
}

// Bytes and what lies just beside them come by different ways, which must not show.
TEST(ColorMaps, GammaIsTheSameCurveForBytesAndForWhatLiesBetween)
{
    const BitmapRef steps = bitmapFrom(256, 1, [](int x, int) {
        const float v = float(x) * (1.0f / 255);
        return Rgba{v, v, v, 1};
    });
    // One component off the steps keeps a pixel and its neighbours out of the table.
    const BitmapRef between = bitmapFrom(256, 1, [](int x, int) {
        const float v = float(x) * (1.0f / 255);
        return Rgba{v, v, 0.3f, 1};
    });
    for (const double power : {0.7, 2.2, -0.5}) {
        const Dictionary inputs = {{"inputPower", power}};
        const Floats table = reds(*apply("CIGammaAdjust", steps, inputs));
        EXPECT_EQ(table, reds(*apply("CIGammaAdjust", between, inputs)));
        EXPECT_NEAR(table[100], std::pow(100 / 255.0, power), 1e-5);
        EXPECT_NEAR(table[255], 1, 1e-6);
    }
}

TEST(ColorMaps, GammaOfDarkAndNegativeColors)
{
    const Rgba p{0.5f, 0, -1};
    EXPECT_THAT(through("CIGammaAdjust", p, {{"inputPower", 2}}),
                IsColor(Rgba{0.25f, 0, 0}, kClose));
    EXPECT_THAT(through("CIGammaAdjust", p, {{"inputPower", 1}}), IsColor(Rgba{0.5f, 0, 0}, 0));
    EXPECT_THAT(through("CIGammaAdjust", p, {{"inputPower", 0}}), IsColor(Rgba{1, 1, 1}, kClose));
    EXPECT_THAT(through("CIGammaAdjust", p, {{"inputPower", -1}}),
                IsColor(Rgba{2, 256, 256}, 1e-3f));
}

TEST(ColorMaps, HueTurnsAboutTheGreyAxis)
{
    const Dictionary third = {{"inputAngle", kThirdOfATurn}};
    EXPECT_THAT(through("CIHueAdjust", {1, 0, 0}, third), IsColor(Rgba{0, 1, 0}, kClose));
    EXPECT_THAT(through("CIHueAdjust", {0, 1, 0}, third), IsColor(Rgba{0, 0, 1}, kClose));
    EXPECT_THAT(through("CIHueAdjust", {0.3f, 0.3f, 0.3f}, {{"inputAngle", 1.234}}),
                IsColor(Rgba{0.3f, 0.3f, 0.3f}, kClose));
}

TEST(ColorMaps, WhitePointAndMonochromeTakeTheColorWithoutItsAlpha)
{
    const Dictionary orange = {{"inputColor", Color::rgb(1, 0.5f, 0.25f, 0.1f)}};
    EXPECT_THAT(through("CIWhitePointAdjust", {0.5f, 0.5f, 0.5f}, orange),
                IsColor(Rgba{0.5f, 0.25f, 0.125f}, kClose));
    // Half of red is kept, half is its luminance 0.2125 in the default colour.
    EXPECT_THAT(through("CIColorMonochrome", {1, 0, 0}, {{"inputIntensity", 0.5}}),
                IsColor(Rgba{0.56375f, 0.0478125f, 0.031875f}, kClose));
}

TEST(ColorMaps, PosterizeCutsAtWholeLevels)
{
    const auto reds8 = [](double levels) {
        auto bytes = Bitmap::make(4, 1, PixelFormat::Rgba8);
        const unsigned char values[] = {50, 51, 204, 255};
        for (int x = 0; x < 4; ++x) {
            auto* p = bytes->rowAs<unsigned char>(0) + 4 * x;
            p[0] = p[1] = p[2] = values[x];
            p[3] = 255;
        }
        return reds(*apply("CIColorPosterize", bytes, {{"inputLevels", levels}}));
    };
    // 51 and 204 lie on borders of five levels and belong to the brighter one.
    EXPECT_EQ(reds8(5), (Floats{0, 0.25f, 1, 1}));
    EXPECT_EQ(reds8(5.37), reds8(5));
    EXPECT_EQ(reds8(1), (Floats{0, 0, 0, 0}));
    EXPECT_EQ(reds8(-3), reds8(1));
    EXPECT_EQ(reds8(std::numeric_limits<double>::quiet_NaN()), reds8(1));
    EXPECT_EQ(reds8(2), (Floats{0, 0, 1, 1}));
    EXPECT_NEAR(reds8(1e9)[1], 0.2f, 1e-5f);
}

TEST(ColorMaps, InvertKeepsAlpha)
{
    EXPECT_THAT(through("CIColorInvert", {0.1f, 0.2f, 0.5f, 0.5f}),
                IsColor(Rgba{0.4f, 0.3f, 0, 0.5f}, kClose));
}

TEST(ColorMaps, FalseColorRunsFromTheFirstColorToTheSecond)
{
    const Dictionary inputs = {{"inputColor0", Color::rgb(1, 0, 0, 0)},
                               {"inputColor1", Color::rgb(0, 0.5f, 1, 1)}};
    // A transparent colour lends no hue.
    EXPECT_EQ(through("CIFalseColor", {0, 0, 0, 1}, inputs), (Rgba{0, 0, 0, 0}));
    EXPECT_THAT(through("CIFalseColor", {0.5f, 0.5f, 0.5f, 1}, inputs),
                IsColor(Rgba{0, 0.25f, 0.5f, 0.5f}, kClose));
    // Colour above alpha counts as white.
    EXPECT_THAT(through("CIFalseColor", {1, 1, 1, 0.5f}, inputs),
                IsColor(Rgba{0, 0.25f, 0.5f, 0.5f}, kClose));
}

TEST(ColorMaps, MatrixMixesUnpremultipliedColor)
{
    const Rgba p{0.1f, 0.2f, 0.3f, 0.5f}; // colour (0.2, 0.4, 0.6)
    EXPECT_THAT(through("CIColorMatrix", p, {{"inputRVector", Vector(0, 1, 0, 0)}}),
                IsColor(Rgba{0.2f, 0.2f, 0.3f, 0.5f}, kClose));
    // A vector of two numbers has no weights for blue and alpha; alpha is limited to 1.
    EXPECT_THAT(through("CIColorMatrix", p,
                        {{"inputBVector", Vector(1, 1)}, {"inputAVector", Vector(0, 0, 0, 4)}}),
                IsColor(Rgba{0.2f, 0.4f, 0.6f, 1}, kClose));
    // The bias may show what was transparent.
    EXPECT_THAT(through("CIColorMatrix", {0, 0, 0, 0}, {{"inputBiasVector", Vector(1, 0, 0, 0.5)}}),
                IsColor(Rgba{0.5f, 0, 0, 0.5f}, kClose));
}

GOLDEN("CIColorControls", "photo-96x64", {{"inputSaturation", 2}, {"inputContrast", 1.5}},
       {.largest = 1});
GOLDEN("CIColorMonochrome", "photo-96x64", {}, {.largest = 1});
GOLDEN("CIColorPosterize", "photo-96x64", {{"inputLevels", 4}});
GOLDEN("CIFalseColor", "alpha-64x48", {}, {.largest = 1});
GOLDEN("CIHueAdjust", "photo-96x64", {{"inputAngle", 2.1}}, {.largest = 1});
