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

// Steep: a length that is multiplied by the slopes of a picture that shrinks too, and gets steeper.
enum class Rule { Keep, Length, Steep, Place, Movement };

struct Exception {
    std::string_view filter, key;
    Rule rule;
};

constexpr Exception kExceptions[] = {
    // Lengths that are described as plain numbers.
    {"CIGaussianBlur", "inputRadius", Rule::Length},
    {"CIFShadingFilter", "inputRadius", Rule::Length},
    // Of slopes, which get steeper.
    {"CIFShadingFilter", "inputScale", Rule::Length},
    {"CIGlassDistortion", "inputScale", Rule::Steep},
    // Its width is a few pixels of any picture; on a smaller copy the same width would sharpen what
    // the whole has spread over many pixels.
    {"CISharpenLuminance", "inputSharpness", Rule::Length},
    // Shares, described as lengths.
    {"CICMYKHalftone", "inputSharpness", Rule::Keep},
    {"CIZoomBlur", "inputAmount", Rule::Keep},
};

struct Way {
    std::string_view filter;
    PreviewWay way;
};

constexpr Way kWays[] = {
    {"CICheckerboardGenerator", PreviewWay::FineCopy},
    {"CICircularScreen", PreviewWay::FineCopy},
    {"CICMYKHalftone", PreviewWay::FineCopy},
    {"CIDotScreen", PreviewWay::FineCopy},
    {"CIHatchedScreen", PreviewWay::FineCopy},
    {"CILineScreen", PreviewWay::FineCopy},
    {"CIStripesGenerator", PreviewWay::FineCopy},
    {"CIColorPosterize", PreviewWay::SomeRows},
    {"CIEdges", PreviewWay::SomeRows},
    {"CIEdgeWork", PreviewWay::SomeRows},
    {"CIFBlackWhiteFilter", PreviewWay::SomeRows},
    {"CIFNetDistortion", PreviewWay::SomeRows},
    {"CIFSobel", PreviewWay::SomeRows},
    {"CIFTransparentColorFilter", PreviewWay::SomeRows},
    {"CIRandomGenerator", PreviewWay::SomeRows},
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
    case Rule::Steep:
        if (const Number* n = value.number())
            return scaledNumber(*n, scale.x * scale.y);
        break;
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

PreviewWay previewWay(std::string_view identifier)
{
    for (const Way& w : kWays)
        if (w.filter == identifier)
            return w.way;
    return PreviewWay::Copy;
}

double previewOpacity(std::string_view identifier, CopyScale scale)
{
    return identifier == "CILineOverlay" ? std::sqrt(scale.x * scale.y) : 1;
}

bool isScaledPicture(std::string_view key)
{
    return filterKey(key) == "inputTexture";
}

} // namespace editor
