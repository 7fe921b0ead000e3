// Turns, squeezes and skews the picture about its centre.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class AffineTransform1 : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputAngle = 0; // radians
    double inputSqueeze =
        0; // above 0 the width becomes 1 - squeeze, below 0 the height 1 + squeeze
    double inputSkew = 0;

    imaging::Image outputImage() const override;
};

} // namespace filters
