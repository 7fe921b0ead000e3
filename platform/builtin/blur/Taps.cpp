// Sums of pixels at whole distances.
#include "platform/builtin/blur/Taps.h"

#include <algorithm>

namespace builtin {

using namespace imaging;

namespace {

template <class Value>
void addWeighted(const Value* values, float weight, int count, float* sums)
{
    for (int i = 0; i < count; ++i)
        sums[i] += weight * static_cast<float>(values[i]);
}

} // namespace

void addTaps(const PixelBlock& block, const std::vector<Tap>& taps, const Span& span, float* sums)
{
    const IRect& r = block.rect;
    const bool bytes = block.format == PixelBlock::Format::OpaqueBytes;
    for (const Tap& t : taps) {
        const int y = span.y + t.dy;
        const int first = std::max(span.x, r.left - t.dx);
        const int last = std::min(span.x + span.count, r.right - t.dx);
        if (y < r.bottom || y >= r.top || first >= last)
            continue;
        const std::byte* p = block.pixel(first + t.dx, y);
        float* sum = sums + std::ptrdiff_t{4} * (first - span.x);
        if (bytes)
            addWeighted(reinterpret_cast<const std::uint8_t*>(p),
                        static_cast<float>(t.weight / 255), 4 * (last - first), sum);
        else
            addWeighted(reinterpret_cast<const float*>(p), static_cast<float>(t.weight),
                        4 * (last - first), sum);
    }
}

} // namespace builtin
