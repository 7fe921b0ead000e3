// The engine: rectangles, leaves, what a rendering hands to the nodes, and the nodes that need no
// kernel.
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>

namespace imaging {

// Rectangles ------------------------------------------------------------------------------------

namespace {

int toEdge(double v)
{
    return v > -IRect::kEdge ? v < IRect::kEdge ? static_cast<int>(v) : IRect::kEdge
                             : -IRect::kEdge;
}

int saturatedSum(int a, int b)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(std::int64_t{a} + b, -IRect::kEdge, IRect::kEdge));
}

} // namespace

IRect IRect::around(const Rect& r)
{
    if (!(r.width > 0 && r.height > 0) || std::isnan(r.x) || std::isnan(r.y))
        return {};
    if (r.isInfinite())
        return plane();
    return {toEdge(std::floor(r.x)), toEdge(std::floor(r.y)), toEdge(std::ceil(r.right())),
            toEdge(std::ceil(r.top()))};
}

Rect IRect::rect() const
{
    if (isPlane())
        return Rect::infinite();
    return isEmpty() ? Rect{} : Rect::fromEdges(left, bottom, right, top);
}

IRect IRect::intersected(const IRect& r) const
{
    const IRect i{std::max(left, r.left), std::max(bottom, r.bottom), std::min(right, r.right),
                  std::min(top, r.top)};
    return i.isEmpty() ? IRect{} : i;
}

IRect IRect::united(const IRect& r) const
{
    if (isEmpty())
        return r;
    if (r.isEmpty())
        return *this;
    return {std::min(left, r.left), std::min(bottom, r.bottom), std::max(right, r.right),
            std::max(top, r.top)};
}

IRect IRect::grown(int dx, int dy) const
{
    if (isEmpty())
        return {};
    return {saturatedSum(left, -dx), saturatedSum(bottom, -dy), saturatedSum(right, dx),
            saturatedSum(top, dy)};
}

IRect IRect::moved(int dx, int dy) const
{
    if (isPlane())
        return *this;
    return {saturatedSum(left, dx), saturatedSum(bottom, dy), saturatedSum(right, dx),
            saturatedSum(top, dy)};
}

void Strip::clear(int count) const
{
    for (float* plane : {r, g, b, a})
        std::fill_n(plane, count, 0.0f);
}

// What a rendering hands to the nodes
// ---------------------------------------------------------------

namespace {

class TransparentEvaluator : public Evaluator {
public:
    void row(const Span& span, const Strip& out) const override { out.clear(span.count); }
};

// Restricts an evaluator to what it was prepared for and clears the rest.
class CroppedEvaluator : public Evaluator {
public:
    CroppedEvaluator(EvaluatorRef inner, const IRect& covered)
        : _inner(std::move(inner)), _covered(covered)
    {
    }
    void row(const Span& span, const Strip& out) const override
    {
        const int first = std::max(span.x, _covered.left);
        const int last = std::min(span.x + span.count, _covered.right);
        if (first >= last || span.y < _covered.bottom || span.y >= _covered.top) {
            out.clear(span.count);
            return;
        }
        _inner->row({first, span.y, last - first}, out.from(first - span.x));
        // Afterwards: the inner row may have written a few lanes too many.
        out.clear(first - span.x);
        out.from(last - span.x).clear(span.x + span.count - last);
    }

private:
    EvaluatorRef _inner;
    IRect _covered;
};

// Reads rows of float pixels.
class FloatBlockEvaluator : public Evaluator {
public:
    FloatBlockEvaluator(PixelBlockRef block) : _block(std::move(block)) {}
    void row(const Span& span, const Strip& out) const override
    {
        const float* p = reinterpret_cast<const float*>(_block->pixel(span.x, span.y));
        int i = 0;
        for (; i + kLanes <= span.count; i += kLanes)
            storePx(out, i, loadInterleaved(p + 4 * i));
        for (; i < span.count; ++i) {
            out.r[i] = p[4 * i];
            out.g[i] = p[4 * i + 1];
            out.b[i] = p[4 * i + 2];
            out.a[i] = p[4 * i + 3];
        }
    }

private:
    PixelBlockRef _block;
};

} // namespace

EvaluatorRef RenderContext::evaluator(const Image& image, const IRect& region)
{
    static const EvaluatorRef transparentEvaluator = std::make_shared<TransparentEvaluator>();
    if (!image)
        return transparentEvaluator;
    const IRect& extent = image.node()->extent();
    const IRect covered = region.intersected(extent);
    if (covered.isEmpty())
        return transparentEvaluator;
    EvaluatorRef inner = image.node()->prepare(covered, *this);
    if (!inner || covered == region)
        return inner;
    return std::make_shared<CroppedEvaluator>(std::move(inner), covered);
}

PixelBlockRef RenderContext::pixels(const Image& image, const IRect& region)
{
    if (!image)
        return std::make_shared<PixelBlock>();
    if (PixelBlockRef block = image.node()->pixels())
        return block;
    const IRect covered = region.intersected(image.node()->extent());
    for (const Kept& kept : _kept)
        if (kept.node == image.node() && kept.block->rect.contains(covered))
            return kept.block;
    PixelBlockRef block = materialize(image, covered);
    if (block)
        _kept.push_back({image.node(), block});
    return block;
}

PixelBlockRef RenderContext::materialize(const Image& image, const IRect& region)
{
    auto block = std::make_shared<PixelBlock>();
    if (region.isEmpty())
        return block;
    const EvaluatorRef rows = evaluator(image, region);
    if (!rows || region.width() > Bitmap::kMaximumSide || region.height() > Bitmap::kMaximumSide)
        return nullptr;
    // Neighbouring lanes are written past the end of a row, so each has room for them.
    const std::ptrdiff_t floatsPerRow = (std::ptrdiff_t{region.width()} + 2 * kLanes) * 4;
    auto memory =
        std::make_shared<FloatBuffer>(static_cast<std::size_t>(floatsPerRow) * region.height());
    if (!*memory)
        return nullptr;
    block->rect = region;
    block->bytesPerRow = floatsPerRow * 4;
    block->origin = reinterpret_cast<const std::byte*>(memory->data());
    float* base = memory->data();
    block->owner = std::move(memory);
    forEachSpan(region, *this, [&](const Span& span) {
        StripBuffer buffer;
        const Strip strip = buffer.strip();
        rows->row(span, strip);
        float* p = base + (span.y - region.bottom) * floatsPerRow + 4 * (span.x - region.left);
        int i = 0;
        for (; i + kLanes <= span.count; i += kLanes)
            storeInterleaved(p + 4 * i, loadPx(strip, i));
        for (; i < span.count; ++i) {
            p[4 * i] = strip.r[i];
            p[4 * i + 1] = strip.g[i];
            p[4 * i + 2] = strip.b[i];
            p[4 * i + 3] = strip.a[i];
        }
    });
    return stopped() ? nullptr : block;
}

// Leaves
// ------------------------------------------------------------------------------------------------

namespace {

// Premultiplied colours of `count` pixels of a bitmap row.
void readRow(const Bitmap& bitmap, bool opaque, int row, int first, int count, const Strip& out)
{
    const std::byte* p = bitmap.row(row) + std::ptrdiff_t{first} * bytesPerPixel(bitmap.format());
    const auto put = [&](int i, Px c) {
        storePx(out, i, opaque ? c : premultiplied(Rgb{c.r, c.g, c.b}, c.a));
    };
    // Rows are padded to 64 bytes, yet the last lanes may reach past them.
    alignas(32) std::byte tail[8 * kLanes];
    if (bitmap.format() == PixelFormat::Rgba8) {
        int i = 0;
        for (; i + kLanes <= count; i += kLanes)
            put(i, unpackBytes(loadInts(p + 4 * i)));
        if (i < count) {
            std::memset(tail, 0, sizeof tail);
            std::memcpy(tail, p + 4 * i, 4 * (count - i));
            put(i, unpackBytes(loadInts(tail)));
        }
        return;
    }
    const auto unpackWords = [](const std::byte* words) {
        I low, high; // red and green, blue and alpha
        unzip(loadInts(words), loadInts(words + 4 * kLanes), low, high);
        const F k = 1.0f / 65535;
        return Px{toFloat(low & I(65535)) * k, toFloat(shiftRight(low, 16)) * k,
                  toFloat(high & I(65535)) * k, toFloat(shiftRight(high, 16)) * k};
    };
    int i = 0;
    for (; i + kLanes <= count; i += kLanes)
        put(i, unpackWords(p + 8 * i));
    if (i < count) {
        std::memset(tail, 0, sizeof tail);
        std::memcpy(tail, p + 8 * i, 8 * (count - i));
        put(i, unpackWords(tail));
    }
}

class SourceNode : public Node {
public:
    SourceNode(BitmapRef bitmap, int x, int y)
        : Node({x, y, x + bitmap->width(), y + bitmap->height()}), _bitmap(std::move(bitmap)),
          _opaque(_bitmap->computeIsOpaque())
    {
        if (_bitmap->format() == PixelFormat::RgbaF ||
            (_bitmap->format() == PixelFormat::Rgba8 && _opaque))
            _block = blockOfBitmap();
    }

    EvaluatorRef prepare(const IRect&, RenderContext&) const override
    {
        if (_bitmap->format() == PixelFormat::RgbaF)
            return std::make_shared<FloatBlockEvaluator>(_block);
        struct Rows : Evaluator {
            Rows(BitmapRef b, bool o, const IRect& e) : bitmap(std::move(b)), opaque(o), extent(e)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                readRow(*bitmap, opaque, extent.top - 1 - span.y, span.x - extent.left, span.count,
                        out);
            }
            BitmapRef bitmap;
            bool opaque;
            IRect extent;
        };
        return std::make_shared<Rows>(_bitmap, _opaque, extent());
    }

    // Pictures with transparency or 16 bits are turned into floats once, when first sampled.
    PixelBlockRef pixels() const override
    {
        const std::lock_guard lock(_mutex);
        if (!_block)
            _block = converted();
        return _block;
    }

private:
    PixelBlockRef blockOfBitmap() const
    {
        auto block = std::make_shared<PixelBlock>();
        block->format = _bitmap->format() == PixelFormat::RgbaF ? PixelBlock::Format::Floats
                                                                : PixelBlock::Format::OpaqueBytes;
        block->rect = extent();
        block->bytesPerRow = -_bitmap->bytesPerRow();
        block->origin = _bitmap->row(_bitmap->height() - 1);
        block->owner = _bitmap;
        return block;
    }

    PixelBlockRef converted() const
    {
        auto floats = Bitmap::make(_bitmap->width(), _bitmap->height(), PixelFormat::RgbaF);
        if (!floats)
            return nullptr;
        parallelRows(0, _bitmap->height(), kTileHeight, [&](int first, int last) {
            StripBuffer buffer;
            const Strip strip = buffer.strip();
            alignas(32) float lanes[4 * kLanes];
            for (int y = first; y < last; ++y)
                for (int x = 0; x < _bitmap->width(); x += kStripWidth) {
                    const int count = std::min(kStripWidth, _bitmap->width() - x);
                    readRow(*_bitmap, _opaque, y, x, count, strip);
                    float* p = floats->rowAs<float>(y) + 4 * x;
                    for (int i = 0; i < count; i += kLanes) {
                        storeInterleaved(lanes, loadPx(strip, i));
                        std::memcpy(p + 4 * i, lanes, 16 * std::min(kLanes, count - i));
                    }
                }
        });
        auto block = std::make_shared<PixelBlock>();
        block->rect = extent();
        block->bytesPerRow = -floats->bytesPerRow();
        block->origin = floats->row(floats->height() - 1);
        block->owner = floats;
        return block;
    }

    BitmapRef _bitmap;
    bool _opaque;
    mutable std::mutex _mutex;
    mutable PixelBlockRef _block;
};

} // namespace

Image Image::fromBitmap(BitmapRef bitmap, int originX, int originY)
{
    return bitmap ? Image(std::make_shared<SourceNode>(std::move(bitmap), originX, originY))
                  : Image();
}

Rect Image::extent() const
{
    return _node ? _node->extent().rect() : Rect{};
}

// Nodes without a kernel
// ----------------------------------------------------------------------------------

namespace {

// The same pixels within other bounds, moved by whole pixels.
class FrameNode : public Node {
public:
    FrameNode(Image input, const IRect& extent, int dx, int dy)
        : Node(extent), _input(std::move(input)), _dx(dx), _dy(dy)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        EvaluatorRef input = context.evaluator(_input, region.moved(-_dx, -_dy));
        if (!input || (_dx == 0 && _dy == 0))
            return input;
        struct Rows : Evaluator {
            Rows(EvaluatorRef i, int x, int y) : input(std::move(i)), dx(x), dy(y) {}
            void row(const Span& span, const Strip& out) const override
            {
                // A moved span may cross one multiple of the strip width.
                const int first = span.x - dx;
                const int cut = ((first & ~(kStripWidth - 1)) + kStripWidth) - first;
                const int count = std::min(span.count, cut);
                if (count == span.count) {
                    input->row({first, span.y - dy, count}, out);
                    return;
                }
                // The second part first: the first may write a few lanes past its end.
                StripBuffer buffer;
                const Strip second = buffer.strip();
                input->row({first, span.y - dy, count}, out);
                input->row({first + count, span.y - dy, span.count - count}, second);
                const int rest = span.count - count;
                std::copy_n(second.r, rest, out.r + count);
                std::copy_n(second.g, rest, out.g + count);
                std::copy_n(second.b, rest, out.b + count);
                std::copy_n(second.a, rest, out.a + count);
            }
            EvaluatorRef input;
            int dx, dy;
        };
        return std::make_shared<Rows>(std::move(input), _dx, _dy);
    }

private:
    Image _input;
    int _dx, _dy;
};

class ClampNode : public Node {
public:
    explicit ClampNode(Image input) : Node(IRect::plane()), _input(std::move(input)) {}

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const IRect& e = _input.node()->extent();
        IRect needed{std::clamp(region.left, e.left, e.right - 1),
                     std::clamp(region.bottom, e.bottom, e.top - 1),
                     std::clamp(region.right, e.left + 1, e.right),
                     std::clamp(region.top, e.bottom + 1, e.top)};
        struct Rows : Evaluator {
            Rows(EvaluatorRef i, const IRect& r) : input(std::move(i)), e(r) {}
            void row(const Span& span, const Strip& out) const override
            {
                const int y = std::clamp(span.y, e.bottom, e.top - 1);
                const int end = span.x + span.count;
                const int first = std::clamp(span.x, e.left, e.right - 1);
                const int last = std::clamp(end, first + 1, e.right);
                // Where the span lies beside the extent, its one border pixel is read on its own.
                const int at = std::max(0, first - span.x);
                if (at >= span.count || first < span.x) {
                    StripBuffer buffer;
                    const Strip one = buffer.strip();
                    input->row({first, y, 1}, one);
                    fill(out, 0, span.count, one, 0);
                    return;
                }
                input->row({first, y, last - first}, out.from(at));
                fill(out, 0, at, out, at);
                fill(out, last - span.x, span.count, out, last - span.x - 1);
            }
            static void fill(const Strip& out, int begin, int end, const Strip& from, int index)
            {
                const float r = from.r[index], g = from.g[index], b = from.b[index],
                            a = from.a[index];
                for (int i = begin; i < end; ++i) {
                    out.r[i] = r;
                    out.g[i] = g;
                    out.b[i] = b;
                    out.a[i] = a;
                }
            }
            EvaluatorRef input;
            IRect e;
        };
        EvaluatorRef input = context.evaluator(_input, needed);
        return input ? std::make_shared<Rows>(std::move(input), e) : nullptr;
    }

private:
    Image _input;
};

} // namespace

Image Image::cropped(const Rect& rect) const
{
    if (!_node)
        return {};
    const IRect extent = _node->extent().intersected(IRect::around(rect));
    return extent == _node->extent() ? *this
                                     : Image(std::make_shared<FrameNode>(*this, extent, 0, 0));
}

Image Image::translated(int dx, int dy) const
{
    if (!_node || (dx == 0 && dy == 0))
        return *this;
    return Image(std::make_shared<FrameNode>(*this, _node->extent().moved(dx, dy), dx, dy));
}

Image Image::clampedToExtent() const
{
    if (!_node || _node->extent().isEmpty() || _node->extent().isPlane())
        return *this;
    return Image(std::make_shared<ClampNode>(*this));
}

Image transformed(const Image& image, const AffineTransform& map)
{
    if (!image)
        return {};
    if (map.isWholePixelTranslation())
        return image.translated(static_cast<int>(map.tX), static_cast<int>(map.tY));
    const double determinant = map.determinant();
    if (!(std::abs(determinant) >= 1e-12) || !std::isfinite(determinant) ||
        !std::isfinite(map.tX) || !std::isfinite(map.tY))
        return image.cropped({});
    const AffineTransform inverse = map.inverse();
    return warp(image, boundsOf(map, image.extent()), Reach::through(inverse),
                [inverse](const auto& source, const Coord& at) {
                    return source(transformed(at, inverse));
                });
}

// Reach and windows
// ---------------------------------------------------------------------------------------

Reach Reach::within(double margin)
{
    return Reach([margin](const Rect& r) {
        return Rect::fromEdges(r.x - margin, r.y - margin, r.right() + margin, r.top() + margin);
    });
}

Reach Reach::through(const AffineTransform& map)
{
    return Reach([map](const Rect& r) { return boundsOf(map, r); });
}

IRect Reach::neededFor(const IRect& region, const IRect& inputExtent) const
{
    if (_need)
        return IRect::around(_need(region.rect())).grown(1, 1);
    return inputExtent.isPlane() ? region.grown(4096, 4096) : inputExtent;
}

const std::byte* WindowSource::center(const PixelBlock& block, const IRect& extent,
                                      const Span& span, int margin, Border border)
{
    constexpr int kMostLanes = 8;
    const int count = (span.count + kMostLanes - 1) / kMostLanes * kMostLanes;
    const IRect wanted{span.x - margin, span.y - margin, span.x + count + margin,
                       span.y + margin + 1};
    if (block.rect.contains(wanted)) [[likely]] {
        _bytesPerRow = block.bytesPerRow;
        return block.pixel(span.x, span.y);
    }
    // One scratch a thread: nothing keeps the window beyond its row.
    thread_local std::vector<std::byte> scratch;
    const int size = block.bytesPerPixel();
    _bytesPerRow = std::ptrdiff_t{wanted.width()} * size;
    scratch.assign(static_cast<std::size_t>(_bytesPerRow) * wanted.height(), std::byte{0});
    const auto clampedTo = [](int v, int low, int high) { return std::clamp(v, low, high - 1); };
    const IRect inside = wanted.intersected(block.rect);
    for (int y = wanted.bottom; y < wanted.top; ++y) {
        std::byte* row = scratch.data() + (y - wanted.bottom) * _bytesPerRow;
        int sourceY = y;
        if (border == Border::Clamped)
            sourceY = clampedTo(y, extent.bottom, extent.top);
        if (sourceY < block.rect.bottom || sourceY >= block.rect.top)
            continue;
        if (border == Border::Transparent) {
            if (!inside.isEmpty())
                std::memcpy(row + std::ptrdiff_t{inside.left - wanted.left} * size,
                            block.pixel(inside.left, sourceY),
                            static_cast<std::size_t>(inside.width()) * size);
            continue;
        }
        for (int x = wanted.left; x < wanted.right; ++x) {
            const int sourceX = clampedTo(x, extent.left, extent.right);
            if (sourceX >= block.rect.left && sourceX < block.rect.right)
                std::memcpy(row + std::ptrdiff_t{x - wanted.left} * size,
                            block.pixel(sourceX, sourceY), size);
        }
    }
    return scratch.data() + margin * _bytesPerRow + std::ptrdiff_t{margin} * size;
}

} // namespace imaging
