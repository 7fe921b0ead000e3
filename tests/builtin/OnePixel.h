// Filters at single positions.
#pragma once

#include "tests/support/Support.h"

#include <gmock/gmock.h>

namespace support {

// The colour of the pixel (x, y), y up.
inline Rgba at(const Image& image, int x, int y)
{
    return pixel(*render(image, {double(x), double(y), 1, 1}), 0, 0);
}

// What a filter makes of one pixel on its own.
inline Rgba through(std::string_view filter, Rgba p, const Dictionary& inputs = {})
{
    return pixel(*apply(filter, bitmapFrom(1, 1, [&](int, int) { return p; }), inputs), 0, 0);
}

// The same colour to within `tolerance` in every component.
MATCHER_P2(IsColor, color, tolerance, "")
{
    const Rgba& c = color;
    const float largest = std::max({std::abs(arg.r - c.r), std::abs(arg.g - c.g),
                                    std::abs(arg.b - c.b), std::abs(arg.a - c.a)});
    return largest <= tolerance;
}

} // namespace support
