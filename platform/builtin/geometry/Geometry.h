// Where a picture lies and how much of it there is.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// Named apart from the value that it takes.
class AffineTransformFilter : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::AffineTransform inputTransform;

    imaging::Image outputImage() const override;
};

class Crop : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Rect inputRectangle = imaging::Rect::infinite();

    imaging::Image outputImage() const override;
};

} // namespace builtin
