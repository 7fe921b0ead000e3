// Recordings into pixels and files, through the module that has Cairo.
#include "platform/drawing/Canvas.h"
#include "platform/drawing/Modules.h"

#include <string>

namespace drawing {

using foundation::Error;
using foundation::Result;
using imaging::Bitmap;

Result<std::shared_ptr<Bitmap>> rasterize(const Recording& recording, int width, int height)
{
    if (width < 1 || height < 1)
        return Error{"a drawing without a size cannot be made into pixels"};
    if (width > kMaximumRasterSide || height > kMaximumRasterSide)
        return Error{"a drawing of " + std::to_string(width) + " × " + std::to_string(height) +
                     " pixels is too large (at most " + std::to_string(kMaximumRasterSide) +
                     " a side)"};
    const auto& table = painter();
    if (!table)
        return Error{table.error()};
    std::shared_ptr<Bitmap> bitmap = Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    if (!bitmap)
        return Error{"not enough memory for a drawing"};
    std::string error;
    if (!(*table)->rasterize(recording, *bitmap, error))
        return Error{error};
    return bitmap;
}

Result<std::string> encodeVector(const Recording& recording, VectorFormat format,
                                 const std::string& metadata)
{
    const Size size = recording.size;
    const auto fits = [](double side) { return side > 0 && side <= Bitmap::kMaximumSide; };
    if (!fits(size.width) || !fits(size.height))
        return Error{"a drawing needs a size above 0 and up to 100000 points to be written"};
    const auto& table = painter();
    if (!table)
        return Error{table.error()};
    std::string bytes, error;
    if (!(*table)->encode(recording, format, metadata, bytes, error))
        return Error{error};
    return bytes;
}

} // namespace drawing
