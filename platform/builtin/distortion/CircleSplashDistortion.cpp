// The colours of a circle's circumference run outward for ever.
#include "platform/builtin/distortion/CircleSplashDistortion.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

void CircleSplashDistortion::initialize(FilterRegistry& registry)
{
    using T = CircleSplashDistortion;
    add<T>(registry, "CICircleSplashDistortion", "Circle Splash Distortion",
           {"DistortionEffect", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 1000)},
           });
}

Image CircleSplashDistortion::outputImage() const
{
    if (inputImage.extent().isEmpty())
        return inputImage;
    const Point center = inputCenter.point();
    const double radius = positive(inputRadius);
    const auto need = [=](const Rect& region) {
        const auto reduced = [&](double d) { return d > radius ? radius / d : 1; };
        const Rect along = movedAlongRays(region, center, reduced(farthestDistance(region, center)),
                                          reduced(nearestDistance(region, center)));
        return grown(commonPart(along, squareAround(center, radius)), 0.5, 0.5);
    };
    return warp(inputImage, Rect::infinite(), Reach::of(need),
                [=](const auto& picture, const Coord& at) {
                    const Vec2 v = at - center;
                    const F d = length(v);
                    const M inside = d <= F(radius);
                    // Two formulas for the same position: exact pixels inside, no loss of precision
                    // far outside.
                    if (all(inside))
                        return picture(at);
                    const Px outer = picture(center + v * (F(radius) / d));
                    return any(inside) ? select(inside, picture(at), outer) : outer;
                });
}

} // namespace builtin
