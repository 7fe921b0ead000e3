// The slope of a plane of numbers by the Sobel weights.
#pragma once

#include "platform/imaging/Pixel.h"

namespace builtin {

// The gradient per pixel, y up, of the plane whose value dx to the right of and dy above the middle
// pixel is plane(dx, dy). A step of height 1 has the gradient ½ on the two columns beside it.
template <class Plane>
imaging::Vec2 gradient(const Plane& plane)
{
    using imaging::F;
    const F lowLeft = plane(-1, -1), lowRight = plane(1, -1);
    const F highLeft = plane(-1, 1), highRight = plane(1, 1);
    const F x = (highRight + F(2.0f) * plane(1, 0) + lowRight) -
                (highLeft + F(2.0f) * plane(-1, 0) + lowLeft);
    const F y = (highLeft + F(2.0f) * plane(0, 1) + highRight) -
                (lowLeft + F(2.0f) * plane(0, -1) + lowRight);
    return imaging::Vec2{x, y} * F(1.0f / 8);
}

} // namespace builtin
