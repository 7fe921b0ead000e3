// A picture of a lit ball that fills its square, looked up by surface normal.
#pragma once

#include "platform/imaging/Image.h"
#include "platform/imaging/Pixel.h"

#include <algorithm>

namespace builtin {
inline namespace CIF_LANES_NAMESPACE {

class Ball {
public:
    // An empty or infinite picture has no ball.
    static bool isIn(const imaging::Image& picture)
    {
        const imaging::Rect square = picture.extent();
        return !square.isEmpty() && !square.isInfinite();
    }

    // One pixel inside: the outline of the ball is mixed with what lies around it.
    explicit Ball(const imaging::Rect& square)
        : _middle{square.midX(), square.midY()},
          _reachX(static_cast<float>(std::max(square.width / 2 - 1, 0.0))),
          _reachY(static_cast<float>(std::max(square.height / 2 - 1, 0.0)))
    {
    }

    // The colour where the ball's normal has these sideways parts; the picture is a sampler.
    imaging::Px operator()(const auto& picture, imaging::Vec2 normal) const
    {
        return picture.clamped(_middle + imaging::Vec2{normal.x * imaging::F(_reachX),
                                                       normal.y * imaging::F(_reachY)});
    }

private:
    imaging::Point _middle;
    float _reachX, _reachY;
};

} // namespace CIF_LANES_NAMESPACE
} // namespace builtin
