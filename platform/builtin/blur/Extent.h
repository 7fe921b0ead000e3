// How far a blur spreads a picture, and where it stays opaque.
#pragma once

#include "platform/imaging/Node.h"

#include <algorithm>

namespace builtin {

// Wider and higher by the pixels given on each side. An infinite picture is blurred where it is
// looked at.
inline imaging::IRect grownExtent(const imaging::Image& image, int dx, int dy)
{
    const imaging::IRect& e = image.node()->extent();
    return e.isPlane() ? e : e.grown(dx, dy);
}

// Whether the windows of all pixels of a span, reaching so far, lie in the block.
inline bool liesInside(const imaging::PixelBlock& block, const imaging::Span& span, int reachX,
                       int reachY)
{
    return block.rect.contains(
        {span.x - reachX, span.y - reachY, span.x + span.count + reachX, span.y + reachY + 1});
}

// Where the window of a pixel lies in a block of opaque bytes its alpha is 1, and not nearly so.
inline void makeOpaque(const imaging::PixelBlock& block, const imaging::Span& span, int reachX,
                       int reachY, const imaging::Strip& out)
{
    const imaging::IRect& r = block.rect;
    if (block.format != imaging::PixelBlock::Format::OpaqueBytes || span.y - reachY < r.bottom ||
        span.y + reachY >= r.top)
        return;
    const int first = std::max(0, r.left + reachX - span.x);
    const int last = std::min(span.count, r.right - reachX - span.x);
    if (first < last)
        std::fill(out.a + first, out.a + last, 1.0f);
}

} // namespace builtin
