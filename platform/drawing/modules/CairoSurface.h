// Owners of Cairo objects, and pixels between Cairo's layout and a bitmap's.
#pragma once

#include "platform/drawing/modules/Tables.h"
#include "platform/imaging/Bitmap.h"

#include <cairo.h>

#include <cstddef>
#include <cstring>
#include <memory>

namespace drawing {

struct CairoDeleter {
    void operator()(cairo_t* p) const { cairo_destroy(p); }
    void operator()(cairo_surface_t* p) const { cairo_surface_destroy(p); }
    void operator()(cairo_pattern_t* p) const { cairo_pattern_destroy(p); }
};
using CairoContext = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoDeleter>;

// A Cairo surface over the memory of a tile of an Rgba8 bitmap, cleared. Both have four bytes to a
// pixel; the bitmap holds Cairo's layout until finishPixels() turns it round.
inline CairoSurface surfaceOver(imaging::Bitmap& bitmap, const Tile& tile)
{
    unsigned char* first = bitmap.rowAs<unsigned char>(tile.top) + 4 * std::ptrdiff_t{tile.left};
    for (int y = 0; y < tile.height; ++y)
        std::memset(first + y * std::ptrdiff_t(bitmap.bytesPerRow()), 0,
                    4 * static_cast<std::size_t>(tile.width));
    return CairoSurface(
        cairo_image_surface_create_for_data(first, CAIRO_FORMAT_ARGB32, tile.width, tile.height,
                                            static_cast<int>(bitmap.bytesPerRow())));
}

// From premultiplied 0xAARRGGBB words to unpremultiplied RGBA bytes, in place.
inline void finishPixels(cairo_surface_t* surface, imaging::Bitmap& bitmap, const Tile& tile)
{
    cairo_surface_flush(surface);
    for (int y = tile.top; y < tile.top + tile.height; ++y) {
        std::byte* at = bitmap.row(y) + 4 * std::ptrdiff_t{tile.left};
        for (int x = 0; x < tile.width; ++x, at += 4) {
            std::uint32_t word;
            std::memcpy(&word, at, 4);
            const std::uint32_t alpha = word >> 24;
            std::uint32_t rgb[] = {word >> 16 & 255, word >> 8 & 255, word & 255};
            if (alpha != 255 && alpha != 0) {
                for (std::uint32_t& c : rgb)
                    c = c < alpha ? (c * 255 + alpha / 2) / alpha : 255;
            }
            const std::uint8_t bytes[] = {
                static_cast<std::uint8_t>(rgb[0]), static_cast<std::uint8_t>(rgb[1]),
                static_cast<std::uint8_t>(rgb[2]), static_cast<std::uint8_t>(alpha)};
            std::memcpy(at, bytes, 4);
        }
    }
}

} // namespace drawing
