// Paths on their way to Cairo, whose arithmetic wraps around for points too far away.
#pragma once

#include "platform/drawing/Path.h"

#include <cairo.h>

#include <algorithm>
#include <span>

namespace drawing {

// How far from the origin, in device units, a point may lie that is handed to Cairo, and how wide a
// pen may be.
struct Reach {
    double point;
    double pen;
};
// Cairo's rasteriser gets edges wrong whose ends lie farther out than some 90,000 pixels. Pictures
// have up to 32,767; path, half the widest pen and its miters together end at 80,000, and the ends
// that cutting leaves, a pen wide, stay out of sight.
constexpr Reach kPixelReach{50'000, 30'000};
// Files are only limited by the coordinates themselves.
constexpr Reach kFileReach{2'000'000, 800'000};
// The miter limit for a pen of that width.
constexpr double miterLimit(double pen, const Reach& reach)
{
    return std::min(10.0, 2 * reach.pen / pen);
}

// Sets the path, mapped to device units, as the context's current path; the context's own matrix
// must be the identity. Points that are not finite are left out with their line or curve. A path
// with points out of reach is flattened and cut down: for filling to polygons with the same inside
// within reach, for stroking to the pieces of its lines within reach.
void setFillPath(cairo_t* context, std::span<const Path::Element> path,
                 const AffineTransform& toDevice, double reach);
void setStrokePath(cairo_t* context, std::span<const Path::Element> path,
                   const AffineTransform& toDevice, double reach);

} // namespace drawing
