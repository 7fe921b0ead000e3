// Whole-bitmap steps between the file formats and the pictures.
#include "platform/codecs/Pixels.h"

#include <algorithm>
#include <limits>

namespace codecs {

using imaging::Bitmap;
using imaging::PixelFormat;

namespace {

// Squares of this side keep both the rows that are read and the columns that are written in cache.
constexpr int kSquare = 32;

// Each target pixel comes from (x0 + x·xx + y·xy, y0 + x·yx + y·yy).
struct Turn {
    int x0, xx, xy;
    int y0, yx, yy;
};

Turn turnFor(int orientation, int w, int h)
{
    const int right = w - 1, bottom = h - 1;
    switch (orientation) {
    case 2:
        return {right, -1, 0, 0, 0, 1};
    case 3:
        return {right, -1, 0, bottom, 0, -1};
    case 4:
        return {0, 1, 0, bottom, 0, -1};
    case 5:
        return {0, 0, 1, 0, 1, 0};
    case 6:
        return {0, 0, 1, bottom, -1, 0};
    case 7:
        return {right, 0, -1, bottom, -1, 0};
    case 8:
        return {right, 0, -1, 0, 1, 0};
    default:
        return {0, 1, 0, 0, 0, 1};
    }
}

struct Pixel16 {
    std::uint16_t samples[4];
};

template <class Pixel>
void copyTurned(const Bitmap& source, Bitmap& target, const Turn& turn)
{
    for (int top = 0; top < target.height(); top += kSquare)
        for (int left = 0; left < target.width(); left += kSquare)
            for (int y = top; y < std::min(top + kSquare, target.height()); ++y) {
                Pixel* out = target.rowAs<Pixel>(y);
                for (int x = left; x < std::min(left + kSquare, target.width()); ++x)
                    out[x] = source.rowAs<Pixel>(turn.y0 + x * turn.yx +
                                                 y * turn.yy)[turn.x0 + x * turn.xx + y * turn.xy];
            }
}

template <class T>
T fromUnit(float v)
{
    constexpr float kFull = std::numeric_limits<T>::max();
    return static_cast<T>(std::min(std::max(v, 0.0f), 1.0f) * kFull + 0.5f);
}

template <class T>
void convertRow(const float* in, T* out, int width)
{
    for (int x = 0; x < width; ++x, in += 4, out += 4) {
        // What is not a number compares as false and counts as transparent.
        const float alpha = in[3] > 0 ? in[3] : 0;
        for (int c = 0; c < 3; ++c)
            out[c] = alpha > 0 ? fromUnit<T>(in[c] / alpha) : T{0};
        out[3] = fromUnit<T>(alpha);
    }
}

} // namespace

std::shared_ptr<Bitmap> oriented(const Bitmap& source, int orientation)
{
    const bool sideways = orientation >= 5;
    const std::shared_ptr<Bitmap> target =
        Bitmap::make(sideways ? source.height() : source.width(),
                     sideways ? source.width() : source.height(), source.format());
    if (!target)
        return nullptr;
    const Turn turn = turnFor(orientation, source.width(), source.height());
    if (source.format() == PixelFormat::Rgba8)
        copyTurned<std::uint32_t>(source, *target, turn);
    else
        copyTurned<Pixel16>(source, *target, turn);
    return target;
}

std::shared_ptr<Bitmap> converted(const Bitmap& source, PixelFormat format)
{
    const std::shared_ptr<Bitmap> target = Bitmap::make(source.width(), source.height(), format);
    if (!target)
        return nullptr;
    const int width = source.width();
    for (int y = 0; y < source.height(); ++y) {
        if (source.format() == PixelFormat::RgbaF) {
            if (format == PixelFormat::Rgba8)
                convertRow(source.rowAs<float>(y), target->rowAs<std::uint8_t>(y), width);
            else
                convertRow(source.rowAs<float>(y), target->rowAs<std::uint16_t>(y), width);
        } else if (source.format() == PixelFormat::Rgba16 && format == PixelFormat::Rgba8) {
            const std::uint16_t* in = source.rowAs<std::uint16_t>(y);
            std::uint8_t* out = target->rowAs<std::uint8_t>(y);
            for (int i = 0; i < 4 * width; ++i)
                out[i] = static_cast<std::uint8_t>((in[i] + 128u) / 257u);
        } else if (source.format() == PixelFormat::Rgba8 && format == PixelFormat::Rgba16) {
            const std::uint8_t* in = source.rowAs<std::uint8_t>(y);
            std::uint16_t* out = target->rowAs<std::uint16_t>(y);
            for (int i = 0; i < 4 * width; ++i)
                out[i] = static_cast<std::uint16_t>(in[i] * 257u);
        } else {
            std::copy_n(source.row(y), static_cast<std::size_t>(width) * bytesPerPixel(format),
                        target->row(y));
        }
    }
    return target;
}

void flattenOntoWhite(const std::uint8_t* rgba, std::uint8_t* rgb, int width)
{
    for (int x = 0; x < width; ++x, rgba += 4, rgb += 3) {
        const unsigned alpha = rgba[3];
        for (int c = 0; c < 3; ++c)
            rgb[c] = static_cast<std::uint8_t>((rgba[c] * alpha + 255 * (255 - alpha) + 127) / 255);
    }
}

template <class T>
void unpremultiply(T* rgba, int width)
{
    constexpr std::uint64_t kFull = std::numeric_limits<T>::max();
    for (int x = 0; x < width; ++x, rgba += 4) {
        const std::uint64_t alpha = rgba[3];
        if (alpha == kFull)
            continue;
        for (int c = 0; c < 3; ++c)
            rgba[c] = alpha == 0
                          ? T{0}
                          : static_cast<T>(std::min(kFull, (rgba[c] * kFull + alpha / 2) / alpha));
    }
}

template void unpremultiply(std::uint8_t*, int);
template void unpremultiply(std::uint16_t*, int);

} // namespace codecs
