// The mean of a square, with a fraction of its outermost pixels.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class BoxBlur : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 10; // pixels; the square's side is 2r + 1

    imaging::Image outputImage() const override;
};

} // namespace builtin
