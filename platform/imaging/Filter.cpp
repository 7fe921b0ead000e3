// Filter objects: descriptions to attribute dictionaries, values to fields.
#include "platform/imaging/Filter.h"

#include "platform/imaging/Node.h"

#include <algorithm>

namespace imaging {

namespace fields {

const char* attributeClassOf(std::size_t fieldIndex)
{
    static constexpr const char* kClasses[] = {"CIImage", "NSNumber",          "CIVector",
                                               "CIColor", "NSAffineTransform", "CIVector"};
    return kClasses[fieldIndex];
}

namespace {

const char* typeName(InputType type)
{
    static constexpr const char* kNames[] = {"",      "Time",        "Scalar", "Distance",
                                             "Angle", "Position",    "Offset", "Rectangle",
                                             "Color", "OpaqueColor", "Image",  "Transform"};
    return kNames[static_cast<int>(type)];
}

} // namespace

Dictionary describeInput(const char* key, std::size_t fieldIndex, const char* displayName,
                         const InputDetails& details, const Value& defaultValue,
                         const Value& identityValue)
{
    Dictionary d;
    d.set("CIAttributeName", key);
    d.set("CIAttributeClass", attributeClassOf(fieldIndex));
    if (*displayName)
        d.set("CIAttributeDisplayName", displayName);
    if (details.type != InputType::None)
        d.set("CIAttributeType", std::string("CIAttributeType") + typeName(details.type));
    const auto setIf = [&](const char* name, const std::optional<double>& v) {
        if (v)
            d.set(name, *v);
    };
    setIf("CIAttributeMin", details.min);
    setIf("CIAttributeMax", details.max);
    setIf("CIAttributeSliderMin", details.sliderMin);
    setIf("CIAttributeSliderMax", details.sliderMax);
    setIf("CIAttributeDefault", details.value);
    if (!defaultValue.isNothing())
        d.set("CIAttributeDefault", defaultValue);
    setIf("CIAttributeIdentity", details.identity);
    if (!identityValue.isNothing())
        d.set("CIAttributeIdentity", identityValue);
    return d;
}

namespace {

template <class T>
bool assignAs(T& field, const Value& value)
{
    const T* v = value.get<T>();
    if (v)
        field = *v;
    return v != nullptr;
}

} // namespace

bool assign(Image& field, const Value& value)
{
    if (!value.isNothing() && !value.get<foundation::ImageRef>())
        return false;
    field = Image(value.image());
    return true;
}
bool assign(double& field, const Value& value)
{
    const foundation::Number* n = value.number();
    if (n)
        field = n->doubleValue();
    return n != nullptr;
}
bool assign(Vector& field, const Value& value)
{
    if (const Point* p = value.get<Point>()) {
        field = Vector(p->x, p->y);
        return true;
    }
    return assignAs(field, value);
}
bool assign(Color& field, const Value& value)
{
    return assignAs(field, value);
}
bool assign(AffineTransform& field, const Value& value)
{
    return assignAs(field, value);
}
bool assign(Rect& field, const Value& value)
{
    if (const Vector* v = value.get<Vector>(); v && v->count == 4) {
        field = {v->x, v->y, v->z, v->w};
        return true;
    }
    return assignAs(field, value);
}

Value read(const Image& field)
{
    return field ? Value(field.node()) : Value();
}
Value read(double field)
{
    return field;
}
Value read(const Vector& field)
{
    return field;
}
Value read(const Color& field)
{
    return field;
}
Value read(const AffineTransform& field)
{
    return field;
}
Value read(const Rect& field)
{
    return Vector(field.x, field.y, field.width, field.height);
}

} // namespace fields

const FilterDescription::InputDescription* FilterDescription::input(std::string_view key) const
{
    const auto found = std::find_if(inputs.begin(), inputs.end(),
                                    [&](const InputDescription& i) { return i.key == key; });
    return found == inputs.end() ? nullptr : &*found;
}

std::unique_ptr<Filter> Filter::filterWithName(std::string_view name)
{
    return FilterRegistry::shared().make(name);
}

void Filter::setDefaults()
{
    for (const FilterDescription::InputDescription& in : _description->inputs)
        if (!in.defaultValue.isNothing())
            in.set(*this, in.defaultValue);
}

std::vector<std::string> Filter::inputKeys() const
{
    std::vector<std::string> keys;
    for (const FilterDescription::InputDescription& in : _description->inputs)
        keys.push_back(in.key);
    return keys;
}

Dictionary Filter::attributes() const
{
    Dictionary d;
    d.set("CIAttributeFilterName", _description->name);
    d.set("CIAttributeFilterDisplayName", _description->displayName);
    foundation::Array categories(_description->categories.begin(), _description->categories.end());
    d.set("CIAttributeFilterCategories", std::move(categories));
    for (const FilterDescription::InputDescription& in : _description->inputs)
        d.set(in.key, in.attributes);
    return d;
}

bool Filter::setValueForKey(const Value& value, std::string_view key)
{
    const FilterDescription::InputDescription* in = _description->input(key);
    return in && in->set(*this, value);
}

Value Filter::valueForKey(std::string_view key) const
{
    const FilterDescription::InputDescription* in = _description->input(key);
    return in ? in->get(*this) : Value();
}

FilterRegistry& FilterRegistry::shared()
{
    static FilterRegistry registry;
    return registry;
}

void FilterRegistry::finish(FilterDescription description)
{
    // The last registration of a name holds, in its first place.
    for (std::unique_ptr<FilterDescription>& f : _filters)
        if (f->name == description.name) {
            *f = std::move(description);
            return;
        }
    _filters.push_back(std::make_unique<FilterDescription>(std::move(description)));
}

const FilterDescription* FilterRegistry::find(std::string_view name) const
{
    for (const std::unique_ptr<FilterDescription>& f : _filters)
        if (f->name == name)
            return f.get();
    return nullptr;
}

std::vector<std::string> FilterRegistry::names() const
{
    std::vector<std::string> names;
    for (const std::unique_ptr<FilterDescription>& f : _filters)
        names.push_back(f->name);
    return names;
}

std::unique_ptr<Filter> FilterRegistry::make(std::string_view name) const
{
    const FilterDescription* description = find(name);
    if (!description)
        return nullptr;
    std::unique_ptr<Filter> filter = description->make();
    filter->_description = description;
    return filter;
}

} // namespace imaging
