// The picture seen through a pane of glass whose relief is a texture.
#include "platform/builtin/distortion/GlassDistortion.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Arrange.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

// The slopes of a relief a part of a pixel to the right of and above each pixel, in red and green:
// Sobel's differences of heights that are interpolated between pixels.
class Slopes {
public:
    Slopes(double partX, double partY, double scale)
        : _columns(partX > 0 ? 4 : 3), _rows(partY > 0 ? 4 : 3)
    {
        const auto fill = [](float* differences, float* means, double f, double factor) {
            const double d[] = {f - 1, -f, 1 - f, f}, m[] = {1 - f, 2 - f, 1 + f, f};
            for (int i = 0; i < 4; ++i) {
                differences[i] = static_cast<float>(d[i] * factor);
                means[i] = static_cast<float>(m[i]);
            }
        };
        fill(_differenceX, _meanX, partX, scale / 8);
        fill(_differenceY, _meanY, partY, scale / 8);
    }

    Px operator()(const auto& window) const
    {
        F x = 0.0f, y = 0.0f;
        for (int j = 0; j < _rows; ++j)
            for (int i = 0; i < _columns; ++i) {
                const F height = window.luma(i - 1, j - 1);
                x += height * F(_differenceX[i] * _meanY[j]);
                y += height * F(_meanX[i] * _differenceY[j]);
            }
        return {x, y, 0.0f, 0.0f};
    }

private:
    int _columns, _rows; // the fourth only counts between pixels
    float _differenceX[4], _meanX[4], _differenceY[4], _meanY[4];
};

constexpr int kMargin = 2;

// A distance in whole periods, whole pixels below one period, and the part of a pixel beyond.
struct Phase {
    int whole = 0;
    double part = 0;

    Phase(double distance, double period)
    {
        if (!std::isfinite(distance))
            return;
        const double within = distance - period * std::floor(distance / period);
        whole = foundation::truncToInt(std::clamp(std::floor(within), 0.0, period - 1));
        part = std::clamp(within - whole, 0.0, 1.0);
    }
};

// Where each pixel of the plane gets its colour from, as a distance in red and green.
Image displacements(const Image& texture, const Vector& center, double scale)
{
    const Rect cell = texture.extent();
    if (cell.isInfinite())
        return neighborhood(texture, kMargin, Slopes(0, 0, scale));
    // The position in the texture less the position in the picture.
    const Phase x(cell.width / 2 - center.x + cell.x, cell.width);
    const Phase y(cell.height / 2 - center.y + cell.y, cell.height);
    // The slopes of one cell, whose borders see the next one.
    const Image heights = repeated(texture).cropped(grown(cell, kMargin, kMargin));
    const Image slopes =
        neighborhood(heights, kMargin, Slopes(x.part, y.part, scale)).cropped(cell);
    return repeated(slopes).translated(-x.whole, -y.whole);
}

// Heights within 0…1 rise by at most ½ a pixel. Of opaque bytes it is known that they are; of other
// textures it is taken for granted only where the picture has no end.
Reach reachOf(const Image& texture, double scale, const Rect& all)
{
    return Reach::of([=](const Rect& region) {
        const PixelBlockRef pixels = texture.node()->pixels();
        const bool low = pixels && pixels->format == PixelBlock::Format::OpaqueBytes;
        return low || all.isInfinite() ? grown(region, scale / 2, scale / 2) : all;
    });
}

} // namespace

void GlassDistortion::initialize(FilterRegistry& registry)
{
    using T = GlassDistortion;
    add<T>(registry, "CIGlassDistortion", "Glass Distortion",
           {"DistortionEffect", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputTexture", &T::inputTexture, "Texture", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputScale", &T::inputScale, "Scale",
                distance().min(0).slider(0.01, 500).identity(0)},
           });
}

// Raised parts magnify.
Image GlassDistortion::outputImage() const
{
    const Rect extent = inputImage.extent();
    const double scale = std::min(positive(inputScale), 1e9);
    if (extent.isEmpty() || inputTexture.extent().isEmpty() || scale == 0)
        return inputImage;
    return guidedWarp(displacements(inputTexture, inputCenter, scale).cropped(extent), inputImage,
                      reachOf(inputTexture, scale, extent),
                      [](Px distance, const auto& picture, const Coord& at) {
                          return picture.clamped(at + Vec2{distance.r, distance.g});
                      });
}

} // namespace builtin
