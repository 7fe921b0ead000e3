// Images put together from whole pixels of others.
#pragma once

#include "platform/imaging/Image.h"

namespace imaging {

// The patch's pixels within the patch's extent, the base's elsewhere. The extent of the result is
// given, rounded outward. Each is computed only where it shows.
Image patched(const Image& base, const Image& patch, const Rect& extent);

// The image again and again, side by side over the plane, standing where it stands. An empty or
// infinite image is answered as it is.
Image repeated(const Image& image);

} // namespace imaging
