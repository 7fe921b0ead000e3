// Filters computed the slow way: one pixel after the other, in double precision.
#pragma once

#include "tests/support/Support.h"

#include <algorithm>
#include <cmath>

namespace support {

// Any colours with any alpha, in more columns than the engine has in a strip.
inline BitmapRef longRandomPicture(int width = 523, int height = 11)
{
    unsigned state = 1;
    const auto random = [&] {
        state = state * 1664525 + 1013904223;
        return float(state >> 8) / (1 << 24);
    };
    return bitmapFrom(width, height, [&](int x, int) {
        // Opaque for the most part, with rough (also at both ends) and smooth stretches.
        const float a = x % 100 < 80 ? 1 : random(), rough = x % 50 < 25 ? 1 : 0.1f;
        const float r = 0.4f + rough * (random() - 0.4f), g = 0.4f + rough * (random() - 0.4f);
        return Rgba{a * r, a * g, a * random() * rough, a};
    });
}

// The pixel, or the nearest one of the picture.
inline Rgba clampedPixel(const Bitmap& b, int x, int y)
{
    return pixel(b, std::clamp(x, 0, b.width() - 1), std::clamp(y, 0, b.height() - 1));
}

inline double luma(const Rgba& p)
{
    return 0.2125 * p.r + 0.7154 * p.g + 0.0721 * p.b;
}

inline double smoothstep(double a, double b, double x)
{
    const double t = std::clamp((x - a) / (b - a), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

} // namespace support
