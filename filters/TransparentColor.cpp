// Makes the pixels near a colour transparent: their alpha falls to 0 as the distance in all four
// components does. The colour components stay as they were, above the new alpha.
#include "filters/TransparentColor.h"

#include "filters/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace filters {

using namespace imaging;

namespace {

struct TransparentColorKernel {
    Color color;
    float factor;

    Px operator()(Px s) const
    {
        const Px d = premultiplied(color) - s;
        const F distance = sqrt(d.r * d.r + d.g * d.g + d.b * d.b + d.a * d.a);
        // Unguarded: a factor of 0 divides by zero; only the very colour is transparent then.
        s.a = clamp01(s.a * smoothstep(0.0f, factor, distance));
        return s;
    }
};

} // namespace

void TransparentColor::initialize(FilterRegistry& registry)
{
    using T = TransparentColor;
    registry.add<T>("CIFTransparentColorFilter", "Transparent Color Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputColor", &T::inputColor, "", {}, Color::white()},
                        {"inputFactor", &T::inputFactor, "", scalar(0.01, 1, 0.2)},
                    });
}

Image TransparentColor::outputImage() const
{
    return mapPixels(inputImage,
                     TransparentColorKernel{inputColor, static_cast<float>(inputFactor)});
}

} // namespace filters
