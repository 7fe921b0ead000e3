// The picture's edges as black lines on nothing.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// The lines of a picture whose noise has been reduced: black, with how much of a line there is as
// alpha. Limited by the picture's own alpha.
imaging::Image edgeLines(const imaging::Image& smooth, double intensity, double threshold,
                         double contrast);

class LineOverlay : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    double inputNRNoiseLevel = 0.07;
    double inputNRSharpness = 0.71;
    double inputEdgeIntensity = 1;
    double inputThreshold = 0.1;
    double inputContrast = 50;

    imaging::Image outputImage() const override;
};

} // namespace builtin
