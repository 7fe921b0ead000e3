// Numbers and colours in a few evenly spaced levels.
#pragma once

#include "platform/imaging/Pixel.h"

namespace builtin {

// A number (each component of a colour) in 0…1 becomes one of `levels`, at least 2, from 0 to 1.
struct Posterize {
    double levels;

    imaging::F operator()(imaging::F x) const
    {
        using imaging::F;
        const F n = levels, last = levels - 1;
        // The summand keeps bytes that lie on a border (51 of 255 at five levels) above it.
        return min(floor(clamp01(x) * n + F(1.0f / 1024)), last) / last;
    }
    imaging::Rgb operator()(imaging::Rgb u) const
    {
        return {(*this)(u.r), (*this)(u.g), (*this)(u.b)};
    }
};

} // namespace builtin
