#include "generators/StackedShapes.h"

#include "platform/foundation/Work.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace generators {

void appendFigure(Path& path, Figure figure, int x, int y, int radius)
{
    // Whole numbers, but in single precision, as coordinates are.
    const auto left = static_cast<float>(static_cast<double>(x) - radius);
    const auto bottom = static_cast<float>(static_cast<double>(y) - radius);
    const auto side = static_cast<float>(2.0 * radius);
    if (figure == Figure::Square)
        path.appendRect({left, bottom, side, side});
    else
        path.appendOvalInRect({left, bottom, side, side});
}

std::array<Block, 2> Block::halves() const
{
    Block first = *this, second = *this;
    if (right - left > top - bottom)
        first.right = second.left = left + (right - left) / 2;
    else
        first.top = second.bottom = bottom + (top - bottom) / 2;
    return {first, second};
}

namespace {

double distance(Figure figure, double dx, double dy)
{
    return figure == Figure::Square ? std::max(std::abs(dx), std::abs(dy))
                                    : std::sqrt(dx * dx + dy * dy);
}

} // namespace

double nearest(Figure figure, const Block& block, int x, int y)
{
    return distance(figure, std::max({block.left - x, 0, x - block.right}),
                    std::max({block.bottom - y, 0, y - block.top}));
}

double farthest(Figure figure, const Block& block, int x, int y)
{
    return distance(figure, std::max(std::abs(block.left - x), std::abs(block.right - x)),
                    std::max(std::abs(block.bottom - y), std::abs(block.top - y)));
}

namespace {

// Four cubic curves touch the true circle at multiples of 45 degrees and lie outside it by up to
// 0.027 % of the radius in between.
float outlineDistance(float dx, float dy)
{
    const float distance = std::sqrt(dx * dx + dy * dy);
    const float ax = std::abs(dx), ay = std::abs(dy);
    // The angle from the nearer axis, in quarters of a circle; close enough for so small a term.
    const float slope = std::min(ax, ay) / std::max(ax, ay);
    const float quarter = slope * (0.6191f - 0.1222f * slope * slope);
    const float lobe = quarter * (1 - quarter) * (1 - 2 * quarter);
    return distance * (1 - 0.02945f * lobe * lobe);
}

// The part of a unit square on the inner side of a straight edge that passes its centre at a
// distance, positive when the centre is inside. The edge's direction is that of the rim.
float halfPlane(float distance, float dx, float dy)
{
    const float scale = 1 / std::sqrt(dx * dx + dy * dy);
    const float a = std::max(std::abs(dx), std::abs(dy)) * scale;
    const float b = std::min(std::abs(dx), std::abs(dy)) * scale;
    const float out = std::abs(distance);
    float part = 0; // on the far side
    if (out <= (a - b) / 2)
        part = 0.5f - out / a;
    else if (out < (a + b) / 2)
        part = ((a + b) / 2 - out) * ((a + b) / 2 - out) / (2 * a * b);
    return distance > 0 ? 1 - part : part;
}

} // namespace

void distances(Figure figure, const Block& leaf, int x, int y, LeafNumbers& to)
{
    const auto left = static_cast<float>(leaf.left - x) + 0.5f;
    const auto bottom = static_cast<float>(leaf.bottom - y) + 0.5f;
    for (int i = 0; i < kLeafPixels; ++i) {
        const float dx = left + static_cast<float>(i % kLeafSide);
        const float dy = bottom + static_cast<float>(i / kLeafSide);
        to[i] = figure == Figure::Square ? std::max(std::abs(dx), std::abs(dy))
                                         : outlineDistance(dx, dy);
    }
}

double blockRimWidth(Figure figure, double radius)
{
    return rimWidth(figure) + (figure == Figure::Square ? 0 : 3e-4 * radius);
}

float coverage(std::span<const Rim> rims)
{
    constexpr float kStraight = 4; // a rim of this radius is straight enough across a pixel
    if (rims.size() == 1 && rims[0].radius > kStraight)
        return halfPlane(rims[0].radius - rims[0].distance, rims[0].dx, rims[0].dy);
    // Rows of 64 samples.
    constexpr int kRows = 8;
    int covered = 0;
    for (int row = 0; row < kRows; ++row) {
        std::uint64_t samples = 0;
        for (const auto& [radius, distance, dx, dy] : rims) {
            const float outline = radius + std::sqrt(dx * dx + dy * dy) - distance;
            const float y = dy + (static_cast<float>(row) + 0.5f) / kRows - 0.5f;
            const float half = std::sqrt(std::max(outline * outline - y * y, 0.0f));
            const float left = dx - 0.5f;
            const auto first =
                static_cast<int>(std::clamp((-half - left) * 64 + 0.5f, 0.0f, 64.0f));
            const auto last = static_cast<int>(std::clamp((half - left) * 64 + 0.5f, 0.0f, 64.0f));
            if (first < last)
                samples |= ~std::uint64_t{0} >> (64 - (last - first)) << first;
        }
        covered += std::popcount(samples);
    }
    return static_cast<float>(covered) / (kRows * 64);
}

std::vector<Ink> inksOf(const std::vector<Color>& colors)
{
    const foundation::ProgressPart unheard(0, 0);
    const auto count = static_cast<int>(colors.size());
    Canvas canvas({static_cast<double>(count), 1});
    for (int i = 0; i < count; ++i) {
        canvas.setColor(colors[i]);
        canvas.fillRect({static_cast<double>(i), 0, 1, 1});
    }
    const auto row = drawing::rasterize(*canvas.finish(), count, 1);
    if (!row)
        return {};
    std::vector<Ink> inks(count);
    const auto* p = (*row)->rowAs<std::uint8_t>(0);
    for (Ink& ink : inks) {
        const float alpha = p[3], scale = alpha / 255;
        ink = {p[0] * scale, p[1] * scale, p[2] * scale, alpha};
        p += 4;
    }
    return inks;
}

void BlockPainter::fill(const Block& block, const Ink& ink) const
{
    const std::uint32_t word = ink.word();
    for (int y = block.bottom; y < block.top; ++y)
        std::fill_n(_bitmap.rowAs<std::uint32_t>(_bitmap.height() - 1 - y) + block.left,
                    block.right - block.left, word);
}

void BlockPainter::forEachBlock(const std::function<void(const Block&)>& paint) const
{
    constexpr int kRows = 64, kColumns = 256;
    const int width = _bitmap.width(), height = _bitmap.height();
    const int columns = (width + kColumns - 1) / kColumns, rows = (height + kRows - 1) / kRows;
    foundation::ProgressSteps steps(std::int64_t{columns} * rows);
    imaging::parallelRows(0, columns * rows, 1, [&](int first, int last) {
        for (int i = first; i < last; ++i) {
            const int left = i % columns * kColumns, bottom = i / columns * kRows;
            paint(
                {left, bottom, std::min(left + kColumns, width), std::min(bottom + kRows, height)});
        }
        steps.add(last - first);
    });
}

} // namespace generators
