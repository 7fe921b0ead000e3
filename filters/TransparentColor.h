// Makes the pixels near a colour transparent.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class TransparentColor : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Color inputColor = imaging::Color::clear();
    double inputFactor = 0; // the distance at which a pixel keeps its alpha; black to white is √3

    imaging::Image outputImage() const override;
};

} // namespace filters
