// Replays a recording into a Cairo context.
#pragma once

#include "platform/drawing/Canvas.h"

#include <cairo.h>

#include <string>

namespace drawing {

enum class ReplayTarget { Pixels, VectorFile };

// Draws every operation, the drawing's lower left corner at the bottom of a page of the given size
// in device units, whose y runs down. False, with the reason in `error`, when Cairo gives up.
bool replay(const Recording& recording, cairo_t* context, Size device, ReplayTarget target,
            std::string& error);

} // namespace drawing
