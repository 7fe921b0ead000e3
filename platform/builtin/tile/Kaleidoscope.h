// A wedge of the picture, mirrored around a point.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class Kaleidoscope : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputCount = 6; // pairs of mirrored wedges, rounded to the nearest whole number
    imaging::Vector inputCenter{150, 150};
    double inputAngle = 0; // where the wedge begins: radians, counter-clockwise from the right

    imaging::Image outputImage() const override;
};

} // namespace builtin
