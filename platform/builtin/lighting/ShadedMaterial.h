// A relief lit like a ball: each slope takes the colour that a picture of a lit ball has where the
// ball slopes the same way.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// `ball` shows a ball that fills its square; an empty or infinite one gives a missing image. A
// negative scale turns the relief inside out.
imaging::Image shadedMaterial(const imaging::Image& heights, const imaging::Image& ball,
                              double scale);

class ShadedMaterial : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage; // heights as luminance, 0 … 1
    imaging::Image inputShadingImage;
    double inputScale = 10; // pixels of height for the luminance 1

    imaging::Image outputImage() const override;
};

} // namespace builtin
