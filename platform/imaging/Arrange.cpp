// Images put together from whole pixels of others.
#include "platform/imaging/Arrange.h"

#include "platform/imaging/Node.h"
#include "platform/imaging/Pixel.h"

#include <algorithm>
#include <utility>

namespace imaging {

namespace {

class PatchNode : public Node {
public:
    PatchNode(Image base, Image patch, const IRect& extent)
        : Node(extent), _base(std::move(base)), _patch(std::move(patch))
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const IRect covered = region.intersected(_patch.node()->extent());
        if (covered.isEmpty())
            return context.evaluator(_base, region);
        EvaluatorRef patch = context.evaluator(_patch, covered);
        if (!patch || covered == region)
            return patch;
        EvaluatorRef base = context.evaluator(_base, region);
        if (!base)
            return nullptr;
        struct Rows : Evaluator {
            Rows(EvaluatorRef b, EvaluatorRef p, const IRect& c)
                : base(std::move(b)), patch(std::move(p)), covered(c)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                const int end = span.x + span.count;
                const int first = std::clamp(covered.left, span.x, end);
                const int last = std::clamp(covered.right, first, end);
                if (first == last || span.y < covered.bottom || span.y >= covered.top) {
                    base->row(span, out);
                    return;
                }
                // From left to right: each may write a few lanes into the next.
                if (span.x < first)
                    base->row({span.x, span.y, first - span.x}, out);
                patch->row({first, span.y, last - first}, out.from(first - span.x));
                if (last < end)
                    base->row({last, span.y, end - last}, out.from(last - span.x));
            }
            EvaluatorRef base, patch;
            IRect covered;
        };
        return std::make_shared<Rows>(std::move(base), std::move(patch), covered);
    }

private:
    Image _base, _patch;
};

// Colours of `count` pixels in memory; nothing is read or written beyond them.
void readPixels(const PixelBlock& block, int x, int y, int count, const Strip& out)
{
    const std::byte* p = block.pixel(x, y);
    const int size = block.bytesPerPixel();
    const auto lanes = [&](const std::byte* from) {
        return block.format == PixelBlock::Format::OpaqueBytes
                   ? unpackBytes(loadInts(from))
                   : loadInterleaved(reinterpret_cast<const float*>(from));
    };
    int i = 0;
    for (; i + kLanes <= count; i += kLanes)
        storePx(out, i, lanes(p + std::ptrdiff_t{i} * size));
    if (i == count)
        return;
    alignas(32) std::byte padded[16 * kLanes] = {};
    alignas(32) float rest[4][kLanes];
    std::memcpy(padded, p + std::ptrdiff_t{i} * size, static_cast<std::size_t>(count - i) * size);
    storePx({rest[0], rest[1], rest[2], rest[3]}, 0, lanes(padded));
    float* const planes[] = {out.r, out.g, out.b, out.a};
    for (int c = 0; c < 4; ++c)
        std::copy_n(rest[c], count - i, planes[c] + i);
}

// From 0 to below the period.
int inPeriod(int v, int start, int period)
{
    const int r = static_cast<int>((std::int64_t{v} - start) % period);
    return r < 0 ? r + period : r;
}

class RepeatNode : public Node {
public:
    explicit RepeatNode(Image input) : Node(IRect::plane()), _input(std::move(input)) {}

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const IRect& cell = _input.node()->extent();
        IRect needed = cell;
        keep(region.left, region.right, needed.left, needed.right);
        keep(region.bottom, region.top, needed.bottom, needed.top);
        struct Rows : Evaluator {
            Rows(PixelBlockRef b, const IRect& c) : block(std::move(b)), cell(c) {}
            void row(const Span& span, const Strip& out) const override
            {
                const int y = cell.bottom + inPeriod(span.y, cell.bottom, cell.height());
                int within = inPeriod(span.x, cell.left, cell.width());
                for (int done = 0; done < span.count;) {
                    const int count = std::min(span.count - done, cell.width() - within);
                    readPixels(*block, cell.left + within, y, count, out.from(done));
                    done += count;
                    within = 0;
                }
            }
            PixelBlockRef block;
            IRect cell;
        };
        PixelBlockRef block = context.pixels(_input, needed);
        return block ? std::make_shared<Rows>(std::move(block), cell) : nullptr;
    }

private:
    // Narrows one side of the cell to what an interval shows of it, where that is one piece.
    static void keep(int from, int to, int& low, int& high)
    {
        const int period = high - low;
        const int start = inPeriod(from, low, period);
        if (std::int64_t{start} + to - from > period)
            return;
        low += start;
        high = low + (to - from);
    }

    Image _input;
};

} // namespace

Image patched(const Image& base, const Image& patch, const Rect& extent)
{
    if (!patch)
        return base;
    return Image(std::make_shared<PatchNode>(base, patch, IRect::around(extent)));
}

Image repeated(const Image& image)
{
    const Rect extent = image.extent();
    if (extent.isEmpty() || extent.isInfinite())
        return image;
    return Image(std::make_shared<RepeatNode>(image));
}

} // namespace imaging
