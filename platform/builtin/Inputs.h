// How the built-in filters describe their inputs.
//
// Default values are written once, as the initialisers of the fields: a built-in filter computes
// the same whether or not its defaults were set.
#pragma once

#include "platform/imaging/Filter.h"

#include <string_view>

namespace builtin {

using imaging::Categories;
using imaging::FilterRegistry;
using imaging::Input;
using imaging::InputDetails;
using imaging::InputType;

constexpr double kPi = 3.14159265358979323846;

// An input's details, put together like a sentence: scalar().min(0).slider(0, 2).identity(1). What
// is not said is absent from the attribute dictionary.
class Details {
public:
    constexpr explicit Details(InputType type) { _details.type = type; }

    constexpr Details min(double v) const { return with(&InputDetails::min, v); }
    constexpr Details max(double v) const { return with(&InputDetails::max, v); }
    constexpr Details slider(double low, double high) const
    {
        return with(&InputDetails::sliderMin, low).with(&InputDetails::sliderMax, high);
    }
    constexpr Details identity(double v) const { return with(&InputDetails::identity, v); }

    constexpr operator InputDetails() const { return _details; }

private:
    constexpr Details with(std::optional<double> InputDetails::*field, double v) const
    {
        Details d = *this;
        d._details.*field = v;
        return d;
    }

    InputDetails _details;
};

constexpr Details scalar()
{
    return Details(InputType::Scalar);
}
constexpr Details distance()
{
    return Details(InputType::Distance);
}
constexpr Details angle()
{
    return Details(InputType::Angle);
}
constexpr Details untyped()
{
    return Details(InputType::None);
}
// The inputs that most filters have.
constexpr Details kImage(InputType::Image);
constexpr Details kPosition(InputType::Position);
constexpr Details kColor(InputType::Color);
constexpr Details kTransform(InputType::Transform);
constexpr Details kTurn = angle().slider(-kPi, kPi).identity(0);

// Registers class T under the name, with the values of a new object's fields as described defaults
// (images have none).
template <class T, std::size_t N>
void add(FilterRegistry& registry, std::string_view name, std::string_view displayName,
         Categories categories, Input<T> (&&inputs)[N])
{
    const auto fresh = std::make_unique<T>();
    for (Input<T>& in : inputs)
        in.defaultValue = std::visit(
            [&](auto member) { return imaging::fields::read((*fresh).*member); }, in.field);
    registry.add<T>(name, displayName, categories, inputs);
}

// What a radius, width or scale below 0 (or a not-a-number) counts as: 0.
constexpr double positive(double v)
{
    return v > 0 ? v : 0;
}

} // namespace builtin
