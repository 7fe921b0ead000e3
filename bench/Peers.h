// The same work done by several libraries on the same pixels, for a comparison in one run.
#pragma once

#include "platform/imaging/Bitmap.h"

#include <functional>
#include <map>
#include <string>

namespace bench {

// The operations, all on an opaque 8-bit RGBA picture into another one, edges as the library likes
// them. A library that has no such operation leaves it out.
//   "sobel"            magnitude of the red channel's gradient, as grey
//   "gauss 7", "gauss 50"   Gaussian blur of that standard deviation
//   "box 10"           mean of a square of 21 pixels
//   "disc 8"           mean of a disc of radius 8
//   "motion 20"        mean along 41 pixels, level; "motion turned" by half a radian
//   "zoom 20"          mean along 18 % of the way to the middle
//   "unsharp 2.5"      half the difference from a Gaussian blur added
//   "noise reduction"  mean of the similar ones among 5 × 5 pixels (bilateral, enhance, median)
//   "noise / median"   the same of ours beside a plain median of 5 × 5 pixels
//   "edges"            magnitude of the gradient, each channel
//   "pixellate 8"      means of squares of 8 pixels
//   "affine"           rotation by 0.3 radians about the middle, bilinear, same size
//   "colour"           saturation 1.5 and contrast 1.2, then gamma 0.7, then a hue rotation of 0.5
//   "invert", "gamma", "posterize"   one colour map
//   "random"           a random number in every channel
//   "checkerboard"     squares of 80 pixels
using Operations = std::map<std::string, std::function<void()>>;

// Each answers its ways of doing them. The picture outlives the operations. Results are left in the
// library's own memory, written in full.
Operations oursOn(const imaging::BitmapRef& picture);
Operations openCvOn(const imaging::BitmapRef& picture);
Operations vipsOn(const imaging::BitmapRef& picture);
Operations geglOn(const imaging::BitmapRef& picture);
Operations magickOn(const imaging::BitmapRef& picture);

// Row-major factors of the hue rotation that all of them use.
constexpr double kHue[9] = {0.918388,  -0.235991, 0.317602, 0.317602, 0.918388,
                            -0.235991, -0.235991, 0.317602, 0.918388};
constexpr double kAngle = 0.3;
constexpr double kTurned = 0.5; // of the slanted motion blur

} // namespace bench
