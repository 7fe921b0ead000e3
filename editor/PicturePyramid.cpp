// Halves a picture again and again.
#include "editor/PicturePyramid.h"

#include "platform/foundation/Work.h"
#include "platform/imaging/Image.h"
#include "platform/imaging/Parallel.h"
#include "platform/imaging/Renderer.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace editor {

using imaging::BitmapRef;
using imaging::PixelFormat;

namespace {

// Below this the whole picture is quicker to read than the rest of the window to draw.
constexpr int kSmallestSide = 16;

BitmapRef inBytes(BitmapRef bitmap)
{
    if (!bitmap || bitmap->format() == PixelFormat::Rgba8)
        return bitmap;
    return imaging::render(imaging::Image::fromBitmap(bitmap),
                           {0, 0, bitmap->width(), bitmap->height()}, PixelFormat::Rgba8);
}

std::uint32_t average(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    // Two components at a time: four bytes and the rounding fit in 16 bits.
    constexpr std::uint32_t kEven = 0x00ff00ff, kHalf = 0x00020002;
    const std::uint32_t even = (a & kEven) + (b & kEven) + (c & kEven) + (d & kEven) + kHalf;
    const std::uint32_t odd =
        ((a >> 8) & kEven) + ((b >> 8) & kEven) + ((c >> 8) & kEven) + ((d >> 8) & kEven) + kHalf;
    return ((even >> 2) & kEven) | (((odd >> 2) & kEven) << 8);
}

template <bool Premultiply>
void halveRow(const std::uint32_t* top, const std::uint32_t* bottom, int width,
              std::uint32_t* __restrict out)
{
    const auto read = [](std::uint32_t pixel) {
        return Premultiply ? premultiplied(pixel) : pixel;
    };
    const int pairs = width / 2;
    for (int x = 0; x < pairs; ++x)
        out[x] = average(read(top[2 * x]), read(top[2 * x + 1]), read(bottom[2 * x]),
                         read(bottom[2 * x + 1]));
    if (width % 2 != 0) {
        const std::uint32_t upper = read(top[width - 1]), lower = read(bottom[width - 1]);
        out[pairs] = average(upper, upper, lower, lower);
    }
}

} // namespace

PicturePyramid::PicturePyramid(foundation::PictureRef picture) : _picture(std::move(picture))
{
    if (!_picture)
        return;
    _width = _picture->pixelsWide();
    _height = _picture->pixelsHigh();
    if (const BitmapRef made = _picture->bitmapIfMade();
        made && made->format() == PixelFormat::Rgba8)
        setBase(made);
}

PicturePyramid::PicturePyramid(BitmapRef pixels)
{
    setBase(inBytes(std::move(pixels)));
    if (_base) {
        _width = _base->width();
        _height = _base->height();
    }
}

void PicturePyramid::setBase(const BitmapRef& pixels)
{
    if (!pixels)
        return;
    _base = pixels;
    publish({pixels->rowAs<std::uint32_t>(0), pixels->bytesPerRow() / 4, pixels->width(),
             pixels->height(), false});
}

void PicturePyramid::publish(const PixelRows& level)
{
    const int count = _count.load(std::memory_order_relaxed);
    _levels[static_cast<std::size_t>(count)] = level;
    _count.store(count + 1, std::memory_order_release);
}

void PicturePyramid::build(const std::stop_token& stop, const std::function<void()>& progress)
{
    try {
        // Around the making of the picture's pixels too.
        const foundation::WorkScope scope(stop);
        foundation::checkpoint();
        if (!_base && _picture)
            setBase(inBytes(_picture->bitmap()));
        if (_base) {
            progress();
            _opaque.store(_base->computeIsOpaque(), std::memory_order_release);
            while (halve())
                progress();
        }
    } catch (const foundation::Stopped&) {
    } catch (const std::exception&) {
        // Memory is short. What is there is shown.
    }
    _complete.store(true, std::memory_order_release);
    progress();
}

// False when there is no smaller level to make.
bool PicturePyramid::halve()
{
    const PixelRows full = level(levels() - 1);
    const auto index = static_cast<std::size_t>(levels());
    if (index == kMaximumLevels || (full.width <= kSmallestSide && full.height <= kSmallestSide))
        return false;
    const int width = (full.width + 1) / 2, height = (full.height + 1) / 2;
    _made[index].reset(new std::uint32_t[std::size_t(width) * height]);
    std::uint32_t* const out = _made[index].get();
    const bool premultiply = !full.premultiplied && !isOpaque();
    imaging::parallelRows(0, height, 32, [&](int first, int last) {
        for (int y = first; y < last; ++y)
            (premultiply ? halveRow<true>
                         : halveRow<false>)(full.row(2 * y),
                                            full.row(std::min(2 * y + 1, full.height - 1)),
                                            full.width, out + std::ptrdiff_t(y) * width);
    });
    publish({out, width, width, height, true});
    return true;
}

} // namespace editor
