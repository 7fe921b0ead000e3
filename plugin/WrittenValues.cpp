// Numbers, points, colours and picture names as people write them.
#include "plugin/WrittenValues.h"

#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace plugin {

using foundation::AffineTransform;
using foundation::Color;
using foundation::Error;
using foundation::Number;
using foundation::Point;
using foundation::Rect;
using foundation::Vector;

namespace {

std::string inQuotes(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

template <class T>
std::string shortest(T value)
{
    char digits[64];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

// A real number always shows a point or an exponent, so that it is not taken for an integer.
template <class T>
std::string shortestReal(T value)
{
    std::string s = shortest(value);
    if (s.find_first_not_of("-0123456789") == std::string::npos)
        s += ".0";
    return s;
}

std::optional<std::vector<double>> numbersFrom(std::string_view text)
{
    std::vector<double> numbers;
    for (std::size_t start = 0;;) {
        const std::size_t comma = text.find(',', start);
        const auto n = numberFrom(text.substr(start, comma - start));
        if (!n)
            return std::nullopt;
        numbers.push_back(n->doubleValue());
        if (comma == std::string_view::npos)
            return numbers;
        start = comma + 1;
    }
}

std::optional<Color> colorFrom(std::string_view text)
{
    if (text.starts_with('#')) {
        text.remove_prefix(1);
        std::uint32_t bits = 0;
        const auto r = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
        if (r.ec != std::errc() || r.ptr != text.data() + text.size() ||
            (text.size() != 6 && text.size() != 8))
            return std::nullopt;
        if (text.size() == 6)
            bits = bits << 8 | 0xff;
        const auto part = [&](int shift) { return static_cast<float>(bits >> shift & 0xff) / 255; };
        return Color::rgb(part(24), part(16), part(8), part(0));
    }
    const auto n = numbersFrom(text);
    if (!n || n->size() < 3 || n->size() > 4)
        return std::nullopt;
    const auto part = [&](std::size_t i) { return static_cast<float>((*n)[i]); };
    return Color::rgb(part(0), part(1), part(2), n->size() == 4 ? part(3) : 1);
}

Vector vectorFrom(const std::vector<double>& n)
{
    return n.size() == 2   ? Vector(n[0], n[1])
           : n.size() == 3 ? Vector(n[0], n[1], n[2])
                           : Vector(n[0], n[1], n[2], n[3]);
}

template <class T>
std::string joined(std::initializer_list<T> numbers)
{
    std::string s;
    for (const T n : numbers) {
        if (!s.empty())
            s += ',';
        s += shortest(n);
    }
    return s;
}

std::string takes(const Parameter& p)
{
    switch (p.kind) {
    case ValueKind::Boolean:
        return "true or false";
    case ValueKind::Integer:
        return "a whole number such as 5";
    case ValueKind::Float:
    case ValueKind::Double:
        return "a number such as 5 or 0.5";
    case ValueKind::Point:
        return "a point x,y such as 100,80";
    case ValueKind::Vector:
        return p.components > 0 ? "a vector of " + std::to_string(p.components) +
                                      " numbers with commas between them"
                                : "a vector of two to four numbers with commas between them";
    case ValueKind::Color:
        return "a colour r,g,b[,a] of fractions or #rrggbb[aa]";
    case ValueKind::Transform:
        return "a transform m11,m12,m21,m22,tX,tY";
    case ValueKind::Picture:
        return "the name of a picture file";
    case ValueKind::GlassTexture:
        return "the name of a glass texture or picture file";
    case ValueKind::ShadingMaterial:
        return "the name of a shading material or picture file";
    case ValueKind::Brush:
        return "the name of a brush or picture file";
    }
    return {};
}

Error wrongKind(const Parameter& p, std::string_view text)
{
    return {p.key + " takes " + takes(p) + ", not " + inQuotes(text)};
}

std::string words(const Range& range)
{
    const auto end = [](double v) { return shortest(v); };
    if (range.minimum && range.maximum)
        return "from " + end(*range.minimum) + " to " + end(*range.maximum);
    return range.minimum ? "at least " + end(*range.minimum) : "at most " + end(*range.maximum);
}

bool isFinite(const std::vector<double>& numbers)
{
    return std::ranges::all_of(numbers, [](double v) { return std::isfinite(v); });
}

Result<Value> numberOf(const Parameter& p, std::string_view text, Checking checking)
{
    const auto n = numberFrom(text);
    const bool strict = checking == Checking::Strict;
    if (!n || (p.kind == ValueKind::Integer && n->isReal()) ||
        (strict && !std::isfinite(n->doubleValue())))
        return wrongKind(p, text);
    Range range = p.valid;
    if (p.kind == ValueKind::Integer && !range.minimum && !range.maximum)
        range = {-2147483648.0, 2147483647.0};
    if (strict && !range.contains(n->doubleValue()))
        return Error{p.key + '=' + std::string(text) + " is out of range: it must be " +
                     words(range)};
    if (p.kind == ValueKind::Float && n->isReal())
        return Value(n->floatValue());
    return Value(*n);
}

Result<Value> numbersOf(const Parameter& p, std::string_view text, Checking checking)
{
    const auto n = numbersFrom(text);
    if (!n || (checking == Checking::Strict && !isFinite(*n)))
        return wrongKind(p, text);
    const std::size_t count = n->size();
    switch (p.kind) {
    case ValueKind::Point:
        if (count != 2)
            return wrongKind(p, text);
        return Value(Point{(*n)[0], (*n)[1]});
    case ValueKind::Transform:
        if (count != 6)
            return wrongKind(p, text);
        return Value(AffineTransform{(*n)[0], (*n)[1], (*n)[2], (*n)[3], (*n)[4], (*n)[5]});
    default:
        if (count < 2 || count > 4 ||
            (p.components > 0 && count != static_cast<std::size_t>(p.components)))
            return wrongKind(p, text);
        return Value(vectorFrom(*n));
    }
}

Result<Value> colorOf(const Parameter& p, std::string_view text, Checking checking)
{
    const auto c = colorFrom(text);
    if (!c)
        return wrongKind(p, text);
    const float parts[] = {c->red, c->green, c->blue, c->alpha};
    if (checking == Checking::Strict &&
        !std::ranges::all_of(parts, [](float v) { return v >= 0 && v <= 1; }))
        return Error{p.key + '=' + std::string(text) +
                     " is out of range: the fractions of a colour are from 0 to 1"};
    return Value(*c);
}

// A filter takes an image of its own for what is not one of the plug-in's translated keys.
Value imageOf(const PictureRef& picture)
{
    return Value(imaging::Image::fromBitmap(picture->bitmap()).node());
}

Result<Value> pictureOf(const CIFMain& main, const Parameter& p, std::string_view text)
{
    if (text.empty())
        return wrongKind(p, text);
    // The library's names come first, so that a file that happens to lie about changes nothing.
    const std::vector<std::string> names = libraryNames(main, p.kind);
    const bool isListed = std::ranges::find(names, text) != names.end();
    if (isListed)
        if (const PictureRef picture = libraryPicture(main, p.kind, text))
            return Value(picture);

    Result<PictureRef> picture = codecs::readPicture(std::filesystem::path(std::string(text)));
    if (!picture && isListed)
        return Error{p.key + ": the library's picture " + std::string(text) + " cannot be read"};
    if (!picture) {
        std::string known;
        for (const std::string& name : names)
            known += (known.empty() ? "; the library has " : ", ") + name;
        return Error{p.key + ": " + picture.error() + known};
    }
    if (p.kind == ValueKind::Brush)
        return Value(convertMaskImage(*picture));
    if (p.kind != ValueKind::Picture)
        return Value(*picture);
    if (!(*picture)->bitmap())
        return Error{p.key + ": " + inQuotes(text) + " can't be turned into pixels"};
    return imageOf(*picture);
}

} // namespace

std::optional<Number> numberFrom(std::string_view text)
{
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    if (text.find_first_of(".eEnN") == std::string_view::npos) {
        std::int64_t integer = 0;
        if (const auto r = std::from_chars(text.data(), end, integer);
            r.ec == std::errc() && r.ptr == end)
            return Number(integer);
    }
    double real = 0;
    const auto r = std::from_chars(text.data(), end, real);
    if (r.ec != std::errc() || r.ptr != end)
        return std::nullopt;
    return Number(real);
}

Value valueByLooks(std::string_view text)
{
    if (text == "true" || text == "false")
        return text == "true";
    if (const auto n = numberFrom(text))
        return *n;
    if (text.starts_with('#'))
        if (const auto c = colorFrom(text))
            return *c;
    if (const auto n = numbersFrom(text); n && n->size() <= 4)
        return vectorFrom(*n);
    return text;
}

bool isPicture(ValueKind kind)
{
    return kind == ValueKind::Picture || kind == ValueKind::GlassTexture ||
           kind == ValueKind::ShadingMaterial || kind == ValueKind::Brush;
}

std::optional<std::string> writtenForm(const Value& value, ValueKind readAs)
{
    if (const Number* n = value.number()) {
        switch (n->kind()) {
        case Number::Kind::Boolean:
            return n->boolValue() ? "true" : "false";
        case Number::Kind::Integer:
            return shortest(n->int64Value());
        case Number::Kind::Float:
            if (readAs == ValueKind::Float)
                return shortestReal(n->floatValue());
            break;
        case Number::Kind::Double:
            break;
        }
        return shortestReal(n->doubleValue());
    }
    if (const Point* p = value.get<Point>())
        return joined({p->x, p->y});
    if (const Vector* v = value.get<Vector>()) {
        switch (v->count) {
        case 1:
            return shortest(v->x);
        case 2:
            return joined({v->x, v->y});
        case 3:
            return joined({v->x, v->y, v->z});
        default:
            return joined({v->x, v->y, v->z, v->w});
        }
    }
    if (const Rect* r = value.get<Rect>())
        return joined({r->x, r->y, r->width, r->height});
    if (const Color* c = value.color())
        return c->alpha == 1 ? joined({c->red, c->green, c->blue})
                             : joined({c->red, c->green, c->blue, c->alpha});
    if (const AffineTransform* t = value.get<AffineTransform>())
        return joined({t->m11, t->m12, t->m21, t->m22, t->tX, t->tY});
    return std::nullopt;
}

Result<Value> valueOf(const CIFMain& main, const Parameter& parameter, std::string_view text,
                      Checking checking)
{
    const auto byKind = [&]() -> Result<Value> {
        switch (parameter.kind) {
        case ValueKind::Boolean:
            if (text != "true" && text != "false")
                return wrongKind(parameter, text);
            return Value(text == "true");
        case ValueKind::Integer:
        case ValueKind::Float:
        case ValueKind::Double:
            return numberOf(parameter, text, checking);
        case ValueKind::Point:
        case ValueKind::Vector:
        case ValueKind::Transform:
            return numbersOf(parameter, text, checking);
        case ValueKind::Color:
            return colorOf(parameter, text, checking);
        default:
            return pictureOf(main, parameter, text);
        }
    };
    Result<Value> value = byKind();
    if (!value && checking == Checking::Unchecked)
        return valueByLooks(text);
    return value;
}

} // namespace plugin
