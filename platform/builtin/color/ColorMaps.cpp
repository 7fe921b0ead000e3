// The colour maps: colour controls, exposure, gamma, hue, white point, monochrome, posterise,
// invert, false colour and colour matrix.
//
// What does not depend on the pixel is worked out in double precision before the kernel. The
// factors are arranged so that an adjustment at its identity leaves every number as it was.
#include "platform/builtin/color/ColorMaps.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/color/Posterize.h"
#include "platform/imaging/Curve.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kAdjustment = {"ColorAdjustment", "Video",           "StillImage",
                                    "Interlaced",      "NonSquarePixels", "BuiltIn"};
constexpr Categories kEffect = {"ColorEffect",     "Video",      "Interlaced",
                                "NonSquarePixels", "StillImage", "BuiltIn"};

} // namespace

// Saturation, then contrast about the middle grey, then brightness.

void ColorControls::initialize(FilterRegistry& registry)
{
    using T = ColorControls;
    add<T>(registry, "CIColorControls", "Color Controls", kAdjustment,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputSaturation", &T::inputSaturation, "Saturation",
                scalar().min(0).slider(0, 2).identity(1)},
               {"inputBrightness", &T::inputBrightness, "Brightness",
                scalar().min(-1).slider(-1, 1).identity(0)},
               {"inputContrast", &T::inputContrast, "Contrast",
                scalar().min(0).slider(0.25, 4).identity(1)},
           });
}

Image ColorControls::outputImage() const
{
    // ((Y + (u - Y)·saturation) - ½)·contrast + ½ + brightness, sorted by what it multiplies.
    const double ofColor = inputSaturation * inputContrast;
    const double ofLuminance = (1 - inputSaturation) * inputContrast;
    const double offset = 0.5 - 0.5 * inputContrast + inputBrightness;
    return mapColor(inputImage, [=](Rgb u) {
        return u * F(ofColor) + (luminance(u) * F(ofLuminance) + F(offset));
    });
}

// A stop doubles the light; stored values follow its 2.2th root.

void ExposureAdjust::initialize(FilterRegistry& registry)
{
    using T = ExposureAdjust;
    add<T>(registry, "CIExposureAdjust", "Exposure Adjust", kAdjustment,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputEV", &T::inputEV, "EV", scalar().slider(-10, 10).identity(0)},
           });
}

Image ExposureAdjust::outputImage() const
{
    const double gain = std::exp2(inputEV / 2.2);
    return mapColor(inputImage, [=](Rgb u) { return u * F(gain); });
}

void GammaAdjust::initialize(FilterRegistry& registry)
{
    using T = GammaAdjust;
    add<T>(registry, "CIGammaAdjust", "Gamma Adjust", kAdjustment,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputPower", &T::inputPower, "Power", scalar().slider(0.25, 4).identity(1)},
           });
}

Image GammaAdjust::outputImage() const
{
    if (inputPower == 1)
        return mapColor(inputImage, [](Rgb u) {
            return Rgb{max(u.r, 0.0f), max(u.g, 0.0f), max(u.b, 0.0f)};
        });
    // Keeps black finite under a negative power.
    const float darkest = inputPower < 0 ? 1.0f / 256 : 0.0f;
    return mapCurve(inputImage,
                    [=, power = F(inputPower)](F x) { return pow(max(x, darkest), power); });
}

// The colour cube turned about its grey axis.

void HueAdjust::initialize(FilterRegistry& registry)
{
    using T = HueAdjust;
    add<T>(registry, "CIHueAdjust", "Hue Adjust", kAdjustment,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
           });
}

Image HueAdjust::outputImage() const
{
    const double c = std::cos(inputAngle), s = std::sin(inputAngle);
    const double a = (1 - c) / 3, b = s / std::sqrt(3.0);
    const double own = c + a, next = a - b, last = a + b;
    return mapColor(inputImage, [=](Rgb u) {
        return Rgb{F(own) * u.r + F(next) * u.g + F(last) * u.b,
                   F(last) * u.r + F(own) * u.g + F(next) * u.b,
                   F(next) * u.r + F(last) * u.g + F(own) * u.b};
    });
}

void WhitePointAdjust::initialize(FilterRegistry& registry)
{
    using T = WhitePointAdjust;
    add<T>(registry, "CIWhitePointAdjust", "White Point Adjust", kAdjustment,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputColor", &T::inputColor, "Color", kColor, {}, Color::white()},
           });
}

Image WhitePointAdjust::outputImage() const
{
    return mapColor(inputImage, [white = inputColor](Rgb u) { return u * rgbOf(white); });
}

void ColorMonochrome::initialize(FilterRegistry& registry)
{
    using T = ColorMonochrome;
    add<T>(registry, "CIColorMonochrome", "Color Monochrome", kEffect,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputColor", &T::inputColor, "Color", Details(InputType::OpaqueColor)},
               {"inputIntensity", &T::inputIntensity, "Intensity",
                scalar().min(0).slider(0, 1).identity(0)},
           });
}

Image ColorMonochrome::outputImage() const
{
    const double kept = 1 - inputIntensity;
    return mapColor(inputImage, [=, toned = inputIntensity, color = inputColor](Rgb u) {
        return u * F(kept) + rgbOf(color) * (luminance(u) * F(toned));
    });
}

void ColorPosterize::initialize(FilterRegistry& registry)
{
    using T = ColorPosterize;
    add<T>(
        registry, "CIColorPosterize", "Color Posterize", kEffect,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputLevels", &T::inputLevels, "Levels", scalar().min(1).slider(2, 30).identity(300)},
        });
}

Image ColorPosterize::outputImage() const
{
    const double levels = inputLevels >= 1 ? std::floor(std::min(inputLevels, 65536.0)) : 1;
    if (levels == 1)
        return mapColor(inputImage, [](Rgb) { return Rgb{0.0f, 0.0f, 0.0f}; });
    return mapColor(inputImage, Posterize{levels});
}

void ColorInvert::initialize(FilterRegistry& registry)
{
    using T = ColorInvert;
    add<T>(registry, "CIColorInvert", "Color Invert", kEffect,
           {{"inputImage", &T::inputImage, "Image", kImage}});
}

Image ColorInvert::outputImage() const
{
    return mapPixels(inputImage, [](Px s) {
        return select(s.a == F(0.0f), transparent(), {s.a - s.r, s.a - s.g, s.a - s.b, s.a});
    });
}

Image falseColor(const Image& image, const Color& dark, const Color& light)
{
    return mapPixels(image, [=](Px s) {
        // Limited, as a source may carry colour above its alpha.
        const F tone = select(s.a == F(0.0f), F(0.0f), clamp01(luminance(s) / s.a));
        return mix(premultiplied(dark), premultiplied(light), tone) * s.a;
    });
}

void FalseColor::initialize(FilterRegistry& registry)
{
    using T = FalseColor;
    add<T>(registry, "CIFalseColor", "False Color", kEffect,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputColor0", &T::inputColor0, "Color 1", kColor},
               {"inputColor1", &T::inputColor1, "Color 2", kColor},
           });
}

Image FalseColor::outputImage() const
{
    return falseColor(inputImage, inputColor0, inputColor1);
}

void ColorMatrix::initialize(FilterRegistry& registry)
{
    using T = ColorMatrix;
    add<T>(
        registry, "CIColorMatrix", "Color Matrix", kAdjustment,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputRVector", &T::inputRVector, "Red Vector", untyped(), {}, Vector(1, 0, 0, 0)},
            {"inputGVector", &T::inputGVector, "Green Vector", untyped(), {}, Vector(0, 1, 0, 0)},
            {"inputBVector", &T::inputBVector, "Blue Vector", untyped(), {}, Vector(0, 0, 1, 0)},
            {"inputAVector", &T::inputAVector, "Alpha Vector", untyped(), {}, Vector(0, 0, 0, 1)},
            {"inputBiasVector",
             &T::inputBiasVector,
             "Bias Vector",
             untyped(),
             {},
             Vector(0, 0, 0, 0)},
        });
}

Image ColorMatrix::outputImage() const
{
    return mapPixels(inputImage, [r = inputRVector, g = inputGVector, b = inputBVector,
                                  a = inputAVector, bias = inputBiasVector](Px s) {
        const Rgb u = unpremultiplied(s);
        const auto weighted = [&](const Vector& v, double offset) {
            return u.r * F(v.x) + u.g * F(v.y) + u.b * F(v.z) + s.a * F(v.w) + F(offset);
        };
        return premultiplied(Rgb{weighted(r, bias.x), weighted(g, bias.y), weighted(b, bias.z)},
                             clamp01(weighted(a, bias.w)));
    });
}

} // namespace builtin
