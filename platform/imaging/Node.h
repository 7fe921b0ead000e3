// The engine's side of images: nodes of the graph, strips of pixels, and what a rendering hands to
// them.
#pragma once

#include "platform/imaging/BufferPool.h"
#include "platform/imaging/Image.h"
#include "platform/imaging/Lanes.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <stop_token>
#include <vector>

namespace imaging {

// Whole pixels by their edges, [left, right) × [bottom, top). The plane is cut off just inside
// ±2³⁰.
struct IRect {
    static constexpr int kEdge = (1 << 30) - 1;

    int left = 0, bottom = 0, right = 0, top = 0;

    // Rounded outward; an infinite rectangle is the whole plane, not-a-number counts as empty.
    static IRect around(const Rect& r);
    static constexpr IRect plane() { return {-kEdge, -kEdge, kEdge, kEdge}; }

    bool isEmpty() const { return right <= left || top <= bottom; }
    bool isPlane() const { return left == -kEdge && right == kEdge; }
    int width() const { return right - left; }
    int height() const { return top - bottom; }
    Rect rect() const;
    bool contains(const IRect& r) const
    {
        return left <= r.left && bottom <= r.bottom && right >= r.right && top >= r.top;
    }
    IRect intersected(const IRect& r) const;
    IRect united(const IRect& r) const; // an empty one adds nothing
    IRect grown(int dx, int dy) const;  // saturates
    IRect moved(int dx, int dy) const;  // saturates; the plane stays the plane

    friend bool operator==(const IRect&, const IRect&) = default;
};

// Up to kStripWidth pixels of one row, from pixel x on. A span never crosses a multiple of
// kStripWidth, so that every pixel is computed from the same anchor however a picture is cut.
constexpr int kStripWidth = 512;
struct Span {
    int x, y, count;

    int anchor() const { return x & ~(kStripWidth - 1); }
};

// Premultiplied colours of a span, planar. Rows of lanes may be written past the count, up to
// kLanes.
struct Strip {
    float *r, *g, *b, *a;

    Strip from(int i) const { return {r + i, g + i, b + i, a + i}; }
    void clear(int count) const;
};
class StripBuffer {
public:
    // Uninitialised: clearing it would cost as much as a simple row.
    StripBuffer() {}
    Strip strip() { return {_planes[0], _planes[1], _planes[2], _planes[3]}; }

private:
    static constexpr int kSlack = 16;
    alignas(64) float _planes[4][kStripWidth + kSlack];
};

// Answers spans of one image inside the region it was prepared for. Called from several threads.
class Evaluator {
public:
    virtual ~Evaluator() = default;
    virtual void row(const Span& span, const Strip& out) const = 0;
};
using EvaluatorRef = std::shared_ptr<const Evaluator>;

// Pixels in memory that a sampler reads: opaque bytes or premultiplied floats.
struct PixelBlock {
    enum class Format { OpaqueBytes, Floats };

    Format format = Format::Floats;
    IRect rect;                        // which pixels are here
    const std::byte* origin = nullptr; // pixel (rect.left, rect.bottom)
    std::ptrdiff_t bytesPerRow = 0; // to the row above; negative for bitmaps, whose row 0 is on top
    std::shared_ptr<const void> owner;

    const std::byte* pixel(int x, int y) const
    {
        return origin + (y - rect.bottom) * bytesPerRow +
               std::ptrdiff_t{x - rect.left} * bytesPerPixel();
    }
    int bytesPerPixel() const { return format == Format::OpaqueBytes ? 4 : 16; }
};
using PixelBlockRef = std::shared_ptr<const PixelBlock>;

class RenderContext;

// One immutable node of the graph.
class Node {
public:
    virtual ~Node() = default;

    const IRect& extent() const { return _extent; }

    // An evaluator for spans within the region, which lies inside the extent and is not empty. Does
    // the work that rows share (blurs, inputs that are sampled at random). Null when memory is
    // short or the rendering was stopped.
    virtual EvaluatorRef prepare(const IRect& region, RenderContext& context) const = 0;

    // All pixels of the extent where they are in memory anyway, else null.
    virtual PixelBlockRef pixels() const { return nullptr; }

protected:
    explicit Node(const IRect& extent) : _extent(extent) {}

private:
    IRect _extent;
};

// What one rendering hands to the nodes.
class RenderContext {
public:
    RenderContext(std::stop_token stop, bool threaded) : _stop(std::move(stop)), _threaded(threaded)
    {
    }

    bool threaded() const { return _threaded; }
    bool stopped() const { return _stop.stop_requested(); }

    // An evaluator for any span within the region: transparent outside the image's extent.
    EvaluatorRef evaluator(const Image& image, const IRect& region);
    // Pixels of the image that cover the region where it meets the extent, in memory for sampling.
    // The block may be empty. Asking twice for the same computes once.
    PixelBlockRef pixels(const Image& image, const IRect& region);

private:
    PixelBlockRef materialize(const Image& image, const IRect& region);

    struct Kept {
        foundation::ImageRef node;
        PixelBlockRef block;
    };

    std::stop_token _stop;
    bool _threaded;
    std::vector<Kept> _kept;
};

// Calls work(span) for every span of the rectangle, tile by tile, on all cores; ends early when the
// rendering is stopped.
template <class Work>
void forEachSpan(const IRect& rect, const RenderContext& context, const Work& work);

} // namespace imaging

#include "platform/imaging/Parallel.h"

namespace imaging {

constexpr int kTileHeight = 64;

template <class Work>
void forEachSpan(const IRect& rect, const RenderContext& context, const Work& work)
{
    parallelRows(rect.bottom, rect.top, kTileHeight, context.threaded(), [&](int first, int last) {
        for (int x = rect.left; x < rect.right && !context.stopped();) {
            const int next = std::min(rect.right, (x & ~(kStripWidth - 1)) + kStripWidth);
            for (int y = first; y < last; ++y)
                work(Span{x, y, next - x});
            x = next;
        }
    });
}

} // namespace imaging
