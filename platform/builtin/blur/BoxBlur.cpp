// The mean of a square, with a fraction of its outermost pixels.
//
// A window of column sums slides up the picture, and one sum of those slides along each row, so
// that the cost does not depend on the radius. Sums of bytes are whole numbers. Sums of floats are
// of doubles on a grid of 2^-24, of which none is lost either: nothing drifts, a flat picture stays
// flat, and a pixel comes out the same wherever its row was begun.
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

// Value is what a pixel's component is in memory, Sum holds the sum of a column, Total what becomes
// of it when the outermost rows are added in part, and the sum of those along a row.
template <class Value, class Sum, class Total>
class BoxRows : public Evaluator {
    static constexpr bool kWhole = std::is_integral_v<Total>;
    static constexpr int kReading = std::is_integral_v<Value> ? 255 : 1; // how much 1 is

public:
    // Rows of sums with `bits` binary places for the part of the outermost pixels.
    BoxRows(PixelBlockRef block, const Box& box, int bits)
        : _block(std::move(block)), _whole(box.whole),
          _one(static_cast<Total>(std::ldexp(1.0, bits)))
    {
        const double part = std::ldexp(std::round(std::ldexp(box.part, bits)), -bits);
        _outer = static_cast<Total>(std::ldexp(part, bits));
        _part = static_cast<float>(part);
        const double side = 2 * box.whole + 1 + 2 * part;
        _scale = static_cast<float>(1 / (side * std::ldexp(side, bits) * kReading));
    }

    void row(const Span& span, const Strip& out) const override
    {
        Window& window = slideTo(span);
        alignas(32) float pixels[4 * (kStripWidth + kLanes)];
        if (_outer != 0)
            alongRow(withOuterRows(window, span), span.count, pixels);
        else
            alongRow(window.sums.data(), span.count, pixels);
        const int reach = _whole + 1;
        // In the middle of an opaque picture, alpha is 1 and not nearly so.
        const bool opaque =
            _block->format == PixelBlock::Format::OpaqueBytes &&
            _block->rect.contains(
                {span.x - reach, span.y - reach, span.x + span.count + reach, span.y + reach + 1});
        for (int i = 0; i < span.count; i += kLanes) {
            Px p = loadInterleaved(pixels + std::ptrdiff_t{4} * i);
            if (opaque)
                p.a = 1.0f;
            storePx(out, i, p);
        }
    }

private:
    // Sums of the columns under and beside a column of spans, around row y.
    struct Window {
        int y;
        std::vector<Sum> sums;
        std::vector<Total> totals;
    };

    Window& slideTo(const Span& span) const
    {
        constexpr int kNowhere = std::numeric_limits<int>::min();
        Window& w = _memory.of(span, [](Window& fresh) { fresh.y = kNowhere; });
        const int first = span.x - _whole - 1, count = span.count + 2 * (_whole + 1);
        if (w.y != kNowhere && span.y == w.y + 1) {
            addRow(w, first, count, span.y + _whole, std::plus{});
            addRow(w, first, count, w.y - _whole, std::minus{});
        } else if (w.y != span.y) {
            w.sums.assign(std::size_t{4} * count, Sum{});
            const IRect& r = _block->rect;
            const int last = std::min(span.y + _whole, r.top - 1);
            for (int y = std::max(span.y - _whole, r.bottom); y <= last; ++y)
                addRow(w, first, count, y, std::plus{});
        }
        w.y = span.y;
        return w;
    }

    template <class Operation>
    void addRow(Window& w, int first, int count, int y, const Operation& operation) const
    {
        forRow(first, count, y, [&](const Value* values, int at, int n) {
            Sum* sums = w.sums.data() + at;
            for (int i = 0; i < n; ++i)
                sums[i] = static_cast<Sum>(operation(sums[i], countable(values[i])));
        });
    }

    // Calls use(components, place of the first in the window, their number) for the part of a row
    // that the picture has.
    template <class Use>
    void forRow(int first, int count, int y, const Use& use) const
    {
        const IRect& r = _block->rect;
        const int left = std::max(first, r.left), right = std::min(first + count, r.right);
        if (y >= r.bottom && y < r.top && left < right)
            use(reinterpret_cast<const Value*>(_block->pixel(left, y)), 4 * (left - first),
                4 * (right - left));
    }

    const Total* withOuterRows(Window& w, const Span& span) const
    {
        const int first = span.x - _whole - 1, count = span.count + 2 * (_whole + 1);
        w.totals.resize(w.sums.size());
        for (std::size_t i = 0; i < w.sums.size(); ++i)
            w.totals[i] = static_cast<Total>(w.sums[i]) * _one;
        for (const int y : {span.y - _whole - 1, span.y + _whole + 1})
            forRow(first, count, y, [&](const Value* values, int at, int n) {
                Total* totals = w.totals.data() + at;
                for (int i = 0; i < n; ++i)
                    totals[i] += _outer * static_cast<Total>(countable(values[i]));
            });
        return w.totals.data();
    }

    template <class Column>
    void alongRow(const Column* columns, int count, float* out) const
    {
        // Whole numbers are summed in 32 bits.
        using Running = std::conditional_t<kWhole, std::uint32_t, double>;
        typedef Running Running4 __attribute__((vector_size(4 * sizeof(Running))));
        typedef Column Column4 __attribute__((vector_size(4 * sizeof(Column))));
        typedef std::int32_t Int4 __attribute__((vector_size(16)));
        const auto column = [columns](int x) {
            Column4 c;
            std::memcpy(&c, columns + std::ptrdiff_t{4} * x, sizeof c);
            return __builtin_convertvector(c, Running4);
        };
        const auto toFloats = [](Running4 v) {
            if constexpr (kWhole)
                return __builtin_convertvector(Int4(v), Float4);
            else
                return __builtin_convertvector(v, Float4);
        };
        const int side = 2 * _whole + 1;
        const float part = _part, scale = _scale; // the stores could alias the members
        Running4 sum{};
        for (int x = 1; x <= side; ++x)
            sum += column(x);
        for (int x = 0; x < count; ++x) {
            Float4 value = toFloats(sum);
            if (part != 0)
                value += part * (toFloats(column(x)) + toFloats(column(x + side + 1)));
            value *= scale;
            std::memcpy(out + std::ptrdiff_t{4} * x, &value, sizeof value);
            sum += column(x + side + 1) - column(x + 1);
        }
    }

    PixelBlockRef _block;
    ColumnMemory<Window> _memory;
    int _whole;
    Total _one, _outer; // weights of the columns' rows
    float _part, _scale;
};

class BoxNode : public Node {
public:
    BoxNode(Image input, double radius, const IRect& extent)
        : Node(extent), _input(std::move(input)), _box(radius)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        PixelBlockRef block = context.pixels(_input, region.grown(_box.reach(), _box.reach()));
        if (!block)
            return nullptr;
        if (block->format == PixelBlock::Format::Floats)
            return rows<float, double, double>(std::move(block),
                                               std::max(kFewestBits, bitsOf(kBitsOfDoubles, 1)));
        const int bits = bitsOf(31, 255);
        if (bits < 1)
            return rows<std::uint8_t, double, double>(std::move(block), kFewestBits);
        if (2 * _box.whole + 1 > 65535 / 255)
            return rows<std::uint8_t, std::uint32_t, std::uint32_t>(std::move(block), bits);
        return rows<std::uint8_t, std::uint16_t, std::uint32_t>(std::move(block), bits);
    }

private:
    // Wider sums of doubles are not exact to the last bit.
    static constexpr int kFewestBits = 12;
    static constexpr int kBitsOfDoubles = 52 - 24; // less those of the grid

    // How many of the bits remain when all pixels under the box have the largest value.
    int bitsOf(int available, int largest) const
    {
        const double side = _box.side() + 1;
        return available - static_cast<int>(std::ceil(std::log2(largest * side * side)));
    }

    template <class Value, class Sum, class Total>
    EvaluatorRef rows(PixelBlockRef block, int bits) const
    {
        return std::make_shared<BoxRows<Value, Sum, Total>>(std::move(block), _box,
                                                            _box.part == 0 ? 0 : bits);
    }

    Image _input;
    Box _box;
};

} // namespace

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
    const double radius = std::min(positive(inputRadius), kMaximumRadius);
    if (!inputImage || radius == 0 || inputImage.node()->extent().isEmpty())
        return inputImage;
    const int margin = static_cast<int>(std::ceil(radius));
    return Image(
        std::make_shared<BoxNode>(inputImage, radius, grownExtent(inputImage, margin, margin)));
}

} // namespace builtin
