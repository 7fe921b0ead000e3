// How a formula becomes an image: one function for each kind of node.
//
//   mapColor(image, f)               Rgb f(Rgb)                   one pixel's unpremultiplied
//   colour mapPixels(image, f)              Px f(Px)                     one pixel, premultiplied
//   generate(f)                      Px f(Coord)                  position alone; infinite
//   generatePixels(f)                Px f(I column, int row)      the same, by whole pixels
//   combine(a, b, extent, f)         Px f(Px, Px)                 the same pixel of two images
//   neighborhood(image, margin, f)   Px f(const auto& window)     pixels up to `margin` away
//   warp(image, extent, reach, f)    Px f(const auto& image, Coord)   samples anywhere
//   guidedWarp(guide, image, …, f)   Px f(Px, const auto& image, Coord)   the same, steered by a
//                                    pixel of another image
//
// f is a pure function over lanes of pixels, with its numbers captured or held as fields; it is
// inlined into a row function that the engine calls once for a strip. Choose the narrowest kind
// that will do: it decides what the engine may skip or fuse. A missing image gives a missing image.
#pragma once

#include "platform/imaging/Image.h"
#include "platform/imaging/Node.h"
#include "platform/imaging/Pixel.h"
#include "platform/imaging/Sampler.h"

#include <functional>
#include <utility>

namespace imaging {

// Which part of the input a warp reads for a region of its output. Only asked for inputs that have
// to be computed first.
class Reach {
public:
    // Anything: the whole extent (of an infinite input, the region and 4096 pixels around it).
    static Reach anywhere() { return Reach({}); }
    // At most so many pixels away.
    static Reach within(double margin);
    // Where the region goes under the map from output to input.
    static Reach through(const AffineTransform& map);
    // Whatever the function says, in whole pixels or not; one pixel for the sample is added to it.
    static Reach of(std::function<Rect(const Rect&)> need) { return Reach(std::move(need)); }

    IRect neededFor(const IRect& region, const IRect& inputExtent) const;

private:
    explicit Reach(std::function<Rect(const Rect&)> need) : _need(std::move(need)) {}
    std::function<Rect(const Rect&)> _need;
};

// What a neighbourhood reads beyond the image's extent.
enum class Border { Transparent, Clamped };

// A piece of a block with room for the margin around a span, whole lanes of any level included: the
// block's own pixels where they suffice, else a copy padded by the border rule.
class WindowSource {
public:
    // The address of the first pixel of the span.
    const std::byte* center(const PixelBlock& block, const IRect& extent, const Span& span,
                            int margin, Border border);
    std::ptrdiff_t bytesPerRow() const { return _bytesPerRow; }

private:
    std::ptrdiff_t _bytesPerRow = 0;
};

inline namespace CIF_LANES_NAMESPACE {
namespace detail {

// Stores pixel(kernel, strip, i) for every kLanes pixels of the strip. Kernel, strip and count are
// copied first: a store could alias the originals, and they would be read again for every pixel.
template <class Kernel, class Pixel>
inline void overLanes(int count, Strip strip, Kernel kernel, const Pixel& pixel)
{
    for (int i = 0; i < count; i += kLanes)
        storePx(strip, i, pixel(kernel, strip, i));
}

template <class Kernel>
class MapEvaluator : public Evaluator {
public:
    MapEvaluator(EvaluatorRef input, const Kernel& kernel)
        : _input(std::move(input)), _kernel(kernel)
    {
    }
    void row(const Span& span, const Strip& out) const override
    {
        _input->row(span, out);
        overLanes(span.count, out, _kernel,
                  [](const Kernel& kernel, const Strip& s, int i) { return kernel(loadPx(s, i)); });
    }

private:
    EvaluatorRef _input;
    Kernel _kernel;
};

template <class Kernel>
class MapNode : public Node {
public:
    MapNode(Image input, const Kernel& kernel)
        : Node(input.node()->extent()), _input(std::move(input)), _kernel(kernel)
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        EvaluatorRef input = context.evaluator(_input, region);
        return input ? std::make_shared<MapEvaluator<Kernel>>(std::move(input), _kernel) : nullptr;
    }

private:
    Image _input;
    Kernel _kernel;
};

template <class Kernel>
struct ColorKernel {
    Kernel kernel;

    Px operator()(Px p) const
    {
        // Opaque pixels need no division.
        if (all(p.a == F(1.0f))) [[likely]] {
            const Rgb c = kernel(Rgb{p.r, p.g, p.b});
            return {c.r, c.g, c.b, p.a};
        }
        const Rgb c = kernel(unpremultiplied(p));
        // What has no alpha has no colour, whatever the formula made of it.
        const Px q = premultiplied(c, p.a);
        return select(p.a == F(0.0f), transparent(), q);
    }
};

template <class Kernel>
class GenerateNode : public Node {
public:
    explicit GenerateNode(const Kernel& kernel) : Node(IRect::plane()), _kernel(kernel) {}
    EvaluatorRef prepare(const IRect&, RenderContext&) const override
    {
        struct Rows : Evaluator {
            explicit Rows(const Kernel& k) : kernel(k) {}
            void row(const Span& span, const Strip& out) const override
            {
                overLanes(span.count, out, kernel,
                          [at = span](const Kernel& k, const Strip&, int i) {
                              return k(pixelCenters(at, i));
                          });
            }
            Kernel kernel;
        };
        return std::make_shared<Rows>(_kernel);
    }

private:
    Kernel _kernel;
};

template <class Kernel>
class GeneratePixelsNode : public Node {
public:
    explicit GeneratePixelsNode(const Kernel& kernel) : Node(IRect::plane()), _kernel(kernel) {}
    EvaluatorRef prepare(const IRect&, RenderContext&) const override
    {
        struct Rows : Evaluator {
            explicit Rows(const Kernel& k) : kernel(k) {}
            void row(const Span& span, const Strip& out) const override
            {
                overLanes(span.count, out, kernel,
                          [at = span](const Kernel& k, const Strip&, int i) {
                              return k(I(at.x + i) + iotaInts(), at.y);
                          });
            }
            Kernel kernel;
        };
        return std::make_shared<Rows>(_kernel);
    }

private:
    Kernel _kernel;
};

template <class Kernel>
class CombineNode : public Node {
public:
    CombineNode(Image a, Image b, const IRect& extent, const Kernel& kernel)
        : Node(extent), _a(std::move(a)), _b(std::move(b)), _kernel(kernel)
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        struct Rows : Evaluator {
            Rows(EvaluatorRef first, EvaluatorRef second, const Kernel& k)
                : a(std::move(first)), b(std::move(second)), kernel(k)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                StripBuffer second;
                const Strip other = second.strip();
                a->row(span, out);
                b->row(span, other);
                overLanes(span.count, out, kernel, [other](const Kernel& k, const Strip& s, int i) {
                    return k(loadPx(s, i), loadPx(other, i));
                });
            }
            EvaluatorRef a, b;
            Kernel kernel;
        };
        EvaluatorRef a = context.evaluator(_a, region);
        EvaluatorRef b = context.evaluator(_b, region);
        return a && b ? std::make_shared<Rows>(std::move(a), std::move(b), _kernel) : nullptr;
    }

private:
    Image _a, _b;
    Kernel _kernel;
};

template <class Kernel>
class NeighborhoodNode : public Node {
public:
    NeighborhoodNode(Image input, int margin, Border border, const IRect& extent,
                     const Kernel& kernel)
        : Node(extent), _input(std::move(input)), _margin(margin), _border(border), _kernel(kernel)
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        struct Rows : Evaluator {
            Rows(PixelBlockRef pixels, const NeighborhoodNode& node)
                : block(std::move(pixels)), inputExtent(node._input.node()->extent()),
                  margin(node._margin), border(node._border), kernel(node._kernel)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                WindowSource source;
                const std::byte* p = source.center(*block, inputExtent, span, margin, border);
                const std::ptrdiff_t pitch = source.bytesPerRow();
                if (block->format == PixelBlock::Format::OpaqueBytes)
                    overLanes(span.count, out, kernel,
                              [p, pitch](const Kernel& k, const Strip&, int i) {
                                  return k(ByteWindow(p + 4 * i, pitch));
                              });
                else
                    overLanes(span.count, out, kernel,
                              [p, pitch](const Kernel& k, const Strip&, int i) {
                                  return k(FloatWindow(p + 16 * i, pitch));
                              });
            }
            PixelBlockRef block;
            IRect inputExtent;
            int margin;
            Border border;
            Kernel kernel;
        };
        PixelBlockRef block = context.pixels(_input, region.grown(_margin, _margin));
        return block ? std::make_shared<Rows>(std::move(block), *this) : nullptr;
    }

private:
    Image _input;
    int _margin;
    Border _border;
    Kernel _kernel;
};

// Calls rows with the sampler that reads the block.
template <class Rows>
void withSampler(const PixelBlock& block, const IRect& extent, const Rows& rows)
{
    if (block.format == PixelBlock::Format::OpaqueBytes)
        rows(ByteSampler(block, extent));
    else
        rows(FloatSampler(block, extent));
}

template <class Kernel>
class WarpNode : public Node {
public:
    WarpNode(Image input, const IRect& extent, Reach reach, const Kernel& kernel)
        : Node(extent), _input(std::move(input)), _reach(std::move(reach)), _kernel(kernel)
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        struct Rows : Evaluator {
            Rows(PixelBlockRef pixels, const IRect& e, const Kernel& k)
                : block(std::move(pixels)), extent(e), kernel(k)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                withSampler(*block, extent, [&](const auto& source) {
                    overLanes(span.count, out, kernel,
                              [sampler = source, at = span](const Kernel& k, const Strip&, int i) {
                                  return k(sampler, pixelCenters(at, i));
                              });
                });
            }
            PixelBlockRef block;
            IRect extent;
            Kernel kernel;
        };
        const IRect& inputExtent = _input.node()->extent();
        PixelBlockRef block =
            context.pixels(_input, _reach.neededFor(region, inputExtent).intersected(inputExtent));
        return block ? std::make_shared<Rows>(std::move(block), inputExtent, _kernel) : nullptr;
    }

private:
    Image _input;
    Reach _reach;
    Kernel _kernel;
};

template <class Kernel>
class GuidedWarpNode : public Node {
public:
    GuidedWarpNode(Image guide, Image input, Reach reach, const Kernel& kernel)
        : Node(guide.node()->extent()), _guide(std::move(guide)), _input(std::move(input)),
          _reach(std::move(reach)), _kernel(kernel)
    {
    }
    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        struct Rows : Evaluator {
            Rows(EvaluatorRef g, PixelBlockRef pixels, const IRect& e, const Kernel& k)
                : guide(std::move(g)), block(std::move(pixels)), extent(e), kernel(k)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                guide->row(span, out);
                withSampler(*block, extent, [&](const auto& source) {
                    overLanes(
                        span.count, out, kernel,
                        [sampler = source, at = span](const Kernel& k, const Strip& s, int i) {
                            return k(loadPx(s, i), sampler, pixelCenters(at, i));
                        });
                });
            }
            EvaluatorRef guide;
            PixelBlockRef block;
            IRect extent;
            Kernel kernel;
        };
        const IRect& inputExtent = _input.node()->extent();
        EvaluatorRef guide = context.evaluator(_guide, region);
        PixelBlockRef block =
            context.pixels(_input, _reach.neededFor(region, inputExtent).intersected(inputExtent));
        return guide && block ? std::make_shared<Rows>(std::move(guide), std::move(block),
                                                       inputExtent, _kernel)
                              : nullptr;
    }

private:
    Image _guide, _input;
    Reach _reach;
    Kernel _kernel;
};

} // namespace detail

// Extent unchanged.
template <class Kernel>
Image mapPixels(const Image& image, const Kernel& kernel)
{
    return image ? Image(std::make_shared<detail::MapNode<Kernel>>(image, kernel)) : Image();
}

// Extent and alpha unchanged; what is transparent stays so.
template <class Kernel>
Image mapColor(const Image& image, const Kernel& kernel)
{
    return mapPixels(image, detail::ColorKernel<Kernel>{kernel});
}

template <class Kernel>
Image generate(const Kernel& kernel)
{
    return Image(std::make_shared<detail::GenerateNode<Kernel>>(kernel));
}

// By the pixel's own column and row: exact however far from the origin.
template <class Kernel>
Image generatePixels(const Kernel& kernel)
{
    return Image(std::make_shared<detail::GeneratePixelsNode<Kernel>>(kernel));
}

// A missing image counts as a transparent one; both missing give a missing image.
template <class Kernel>
Image combine(const Image& a, const Image& b, const Rect& extent, const Kernel& kernel)
{
    if (!a && !b)
        return {};
    return Image(
        std::make_shared<detail::CombineNode<Kernel>>(a, b, IRect::around(extent), kernel));
}

// Extent unchanged.
template <class Kernel>
Image neighborhood(const Image& image, int margin, Border border, const Kernel& kernel)
{
    if (!image)
        return {};
    return Image(std::make_shared<detail::NeighborhoodNode<Kernel>>(
        image, margin, border, image.node()->extent(), kernel));
}
template <class Kernel>
Image neighborhood(const Image& image, int margin, const Kernel& kernel)
{
    return neighborhood(image, margin, Border::Transparent, kernel);
}

// The extent of the result is given, rounded outward to whole pixels.
template <class Kernel>
Image warp(const Image& image, const Rect& extent, Reach reach, const Kernel& kernel)
{
    if (!image)
        return {};
    return Image(std::make_shared<detail::WarpNode<Kernel>>(image, IRect::around(extent),
                                                            std::move(reach), kernel));
}

// The extent of the result is the guide's. The guide is one image's pixels as numbers of any
// meaning (a normal, a distance), the image is sampled as in a warp.
template <class Kernel>
Image guidedWarp(const Image& guide, const Image& image, Reach reach, const Kernel& kernel)
{
    if (!guide || !image)
        return {};
    return Image(
        std::make_shared<detail::GuidedWarpNode<Kernel>>(guide, image, std::move(reach), kernel));
}

} // namespace CIF_LANES_NAMESPACE

// The image under an affine map of the plane: one bilinear sample a pixel; whole-pixel translations
// copy. A map without an inverse (|determinant| below 1e-12) or that is not finite gives an empty
// image.
Image transformed(const Image& image, const AffineTransform& map);

// Convolved with a Gaussian of standard deviation sigma (limited to 10 000 pixels, a not-a-number
// counts as 0), within 1/512 of the exact sum on 0…1 data. Transparent borders grow the extent by
// ceil(3·sigma); clamped ones keep it. The cost falls as sigma grows.
Image gaussian(const Image& image, double sigma, Border border);

} // namespace imaging
