// Highlights that spread over their surroundings, and highlights that sink into them.
#include "platform/builtin/blur/Glow.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/Blurred.h"
#include "platform/builtin/blur/Cover.h"

namespace builtin {

using namespace imaging;

namespace {

// Light is added where the neighbourhood is brighter, beyond the picture's border as well.
struct Bloomed {
    F intensity;

    Px operator()(Px blurred, Px s) const
    {
        const auto lifted = [&](F b, F v) { return v + intensity * max(b - v, 0.0f); };
        return {lifted(blurred.r, s.r), lifted(blurred.g, s.g), lifted(blurred.b, s.b),
                lifted(blurred.a, s.a)};
    }
};

// The dual, inside the picture and its shapes.
struct Gloomed {
    F intensity;

    Px operator()(Px blurred, Px s) const
    {
        const Rgb b = cover(blurred, s);
        const auto sunk = [&](F around, F v) {
            return max(v - intensity * max(v - around, 0.0f), 0.0f);
        };
        return {sunk(b.r, s.r), sunk(b.g, s.g), sunk(b.b, s.b), s.a};
    }
};

template <class T>
void addGlow(FilterRegistry& registry, const char* name, const char* displayName)
{
    add<T>(registry, name, displayName, {"Stylize", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 100).identity(0)},
               {"inputIntensity", &T::inputIntensity, "Intensity",
                scalar().min(0).slider(0, 1).identity(0)},
           });
}

} // namespace

void Bloom::initialize(FilterRegistry& registry)
{
    addGlow<Bloom>(registry, "CIBloom", "Bloom");
}

Image Bloom::outputImage() const
{
    if (positive(inputRadius) == 0 || inputIntensity == 0)
        return inputImage;
    return withBlurred(inputImage, inputRadius, Border::Transparent, Bloomed{inputIntensity});
}

void Gloom::initialize(FilterRegistry& registry)
{
    addGlow<Gloom>(registry, "CIGloom", "Gloom");
}

Image Gloom::outputImage() const
{
    if (positive(inputRadius) == 0 || inputIntensity == 0)
        return inputImage;
    return withBlurred(inputImage, inputRadius, Border::Clamped, Gloomed{inputIntensity});
}

} // namespace builtin
