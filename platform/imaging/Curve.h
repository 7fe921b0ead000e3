// A costly function of each colour component on its own.
#pragma once

#include "platform/imaging/Kernel.h"

#include <array>
#include <memory>

namespace imaging {
inline namespace CIF_LANES_NAMESPACE {
namespace detail {

template <class Curve>
class CurveNode : public Node {
public:
    CurveNode(Image input, const Curve& curve)
        : Node(input.node()->extent()), _input(std::move(input)), _curve(curve)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        EvaluatorRef input = context.evaluator(_input, region);
        return input ? std::make_shared<Rows>(std::move(input), _curve) : nullptr;
    }

private:
    class Rows : public Evaluator {
    public:
        Rows(EvaluatorRef input, const Curve& curve) : _input(std::move(input)), _curve(curve)
        {
            for (int i = 0; i < 256; i += kLanes)
                store(_ofBytes.data() + i, _curve(fraction(iotaInts() + I(i))));
        }

        void row(const Span& span, const Strip& out) const override
        {
            _input->row(span, out);
            std::array<std::array<int, kStripWidth + kLanes>, 3> bytes;
            if (areBytes(out, span.count, bytes)) {
                const float* const table = _ofBytes.data();
                for (int i = 0; i < span.count; ++i) {
                    out.r[i] = table[bytes[0][i]];
                    out.g[i] = table[bytes[1][i]];
                    out.b[i] = table[bytes[2][i]];
                }
                return;
            }
            const auto each = [curve = _curve](Rgb u) {
                return Rgb{curve(u.r), curve(u.g), curve(u.b)};
            };
            overLanes(
                span.count, out, ColorKernel<decltype(each)>{each},
                [](const auto& kernel, const Strip& s, int i) { return kernel(loadPx(s, i)); });
        }

    private:
        // As bytes are unpacked.
        static F fraction(I byte) { return toFloat(byte) * F(1.0f / 255); }

        // Whether all pixels are opaque and their components whole bytes: which ones.
        template <class Bytes>
        static bool areBytes(const Strip& strip, int count, Bytes& bytes)
        {
            for (int i = 0; i < count; i += kLanes) {
                const Px p = loadPx(strip, i);
                // What lies beyond the strip does not count.
                M good = p.a == F(1.0f);
                const auto put = [&](int component, F x) {
                    const I byte = toInt(clamp01(x) * F(255.0f) + F(0.5f));
                    storeInts(bytes[component].data() + i, byte);
                    good = good & (fraction(byte) == x);
                };
                put(0, p.r), put(1, p.g), put(2, p.b);
                if (!all(good | !(iota() < F(count - i))))
                    return false;
            }
            return true;
        }

        EvaluatorRef _input;
        Curve _curve;
        std::array<float, 256> _ofBytes;
    };

    Image _input;
    Curve _curve;
};

} // namespace detail

// F f(F): each component of the unpremultiplied colour. Extent and alpha unchanged. Rows of whole
// bytes, which most pictures consist of, take from a table what f makes of them.
template <class Curve>
Image mapCurve(const Image& image, const Curve& curve)
{
    return image ? Image(std::make_shared<detail::CurveNode<Curve>>(image, curve)) : Image();
}

} // namespace CIF_LANES_NAMESPACE
} // namespace imaging
