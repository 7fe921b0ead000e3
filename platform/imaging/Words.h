// Opaque bytes as planes of 16-bit numbers, and sums of their products: twice as many at a time as
// floats, and exact.
#pragma once

#include "platform/imaging/Lanes.h"
#include "platform/imaging/Node.h"

namespace imaging {

// Red, green, blue and alpha of the pixels [left, left + count) of a row of opaque bytes, each
// plane `stride` numbers after the one before; 0 where the block has no pixels. The first three
// alone where alpha is not asked for.
void readWords(const PixelBlock& block, int left, int count, int y, bool withAlpha,
               std::int16_t* planes, std::ptrdiff_t stride);
// The same with the nearest pixel of the block instead of 0, without alpha.
void readWordsClamped(const PixelBlock& block, int left, int count, int y, std::int16_t* planes,
                      std::ptrdiff_t stride);

inline namespace CIF_LANES_NAMESPACE {

// Two weights for sumPairs: of the even number in the low half.
inline I pairOfWeights(int even, int odd)
{
    return I((even & 0xffff) | static_cast<int>(static_cast<unsigned>(odd) << 16));
}

// p[2k]·even weight + p[2k + 1]·odd weight for every lane k.
inline I sumPairs(const std::int16_t* p, I weights)
{
#if defined(__AVX2__)
    return IntLanes(_mm256_madd_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)),
                                      __m256i(weights.v)));
#elif defined(__x86_64__)
    return IntLanes(
        _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), __m128i(weights.v)));
#else
    I r;
    for (int k = 0; k < kLanes; ++k)
        r.v[k] = p[2 * k] * static_cast<std::int16_t>(weights.v[k]) +
                 p[2 * k + 1] * (weights.v[k] >> 16);
    return r;
#endif
}

} // namespace CIF_LANES_NAMESPACE
} // namespace imaging
