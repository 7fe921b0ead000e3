// Numbers, values and pictures taken from the bytes of a fuzz target's input.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/imaging/Bitmap.h"

#include <cstdint>
#include <string_view>

namespace fuzz {

// Takes an input apart from its front. What is past the end is zero.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : _rest(bytes) {}

    std::uint8_t byte();
    std::uint32_t word();
    // 0 … count − 1; 0 when there are none.
    std::size_t pick(std::size_t count);
    bool oneIn(int n) { return pick(std::size_t(n)) == 0; }
    // Any double: usually near the range, now and then an end of it, huge, tiny, or no number.
    double number(double low, double high);
    // A value of the kind that an attribute class names, or now and then of another kind.
    foundation::Value value(std::string_view attributeClass, double low, double high);
    // 1 to 64 pixels a side, opaque or not.
    imaging::BitmapRef bitmap();

private:
    std::string_view _rest;
};

} // namespace fuzz
