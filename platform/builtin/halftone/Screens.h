// Halftone screens in black and white: rings, dots, hatching and lines.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class CircularScreen : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputWidth = 6; // of one period in pixels
    double inputSharpness = 0.7;

    imaging::Image outputImage() const override;
};

// What the turned screens have in common.
class TurnedScreen : public imaging::Filter {
public:
    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputAngle = 0; // radians, counter-clockwise
    double inputWidth = 6; // of one period in pixels
    double inputSharpness = 0.7;
};

class DotScreen : public TurnedScreen {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

class HatchedScreen : public TurnedScreen {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

class LineScreen : public TurnedScreen {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

} // namespace builtin
