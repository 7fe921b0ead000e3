// Bends the picture once around a clear circle, its lower edge inward.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class CircularWrap : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 150; // of the clear circle
    double inputAngle = 0;    // radians, counter-clockwise; 0 has the picture's middle at the top

    imaging::Image outputImage() const override;
};

} // namespace builtin
