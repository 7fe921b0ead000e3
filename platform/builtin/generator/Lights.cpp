// The light generators: lenticular halo, star shine and sunbeams.
#include "platform/builtin/generator/Lights.h"

#include "platform/builtin/Hash.h"
#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kGenerator = {"Generator", "Video", "StillImage", "BuiltIn"};

// Light of the given brightness (per component, 0 and up) as a premultiplied colour: beyond 1 it
// spills over into white.
Px emitted(Rgb brightness, const Color& color)
{
    const auto component = [&](F level, float c) {
        return min(F(c) * level + max(level - F(1.0f), 0.0f), 1.0f) * F(color.alpha);
    };
    const F strongest = max(max(brightness.r, brightness.g), brightness.b);
    return {component(brightness.r, color.red), component(brightness.g, color.green),
            component(brightness.b, color.blue), min(strongest, 1.0f) * F(color.alpha)};
}

// Random numbers around a circle with smooth passages between them, moving smoothly with time (in
// eight steps per unit).
template <int kCells>
class CircleNoise {
public:
    CircleNoise(double time, std::uint32_t salt)
    {
        const double now = std::isnan(time) ? 0 : 8 * time;
        const auto step = foundation::saturateTo<std::int64_t>(std::floor(now));
        const double t = std::clamp(now - static_cast<double>(step), 0.0, 1.0);
        const double later = t * t * (3 - 2 * t);
        for (std::uint32_t i = 0; i < kCells; ++i) {
            const auto row = static_cast<std::uint32_t>(step);
            const double a = h01(i, row, salt), b = h01(i, row + 1, salt);
            _values[i] = static_cast<float>(a + (b - a) * later);
        }
        _values[kCells] = _values[0];
    }

    // `turn` is the direction as a fraction of a full turn, 0 … 1.
    F operator()(F turn) const
    {
        const F s = turn * F(kCells);
        const I cell = min(toInt(s), I(kCells - 1));
        const F f = s - toFloat(cell);
        I here, next;
        loadNeighbours(reinterpret_cast<const std::uint32_t*>(_values), cell, here, next);
        return mix(asFloats(here), asFloats(next), f * f * (F(3.0f) - F(2.0f) * f));
    }

private:
    float _values[kCells + 1];
};

// Fine rays laid over broad ones; ½ on average, within 0 … 1.
template <int kCells>
class Rays {
public:
    Rays(double time, std::uint32_t salt, double contrast)
        : _broad(time, salt), _fine(time, salt + 2), _gain(static_cast<float>(1.5 * contrast))
    {
    }

    F operator()(Vec2 v, F distance) const
    {
        const F part = atan2(v.y, v.x) * F(0.5 / kPi);
        const F turn = clamp01(select(part < F(0.0f), part + F(1.0f), part));
        // A ray narrower than two pixels fades to its mean.
        const auto faded = [&](F noise, int cells) {
            return (noise - F(0.5f)) * clamp01(distance * F(2 * kPi / cells) - F(1.0f));
        };
        const F mixed =
            (F(2.0f) * faded(_broad(turn), kCells) + faded(_fine(turn), 3 * kCells)) * F(1.0 / 3);
        return clamp01(F(0.5f) + mixed * F(_gain));
    }

private:
    CircleNoise<kCells> _broad;
    CircleNoise<3 * kCells> _fine;
    float _gain;
};

struct Halo {
    Point center;
    Color color;
    double middles[3]; // of the red, green and blue ring
    double halfWidth;
    double strength;
    double outside; // no light from here on
    Rays<48> rays;

    Px operator()(const Coord& at) const
    {
        const Vec2 v = at - center;
        const F d = length(v);
        if (!any(d < F(outside)))
            return transparent();
        const F rayed = max(F(1.0f) + F(strength) * (F(2.0f) * rays(v, d) - F(1.0f)), 0.0f);
        const auto ring = [&](double middle) {
            const F x = (d - F(middle)) * F(1 / halfWidth);
            const F b = max(F(1.0f) - x * x, 0.0f);
            return F(0.6f) * (b * b) * rayed;
        };
        return emitted({ring(middles[0]), ring(middles[1]), ring(middles[2])}, color);
    }
};

struct Star {
    Point center;
    Color color;
    double sine, cosine;
    double radius;
    double arms; // brightness
    double width;
    double epsilon;

    F arm(F along, F across) const
    {
        const F t = abs(along) * F(1 / radius);
        const F halfWidth = F(width) / sqrt(F(1.0f) + t);
        // Thinner arms get fainter instead of breaking up.
        const F drawn = max(halfWidth, 0.7f);
        const F n = across / drawn;
        return F(arms) / (t + F(epsilon)) * (halfWidth / drawn) * exp(-(n * n));
    }

    Px operator()(const Coord& at) const
    {
        const Vec2 v = at - center;
        const F inner = max(F(1.0f) - length(v) * F(1 / radius), 0.0f);
        // The cross is turned, so its coordinates are turned back.
        const Vec2 q = rotate(v, -F(sine), F(cosine));
        const F level = F(2.0f) * (inner * inner) + arm(q.x, q.y) + arm(q.y, q.x);
        const F visible = select(level >= F(1.0f / 512), level, F(0.0f));
        return emitted({visible, visible, visible}, color);
    }
};

struct Sun {
    Point center;
    Color color;
    double radius, reach;
    double strength;
    Rays<24> rays;

    Px operator()(const Coord& at) const
    {
        const Vec2 v = at - center;
        const F d = length(v);
        const F x = d * F(1 / (1.25 * radius));
        const F disc = max(F(1.0f) - x * x, 0.0f);
        F level = F(1.5f) * (disc * disc * disc);
        if (any(d < F(reach))) {
            const F fall = max(F(1.0f) - d * F(1 / reach), 0.0f);
            const F beams = rays(v, d) * min(d * F(1 / radius), 1.0f);
            level += F(strength) * beams * (fall * fall);
        }
        return emitted({level, level, level}, color);
    }
};

Image nothing()
{
    return generate([](const Coord&) { return transparent(); });
}

} // namespace

void LenticularHaloGenerator::initialize(FilterRegistry& registry)
{
    using T = LenticularHaloGenerator;
    add<T>(
        registry, "CILenticularHaloGenerator", "Lenticular Halo", kGenerator,
        {
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputColor", &T::inputColor, "Color", kColor},
            {"inputHaloRadius", &T::inputHaloRadius, "Halo Radius",
             distance().min(0).slider(0, 1000)},
            {"inputHaloWidth", &T::inputHaloWidth, "Halo Width", distance().min(0).slider(0, 300)},
            {"inputHaloOverlap", &T::inputHaloOverlap, "Halo Overlap",
             scalar().min(0).slider(0, 1)},
            {"inputStriationStrength", &T::inputStriationStrength, "Striation Strength",
             scalar().min(0).slider(0, 3)},
            {"inputStriationContrast", &T::inputStriationContrast, "Striation Contrast",
             scalar().min(0).slider(0, 5)},
            {"inputTime", &T::inputTime, "Time", scalar().min(0).max(1).slider(0, 1).identity(0)},
        });
}

Image LenticularHaloGenerator::outputImage() const
{
    if (positive(inputHaloWidth) == 0)
        return nothing();
    const double half = std::max(inputHaloWidth / 2, 0.5);
    const double radius = positive(inputHaloRadius);
    const double split = 0.7 * (1 - inputHaloOverlap) * half;
    return generate(Halo{.center = inputCenter.point(),
                         .color = inputColor,
                         .middles = {radius + split, radius, radius - split},
                         .halfWidth = half,
                         .strength = inputStriationStrength,
                         .outside = radius + std::abs(split) + half,
                         .rays = {inputTime, 32, inputStriationContrast}});
}

void StarShineGenerator::initialize(FilterRegistry& registry)
{
    using T = StarShineGenerator;
    add<T>(registry, "CIStarShineGenerator", "Star Shine", kGenerator,
           {
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputColor", &T::inputColor, "Color", kColor},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 300)},
               {"inputCrossScale", &T::inputCrossScale, "Cross Scale",
                scalar().min(0).slider(0, 100).identity(15)},
               {"inputCrossAngle", &T::inputCrossAngle, "Cross Angle", angle().slider(-kPi, kPi)},
               {"inputCrossOpacity", &T::inputCrossOpacity, "Cross Opacity",
                scalar().min(-8).slider(-8, 0).identity(-2)},
               {"inputCrossWidth", &T::inputCrossWidth, "Cross Width",
                distance().min(0).slider(0.5, 10)},
               {"inputEpsilon", &T::inputEpsilon, "Epsilon",
                scalar().min(-8).slider(-8, 0).identity(-2)},
           });
}

Image StarShineGenerator::outputImage() const
{
    const auto powerOfTen = [](double v) { return std::pow(10, std::clamp(v, -8.0, 8.0)); };
    return generate(Star{.center = inputCenter.point(),
                         .color = inputColor,
                         .sine = std::sin(inputCrossAngle),
                         .cosine = std::cos(inputCrossAngle),
                         .radius = std::max(0.01, inputRadius),
                         .arms = powerOfTen(inputCrossOpacity) * positive(inputCrossScale),
                         .width = std::max(0.1, inputCrossWidth),
                         .epsilon = powerOfTen(inputEpsilon)});
}

void SunbeamsGenerator::initialize(FilterRegistry& registry)
{
    using T = SunbeamsGenerator;
    add<T>(
        registry, "CISunbeamsGenerator", "Sunbeams", kGenerator,
        {
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputColor", &T::inputColor, "Color", kColor},
            {"inputSunRadius", &T::inputSunRadius, "Sun Radius",
             distance().min(0).slider(0, 800).identity(40)},
            {"inputMaxStriationRadius", &T::inputMaxStriationRadius, "Maximum Striation Radius",
             scalar().min(0).slider(0, 10).identity(2.58)},
            {"inputStriationStrength", &T::inputStriationStrength, "Striation Strength",
             scalar().min(0).slider(0, 3).identity(0.5)},
            {"inputStriationContrast", &T::inputStriationContrast, "Striation Contrast",
             scalar().min(0).slider(0, 5).identity(1.375)},
            {"inputTime", &T::inputTime, "Time", scalar().min(0).max(1).slider(0, 1).identity(0)},
        });
}

Image SunbeamsGenerator::outputImage() const
{
    const double radius = positive(inputSunRadius);
    if (radius == 0)
        return nothing();
    return generate(Sun{.center = inputCenter.point(),
                        .color = inputColor,
                        .radius = radius,
                        .reach = radius * (1 + positive(inputMaxStriationRadius)),
                        .strength = positive(inputStriationStrength),
                        .rays = {inputTime, 33, inputStriationContrast}});
}

} // namespace builtin
