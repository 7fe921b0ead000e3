// A picture's pixels at full size, half, a quarter and so on, so that any zoom reads only about as
// many pixels as it shows.
#pragma once

#include "platform/drawing/Picture.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>

namespace editor {

// Pixels in memory order red, green, blue, alpha; row 0 on top.
struct PixelRows {
    const std::uint32_t* pixels = nullptr;
    std::ptrdiff_t pixelsPerRow = 0;
    int width = 0, height = 0;
    bool premultiplied = false;

    const std::uint32_t* row(int y) const { return pixels + y * pixelsPerRow; }
};

// Components times alpha, each rounded to nearest.
constexpr std::uint32_t premultiplied(std::uint32_t pixel)
{
    const std::uint32_t alpha = pixel >> 24;
    std::uint32_t redBlue = (pixel & 0xff00ff) * alpha;
    redBlue = ((redBlue + ((redBlue >> 8) & 0xff00ff) + 0x800080) >> 8) & 0xff00ff;
    std::uint32_t green = ((pixel >> 8) & 0xff) * alpha;
    green = (green + (green >> 8) + 0x80) & 0xff00;
    return redBlue | green | (alpha << 24);
}

// Filled by one thread and read by another while it is filled: levels appear one after the other
// and never change.
class PicturePyramid {
public:
    // Level 0 is there at once when the picture has 8-bit pixels in memory; it is not copied.
    explicit PicturePyramid(foundation::PictureRef picture);
    // For pixels alone. Null has no levels.
    explicit PicturePyramid(imaging::BitmapRef pixels);

    // Of level 0, also while it is not there.
    int width() const { return _width; }
    int height() const { return _height; }

    // How many levels can be read; 0 before the pixels are there.
    int levels() const { return _count.load(std::memory_order_acquire); }
    // Level n has half the width and height of level n - 1, rounded up; the last column or row of
    // an odd one averages what there is.
    const PixelRows& level(int n) const { return _levels[static_cast<std::size_t>(n)]; }
    // Nothing more will appear.
    bool isComplete() const { return _complete.load(std::memory_order_acquire); }
    // Every pixel is known to be opaque.
    bool isOpaque() const { return _opaque.load(std::memory_order_acquire); }

    // Makes the pixels where they are missing, and the smaller levels; calls progress after each of
    // them and at the end. On a worker thread, once. Ends early when a stop is requested.
    void build(const std::stop_token& stop, const std::function<void()>& progress);

private:
    void publish(const PixelRows& level);
    void setBase(const imaging::BitmapRef& pixels);
    bool halve();

    foundation::PictureRef _picture;
    imaging::BitmapRef _base;
    int _width = 0, _height = 0;
    // More than halving the largest bitmap down to a pixel takes.
    static constexpr std::size_t kMaximumLevels = 20;
    std::array<PixelRows, kMaximumLevels> _levels;
    std::array<std::unique_ptr<std::uint32_t[]>, kMaximumLevels> _made;
    std::atomic<int> _count = 0;
    std::atomic<bool> _complete = false, _opaque = false;
};

} // namespace editor
