// The picture seen through a pane of glass whose relief is a texture.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class GlassDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Image inputTexture;           // heights as luminance; repeats over the plane
    imaging::Vector inputCenter{150, 150}; // where its middle lies
    double inputScale = 200;               // pixels for a rise of 1 a pixel

    imaging::Image outputImage() const override;
};

} // namespace builtin
