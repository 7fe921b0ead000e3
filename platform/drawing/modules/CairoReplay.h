// Replays a recording into a Cairo context.
#pragma once

#include "platform/drawing/Canvas.h"
#include "platform/drawing/modules/Tables.h"

#include <cairo.h>

#include <string>

namespace drawing {

// Draws every operation, the drawing's lower left corner at the bottom of a page of the given size
// in device units, whose y runs down. False, with the reason in `error`, when Cairo gives up.
bool replayOntoPage(const Recording& recording, cairo_t* context, Size page, std::string& error);

// The same for the operations and the tile of a painting; the context shows the tile.
bool replayInto(const TilePainting& painting, const Recording& recording, cairo_t* context,
                std::string& error);

} // namespace drawing
