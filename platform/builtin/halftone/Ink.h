// What the halftone screens share: a lattice of dots or lines, and how ink covers it for a tone.
#pragma once

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Pixel.h"

#include <algorithm>
#include <cmath>

namespace builtin {

using imaging::Coord;
using imaging::F;
using imaging::Point;
using imaging::Vec2;

// The period of a screen in pixels: at least 1, a negative width counts as a positive one.
inline double screenWidth(double width)
{
    // Beyond a thousand million no picture has a second period.
    return std::isnan(width) ? 1 : std::clamp(std::abs(width), 1.0, 1e9);
}

// How much of a pixel is covered where the screen's spot function, which is spread evenly over 0…1,
// is h: the tone against h with a soft edge.
class Ink {
public:
    // `edge` is how steep h gets, in units per period: at sharpness 1 the edges are a pixel wide.
    Ink(double width, double sharpness, double edge)
    {
        const double sharp = sharpness > 0 ? std::min(sharpness, 1.0) : 0;
        const double softness = std::max(1 - sharp, std::min(edge / screenWidth(width), 1.0));
        _hardness = static_cast<float>(1 / softness);
        _knee = static_cast<float>(softness / 2);
    }

    F operator()(F tone, F h) const
    {
        using namespace imaging;
        // Near its ends the threshold is bent, because there a part of the soft edge is cut off:
        // the mean over a period is the tone, and tones 0 and 1 are without a trace of the screen.
        const F t = clamp01(tone), fromEnd = min(t, F(1.0f) - t);
        const F bent = F(2.0f) * sqrt(F(_knee) * fromEnd) - F(_knee);
        const F low = select(fromEnd < F(_knee), bent, fromEnd);
        const F threshold = select(t < F(0.5f), low, F(1.0f) - low);
        return clamp01(F(0.5f) + F(_hardness) * (threshold - h));
    }

private:
    float _hardness; // coverage per unit of h
    float _knee;     // half the width of the soft edge, in units of h
};

// A square lattice through a point, turned by an angle.
class Lattice {
public:
    Lattice(Point center, double width, double angle)
        : _center(center), _sine(std::sin(angle) / screenWidth(width)),
          _cosine(std::cos(angle) / screenWidth(width))
    {
    }

    // From the nearest lattice point to here, in periods along and across, each within ±½.
    Vec2 operator()(const Coord& at) const
    {
        // Whole periods are taken off in double precision: screens stay as they are far away.
        const double dx = at.anchor.x - _center.x, dy = at.anchor.y - _center.y;
        const double along = dx * _cosine + dy * _sine, across = dy * _cosine - dx * _sine;
        const F c = _cosine, s = _sine;
        const F x = F(along - std::floor(along)) + (at.offset.x * c + at.offset.y * s);
        const F y = F(across - std::floor(across)) + (at.offset.y * c - at.offset.x * s);
        return {x - floor(x + F(0.5f)), y - floor(y + F(0.5f))};
    }

private:
    Point _center;
    double _sine, _cosine; // per period
};

// 1 at a whole number of periods, falling to 0 half-way to the next: d is the distance in periods
// from the nearest whole number.
inline F triangle(F d)
{
    return F(1.0f) - F(2.0f) * abs(d);
}

// The cosine of that many turns, within ±½: about 6e-7.
inline F cosineOfTurns(F turns)
{
    // As the sine of the rest to a quarter turn.
    const F x = F(0.25f) - abs(turns), x2 = x * x;
    return x *
           (F(6.28316404f) + x2 * (F(-41.3371424f) + x2 * (F(81.3407689f) + x2 * F(-70.9934333f))));
}

// The spot function of a dot screen: 1 on the lattice points, 0 in the middle between four of them,
// spread over 0…1 as evenly as the tones are (within 0.002).
inline F dotSpot(Vec2 d)
{
    using namespace imaging;
    const F z = F(0.5f) * (cosineOfTurns(d.x) + cosineOfTurns(d.y));
    // Levels of z are crowded about 0; the logarithm, whose product with z vanishes there, pulls
    // them apart. 0.38 of the natural logarithm.
    constexpr float kCrowding = 0.38f * 0.693147181f;
    return F(0.5f) + F(0.5f) * z * (F(1.0f) - F(kCrowding) * log2(abs(z)));
}

} // namespace builtin
