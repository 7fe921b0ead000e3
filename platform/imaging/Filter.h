// Filter objects made by name: typed inputs with defaults and descriptions, one output image.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/imaging/Image.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace imaging {

using foundation::Dictionary;
using foundation::Value;

class FilterRegistry;

// Without the prefix "CICategory", in dictionary order. Literals, so that lists shared by a family
// are constants.
using Categories = std::initializer_list<const char*>;

// What one number, position, colour … is for: the last word of its "CIAttributeType…" constant.
enum class InputType {
    None, // no type is described
    Time,
    Scalar,
    Distance,
    Angle,
    Position,
    Offset,
    Rectangle,
    Color,
    OpaqueColor,
    Image,
    Transform
};

// The description of one input. What is not given is absent from the attribute dictionary.
struct InputDetails {
    InputType type = InputType::None;
    std::optional<double> value; // default of a number
    std::optional<double> min, max, sliderMin, sliderMax, identity;
};

// One row of a filter class's input table: the key, the field it sets, what is told about it. The
// only place where a key, default or range is written.
template <class T>
struct Input {
    using Field = std::variant<Image T::*, double T::*, Vector T::*, Color T::*,
                               AffineTransform T::*, Rect T::*>;

    const char* key;
    Field field;
    const char* displayName = ""; // "" when none is described
    InputDetails details = {};
    // Defaults and identities of inputs that are not numbers.
    Value defaultValue = {}, identityValue = {};
};

// The class-independent form of a filter class's description.
struct FilterDescription {
    struct InputDescription {
        std::string key;
        std::string
            attributeClass;    // "NSNumber", "CIImage", "CIColor", "CIVector", "NSAffineTransform"
        Dictionary attributes; // everything that is answered for the key
        Value defaultValue;    // nothing for images and undescribed inputs
        std::function<bool(class Filter&, const Value&)> set; // false: a value of the wrong kind
        std::function<Value(const class Filter&)> get;
    };

    std::string name, displayName;
    std::vector<std::string> categories;  // with prefix: "CICategoryBlur", …
    std::vector<InputDescription> inputs; // in key order
    std::function<std::unique_ptr<class Filter>()> make;

    const InputDescription* input(std::string_view key) const;
};

class Filter {
public:
    Filter() = default;
    virtual ~Filter() = default;
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    // A new filter of the registered name, null when there is none. Its inputs have the values its
    // class gives them at construction.
    static std::unique_ptr<Filter> filterWithName(std::string_view name);

    const FilterDescription& description() const { return *_description; }
    const std::string& name() const { return _description->name; }

    // Sets every input that has a described default; images stay as they are.
    virtual void setDefaults();
    std::vector<std::string> inputKeys() const;
    std::vector<std::string> outputKeys() const { return {"outputImage"}; }
    // Name, display name, categories, and per input key a dictionary of its description.
    virtual Dictionary attributes() const;

    // Numbers, vectors (a point will do), colours, transforms and images. False, with nothing
    // changed, for an unknown key or a value of the wrong kind.
    virtual bool setValueForKey(const Value& value, std::string_view key);
    bool setValueForKey(const Image& image, std::string_view key)
    {
        return setValueForKey(Value(image.node()), key);
    }
    // Nothing for an unknown key or a missing image.
    Value valueForKey(std::string_view key) const;

    // A missing image when an input that the result needs is missing.
    virtual Image outputImage() const = 0;

private:
    friend class FilterRegistry;
    const FilterDescription* _description = nullptr;
};

// The filter classes by name. Filled by explicit lists (builtin/Register.cpp,
// filters/Register.cpp); immutable afterwards.
class FilterRegistry {
public:
    static FilterRegistry& shared();

    // Registers class T. `inputs` is its table; fields keep their constructed values as long as
    // nothing is set.
    template <class T, std::size_t N>
    void add(std::string_view name, std::string_view displayName, Categories categories,
             const Input<T> (&inputs)[N]);
    template <class T>
    void add(std::string_view name, std::string_view displayName, Categories categories);

    const FilterDescription* find(std::string_view name) const;
    std::vector<std::string> names() const; // in order of registration
    std::unique_ptr<Filter> make(std::string_view name) const;

private:
    template <class T>
    FilterDescription begin(std::string_view name, std::string_view displayName,
                            Categories categories);
    void finish(FilterDescription description);

    std::vector<std::unique_ptr<FilterDescription>> _filters;
};

// ---------------------------------------------------------------------------------------------------

namespace fields {

// "NSNumber" and so on for each field type, in the order of Input::Field.
const char* attributeClassOf(std::size_t fieldIndex);
Dictionary describeInput(const char* key, std::size_t fieldIndex, const char* displayName,
                         const InputDetails& details, const Value& defaultValue,
                         const Value& identityValue);

bool assign(Image& field, const Value& value);
bool assign(double& field, const Value& value);
bool assign(Vector& field, const Value& value);
bool assign(Color& field, const Value& value);
bool assign(AffineTransform& field, const Value& value);
bool assign(Rect& field, const Value& value);
Value read(const Image& field);
Value read(double field);
Value read(const Vector& field);
Value read(const Color& field);
Value read(const AffineTransform& field);
Value read(const Rect& field);

} // namespace fields

template <class T>
FilterDescription FilterRegistry::begin(std::string_view name, std::string_view displayName,
                                        Categories categories)
{
    FilterDescription d;
    d.name = name;
    d.displayName = displayName;
    for (const char* c : categories)
        d.categories.push_back(std::string("CICategory") + c);
    d.make = [] { return std::make_unique<T>(); };
    return d;
}

template <class T>
void FilterRegistry::add(std::string_view name, std::string_view displayName, Categories categories)
{
    finish(begin<T>(name, displayName, categories));
}

template <class T, std::size_t N>
void FilterRegistry::add(std::string_view name, std::string_view displayName, Categories categories,
                         const Input<T> (&inputs)[N])
{
    FilterDescription d = begin<T>(name, displayName, categories);
    for (const Input<T>& in : inputs) {
        FilterDescription::InputDescription out;
        out.key = in.key;
        out.attributeClass = fields::attributeClassOf(in.field.index());
        out.defaultValue = in.details.value ? Value(*in.details.value) : in.defaultValue;
        out.attributes = fields::describeInput(in.key, in.field.index(), in.displayName, in.details,
                                               in.defaultValue, in.identityValue);
        out.set = [field = in.field](Filter& f, const Value& v) {
            return std::visit(
                [&](auto member) { return fields::assign(static_cast<T&>(f).*member, v); }, field);
        };
        out.get = [field = in.field](const Filter& f) {
            return std::visit(
                [&](auto member) { return fields::read(static_cast<const T&>(f).*member); }, field);
        };
        d.inputs.push_back(std::move(out));
    }
    finish(std::move(d));
}

} // namespace imaging
