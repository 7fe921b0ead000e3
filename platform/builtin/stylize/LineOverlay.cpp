// The picture's edges as black lines on nothing.
//
// A line is where the slightly blurred picture changes fast: the blur joins the lines and drops
// specks. All components count, or a red petal on a leaf of the same luminance would have no
// outline. The rows are blurred here, as they come: nothing but a few rows of a tile is stored.
#include "platform/builtin/stylize/LineOverlay.h"

#include "platform/builtin/Gradient.h"
#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/NoiseReduction.h"
#include "platform/imaging/KeptRows.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

// A Gaussian of one pixel.
constexpr int kReach = 3, kTaps = 2 * kReach + 1;
std::array<float, kTaps> gaussianOfOnePixel()
{
    double sum = 0;
    for (int k = -kReach; k <= kReach; ++k)
        sum += std::exp(-0.5 * k * k);
    std::array<float, kTaps> weights;
    for (int k = -kReach; k <= kReach; ++k)
        weights[k + kReach] = static_cast<float>(std::exp(-0.5 * k * k) / sum);
    return weights;
}

// Rows are planar: red, green, blue and alpha. Each plane begins a margin to the left of the span
// and is as much longer than that to the right.
constexpr int kMargin = kReach + 1;
constexpr std::size_t kPlane = kStripWidth + 32;
constexpr int kColors = 3;

class Lines : public Evaluator {
public:
    Lines(EvaluatorRef input, const IRect& extent, float intensity, float threshold, float contrast)
        : _input(std::move(input)), _extent(extent), _blurredAcross(kTaps + 1, 4 * kPlane),
          _blurred(3, kColors * kPlane), _weights(gaussianOfOnePixel()), _intensity(intensity),
          _threshold(threshold), _contrast(contrast)
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        KeptRows::Column& across = _blurredAcross.column(span);
        KeptRows::Column& kept = _blurred.column(span);
        const float* rows[3];
        for (int j = 0; j < 3; ++j) {
            const int y = limited(span.y + j - 1);
            rows[j] = kept.row(y, [&](float* row) { blurUp(across, span, y, row); });
        }
        const float* alpha = rowAcross(across, span, span.y) + kColors * kPlane;
        for (int i = 0; i < span.count; i += kLanes) {
            F energy = 0.0f;
            for (int c = 0; c < kColors; ++c) {
                const Vec2 slope = gradient([&](int dx, int dy) {
                    return load(rows[dy + 1] + c * kPlane + kMargin + i + dx);
                });
                energy += dot(slope, slope);
            }
            const F g = F(_intensity) * sqrt(energy * F(1.0f / kColors));
            const F v = clamp01((g - F(_threshold)) * F(_contrast));
            storePx(out, i, {0.0f, 0.0f, 0.0f, v * load(alpha + kMargin + i)});
        }
    }

private:
    int limited(int y) const { return std::clamp(y, _extent.bottom, _extent.top - 1); }

    // The blurred colours of one pixel more on each side than the span has.
    void blurUp(KeptRows::Column& across, const Span& span, int y, float* out) const
    {
        const float* rows[kTaps];
        for (int j = 0; j < kTaps; ++j)
            rows[j] = rowAcross(across, span, limited(y + j - kReach));
        for (std::size_t c = 0; c < kColors * kPlane; c += kPlane)
            weightedSum(span, out + c, [&](int i, int j) { return load(rows[j] + c + i); });
    }

    // The colours blurred across, of one pixel more on each side than the span has, and the alpha,
    // of a row within the extent.
    const float* rowAcross(KeptRows::Column& across, const Span& span, int y) const
    {
        return across.row(y, [&](float* row) {
            alignas(32) float colors[kColors * kPlane];
            read(span, y, colors, row + kColors * kPlane);
            for (std::size_t c = 0; c < kColors * kPlane; c += kPlane) {
                weightedSum(span, row + c,
                            [&](int i, int j) { return load(colors + c + i + j - kReach); });
                // Beyond the picture the blurred border goes on, not the blur of what goes on.
                float* first = row + c + kMargin;
                float* last = first + span.count - 1;
                if (span.x == _extent.left)
                    first[-1] = *first;
                if (span.x + span.count == _extent.right)
                    last[1] = *last;
            }
        });
    }

    template <class Tap>
    void weightedSum(const Span& span, float* out, const Tap& tap) const
    {
        for (int i = kMargin - 1; i < kMargin + span.count + 1; i += kLanes) {
            F sum = 0.0f;
            for (int j = 0; j < kTaps; ++j)
                sum += F(_weights[j]) * tap(i, j);
            store(out + i, sum);
        }
    }

    // The pixels of the span and its margins.
    void read(const Span& span, int y, float* colors, float* alpha) const
    {
        const int left = span.x - kMargin, right = span.x + span.count + kMargin;
        const int first = std::max(left, _extent.left), last = std::min(right, _extent.right);
        StripBuffer buffer;
        const Strip strip = buffer.strip();
        for (int x = first; x < last;) {
            const int next = std::min(last, (x & ~(kStripWidth - 1)) + kStripWidth);
            _input->row({x, y, next - x}, strip);
            float* p = colors + (x - left);
            std::copy_n(strip.r, next - x, p);
            std::copy_n(strip.g, next - x, p + kPlane);
            std::copy_n(strip.b, next - x, p + 2 * kPlane);
            std::copy_n(strip.a, next - x, alpha + (x - left));
            x = next;
        }
        for (int c = 0; c < kColors; ++c) {
            float* p = colors + c * kPlane;
            std::fill_n(p, first - left, p[first - left]);
            std::fill_n(p + (last - left), right - last, p[last - left - 1]);
        }
    }

    EvaluatorRef _input;
    IRect _extent;
    KeptRows _blurredAcross, _blurred;
    std::array<float, kTaps> _weights;
    float _intensity, _threshold, _contrast;
};

class LinesNode : public Node {
public:
    LinesNode(Image input, double intensity, double threshold, double contrast)
        : Node(input.node()->extent()), _input(std::move(input)),
          _intensity(static_cast<float>(intensity)), _threshold(static_cast<float>(threshold)),
          _contrast(static_cast<float>(contrast))
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        EvaluatorRef input =
            context.evaluator(_input, region.grown(kMargin, kMargin).intersected(extent()));
        return input ? std::make_shared<Lines>(std::move(input), extent(), _intensity, _threshold,
                                               _contrast)
                     : nullptr;
    }

private:
    Image _input;
    float _intensity, _threshold, _contrast;
};

} // namespace

Image edgeLines(const Image& smooth, double intensity, double threshold, double contrast)
{
    if (!smooth || smooth.extent().isEmpty())
        return smooth;
    // Three times the slope.
    return Image(std::make_shared<LinesNode>(smooth, 3 * std::min(positive(intensity), 1e6),
                                             threshold, std::min(positive(contrast), 1e6)));
}

void LineOverlay::initialize(FilterRegistry& registry)
{
    using T = LineOverlay;
    add<T>(registry, "CILineOverlay", "Line Overlay", {"BuiltIn", "StillImage", "Video", "Stylize"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputNRNoiseLevel", &T::inputNRNoiseLevel, "NR Noise Level",
                scalar().min(0).slider(0, 0.1).identity(0)},
               {"inputNRSharpness", &T::inputNRSharpness, "NR Sharpness",
                scalar().min(0).slider(0, 2).identity(0)},
               {"inputEdgeIntensity", &T::inputEdgeIntensity, "Edge Intensity",
                scalar().min(0).slider(0, 200).identity(0)},
               {"inputThreshold", &T::inputThreshold, "Threshold",
                scalar().min(0).slider(0, 1).identity(0)},
               {"inputContrast", &T::inputContrast, "Contrast",
                scalar().min(0.25).slider(0.25, 200).identity(1)},
           });
}

Image LineOverlay::outputImage() const
{
    return edgeLines(noiseReduction(inputImage, inputNRNoiseLevel, inputNRSharpness),
                     inputEdgeIntensity, inputThreshold, inputContrast);
}

} // namespace builtin
