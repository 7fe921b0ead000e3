// Shifts the picture round: what leaves on one side returns on the other, turned and scaled.
#include "filters/Offset.h"

#include "filters/Inputs.h"
#include "platform/builtin/tile/AffineTile.h"

namespace filters {

using namespace imaging;

void Offset::initialize(FilterRegistry& registry)
{
    using T = Offset;
    // The angle is an input that nothing is told about.
    registry.add<T>("CIFOffset", "Offset Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputCenter", &T::inputCenter, "", {}, Vector(10, 10)},
                        {"inputAngle", &T::inputAngle},
                        {"inputScale", &T::inputScale, "", scalar(0.01, 10, 1)},
                    });
}

Image Offset::outputImage() const
{
    const double factor = inputScale != 0 ? 1 / inputScale : 0;
    return builtin::affineTile(
        inputImage, AffineTransform::scaling(factor, factor)
                        .followedBy(AffineTransform::rotation(static_cast<float>(inputAngle)))
                        .followedBy(AffineTransform::translation(inputCenter.x, inputCenter.y)));
}

} // namespace filters
