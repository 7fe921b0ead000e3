// A page that is rolled off the target over a cylinder.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Image;
using imaging::Rect;

class PageCurlTransition : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;       // the print on the page
    Image inputTargetImage; // what lies under it
    Image
        inputBacksideImage;  // the print on its back, seen through the page; else the picture's own
    Image inputShadingImage; // a lit ball that fills its square; else a plain light from above
    Rect inputExtent{0, 0, 300, 300}; // the page
    double inputTime = 0;
    double inputAngle = 0;    // radians; the page is taken up at its farthest corner that way
    double inputRadius = 100; // of the widest roll

    // Covers the page. At time 0 it shows the picture, at time 1 the target.
    Image outputImage() const override;
};

} // namespace builtin
