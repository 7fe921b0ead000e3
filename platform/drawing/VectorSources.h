// Vector files as sources of pictures: PDF through pdftocairo, EPS through gs, SVG through librsvg.
#pragma once

#include "platform/drawing/Picture.h"
#include "platform/foundation/Result.h"

#include <memory>
#include <string>

namespace drawing {

using VectorSourceResult = foundation::Result<std::shared_ptr<const VectorSource>>;

// Whole files in memory. The size is known when a source has been made, so a file that is broken or
// without a usable size (a side not above 0 or beyond 100,000 points) is an error here, as is a
// missing program or library; the error then names the package that has it. A drawing of a source
// (its rasterize) is limited to kMaximumRasterSide a side and 30 seconds.

// The first page, cropped to its crop box and turned as the file says.
VectorSourceResult pdfSource(std::string bytes);
// By its bounding box, the exact one where there is one; a preview in front of it is passed over.
VectorSourceResult epsSource(std::string bytes);
// One pixel of the file counts as one point. What lies outside the file is never loaded.
VectorSourceResult svgSource(std::string bytes);

} // namespace drawing
