#include "platform/builtin/mosaic/CellMosaic.h"

#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

// Sums are added up in the same order at every level, so always eight at a time.
typedef float Float8 __attribute__((vector_size(32)));

float sumOf(const float* p, int count)
{
    Float8 eight{};
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        Float8 v;
        std::memcpy(&v, p + i, sizeof v);
        eight += v;
    }
    float sum = ((eight[0] + eight[4]) + (eight[2] + eight[6])) +
                ((eight[1] + eight[5]) + (eight[3] + eight[7]));
    for (; i < count; ++i)
        sum += p[i];
    return sum;
}

typedef std::int32_t Int4 __attribute__((vector_size(16)));

Int4 foldedTo4(IntLanes v)
{
#if CIF_LANES == 8
    return __builtin_shufflevector(v, v, 0, 1, 2, 3) + __builtin_shufflevector(v, v, 4, 5, 6, 7);
#else
    return v;
#endif
}

// Fewer pixels than lanes, where no more may be read; the rest is 0.
[[gnu::noinline]] I firstPixels(const std::byte* p, int count)
{
    alignas(32) std::byte pixels[4 * kLanes] = {};
    std::memcpy(pixels, p, std::size_t{4} * count);
    return loadInts(pixels);
}

// Up to 256 pixels of four bytes: their sums are whole numbers of at most 16 bits. `room` is how
// many pixels may be read.
[[gnu::always_inline]] inline Float4 sumOfBytes(const std::byte* p, int count, std::ptrdiff_t room)
{
    // Two sums to a word: red and blue, green and alpha.
    constexpr int kPairs = 0xff00ff;
    I redBlue = 0, greenAlpha = 0;
    const auto add = [&](I v) {
        redBlue = redBlue + (v & I(kPairs));
        greenAlpha = greenAlpha + (shiftRight(v, 8) & I(kPairs));
    };
    int i = 0;
    for (; i + kLanes <= count; i += kLanes)
        add(loadInts(p + std::ptrdiff_t{4} * i));
    if (i < count) {
        const std::byte* rest = p + std::ptrdiff_t{4} * i;
        const int few = count - i;
        add(i + kLanes <= room ? select(iotaInts() < I(few), loadInts(rest), I(0))
                               : firstPixels(rest, few));
    }
    // Folded together: the sum of the first two words is red and blue, that of the others the rest.
    const Int4 rb = foldedTo4(redBlue.v), ga = foldedTo4(greenAlpha.v);
    const Int4 two =
        __builtin_shufflevector(rb, ga, 0, 1, 4, 5) + __builtin_shufflevector(rb, ga, 2, 3, 6, 7);
    const Int4 both = __builtin_shufflevector(two, two, 0, 2, 0, 2) +
                      __builtin_shufflevector(two, two, 1, 3, 1, 3);
    const Int4 low = both & 0xffff, high = (both >> 16) & 0xffff;
    return __builtin_convertvector(__builtin_shufflevector(low, high, 0, 1, 4, 5), Float4);
}

// The sums of all cells. Single precision is enough for cells of a few hundred pixels: there it is
// exact for bytes, and a picture may have millions of them.
template <class T>
class CellSums {
public:
    explicit CellSums(std::int64_t cells)
        : _cells(cells), _memory(static_cast<std::size_t>(cells) * 5 * sizeof(T) / sizeof(float))
    {
    }

    explicit operator bool() const { return static_cast<bool>(_memory); }

    void clear(const RenderContext& context)
    {
        overCells(context, [this](std::int64_t first, std::int64_t last) {
            std::fill(sums() + 4 * first, sums() + 4 * last, T{0});
            std::fill(counts() + first, counts() + last, T{0});
        });
    }

    void add(std::int64_t cell, Float4 pixels, int count)
    {
        typedef T Sum __attribute__((vector_size(4 * sizeof(T))));
        Sum sum;
        std::memcpy(&sum, sums() + 4 * cell, sizeof sum);
        sum += __builtin_convertvector(pixels, Sum);
        std::memcpy(sums() + 4 * cell, &sum, sizeof sum);
        counts()[cell] += static_cast<T>(count);
    }

    // Divided by the counts first: the mean of equal numbers is that number.
    void means(float unit, const RenderContext& context, float* out) const
    {
        overCells(context, [=, this](std::int64_t first, std::int64_t last) {
            for (std::int64_t i = first; i < last; ++i)
                for (int c = 0; c < 4; ++c)
                    out[4 * i + c] =
                        counts()[i] > 0 ? static_cast<float>(sums()[4 * i + c] / counts()[i]) * unit
                                        : 0;
        });
    }

private:
    template <class Work>
    void overCells(const RenderContext& context, const Work& work) const
    {
        constexpr std::int64_t kPiece = 16384;
        parallelRows(
            0, static_cast<int>((_cells + kPiece - 1) / kPiece), 1, context.threaded(),
            [&](int first, int last) { work(first * kPiece, std::min(_cells, last * kPiece)); });
    }
    T* sums() { return reinterpret_cast<T*>(_memory.data()); }
    const T* sums() const { return reinterpret_cast<const T*>(_memory.data()); }
    T* counts() { return sums() + 4 * _cells; }
    const T* counts() const { return sums() + 4 * _cells; }

    std::int64_t _cells;
    FloatBuffer _memory;
};

class CellMosaicNode : public Node {
public:
    CellMosaicNode(Image image, std::shared_ptr<const CellLayout> layout, const IRect& extent)
        : Node(extent), _image(std::move(image)), _layout(std::move(layout))
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const IRect& extent = _image.node()->extent();
        if (extent.isPlane()) {
            const CellRange range = _layout->cellsOf(region);
            return painter(region, range, middles(region, range, context));
        }
        const IRect source = _layout->reach(region).intersected(extent);
        if (source.width() > Bitmap::kMaximumSide || source.height() > Bitmap::kMaximumSide)
            return nullptr;
        const IRect all = source.united(region);
        const CellRange range = _layout->cellsOf(all);
        constexpr double kFewRows = 16;
        return painter(all, range,
                       _layout->tallest() <= kFewRows ? means<float>(source, all, range, context)
                                                      : means<double>(source, all, range, context));
    }

private:
    EvaluatorRef painter(const IRect& pixels, const CellRange& range, FloatBuffer colors) const
    {
        struct Rows : Evaluator {
            void row(const Span& span, const Strip& out) const override
            {
                thread_local std::vector<CellRun> runs;
                std::vector<CellRun>& scratch = runs;
                const CellRow cells = cutter->cut(span, scratch);
                const CellRun* run = cells.runs;
                for (int i = 0; i < span.count; ++run) {
                    const float* c = colors.data() + 4 * (cells.base + run->cell);
                    const Px color{c[0], c[1], c[2], c[3]};
                    const int end = std::min(run->end - span.x, span.count);
                    // What goes past the end belongs to the runs that follow, or to nobody.
                    for (; i < end; i += kLanes)
                        storePx(out, i, color);
                    i = end;
                }
            }
            std::unique_ptr<CellCutter> cutter;
            FloatBuffer colors;
        };
        if (!colors)
            return nullptr;
        auto rows = std::make_shared<Rows>();
        rows->cutter = _layout->cutter(pixels, range);
        rows->colors = std::move(colors);
        return rows;
    }

    FloatBuffer middles(const IRect& region, const CellRange& range, RenderContext& context) const
    {
        return samplesOf(
            _image, range, _layout->tallest(), _layout->reach(region),
            [&](std::int64_t row, Point* positions) {
                for (std::int64_t i = 0; i < range.width; ++i)
                    positions[i] = _layout->middle({range.left + i, row});
            },
            context);
    }

    // Bands of rows that are taller than any cell: two bands with one between them share no cell,
    // so the even ones are summed side by side, and then the odd ones. That the bands lie where
    // they do makes the order of every cell's sum the same for any number of threads and any
    // region.
    template <class T>
    FloatBuffer means(const IRect& source, const IRect& all, const CellRange& range,
                      RenderContext& context) const
    {
        CellSums<T> sums(range.count());
        FloatBuffer result(static_cast<std::size_t>(range.count()) * 4);
        const PixelBlockRef block = _image.node()->pixels();
        const bool bytes = block && block->format == PixelBlock::Format::OpaqueBytes;
        const EvaluatorRef rows = bytes ? nullptr : context.evaluator(_image, source);
        if (!sums || !result || (!bytes && !rows))
            return {};
        sums.clear(context);
        const std::unique_ptr<CellCutter> cutter = _layout->cutter(all, range);
        const auto addSpan = [&](const Span& span, std::vector<CellRun>& scratch) {
            const CellRow cells = cutter->cut(span, scratch);
            if (bytes)
                addBytes(*block, span, cells, sums);
            else
                addFloats(*rows, span, cells, sums);
        };
        const int height = static_cast<int>(
            std::clamp(std::ceil(_layout->tallest()), double{kTileHeight}, double{IRect::kEdge}));
        const auto bandOf = [height](int y) {
            return static_cast<int>(std::floor(static_cast<double>(y) / height));
        };
        const int firstBand = bandOf(source.bottom);
        const int lastBand = source.isEmpty() ? firstBand - 1 : bandOf(source.top - 1);
        for (int odd = 0; odd < 2; ++odd) {
            const int first = firstBand + ((firstBand ^ odd) & 1);
            const int count = (lastBand - first + 2) / 2;
            parallelRows(0, count, 1, context.threaded(), [&](int begin, int end) {
                std::vector<CellRun> scratch;
                for (int band = first + 2 * begin; band < first + 2 * end; band += 2)
                    overSpans(source, std::int64_t{band} * height, height, [&](const Span& span) {
                        if (!context.stopped())
                            addSpan(span, scratch);
                    });
            });
        }
        sums.means(bytes ? 1 / 255.f : 1.f, context, result.data());
        return context.stopped() ? FloatBuffer() : std::move(result);
    }

    // The spans of a band, column by column, as inputs like it that keep rows.
    template <class Work>
    static void overSpans(const IRect& source, std::int64_t bottom, int height, const Work& work)
    {
        const int first = static_cast<int>(std::max<std::int64_t>(source.bottom, bottom));
        const int last = static_cast<int>(std::min<std::int64_t>(source.top, bottom + height));
        for (int x = source.left; x < source.right;) {
            const int next = std::min(source.right, (x & ~(kStripWidth - 1)) + kStripWidth);
            for (int y = first; y < last; ++y)
                work(Span{x, y, next - x});
            x = next;
        }
    }

    template <class T>
    static void addBytes(const PixelBlock& block, const Span& span, const CellRow& cells,
                         CellSums<T>& sums)
    {
        constexpr int kMost = 256;
        const std::byte* p = block.pixel(span.x, span.y);
        const std::ptrdiff_t room = std::abs(block.bytesPerRow) / 4 - (span.x - block.rect.left);
        const CellRun* run = cells.runs;
        for (int i = 0; i < span.count; ++run) {
            const int end = std::min(run->end - span.x, span.count);
            for (int next; i < end; i = next) {
                next = std::min(end, i + kMost);
                sums.add(cells.base + run->cell,
                         sumOfBytes(p + std::ptrdiff_t{4} * i, next - i, room - i), next - i);
            }
        }
    }

    template <class T>
    static void addFloats(const Evaluator& rows, const Span& span, const CellRow& cells,
                          CellSums<T>& sums)
    {
        StripBuffer buffer;
        const Strip strip = buffer.strip();
        rows.row(span, strip);
        const CellRun* run = cells.runs;
        for (int i = 0; i < span.count; ++run) {
            const int end = std::min(run->end - span.x, span.count), count = end - i;
            const Float4 sum{sumOf(strip.r + i, count), sumOf(strip.g + i, count),
                             sumOf(strip.b + i, count), sumOf(strip.a + i, count)};
            sums.add(cells.base + run->cell, sum, count);
            i = end;
        }
    }

    Image _image;
    std::shared_ptr<const CellLayout> _layout;
};

} // namespace

Image cellMosaic(const Image& image, std::shared_ptr<const CellLayout> layout, const IRect& extent)
{
    return Image(std::make_shared<CellMosaicNode>(image, std::move(layout), extent));
}

// The plane has an edge, after all: cells of any size have a colour.
static Point withinPlane(Point p)
{
    constexpr double kEdge = IRect::kEdge - 1;
    return {std::clamp(p.x, -kEdge, kEdge), std::clamp(p.y, -kEdge, kEdge)};
}

FloatBuffer samplesOf(const Image& image, const CellRange& range, double spacing,
                      const IRect& around,
                      const std::function<void(std::int64_t row, Point* positions)>& rowOf,
                      RenderContext& context)
{
    FloatBuffer out(static_cast<std::size_t>(range.count()) * 4);
    if (!out)
        return {};
    const IRect& extent = image.node()->extent();
    // One position on its own, so that it does not matter which others are asked for.
    const auto sample = [&](const PixelBlock& block, Point at, float* color) {
        detail::withSampler(block, extent, [&](const auto& sampler) {
            const Px p = sampler(Coord{at, Vec2{0.0f, 0.0f}});
            const Float4 c{p.r.v[0], p.g.v[0], p.b.v[0], p.a.v[0]};
            std::memcpy(color, &c, sizeof c);
        });
    };
    const auto row = [&](std::int64_t j) { return out.data() + 4 * j * range.width; };
    // Far apart, each position gets its own few pixels computed.
    constexpr double kFar = 1024;
    if (spacing > kFar && !image.node()->pixels()) {
        std::vector<Point> positions(static_cast<std::size_t>(range.width));
        for (std::int64_t j = 0; j < range.height; ++j) {
            rowOf(range.bottom + j, positions.data());
            for (std::int64_t i = 0; i < range.width; ++i) {
                const Point at = withinPlane(positions[i]);
                const IRect four = IRect::around({at.x - 1, at.y - 1, 2, 2});
                const PixelBlockRef block = context.pixels(image, four);
                if (!block)
                    return {};
                sample(*block, at, row(j) + 4 * i);
            }
        }
        return out;
    }
    const PixelBlockRef block = context.pixels(image, around.grown(1, 1).intersected(extent));
    if (!block)
        return {};
    parallelRows(0, static_cast<int>(range.height), 8, context.threaded(),
                 [&](int first, int last) {
                     std::vector<Point> positions(static_cast<std::size_t>(range.width));
                     for (int j = first; j < last && !context.stopped(); ++j) {
                         rowOf(range.bottom + j, positions.data());
                         for (std::int64_t i = 0; i < range.width; ++i)
                             sample(*block, positions[i], row(j) + 4 * i);
                     }
                 });
    return context.stopped() ? FloatBuffer() : std::move(out);
}

} // namespace builtin
