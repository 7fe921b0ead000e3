// What the loadable modules answer with. They hold the code that needs Cairo and librsvg, so that a
// program that draws nothing loads neither. A module is handed the platform's objects by reference
// and uses only what their headers define inline: no platform code is linked a second time.
#pragma once

#include "platform/drawing/Canvas.h"
#include "platform/imaging/Bitmap.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace drawing {

// A rectangle of a bitmap's pixels, row 0 on top.
struct Tile {
    int left, top, width, height;
};

// What is painted into a tile.
struct TilePainting {
    AffineTransform toPixels; // from the drawing to the bitmap's pixels, y down
    Tile tile;
    std::span<const std::uint32_t> ops; // by their indices, in the order in which they are painted
    // Asked before each operation; when it answers false, painting fails without an error.
    const std::function<bool()>& goesOn;
};

// Changes when a structure or a function shared with the modules does, so that a stale file is
// noticed.
constexpr std::size_t kModuleInterface = 2;
constexpr std::size_t kModuleLayout =
    kModuleInterface + 10 * sizeof(Recording) +
    1000 * (sizeof(Recording::Op) + 1000 * (sizeof(Path) + sizeof(imaging::Bitmap)));

// Every function answers false or null with one line in `error` when it fails.
struct PainterTable {
    std::size_t layout;
    // Into every pixel of the tile, of an Rgba8 bitmap of at most kMaximumRasterSide. Threads may
    // paint tiles of one bitmap that do not meet.
    bool (*rasterize)(const Recording&, const TilePainting&, imaging::Bitmap& target,
                      std::string& error);
    bool (*encode)(const Recording&, VectorFormat, const std::string& metadata, std::string& bytes,
                   std::string& error);
};

struct SvgTable {
    std::size_t layout;
    // A document, to be closed by the caller, and its size in pixels.
    void* (*open)(const std::string& bytes, Size& size, std::string& error);
    bool (*draw)(void* document, Size size, imaging::Bitmap& target, std::string& error);
    void (*close)(void* document);
};

// The one symbol each module exports, a function without arguments that returns its table.
constexpr const char* kPainterModule = "CoreImageFilterCairo.so";
constexpr const char* kPainterEntry = "CIFDrawingPainter";
constexpr const char* kSvgModule = "CoreImageFilterSvg.so";
constexpr const char* kSvgEntry = "CIFDrawingSvg";

} // namespace drawing
