// Lanes of colours and positions: the words that kernels are written in.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/imaging/Lanes.h"
#include "platform/imaging/Node.h"

namespace imaging {
inline namespace CIF_LANES_NAMESPACE {

// An unpremultiplied colour without alpha.
struct Rgb {
    F r, g, b;

    friend Rgb operator+(Rgb p, Rgb q) { return {p.r + q.r, p.g + q.g, p.b + q.b}; }
    friend Rgb operator-(Rgb p, Rgb q) { return {p.r - q.r, p.g - q.g, p.b - q.b}; }
    friend Rgb operator*(Rgb p, Rgb q) { return {p.r * q.r, p.g * q.g, p.b * q.b}; }
    friend Rgb operator*(Rgb p, F k) { return {p.r * k, p.g * k, p.b * k}; }
    friend Rgb operator+(Rgb p, F k) { return {p.r + k, p.g + k, p.b + k}; }
    friend Rgb operator-(Rgb p, F k) { return {p.r - k, p.g - k, p.b - k}; }
};

// A premultiplied colour.
struct Px {
    F r, g, b, a;

    friend Px operator+(Px p, Px q) { return {p.r + q.r, p.g + q.g, p.b + q.b, p.a + q.a}; }
    friend Px operator-(Px p, Px q) { return {p.r - q.r, p.g - q.g, p.b - q.b, p.a - q.a}; }
    friend Px operator*(Px p, F k) { return {p.r * k, p.g * k, p.b * k, p.a * k}; }
};

inline Px transparent()
{
    return {0.0f, 0.0f, 0.0f, 0.0f};
}
inline Px select(M m, Px p, Px q)
{
    return {select(m, p.r, q.r), select(m, p.g, q.g), select(m, p.b, q.b), select(m, p.a, q.a)};
}
inline Px mix(Px p, Px q, F t)
{
    return {mix(p.r, q.r, t), mix(p.g, q.g, t), mix(p.b, q.b, t), mix(p.a, q.a, t)};
}
inline Rgb mix(Rgb p, Rgb q, F t)
{
    return {mix(p.r, q.r, t), mix(p.g, q.g, t), mix(p.b, q.b, t)};
}

// Luminance with the weights that all filters share.
constexpr float kRedWeight = 0.2125f, kGreenWeight = 0.7154f, kBlueWeight = 0.0721f;
inline F luminance(Rgb c)
{
    return c.r * F(kRedWeight) + c.g * F(kGreenWeight) + c.b * F(kBlueWeight);
}
inline F luminance(Px c)
{
    return luminance(Rgb{c.r, c.g, c.b});
}

// 0 where the alpha is 0.
inline Rgb unpremultiplied(Px p)
{
    const F k = select(p.a == F(0.0f), F(0.0f), F(1.0f) / p.a);
    return {p.r * k, p.g * k, p.b * k};
}
inline Px premultiplied(Rgb c, F a)
{
    return {c.r * a, c.g * a, c.b * a, a};
}

// The same colour in all lanes. Colour values are unpremultiplied.
inline Px premultiplied(const Color& c)
{
    return {c.red * c.alpha, c.green * c.alpha, c.blue * c.alpha, c.alpha};
}
inline Rgb rgbOf(const Color& c)
{
    return {c.red, c.green, c.blue};
}

inline Px loadPx(const Strip& s, int i)
{
    return {load(s.r + i), load(s.g + i), load(s.b + i), load(s.a + i)};
}
inline void storePx(const Strip& s, int i, Px p)
{
    store(s.r + i, p.r);
    store(s.g + i, p.g);
    store(s.b + i, p.b);
    store(s.a + i, p.a);
}

// kLanes interleaved float pixels to planar and back.
inline Px loadInterleaved(const float* p)
{
    const F v0 = load(p), v1 = load(p + kLanes), v2 = load(p + 2 * kLanes),
            v3 = load(p + 3 * kLanes);
    F rb0, ga0, rb1, ga1;
    unzip(v0, v1, rb0, ga0);
    unzip(v2, v3, rb1, ga1);
    Px out;
    unzip(rb0, rb1, out.r, out.b);
    unzip(ga0, ga1, out.g, out.a);
    return out;
}
inline void storeInterleaved(float* p, Px c)
{
    F rb0, rb1, ga0, ga1, v0, v1;
    zip(c.r, c.b, rb0, rb1);
    zip(c.g, c.a, ga0, ga1);
    zip(rb0, ga0, v0, v1);
    store(p, v0);
    store(p + kLanes, v1);
    zip(rb1, ga1, v0, v1);
    store(p + 2 * kLanes, v0);
    store(p + 3 * kLanes, v1);
}

// Four bytes, red lowest, to a colour in 0…1.
inline Px unpackBytes(I v)
{
    const F k = 1.0f / 255;
    return {toFloat(v & I(255)) * k, toFloat(shiftRight(v, 8) & I(255)) * k,
            toFloat(shiftRight(v, 16) & I(255)) * k, toFloat(shiftRight(v, 24)) * k};
}

// A distance in the plane.
struct Vec2 {
    F x, y;

    friend Vec2 operator+(Vec2 a, Vec2 b) { return {a.x + b.x, a.y + b.y}; }
    friend Vec2 operator-(Vec2 a, Vec2 b) { return {a.x - b.x, a.y - b.y}; }
    friend Vec2 operator*(Vec2 a, F k) { return {a.x * k, a.y * k}; }
    friend Vec2 operator-(Vec2 a) { return {-a.x, -a.y}; }
};
inline F dot(Vec2 a, Vec2 b)
{
    return a.x * b.x + a.y * b.y;
}
inline F length(Vec2 a)
{
    return sqrt(dot(a, a));
}
// Counter-clockwise by the angle whose sine and cosine are given.
inline Vec2 rotate(Vec2 v, F sine, F cosine)
{
    return {v.x * cosine - v.y * sine, v.x * sine + v.y * cosine};
}
inline Vec2 rotate(Vec2 v, F angle)
{
    F s, c;
    sincos(angle, s, c);
    return rotate(v, s, c);
}

// A position in the plane: an anchor in double precision and an offset from it, so that positions
// far from the origin keep their fractions.
struct Coord {
    Point anchor;
    Vec2 offset;

    // From the point to here.
    friend Vec2 operator-(const Coord& c, Point p)
    {
        return c.offset +
               Vec2{static_cast<float>(c.anchor.x - p.x), static_cast<float>(c.anchor.y - p.y)};
    }
    friend Coord operator+(const Coord& c, Vec2 v) { return {c.anchor, c.offset + v}; }
    friend Coord operator-(const Coord& c, Vec2 v) { return {c.anchor, c.offset - v}; }

    // As seen from the origin, in single precision.
    F x() const { return offset.x + F(static_cast<float>(anchor.x)); }
    F y() const { return offset.y + F(static_cast<float>(anchor.y)); }
};

inline Coord operator+(Point p, Vec2 v)
{
    return {p, v};
}

inline Coord transformed(const Coord& c, const AffineTransform& t)
{
    return {t.apply(c.anchor),
            {F(t.m11) * c.offset.x + F(t.m21) * c.offset.y,
             F(t.m12) * c.offset.x + F(t.m22) * c.offset.y}};
}

// The middles of the kLanes pixels that begin i pixels into the span.
inline Coord pixelCenters(const Span& span, int i)
{
    const int anchor = span.anchor();
    return {{static_cast<double>(anchor), span.y + 0.5},
            {iota() + F(static_cast<float>(span.x - anchor + i) + 0.5f), F(0.0f)}};
}

} // namespace CIF_LANES_NAMESPACE
} // namespace imaging
