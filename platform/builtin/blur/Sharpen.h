// Filters that add what a Gaussian blur takes away.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// Strengthens a pixel's difference from its neighbourhood.
class UnsharpMask : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputRadius = 2.5; // standard deviation of the blur, in pixels
    double inputIntensity = 0.5;

    imaging::Image outputImage() const override;
};

// The same in luminance alone, with a limit that keeps strong edges free of halos.
class SharpenLuminance : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputSharpness = 0.4; // below 0 it blurs

    imaging::Image outputImage() const override;
};

} // namespace builtin
