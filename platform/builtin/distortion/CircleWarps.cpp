// Warps inside a circle: bump, pinch, twirl, vortex and torus lens. Outside it the picture stays.
//
// With v the vector from the centre and t = |v| / radius, each is a formula for how far from a
// pixel its colour comes, which fades to nothing toward the rim.
#include "platform/builtin/distortion/CircleWarps.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Plane.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Arrange.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kDistortion = {"DistortionEffect", "Video", "StillImage", "BuiltIn"};

struct Circle {
    Point center;
    double radius;

    Circle(const Vector& c, double r) : center(c.point()), radius(positive(r)) {}

    // For kernels: a radius beyond the plane is as good as the plane's.
    double finiteRadius() const { return std::min(radius, 1e9); }
    // The distance of the region's farthest point inside the circle.
    double depth(const Rect& region) const
    {
        return std::min(radius, farthestDistance(region, center));
    }
};

// Around what is read for a region when no source lies farther from the centre than its pixel.
Rect turnedAbout(const Circle& circle, const Rect& region)
{
    return unitedBounds(region, squareAround(circle.center, circle.depth(region)));
}

// The picture with the circle's square replaced by what the kernel makes of it.
template <class Kernel>
Image warpInside(const Circle& circle, const Image& image, Reach reach, const Kernel& kernel)
{
    const Rect extent = image.extent();
    if (extent.isEmpty() || !(nearestDistance(extent, circle.center) < circle.radius))
        return image;
    const Rect square = squareAround(circle.center, circle.radius);
    return patched(image, warp(image, square, std::move(reach), kernel),
                   unitedBounds(extent, square));
}

// A kernel from shift(v, t²): from a pixel inside the circle to its source.
template <class Shift>
struct Shifted {
    Point center;
    double perSquaredRadius;
    Shift shift;

    Shifted(const Circle& circle, const Shift& s)
        : center(circle.center), perSquaredRadius(std::pow(circle.finiteRadius(), -2)), shift(s)
    {
    }

    Px operator()(const auto& picture, const Coord& at) const
    {
        const Vec2 v = at - center;
        const F t2 = dot(v, v) * F(perSquaredRadius);
        const M inside = t2 < F(1.0f);
        if (!any(inside))
            return picture(at);
        const Vec2 moved = shift(v, t2);
        return picture(at + select(inside, moved, Vec2{0.0f, 0.0f}));
    }
};

// By the angle -angle·(1 - t)²/(1 + 128t): the full turn at the centre, a fall like 1/t through the
// middle. The turning squeezes the picture across the spiral, so there each pixel is the mean of up
// to eight samples along its ray.
struct Vortex {
    static constexpr int kMostSamples = 8;

    Point center;
    double perRadius, angle;

    Px operator()(const auto& picture, const Coord& at) const
    {
        const Vec2 v = at - center;
        const F d = length(v), t = d * F(perRadius);
        const M inside = t < F(1.0f);
        if (!any(inside))
            return picture(at);
        const auto turned = [&](Vec2 w, F s) {
            const F u = max(F(1.0f) - s, 0.0f);
            const Vec2 source = rotate(w, F(-angle) * u * u / (F(1.0f) + F(128.0f) * s));
            return select(s < F(1.0f), source, w);
        };

        // How many source pixels a pixel spans.
        const F u = F(1.0f) - t, slope = F(1.0f) + F(128.0f) * t;
        const F squeeze =
            F(std::abs(angle)) * t * u * (F(2.0f) * slope + F(128.0f) * u) / (slope * slope);
        const M several = inside & (squeeze > F(1.0f)) & (squeeze < F(INFINITY)) & (d > F(0.0f));
        if (!any(several))
            return picture(at + (turned(v, t) - v));
        const F limited = min(squeeze, F(kMostSamples));
        const F down = floor(limited);
        const F count = select(several, select(down < limited, down + F(1.0f), down), F(1.0f));
        const F share = F(1.0f) / count;
        Px sum = transparent();
        for (int i = 0; i < kMostSamples; ++i) {
            const M counts = F(i) < count;
            if (!any(counts))
                break;
            const F along = (F(i + 0.5f) * share - F(0.5f)) / max(d, 1e-30f);
            const Vec2 w = v + v * select(several, along, F(0.0f));
            const Px sample = picture(at + (turned(w, length(w) * F(perRadius)) - v));
            sum = sum + select(counts, sample * share, transparent());
        }
        return sum;
    }
};

// A ring of glass, seen from above: rays refracted once at its surface.
struct TorusLens {
    double middle, tubeRadius; // of the ring
    double perRefraction;

    Vec2 operator()(Vec2 v, F) const
    {
        // sin and cos of the angles that the ray makes with the normal, outside and in the glass.
        const F d = length(v);
        const F sa = clamp((d - F(middle)) * F(1 / tubeRadius), -1.0f, 1.0f);
        const F sb = clamp(sa * F(perRefraction), -1.0f, 1.0f);
        const F ca = sqrt(F(1.0f) - sa * sa), cb = sqrt(F(1.0f) - sb * sb);
        // The tangent of their difference, which is limited to 1.4.
        const F sine = sa * cb - ca * sb, cosine = ca * cb + sa * sb;
        const F most = select(sine < F(0.0f), F(-kSteepest), F(kSteepest));
        const F tangent = select(cosine > F(kCosineOfSteepest), sine / cosine, most);
        const F height = F(tubeRadius) * ca;
        return v * -(height * tangent / max(d, 1e-30f));
    }

    static constexpr double kSteepest = 5.797883715482887, kCosineOfSteepest = 0.16996714290024104;
};

} // namespace

void BumpDistortion::initialize(FilterRegistry& registry)
{
    using T = BumpDistortion;
    add<T>(registry, "CIBumpDistortion", "Bump Distortion", kDistortion,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 600)},
               {"inputScale", &T::inputScale, "Scale", scalar().slider(-1, 1).identity(0)},
           });
}

Image BumpDistortion::outputImage() const
{
    const Circle circle(inputCenter, inputRadius);
    const double scale = inputScale;
    const auto need = [=](const Rect& region) {
        const Rect along = movedAlongRays(region, circle.center, 1, 1 - scale);
        // Beyond that the picture turns over and may leave the circle.
        return std::abs(scale) <= 1 ? commonPart(along, squareAround(circle.center, circle.radius))
                                    : along;
    };
    return warpInside(circle, inputImage, Reach::of(need), Shifted(circle, [scale](Vec2 v, F t2) {
                          const F u = F(1.0f) - t2;
                          return v * (F(-scale) * u * u);
                      }));
}

void PinchDistortion::initialize(FilterRegistry& registry)
{
    using T = PinchDistortion;
    add<T>(registry, "CIPinchDistortion", "Pinch Distortion", kDistortion,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 1000).identity(0)},
               {"inputScale", &T::inputScale, "Scale", scalar().min(0).slider(0, 2).identity(0)},
           });
}

// The source lies at t^(1/(1 + scale))·(1 - t²) + t³ of the radius. Beyond the limits of the scale
// the map would not stay one-to-one.
Image PinchDistortion::outputImage() const
{
    const Circle circle(inputCenter, inputRadius);
    const double root = 1 / (1 + std::clamp(inputScale, -0.9, 5.0));
    const auto need = [=](const Rect& region) {
        if (root >= 1)
            return movedAlongRays(region, circle.center, 0, 1);
        const double r = circle.finiteRadius(), t = std::min(circle.depth(region) / r, 1.0);
        const double farthest = r * (std::pow(t, root) * (1 - t * t) + t * t * t);
        return unitedBounds(region, squareAround(circle.center, farthest));
    };
    return warpInside(circle, inputImage, Reach::of(need), Shifted(circle, [root](Vec2 v, F t2) {
                          const F power = exp2(F((root - 1) / 2) * log2(max(t2, 1e-37f)));
                          return v * ((F(1.0f) - t2) * (power - F(1.0f)));
                      }));
}

void TwirlDistortion::initialize(FilterRegistry& registry)
{
    using T = TwirlDistortion;
    add<T>(
        registry, "CITwirlDistortion", "Twirl Distortion", kDistortion,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputRadius", &T::inputRadius, "Radius",
             distance().min(0).slider(0, 500).identity(300)},
            {"inputAngle", &T::inputAngle, "Angle", angle().slider(-4 * kPi, 4 * kPi).identity(0)},
        });
}

Image TwirlDistortion::outputImage() const
{
    const Circle circle(inputCenter, inputRadius);
    const auto need = [=](const Rect& region) { return turnedAbout(circle, region); };
    return warpInside(circle, inputImage, Reach::of(need),
                      Shifted(circle, [angle = inputAngle](Vec2 v, F t2) {
                          const F u = F(1.0f) - sqrt(t2);
                          return rotate(v, F(-angle) * u * u) - v;
                      }));
}

void VortexDistortion::initialize(FilterRegistry& registry)
{
    using T = VortexDistortion;
    add<T>(registry, "CIVortexDistortion", "Vortex Distortion", kDistortion,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 800).identity(0)},
               {"inputAngle", &T::inputAngle, "Angle",
                angle().slider(-30 * kPi, 30 * kPi).identity(0)},
           });
}

Image VortexDistortion::outputImage() const
{
    const Circle circle(inputCenter, inputRadius);
    // Half a pixel more: samples lie up to that far along the ray.
    const auto need = [=](const Rect& region) {
        return grown(turnedAbout(circle, region), 0.5, 0.5);
    };
    return warpInside(circle, inputImage, Reach::of(need),
                      Vortex{.center = circle.center,
                             .perRadius = 1 / circle.finiteRadius(),
                             .angle = inputAngle});
}

void TorusLensDistortion::initialize(FilterRegistry& registry)
{
    using T = TorusLensDistortion;
    add<T>(
        registry, "CITorusLensDistortion", "Torus Lens Distortion", kDistortion,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputRadius", &T::inputRadius, "Radius",
             distance().min(0).slider(0, 500).identity(0)},
            {"inputWidth", &T::inputWidth, "Width", distance().min(0).slider(0, 200).identity(0)},
            {"inputRefraction", &T::inputRefraction, "Refraction",
             scalar().min(0).slider(0, 5).identity(1)},
        });
}

Image TorusLensDistortion::outputImage() const
{
    const Circle circle(inputCenter, inputRadius);
    const double tube = std::min(positive(inputWidth), 1e9) / 2;
    if (tube == 0)
        return inputImage;
    const double n = std::abs(inputRefraction) < 0.0001 ? 0.0001 : inputRefraction;
    // Dense glass brings rays toward the middle of the ring, other glass sends them anywhere.
    const double farthest = n >= 1 ? tube : tube * TorusLens::kSteepest;
    return warpInside(circle, inputImage, Reach::within(farthest),
                      Shifted(circle, TorusLens{.middle = circle.finiteRadius() - tube,
                                                .tubeRadius = tube,
                                                .perRefraction = 1 / n}));
}

} // namespace builtin
