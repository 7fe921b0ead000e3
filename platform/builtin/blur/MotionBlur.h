// The mean along a line through each pixel.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class MotionBlur : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 20; // half the line's length in pixels
    double inputAngle = 0;   // radians, counter-clockwise from the x axis

    imaging::Image outputImage() const override;
};

} // namespace builtin
