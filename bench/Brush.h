// What the timings of the generators print with.
#pragma once

#include "platform/drawing/Picture.h"

#include <algorithm>
#include <cmath>

namespace bench {

// A round brush, soft at the rim, for the generator that prints one.
inline drawing::PictureRef roundBrush()
{
    constexpr int kSide = 256;
    auto pixels = imaging::Bitmap::makeClear(kSide, kSide, imaging::PixelFormat::Rgba8);
    for (int y = 0; pixels && y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const double away = std::hypot(x + 0.5 - kSide / 2, y + 0.5 - kSide / 2) / (kSide / 2);
            const double alpha = std::clamp(2 * (1 - away), 0.0, 1.0);
            pixels->rowAs<std::uint8_t>(y)[4 * x + 3] = static_cast<std::uint8_t>(alpha * 255);
        }
    return drawing::Picture::fromBitmap(pixels);
}

} // namespace bench
