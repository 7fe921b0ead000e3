// The colour of the nearest of a few levels.
#pragma once

#include "platform/imaging/Pixel.h"

namespace builtin {

// Each component becomes one of `levels` evenly spaced ones from 0 to 1. At least 2.
struct Posterize {
    double levels;

    imaging::Rgb operator()(imaging::Rgb u) const
    {
        using imaging::F;
        const F n = levels, last = levels - 1;
        // The summand keeps bytes that lie on a border (51 of 255 at five levels) above it.
        const auto posterized = [&](F x) {
            return min(floor(clamp01(x) * n + F(1.0f / 1024)), last) / last;
        };
        return {posterized(u.r), posterized(u.g), posterized(u.b)};
    }
};

} // namespace builtin
