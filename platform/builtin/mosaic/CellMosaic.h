// A picture in which every cell of a layout has one colour: the mean of its pixels.
#pragma once

#include "platform/builtin/mosaic/Cells.h"
#include "platform/imaging/Image.h"

#include <functional>

namespace builtin {

using imaging::Image;

// The mean of each cell's pixels within the image's extent, painted on `extent`; cells without such
// a pixel are transparent. Cells of an infinite image have its colour at their middle instead. Each
// mean is of all pixels of the cell, so that nothing depends on how rendering is split.
Image cellMosaic(const Image& image, std::shared_ptr<const CellLayout> layout, const IRect& extent);

// The image at scattered positions, one for each cell of the range: bilinear samples, transparent
// outside the image. `spacing` tells how many pixels neighbouring positions are apart, about;
// `rowOf` fills in the positions of a row of cells and may be called from several threads. Null
// when memory is short or the rendering was stopped, else four floats for each cell.
imaging::FloatBuffer samplesOf(const Image& image, const CellRange& range, double spacing,
                               const IRect& around,
                               const std::function<void(std::int64_t row, Point* positions)>& rowOf,
                               imaging::RenderContext& context);

} // namespace builtin
