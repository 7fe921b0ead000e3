// White contours on black, as cut into a wood block.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class EdgeWork : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 3; // pixels; the lines are about as wide

    imaging::Image outputImage() const override;
};

} // namespace builtin
