// JSON text to values and back.
#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

#include <string>
#include <string_view>

namespace foundation {

// Numbers without point or exponent become integers, others doubles; objects dictionaries that keep
// their order. The error says where the text goes wrong.
Result<Value> parseJson(std::string_view text);

// Numbers by kind (a boolean as true or false, a float with the digits that tell it apart, a
// not-finite one as null); points, sizes, rectangles, vectors, colours and transforms as arrays of
// their numbers; pictures and images as null. `indent` below 0 puts everything on one line.
std::string toJson(const Value& value, int indent = -1);

} // namespace foundation
