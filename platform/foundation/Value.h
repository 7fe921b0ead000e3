// The values that parameters are made of, and dictionaries that keep the order of their keys.
#pragma once

#include "platform/foundation/Color.h"
#include "platform/foundation/Geometry.h"
#include "platform/foundation/Numbers.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// Pictures and images are only carried here, never looked into.
namespace drawing {
class Picture;
}
namespace imaging {
class Node;
}

namespace foundation {

using PictureRef = std::shared_ptr<const drawing::Picture>;
using ImageRef = std::shared_ptr<const imaging::Node>;

// A number remembers how it was made: attribute descriptions choose a control by it. Equality is by
// value, not by kind. Conversions truncate, saturate and turn not-a-number into 0.
class Number {
public:
    enum class Kind { Boolean, Integer, Float, Double };

    constexpr Number(bool v) : _kind(Kind::Boolean), _integer(v) {}
    constexpr Number(int v) : _kind(Kind::Integer), _integer(v) {}
    constexpr Number(std::uint32_t v) : _kind(Kind::Integer), _integer(v) {}
    constexpr Number(std::int64_t v) : _kind(Kind::Integer), _integer(v) {}
    constexpr Number(float v) : _kind(Kind::Float), _real(v) {}
    constexpr Number(double v) : _kind(Kind::Double), _real(v) {}

    constexpr Kind kind() const { return _kind; }
    constexpr bool isReal() const { return _kind == Kind::Float || _kind == Kind::Double; }
    constexpr double doubleValue() const
    {
        return isReal() ? _real : static_cast<double>(_integer);
    }
    constexpr float floatValue() const { return static_cast<float>(doubleValue()); }
    constexpr std::int64_t int64Value() const
    {
        return isReal() ? saturateTo<std::int64_t>(_real) : _integer;
    }
    constexpr int intValue() const
    {
        return isReal() ? truncToInt(_real) : truncToInt(static_cast<double>(_integer));
    }
    constexpr std::uint32_t unsignedIntValue() const
    {
        return isReal() ? saturateToUInt32(_real) : saturateToUInt32(static_cast<double>(_integer));
    }
    constexpr bool boolValue() const { return isReal() ? _real != 0 : _integer != 0; }

    friend constexpr bool operator==(const Number& a, const Number& b)
    {
        return a.isReal() || b.isReal() ? a.doubleValue() == b.doubleValue()
                                        : a._integer == b._integer;
    }

private:
    Kind _kind;
    std::int64_t _integer = 0;
    double _real = 0;
};

class Value;
class Dictionary;
using Array = std::vector<Value>;
using ArrayRef = std::shared_ptr<const Array>;
using DictionaryRef = std::shared_ptr<const Dictionary>;

// One value of any kind, or nothing. Arrays and dictionaries inside are immutable and shared.
class Value {
public:
    Value() = default;
    template <class T>
    requires std::is_arithmetic_v<T> Value(T v) : _v(Number(v)) {}
    Value(Number v) : _v(v) {}
    Value(const char* v) : _v(std::string(v)) {}
    Value(std::string_view v) : _v(std::string(v)) {}
    Value(std::string v) : _v(std::move(v)) {}
    Value(Point v) : _v(v) {}
    Value(Size v) : _v(v) {}
    Value(Rect v) : _v(v) {}
    Value(Vector v) : _v(v) {}
    Value(Color v) : _v(v) {}
    Value(AffineTransform v) : _v(v) {}
    Value(PictureRef v) : _v(std::move(v)) {}
    Value(ImageRef v) : _v(std::move(v)) {}
    Value(ArrayRef v) : _v(std::move(v)) {}
    Value(DictionaryRef v) : _v(std::move(v)) {}
    Value(Array v) : _v(std::make_shared<const Array>(std::move(v))) {}
    Value(Dictionary v);

    bool isNothing() const { return std::holds_alternative<std::monostate>(_v); }

    // The value if it is of that kind, else null.
    template <class T>
    const T* get() const
    {
        return std::get_if<T>(&_v);
    }
    const Number* number() const { return get<Number>(); }
    const std::string* string() const { return get<std::string>(); }
    const Color* color() const { return get<Color>(); }
    PictureRef picture() const { return pointer<PictureRef>(); }
    ImageRef image() const { return pointer<ImageRef>(); }
    ArrayRef array() const { return pointer<ArrayRef>(); }
    DictionaryRef dictionary() const { return pointer<DictionaryRef>(); }

    // What it is, in words for messages: "a number", "a colour", …
    const char* kindName() const;

    friend bool operator==(const Value& a, const Value& b);

private:
    template <class T>
    T pointer() const
    {
        const T* p = get<T>();
        return p ? *p : T{};
    }

    std::variant<std::monostate, Number, std::string, Point, Size, Rect, Vector, Color,
                 AffineTransform, PictureRef, ImageRef, ArrayRef, DictionaryRef>
        _v;
};

// Keys with values, in the order in which the keys were first set. Equality is of content, whatever
// the order.
class Dictionary {
public:
    using Entry = std::pair<std::string, Value>;

    Dictionary() = default;
    Dictionary(std::initializer_list<Entry> entries)
    {
        for (const Entry& e : entries)
            set(e.first, e.second);
    }

    // Null when the key is absent.
    const Value* find(std::string_view key) const
    {
        for (const Entry& e : _entries)
            if (e.first == key)
                return &e.second;
        return nullptr;
    }
    bool contains(std::string_view key) const { return find(key) != nullptr; }
    // Nothing when the key is absent.
    const Value& operator[](std::string_view key) const
    {
        static const Value nothing;
        const Value* v = find(key);
        return v ? *v : nothing;
    }
    void set(std::string_view key, Value value)
    {
        for (Entry& e : _entries)
            if (e.first == key) {
                e.second = std::move(value);
                return;
            }
        _entries.emplace_back(std::string(key), std::move(value));
    }
    void remove(std::string_view key)
    {
        std::erase_if(_entries, [&](const Entry& e) { return e.first == key; });
    }
    void clear() { _entries.clear(); }

    // The number under the key in the wanted form, or the fallback when the key is absent or holds
    // no number.
    int intValue(std::string_view key, int fallback) const
    {
        const Number* n = number(key);
        return n ? n->intValue() : fallback;
    }
    float floatValue(std::string_view key, float fallback) const
    {
        const Number* n = number(key);
        return n ? n->floatValue() : fallback;
    }
    double doubleValue(std::string_view key, double fallback) const
    {
        const Number* n = number(key);
        return n ? n->doubleValue() : fallback;
    }
    bool boolValue(std::string_view key, bool fallback) const
    {
        const Number* n = number(key);
        return n ? n->boolValue() : fallback;
    }
    // Empty when the key is absent or holds no string.
    std::string stringValue(std::string_view key) const
    {
        const Value* v = find(key);
        const std::string* s = v ? v->string() : nullptr;
        return s ? *s : std::string();
    }

    std::size_t size() const { return _entries.size(); }
    bool empty() const { return _entries.empty(); }
    auto begin() const { return _entries.begin(); }
    auto end() const { return _entries.end(); }

    friend bool operator==(const Dictionary& a, const Dictionary& b)
    {
        if (a.size() != b.size())
            return false;
        return std::all_of(a.begin(), a.end(), [&](const Entry& e) {
            const Value* other = b.find(e.first);
            return other && *other == e.second;
        });
    }

private:
    const Number* number(std::string_view key) const
    {
        const Value* v = find(key);
        return v ? v->number() : nullptr;
    }

    std::vector<Entry> _entries;
};

inline Value::Value(Dictionary v) : _v(std::make_shared<const Dictionary>(std::move(v))) {}

inline bool operator==(const Value& a, const Value& b)
{
    // Containers compare by content, pictures and images by identity.
    if (const auto x = a.dictionary(), y = b.dictionary(); x && y)
        return *x == *y;
    if (const auto x = a.array(), y = b.array(); x && y)
        return *x == *y;
    return a._v == b._v;
}

inline const char* Value::kindName() const
{
    static constexpr const char* kNames[] = {
        "nothing",  "a number",    "a text",    "a point",  "a size", "a rectangle", "a vector",
        "a colour", "a transform", "a picture", "an image", "a list", "a dictionary"};
    return kNames[_v.index()];
}

} // namespace foundation
