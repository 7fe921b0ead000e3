// Edges of the red channel, as grey.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class Sobel : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputIntensity = 0;

    imaging::Image outputImage() const override;
};

} // namespace filters
