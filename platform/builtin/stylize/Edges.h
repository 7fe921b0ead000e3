// The strength of the picture's edges, component by component, on black.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class Edges : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputIntensity = 1;

    imaging::Image outputImage() const override;
};

} // namespace builtin
