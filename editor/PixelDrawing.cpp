// Nearest, averaged and interpolated scaling of the visible part of a picture.
#include "editor/PixelDrawing.h"

#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace editor {

namespace {

constexpr int kRowsAtOnce = 24;

// Red, green, blue, alpha; loads and stores need no alignment.
typedef float Pixel __attribute__((vector_size(16)));
typedef std::int32_t Whole __attribute__((vector_size(16)));

// The three neighbours on one axis that a device pixel is made of. Those past the end weigh
// nothing.
struct Taps {
    int first = 0;
    std::array<float, 3> weight{};
};

QRgb swapRedAndBlue(std::uint32_t pixel)
{
    return (pixel & 0xff00ff00) | ((pixel >> 16) & 0xff) | ((pixel & 0xff) << 16);
}

// A premultiplied pixel over an opaque one.
QRgb over(QRgb pixel, QRgb below)
{
    const std::uint32_t rest = 255 - (pixel >> 24);
    std::uint32_t redBlue = (below & 0xff00ff) * rest;
    redBlue = ((redBlue + ((redBlue >> 8) & 0xff00ff) + 0x800080) >> 8) & 0xff00ff;
    std::uint32_t green = ((below >> 8) & 0xff) * rest;
    green = (green + (green >> 8) + 0x80) & 0xff00;
    return 0xff000000 | ((pixel & 0xffffff) + redBlue + green);
}

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
            t.weight[static_cast<std::size_t>(k)] =
                static_cast<float>(std::max(covered, 0.0) / (high - low));
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
        const auto share = static_cast<float>(at - first);
        taps[static_cast<std::size_t>(i - from)] = {first, {1 - share, share, 0}};
    }
    return taps;
}

class CheckerRow {
public:
    CheckerRow(const Checkers& checkers, int y) : _checkers(checkers)
    {
        _odd = (floorDivided(y - checkers.origin.y()) & 1) != 0;
    }
    QRgb at(int x) const
    {
        const bool odd = (floorDivided(x - _checkers.origin.x()) & 1) != 0;
        return odd == _odd ? _checkers.first : _checkers.second;
    }
    // Whether the row looks like the one above.
    static bool sameAsAbove(const Checkers& checkers, int y)
    {
        return (y - checkers.origin.y()) % checkers.side != 0;
    }

private:
    int floorDivided(int v) const
    {
        return v >= 0 ? v / _checkers.side : -((_checkers.side - 1 - v) / _checkers.side);
    }

    const Checkers& _checkers;
    bool _odd = false;
};

struct Job {
    const PixelRows& source;
    bool opaque;
    QRectF target;
    double stepX, stepY; // source pixels to a device pixel
    QRect covered;       // what is drawn
    QRect part;          // what the canvas shows
    const Checkers& checkers;
    QImage& canvas;

    QRgb* canvasRow(uchar* bits, int y) const
    {
        return reinterpret_cast<QRgb*>(bits + (y - part.top()) * canvas.bytesPerLine()) +
               (covered.left() - part.left());
    }
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
    uchar* const bits = job.canvas.bits();
    imaging::parallelRows(
        job.covered.top(), job.covered.bottom() + 1, kRowsAtOnce, [&](int first, int last) {
            int previous = -1;
            for (int y = first; y < last; ++y) {
                QRgb* const out = job.canvasRow(bits, y);
                const int sourceY = nearest(y, job.target.top(), job.stepY, job.source.height);
                if (sourceY == previous &&
                    (job.opaque || CheckerRow::sameAsAbove(job.checkers, y))) {
                    std::memcpy(out, job.canvasRow(bits, y - 1), sizeof(QRgb) * std::size_t(width));
                    continue;
                }
                previous = sourceY;
                const std::uint32_t* const row = job.source.row(sourceY);
                if (job.opaque) {
                    for (int x = 0; x < width; ++x)
                        out[x] = swapRedAndBlue(row[columns[static_cast<std::size_t>(x)]]);
                    continue;
                }
                const CheckerRow squares(job.checkers, y);
                for (int x = 0; x < width; ++x) {
                    const std::uint32_t pixel = row[columns[static_cast<std::size_t>(x)]];
                    out[x] = over(
                        swapRedAndBlue(job.source.premultiplied ? pixel : premultiplied(pixel)),
                        squares.at(left + x));
                }
            }
        });
}

// The weighted sum of up to three rows of bytes.
void sumRows(const std::array<const std::uint32_t*, 3>& rows, const std::array<float, 3>& weights,
             int pixels, float* __restrict sum)
{
    const auto* a = reinterpret_cast<const std::uint8_t*>(rows[0]);
    const auto* b = reinterpret_cast<const std::uint8_t*>(rows[1]);
    const auto* c = reinterpret_cast<const std::uint8_t*>(rows[2]);
    const float wa = weights[0], wb = weights[1], wc = weights[2];
    const int count = pixels * 4;
    if (wc == 0) {
        for (int i = 0; i < count; ++i)
            sum[i] = float(a[i]) * wa + float(b[i]) * wb;
    } else {
        for (int i = 0; i < count; ++i)
            sum[i] = float(a[i]) * wa + float(b[i]) * wb + float(c[i]) * wc;
    }
}

Pixel load(const float* p)
{
    Pixel v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

void drawWeighted(const Job& job, const std::vector<Taps>& columns, const std::vector<Taps>& rows)
{
    const int width = job.covered.width(), left = job.covered.left();
    const int from = columns.front().first;
    const int to = std::min(columns.back().first + 3, job.source.width);
    // Spread out beforehand: this is what the innermost loop spends its time on.
    struct Column {
        Pixel weight[3];
        std::size_t at; // in the sum
    };
    std::vector<Column> spread;
    spread.reserve(columns.size());
    for (const Taps& t : columns) {
        const auto all = [](float w) { return Pixel{w, w, w, w}; };
        spread.push_back({{all(t.weight[0]), all(t.weight[1]), all(t.weight[2])},
                          static_cast<std::size_t>(t.first - from) * 4});
    }
    const bool premultiply = !job.opaque && !job.source.premultiplied;
    uchar* const bits = job.canvas.bits();
    imaging::parallelRows(
        job.covered.top(), job.covered.bottom() + 1, kRowsAtOnce, [&](int first, int last) {
            const auto across = static_cast<std::size_t>(to - from);
            // Two more pixels for neighbours past the end.
            std::vector<float> sum((across + 2) * 4);
            // Neighbouring rows of the screen share rows of the picture.
            std::array<std::vector<std::uint32_t>, 3> kept;
            std::array<int, 3> keptRow = {-1, -1, -1};
            const auto source = [&](int y) -> const std::uint32_t* {
                const std::uint32_t* const row = job.source.row(y) + from;
                if (!premultiply)
                    return row;
                const auto slot = static_cast<std::size_t>(y % 3);
                if (keptRow[slot] != y) {
                    keptRow[slot] = y;
                    kept[slot].resize(across);
                    std::transform(row, row + across, kept[slot].begin(), premultiplied);
                }
                return kept[slot].data();
            };
            for (int y = first; y < last; ++y) {
                const Taps& v = rows[static_cast<std::size_t>(y - job.covered.top())];
                const int lowest = job.source.height - 1;
                sumRows({source(v.first), source(std::min(v.first + 1, lowest)),
                         source(std::min(v.first + 2, lowest))},
                        v.weight, to - from, sum.data());
                QRgb* const out = job.canvasRow(bits, y);
                const CheckerRow squares(job.checkers, y);
                for (int x = 0; x < width; ++x) {
                    const Column& h = spread[static_cast<std::size_t>(x)];
                    const float* const p0 = &sum[h.at];
                    Pixel p = load(p0) * h.weight[0] + load(p0 + 4) * h.weight[1] +
                              load(p0 + 8) * h.weight[2];
                    if (!job.opaque) {
                        const QRgb square = squares.at(left + x);
                        const Pixel below = {float(qRed(square)), float(qGreen(square)),
                                             float(qBlue(square)), 255};
                        p += below * (1 - p[3] * (1 / 255.0f));
                    }
                    const Whole w = __builtin_convertvector(p + 0.5f, Whole);
                    out[x] = 0xff000000 | (QRgb(w[0]) << 16) | (QRgb(w[1]) << 8) | QRgb(w[2]);
                }
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

void drawCheckers(const Checkers& checkers, const QRect& part, QImage& canvas)
{
    uchar* const bits = canvas.bits();
    for (int y = 0; y < part.height(); ++y) {
        auto* const out = reinterpret_cast<QRgb*>(bits + y * canvas.bytesPerLine());
        if (y > 0 && CheckerRow::sameAsAbove(checkers, part.top() + y)) {
            std::memcpy(out, bits + (y - 1) * canvas.bytesPerLine(),
                        sizeof(QRgb) * std::size_t(part.width()));
            continue;
        }
        const CheckerRow squares(checkers, part.top() + y);
        for (int x = 0; x < part.width(); ++x)
            out[x] = squares.at(part.left() + x);
    }
}

void drawPixels(const PicturePyramid& pyramid, const QRectF& target, bool smooth,
                const Checkers& checkers, const QRect& part, QImage& canvas)
{
    const QRect covered = coveredPixels(target) & part;
    if (covered.isEmpty() || pyramid.levels() == 0)
        return;
    const double scaleX = target.width() / pyramid.width();
    const double scaleY = target.height() / pyramid.height();
    const int level = availableLevel(pyramid, std::max(scaleX, scaleY));
    const PixelRows& source = pyramid.level(level);
    // Levels are cut up to whole pixels: their own width says too little.
    const double reduction = std::ldexp(1.0, level);
    const Job job = {source,
                     pyramid.isOpaque(),
                     target,
                     1 / (scaleX * reduction),
                     1 / (scaleY * reduction),
                     covered,
                     part,
                     checkers,
                     canvas};
    const bool exact = scaleX == 1 && scaleY == 1;
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
