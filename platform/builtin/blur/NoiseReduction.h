// Averages small differences away and sharpens large ones.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// Differences of luminance up to `level` are noise, from twice the level on they are edges.
// Sharpness lifts the edges; 0 leaves them as they are. Both 0 (or below) give the image itself.
imaging::Image noiseReduction(const imaging::Image& image, double level, double sharpness);

class NoiseReduction : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputNoiseLevel = 0.02; // luminance, 0 … 1
    double inputSharpness = 0.4;

    imaging::Image outputImage() const override;
};

} // namespace builtin
