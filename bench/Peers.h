// The same work done by several libraries on the same pixels, for a comparison in one run.
#pragma once

#include "platform/imaging/Bitmap.h"

#include <functional>
#include <map>
#include <string>

namespace bench {

// The operations, all on an opaque 8-bit RGBA picture into another one:
//   "sobel"      magnitude of the red channel's gradient, times 1, as grey
//   "gauss 7", "gauss 50"   Gaussian blur of that standard deviation, edges as the library likes
//   them "affine"     rotation by 0.3 radians about the middle, bilinear, same size "colour"
//   saturation 1.5 and contrast 1.2, then gamma 0.7, then a hue rotation of 0.5 radians
using Operations = std::map<std::string, std::function<void()>>;

// Each answers its ways of doing them. The picture outlives the operations. Results are left in the
// library's own memory, written in full.
Operations oursOn(const imaging::BitmapRef& picture);
Operations openCvOn(const imaging::BitmapRef& picture);
Operations vipsOn(const imaging::BitmapRef& picture);
Operations geglOn(const imaging::BitmapRef& picture);

// Row-major factors of the hue rotation that all of them use.
constexpr double kHue[9] = {0.918388,  -0.235991, 0.317602, 0.317602, 0.918388,
                            -0.235991, -0.235991, 0.317602, 0.918388};
constexpr double kAngle = 0.3;

} // namespace bench
