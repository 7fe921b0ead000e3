// Sums and mixtures of pixels in 16-bit numbers.
#include "editor/PixelRows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace editor {

namespace {

// Of four pixels the components, or of two what becomes of them. Loads and stores need no
// alignment.
typedef std::uint8_t Bytes __attribute__((vector_size(16)));
typedef std::uint16_t Words __attribute__((vector_size(16)));
typedef std::uint32_t Whole __attribute__((vector_size(16)));
typedef std::uint64_t Pair __attribute__((vector_size(16)));

template <class V, class T>
V load(const T* p)
{
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class V, class T>
void store(const V& v, T* p)
{
    std::memcpy(p, &v, sizeof v);
}

// The upper halves of the products.
Words times(Words a, Words b)
{
#if defined(__x86_64__)
    return Words(_mm_mulhi_epu16(__m128i(a), __m128i(b)));
#else
    Words r;
    for (int k = 0; k < 8; ++k)
        r[k] = static_cast<std::uint16_t>((std::uint32_t(a[k]) * b[k]) >> 16);
    return r;
#endif
}

// a less b, but never below 0.
Words less(Words a, Words b)
{
#if defined(__x86_64__)
    return Words(_mm_subs_epu16(__m128i(a), __m128i(b)));
#else
    return (a - b) & Words(a > b);
#endif
}

// Numbers below 256 as bytes.
Bytes narrowed(Words a, Words b)
{
#if defined(__x86_64__)
    return Bytes(_mm_packus_epi16(__m128i(a), __m128i(b)));
#else
    Bytes r;
    for (int k = 0; k < 8; ++k) {
        r[k] = static_cast<std::uint8_t>(a[k]);
        r[8 + k] = static_cast<std::uint8_t>(b[k]);
    }
    return r;
#endif
}

// Each byte of a in the lower half of a number and that of b in the upper, of the first or the last
// two pixels.
Words firstTwo(Bytes a, Bytes b)
{
    return Words(
        __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}

Words lastTwo(Bytes a, Bytes b)
{
    return Words(__builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30,
                                         15, 31));
}

// The first pixel's numbers of both, and the second's.
Words firsts(Words a, Words b)
{
    return __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
}

Words seconds(Words a, Words b)
{
    return __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
}

Words alphas(Words pixels)
{
    return __builtin_shufflevector(pixels, pixels, 3, 3, 3, 3, 7, 7, 7, 7);
}

// Products of bytes divided by 255, to nearest.
Words dividedBy255(Words v)
{
    return (v + (v >> 8) + 0x80) >> 8;
}

// To the screen's order, opaque.
Whole screenOrder(Bytes pixels)
{
    const Whole p = Whole(pixels);
    return (p & 0xff00) | ((p & 0xff) << 16) | ((p >> 16) & 0xff) | 0xff000000;
}

// Calls work with the first of every four pixels. The last four may overlap those before; fewer
// than four are worked on in a copy.
template <class Work>
void inFours(int count, const Work& work)
{
    for (int i = 0; i + 4 <= count; i += 4)
        work(i);
    if (count % 4 != 0 && count > 4)
        work(count - 4);
}

std::array<std::uint32_t, 4> paddedToFour(const std::uint32_t* pixels, int count)
{
    std::array<std::uint32_t, 4> four{};
    std::copy(pixels, pixels + count, four.begin());
    return four;
}

Bytes premultiplied(Bytes pixels)
{
    const Bytes zero{};
    // Alpha itself is multiplied by 255.
    const Words keep = {0, 0, 0, 255, 0, 0, 0, 255};
    const auto scaled = [&](Words p) { return dividedBy255(p * (alphas(p) | keep)); };
    return narrowed(scaled(firstTwo(pixels, zero)), scaled(lastTwo(pixels, zero)));
}

Whole over(Bytes pixels, Bytes backdrop)
{
    const Bytes zero{};
    const auto rest = [&](Words p, Words below) { return dividedBy255(below * (255 - alphas(p))); };
    const Words low = rest(firstTwo(pixels, zero), firstTwo(backdrop, zero));
    const Words high = rest(lastTwo(pixels, zero), lastTwo(backdrop, zero));
    return screenOrder(pixels + narrowed(low, high));
}

} // namespace

void premultiplyRow(const std::uint32_t* pixels, int count, std::uint32_t* out)
{
    // Not in fours that overlap: in place, none may be done twice.
    int i = 0;
    for (; i + 4 <= count; i += 4)
        store(premultiplied(load<Bytes>(pixels + i)), out + i);
    if (i < count) {
        std::array<std::uint32_t, 4> four = paddedToFour(pixels + i, count - i);
        store(premultiplied(load<Bytes>(four.data())), four.data());
        std::copy_n(four.begin(), count - i, out + i);
    }
}

void toScreenRow(const std::uint32_t* pixels, int count, QRgb* out)
{
    for (int i = 0; i < count; ++i)
        out[i] = (pixels[i] & 0xff00) | ((pixels[i] & 0xff) << 16) | ((pixels[i] >> 16) & 0xff) |
                 0xff000000;
}

void overRow(const std::uint32_t* pixels, Backdrop backdrop, int count, QRgb* out)
{
    if (count < 4) {
        const auto p = paddedToFour(pixels, count), b = paddedToFour(backdrop, count);
        std::array<QRgb, 4> four;
        store(over(load<Bytes>(p.data()), load<Bytes>(b.data())), four.data());
        std::copy_n(four.begin(), count, out);
        return;
    }
    inFours(count, [&](int i) {
        store(over(load<Bytes>(pixels + i), load<Bytes>(backdrop + i)), out + i);
    });
}

std::uint16_t asWeight(double weight)
{
    return static_cast<std::uint16_t>(std::clamp(std::round(weight * 65536), 0.0, 65535.0));
}

namespace {

template <int Rows>
void sumOf(const std::array<const std::uint32_t*, 3>& rows,
           const std::array<std::uint16_t, 3>& weights, int count, std::uint16_t* __restrict sums)
{
    const Bytes zero{};
    const Words a = weights[0] - Words{}, b = weights[1] - Words{}, c = weights[2] - Words{};
    inFours(count, [&](int i) {
        const Bytes p = load<Bytes>(rows[0] + i);
        Words low = firstTwo(zero, p), high = lastTwo(zero, p);
        if constexpr (Rows > 1) {
            const Bytes q = load<Bytes>(rows[1] + i);
            low = times(low, a) + times(firstTwo(zero, q), b);
            high = times(high, a) + times(lastTwo(zero, q), b);
        }
        if constexpr (Rows > 2) {
            const Bytes r = load<Bytes>(rows[2] + i);
            low += times(firstTwo(zero, r), c);
            high += times(lastTwo(zero, r), c);
        }
        store(low, sums + 4 * i);
        store(high, sums + 4 * i + 8);
    });
}

} // namespace

void sumRows(const std::array<const std::uint32_t*, 3>& rows,
             const std::array<std::uint16_t, 3>& weights, int count, Sums& sums)
{
    const auto room = static_cast<std::size_t>(std::max(count, 4) + 2) * 4;
    if (sums.size() != room)
        sums.assign(room, 0);
    if (count < 4) {
        std::array<std::array<std::uint32_t, 4>, 3> padded{};
        for (std::size_t k = 0; k < 3; ++k)
            if (k == 0 || weights[k] != 0)
                padded[k] = paddedToFour(rows[k], count);
        sumOf<3>({padded[0].data(), padded[1].data(), padded[2].data()}, weights, 4, sums.data());
    } else if (weights[2] != 0) {
        sumOf<3>(rows, weights, count, sums.data());
    } else if (weights[1] != 0) {
        sumOf<2>(rows, weights, count, sums.data());
    } else {
        sumOf<1>(rows, weights, count, sums.data());
    }
}

void ColumnMixer::append(int first, const std::array<std::uint16_t, 3>& weights)
{
    _first.push_back(static_cast<std::uint32_t>(first));
    _firstTwo.insert(_firstTwo.end(), 4, weights[0]);
    _firstTwo.insert(_firstTwo.end(), 4, weights[1]);
    _third.insert(_third.end(), 4, weights[2]);
    _three = _three || weights[2] != 0;
}

template <bool Three, bool Opaque>
void ColumnMixer::mixRow(const std::uint16_t* sums, Backdrop backdrop, QRgb* out) const
{
    const auto two = [&](int i) {
        const auto at = [&](int k) { return sums + 4 * _first[static_cast<std::size_t>(k)]; };
        const auto weighted = [&](int k) {
            return times(load<Words>(at(k)), load<Words>(&_firstTwo[8 * std::size_t(k)]));
        };
        const Words a = weighted(i), b = weighted(i + 1);
        Words mixed = firsts(a, b) + seconds(a, b);
        if constexpr (Three) {
            const Pair third = {load<std::uint64_t>(at(i) + 8), load<std::uint64_t>(at(i + 1) + 8)};
            mixed += times(Words(third), load<Words>(&_third[4 * std::size_t(i)]));
        }
        return mixed;
    };
    const auto four = [&](int i) {
        Words low = two(i), high = two(i + 2);
        if constexpr (!Opaque) {
            // A byte beside itself is 257 times the byte, which makes up for 255 in the alpha.
            // Through what is opaque but for the last digits of the sums nothing is seen.
            const Bytes below = load<Bytes>(backdrop + i);
            const Words full = std::uint16_t(0xff00 - 12) - Words{};
            low += times(firstTwo(below, below), less(full, alphas(low)));
            high += times(lastTwo(below, below), less(full, alphas(high)));
        }
        store(screenOrder(narrowed((low + 0x80) >> 8, (high + 0x80) >> 8)), out + i);
    };
    inFours(count(), four);
}

void ColumnMixer::mix(const Sums& sums, Backdrop backdrop, QRgb* out) const
{
    if (count() < 4) {
        ColumnMixer padded = *this;
        while (padded.count() < 4)
            padded.append(0, {});
        const auto below = paddedToFour(backdrop ? backdrop : nullptr, backdrop ? count() : 0);
        std::array<QRgb, 4> four;
        padded.mix(sums, backdrop ? below.data() : nullptr, four.data());
        std::copy_n(four.begin(), count(), out);
        return;
    }
    if (backdrop)
        _three ? mixRow<true, false>(sums.data(), backdrop, out)
               : mixRow<false, false>(sums.data(), backdrop, out);
    else
        _three ? mixRow<true, true>(sums.data(), nullptr, out)
               : mixRow<false, true>(sums.data(), nullptr, out);
}

} // namespace editor
