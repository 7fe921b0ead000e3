// Reads attribute descriptions and catalogue descriptors into parameters, as the editor's pages do.
#include "plugin/StartingValues.h"

#include "platform/drawing/Picture.h"
#include "plugin/ResourceLibrary.h"

#include <algorithm>
#include <utility>

namespace plugin {

using foundation::AffineTransform;
using foundation::Color;
using foundation::DictionaryRef;
using foundation::Number;
using foundation::Point;
using foundation::Rect;
using foundation::Vector;

namespace {

// Number rows of the editor's page for entries with that catalogue tag.
int rowsOfPage(int tag)
{
    switch (tag) {
    case 10:
        return 1;
    case 20:
        return 2;
    case 31:
    case 32:
    case 33:
        return 3;
    default:
        return 4;
    }
}

std::optional<double> numberIn(const Dictionary& d, std::string_view key)
{
    const Number* n = d[key].number();
    return n ? std::optional(n->doubleValue()) : std::nullopt;
}

// The plug-in's own keys for inputs that it translates.
std::string handedKeyOf(std::string_view key)
{
    const bool translated =
        key == "inputCenter" || key == "inputTexture" || key == "inputShadingImage";
    return (translated ? "CIF" : "") + std::string(key);
}

ValueKind kindOfNumber(Number::Kind kind)
{
    switch (kind) {
    case Number::Kind::Boolean:
        return ValueKind::Boolean;
    case Number::Kind::Integer:
        return ValueKind::Integer;
    case Number::Kind::Float:
        return ValueKind::Float;
    case Number::Kind::Double:
        break;
    }
    return ValueKind::Double;
}

ValueKind kindOfFilterInput(std::string_view key, const Dictionary& attributes)
{
    if (key == "inputCenter")
        return ValueKind::Point;
    if (key == "inputTexture")
        return ValueKind::GlassTexture;
    if (key == "inputShadingImage")
        return ValueKind::ShadingMaterial;
    const std::string cls = attributes.stringValue("CIAttributeClass");
    if (cls == "CIVector")
        return ValueKind::Vector;
    if (cls == "CIColor")
        return ValueKind::Color;
    if (cls == "CIImage")
        return ValueKind::Picture;
    if (cls == "NSAffineTransform")
        return ValueKind::Transform;
    return attributes.stringValue("CIAttributeType") == "CIAttributeTypeBoolean"
               ? ValueKind::Boolean
               : ValueKind::Double;
}

int componentsOf(const Value& vector)
{
    if (const Vector* v = vector.get<Vector>())
        return v->count;
    return vector.get<Rect>() ? 4 : vector.get<Point>() ? 2 : 0;
}

// Hands out the number rows of a page in key order.
class Rows {
public:
    explicit Rows(const Dictionary& descriptor)
        : _descriptor(descriptor), _count(rowsOfPage(descriptor.intValue("CIFTag", 0)))
    {
    }

    void bindNext(Parameter& p)
    {
        if (_used == _count)
            return; // the filter keeps its own default
        p.row = ++_used;
        const Value& offered = _descriptor["CIFFilterDefValue" + std::to_string(p.row)];
        p.startingValue = offered.number() ? offered : p.defaultValue;
        if (const Number* n = offered.number())
            p.valid.widenTo(n->doubleValue());
        if (const auto limit = numberIn(_descriptor, "CIFFilterMaxValue"); limit && p.row == 1) {
            // The slider ends there, above or below the filter's own end; what the filter allows
            // is only ever widened.
            p.slider.maximum = limit;
            p.valid.widenTo(*limit);
        }
        if (const Number* n = p.startingValue.number())
            p.slider.widenTo(n->doubleValue());
    }

private:
    const Dictionary& _descriptor;
    int _count;
    int _used = 0;
};

Parameter filterParameter(const std::string& key, const Dictionary& attributes)
{
    Parameter p;
    p.key = key;
    p.handedKey = handedKeyOf(key);
    p.label = attributes.stringValue("CIAttributeDisplayName");
    p.kind = kindOfFilterInput(key, attributes);
    p.defaultValue = attributes["CIAttributeDefault"];
    if (p.kind == ValueKind::Vector)
        p.components = componentsOf(p.defaultValue);
    p.valid = {numberIn(attributes, "CIAttributeMin"), numberIn(attributes, "CIAttributeMax")};
    p.slider = {numberIn(attributes, "CIAttributeSliderMin"),
                numberIn(attributes, "CIAttributeSliderMax")};
    if (const Number* n = p.defaultValue.number())
        p.valid.widenTo(n->doubleValue());
    return p;
}

void describeFilter(Entry& entry, const std::vector<std::string>& keys,
                    const Dictionary& attributes, const Dictionary& descriptor)
{
    Rows rows(descriptor);
    for (const std::string& key : keys) {
        const DictionaryRef described = attributes[key].dictionary();
        Parameter p = filterParameter(key, described ? *described : Dictionary());
        if (p.kind == ValueKind::Double)
            rows.bindNext(p);
        else if (p.kind == ValueKind::Boolean || p.kind == ValueKind::Color)
            p.startingValue = p.defaultValue;
        entry.parameters.push_back(std::move(p));
    }
}

// What the generators' base understands, whether a generator lists it or not.
constexpr std::pair<std::string_view, ValueKind> kSharedKeys[] = {
    {"GLIFColorScheme", ValueKind::Integer},        {"GLIFSchemeKeyColor", ValueKind::Float},
    {"GLIFColorRangeMin", ValueKind::Float},        {"GLIFColorRangeMax", ValueKind::Float},
    {"GLIFUseBackgroundColor", ValueKind::Boolean}, {"GLIFBackgroundColor", ValueKind::Color},
};

ValueKind kindOfSharedKey(std::string_view key)
{
    const auto shared =
        std::ranges::find(kSharedKeys, key, &std::pair<std::string_view, ValueKind>::first);
    return shared == std::end(kSharedKeys) ? ValueKind::Double : shared->second;
}

Parameter generatorParameter(const std::string& key, const DictionaryRef& described)
{
    Parameter p;
    p.key = p.handedKey = key;
    p.kind = kindOfSharedKey(key);
    if (!described)
        return p;
    p.defaultValue = p.startingValue = (*described)["GLIFDefValue"];
    if (p.defaultValue.color())
        p.kind = ValueKind::Color;
    if (const Number* n = p.defaultValue.number()) {
        p.kind = kindOfNumber(n->kind());
        if (p.kind == ValueKind::Boolean)
            return p;
        p.valid = {numberIn(*described, "GLIFMinValue"), numberIn(*described, "GLIFMaxValue")};
        p.valid.widenTo(n->doubleValue());
    }
    return p;
}

void describeGenerator(Entry& entry, const std::vector<std::string>& keys,
                       const Dictionary& attributes)
{
    for (const std::string& key : keys)
        entry.parameters.push_back(generatorParameter(key, attributes[key].dictionary()));
    const auto understand = [&](std::string_view key, ValueKind kind) {
        if (entry.find(key))
            return;
        Parameter p;
        p.key = p.handedKey = key;
        p.isListed = false;
        p.kind = kind;
        entry.parameters.push_back(std::move(p));
    };
    for (const auto& [key, kind] : kSharedKeys)
        understand(key, kind);
    if (entry.identifier == "GLIF_Dabs")
        understand("GLIFBrush", ValueKind::Brush);
}

} // namespace

void Range::widenTo(double value)
{
    if (minimum)
        minimum = std::min(*minimum, value);
    if (maximum)
        maximum = std::max(*maximum, value);
}

bool Range::contains(double value) const
{
    // Controls hand over single precision, which may lie a little outside the end that it means.
    const auto isEnd = [&](double end) {
        return static_cast<float>(value) == static_cast<float>(end);
    };
    return !(minimum && !(value >= *minimum || isEnd(*minimum))) &&
           !(maximum && !(value <= *maximum || isEnd(*maximum)));
}

const Parameter* Entry::find(std::string_view key) const
{
    const auto found = std::ranges::find_if(
        parameters, [&](const Parameter& p) { return p.key == key || p.handedKey == key; });
    return found == parameters.end() ? nullptr : &*found;
}

bool isGeneratorName(std::string_view identifier)
{
    return identifier.starts_with("GLIF_");
}

std::optional<Entry> describeEntry(CIFMain& main, std::string_view identifier)
{
    Entry entry;
    entry.identifier = identifier;
    entry.isGenerator = isGeneratorName(identifier);
    main.CIFSetEffectsSet(entry.isGenerator ? 1 : 0);

    const auto keys = main.CIFQueryInputKeysForFilter(identifier);
    const DictionaryRef attributes = main.CIFQueryAttributesForFilter(identifier);
    if (!keys || !attributes)
        return std::nullopt;
    if (entry.isGenerator) {
        describeGenerator(entry, *keys, *attributes);
    } else {
        const DictionaryRef descriptor = main.CIFDescriptorForFilterNameWithGroups(identifier);
        describeFilter(entry, *keys, *attributes, descriptor ? *descriptor : Dictionary());
    }
    return entry;
}

std::vector<std::string> libraryNames(const CIFMain& main, ValueKind kind)
{
    std::optional<std::vector<std::string>> names;
    if (kind == ValueKind::GlassTexture)
        names = main.CIFGlassTextureNames();
    else if (kind == ValueKind::ShadingMaterial)
        names = main.CIFShadingMaterialNames();
    else if (kind == ValueKind::Brush)
        names = main.CIFBrushNames();
    if (!names)
        return {};
    if (kind == ValueKind::ShadingMaterial)
        names = sortedShadingMaterialNames(*std::move(names));
    return *std::move(names);
}

PictureRef libraryPicture(const CIFMain& main, ValueKind kind, std::string_view name)
{
    switch (kind) {
    case ValueKind::GlassTexture:
        return main.CIFGlassTextureWithName(name);
    case ValueKind::ShadingMaterial:
        return main.CIFShadingMaterialWithName(name);
    case ValueKind::Brush:
        return main.CIFBrushWithName(name);
    default:
        return nullptr;
    }
}

Result<Value> startingValue(const CIFMain& main, const Parameter& parameter, Size pictureSize)
{
    switch (parameter.kind) {
    case ValueKind::Point:
        // In single precision, like every point a user picks.
        return Value(Point{static_cast<float>(pictureSize.width * 0.5),
                           static_cast<float>(pictureSize.height * 0.5)});
    case ValueKind::GlassTexture:
    case ValueKind::ShadingMaterial:
    case ValueKind::Brush: {
        const std::vector<std::string> names = libraryNames(main, parameter.kind);
        if (PictureRef first =
                names.empty() ? nullptr : libraryPicture(main, parameter.kind, names.front()))
            return Value(std::move(first));
        if (parameter.kind == ValueKind::GlassTexture)
            return foundation::Error{"can't locate glass texture"};
        if (parameter.kind == ValueKind::ShadingMaterial)
            return foundation::Error{"can't locate shading material"};
        return Value();
    }
    default:
        return parameter.startingValue;
    }
}

Result<Dictionary> startingValues(const CIFMain& main, const Entry& entry, Size pictureSize)
{
    Dictionary values;
    for (const Parameter& p : entry.parameters) {
        Result<Value> value = startingValue(main, p, pictureSize);
        if (!value)
            return foundation::Error{value.error()};
        if (!value->isNothing())
            values.set(p.handedKey, *std::move(value));
    }
    return values;
}

PictureRef convertMaskImage(const PictureRef& picture)
{
    const imaging::BitmapRef source = picture->isVector() ? nullptr : picture->bitmap();
    if (!source || source->format() != imaging::PixelFormat::Rgba8 || !source->computeIsOpaque())
        return picture;
    const auto mask =
        imaging::Bitmap::makeClear(source->width(), source->height(), imaging::PixelFormat::Rgba8);
    if (!mask)
        return picture;
    for (int y = 0; y < source->height(); ++y) {
        const auto* from = source->rowAs<std::uint8_t>(y);
        auto* to = mask->rowAs<std::uint8_t>(y);
        for (int x = 0; x < source->width(); ++x)
            to[x * 4 + 3] = from[x * 4];
    }
    return drawing::Picture::fromBitmap(mask, picture->size());
}

} // namespace plugin
