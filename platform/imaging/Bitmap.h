// Pixels in memory: RGBA, interleaved, row 0 on top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace imaging {

enum class PixelFormat {
    Rgba8,  // unpremultiplied bytes
    Rgba16, // unpremultiplied 16-bit numbers in the machine's byte order
    RgbaF,  // premultiplied single precision, not limited to 0…1
};

constexpr int bytesPerPixel(PixelFormat format)
{
    return format == PixelFormat::Rgba8 ? 4 : format == PixelFormat::Rgba16 ? 8 : 16;
}

class Bitmap;
using BitmapRef = std::shared_ptr<const Bitmap>;

class Bitmap {
public:
    // Largest side that is accepted anywhere.
    static constexpr int kMaximumSide = 100'000;

    // Uninitialised pixels, rows aligned to 64 bytes. Null when a side is not in 1…kMaximumSide or
    // the memory cannot be had.
    static std::shared_ptr<Bitmap> make(int width, int height, PixelFormat format);
    // The same, transparent black.
    static std::shared_ptr<Bitmap> makeClear(int width, int height, PixelFormat format);

    int width() const { return _width; }
    int height() const { return _height; }
    PixelFormat format() const { return _format; }
    std::ptrdiff_t bytesPerRow() const { return _bytesPerRow; }

    std::byte* row(int y) { return _data + y * _bytesPerRow; }
    const std::byte* row(int y) const { return _data + y * _bytesPerRow; }
    template <class T>
    T* rowAs(int y)
    {
        return reinterpret_cast<T*>(row(y));
    }
    template <class T>
    const T* rowAs(int y) const
    {
        return reinterpret_cast<const T*>(row(y));
    }

    // True when every pixel's alpha is full. Looks at all pixels.
    bool computeIsOpaque() const;

    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    ~Bitmap();

private:
    Bitmap() = default;

    int _width = 0, _height = 0;
    PixelFormat _format = PixelFormat::Rgba8;
    std::ptrdiff_t _bytesPerRow = 0;
    std::byte* _data = nullptr;
};

} // namespace imaging
