// Lanes of pixels: the thin facade over the compiler's vector types that kernels are written on.
//
// F holds kLanes single-precision numbers, I as many 32-bit integers, M a truth value for each.
// With AVX2 there are 8 lanes, on the baseline 4. The two never meet in one program; the inline
// namespace keeps their names apart all the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#if defined(__AVX2__)
#define CIF_LANES 8
#define CIF_LANES_NAMESPACE lanes8
#else
#define CIF_LANES 4
#define CIF_LANES_NAMESPACE lanes4
#endif

namespace imaging {
inline namespace CIF_LANES_NAMESPACE {

constexpr int kLanes = CIF_LANES;

typedef float FloatLanes __attribute__((vector_size(4 * kLanes)));
typedef std::int32_t IntLanes __attribute__((vector_size(4 * kLanes)));
typedef std::uint32_t UIntLanes __attribute__((vector_size(4 * kLanes)));
typedef float Float4 __attribute__((vector_size(16))); // one interleaved pixel

struct M {
    IntLanes v; // all bits set where true
    friend M operator&(M a, M b) { return {a.v & b.v}; }
    friend M operator|(M a, M b) { return {a.v | b.v}; }
    friend M operator!(M a) { return {~a.v}; }
};

struct F {
    FloatLanes v;
    F() = default;
    F(FloatLanes x) : v(x) {}
    F(float x) : v(x - FloatLanes{}) {} // a plain broadcast: x − 0 is x, whatever x is
    F(double x) : F(static_cast<float>(x)) {}
    F(int x) : F(static_cast<float>(x)) {}

    friend F operator+(F a, F b) { return a.v + b.v; }
    friend F operator-(F a, F b) { return a.v - b.v; }
    friend F operator*(F a, F b) { return a.v * b.v; }
    friend F operator/(F a, F b) { return a.v / b.v; }
    friend F operator-(F a) { return -a.v; }
    F& operator+=(F b) { return *this = *this + b; }
    F& operator-=(F b) { return *this = *this - b; }
    F& operator*=(F b) { return *this = *this * b; }
    friend M operator<(F a, F b) { return {a.v < b.v}; }
    friend M operator<=(F a, F b) { return {a.v <= b.v}; }
    friend M operator>(F a, F b) { return {a.v > b.v}; }
    friend M operator>=(F a, F b) { return {a.v >= b.v}; }
    friend M operator==(F a, F b) { return {a.v == b.v}; }
    friend M operator!=(F a, F b) { return {a.v != b.v}; }
};

struct I {
    IntLanes v;
    I() = default;
    I(IntLanes x) : v(x) {}
    I(int x) : v(IntLanes{} + x) {}

    // Wrap around, like the unsigned arithmetic they are done in.
    friend I operator+(I a, I b) { return IntLanes(UIntLanes(a.v) + UIntLanes(b.v)); }
    friend I operator-(I a, I b) { return IntLanes(UIntLanes(a.v) - UIntLanes(b.v)); }
    friend I operator*(I a, I b) { return IntLanes(UIntLanes(a.v) * UIntLanes(b.v)); }
    friend I operator&(I a, I b) { return a.v & b.v; }
    friend I operator|(I a, I b) { return a.v | b.v; }
    friend I operator^(I a, I b) { return a.v ^ b.v; }
    friend I operator<<(I a, int n) { return IntLanes(UIntLanes(a.v) << n); }
    // Zeros come in from the left.
    friend I shiftRight(I a, int n) { return IntLanes(UIntLanes(a.v) >> n); }
    friend M operator==(I a, I b) { return {a.v == b.v}; }
    friend M operator<(I a, I b) { return {a.v < b.v}; }
    friend M operator>=(I a, I b) { return {a.v >= b.v}; }
};

inline F load(const float* p)
{
    F r;
    std::memcpy(&r.v, p, sizeof r.v);
    return r;
}
inline void store(float* p, F a)
{
    std::memcpy(p, &a.v, sizeof a.v);
}
inline I loadInts(const void* p)
{
    I r;
    std::memcpy(&r.v, p, sizeof r.v);
    return r;
}
inline void storeInts(void* p, I a)
{
    std::memcpy(p, &a.v, sizeof a.v);
}

inline F select(M m, F a, F b)
{
    return FloatLanes(m.v ? a.v : b.v);
}
inline I select(M m, I a, I b)
{
    return IntLanes(m.v ? a.v : b.v);
}
// The second operand where the first is not a number.
inline F min(F a, F b)
{
    return select(a < b, a, b);
}
inline F max(F a, F b)
{
    return select(a > b, a, b);
}
inline I min(I a, I b)
{
    return select(a < b, a, b);
}
inline I max(I a, I b)
{
    return select(a < b, b, a);
}
inline F clamp(F x, F low, F high)
{
    return min(max(x, low), high);
}
// Not-a-number becomes 0.
inline F clamp01(F x)
{
    return clamp(x, 0.0f, 1.0f);
}

inline F asFloats(I a)
{
    return FloatLanes(a.v);
}
inline I asInts(F a)
{
    return IntLanes(a.v);
}
inline F toFloat(I a)
{
    return __builtin_convertvector(a.v, FloatLanes);
}
// Truncates; the value must be within ±2³¹.
inline I toInt(F a)
{
    return __builtin_convertvector(a.v, IntLanes);
}
inline F abs(F a)
{
    return asFloats(asInts(a) & I(0x7fffffff));
}

#if defined(__AVX2__)
inline F sqrt(F a)
{
    return FloatLanes(_mm256_sqrt_ps(__m256(a.v)));
}
inline F floor(F a)
{
    return FloatLanes(_mm256_floor_ps(__m256(a.v)));
}
// To the nearest integer, halves to even.
inline I roundToInt(F a)
{
    return IntLanes(_mm256_cvtps_epi32(__m256(a.v)));
}
// One bit a lane: its sign bit.
inline int signs(I a)
{
    return _mm256_movemask_ps(__m256(a.v));
}
#elif defined(__x86_64__)
inline F sqrt(F a)
{
    return FloatLanes(_mm_sqrt_ps(__m128(a.v)));
}
inline I roundToInt(F a)
{
    return IntLanes(_mm_cvtps_epi32(__m128(a.v)));
}
inline int signs(I a)
{
    return _mm_movemask_ps(__m128(a.v));
}
inline F floor(F a)
{
    // Beyond 2²³ every number is whole.
    const F t = toFloat(toInt(a));
    const F down = select(t > a, t - F(1.0f), t);
    return select(abs(a) < F(8388608.0f), down, a);
}
#else
inline F sqrt(F a)
{
    for (int k = 0; k < kLanes; ++k)
        a.v[k] = __builtin_sqrtf(a.v[k]);
    return a;
}
inline F floor(F a)
{
    for (int k = 0; k < kLanes; ++k)
        a.v[k] = __builtin_floorf(a.v[k]);
    return a;
}
inline I roundToInt(F a)
{
    I r;
    for (int k = 0; k < kLanes; ++k)
        r.v[k] = static_cast<std::int32_t>(__builtin_rintf(a.v[k]));
    return r;
}
inline int signs(I a)
{
    int bits = 0;
    for (int k = 0; k < kLanes; ++k)
        bits |= (a.v[k] < 0) << k;
    return bits;
}
#endif

constexpr int kAllLanes = (1 << kLanes) - 1;
inline bool all(M m)
{
    return signs(I(m.v)) == kAllLanes;
}
inline bool any(M m)
{
    return signs(I(m.v)) != 0;
}

// 0, 1, 2, …
inline F iota()
{
    F r;
    for (int k = 0; k < kLanes; ++k)
        r.v[k] = static_cast<float>(k);
    return r;
}

inline I iotaInts()
{
    I r;
    for (int k = 0; k < kLanes; ++k)
        r.v[k] = k;
    return r;
}

inline F frac(F x)
{
    return x - floor(x);
}
// Never negative for m above 0.
inline F mod(F x, F m)
{
    return x - m * floor(x / m);
}
inline F mix(F a, F b, F t)
{
    return a + (b - a) * t;
}
inline F step(F edge, F x)
{
    return select(x >= edge, F(1.0f), F(0.0f));
}
inline F smoothstep(F a, F b, F x)
{
    const F t = clamp01((x - a) / (b - a));
    return t * t * (F(3.0f) - F(2.0f) * t);
}

// Base-2 logarithm of a positive number: about 1e-7 absolute for numbers near 1, 1e-6 relative
// elsewhere. Atanh series on the mantissa in [√½, √2).
inline F log2(F x)
{
    const I bits = asInts(x);
    I exponent = shiftRight(bits, 23) - I(127);
    F m = asFloats((bits & I(0x7fffff)) | I(0x3f800000));
    const M big = m > F(1.41421356f);
    m = select(big, m * F(0.5f), m);
    exponent = select(big, exponent + I(1), exponent);
    const F t = (m - F(1.0f)) / (m + F(1.0f)), t2 = t * t;
    const F series = F(2.88539008f) +
                     t2 * (F(0.961796694f) +
                           t2 * (F(0.577078016f) + t2 * (F(0.412198583f) + t2 * F(0.320598898f))));
    return toFloat(exponent) + t * series;
}

// 2^x, about 1e-7 relative; 0 below 2^-126, infinite from 2^128.
inline F exp2(F x)
{
    const M tiny = x < F(-126.0f), huge = x >= F(128.0f);
    const F limited = clamp(x, -126.0f, 127.99999f);
    const F whole = floor(limited + F(0.5f));
    const F f = limited - whole;
    const F p =
        F(1.0f) +
        f * (F(0.693147181f) +
             f * (F(0.240226507f) +
                  f * (F(0.0555041087f) + f * (F(0.00961812911f) +
                                               f * (F(0.00133335581f) + f * F(0.000154035304f))))));
    // In two steps, as 2^128 is no number of its own.
    const F half = asFloats((toInt(whole) - I(1) + I(127)) << 23);
    F r = p * half * F(2.0f);
    r = select(tiny, F(0.0f), r);
    r = select(huge, F(__builtin_inff()), r);
    return select(x == x, r, x);
}

inline F exp(F x)
{
    return exp2(x * F(1.44269504f));
}
// x^y for x ≥ 0; 0^0 is 1.
inline F pow(F x, F y)
{
    const F r = exp2(y * log2(max(x, F(1.17549435e-38f))));
    const F atZero = select(y > F(0.0f), F(0.0f), select(y == F(0.0f), F(1.0f), r));
    return select(x > F(0.0f), r, select(x == x, atZero, x));
}

// Sine and cosine, about 1e-7 absolute up to a few thousand turns' worth of radians per unit of
// argument precision. Reduced by quarter turns in two parts.
inline void sincos(F angle, F& sine, F& cosine)
{
    const F quarters = floor(angle * F(0.636619772f) + F(0.5f));
    const F r = (angle - quarters * F(1.5703125f)) - quarters * F(4.83826794897e-4f);
    const F r2 = r * r;
    const I k = toInt(clamp(quarters, -1e9f, 1e9f));
    const F s =
        r * (F(1.0f) +
             r2 * (F(-0.166666667f) +
                   r2 * (F(0.00833333333f) + r2 * (F(-0.000198412698f) + r2 * F(2.7525562e-6f)))));
    const F c =
        F(1.0f) + r2 * (F(-0.5f) + r2 * (F(0.0416666418f) +
                                         r2 * (F(-0.00138888137f) + r2 * F(0.0000243904487f))));
    const M odd = (k & I(1)) == I(1);
    const F a = select(odd, c, s), b = select(odd, s, c);
    sine = select((k & I(2)) == I(2), -a, a);
    cosine = select(((k + I(1)) & I(2)) == I(2), -b, b);
}
inline F sin(F x)
{
    F s, c;
    sincos(x, s, c);
    return s;
}
inline F cos(F x)
{
    F s, c;
    sincos(x, s, c);
    return c;
}

// Arc tangent in (-π/2, π/2), about 2e-7. Reduced to |x| ≤ tan(π/8) by the addition theorem.
inline F atan(F x)
{
    const F a = abs(x);
    const M steep = a > F(2.41421356f), middle = (a > F(0.414213562f)) & !steep;
    F t = select(steep, F(-1.0f) / a, select(middle, (a - F(1.0f)) / (a + F(1.0f)), a));
    const F base = select(steep, F(1.57079633f), select(middle, F(0.785398163f), F(0.0f)));
    const F z = t * t;
    const F p = ((F(8.05374449538e-2f) * z - F(1.38776856032e-1f)) * z + F(1.99777106478e-1f)) * z -
                F(3.33329491539e-1f);
    const F r = base + (p * z * t + t);
    return select(x < F(0.0f), -r, r);
}
// The angle of (x, y) in (-π, π]; 0 at the origin.
inline F atan2(F y, F x)
{
    constexpr float pi = 3.14159265f;
    const F r = atan(y / x);
    const F turned = select(y < F(0.0f), r - F(pi), r + F(pi));
    const F onAxis = select(y > F(0.0f), F(pi / 2), select(y < F(0.0f), F(-pi / 2), F(0.0f)));
    return select(x == F(0.0f), onAxis, select(x < F(0.0f), turned, r));
}
// Arc sine of a number within ±1 (limited to it).
inline F asin(F x)
{
    const F limited = clamp(x, -1.0f, 1.0f);
    return atan2(limited, sqrt((F(1.0f) - limited) * (F(1.0f) + limited)));
}

#if CIF_LANES == 8
#define CIF_EVEN 0, 2, 4, 6, 8, 10, 12, 14
#define CIF_ODD 1, 3, 5, 7, 9, 11, 13, 15
#define CIF_LOW_PAIRS 0, 8, 1, 9, 2, 10, 3, 11
#define CIF_HIGH_PAIRS 4, 12, 5, 13, 6, 14, 7, 15
#else
#define CIF_EVEN 0, 2, 4, 6
#define CIF_ODD 1, 3, 5, 7
#define CIF_LOW_PAIRS 0, 4, 1, 5
#define CIF_HIGH_PAIRS 2, 6, 3, 7
#endif

// Takes apart 2·kLanes numbers that alternate, and puts them together.
inline void unzip(I first, I second, I& even, I& odd)
{
    even = I(__builtin_shufflevector(first.v, second.v, CIF_EVEN));
    odd = I(__builtin_shufflevector(first.v, second.v, CIF_ODD));
}
inline void unzip(F first, F second, F& even, F& odd)
{
    even = F(__builtin_shufflevector(first.v, second.v, CIF_EVEN));
    odd = F(__builtin_shufflevector(first.v, second.v, CIF_ODD));
}
inline void zip(I even, I odd, I& first, I& second)
{
    first = I(__builtin_shufflevector(even.v, odd.v, CIF_LOW_PAIRS));
    second = I(__builtin_shufflevector(even.v, odd.v, CIF_HIGH_PAIRS));
}
inline void zip(F even, F odd, F& first, F& second)
{
    first = F(__builtin_shufflevector(even.v, odd.v, CIF_LOW_PAIRS));
    second = F(__builtin_shufflevector(even.v, odd.v, CIF_HIGH_PAIRS));
}

// The 32-bit numbers at base[index] and at base[index + 1] for every lane: one 64-bit load for
// both, which beats the gather instructions.
inline void loadNeighbours(const std::uint32_t* base, I index, I& here, I& right)
{
    constexpr int half = kLanes / 2;
    typedef std::int64_t Pairs __attribute__((vector_size(4 * kLanes)));
    Pairs low = {}, high = {}; // for the compiler, which does not see that all are set
    for (int k = 0; k < half; ++k) {
        std::int64_t p;
        std::memcpy(&p, base + index.v[k], 8);
        low[k] = p;
        std::memcpy(&p, base + index.v[k + half], 8);
        high[k] = p;
    }
    unzip(I(IntLanes(low)), I(IntLanes(high)), here, right);
}

} // namespace CIF_LANES_NAMESPACE
} // namespace imaging
