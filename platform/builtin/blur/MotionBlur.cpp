// The mean along a line through each pixel.
//
// The samples lie at the same fractions of a pixel everywhere, so their bilinear weights add up to
// one weight for each whole-pixel distance.
#include "platform/builtin/blur/MotionBlur.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/BoxBlur.h"
#include "platform/builtin/blur/Extent.h"
#include "platform/builtin/blur/Taps.h"
#include "platform/imaging/KeptRows.h"
#include "platform/imaging/Kernel.h"
#include "platform/imaging/Words.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace builtin {

using namespace imaging;

namespace {

constexpr double kMaximumRadius = 10'000;

// 2n + 1 samples from −radius to +radius along the angle, row by row, left to right.
std::vector<Tap> tapsAlong(double radius, double angle)
{
    const int n = static_cast<int>(std::ceil(radius));
    // So fine that nothing shows of it, so coarse that a right angle is one.
    const auto rounded = [](double v) { return std::ldexp(std::round(std::ldexp(v, 24)), -24); };
    std::map<std::pair<int, int>, double> weights;
    const double part = 1.0 / (2 * n + 1);
    weights[{0, 0}] = part;
    for (int k = 1; k <= n; ++k) {
        const double x = rounded(radius * k / n * std::cos(angle));
        const double y = rounded(radius * k / n * std::sin(angle));
        const double tx = x - std::floor(x), ty = y - std::floor(y);
        const int left = static_cast<int>(std::floor(x)), low = static_cast<int>(std::floor(y));
        for (int j = 0; j < 2; ++j)
            for (int i = 0; i < 2; ++i) {
                const double w = (i ? tx : 1 - tx) * (j ? ty : 1 - ty) * part;
                if (w == 0)
                    continue;
                // The line's two halves mirror each other.
                weights[{low + j, left + i}] += w;
                weights[{-low - j, -left - i}] += w;
            }
    }
    std::vector<Tap> taps;
    for (const auto& [place, weight] : weights)
        taps.push_back({place.second, place.first, weight});
    return taps;
}

// The taps as they are, over the pixels that there are.
class PlainTaps : public Evaluator {
public:
    PlainTaps(PixelBlockRef block, std::vector<Tap> taps)
        : _block(std::move(block)), _taps(std::move(taps))
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        alignas(32) float sums[4 * (kStripWidth + kLanes)];
        std::fill_n(sums, 4 * (span.count + kLanes), 0.0f);
        addTaps(*_block, _taps, span, sums);
        for (int i = 0; i < span.count; i += kLanes)
            storePx(out, i, loadInterleaved(sums + std::ptrdiff_t{4} * i));
    }

private:
    PixelBlockRef _block;
    std::vector<Tap> _taps;
};

// The taps over opaque bytes in whole numbers, two neighbours at a time.
class ByteTaps : public Evaluator {
public:
    // Of the taps' distances. Rows that wide and high are kept by each thread.
    static constexpr int kMaximumReach = 128;

    ByteTaps(PixelBlockRef block, const std::vector<Tap>& taps, int reachX, int reachY)
        : _block(std::move(block)), _reachX(reachX), _reachY(reachY),
          _kept(2 * reachY + 1, static_cast<std::size_t>(4 * stride()))
    {
        double largest = 0;
        for (const Tap& t : taps)
            largest = std::max(largest, t.weight);
        // As fine as 16 bits hold the largest weight and 31 the sum of bytes.
        const double scale = std::min(32767 / largest, double{1 << 23} - taps.size());
        const auto whole = [&](const Tap& t) { return static_cast<int>(t.weight * scale + 0.5); };
        int sum = 0;
        for (std::size_t i = 0; i < taps.size(); ++i) {
            const bool paired = i + 1 < taps.size() && taps[i + 1].dy == taps[i].dy &&
                                taps[i + 1].dx == taps[i].dx + 1;
            const int first = whole(taps[i]), second = paired ? whole(taps[i + 1]) : 0;
            _pairs.push_back({taps[i].dx, taps[i].dy, pairOfWeights(first, second)});
            sum += first + second;
            i += paired;
        }
        _scale = static_cast<float>(1 / (255.0 * sum));
    }

    void row(const Span& span, const Strip& out) const override
    {
        const IRect& r = _block->rect;
        const bool inside = liesInside(*_block, span, _reachX, _reachY);
        Rows::Column& kept = _kept.column(span);
        // Pairs whose row the picture has.
        thread_local std::vector<Source> sources;
        sources.clear();
        int at = std::numeric_limits<int>::min();
        const std::int16_t* words = nullptr;
        for (const Pair& p : _pairs) {
            const int y = span.y + p.dy;
            if (y < r.bottom || y >= r.top)
                continue;
            if (y != at)
                words = rowOf(kept, span, at = y);
            sources.push_back({words + _reachX + p.dx, p.weights});
        }
        for (int i = 0; i < span.count; i += 2 * kLanes)
            sum(sources, i, span.count, stride(), !inside, out);
        makeOpaque(*_block, span, _reachX, _reachY, out);
    }

private:
    struct Pair {
        int dx, dy;
        I weights;
    };
    struct Source {
        const std::int16_t* words;
        I weights;
    };
    using Rows = KeptRowsOf<std::int16_t>; // of four planes

    // Of a plane: the second neighbour and whole lanes are read past the end.
    std::ptrdiff_t stride() const { return kStripWidth + 2 * _reachX + 4 * kLanes; }

    const std::int16_t* rowOf(Rows::Column& kept, const Span& span, int y) const
    {
        return kept.row(y, [&](std::int16_t* words) {
            readWords(*_block, span.x - _reachX, span.count + 2 * _reachX, y, true, words,
                      stride());
        });
    }

    void sum(const std::vector<Source>& sources, int i, int count, std::ptrdiff_t stride,
             bool withAlpha, const Strip& out) const
    {
        I r0 = 0, r1 = 0, g0 = 0, g1 = 0, b0 = 0, b1 = 0;
        for (const Source& s : sources) {
            const std::int16_t *r = s.words + i, *g = r + stride, *b = g + stride;
            r0 = r0 + sumPairs(r, s.weights);
            r1 = r1 + sumPairs(r + 1, s.weights);
            g0 = g0 + sumPairs(g, s.weights);
            g1 = g1 + sumPairs(g + 1, s.weights);
            b0 = b0 + sumPairs(b, s.weights);
            b1 = b1 + sumPairs(b + 1, s.weights);
        }
        put(r0, r1, i, count, out.r);
        put(g0, g1, i, count, out.g);
        put(b0, b1, i, count, out.b);
        if (!withAlpha)
            return;
        I a0 = 0, a1 = 0;
        for (const Source& s : sources) {
            const std::int16_t* a = s.words + i + 3 * stride;
            a0 = a0 + sumPairs(a, s.weights);
            a1 = a1 + sumPairs(a + 1, s.weights);
        }
        put(a0, a1, i, count, out.a);
    }

    void put(I even, I odd, int i, int count, float* out) const
    {
        I first, second;
        zip(even, odd, first, second);
        store(out + i, toFloat(first) * F(_scale));
        if (i + kLanes < count)
            store(out + i + kLanes, toFloat(second) * F(_scale));
    }

    PixelBlockRef _block;
    std::vector<Pair> _pairs;
    int _reachX, _reachY;
    Rows _kept;
    float _scale;
};

class MotionNode : public Node {
public:
    MotionNode(Image input, std::vector<Tap> taps, const IRect& extent)
        : Node(extent), _input(std::move(input)), _taps(std::move(taps))
    {
        for (const Tap& t : _taps) {
            _reachX = std::max(_reachX, std::abs(t.dx));
            _reachY = std::max(_reachY, std::abs(t.dy));
        }
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        PixelBlockRef block = context.pixels(_input, region.grown(_reachX, _reachY));
        if (!block)
            return nullptr;
        if (block->format == PixelBlock::Format::OpaqueBytes &&
            std::max(_reachX, _reachY) <= ByteTaps::kMaximumReach)
            return std::make_shared<ByteTaps>(std::move(block), _taps, _reachX, _reachY);
        return std::make_shared<PlainTaps>(std::move(block), _taps);
    }

private:
    Image _input;
    std::vector<Tap> _taps;
    int _reachX = 0, _reachY = 0;
};

} // namespace

void MotionBlur::initialize(FilterRegistry& registry)
{
    using T = MotionBlur;
    add<T>(registry, "CIMotionBlur", "Motion Blur", {"Blur", "StillImage", "Video", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 100).identity(0)},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
           });
}

Image MotionBlur::outputImage() const
{
    const double radius = std::min(positive(inputRadius), kMaximumRadius);
    if (!inputImage || radius == 0 || inputImage.node()->extent().isEmpty())
        return inputImage;
    const double angle = std::isfinite(inputAngle) ? inputAngle : 0;
    // The cosine of a right angle is not quite 0.
    const auto margin = [&](double part) {
        return static_cast<int>(std::ceil(radius * std::abs(part) - 1e-9));
    };
    std::vector<Tap> taps = tapsAlong(radius, angle);
    // Along a row or a column, by whole pixels.
    const Tap& end = taps.back();
    if ((end.dx == 0 || end.dy == 0) && end.dx + end.dy == radius)
        return boxMean(inputImage, end.dx, end.dy);
    return Image(std::make_shared<MotionNode>(
        inputImage, std::move(taps),
        grownExtent(inputImage, margin(std::cos(angle)), margin(std::sin(angle)))));
}

} // namespace builtin
