// Bitmaps of another size.
#pragma once

#include "platform/imaging/Bitmap.h"

namespace drawing {

// The whole bitmap resampled to width × height in the same format: averaged over the area of each
// new pixel along an axis that shrinks, linear between pixel centres along one that grows, the
// border pixels continued outwards. Colours are weighted by their alpha. Null when a side is not in
// 1…Bitmap::kMaximumSide or memory is short.
imaging::BitmapRef scaledBitmap(const imaging::Bitmap& source, int width, int height);

} // namespace drawing
