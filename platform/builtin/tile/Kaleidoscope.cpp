// A wedge of the picture, mirrored around a point.
#include "platform/builtin/tile/Kaleidoscope.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

struct Mirrors {
    Point center;
    double pairs;
    double start; // radians, 0 … 2π

    Px operator()(const auto& picture, const Coord& at) const
    {
        const Vec2 v = at - center;
        // In which wedge, counted from the picture's own.
        const F turn = frac((atan2(v.y, v.x) - F(start)) * F(0.5 / kPi));
        const F wedge = floor(turn * F(2 * pairs));
        const F half = wedge * F(0.5f), pair = floor(half);
        const M isMirrored = pair < half;
        // The picture's own wedge is turned to here, or mirrored at the line half-way.
        const F opening = 2 * kPi / pairs;
        F s, c;
        sincos(select(isMirrored, F(2 * start) + (pair + F(1.0f)) * opening, pair * opening), s, c);
        const F along = v.x * c + v.y * s, across = v.x * s - v.y * c;
        const Vec2 source{along, select(isMirrored, across, -across)};
        return picture(at + (source - v));
    }
};

// The distance of the farthest point of the polygon.
double reachOf(const Polygon& polygon, Point from)
{
    double reach = 0;
    for (const Point& p : polygon)
        reach = std::max(reach, std::hypot(p.x - from.x, p.y - from.y));
    return reach;
}

} // namespace

void Kaleidoscope::initialize(FilterRegistry& registry)
{
    using T = Kaleidoscope;
    add<T>(registry, "CIKaleidoscope", "Kaleidoscope",
           {"TileEffect", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCount", &T::inputCount, "Count", scalar().min(1).slider(1, 64)},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
           });
}

Image Kaleidoscope::outputImage() const
{
    const Rect extent = inputImage.extent();
    if (extent.isEmpty())
        return inputImage;
    const double count = std::floor(std::abs(inputCount) + 0.5);
    const double pairs = std::isfinite(count) ? std::max(count, 1.0) : 1;
    const Point center = inputCenter.point();
    const double turns = inputAngle / (2 * kPi);
    const Mirrors mirrors{
        .center = center, .pairs = pairs, .start = (turns - std::floor(turns)) * 2 * kPi};
    if (extent.isInfinite())
        return warp(inputImage, extent, Reach::of([center](const Rect& region) {
                        return squareAround(center, farthestDistance(region, center));
                    }),
                    mirrors);

    // What the wedge holds of the picture decides how far the result reaches.
    const double end = inputAngle + kPi / pairs;
    const Polygon wedge =
        cutTo(cutTo(cornersOf(extent), center, {-std::sin(inputAngle), std::cos(inputAngle)}),
              center, {std::sin(end), -std::cos(end)});
    const auto need = [center, bounds = boundsOf(wedge)](const Rect& region) {
        const Rect square = squareAround(center, farthestDistance(region, center));
        return grown(commonPart(bounds, square), 0.5, 0.5);
    };
    return warp(inputImage, squareAround(center, reachOf(wedge, center)), Reach::of(need), mirrors);
}

} // namespace builtin
