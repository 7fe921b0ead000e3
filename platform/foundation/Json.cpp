// JSON text to values and back, over the JSON package, which only this file includes.
#include "platform/foundation/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace foundation {

namespace {

// Far more than any recipe or description nests, far less than a stack bears.
constexpr std::size_t kDeepest = 64;
// Dictionaries are searched from front to back; text with more members than this is no recipe.
constexpr std::size_t kMostMembers = 10'000;

std::string placeIn(std::string_view text, std::size_t position)
{
    const std::string_view before = text.substr(0, std::min(position, text.size()));
    const std::size_t line = 1 + static_cast<std::size_t>(std::ranges::count(before, '\n'));
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0
    const std::size_t column = std::max<std::size_t>(1, before.size() - lineStart);
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// Takes the parser's events and builds values, innermost container last.
class Builder : public nlohmann::json_sax<nlohmann::json> {
public:
    explicit Builder(std::string_view text) : _text(text) {}

    Value takeResult() { return std::move(_result); }
    const std::string& error() const { return _error; }

    bool null() override { return put(Value()); }
    bool boolean(bool v) override { return put(v); }
    bool number_integer(number_integer_t v) override { return put(std::int64_t{v}); }
    bool number_unsigned(number_unsigned_t v) override
    {
        if (v <= static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max()))
            return put(static_cast<std::int64_t>(v));
        return put(static_cast<double>(v));
    }
    bool number_float(number_float_t v, const string_t&) override { return put(v); }
    bool string(string_t& v) override { return put(std::move(v)); }
    bool binary(binary_t&) override { return false; }
    bool key(string_t& v) override
    {
        _open.back().key = std::move(v);
        return true;
    }
    bool start_object(std::size_t) override { return open(true); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(false); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& why) override
    {
        // Out of range is the parser's word for a number that no double holds.
        if (dynamic_cast<const nlohmann::detail::out_of_range*>(&why))
            _error = "a number is too large: " + token;
        else if (position > _text.size())
            _error = placeIn(_text, _text.size() + 1) + ": the text ends too early";
        else
            _error = placeIn(_text, position) + ": unexpected " + characterAt(position);
        return false;
    }

private:
    struct Container {
        bool isObject;
        Dictionary members;
        Array elements;
        std::string key;
    };

    // The last character that was read, `position` being how many there were.
    std::string characterAt(std::size_t position) const
    {
        const auto c = static_cast<unsigned char>(_text[std::max<std::size_t>(position, 1) - 1]);
        char shown[16];
        std::snprintf(shown, sizeof shown, c > ' ' && c < 0x7f ? "%c" : "byte 0x%02x", c);
        return shown;
    }

    bool put(Value v)
    {
        if (_open.empty()) {
            _result = std::move(v);
            return true;
        }
        Container& c = _open.back();
        if (!c.isObject) {
            c.elements.push_back(std::move(v));
            return true;
        }
        if (c.members.size() >= kMostMembers)
            return fail("more than " + std::to_string(kMostMembers) + " members in one object");
        c.members.set(c.key, std::move(v));
        return true;
    }

    bool open(bool isObject)
    {
        if (_open.size() >= kDeepest)
            return fail("nested deeper than " + std::to_string(kDeepest) + " levels");
        _open.push_back({isObject, {}, {}, {}});
        return true;
    }

    bool close()
    {
        Container c = std::move(_open.back());
        _open.pop_back();
        return c.isObject ? put(std::move(c.members)) : put(std::move(c.elements));
    }

    bool fail(std::string why)
    {
        _error = std::move(why);
        return false;
    }

    std::string_view _text;
    std::vector<Container> _open;
    Value _result;
    std::string _error;
};

using Json = nlohmann::ordered_json;

Json jsonOf(const Value& value);

// The shortest digits that tell the float apart, read as a double: those are what is then printed.
double shortestDouble(float v)
{
    char digits[32];
    const auto written = std::to_chars(digits, digits + sizeof digits, v);
    double d = v;
    std::from_chars(digits, written.ptr, d);
    return d;
}

Json jsonOf(const Number& n)
{
    switch (n.kind()) {
    case Number::Kind::Boolean:
        return n.boolValue();
    case Number::Kind::Integer:
        return n.int64Value();
    case Number::Kind::Float:
        return shortestDouble(n.floatValue());
    case Number::Kind::Double:
        return n.doubleValue();
    }
    return nullptr;
}

Json jsonOf(const Vector& v)
{
    const double all[] = {v.x, v.y, v.z, v.w};
    Json list = Json::array();
    for (int i = 0; i < std::clamp(v.count, 0, 4); ++i)
        list.push_back(all[i]);
    return list;
}

Json jsonOf(const Color& c)
{
    return {shortestDouble(c.red), shortestDouble(c.green), shortestDouble(c.blue),
            shortestDouble(c.alpha)};
}

Json jsonOf(const Value& value)
{
    if (const Number* n = value.number())
        return jsonOf(*n);
    if (const std::string* s = value.string())
        return *s;
    if (const Point* p = value.get<Point>())
        return {p->x, p->y};
    if (const Size* s = value.get<Size>())
        return {s->width, s->height};
    if (const Rect* r = value.get<Rect>())
        return {r->x, r->y, r->width, r->height};
    if (const Vector* v = value.get<Vector>())
        return jsonOf(*v);
    if (const Color* c = value.color())
        return jsonOf(*c);
    if (const AffineTransform* t = value.get<AffineTransform>())
        return {t->m11, t->m12, t->m21, t->m22, t->tX, t->tY};
    if (const ArrayRef a = value.array()) {
        Json list = Json::array();
        for (const Value& v : *a)
            list.push_back(jsonOf(v));
        return list;
    }
    if (const DictionaryRef d = value.dictionary()) {
        Json object = Json::object();
        for (const auto& [key, v] : *d)
            object[key] = jsonOf(v);
        return object;
    }
    return nullptr;
}

} // namespace

Result<Value> parseJson(std::string_view text)
{
    Builder builder(text);
    if (!nlohmann::json::sax_parse(text, &builder))
        return Error{builder.error()};
    return builder.takeResult();
}

std::string toJson(const Value& value, int indent)
{
    // Text that is no UTF-8 (a file name may be anything) gets replacement characters.
    return jsonOf(value).dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace foundation
