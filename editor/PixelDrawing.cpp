// Nearest, averaged and interpolated scaling of the visible part of a picture.
#include "editor/PixelDrawing.h"

#include "editor/PixelRows.h"

#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

namespace editor {

namespace {

constexpr int kRowsAtOnce = 24;

// The three neighbours on one axis that a device pixel is made of. Those past the end weigh
// nothing.
struct Taps {
    int first = 0;
    std::array<std::uint16_t, 3> weight{};
};

// Each pixel averages the stretch of `count` source pixels that it covers, `step` long. Only the
// middle of a stretch longer than two is looked at.
std::vector<Taps> averagingTaps(int from, int to, double start, double step, int count)
{
    std::vector<Taps> taps(static_cast<std::size_t>(to - from));
    for (int i = from; i < to; ++i) {
        double low = (i - start) * step, high = low + step;
        if (step > 2) {
            const double middle = (low + high) * 0.5;
            low = middle - 1;
            high = middle + 1;
        }
        low = std::clamp(low, 0.0, count - 1e-6);
        high = std::clamp(high, low + 1e-6, double(count));
        Taps& t = taps[static_cast<std::size_t>(i - from)];
        t.first = static_cast<int>(low);
        for (int k = 0; k < 3; ++k) {
            const double left = t.first + k;
            const double covered = std::min(high, left + 1) - std::max(low, left);
            t.weight[static_cast<std::size_t>(k)] = asWeight(std::max(covered, 0.0) / (high - low));
        }
    }
    return taps;
}

// Linear between the centres of source pixels.
std::vector<Taps> linearTaps(int from, int to, double start, double step, int count)
{
    std::vector<Taps> taps(static_cast<std::size_t>(to - from));
    for (int i = from; i < to; ++i) {
        const double at = std::clamp((i + 0.5 - start) * step - 0.5, 0.0, count - 1.0);
        const int first = static_cast<int>(at);
        const double share = at - first;
        taps[static_cast<std::size_t>(i - from)] = {first, {asWeight(1 - share), asWeight(share)}};
    }
    return taps;
}

// Whether a row or column of squares begins with the second colour.
bool isOdd(int at, int origin, int side)
{
    return (static_cast<int>(std::floor(double(at - origin) / side)) & 1) != 0;
}

std::uint32_t inPictureOrder(QRgb color)
{
    return (color & 0xff00ff00) | ((color >> 16) & 0xff) | ((color & 0xff) << 16);
}

// The two kinds of rows that squares make, from one column on.
class CheckerRows {
public:
    CheckerRows(const Checkers& checkers, int left, int width)
        : _origin(checkers.origin.y()), _side(checkers.side)
    {
        for (const bool second : {false, true}) {
            std::vector<std::uint32_t>& row = _rows[second ? 1 : 0];
            row.resize(static_cast<std::size_t>(width));
            for (int x = 0; x < width; ++x) {
                const bool odd = isOdd(left + x, checkers.origin.x(), checkers.side);
                row[static_cast<std::size_t>(x)] =
                    inPictureOrder(odd == second ? checkers.first : checkers.second);
            }
        }
    }
    Backdrop at(int y) const { return _rows[isOdd(y, _origin, _side) ? 1 : 0].data(); }

private:
    int _origin, _side;
    std::array<std::vector<std::uint32_t>, 2> _rows;
};

struct Job {
    const PixelRows& source;
    bool opaque;
    QRectF target;
    double stepX, stepY; // source pixels to a device pixel
    QRect covered;       // what is drawn
    const Checkers& checkers;
    const Canvas& canvas;
};

void drawNearest(const Job& job)
{
    const int width = job.covered.width(), left = job.covered.left();
    const auto nearest = [](int i, double start, double step, int count) {
        return std::clamp(static_cast<int>(std::floor((i + 0.5 - start) * step)), 0, count - 1);
    };
    std::vector<int> columns(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x)
        columns[static_cast<std::size_t>(x)] =
            nearest(left + x, job.target.left(), job.stepX, job.source.width);
    const int firstColumn = columns.front();
    const bool contiguous = job.stepX == 1 && columns.back() - firstColumn == width - 1;
    const bool premultiply = !job.opaque && !job.source.premultiplied;
    const CheckerRows squares(job.checkers, left, job.opaque ? 0 : width);
    imaging::parallelRows(
        job.covered.top(), job.covered.bottom() + 1, kRowsAtOnce, [&](int first, int last) {
            std::vector<std::uint32_t> kept(contiguous && !premultiply ? 0 : std::size_t(width));
            const std::uint32_t* pixels = nullptr;
            Backdrop below = nullptr;
            int previous = -1;
            for (int y = first; y < last; ++y) {
                QRgb* const out = job.canvas.at(left, y);
                const int sourceY = nearest(y, job.target.top(), job.stepY, job.source.height);
                const Backdrop above = std::exchange(below, job.opaque ? nullptr : squares.at(y));
                if (sourceY == previous && below == above) {
                    std::memcpy(out, job.canvas.at(left, y - 1), sizeof(QRgb) * std::size_t(width));
                    continue;
                }
                if (std::exchange(previous, sourceY) != sourceY) {
                    const std::uint32_t* const row = job.source.row(sourceY);
                    pixels = row + firstColumn;
                    if (!contiguous) {
                        for (int x = 0; x < width; ++x)
                            kept[static_cast<std::size_t>(x)] =
                                row[columns[static_cast<std::size_t>(x)]];
                        pixels = kept.data();
                    }
                    if (premultiply) {
                        premultiplyRow(pixels, width, kept.data());
                        pixels = kept.data();
                    }
                }
                if (job.opaque)
                    toScreenRow(pixels, width, out);
                else
                    overRow(pixels, below, width, out);
            }
        });
}

void drawWeighted(const Job& job, const std::vector<Taps>& columns, const std::vector<Taps>& rows)
{
    const int width = job.covered.width(), left = job.covered.left();
    const int from = columns.front().first;
    const int to = std::min(columns.back().first + 3, job.source.width);
    ColumnMixer mixer;
    for (const Taps& t : columns)
        mixer.append(t.first - from, t.weight);
    const CheckerRows squares(job.checkers, left, job.opaque ? 0 : width);
    const bool premultiply = !job.opaque && !job.source.premultiplied;
    imaging::parallelRows(
        job.covered.top(), job.covered.bottom() + 1, kRowsAtOnce, [&](int first, int last) {
            Sums sums;
            // Neighbouring rows of the screen share rows of the picture.
            std::array<std::vector<std::uint32_t>, 3> kept;
            std::array<int, 3> keptRow = {-1, -1, -1};
            const auto source = [&](int y, bool needed) -> const std::uint32_t* {
                if (!needed)
                    return nullptr;
                const std::uint32_t* const row = job.source.row(y) + from;
                if (!premultiply)
                    return row;
                const auto slot = static_cast<std::size_t>(y % 3);
                if (std::exchange(keptRow[slot], y) != y) {
                    kept[slot].resize(static_cast<std::size_t>(to - from));
                    premultiplyRow(row, to - from, kept[slot].data());
                }
                return kept[slot].data();
            };
            for (int y = first; y < last; ++y) {
                const Taps& v = rows[static_cast<std::size_t>(y - job.covered.top())];
                sumRows({source(v.first, true), source(v.first + 1, v.weight[1] != 0),
                         source(v.first + 2, v.weight[2] != 0)},
                        v.weight, to - from, sums);
                mixer.mix(sums, job.opaque ? nullptr : squares.at(y), job.canvas.at(left, y));
            }
        });
}

} // namespace

QRect coveredPixels(const QRectF& rect)
{
    const auto edge = [](double v) {
        return static_cast<int>(std::clamp(std::ceil(v - 0.5), -1e9, 1e9));
    };
    const QPoint low(edge(rect.left()), edge(rect.top()));
    return {low, QPoint(edge(rect.right()) - 1, edge(rect.bottom()) - 1)};
}

int wantedLevel(double scale)
{
    int level = 0;
    for (; scale * 2 <= 1 && level < 31; ++level)
        scale *= 2;
    return level;
}

int availableLevel(const PicturePyramid& pyramid, double scale)
{
    return std::min(wantedLevel(scale), pyramid.levels() - 1);
}

void drawCheckers(const Checkers& checkers, const Canvas& canvas)
{
    const QRect& part = canvas.part;
    const CheckerRows squares(checkers, part.left(), part.width());
    for (int y = part.top(); y <= part.bottom(); ++y)
        toScreenRow(squares.at(y), part.width(), canvas.at(part.left(), y));
}

void drawPixels(const PicturePyramid& pyramid, const QRectF& target, bool smooth,
                const Checkers& checkers, const Canvas& canvas)
{
    const QRect covered = coveredPixels(target) & canvas.part;
    if (covered.isEmpty() || pyramid.levels() == 0)
        return;
    const double scaleX = target.width() / pyramid.width();
    const double scaleY = target.height() / pyramid.height();
    const int level = availableLevel(pyramid, std::max(scaleX, scaleY));
    const PixelRows& source = pyramid.level(level);
    // Levels are cut up to whole pixels: their own width says too little.
    const double reduction = std::ldexp(1.0, level);
    // Rectangles in points do not come out whole to the last digit.
    const auto step = [reduction](double scale, int count) {
        const double exact = 1 / (scale * reduction);
        return std::abs(exact - 1) * count < 0.25 ? 1 : exact;
    };
    const Job job = {source,
                     pyramid.isOpaque(),
                     target,
                     step(scaleX, source.width),
                     step(scaleY, source.height),
                     covered,
                     checkers,
                     canvas};
    // Pixels of a level that are as large as those of the screen need no averaging either.
    const bool exact = job.stepX == 1 && job.stepY == 1;
    if (!smooth && (exact || std::min(scaleX, scaleY) >= 2)) {
        drawNearest(job);
        return;
    }
    const auto taps = [smooth](int from, int to, double start, double step, int count) {
        return smooth && step < 1 ? linearTaps(from, to, start, step, count)
                                  : averagingTaps(from, to, start, step, count);
    };
    drawWeighted(job,
                 taps(covered.left(), covered.right() + 1, target.left(), job.stepX, source.width),
                 taps(covered.top(), covered.bottom() + 1, target.top(), job.stepY, source.height));
}

} // namespace editor
