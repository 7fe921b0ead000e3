// Water: what lies below a line reflects what lies above it.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class Mirror : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{0, 0}; // its y is the height of the line

    imaging::Image outputImage() const override;
};

} // namespace filters
