// Bitmaps of another size.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/imaging/Bitmap.h"

namespace drawing {

// The whole bitmap resampled to width × height in the same format: averaged over the area of each
// new pixel along an axis that shrinks, linear between pixel centres along one that grows, the
// border pixels continued outwards. Colours are weighted by their alpha. Null when a side is not in
// 1…Bitmap::kMaximumSide or memory is short.
imaging::BitmapRef scaledBitmap(const imaging::Bitmap& source, int width, int height);

// The whole bitmap resampled onto a rectangle of a new white one, in pixels with y up, sides above
// 0. It replaces the white, with its transparency; a pixel that the rectangle covers in part keeps
// the rest of its white. Null as above.
imaging::BitmapRef bitmapOnWhite(const imaging::Bitmap& source, int width, int height,
                                 const foundation::Rect& place);

} // namespace drawing
