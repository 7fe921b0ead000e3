// Conversions from floating point to integers that are defined for every value.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace foundation {

// Truncates toward zero, saturates at the ends of the type, not-a-number gives 0.
template <class Integer>
constexpr Integer saturateTo(double value)
{
    constexpr double low = static_cast<double>(std::numeric_limits<Integer>::min());
    // The largest value may not be representable; one above it always is (a power of two).
    constexpr double pastHigh =
        static_cast<double>(std::numeric_limits<Integer>::max() / 2 + 1) * 2;
    if (!(value > low))
        return value <= low ? std::numeric_limits<Integer>::min() : Integer{0};
    if (value >= pastHigh)
        return std::numeric_limits<Integer>::max();
    return static_cast<Integer>(value);
}

constexpr std::int32_t truncToInt(double value)
{
    return saturateTo<std::int32_t>(value);
}
constexpr std::uint32_t saturateToUInt32(double value)
{
    return saturateTo<std::uint32_t>(value);
}

// The low byte of the truncated value.
constexpr std::uint8_t lowByte(double value)
{
    return static_cast<std::uint8_t>(static_cast<std::uint64_t>(saturateTo<std::int64_t>(value)));
}

} // namespace foundation
