// Every square of a grid shows what lies around it, larger or smaller and turned.
#include "platform/builtin/tile/OpTile.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Plane.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

// The nearest multiple of the step.
double nearest(double v, double step)
{
    return step * std::floor(v / step + 0.5);
}
F nearest(F v, double step)
{
    return F(step) * floor(v / F(step) + F(0.5f));
}

struct Tiles {
    Point center;
    Turn content; // from a tile to the picture
    double scale, width;
    Rect extent;
    bool isEndless;

    Px operator()(const auto& picture, const Coord& at) const
    {
        // The middle of the anchor's tile, in double precision, then the pixel's as seen from it.
        const Point middle{center.x + nearest(at.anchor.x - center.x, width),
                           center.y + nearest(at.anchor.y - center.y, width)};
        const Vec2 v = at - middle;
        const Vec2 m{nearest(v.x, width), nearest(v.y, width)};
        const Vec2 source = m + content.apply(v - m) * F(scale);
        if (isEndless)
            return picture(middle + source);
        return picture.clamped(Point{extent.x, extent.y} +
                               Vec2{reflected(middle.x - extent.x, source.x, extent.width),
                                    reflected(middle.y - extent.y, source.y, extent.height)});
    }

    // A coordinate mirrored at 0 and at the size.
    static F reflected(double anchor, F offset, double size)
    {
        const F x = F(anchor - nearest(anchor, 2 * size)) + offset;
        return abs(x - nearest(x, 2 * size));
    }
};

// The part of 0…size that an interval shows when it is mirrored there.
void reflect(double& low, double& high, double size)
{
    const double first = std::floor(low / size), last = std::floor(high / size);
    if (!(last - first < 2)) {
        low = 0;
        high = size;
        return;
    }
    const auto mirrored = [&](double v) { return std::abs(v - nearest(v, 2 * size)); };
    const double a = mirrored(low), b = mirrored(high);
    low = std::min(a, b);
    high = std::max(a, b);
    // One border is passed: 0 before an even size, the far end before an odd one.
    if (last > first)
        (std::fmod(last, 2) == 0 ? low : high) = std::fmod(last, 2) == 0 ? 0 : size;
}

} // namespace

void OpTile::initialize(FilterRegistry& registry)
{
    using T = OpTile;
    add<T>(
        registry, "CIOpTile", "Op Tile", {"TileEffect", "Video", "StillImage", "BuiltIn"},
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputScale", &T::inputScale, "Scale", scalar().min(0).slider(0.1, 10).identity(1)},
            {"inputAngle", &T::inputAngle, "Angle", kTurn},
            {"inputWidth", &T::inputWidth, "Width", distance().min(0).slider(1, 1000).identity(65)},
        });
}

Image OpTile::outputImage() const
{
    const Rect e = inputImage.extent();
    if (e.isEmpty())
        return inputImage;
    // Tiles too small to see leave the picture as it is.
    const bool changes = inputWidth >= 0.001;
    const Tiles tiles{.center = inputCenter.point(),
                      .content = Turn(changes ? -inputAngle : 0),
                      .scale = changes ? positive(inputScale) : 1,
                      .width = changes ? std::min(inputWidth, 1e9) : 1,
                      .extent = e,
                      .isEndless = e.isInfinite()};
    const double side = std::abs(tiles.content.sine) + std::abs(tiles.content.cosine);
    const double margin = tiles.width / 2 * (1 + tiles.scale * side);
    const auto need = [=](const Rect& region) {
        const Rect shown = grown(region, margin, margin);
        if (e.isInfinite())
            return shown;
        double left = shown.x - e.x, right = shown.right() - e.x;
        double bottom = shown.y - e.y, top = shown.top() - e.y;
        reflect(left, right, e.width);
        reflect(bottom, top, e.height);
        return Rect::fromEdges(e.x + left, e.y + bottom, e.x + right, e.y + top);
    };
    return warp(inputImage, Rect::infinite(), Reach::of(need), tiles);
}

} // namespace builtin
