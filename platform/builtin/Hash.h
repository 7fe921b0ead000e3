// Random numbers without a state: a hash of pixel coordinates, over single words or lanes of them.
//
// Nothing here draws from the C library's sequence, so a filter never disturbs a generator's.
#pragma once

#include "platform/imaging/Lanes.h"

#include <cstdint>

namespace builtin {
inline namespace CIF_LANES_NAMESPACE {

inline std::uint32_t shiftRight(std::uint32_t a, int n)
{
    return a >> n;
}

// Word is std::uint32_t or imaging::I; both wrap around.
template <class Word>
Word mix32(Word x)
{
    x = x ^ shiftRight(x, 16);
    x = x * Word(0x7feb352d);
    x = x ^ shiftRight(x, 15);
    x = x * Word(static_cast<int>(0x846ca68b));
    return x ^ shiftRight(x, 16);
}

// `salt` tells the independent numbers of one place apart. A row that all lanes share is best given
// as a single word.
template <class Word, class RowWord>
Word hash(Word i, RowWord j, std::uint32_t salt)
{
    const std::uint32_t fixed = mix32(salt * 0xc2b2ae3du + 0x27d4eb2fu);
    const RowWord row = mix32(j * RowWord(static_cast<int>(0x85ebca77)) + RowWord(fixed));
    return mix32(i * Word(static_cast<int>(0x9e3779b1)) + Word(row));
}

// In [0, 1), a multiple of 2^-24.
inline float unitFloat(std::uint32_t hash)
{
    return static_cast<float>(hash >> 8) * 0x1p-24f;
}
inline imaging::F unitFloat(imaging::I hash)
{
    return toFloat(shiftRight(hash, 8)) * imaging::F(0x1p-24f);
}
template <class Word, class RowWord>
auto h01(Word i, RowWord j, std::uint32_t salt)
{
    return unitFloat(hash(i, j, salt));
}

} // namespace CIF_LANES_NAMESPACE
} // namespace builtin
