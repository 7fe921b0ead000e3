// Sums of pixels at whole distances.
#pragma once

#include "platform/imaging/Node.h"

#include <vector>

namespace builtin {

struct Tap {
    int dx, dy;
    double weight;
};

// Adds weight × pixel (x + dx, y + dy) of every tap to the interleaved colours of a span. Only
// pixels in the block count.
void addTaps(const imaging::PixelBlock& block, const std::vector<Tap>& taps,
             const imaging::Span& span, float* sums);

} // namespace builtin
