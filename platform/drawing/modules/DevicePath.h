// Paths on their way to Cairo, whose coordinates are 24.8 fixed point and wrap around beyond that.
#pragma once

#include "platform/drawing/Path.h"

#include <cairo.h>

#include <span>

namespace drawing {

// Nothing farther out than this, in device units, reaches Cairo: picture (at most 32,767), path,
// pen and a ten-fold miter together stay below its limit of 8,388,607.
constexpr double kFarthestPoint = 2'000'000;
constexpr double kWidestPen = 400'000;

// Sets the path, mapped to device units, as the context's current path; the context's own matrix
// must be the identity. Points that are not finite are left out with their line or curve. A path
// that reaches too far is flattened and cut down: for filling to polygons with the same inside
// within reach, for stroking to the pieces of its lines within reach.
void setFillPath(cairo_t* context, std::span<const Path::Element> path,
                 const AffineTransform& toDevice);
void setStrokePath(cairo_t* context, std::span<const Path::Element> path,
                   const AffineTransform& toDevice);

} // namespace drawing
