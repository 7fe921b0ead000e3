// Two colours: one for what is brighter than a level, one for the rest.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class BlackWhite : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputLevel = 0;
    imaging::Color inputColor0 = imaging::Color::clear(); // for the brighter pixels
    imaging::Color inputColor1 = imaging::Color::clear();

    imaging::Image outputImage() const override;
};

} // namespace filters
