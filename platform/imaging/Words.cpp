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

void readWordsClamped(const PixelBlock& block, int left, int count, int y, std::int16_t* planes,
                      std::ptrdiff_t stride)
{
    const IRect& r = block.rect;
    const int first = std::clamp(left, r.left, r.right - 1);
    const int last = std::clamp(left + count, first + 1, r.right);
    const int before = std::clamp(first - left, 0, count), after = std::max(last - left, before);
    // Where the row lies beside the picture its nearest pixel is read into the first place.
    const int at = std::min(before, count - 1);
    readWords(block, first, last - first, std::clamp(y, r.bottom, r.top - 1), false, planes + at,
              stride);
    for (int c = 0; c < 3; ++c) {
        std::int16_t* plane = planes + c * stride;
        std::fill_n(plane, at, plane[at]);
        if (after < count)
            std::fill(plane + std::max(after, at), plane + count,
                      plane[std::max(at, std::min(after, count) - 1)]);
    }
}

} // namespace imaging
