// The picture, transformed and repeated over the whole plane without a seam.
#include "platform/builtin/tile/AffineTile.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

Image affineTile(const Image& image, const AffineTransform& transform)
{
    const Rect extent = image.extent();
    const Image once = transformed(image, transform);
    if (once.extent().isEmpty() || extent.isInfinite())
        return once;
    return warp(image, Rect::infinite(), Reach::anywhere(),
                [inverse = transform.inverse()](const auto& picture, const Coord& at) {
                    return picture.wrapped(imaging::transformed(at, inverse));
                });
}

void AffineTile::initialize(FilterRegistry& registry)
{
    using T = AffineTile;
    add<T>(
        registry, "CIAffineTile", "Affine Tile", {"TileEffect", "Video", "StillImage", "BuiltIn"},
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputTransform", &T::inputTransform, "Transform", kTransform, {}, AffineTransform()},
        });
}

Image AffineTile::outputImage() const
{
    return affineTile(inputImage, inputTransform);
}

} // namespace builtin
