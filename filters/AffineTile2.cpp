// The plane tiled with the picture, scaled, turned, stretched and skewed.
#include "filters/AffineTile2.h"

#include "filters/Inputs.h"
#include "filters/TileTransform.h"
#include "platform/builtin/tile/AffineTile.h"

namespace filters {

using namespace imaging;

void AffineTile2::initialize(FilterRegistry& registry)
{
    using T = AffineTile2;
    registry.add<T>("CIFAffineTile2Filter", "Affine Tile2 Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputScale", &T::inputScale, "", scalar(0.01, 10, 1.2)},
                        {"inputAngle", &T::inputAngle, "", scalar(-3.14, 3.14, 0)},
                        {"inputStretch", &T::inputStretch, "", scalar(0.01, 10, 0.2)},
                        {"inputSkew", &T::inputSkew, "", scalar(-5, 5, 0)},
                        {"inputCenter", &T::inputCenter, "", {}, Vector(10, 10)},
                    });
}

Image AffineTile2::outputImage() const
{
    return builtin::affineTile(
        inputImage, tileTransform(inputScale, inputAngle, inputStretch, inputSkew, inputCenter));
}

} // namespace filters
