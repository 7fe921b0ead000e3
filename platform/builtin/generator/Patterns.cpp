// Constant colour, checkerboard, stripes, Gaussian gradient and noise.
#include "platform/builtin/generator/Patterns.h"

#include "platform/builtin/Hash.h"
#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kGenerator = {"Generator", "Video", "StillImage", "BuiltIn"};
constexpr Categories kGradient = {"Gradient", "Video", "StillImage", "BuiltIn"};

// How much of colour 0 there is along an axis of alternating stripes: 1 in the first stripe, which
// begins at `start` and runs upward, 0 in the next, with a ramp between them.
struct StripeProfile {
    double start;
    double width;
    double slope; // a pixel; 1 for sharp edges

    StripeProfile(double start, double width, double sharpness)
        : start(start), width(std::min(width, 1e30)),
          slope(1 / std::max(1.0, (1 - sharpness) * width))
    {
        // Stripes too narrow to tell apart have their mean everywhere.
        if (!(width >= 0.001)) {
            this->width = 1;
            slope = 0;
        }
    }

    F operator()(double anchor, F offset) const
    {
        // The distance from the nearest beginning of a first stripe, to the right and to the left.
        // Whole periods are taken off in double precision: stripes stay as they are far away.
        const double period = 2 * width, d = anchor - start;
        const F beyond = F(d - period * std::floor(d / period + 0.5)) + offset;
        const F x = beyond - F(period) * floor(beyond * F(1 / period) + F(0.5f));
        const F depth = min(abs(x), F(width) - abs(x));
        const F ramp = select(x < F(0.0f), -depth, depth) * F(slope);
        return clamp01(F(0.5f) + ramp);
    }
};

} // namespace

void ConstantColorGenerator::initialize(FilterRegistry& registry)
{
    using T = ConstantColorGenerator;
    add<T>(registry, "CIConstantColorGenerator", "Constant Color", kGenerator,
           {{"inputColor", &T::inputColor, "Color", kColor}});
}

Image ConstantColorGenerator::outputImage() const
{
    return generate([color = inputColor](const Coord&) { return premultiplied(color); });
}

// Squares and stripes take the same.
template <class T>
static void addPattern(FilterRegistry& registry, const char* name, const char* displayName)
{
    add<T>(registry, name, displayName, kGenerator,
           {
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputColor0", &T::inputColor0, "Color 1", kColor},
               {"inputColor1", &T::inputColor1, "Color 2", kColor},
               {"inputWidth", &T::inputWidth, "Width", distance().slider(0, 800)},
               {"inputSharpness", &T::inputSharpness, "Sharpness",
                scalar().min(0).max(1).slider(0, 1)},
           });
}

void CheckerboardGenerator::initialize(FilterRegistry& registry)
{
    addPattern<CheckerboardGenerator>(registry, "CICheckerboardGenerator", "Checkerboard");
}

Image CheckerboardGenerator::outputImage() const
{
    const StripeProfile columns(inputCenter.x, inputWidth, inputSharpness);
    const StripeProfile rows(inputCenter.y, inputWidth, inputSharpness);
    return generate([=, even = inputColor0, odd = inputColor1](const Coord& at) {
        const F fx = columns(at.anchor.x, at.offset.x), fy = rows(at.anchor.y, at.offset.y);
        const F same = fx * fy + (F(1.0f) - fx) * (F(1.0f) - fy);
        return mix(premultiplied(odd), premultiplied(even), same);
    });
}

void StripesGenerator::initialize(FilterRegistry& registry)
{
    addPattern<StripesGenerator>(registry, "CIStripesGenerator", "Stripes");
}

Image StripesGenerator::outputImage() const
{
    const StripeProfile columns(inputCenter.x, inputWidth, inputSharpness);
    return generate([=, even = inputColor0, odd = inputColor1](const Coord& at) {
        return mix(premultiplied(odd), premultiplied(even), columns(at.anchor.x, at.offset.x));
    });
}

void GaussianGradient::initialize(FilterRegistry& registry)
{
    using T = GaussianGradient;
    add<T>(registry, "CIGaussianGradient", "Gaussian Gradient", kGradient,
           {
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputColor0", &T::inputColor0, "Color 1", kColor},
               {"inputColor1", &T::inputColor1, "Color 2", kColor},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 800)},
           });
}

Image GaussianGradient::outputImage() const
{
    const double radius = positive(inputRadius);
    if (radius == 0)
        return generate([color = inputColor1](const Coord&) { return premultiplied(color); });
    // A bell of standard deviation r/3, moved and stretched to go from 1 to 0 at the radius.
    constexpr double kSteepness = 4.5;
    const double atRim = std::exp(-kSteepness), scale = 1 / (1 - atRim);
    const double perPixel = 1 / radius;
    return generate([=, center = inputCenter.point(), inside = inputColor0,
                     outside = inputColor1](const Coord& at) {
        const Vec2 t = (at - center) * F(perPixel);
        const F t2 = dot(t, t);
        const F bell = (exp(t2 * F(-kSteepness)) - F(atRim)) * F(scale);
        const F g = select(t2 < F(1.0f), bell, F(0.0f));
        return mix(premultiplied(outside), premultiplied(inside), g);
    });
}

void RandomGenerator::initialize(FilterRegistry& registry)
{
    registry.add<RandomGenerator>("CIRandomGenerator", "Random Generator", kGenerator);
}

Image RandomGenerator::outputImage() const
{
    return generatePixels([](I column, int row) {
        const auto component = [&](std::uint32_t salt) {
            return h01(column, static_cast<std::uint32_t>(row), salt);
        };
        return Px{component(0), component(1), component(2), component(3)};
    });
}

} // namespace builtin
