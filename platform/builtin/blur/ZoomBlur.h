// The mean along a ray through each pixel, as if the camera had moved toward the centre.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class ZoomBlur : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter = {150, 150};
    double inputAmount = 20; // percent; above 0 samples toward the centre, below 0 away from it

    imaging::Image outputImage() const override;
};

} // namespace builtin
