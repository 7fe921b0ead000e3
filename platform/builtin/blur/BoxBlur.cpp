// The mean of a square, with a fraction of its outermost pixels.
//
// A window of column sums slides up the picture, and one sum of those slides along each row, so
// that the cost does not depend on the radius; where a wide window begins, it is put together from
// sums on a coarse grid. Sums of bytes are whole numbers. Sums of floats are of doubles on a fine
// grid, of which none is lost either: nothing drifts, a flat picture stays flat, and a pixel comes
// out the same wherever its row was begun.
#include "platform/builtin/blur/BoxBlur.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/Countable.h"
#include "platform/builtin/blur/Extent.h"
#include "platform/imaging/ColumnMemory.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace builtin {

using namespace imaging;

namespace {

constexpr double kMaximumRadius = 10'000;

// The weights along one axis: 1 up to `whole` pixels away, `part` for the next.
struct Box {
    int whole;
    double part;

    explicit Box(double radius)
        : whole(static_cast<int>(radius)), part(radius - static_cast<int>(radius))
    {
    }
    int reach() const { return whole + 1; }
    double side() const { return 2 * whole + 1 + 2 * part; }
};

// Sums from the picture's lower left corner, at every kStep-th row of each column and at every
// kStep-th column of each row. Whole numbers may overflow: the difference of two is right as long
// as it does not.
template <class Value, class Total>
class CoarseSums {
public:
    static constexpr int kStep = 64;

    CoarseSums(const PixelBlock& block, const IRect& needed, const RenderContext& context)
        : _rect(block.rect.intersected(needed)), _lastStep((_rect.width() + kStep - 1) / kStep),
          _columns(std::size_t{4} * _rect.width() * (_rect.height() / kStep + 1)),
          _corners(cornersPerRow() * (_rect.height() + 1))
    {
        // Rows of one step add to the same columns.
        parallelRows(
            0, _rect.height() / kStep + 1, 1, context.threaded(), [&](int first, int last) {
                const int end = std::min(last * kStep, _rect.height());
                for (int y = first * kStep; y < end; ++y)
                    addRow(
                        reinterpret_cast<const Value*>(block.pixel(_rect.left, _rect.bottom + y)),
                        y);
            });
        const std::size_t width = std::size_t{4} * _rect.width();
        for (std::size_t i = width; i < _columns.size(); ++i)
            _columns[i] += _columns[i - width];
        for (std::size_t i = cornersPerRow(); i < _corners.size(); ++i)
            _corners[i] += _corners[i - cornersPerRow()];
    }

    const IRect& rect() const { return _rect; }
    // Of the components from column x on, below row `step`·kStep of the rectangle.
    const Total* columns(int step, int x) const
    {
        return _columns.data() +
               std::size_t{4} * (static_cast<std::size_t>(step) * _rect.width() + x - _rect.left);
    }
    // The last of a row's steps ends where the row does.
    int lastStep() const { return _lastStep; }
    int columnOf(int step) const { return std::min(_rect.left + step * kStep, _rect.right); }
    // Of a pixel's components, below row y and left of a step's column.
    const Total* corner(int y, int step) const
    {
        return _corners.data() + cornersPerRow() * (y - _rect.bottom) + std::ptrdiff_t{4} * step;
    }

private:
    std::size_t cornersPerRow() const { return std::size_t{4} * (_lastStep + 1); }

    void addRow(const Value* values, int y)
    {
        // To the step above; what is above the last one is not needed.
        const int step = y / kStep + 1;
        if (step <= _rect.height() / kStep) {
            Total* columns = _columns.data() + std::size_t{4} * step * _rect.width();
            for (int i = 0; i < 4 * _rect.width(); ++i)
                columns[i] += static_cast<Total>(countable(values[i]));
        }
        Total* corners = _corners.data() + cornersPerRow() * (y + 1);
        Total sum[4] = {};
        for (int step = 0; step < _lastStep; ++step) {
            // Eight pixels side by side; 16 bits hold what a step has of bytes.
            constexpr int kSide = 4 * 8;
            std::conditional_t<std::is_integral_v<Value>, std::uint16_t, Total> sums[kSide] = {};
            const int count = 4 * (columnOf(step + 1) - columnOf(step));
            int k = 0;
            for (; k + kSide <= count; k += kSide)
                for (int j = 0; j < kSide; ++j)
                    sums[j] += countable(values[k + j]);
            for (; k < count; ++k)
                sums[k % 4] += countable(values[k]);
            values += count;
            for (int j = 0; j < kSide; ++j)
                sum[j % 4] += sums[j];
            std::copy_n(sum, 4, corners + std::ptrdiff_t{4} * (step + 1));
        }
    }

    IRect _rect;
    int _lastStep;
    std::vector<Total> _columns, _corners;
};

// Value is what a pixel's component is in memory, Sum holds the sum of a column, Total what becomes
// of it when the outermost rows are added in part, and the sum of those along a row.
template <class Value, class Sum, class Total>
class BoxRows : public Evaluator {
    static constexpr bool kWhole = std::is_integral_v<Total>;
    static constexpr int kReading = std::is_integral_v<Value> ? 255 : 1; // how much 1 is
    typedef Total Total4 __attribute__((vector_size(4 * sizeof(Total))));
    using Coarse = CoarseSums<Value, Total>;

public:
    // Rows of sums with `bits` binary places for the part of the outermost pixels.
    BoxRows(PixelBlockRef block, const IRect& needed, const Box& across, const Box& up, int bits,
            const RenderContext& context)
        : _block(std::move(block)), _across(across.whole), _up(up.whole),
          _one(static_cast<Total>(std::ldexp(1.0, bits)))
    {
        const auto rounded = [&](double part) {
            return std::ldexp(std::round(std::ldexp(part, bits)), -bits);
        };
        const double partAcross = rounded(across.part), partUp = rounded(up.part);
        _outer = static_cast<Total>(std::ldexp(partUp, bits));
        _part = static_cast<float>(partAcross);
        _scale =
            static_cast<float>(1 / ((2 * across.whole + 1 + 2 * partAcross) *
                                    std::ldexp(2 * up.whole + 1 + 2 * partUp, bits) * kReading));
        if (_across > kNear || _up > kLow)
            _coarse = std::make_unique<Coarse>(*_block, needed, context);
    }

    void row(const Span& span, const Strip& out) const override
    {
        Window& window = slideTo(span);
        alignas(32) float pixels[4 * (kStripWidth + kLanes)];
        if (_outer == 0 && _one == 1)
            alongRow(window, window.sums.data(), span, pixels);
        else
            alongRow(window, withOuterRows(window, span), span, pixels);
        for (int i = 0; i < span.count; i += kLanes)
            storePx(out, i, loadInterleaved(pixels + std::ptrdiff_t{4} * i));
        makeOpaque(*_block, span, _across + 1, _up + 1, out);
    }

private:
    // From these on a window does not begin with all of its pixels, but with coarse sums.
    static constexpr int kNear = 200, kLow = 40;

    // Columns that a window has.
    struct Piece {
        int first, count, offset; // in the window's columns
    };
    // Sums of the columns that leave and enter the box along a column of spans, around row y: those
    // of a narrow box are one piece, a wide one has a gap.
    struct Window {
        int y;
        Piece leaving, entering;
        std::vector<Sum> sums;
        std::vector<Total> totals;
    };

    Window& slideTo(const Span& span) const
    {
        constexpr int kNowhere = std::numeric_limits<int>::min();
        Window& w = _memory.of(span, [&](Window& fresh) {
            fresh.y = kNowhere;
            const int first = span.x - _across - 1, count = span.count + 2 * (_across + 1);
            if (_across <= kNear) {
                fresh.leaving = {first, count, 0};
                fresh.entering = {first + count, 0, count};
            } else {
                const int part = span.count + Coarse::kStep + 2;
                fresh.leaving = {first, part, 0};
                fresh.entering = {span.x + _across + 1 - Coarse::kStep, part, part};
            }
        });
        if (w.y != kNowhere && span.y == w.y + 1) {
            addRow(w, span.y + _up, std::plus{});
            addRow(w, w.y - _up, std::minus{});
        } else if (w.y != span.y) {
            begin(w, span.y);
        }
        w.y = span.y;
        return w;
    }

    void begin(Window& w, int y) const
    {
        w.sums.assign(std::size_t{4} * (w.leaving.count + w.entering.count), Sum{});
        const IRect& r = _block->rect;
        int first = std::max(y - _up, r.bottom), end = std::min(y + _up + 1, r.top);
        if (_coarse && !_coarse->rect().isEmpty()) {
            const int bottom = _coarse->rect().bottom;
            first = std::max(first, bottom);
            end = std::min(end, _coarse->rect().top);
            const int low = (first - bottom + Coarse::kStep - 1) / Coarse::kStep;
            const int high = (end - bottom) / Coarse::kStep;
            if (low < high) {
                addSteps(w, low, high);
                for (int k = bottom + high * Coarse::kStep; k < end; ++k)
                    addRow(w, k, std::plus{});
                end = bottom + low * Coarse::kStep;
            }
        }
        for (int k = first; k < end; ++k)
            addRow(w, k, std::plus{});
    }

    void addSteps(Window& w, int low, int high) const
    {
        for (const Piece& p : {w.leaving, w.entering})
            forPart(_coarse->rect(), p, [&](int x, int at, int n) {
                const Total *a = _coarse->columns(low, x), *b = _coarse->columns(high, x);
                Sum* sums = w.sums.data() + at;
                for (int i = 0; i < n; ++i)
                    sums[i] = static_cast<Sum>(b[i] - a[i]);
            });
    }

    template <class Operation>
    void addRow(Window& w, int y, const Operation& operation) const
    {
        forRow(w, y, [&](const Value* values, int at, int n) {
            Sum* sums = w.sums.data() + at;
            for (int i = 0; i < n; ++i)
                sums[i] = static_cast<Sum>(operation(sums[i], countable(values[i])));
        });
    }

    // Calls use(column, place of its first component in the window, number of components) for the
    // part of a piece that a rectangle has.
    template <class Use>
    static void forPart(const IRect& r, const Piece& p, const Use& use)
    {
        const int left = std::max(p.first, r.left), right = std::min(p.first + p.count, r.right);
        if (left < right)
            use(left, 4 * (p.offset + left - p.first), 4 * (right - left));
    }
    template <class Use>
    void forRow(const Window& w, int y, const Use& use) const
    {
        const IRect& r = _block->rect;
        if (y < r.bottom || y >= r.top)
            return;
        for (const Piece& p : {w.leaving, w.entering})
            forPart(r, p, [&](int x, int at, int n) {
                use(reinterpret_cast<const Value*>(_block->pixel(x, y)), at, n);
            });
    }

    const Total* withOuterRows(Window& w, const Span& span) const
    {
        w.totals.resize(w.sums.size());
        for (std::size_t i = 0; i < w.sums.size(); ++i)
            w.totals[i] = static_cast<Total>(w.sums[i]) * _one;
        for (const int y : {span.y - _up - 1, span.y + _up + 1})
            forRow(w, y, [&](const Value* values, int at, int n) {
                Total* totals = w.totals.data() + at;
                for (int i = 0; i < n; ++i)
                    totals[i] += _outer * static_cast<Total>(countable(values[i]));
            });
        return w.totals.data();
    }

    template <class Column>
    static Total4 columnAt(const Column* columns, int x)
    {
        typedef Column Column4 __attribute__((vector_size(4 * sizeof(Column))));
        Column4 c;
        std::memcpy(&c, columns + std::ptrdiff_t{4} * x, sizeof c);
        return __builtin_convertvector(c, Total4);
    }

    // The sum under the box at the span's first pixel.
    template <class Column>
    Total4 firstSum(const Window& w, const Column* columns, const Span& span) const
    {
        Total4 sum{};
        const int first = span.x - _across, end = span.x + _across + 1;
        const auto add = [&](const Piece& p, int from, int to) {
            for (int x = from; x < to; ++x)
                sum += columnAt(columns, p.offset + x - p.first);
        };
        if (w.entering.count == 0) {
            add(w.leaving, first, end);
            return sum;
        }
        const IRect& r = _coarse->rect();
        if (end <= r.left || first >= r.right)
            return sum;
        const int low = first <= r.left
                            ? 0
                            : std::min((first - r.left + Coarse::kStep - 1) / Coarse::kStep,
                                       _coarse->lastStep());
        const int high = end >= r.right ? _coarse->lastStep() : (end - r.left) / Coarse::kStep;
        const auto under = [&](int from, int to) {
            from = std::clamp(from, r.bottom, r.top);
            to = std::clamp(to, r.bottom, r.top);
            return columnAt(_coarse->corner(to, high), 0) - columnAt(_coarse->corner(to, low), 0) -
                   columnAt(_coarse->corner(from, high), 0) +
                   columnAt(_coarse->corner(from, low), 0);
        };
        sum = under(span.y - _up, span.y + _up + 1) * _one;
        if (_outer != 0)
            sum += (under(span.y - _up - 1, span.y - _up) +
                    under(span.y + _up + 1, span.y + _up + 2)) *
                   _outer;
        add(w.leaving, std::max(first, r.left), _coarse->columnOf(low));
        add(w.entering, _coarse->columnOf(high), std::min(end, r.right));
        return sum;
    }

    template <class Column>
    void alongRow(const Window& w, const Column* columns, const Span& span, float* out) const
    {
        typedef std::int32_t Int4 __attribute__((vector_size(16)));
        const auto toFloats = [](Total4 v) {
            if constexpr (kWhole)
                return __builtin_convertvector(Int4(v), Float4);
            else
                return __builtin_convertvector(v, Float4);
        };
        const float part = _part, scale = _scale; // the stores could alias the members
        // Of each pixel, the column left of the box and the one right of it.
        const Column* left = columns;
        const Piece& p = w.entering.count ? w.entering : w.leaving;
        const Column* right =
            columns + std::ptrdiff_t{4} * (p.offset + span.x + _across + 1 - p.first);
        Total4 sum = firstSum(w, columns, span);
        for (int x = 0; x < span.count; ++x) {
            Float4 value = toFloats(sum);
            if (part != 0)
                value += part * (toFloats(columnAt(left, x)) + toFloats(columnAt(right, x)));
            value *= scale;
            std::memcpy(out + std::ptrdiff_t{4} * x, &value, sizeof value);
            sum += columnAt(right, x) - columnAt(left, x + 1);
        }
    }

    PixelBlockRef _block;
    ColumnMemory<Window> _memory;
    std::unique_ptr<Coarse> _coarse;
    int _across, _up;   // how far whole pixels reach
    Total _one, _outer; // weights of the columns' rows
    float _part, _scale;
};

class BoxNode : public Node {
public:
    BoxNode(Image input, double across, double up, const IRect& extent)
        : Node(extent), _input(std::move(input)), _across(across), _up(up)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const IRect needed = region.grown(_across.reach(), _up.reach());
        PixelBlockRef block = context.pixels(_input, needed);
        if (!block)
            return nullptr;
        const auto rows = [&]<class Value, class Sum, class Total>(int bits) {
            const bool parts = _across.part != 0 || _up.part != 0;
            return std::make_shared<BoxRows<Value, Sum, Total>>(std::move(block), needed, _across,
                                                                _up, parts ? bits : 0, context);
        };
        if (block->format == PixelBlock::Format::Floats)
            return rows.template operator()<float, double, double>(
                std::max(kFewestBits, bitsOf(kBitsOfDoubles, 1)));
        const int bits = bitsOf(31, 255);
        if (bits < 1)
            return rows.template operator()<std::uint8_t, double, double>(kFewestBits);
        if (2 * _up.whole + 1 > 65535 / 255)
            return rows.template operator()<std::uint8_t, std::uint32_t, std::uint32_t>(bits);
        return rows.template operator()<std::uint8_t, std::uint16_t, std::uint32_t>(bits);
    }

private:
    // Wider sums of doubles are not exact to the last bit.
    static constexpr int kFewestBits = 12;
    static constexpr int kBitsOfDoubles = 52 - 24; // less those of the grid

    // How many of the bits remain when all pixels under the box have the largest value.
    int bitsOf(int available, int largest) const
    {
        return available - static_cast<int>(std::ceil(
                               std::log2(largest * (_across.side() + 1) * (_up.side() + 1))));
    }

    Image _input;
    Box _across, _up;
};

} // namespace

Image boxMean(const Image& image, double across, double up)
{
    const double x = std::min(positive(across), kMaximumRadius);
    const double y = std::min(positive(up), kMaximumRadius);
    if (!image || (x == 0 && y == 0) || image.node()->extent().isEmpty())
        return image;
    return Image(std::make_shared<BoxNode>(
        image, x, y,
        grownExtent(image, static_cast<int>(std::ceil(x)), static_cast<int>(std::ceil(y)))));
}

void BoxBlur::initialize(FilterRegistry& registry)
{
    using T = BoxBlur;
    add<T>(registry, "CIBoxBlur", "Box Blur", {"Blur", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(1).slider(1, 100)},
           });
}

Image BoxBlur::outputImage() const
{
    return boxMean(inputImage, inputRadius, inputRadius);
}

} // namespace builtin
