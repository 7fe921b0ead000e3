// Opaque bytes as planes of 16-bit numbers.
#include "platform/imaging/Words.h"

#include <algorithm>

namespace imaging {

void readWords(const PixelBlock& block, int left, int count, int y, bool withAlpha,
               std::int16_t* planes, std::ptrdiff_t stride)
{
    const int channels = withAlpha ? 4 : 3;
    const IRect& r = block.rect;
    const bool present = y >= r.bottom && y < r.top;
    const int first = present ? std::clamp(r.left, left, left + count) : left + count;
    const int last = present ? std::clamp(r.right, first, left + count) : first;
    const std::byte* pixels = last > first ? block.pixel(first, y) : nullptr;
    for (int c = 0; c < channels; ++c) {
        std::int16_t* plane = planes + c * stride;
        std::fill_n(plane, first - left, std::int16_t{0});
        std::fill(plane + (last - left), plane + count, std::int16_t{0});
        plane += first - left;
        for (int i = 0; i < last - first; ++i) {
            std::uint32_t pixel;
            std::memcpy(&pixel, pixels + 4 * i, 4);
            plane[i] = static_cast<std::int16_t>(pixel >> (8 * c) & 255);
        }
    }
}

} // namespace imaging
