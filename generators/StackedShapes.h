// Pictures of very many shapes found pixel by pixel, from those that can be seen in a block of
// pixels, without painting them all. For stacks of shrinking circles or squares: squares give the
// bytes that painting gives, circles differ on their antialiased edges by at most 32 levels of 255.
#pragma once

#include "generators/GLIFCoreObject.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <vector>

namespace generators {

// More shapes are not drawn: half a gigabyte of them. Numbers within the described ranges stay
// below it on every picture that memory holds.
constexpr int kMostStackedShapes = 1'000'000;

enum class Figure { Circle, Square };

// Appends a circle's or square's outline. A negative radius counts as its magnitude.
void appendFigure(Path& path, Figure figure, int x, int y, int radius);

// Pixels left ≤ x < right, bottom ≤ y < top; y up.
struct Block {
    int left, bottom, right, top;

    int longestSide() const { return std::max(right - left, top - bottom); }
    // The halves of the longer side.
    std::array<Block, 2> halves() const;
};

// Distances to a figure's centre are of the figure's own kind: a shape of that radius reaches so
// far. From the centre to the nearest and the farthest point of the block's area:
double nearest(Figure figure, const Block& block, int x, int y);
double farthest(Figure figure, const Block& block, int x, int y);

// Blocks no larger than this are painted pixel by pixel.
constexpr int kLeafSide = 8;
constexpr int kLeafPixels = kLeafSide * kLeafSide;
// A number for each pixel of such a block, row after row from the bottom.
using LeafNumbers = std::array<float, kLeafPixels>;

// Distances of the pixels' centres. Those of a circle are in units of the outline that a path of
// cubic curves has.
void distances(Figure figure, const Block& leaf, int x, int y, LeafNumbers& to);

// A pixel is partly covered only when its centre's distance is within so much of the radius.
constexpr float rimWidth(Figure figure)
{
    // Half its diagonal, and a little for how outlines are flattened. Squares cover whole pixels.
    return figure == Figure::Square ? 0.5f : 0.76f;
}
// For whole blocks, whose distances are not in units of the outline.
double blockRimWidth(Figure figure, double radius);

// A circle that covers part of a pixel: its radius, the distance of the pixel's centre, and where
// that lies as seen from the circle's.
struct Rim {
    float radius, distance, dx, dy;
};
// How much of the pixel all of them together cover, 0 to 1.
float coverage(std::span<const Rim> rims);

// Premultiplied, 0 to 255.
struct Ink {
    float red = 0, green = 0, blue = 0, alpha = 0;

    // This with another laid over it.
    Ink under(const Ink& above, float aboveCoverage) const
    {
        const float cover = aboveCoverage * above.alpha / 255, rest = 1 - cover;
        return {red * rest + above.red * aboveCoverage, green * rest + above.green * aboveCoverage,
                blue * rest + above.blue * aboveCoverage,
                alpha * rest + above.alpha * aboveCoverage};
    }
    // The bytes red, green, blue, alpha in memory, not premultiplied.
    std::uint32_t word() const;
};

inline std::uint32_t Ink::word() const
{
    // Opaque but for what the products were rounded by.
    const auto whole = [](float part) { return static_cast<std::int32_t>(part + 0.5f); };
    const std::int32_t a = whole(alpha);
    if (a == 0)
        return 0;
    // The quotient (c × 255 + a / 2) / a in whole numbers; the half keeps it clear of rounding.
    const float reciprocal = 1 / static_cast<float>(a);
    const auto component = [&](float part) {
        const auto c = static_cast<float>(whole(part) * 255 + a / 2);
        return std::min(static_cast<std::int32_t>((c + 0.5f) * reciprocal), 255);
    };
    const std::int32_t color = component(blue) << 16 | component(green) << 8 | component(red);
    return static_cast<std::uint32_t>(a) << 24 | static_cast<std::uint32_t>(color);
}

// What the drawing surface makes of the colours, to the byte. Empty when it cannot be asked.
std::vector<Ink> inksOf(const std::vector<Color>& colors);

// Paints pixels, y up, row 0 of the bitmap being the top row.
class BlockPainter {
public:
    explicit BlockPainter(Bitmap& bitmap) : _bitmap(bitmap) {}

    Block whole() const { return {0, 0, _bitmap.width(), _bitmap.height()}; }
    void set(int x, int y, const Ink& ink) const
    {
        _bitmap.rowAs<std::uint32_t>(_bitmap.height() - 1 - y)[x] = ink.word();
    }
    void fill(const Block& block, const Ink& ink) const;
    // Calls paint(block) for blocks that make up the whole picture, on all cores.
    void forEachBlock(const std::function<void(const Block&)>& paint) const;

private:
    Bitmap& _bitmap;
};

} // namespace generators
