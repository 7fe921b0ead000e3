// A first impression of an image made smaller.
#pragma once

#include "platform/imaging/Renderer.h"

namespace imaging {

// The pixels of a rectangle of the image made smaller: pixel (i, j) of the small one is the mean
// over the columns from i / scaleX to (i + 1) / scaleX of `rowsEach` of the rows between j / scaleY
// and (j + 1) / scaleY, evenly chosen; of all of them when there are not more. Only those rows are
// computed, so the cost falls with the scale where a row needs no others. Bytes, otherwise as
// render(). Null also when a scale is not above 0 and at most 1.
std::shared_ptr<Bitmap> renderReduced(const Image& image, const PixelRect& rect, double scaleX,
                                      double scaleY, int rowsEach,
                                      const RenderOptions& options = {});

} // namespace imaging
