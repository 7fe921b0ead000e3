// The mean of a disc with an antialiased rim.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class DiscBlur : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 8; // pixels

    imaging::Image outputImage() const override;
};

} // namespace builtin
