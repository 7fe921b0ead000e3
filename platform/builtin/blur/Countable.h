// Pixels as numbers whose sums lose nothing.
#pragma once

#include <cstdint>

namespace builtin {

// Doubles on a grid of 2^-24 add up exactly, to any 2^29, so that sums that slide along a picture
// do not drift and do not depend on where they were begun. What is not a number counts as nothing,
// and limits keep a single pixel from using up the precision of its neighbours.
inline double countable(float v)
{
    constexpr float kLimit = 1 << 20;
    constexpr double kGrid = 1.5 * (1 << 28); // what is added to this is rounded to 2^-24
    const float known = v == v ? v : 0.0f;
    const float limited = known < kLimit ? known > -kLimit ? known : -kLimit : kLimit;
    return (double{limited} + kGrid) - kGrid;
}
inline std::uint8_t countable(std::uint8_t v)
{
    return v;
}

} // namespace builtin
