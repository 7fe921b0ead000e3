// The mean of a disc with an antialiased rim.
//
// Of each row of the disc, the pixels that count in full are the difference of two sums from the
// row's beginning, and only those on the rim are read one by one: the cost grows with the radius,
// not with the area.
#include "platform/builtin/blur/DiscBlur.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/Countable.h"
#include "platform/builtin/blur/Extent.h"
#include "platform/builtin/blur/Taps.h"
#include "platform/imaging/KeptRows.h"
#include "platform/imaging/Kernel.h"
#include "platform/imaging/Words.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace builtin {

using namespace imaging;

namespace {

constexpr double kMaximumRadius = 10'000;

struct Disc {
    struct Run {
        int dy, half; // the pixels −half … half count in full
    };
    struct Group {
        float weight;
        std::vector<std::pair<int, int>> places; // dx, dy
    };

    int reach;
    std::vector<Run> runs;
    std::vector<Group> rim; // by their distances from the middle
    double sum = 0;         // of all weights

    explicit Disc(double radius) : reach(static_cast<int>(std::ceil(radius)))
    {
        std::map<std::int64_t, Group> groups;
        for (int dy = -reach; dy <= reach; ++dy) {
            const double height = double{1} * dy * dy;
            const double full = radius - 0.5, beyond = radius + 0.5;
            int dx = -1;
            if (full * full >= height) {
                dx = static_cast<int>(std::sqrt(full * full - height));
                runs.push_back({dy, dx});
                sum += 2 * dx + 1;
            }
            for (++dx; dx <= reach && dx * double(dx) + height < beyond * beyond; ++dx) {
                const std::int64_t square = std::int64_t{dx} * dx + std::int64_t{dy} * dy;
                const double weight = beyond - std::sqrt(static_cast<double>(square));
                Group& g = groups[square];
                g.weight = static_cast<float>(std::min(weight, 1.0));
                for (const int x : {dx, -dx}) {
                    g.places.emplace_back(x, dy);
                    sum += g.weight;
                    if (dx == 0)
                        break;
                }
            }
        }
        for (auto& [square, group] : groups)
            rim.push_back(std::move(group));
    }
};

// Any pixels and any radius, with sums from the beginning of every row.
class PlainDisc : public Evaluator {
public:
    static EvaluatorRef make(PixelBlockRef block, const IRect& needed, const Disc& disc,
                             const RenderContext& context)
    {
        auto rows = std::make_shared<PlainDisc>(std::move(block), needed, disc);
        return rows->sumRows(context) ? rows : nullptr;
    }

    PlainDisc(PixelBlockRef block, const IRect& needed, const Disc& disc)
        : _block(std::move(block)), _rect(_block->rect.intersected(needed)), _runs(disc.runs)
    {
        const double reading = _block->format == PixelBlock::Format::OpaqueBytes ? 255 : 1;
        _scale = 1 / (disc.sum * reading);
        for (const Disc::Group& g : disc.rim)
            for (const auto& [dx, dy] : g.places)
                _rim.push_back({dx, dy, g.weight / disc.sum});
        std::sort(_rim.begin(), _rim.end(), [](const Tap& a, const Tap& b) {
            return std::pair(a.dy, a.dx) < std::pair(b.dy, b.dx);
        });
    }

    void row(const Span& span, const Strip& out) const override
    {
        alignas(32) double sums[4 * kStripWidth];
        alignas(32) float pixels[4 * (kStripWidth + kLanes)];
        std::fill_n(sums, 4 * span.count, 0.0);
        for (const Disc::Run& run : _runs) {
            const int y = span.y + run.dy;
            if (y < _rect.bottom || y >= _rect.top)
                continue;
            addSums(y, span.x + run.half + 1, span.count, std::plus{}, sums);
            addSums(y, span.x - run.half, span.count, std::minus{}, sums);
        }
        for (int i = 0; i < 4 * span.count; ++i)
            pixels[i] = static_cast<float>(sums[i] * _scale);
        addTaps(*_block, _rim, span, pixels);
        for (int i = 0; i < span.count; i += kLanes)
            storePx(out, i, loadInterleaved(pixels + std::ptrdiff_t{4} * i));
    }

private:
    std::ptrdiff_t perRow() const { return std::ptrdiff_t{4} * (_rect.width() + 1); }
    double* sumsOf(int y)
    {
        return reinterpret_cast<double*>(_memory.data()) + (y - _rect.bottom) * perRow();
    }
    const double* sumsOf(int y) const { return const_cast<PlainDisc*>(this)->sumsOf(y); }

    bool sumRows(const RenderContext& context)
    {
        if (_rect.isEmpty())
            return true;
        _memory = FloatBuffer(std::size_t{2} * perRow() * _rect.height());
        if (!_memory)
            return false;
        parallelRows(_rect.bottom, _rect.top, 16, context.threaded(), [&](int first, int last) {
            for (int y = first; y < last && !context.stopped(); ++y)
                if (_block->format == PixelBlock::Format::OpaqueBytes)
                    sumRow(reinterpret_cast<const std::uint8_t*>(_block->pixel(_rect.left, y)), y);
                else
                    sumRow(reinterpret_cast<const float*>(_block->pixel(_rect.left, y)), y);
        });
        return !context.stopped();
    }

    template <class Value>
    void sumRow(const Value* values, int y)
    {
        double* sums = sumsOf(y);
        double sum[4] = {};
        std::copy_n(sum, 4, sums);
        for (int x = 0; x < _rect.width(); ++x) {
            for (int c = 0; c < 4; ++c)
                sum[c] += countable(values[4 * x + c]);
            std::copy_n(sum, 4, sums + std::ptrdiff_t{4} * (x + 1));
        }
    }

    // The sums of all pixels left of x, x + 1, …
    template <class Operation>
    void addSums(int y, int x, int count, const Operation& operation, double* out) const
    {
        const double* row = sumsOf(y);
        const int first = std::clamp(_rect.left - x, 0, count);
        const int last = std::clamp(_rect.right - x, first, count);
        const double* source = row + std::ptrdiff_t{4} * (x + first - _rect.left);
        double* to = out + std::ptrdiff_t{4} * first;
        for (int i = 0; i < 4 * (last - first); ++i)
            to[i] = operation(to[i], source[i]);
        const double* all = row + std::ptrdiff_t{4} * _rect.width();
        for (int i = last; i < count; ++i)
            for (int c = 0; c < 4; ++c)
                out[4 * i + c] = operation(out[4 * i + c], all[c]);
    }

    PixelBlockRef _block;
    IRect _rect;
    std::vector<Disc::Run> _runs;
    std::vector<Tap> _rim;
    double _scale;
    FloatBuffer _memory;
};

// Opaque bytes in whole numbers of 16 bits. Sums of a row may overflow: the difference of two is
// right as long as it does not.
class ByteDisc : public Evaluator {
    static constexpr int kMostAtOnce = 65535 / 255;

public:
    static constexpr int kMaximumReach = kMostAtOnce / 2;

    ByteDisc(PixelBlockRef block, const Disc& disc)
        : _block(std::move(block)), _disc(disc),
          _kept(2 * disc.reach + 1, static_cast<std::size_t>(8 * stride())),
          _scale(static_cast<float>(1 / (255 * disc.sum)))
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        const int reach = _disc.reach;
        Rows::Column& kept = _kept.column(span);
        const std::int16_t* rows[2 * kMaximumReach + 1];
        for (int dy = -reach; dy <= reach; ++dy)
            rows[dy + reach] = rowOf(kept, span, span.y + dy);
        Sources& s = sources();
        s.runs.clear();
        int atOnce = 0;
        for (const Disc::Run& run : _disc.runs) {
            const std::int16_t* row = rows[run.dy + reach];
            if (!row)
                continue;
            const int width = 2 * run.half + 1;
            const bool full = atOnce + width > kMostAtOnce;
            atOnce = full ? width : atOnce + width;
            const std::int16_t* p = row + 4 * stride() + reach;
            s.runs.push_back({p + run.half + 1, p - run.half, full});
        }
        s.rim.clear();
        s.groups.clear();
        for (const Disc::Group& g : _disc.rim) {
            for (const auto& [dx, dy] : g.places)
                if (const std::int16_t* row = rows[dy + reach])
                    s.rim.push_back(row + reach + dx);
            s.groups.push_back({g.weight, s.rim.size()});
        }
        const bool inside = liesInside(*_block, span, reach, reach);
        float* const planes[] = {out.r, out.g, out.b, out.a};
        for (int i = 0; i < span.count; i += 2 * kLanes)
            for (int c = 0; c < (inside ? 3 : 4); ++c)
                sum(s, c * stride(), i, span.count, planes[c]);
        makeOpaque(*_block, span, reach, reach, out);
    }

private:
    // Of four planes of values, and four of the sums of the values before, modulo 2^16.
    using Rows = KeptRowsOf<std::int16_t>;
    struct Sources {
        struct Run {
            const std::int16_t *end, *begin;
            bool afterEmptying; // no more of them fit into 16 bits
        };
        struct Group {
            float weight;
            std::size_t end; // in the rim
        };
        std::vector<Run> runs;
        std::vector<const std::int16_t*> rim;
        std::vector<Group> groups;
    };

    static Sources& sources()
    {
        thread_local Sources s;
        return s;
    }

    // Of a plane: whole lanes are read past the end.
    std::ptrdiff_t stride() const { return kStripWidth + 2 * _disc.reach + 4 * kLanes; }

    // Null for a row that the picture does not have.
    const std::int16_t* rowOf(Rows::Column& kept, const Span& span, int y) const
    {
        if (y < _block->rect.bottom || y >= _block->rect.top)
            return nullptr;
        return kept.row(y, [&](std::int16_t* row) {
            const int count = span.count + 2 * _disc.reach;
            readWords(*_block, span.x - _disc.reach, count, y, true, row, stride());
            for (int c = 0; c < 4; ++c) {
                const std::int16_t* values = row + c * stride();
                std::int16_t* sums = row + (4 + c) * stride();
                unsigned sum = 0;
                for (int i = 0; i < count; ++i) {
                    sums[i] = static_cast<std::int16_t>(sum);
                    sum += static_cast<unsigned>(values[i]);
                }
                sums[count] = static_cast<std::int16_t>(sum);
            }
        });
    }

    void sum(const Sources& s, std::ptrdiff_t plane, int i, int count, float* out) const
    {
        typedef std::uint16_t Words __attribute__((vector_size(4 * kLanes)));
        const auto at = [first = plane + i](const auto* p) {
            Words w;
            std::memcpy(&w, p + first, sizeof w);
            return w;
        };
        // Words with an even place and those with an odd one.
        const auto evens = [](Words w) { return I(IntLanes(w)) & I(0xffff); };
        const auto odds = [](Words w) { return shiftRight(I(IntLanes(w)), 16); };
        I even = 0, odd = 0;
        Words words{};
        for (const Sources::Run& run : s.runs) {
            if (run.afterEmptying) {
                even = even + evens(words);
                odd = odd + odds(words);
                words = Words{};
            }
            words += at(run.end) - at(run.begin);
        }
        even = even + evens(words);
        odd = odd + odds(words);
        F first = toFloat(even), second = toFloat(odd);
        std::size_t k = 0;
        for (const Sources::Group& g : s.groups) {
            words = Words{};
            for (; k < g.end; ++k)
                words += at(s.rim[k]);
            first += F(g.weight) * toFloat(evens(words));
            second += F(g.weight) * toFloat(odds(words));
        }
        zip(first * F(_scale), second * F(_scale), first, second);
        store(out + i, first);
        if (i + kLanes < count)
            store(out + i + kLanes, second);
    }

    PixelBlockRef _block;
    Disc _disc;
    Rows _kept;
    float _scale;
};

class DiscNode : public Node {
public:
    DiscNode(Image input, double radius, const IRect& extent)
        : Node(extent), _input(std::move(input)), _disc(radius)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const IRect needed = region.grown(_disc.reach, _disc.reach);
        PixelBlockRef block = context.pixels(_input, needed);
        if (!block)
            return nullptr;
        if (block->format == PixelBlock::Format::OpaqueBytes &&
            _disc.reach <= ByteDisc::kMaximumReach)
            return std::make_shared<ByteDisc>(std::move(block), _disc);
        return PlainDisc::make(std::move(block), needed, _disc, context);
    }

private:
    Image _input;
    Disc _disc;
};

} // namespace

void DiscBlur::initialize(FilterRegistry& registry)
{
    using T = DiscBlur;
    add<T>(registry, "CIDiscBlur", "Disc Blur", {"Blur", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 100)},
           });
}

Image DiscBlur::outputImage() const
{
    const double radius = std::min(positive(inputRadius), kMaximumRadius);
    if (!inputImage || radius <= 0.5 || inputImage.node()->extent().isEmpty())
        return inputImage;
    const int margin = static_cast<int>(std::ceil(radius));
    return Image(
        std::make_shared<DiscNode>(inputImage, radius, grownExtent(inputImage, margin, margin)));
}

} // namespace builtin
