// Pixel memory, recycled: fresh pages cost more than most of the arithmetic done on them.
#include "platform/imaging/Bitmap.h"

#include "platform/imaging/BufferPool.h"

#include <algorithm>
#include <cstring>

namespace imaging {

std::shared_ptr<Bitmap> Bitmap::make(int width, int height, PixelFormat format)
{
    if (width < 1 || height < 1 || width > kMaximumSide || height > kMaximumSide)
        return nullptr;
    std::shared_ptr<Bitmap> bitmap(new Bitmap);
    bitmap->_width = width;
    bitmap->_height = height;
    bitmap->_format = format;
    bitmap->_bytesPerRow = (std::ptrdiff_t{width} * bytesPerPixel(format) + 63) / 64 * 64;
    bitmap->_data = static_cast<std::byte*>(
        BufferPool::shared().take(static_cast<std::size_t>(bitmap->_bytesPerRow) * height));
    return bitmap->_data ? bitmap : nullptr;
}

std::shared_ptr<Bitmap> Bitmap::makeClear(int width, int height, PixelFormat format)
{
    std::shared_ptr<Bitmap> bitmap = make(width, height, format);
    if (bitmap)
        std::memset(bitmap->_data, 0, static_cast<std::size_t>(bitmap->_bytesPerRow) * height);
    return bitmap;
}

Bitmap::~Bitmap()
{
    if (_data)
        BufferPool::shared().give(_data, static_cast<std::size_t>(_bytesPerRow) * _height);
}

bool Bitmap::computeIsOpaque() const
{
    for (int y = 0; y < _height; ++y) {
        bool opaque = true;
        switch (_format) {
        case PixelFormat::Rgba8: {
            const auto* p = rowAs<std::uint8_t>(y);
            std::uint8_t all = 255;
            for (int x = 0; x < _width; ++x)
                all &= p[4 * x + 3];
            opaque = all == 255;
            break;
        }
        case PixelFormat::Rgba16: {
            const auto* p = rowAs<std::uint16_t>(y);
            std::uint16_t all = 65535;
            for (int x = 0; x < _width; ++x)
                all &= p[4 * x + 3];
            opaque = all == 65535;
            break;
        }
        case PixelFormat::RgbaF: {
            const auto* p = rowAs<float>(y);
            for (int x = 0; x < _width; ++x)
                opaque &= p[4 * x + 3] == 1.0f;
            break;
        }
        }
        if (!opaque)
            return false;
    }
    return true;
}

} // namespace imaging
