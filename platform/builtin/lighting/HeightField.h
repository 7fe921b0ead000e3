// A relief from a mask: flat at the outline of its shapes, rising over about the radius.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// Heights within 0 … 1 for a mask within 0 … 1, as opaque grey on the mask's extent. Radius 0 (and
// below) gives the mask's luminance.
imaging::Image heightField(const imaging::Image& mask, double radius);

class HeightFieldFromMask : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 10;

    imaging::Image outputImage() const override;
};

} // namespace builtin
