// The colours of a circle's circumference run outward for ever.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class CircleSplashDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 150;

    imaging::Image outputImage() const override;
};

} // namespace builtin
