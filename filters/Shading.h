// Makes a relief of the picture and lights it like a material.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

class Shading : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Image inputShadingImage; // a lit ball of the material
    double inputScale = 0;            // how steep the relief is
    double inputRadius = 0;           // how far its slopes reach, pixels

    imaging::Image outputImage() const override;
};

} // namespace filters
