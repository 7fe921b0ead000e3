// Pictures made from nothing: a flat colour, a checkerboard, stripes, a soft disc, noise. Infinite.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Color;
using imaging::Image;
using imaging::Vector;

class ConstantColorGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Color inputColor{1, 0, 0};

    Image outputImage() const override;
};

class CheckerboardGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Vector inputCenter{150, 150}; // lower left corner of a square of colour 0
    Color inputColor0 = Color::white();
    Color inputColor1 = Color::black();
    double inputWidth = 80;
    double inputSharpness = 1; // 1: one-pixel edges, 0: linear fades

    Image outputImage() const override;
};

class StripesGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Vector inputCenter{150, 150}; // where a stripe of colour 0 begins, running to the right
    Color inputColor0 = Color::white();
    Color inputColor1 = Color::black();
    double inputWidth = 80;
    double inputSharpness = 1;

    Image outputImage() const override;
};

class GaussianGradient : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Vector inputCenter{150, 150};
    Color inputColor0 = Color::white(); // in the middle
    Color inputColor1 = Color::clear(); // from the radius on
    double inputRadius = 300;

    Image outputImage() const override;
};

// Four independent uniform numbers a pixel, the same in every run and every rectangle. They are the
// premultiplied components as they stand: colour may exceed alpha.
class RandomGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image outputImage() const override;
};

} // namespace builtin
