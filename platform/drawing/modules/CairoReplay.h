// Replays a recording into a Cairo context.
#pragma once

#include "platform/drawing/Canvas.h"

#include <cairo.h>

#include <string>

namespace drawing {

enum class ReplayTarget { Pixels, VectorFile };

// Draws every operation with the transform from the drawing's points to device units. False, with
// the reason in `error`, when Cairo gives up.
bool replay(const Recording& recording, cairo_t* context, const AffineTransform& toDevice,
            ReplayTarget target, std::string& error);

} // namespace drawing
