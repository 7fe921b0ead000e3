// One rule for each kind of input, and the few inputs whose kind does not tell.
#include "editor/PreviewAttributes.h"

#include <cmath>
#include <string>

namespace editor {

using foundation::AffineTransform;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Number;
using foundation::Point;
using foundation::Rect;
using foundation::Size;
using foundation::Value;
using foundation::Vector;

namespace {

enum class Rule { Keep, Length, Place, Movement };

struct Exception {
    std::string_view filter, key;
    Rule rule;
};

constexpr Exception kExceptions[] = {
    // Lengths that are described as plain numbers.
    {"CIGaussianBlur", "inputRadius", Rule::Length},
    // A share of the width, described as a length.
    {"CICMYKHalftone", "inputSharpness", Rule::Keep},
};

Rule ruleOf(std::string_view filter, std::string_view key, const Dictionary& description)
{
    for (const Exception& e : kExceptions)
        if (e.filter == filter && e.key == key)
            return e.rule;
    // The plug-in's own filters describe no type.
    if (key == "inputCenter")
        return Rule::Place;
    const std::string type = description.stringValue("CIAttributeType");
    if (type == "CIAttributeTypeDistance")
        return Rule::Length;
    if (type == "CIAttributeTypePosition" || type == "CIAttributeTypeOffset" ||
        type == "CIAttributeTypeRectangle")
        return Rule::Place;
    if (description.stringValue("CIAttributeClass") == "NSAffineTransform")
        return Rule::Movement;
    return Rule::Keep;
}

// Whole numbers would lose what is left of a small one; singles keep their kind.
Value scaledNumber(const Number& n, double scale)
{
    if (n.kind() == Number::Kind::Float)
        return Number(static_cast<float>(n.doubleValue() * scale));
    return Number(n.doubleValue() * scale);
}

Value scaledPlace(const Value& value, CopyScale scale)
{
    if (const auto* p = value.get<Point>())
        return Point{p->x * scale.x, p->y * scale.y};
    if (const auto* s = value.get<Size>())
        return Size{s->width * scale.x, s->height * scale.y};
    if (const auto* r = value.get<Rect>())
        return Rect{r->x * scale.x, r->y * scale.y, r->width * scale.x, r->height * scale.y};
    if (const auto* v = value.get<Vector>()) {
        Vector out = *v;
        out.x *= scale.x;
        out.y *= scale.y;
        // A position in space keeps its height in proportion; a rectangle is four numbers.
        out.z *= v->count == 4 ? scale.x : std::sqrt(scale.x * scale.y);
        out.w *= scale.y;
        return out;
    }
    return value;
}

Value scaledMovement(const Value& value, CopyScale scale)
{
    const auto* t = value.get<AffineTransform>();
    return t ? Value(AffineTransform::scaling(1 / scale.x, 1 / scale.y)
                         .followedBy(*t)
                         .followedBy(AffineTransform::scaling(scale.x, scale.y)))
             : value;
}

Value scaled(Rule rule, const Value& value, CopyScale scale)
{
    switch (rule) {
    case Rule::Length:
        if (const Number* n = value.number())
            return scaledNumber(*n, std::sqrt(scale.x * scale.y));
        return scaledPlace(value, scale);
    case Rule::Place:
        return scaledPlace(value, scale);
    case Rule::Movement:
        return scaledMovement(value, scale);
    case Rule::Keep:
        break;
    }
    return value;
}

// The filter's own key for one that the plug-in translates.
std::string_view filterKey(std::string_view key)
{
    return key.starts_with("CIFinput") ? key.substr(3) : key;
}

} // namespace

Dictionary previewAttributes(std::string_view identifier, const Dictionary& attributes,
                             const DictionaryRef& description, CopyScale scale)
{
    if (!description)
        return attributes;
    Dictionary out;
    const auto inputNamed = [&](std::string_view key) { return (*description)[key].dictionary(); };
    for (const auto& [key, value] : attributes) {
        const DictionaryRef input = inputNamed(filterKey(key));
        out.set(key,
                input ? scaled(ruleOf(identifier, filterKey(key), *input), value, scale) : value);
    }
    for (const auto& [key, value] : *description) {
        const DictionaryRef input = value.dictionary();
        if (!input || attributes.contains(key) || attributes.contains("CIF" + key))
            continue;
        const Rule rule = ruleOf(identifier, key, *input);
        const Value& standard = (*input)["CIAttributeDefault"];
        if (rule != Rule::Keep && !standard.isNothing())
            out.set(key, scaled(rule, standard, scale));
    }
    return out;
}

bool isScaledPicture(std::string_view key)
{
    return filterKey(key) == "inputTexture";
}

} // namespace editor
