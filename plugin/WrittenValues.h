// Values in their written form, on the command line and in recipes:
//     number          5   0.5   1e-3      without point or exponent an integer
//     switch          true   false
//     point, vector   10,20[,30[,40]]
//     colour          1,0.5,0[,1] as fractions, or #ff8000[ff]
//     transform       m11,m12,m21,m22,tX,tY
//     picture         a file name; textures, materials and brushes also by library name
#pragma once

#include "plugin/StartingValues.h"

namespace plugin {

bool isPicture(ValueKind kind);

// The whole text as a number, "nan" and "inf" included.
std::optional<foundation::Number> numberFrom(std::string_view text);

// A number, switch, point, vector, colour or transform in its written form. A number that is going
// to be read as `readAs` has the digits that give the same value again.
// Nothing for pictures and containers, which have no written form of their own.
std::optional<std::string> writtenForm(const Value& value, ValueKind readAs = ValueKind::Double);

// How strictly values are taken.
enum class Checking {
    Strict,   // unknown keys, wrong kinds and values outside the range are errors
    Unchecked // anything is handed over: by the parameter's kind if it fits, else by its looks
};

// The value of a parameter from its written form. May read a picture file. The error names the key,
// the value and what would be right.
Result<Value> valueOf(const CIFMain& main, const Parameter& parameter, std::string_view text,
                      Checking checking);

// A number, switch, colour with #, or vector if the text looks like one, else the text.
Value valueByLooks(std::string_view text);

} // namespace plugin
