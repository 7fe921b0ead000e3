// The mean of a square, with a fraction of its outermost pixels.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// The mean of a rectangle of 2·across + 1 by 2·up + 1 pixels around each one, transparent beyond
// the border; the extent grows by as much. Radii are limited to 10 000; below 0 and not-a-number
// count as 0.
imaging::Image boxMean(const imaging::Image& image, double across, double up);

class BoxBlur : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 10; // pixels; the square's side is 2r + 1

    imaging::Image outputImage() const override;
};

} // namespace builtin
