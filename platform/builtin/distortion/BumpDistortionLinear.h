// Magnifies a band of the picture across its middle line.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class BumpDistortionLinear : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 300; // half the width of the band
    double inputAngle = 0;    // radians, of the line
    double inputScale = 0.5;  // 1 changes nothing, less magnifies, more shrinks

    imaging::Image outputImage() const override;
};

} // namespace builtin
