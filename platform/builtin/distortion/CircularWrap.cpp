// Bends the picture once around a clear circle, its lower edge inward.
#include "platform/builtin/distortion/CircularWrap.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

struct Ring {
    Point center, corner; // the picture's lower left
    double width, height;
    double radius;
    double turns; // of the picture's left end, clockwise from the right

    Px operator()(const auto& picture, const Coord& at) const
    {
        const Vec2 v = at - center;
        const F y = length(v) - F(radius);
        // Half a pixel beyond its edges the picture has faded away.
        if (!any((y > F(-0.5f)) & (y < F(height + 0.5))))
            return transparent();
        const F x = frac(F(turns) - atan2(v.y, v.x) * F(0.5 / kPi)) * F(width);
        // The ends are cut off in the middle of their pixels, so that no gap shows between them.
        return picture(corner + Vec2{clamp(x, 0.5f, F(width - 0.5)), y});
    }
};

} // namespace

void CircularWrap::initialize(FilterRegistry& registry)
{
    using T = CircularWrap;
    add<T>(registry, "CICircularWrap", "Circular Wrap Distortion",
           {"DistortionEffect", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 600)},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
           });
}

Image CircularWrap::outputImage() const
{
    const Rect e = inputImage.extent();
    // A picture without ends cannot be bent.
    if (e.isEmpty() || e.isInfinite())
        return inputImage;
    const double radius = positive(inputRadius);
    const double turns = 0.75 + inputAngle / (2 * kPi);
    const Ring ring{.center = inputCenter.point(),
                    .corner = {e.x, e.y},
                    .width = e.width,
                    .height = e.height,
                    .radius = radius,
                    .turns = turns - std::floor(turns)};
    const auto need = [=](const Rect& region) {
        const double low = nearestDistance(region, ring.center) - radius;
        const double high = farthestDistance(region, ring.center) - radius;
        return Rect::fromEdges(e.x, e.y + low, e.right(), e.y + high);
    };
    return warp(inputImage, squareAround(ring.center, radius + e.height + 0.5), Reach::of(need),
                ring);
}

} // namespace builtin
