// A fine net of ripples, as seen through woven glass.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class NetDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputWidth = 0;  // how far the ripples reach to the side, pixels
    double inputHeight = 0; // and up and down

    imaging::Image outputImage() const override;
};

} // namespace filters
