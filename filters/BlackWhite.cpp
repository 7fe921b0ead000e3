// Two colours: one for what is brighter than a level, one for the rest.
#include "filters/BlackWhite.h"

#include "filters/Inputs.h"
#include "platform/builtin/color/ColorMaps.h"
#include "platform/imaging/Kernel.h"

namespace filters {

using namespace imaging;

namespace {

// Black where it is brighter, so that the first colour of the map below is the bright one. The
// pixel's luminance counts as it is stored, darkened by its transparency.
struct BlackAndWhite {
    float factor;

    Px operator()(Px v) const
    {
        const F tone = select(luminance(v) > F(factor), F(0.0f), F(1.0f));
        return {tone, tone, tone, v.a};
    }
};

} // namespace

void BlackWhite::initialize(FilterRegistry& registry)
{
    using T = BlackWhite;
    registry.add<T>("CIFBlackWhiteFilter", "BlackWhite Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputLevel", &T::inputLevel, "", scalar(0, 1, 0.5)},
                        {"inputColor0", &T::inputColor0, "", {}, Color::white()},
                        {"inputColor1", &T::inputColor1, "", {}, Color::black()},
                    });
}

Image BlackWhite::outputImage() const
{
    return builtin::falseColor(mapPixels(inputImage, BlackAndWhite{static_cast<float>(inputLevel)}),
                               inputColor0, inputColor1);
}

} // namespace filters
