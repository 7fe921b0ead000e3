// Magnifies a band of the picture across its middle line.
#include "platform/builtin/distortion/BumpDistortionLinear.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Plane.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Arrange.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

struct Band {
    Point center, across; // a unit vector
    double radius;
    double strength; // ½(1 - scale)

    // What of a rectangle lies in the band.
    Polygon partOf(const Rect& r) const
    {
        const auto edge = [&](double k) {
            return Point{center.x + across.x * k, center.y + across.y * k};
        };
        return cutTo(cutTo(cornersOf(r), edge(-radius), across), edge(radius),
                     {-across.x, -across.y});
    }

    Px operator()(const auto& picture, const Coord& at) const
    {
        const Vec2 n{across.x, across.y};
        const F q = dot(at - center, n), t = q * F(1 / radius);
        const F u = max(F(1.0f) - t * t, 0.0f);
        return picture(at - n * (q * F(strength) * u * u));
    }
};

} // namespace

void BumpDistortionLinear::initialize(FilterRegistry& registry)
{
    using T = BumpDistortionLinear;
    add<T>(registry, "CIBumpDistortionLinear", "Bump Distortion Linear",
           {"DistortionEffect", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 600).identity(0)},
               {"inputAngle", &T::inputAngle, "Angle", angle().slider(0, 2 * kPi).identity(0)},
               {"inputScale", &T::inputScale, "Scale", scalar().min(-1).slider(0, 1).identity(1)},
           });
}

Image BumpDistortionLinear::outputImage() const
{
    const Rect extent = inputImage.extent();
    // A band as wide as the plane is the plane.
    const double radius = std::min(positive(inputRadius), 1e9);
    if (extent.isEmpty() || radius == 0)
        return inputImage;
    const Turn turn(inputAngle);
    const Band band{.center = inputCenter.point(),
                    .across = {-turn.sine, turn.cosine},
                    .radius = radius,
                    .strength = (1 - inputScale) / 2};
    const Rect plane = squareAround({0, 0}, 1e9);
    if (band.partOf(commonPart(plane, extent)).empty())
        return inputImage;
    const Rect result = grown(extent, inputRadius, inputRadius);
    const Rect changed = boundsOf(band.partOf(commonPart(plane, result)));
    // t(1 - t²)² is largest at t = 1/√5.
    const double farthest = 0.2863 * radius * std::abs(band.strength);
    const double dx = std::abs(band.across.x) * farthest, dy = std::abs(band.across.y) * farthest;
    const Reach reach = Reach::of([=](const Rect& region) { return grown(region, dx, dy); });
    return patched(inputImage, warp(inputImage, changed, reach, band), result);
}

} // namespace builtin
