// What the format files share with the dispatcher: one decoder and one encoder for each format.
#pragma once

#include "platform/drawing/Picture.h"
#include "platform/foundation/Result.h"
#include "platform/imaging/Bitmap.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace codecs {

using drawing::PictureMetadata;
using foundation::Error;
using foundation::Result;
using imaging::Bitmap;
using imaging::PixelFormat;

struct Decoded {
    std::shared_ptr<Bitmap> bitmap; // as stored, not yet turned
    PictureMetadata metadata;       // as stored; a profile that does not fit the pixels included
    bool grey = false;              // red, green and blue were one sample
    int orientation = 0;            // of the format's own tag, 0 if it has none: EXIF decides
};

// Errors say what is wrong without naming the file.
Result<Decoded> decodePng(std::string_view bytes);
Result<Decoded> decodeJpeg(std::string_view bytes);
Result<Decoded> decodeTiff(std::string_view bytes);
Result<Decoded> decodeWebP(std::string_view bytes);

struct Encoding {
    const Bitmap* bitmap;     // Rgba8, or Rgba16 for PNG and TIFF
    bool opaque;              // no pixel is transparent
    PictureMetadata metadata; // only what is to be written
    int quality;              // 1…100
};

Result<std::string> encodePng(const Encoding& source);
Result<std::string> encodeJpeg(const Encoding& source);
Result<std::string> encodeTiff(const Encoding& source);
Result<std::string> encodeWebP(const Encoding& source);

// No picture takes more than this while it is read, whatever its header promises.
inline constexpr std::uint64_t kMaximumBytes = std::uint64_t{4} << 30;

// Pixels to decode into, if the sides are sound and they and `workingBytes` more fit the limit.
Result<std::shared_ptr<Bitmap>> makeBitmap(std::uint64_t width, std::uint64_t height,
                                           PixelFormat format, std::uint64_t workingBytes = 0);

} // namespace codecs
