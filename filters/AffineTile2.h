// The plane tiled with the picture, scaled, turned, stretched and skewed.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class AffineTile2 : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputScale = 0;
    double inputAngle = 0; // radians
    double inputStretch = 0;
    double inputSkew = 0;
    imaging::Vector inputCenter{0, 0};

    imaging::Image outputImage() const override;
};

} // namespace filters
