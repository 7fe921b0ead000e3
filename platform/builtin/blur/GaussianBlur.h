// The Gaussian blur; the picture's border fades into transparency.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class GaussianBlur : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 10; // standard deviation in pixels

    imaging::Image outputImage() const override;
};

} // namespace builtin
