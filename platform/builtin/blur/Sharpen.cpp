// Filters that add what a Gaussian blur takes away.
//
// The blur's borders are clamped, so that the frame of the picture gets no bright line, and it is
// seen through the alpha of the sharp pixel, so that neither does the outline of a shape.
#include "platform/builtin/blur/Sharpen.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/Blurred.h"
#include "platform/builtin/blur/Cover.h"

namespace builtin {

using namespace imaging;

namespace {

struct Unsharp {
    F intensity;

    Px operator()(Px blurred, Px s) const
    {
        const Rgb b = cover(blurred, s);
        return {max(s.r + intensity * (s.r - b.r), 0.0f), max(s.g + intensity * (s.g - b.g), 0.0f),
                max(s.b + intensity * (s.b - b.b), 0.0f), s.a};
    }
};

// The same number for the three components, so that hues do not shift. The root limits it softly:
// texture is sharpened in full, the halo of an edge never exceeds kMostHalo.
struct SharpenedLuminance {
    static constexpr float kMostHalo = 0.2f;
    F sharpness;

    Px operator()(Px blurred, Px s) const
    {
        const F detail = sharpness * (luminance(s) - luminance(cover(blurred, s)));
        const F part = detail * F(1 / kMostHalo);
        const F added = detail / sqrt(F(1.0f) + part * part);
        return {max(s.r + added, 0.0f), max(s.g + added, 0.0f), max(s.b + added, 0.0f), s.a};
    }
};

} // namespace

void UnsharpMask::initialize(FilterRegistry& registry)
{
    using T = UnsharpMask;
    add<T>(registry, "CIUnsharpMask", "Unsharp Mask", {"Sharpen", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 100).identity(0)},
               {"inputIntensity", &T::inputIntensity, "Intensity",
                scalar().min(0).slider(0, 1).identity(0)},
           });
}

Image UnsharpMask::outputImage() const
{
    if (positive(inputRadius) == 0 || inputIntensity == 0)
        return inputImage;
    return withBlurred(inputImage, inputRadius, Border::Clamped, Unsharp{inputIntensity});
}

void SharpenLuminance::initialize(FilterRegistry& registry)
{
    using T = SharpenLuminance;
    add<T>(
        registry, "CISharpenLuminance", "Sharpen Luminance",
        {"Sharpen", "Video", "StillImage", "BuiltIn"},
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputSharpness", &T::inputSharpness, "Sharpness", scalar().slider(0, 2).identity(0)},
        });
}

Image SharpenLuminance::outputImage() const
{
    constexpr double kRadius = 1.69;
    if (inputSharpness == 0)
        return inputImage;
    return withBlurred(inputImage, kRadius, Border::Clamped, SharpenedLuminance{inputSharpness});
}

} // namespace builtin
