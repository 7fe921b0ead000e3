// What the tests of this folder share: looking at pixels and keeping them for the eye.
#pragma once

#include "platform/drawing/Canvas.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <png.h>
#include <string>

namespace drawing {

struct Rgba {
    int red, green, blue, alpha;
    friend bool operator==(const Rgba&, const Rgba&) = default;
    friend void PrintTo(const Rgba& c, std::ostream* out)
    {
        *out << '(' << c.red << ' ' << c.green << ' ' << c.blue << ' ' << c.alpha << ')';
    }
};

inline Rgba pixel(const imaging::Bitmap& bitmap, int x, int y)
{
    const auto* p = bitmap.rowAs<std::uint8_t>(y) + 4 * x;
    return {p[0], p[1], p[2], p[3]};
}

inline std::shared_ptr<imaging::Bitmap> bitmapFrom(int width, int height,
                                                   const std::function<Rgba(int, int)>& colour)
{
    auto bitmap = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Rgba c = colour(x, y);
            auto* p = bitmap->rowAs<std::uint8_t>(y) + 4 * x;
            p[0] = c.red, p[1] = c.green, p[2] = c.blue, p[3] = c.alpha;
        }
    return bitmap;
}

inline void keepForTheEye(const imaging::Bitmap& bitmap, const std::string& name)
{
    std::filesystem::create_directories(CIF_TEST_OUTPUT "/drawing");
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = bitmap.width();
    png.height = bitmap.height();
    png.format = PNG_FORMAT_RGBA;
    png_image_write_to_file(&png, (CIF_TEST_OUTPUT "/drawing/" + name + ".png").c_str(), 0,
                            bitmap.row(0), static_cast<png_int_32>(bitmap.bytesPerRow()), nullptr);
}

inline std::shared_ptr<imaging::Bitmap> drawn(const RecordingRef& recording, int width, int height)
{
    auto bitmap = rasterize(*recording, width, height);
    EXPECT_TRUE(bitmap) << bitmap.error();
    return bitmap ? *bitmap : nullptr;
}

// Mean difference of a component, in 8-bit levels, with both pictures on white.
inline double meanDifference(const imaging::Bitmap& a, const imaging::Bitmap& b)
{
    if (a.width() != b.width() || a.height() != b.height())
        return 255;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba p = pixel(a, x, y), q = pixel(b, x, y);
            const auto onWhite = [](int c, int alpha) { return 255 - (255 - c) * alpha / 255.0; };
            sum += std::abs(onWhite(p.red, p.alpha) - onWhite(q.red, q.alpha)) +
                   std::abs(onWhite(p.green, p.alpha) - onWhite(q.green, q.alpha)) +
                   std::abs(onWhite(p.blue, p.alpha) - onWhite(q.blue, q.alpha));
        }
    return sum / 3 / a.width() / a.height();
}

} // namespace drawing
