// Bitmaps from functions, and back into numbers.
#include "tests/support/Support.h"

#include <png.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <stdexcept>

namespace support {

namespace {

[[noreturn]] void fail(const std::string& text)
{
    throw std::runtime_error(text);
}

std::shared_ptr<Bitmap> made(int width, int height, PixelFormat format)
{
    std::shared_ptr<Bitmap> bitmap = Bitmap::make(width, height, format);
    if (!bitmap)
        fail("no bitmap of " + std::to_string(width) + " x " + std::to_string(height));
    return bitmap;
}

template <class Integer>
Rgba fromIntegers(const Integer* p)
{
    constexpr float k = 1.0f / std::numeric_limits<Integer>::max();
    const float a = float(p[3]) * k;
    return {float(p[0]) * k * a, float(p[1]) * k * a, float(p[2]) * k * a, a};
}

template <class Integer>
void toIntegers(const Rgba& p, Integer* out)
{
    const auto rounded = [](double v) {
        v = v > 0 ? std::min(v, 1.0) : 0;
        return Integer(std::lround(v * std::numeric_limits<Integer>::max()));
    };
    const double k = p.a > 0 ? 1 / double(p.a) : 0;
    out[0] = rounded(p.r * k);
    out[1] = rounded(p.g * k);
    out[2] = rounded(p.b * k);
    out[3] = rounded(p.a);
}

Floats components(const Bitmap& bitmap, float Rgba::*component)
{
    Floats all;
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x)
            all.push_back(pixel(bitmap, x, y).*component);
    return all;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Rgba& p)
{
    return out << '(' << p.r << ", " << p.g << ", " << p.b << ", " << p.a << ')';
}

std::ostream& operator<<(std::ostream& out, const Difference& d)
{
    return out << "largest " << d.largest << " at (" << d.x << ", " << d.y << "), mean " << d.mean;
}

BitmapRef bitmapFrom(int width, int height, const std::function<Rgba(int x, int y)>& fn)
{
    const auto bitmap = made(width, height, PixelFormat::RgbaF);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            bitmap->rowAs<Rgba>(y)[x] = fn(x, y);
    return bitmap;
}

BitmapRef converted(const Bitmap& bitmap, PixelFormat format)
{
    const auto out = made(bitmap.width(), bitmap.height(), format);
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x) {
            const Rgba p = pixel(bitmap, x, y);
            switch (format) {
            case PixelFormat::Rgba8:
                toIntegers(p, out->rowAs<std::uint8_t>(y) + 4 * x);
                break;
            case PixelFormat::Rgba16:
                toIntegers(p, out->rowAs<std::uint16_t>(y) + 4 * x);
                break;
            case PixelFormat::RgbaF:
                out->rowAs<Rgba>(y)[x] = p;
                break;
            }
        }
    return out;
}

Rgba pixel(const Bitmap& bitmap, int x, int y)
{
    if (x < 0 || y < 0 || x >= bitmap.width() || y >= bitmap.height())
        fail("no pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") in a bitmap of " +
             std::to_string(bitmap.width()) + " x " + std::to_string(bitmap.height()));
    switch (bitmap.format()) {
    case PixelFormat::Rgba8:
        return fromIntegers(bitmap.rowAs<std::uint8_t>(y) + 4 * x);
    case PixelFormat::Rgba16:
        return fromIntegers(bitmap.rowAs<std::uint16_t>(y) + 4 * x);
    case PixelFormat::RgbaF:
        break;
    }
    return bitmap.rowAs<Rgba>(y)[x];
}

Floats reds(const Bitmap& bitmap)
{
    return components(bitmap, &Rgba::r);
}
Floats greens(const Bitmap& bitmap)
{
    return components(bitmap, &Rgba::g);
}
Floats blues(const Bitmap& bitmap)
{
    return components(bitmap, &Rgba::b);
}
Floats alphas(const Bitmap& bitmap)
{
    return components(bitmap, &Rgba::a);
}

Difference compare(const Bitmap& a, const Bitmap& b)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (a.width() != b.width() || a.height() != b.height())
        return {infinity, infinity};
    Difference result;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba p = pixel(a, x, y), q = pixel(b, x, y);
            for (const auto c : {&Rgba::r, &Rgba::g, &Rgba::b, &Rgba::a}) {
                const double u = p.*c, v = q.*c;
                double d = u == v || (std::isnan(u) && std::isnan(v)) ? 0 : std::abs(u - v);
                if (std::isnan(d))
                    d = infinity;
                sum += d;
                if (d > result.largest)
                    result = {d, 0, x, y};
            }
        }
    result.mean = sum / (4.0 * a.width() * a.height());
    return result;
}

BitmapRef readPng(const std::filesystem::path& file)
{
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, file.c_str()))
        fail(file.string() + ": " + png.message);
    png.format = PNG_FORMAT_RGBA;
    const auto bitmap = made(int(png.width), int(png.height), PixelFormat::Rgba8);
    if (!png_image_finish_read(&png, nullptr, bitmap->row(0), int(bitmap->bytesPerRow()), nullptr))
        fail(file.string() + ": " + png.message);
    return bitmap;
}

void writePng(const std::filesystem::path& file, const Bitmap& bitmap)
{
    const BitmapRef bytes = converted(bitmap, PixelFormat::Rgba8);
    std::filesystem::create_directories(file.parent_path());
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = png_uint_32(bytes->width());
    png.height = png_uint_32(bytes->height());
    png.format = PNG_FORMAT_RGBA;
    if (!png_image_write_to_file(&png, file.c_str(), 0, bytes->row(0), int(bytes->bytesPerRow()),
                                 nullptr))
        fail(file.string() + ": " + png.message);
}

} // namespace support
