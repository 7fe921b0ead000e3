// How far a blur spreads a picture.
#pragma once

#include "platform/imaging/Node.h"

namespace builtin {

// Wider and higher by the pixels given on each side. An infinite picture is blurred where it is
// looked at.
inline imaging::IRect grownExtent(const imaging::Image& image, int dx, int dy)
{
    const imaging::IRect& e = image.node()->extent();
    return e.isPlane() ? e : e.grown(dx, dy);
}

} // namespace builtin
