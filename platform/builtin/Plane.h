// Vectors in the plane, over lanes: what warps and tilings add to imaging/Pixel.h.
#pragma once

#include "platform/imaging/Pixel.h"

#include <cmath>

namespace builtin {

inline imaging::Vec2 select(imaging::M m, imaging::Vec2 a, imaging::Vec2 b)
{
    return {imaging::select(m, a.x, b.x), imaging::select(m, a.y, b.y)};
}

// Sine and cosine of an angle, exact for quarter turns: what is left of them in double precision
// would move pixels that lie on a border to the other side.
struct Turn {
    double sine = 0, cosine = 1;

    explicit Turn(double angle) : sine(exact(std::sin(angle))), cosine(exact(std::cos(angle))) {}

    imaging::Point apply(imaging::Point p) const
    {
        return {p.x * cosine - p.y * sine, p.x * sine + p.y * cosine};
    }
    imaging::Vec2 apply(imaging::Vec2 v) const
    {
        return imaging::rotate(v, imaging::F(sine), imaging::F(cosine));
    }
    Turn inverse() const
    {
        Turn t = *this;
        t.sine = -sine;
        return t;
    }

private:
    static double exact(double v) { return std::abs(v) < 1e-12 ? 0 : v; }
};

} // namespace builtin
