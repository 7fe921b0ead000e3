// Makes a relief of the picture and lights it like a material.
#include "filters/Shading.h"

#include "filters/Inputs.h"
#include "platform/builtin/lighting/HeightField.h"
#include "platform/builtin/lighting/ShadedMaterial.h"

namespace filters {

using namespace imaging;

void Shading::initialize(FilterRegistry& registry)
{
    using T = Shading;
    registry.add<T>("CIFShadingFilter", "Shading Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputShadingImage", &T::inputShadingImage},
                        {"inputScale", &T::inputScale, "", scalar(0.01, 2, 0.1)},
                        {"inputRadius", &T::inputRadius, "", scalar(0, 100, 10)},
                    });
}

Image Shading::outputImage() const
{
    return builtin::shadedMaterial(builtin::heightField(inputImage, inputRadius), inputShadingImage,
                                   inputScale);
}

} // namespace filters
