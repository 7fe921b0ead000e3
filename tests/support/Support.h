// What tests share: small bitmaps made from functions, pixels read back as numbers, effects applied
// by name.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/imaging/Bitmap.h"
#include "platform/imaging/Image.h"
#include "platform/imaging/Renderer.h"

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace support {

using foundation::Dictionary;
using foundation::Rect;
using foundation::Value;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::Image;
using imaging::PixelFormat;
using Floats = std::vector<float>;

// Premultiplied components, as the engine holds them.
struct Rgba {
    float r = 0, g = 0, b = 0, a = 1;
    friend bool operator==(const Rgba&, const Rgba&) = default;
};
std::ostream& operator<<(std::ostream& out, const Rgba& p);

// Everything below throws std::runtime_error with a readable line where it cannot answer, so that a
// test fails with that line instead of a crash.

// An RgbaF bitmap of fn(x, y), row 0 on top.
BitmapRef bitmapFrom(int width, int height, const std::function<Rgba(int x, int y)>& fn);
// The same pixels in another format, unpremultiplied, limited and rounded to nearest where it holds
// whole numbers; pixels without alpha are all zero there.
BitmapRef converted(const Bitmap& bitmap, PixelFormat format);

// One pixel of a bitmap of any format, row 0 on top.
Rgba pixel(const Bitmap& bitmap, int x, int y);
// One component of all pixels, row after row from the top.
Floats reds(const Bitmap& bitmap);
Floats greens(const Bitmap& bitmap);
Floats blues(const Bitmap& bitmap);
Floats alphas(const Bitmap& bitmap);

// How far two bitmaps are apart: absolute differences of premultiplied components, 1 being white
// against black. Bitmaps of different sizes, and a not-a-number on one side only, are infinitely
// far apart.
struct Difference {
    double largest = 0, mean = 0;
    int x = 0, y = 0; // of the largest
};
Difference compare(const Bitmap& a, const Bitmap& b);
std::ostream& operator<<(std::ostream& out, const Difference& d);

// A test picture by name:
//   "photo-96x64"  opaque and photo-like: sky, hills, a house, a tree, a ball, grass
//   "edges-64x48"  opaque and hard-edged: checks, one-pixel lines, single pixels, bars, a steep
//   ramp "alpha-64x48"  a soft disc, a hard-edged frame and half-transparent stripes on nothing
// Rgba8; the same bytes on every machine.
BitmapRef picture(std::string_view name);

Image image(const BitmapRef& bitmap);
// For an input that takes an image: {"inputBackgroundImage", imageValue(bitmap)}.
Value imageValue(const BitmapRef& bitmap);
Rect rectangleOf(const Bitmap& bitmap);

// The part of the image that lies in the rectangle, which must be finite and hold at least one
// pixel.
BitmapRef render(const Image& image, const Rect& rect, PixelFormat format = PixelFormat::RgbaF,
                 const imaging::RenderOptions& options = {});
// The whole of a finite image.
BitmapRef renderWhole(const Image& image, PixelFormat format = PixelFormat::RgbaF);

// Registers the built-in filters and the plug-in's own, once; the functions below do it themselves.
void registerFilters();

// The output of a new filter of that name: described defaults, then the bitmap as "inputImage"
// where there is one, then the inputs.
Image outputOf(std::string_view filterName, const BitmapRef& bitmap, const Dictionary& inputs = {});
// What of it lies in the bitmap's rectangle; smaller than the bitmap where the output is. (The
// inputs are never left out: with two arguments std::apply would be meant.)
BitmapRef apply(std::string_view filterName, const BitmapRef& bitmap, const Dictionary& inputs,
                PixelFormat format = PixelFormat::RgbaF);

// PNG files, by way of the PNG library alone, so that no test of ours vouches for itself. 8 bits a
// channel.
BitmapRef readPng(const std::filesystem::path& file);
void writePng(const std::filesystem::path& file, const Bitmap& bitmap);

} // namespace support
