// From strips of premultiplied floats to the rows of a bitmap.
#include "platform/imaging/Renderer.h"

#include "platform/foundation/Work.h"
#include "platform/imaging/Node.h"
#include "platform/imaging/Pixel.h"

#include <algorithm>

namespace imaging {

namespace {

// Unpremultiplied and limited to 0…1; not-a-number becomes 0.
Px finished(Px p)
{
    if (!all(p.a == F(1.0f))) {
        const F k = select(p.a > F(0.0f), F(1.0f) / p.a, F(0.0f));
        p = {p.r * k, p.g * k, p.b * k, p.a};
    }
    return {clamp01(p.r), clamp01(p.g), clamp01(p.b), clamp01(p.a)};
}

I packedBytes(Px p)
{
    const auto byte = [](F v) { return roundToInt(v * F(255.0f)); };
    return byte(p.r) | (byte(p.g) << 8) | (byte(p.b) << 16) | (byte(p.a) << 24);
}

void writeBytes(const Strip& strip, int count, std::byte* out)
{
    int i = 0;
    for (; i + kLanes <= count; i += kLanes)
        storeInts(out + 4 * i, packedBytes(finished(loadPx(strip, i))));
    if (i < count) {
        alignas(32) std::byte tail[4 * kLanes];
        storeInts(tail, packedBytes(finished(loadPx(strip, i))));
        std::memcpy(out + 4 * i, tail, 4 * (count - i));
    }
}

void writeWords(const Strip& strip, int count, std::byte* out)
{
    const auto word = [](F v) { return roundToInt(v * F(65535.0f)); };
    alignas(32) std::byte lanes[8 * kLanes];
    for (int i = 0; i < count; i += kLanes) {
        const Px p = finished(loadPx(strip, i));
        I first, second;
        zip(word(p.r) | (word(p.g) << 16), word(p.b) | (word(p.a) << 16), first, second);
        storeInts(lanes, first);
        storeInts(lanes + 4 * kLanes, second);
        std::memcpy(out + 8 * i, lanes, 8 * std::min(kLanes, count - i));
    }
}

void writeFloats(const Strip& strip, int count, std::byte* out)
{
    alignas(32) float lanes[4 * kLanes];
    for (int i = 0; i < count; i += kLanes) {
        storeInterleaved(lanes, loadPx(strip, i));
        std::memcpy(out + 16 * i, lanes, 16 * std::min(kLanes, count - i));
    }
}

// Null when memory is short; throws Stopped when the work is to stop.
std::shared_ptr<Bitmap> renderRegion(const Image& image, const IRect& region, PixelFormat format,
                                     RenderContext& context)
{
    std::shared_ptr<Bitmap> bitmap = Bitmap::make(region.width(), region.height(), format);
    const EvaluatorRef rows = bitmap ? context.evaluator(image, region) : nullptr;
    foundation::checkpoint();
    if (!rows)
        return nullptr;
    const auto write = format == PixelFormat::Rgba8    ? writeBytes
                       : format == PixelFormat::Rgba16 ? writeWords
                                                       : writeFloats;
    foundation::ProgressSteps steps(region.height());
    forEachSpan(region, context, [&](const Span& span) {
        StripBuffer buffer;
        const Strip strip = buffer.strip();
        rows->row(span, strip);
        write(strip, span.count,
              bitmap->row(region.top - 1 - span.y) +
                  std::ptrdiff_t{span.x - region.left} * bytesPerPixel(format));
        if (span.x + span.count == region.right)
            steps.add(1);
    });
    foundation::checkpoint();
    return bitmap;
}

} // namespace

std::shared_ptr<Bitmap> render(const Image& image, const PixelRect& rect, PixelFormat format,
                               const RenderOptions& options)
{
    const std::int64_t right = std::int64_t{rect.x} + rect.width;
    const std::int64_t top = std::int64_t{rect.y} + rect.height;
    if (rect.width < 1 || rect.height < 1 || rect.x < -IRect::kEdge || rect.y < -IRect::kEdge ||
        right > IRect::kEdge || top > IRect::kEdge)
        return nullptr;
    const IRect region{rect.x, rect.y, static_cast<int>(right), static_cast<int>(top)};
    if (!options.stop.stop_possible()) {
        // Tiles ask this token, which costs them less than looking for the scope.
        RenderContext context(foundation::stopToken(), options.threaded);
        return renderRegion(image, region, format, context);
    }
    try {
        const foundation::WorkScope scope(options.stop);
        RenderContext context(options.stop, options.threaded);
        return renderRegion(image, region, format, context);
    } catch (const foundation::Stopped&) {
        // Not ours, if there is a scope around this that was stopped.
        foundation::checkpoint();
        return nullptr;
    }
}

} // namespace imaging
