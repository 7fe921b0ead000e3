// Keeps a rectangle of the picture and stretches its border out to the edges.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class SlideFrame : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputFactorX = 0; // sides of the rectangle as parts of the picture's
    double inputFactorY = 0;
    imaging::Vector inputCenter{0, 0};

    imaging::Image outputImage() const override;
};

} // namespace filters
