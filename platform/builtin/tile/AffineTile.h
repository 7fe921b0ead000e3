// The picture, transformed and repeated over the whole plane without a seam.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// Infinite. A transform without an inverse and an empty picture give an empty image, an infinite
// picture is only transformed.
imaging::Image affineTile(const imaging::Image& image, const imaging::AffineTransform& transform);

class AffineTile : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::AffineTransform inputTransform;

    imaging::Image outputImage() const override;
};

} // namespace builtin
