// Blows a point of the picture up to a transparent disc.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class HoleDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 150;

    imaging::Image outputImage() const override;
};

} // namespace builtin
