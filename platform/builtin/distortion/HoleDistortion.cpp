// Blows a point of the picture up to a transparent disc.
#include "platform/builtin/distortion/HoleDistortion.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

void HoleDistortion::initialize(FilterRegistry& registry)
{
    using T = HoleDistortion;
    add<T>(registry, "CIHoleDistortion", "Hole Distortion",
           {"DistortionEffect", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0.01).slider(0.01, 1000).identity(0.1)},
           });
}

// Sources lie r²/d nearer to the centre: pixels beside the rim are squeezed to half their size. The
// rim fades over one pixel.
Image HoleDistortion::outputImage() const
{
    const Rect extent = inputImage.extent();
    if (extent.isEmpty())
        return inputImage;
    const Point center = inputCenter.point();
    const double radius = std::max(positive(inputRadius), 0.01);
    const double margin = std::ceil(radius);
    const auto need = [=](const Rect& region) {
        const auto nearer = [&](double d) {
            const double k = radius / std::max(d, radius);
            return 1 - k * k;
        };
        return grown(movedAlongRays(region, center, nearer(nearestDistance(region, center)),
                                    nearer(farthestDistance(region, center))),
                     0.5, 0.5);
    };
    return warp(inputImage, grown(extent, margin, margin), Reach::of(need),
                [=](const auto& picture, const Coord& at) {
                    const Vec2 v = at - center;
                    const F d = length(v);
                    const F shown = clamp01(d - F(radius) + F(0.5f));
                    if (all(shown == F(0.0f)))
                        return transparent();
                    const F k = F(radius) / max(d, F(radius));
                    const Px p = picture(at - v * (k * k));
                    return all(shown == F(1.0f)) ? p : p * shown;
                });
}

} // namespace builtin
