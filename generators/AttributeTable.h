// The parameters of one generator, in the order in which they are listed and shown.
#pragma once

#include "platform/foundation/Value.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

namespace generators {

// One row. The literal's type is the parameter's kind: 1 an integer, 1.0f a float, 1.0 a double,
// true a switch. A colour has a default only.
struct Attribute {
    enum class Kind {
        Number,
        Color,
        EmptyDescription, // described by an empty dictionary
        NoDescription,    // listed among the keys, absent from the descriptions
    };

    const char* key = "";
    Kind kind = Kind::NoDescription;
    foundation::Number minimum = 0;
    foundation::Number maximum = 0;
    foundation::Number defaultNumber = 0;
    foundation::Color defaultColor = {};

    constexpr Attribute() = default;
    constexpr Attribute(const char* name, foundation::Number least, foundation::Number most,
                        foundation::Number normal)
        : key(name), kind(Kind::Number), minimum(least), maximum(most), defaultNumber(normal)
    {
    }
    constexpr Attribute(const char* name, foundation::Color normal)
        : key(name), kind(Kind::Color), defaultColor(normal)
    {
    }
    constexpr Attribute(const char* name, Kind how) : key(name), kind(how) {}
};

// Made at compile time: `constexpr AttributeTable kAttributes = {{"GLIFSize", 1, 100, 64}, …};`
class AttributeTable {
public:
    static constexpr std::size_t kCapacity = 12;

    constexpr AttributeTable() = default;
    constexpr AttributeTable(std::initializer_list<Attribute> rows)
    {
        for (const Attribute& row : rows)
            _rows.at(_count++) = row;
    }

    constexpr const Attribute* begin() const { return _rows.data(); }
    constexpr const Attribute* end() const { return _rows.data() + _count; }

    // Every key, in order.
    std::vector<std::string> keys() const;

    // For every key a dictionary with "GLIFMinValue", "GLIFMaxValue" and "GLIFDefValue"; of a
    // colour only the last.
    foundation::Dictionary descriptions() const;

private:
    std::array<Attribute, kCapacity> _rows;
    std::size_t _count = 0;
};

} // namespace generators
