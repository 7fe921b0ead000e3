// Whole-bitmap steps between the file formats and the pictures.
#pragma once

#include "platform/imaging/Bitmap.h"

#include <cstdint>
#include <memory>

namespace codecs {

// The pixels turned and mirrored as an EXIF orientation of 2…8 asks; null when memory is short.
std::shared_ptr<imaging::Bitmap> oriented(const imaging::Bitmap& source, int orientation);

// The pixels in 8 or 16 bits, unpremultiplied and rounded to nearest; null when memory is short.
std::shared_ptr<imaging::Bitmap> converted(const imaging::Bitmap& source,
                                           imaging::PixelFormat format);

// A row of RGBA bytes as three bytes a pixel, as seen on white paper.
void flattenOntoWhite(const std::uint8_t* rgba, std::uint8_t* rgb, int width);

// Undoes premultiplication; colours above their alpha become the largest number.
template <class T>
void unpremultiply(T* rgba, int width);

} // namespace codecs
