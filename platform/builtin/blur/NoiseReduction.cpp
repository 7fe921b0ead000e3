// Averages small differences away and sharpens large ones.
//
// Each pixel becomes the mean of those of its 5 × 5 neighbours that differ little in luminance.
// How few these are tells how much of an edge there is, and by as much the pixel is set off from
// the plain mean.
#include "platform/builtin/blur/NoiseReduction.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/Cover.h"
#include "platform/imaging/KeptRows.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>

namespace builtin {

using namespace imaging;

namespace {

constexpr int kReach = 2, kRows = 2 * kReach + 1;
// 1-4-6-4-1 both ways.
constexpr float kBinomial[kRows] = {1 / 16.f, 4 / 16.f, 6 / 16.f, 4 / 16.f, 1 / 16.f};
constexpr float kMiddle = kBinomial[kReach] * kBinomial[kReach];

// The planes of one row: the picture, and what is worked out once for each of its pixels. Each
// begins two pixels to the left of the span.
enum Plane { Red, Green, Blue, Alpha, Luma, BlurredRed, BlurredGreen, BlurredBlue, BlurredAlpha };
constexpr int kPlanes = BlurredAlpha + 1;
constexpr std::size_t kPlane = kStripWidth + 32;
constexpr std::size_t kOpaqueFlag = kPlanes * kPlane;

const float* at(const float* row, Plane plane, int i)
{
    return row + plane * kPlane + kReach + i;
}
// Four planes, of which alpha is 1 and not looked at in opaque rows.
template <bool kOpaque>
Px color(const float* row, Plane first, int i)
{
    const float* p = at(row, first, i);
    return {load(p), load(p + kPlane), load(p + 2 * kPlane),
            kOpaque ? F(1.0f) : load(p + 3 * kPlane)};
}

// Five neighbours, a plane's length or a row apart.
template <class Get>
auto binomial(const Get& get)
{
    return (get(0) + get(4)) * F(kBinomial[0]) + (get(1) + get(3)) * F(kBinomial[1]) +
           get(2) * F(kBinomial[2]);
}

// kLanes pixels of a block, of which only `count` are there.
Px pixelsAt(const PixelBlock& block, const std::byte* p, int count)
{
    alignas(32) std::byte tail[16 * kLanes];
    if (count < kLanes) {
        std::memset(tail, 0, sizeof tail);
        std::memcpy(tail, p, std::size_t(count) * block.bytesPerPixel());
        p = tail;
    }
    return block.format == PixelBlock::Format::OpaqueBytes
               ? unpackBytes(loadInts(p))
               : loadInterleaved(reinterpret_cast<const float*>(p));
}

class Rows : public Evaluator {
public:
    Rows(PixelBlockRef block, const IRect& extent, double level, double sharpness)
        : _block(std::move(block)), _extent(extent), _kept(kRows, kOpaqueFlag + 1),
          _perLevel(level > 0 ? float(1 / std::clamp(level, 1e-6, 1e6)) : 0.0f),
          _edge(level > 0 ? 2.0f : 0.0f), _sharpness(float(std::min(sharpness, 1e6)))
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        KeptRows::Column& kept = _kept.column(span);
        const float* rows[kRows];
        bool opaque = true;
        for (int j = 0; j < kRows; ++j) {
            const int y = std::clamp(span.y + j - kReach, _extent.bottom, _extent.top - 1);
            rows[j] = kept.row(y, [&](float* row) { prepare(span, y, row); });
            opaque = opaque && rows[j][kOpaqueFlag] != 0;
        }
        if (opaque)
            reduce<true>(rows, span.count, out);
        else
            reduce<false>(rows, span.count, out);
    }

private:
    void prepare(const Span& span, int y, float* row) const
    {
        const int left = span.x - kReach, right = span.x + span.count + kReach;
        const int first = std::max(left, _extent.left), last = std::min(right, _extent.right);
        M opaque{I(-1).v};
        const std::byte* pixels = _block->pixel(first, y);
        for (int i = 0; i < last - first; i += kLanes) {
            const int count = std::min(kLanes, last - first - i);
            const Px c =
                pixelsAt(*_block, pixels + std::ptrdiff_t{i} * _block->bytesPerPixel(), count);
            opaque = opaque & ((c.a == F(1.0f)) | !(iotaInts() < I(count)));
            float* p = row + (first - left) + i;
            store(p + Red * kPlane, c.r);
            store(p + Green * kPlane, c.g);
            store(p + Blue * kPlane, c.b);
            store(p + Alpha * kPlane, c.a);
            store(p + Luma * kPlane, luminance(c) * F(_perLevel));
        }
        row[kOpaqueFlag] = all(opaque) ? 1.0f : 0.0f;
        // Beyond the picture its border goes on.
        for (int plane = Red; plane <= Luma; ++plane) {
            float* p = row + plane * kPlane;
            std::fill_n(p, first - left, p[first - left]);
            std::fill_n(p + (last - left), right - last, p[last - left - 1]);
        }
        if (_sharpness == 0)
            return;
        for (int plane = Red; plane <= Alpha; ++plane)
            for (int i = 0; i < span.count; i += kLanes) {
                const float* p = at(row, Plane(plane), i) - kReach;
                store(row + (BlurredRed + plane) * kPlane + kReach + i,
                      binomial([&](int j) { return load(p + j); }));
            }
    }

    template <bool kOpaque>
    void reduce(const float* const (&given)[kRows], int count, const Strip& out) const
    {
        const float* const rows[kRows] = {given[0], given[1], given[2], given[3], given[4]};
        const F edge = _edge, sharpness = _sharpness;
        const bool sharpens = _sharpness != 0;
        for (int i = 0; i < count; i += kLanes) {
            const Px own = color<kOpaque>(rows[kReach], Red, i);
            const F ownLuma = load(at(rows[kReach], Luma, i));
            F weights = kMiddle;
            Px sum = own * F(kMiddle);
#pragma GCC unroll 5
            for (int j = 0; j < kRows; ++j)
#pragma GCC unroll 5
                for (int dx = -kReach; dx <= kReach; ++dx) {
                    if (j == kReach && dx == 0)
                        continue;
                    const float w = kBinomial[j] * kBinomial[dx + kReach];
                    // Distances in noise levels: all of the weight up to 1, none from 2 on.
                    const F u = clamp01(edge - abs(load(at(rows[j], Luma, i + dx)) - ownLuma));
                    const F weight = u * u * (F(3 * w) - F(2 * w) * u);
                    weights += weight;
                    sum = sum + color<kOpaque>(rows[j], Red, i + dx) * weight;
                }
            if (kOpaque)
                sum.a = weights;
            Rgb c = cover(sum, own);
            if (sharpens) {
                const Px blurred =
                    binomial([&](int j) { return color<kOpaque>(rows[j], BlurredRed, i); });
                const F e = (F(1.0f) - weights) * F(1 / (1 - kMiddle));
                c = c + (Rgb{own.r, own.g, own.b} - cover(blurred, own)) * (sharpness * e);
            }
            storePx(out, i, {max(c.r, 0.0f), max(c.g, 0.0f), max(c.b, 0.0f), own.a});
        }
    }

    PixelBlockRef _block;
    IRect _extent;
    KeptRows _kept;
    float _perLevel; // luminances are kept in noise levels
    float _edge;     // from how many levels on a difference is an edge
    float _sharpness;
};

class NoiseReductionNode : public Node {
public:
    NoiseReductionNode(Image input, double level, double sharpness)
        : Node(input.node()->extent()), _input(std::move(input)), _level(level),
          _sharpness(sharpness)
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        PixelBlockRef block = context.pixels(_input, region.grown(kReach, kReach));
        return block ? std::make_shared<Rows>(std::move(block), extent(), _level, _sharpness)
                     : nullptr;
    }

private:
    Image _input;
    double _level, _sharpness;
};

} // namespace

Image noiseReduction(const Image& image, double level, double sharpness)
{
    level = positive(level);
    sharpness = positive(sharpness);
    if (!image || image.extent().isEmpty() || (level == 0 && sharpness == 0))
        return image;
    return Image(std::make_shared<NoiseReductionNode>(image, level, sharpness));
}

void NoiseReduction::initialize(FilterRegistry& registry)
{
    using T = NoiseReduction;
    add<T>(registry, "CINoiseReduction", "Noise Reduction",
           {"Blur", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputNoiseLevel", &T::inputNoiseLevel, "Noise Level",
                scalar().min(0).slider(0, 0.1).identity(0)},
               {"inputSharpness", &T::inputSharpness, "Sharpness",
                scalar().min(0).slider(0, 2).identity(0)},
           });
}

Image NoiseReduction::outputImage() const
{
    return noiseReduction(inputImage, inputNoiseLevel, inputSharpness);
}

} // namespace builtin
