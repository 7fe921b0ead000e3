// The transform of the tiling filters: where a tile goes that is stretched, skewed, turned, scaled.
#pragma once

#include "platform/imaging/Image.h"

#include <cmath>

namespace filters {

// Angle in radians; the picture's corner goes to the centre. Numbers are read and entries stored in
// single precision, computed in double. A scale or stretch of 0 leaves no inverse.
inline imaging::AffineTransform tileTransform(double scale, double angle, double stretch,
                                              double skew, const imaging::Vector& center)
{
    const double s = static_cast<float>(scale), t = static_cast<float>(stretch),
                 k = static_cast<float>(skew);
    const double sine = std::sin(double{static_cast<float>(angle)}),
                 cosine = std::cos(double{static_cast<float>(angle)});
    const auto stored = [](double entry) { return static_cast<float>(entry); };
    return {stored((cosine - sine * k) * t * s),
            stored(t * (k * cosine + sine) * s),
            stored(-sine * s),
            stored(s * cosine),
            stored(center.x),
            stored(center.y)};
}

} // namespace filters
