// Highlights that spread over their surroundings, and highlights that sink into them.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class Bloom : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 10; // standard deviation of the blur, in pixels
    double inputIntensity = 1;

    imaging::Image outputImage() const override;
};

class Gloom : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 10; // standard deviation of the blur, in pixels
    double inputIntensity = 1;

    imaging::Image outputImage() const override;
};

} // namespace builtin
