// A picture next to its Gaussian blur.
#pragma once

#include "platform/imaging/Kernel.h"

namespace builtin {

// Px f(Px blurred, Px sharp) over the extent of the blur, whose standard deviation is given. The
// blur comes first: of a picture that has to be computed it asks for the larger part, which then
// serves both.
template <class Kernel>
imaging::Image withBlurred(const imaging::Image& image, double sigma, imaging::Border border,
                           const Kernel& kernel)
{
    using namespace imaging;
    const Image blurred = gaussian(image, sigma, border);
    const Image sharp = neighborhood(image, 0, [](const auto& window) { return window(0, 0); });
    return combine(blurred, sharp, blurred.extent(), kernel);
}

} // namespace builtin
