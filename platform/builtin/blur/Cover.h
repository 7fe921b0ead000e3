// A blurred picture seen through the alpha of the sharp one.
#pragma once

#include "platform/imaging/Pixel.h"

namespace builtin {

// The mean colour of the neighbourhood `blurred`, premultiplied by the alpha of its middle pixel:
// around a cut-out shape the transparent surroundings do not count as black. 0 where the
// neighbourhood is transparent.
inline imaging::Rgb cover(const imaging::Px& blurred, const imaging::Px& sharp)
{
    using imaging::F;
    const F k = select(blurred.a == F(0.0f), F(0.0f), sharp.a / blurred.a);
    return {blurred.r * k, blurred.g * k, blurred.b * k};
}

} // namespace builtin
