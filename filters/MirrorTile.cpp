// The plane tiled with the picture at half size and its three mirror images.
#include "filters/MirrorTile.h"

#include "filters/Inputs.h"
#include "filters/TileTransform.h"
#include "platform/builtin/tile/AffineTile.h"
#include "platform/imaging/Kernel.h"

namespace filters {

using namespace imaging;

namespace {

// Mirrored into the four quadrants about the centre of a picture that begins at the origin.
struct MirrorTileKernel {
    float imageWidth, imageHeight;

    Px operator()(const auto& image, const Coord& at) const
    {
        const F x = at.x(), y = at.y();
        return image(Point{} + Vec2{abs(F(2.0f) * x - F(imageWidth) + F(0.5f)),
                                    abs(F(2.0f) * y - F(imageHeight) + F(0.5f))});
    }
};

} // namespace

void MirrorTile::initialize(FilterRegistry& registry)
{
    using T = MirrorTile;
    registry.add<T>("CIFMirrorTileFilter", "Mirror Tile Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputScale", &T::inputScale, "", scalar(0.01, 10, 1.2)},
                        {"inputAngle", &T::inputAngle, "", scalar(-3.14, 3.14, 0)},
                        {"inputStretch", &T::inputStretch, "", scalar(0.01, 10, 0.2)},
                        {"inputSkew", &T::inputSkew, "", scalar(-5, 5, 0)},
                        {"inputCenter", &T::inputCenter, "", {}, Vector(10, 10)},
                    });
}

Image MirrorTile::outputImage() const
{
    const Rect extent = inputImage.extent();
    const Image mirrored =
        warp(inputImage, extent, Reach::anywhere(),
             MirrorTileKernel{static_cast<float>(extent.width), static_cast<float>(extent.height)});
    return builtin::affineTile(
        mirrored, tileTransform(inputScale, inputAngle, inputStretch, inputSkew, inputCenter));
}

} // namespace filters
