// Shifts the picture round: what leaves on one side returns on the other.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class Offset : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{0, 0}; // where the picture's corner goes
    double inputAngle = 0;             // radians
    double inputScale = 0;             // how many pictures take the place of one, along a side

    imaging::Image outputImage() const override;
};

} // namespace filters
