// Points, sizes, rectangles, vectors and affine transforms: plain values in double precision, y up.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace foundation {

struct Point {
    double x = 0, y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0, height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

// Origin and size. An empty rectangle has a width or height that is not above 0; the infinite one
// covers the whole plane.
struct Rect {
    double x = 0, y = 0, width = 0, height = 0;

    static constexpr Rect infinite()
    {
        constexpr double inf = std::numeric_limits<double>::infinity();
        return {-inf, -inf, inf, inf};
    }
    static constexpr Rect fromEdges(double left, double bottom, double right, double top)
    {
        return {left, bottom, right - left, top - bottom};
    }

    bool isInfinite() const { return std::isinf(width) || std::isinf(height); }
    bool isEmpty() const { return !(width > 0 && height > 0); }
    double right() const { return std::isinf(width) ? width : x + width; }
    double top() const { return std::isinf(height) ? height : y + height; }
    double midX() const { return x + width * 0.5; }
    double midY() const { return y + height * 0.5; }

    friend bool operator==(const Rect&, const Rect&) = default;
};

// A list of one to four numbers.
struct Vector {
    double x = 0, y = 0, z = 0, w = 0;
    int count = 2;

    Vector() = default;
    constexpr Vector(double vx, double vy) : x(vx), y(vy) {}
    constexpr Vector(double vx, double vy, double vz) : x(vx), y(vy), z(vz), count(3) {}
    constexpr Vector(double vx, double vy, double vz, double vw)
        : x(vx), y(vy), z(vz), w(vw), count(4)
    {
    }

    Point point() const { return {x, y}; }
    friend bool operator==(const Vector&, const Vector&) = default;
};

// x' = m11·x + m21·y + tX, y' = m12·x + m22·y + tY.
struct AffineTransform {
    double m11 = 1, m12 = 0, m21 = 0, m22 = 1, tX = 0, tY = 0;

    static AffineTransform translation(double dx, double dy) { return {1, 0, 0, 1, dx, dy}; }
    static AffineTransform scaling(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }
    // Counter-clockwise, radians.
    static AffineTransform rotation(double angle)
    {
        const double c = std::cos(angle), s = std::sin(angle);
        return {c, s, -s, c, 0, 0};
    }

    Point apply(Point p) const { return {m11 * p.x + m21 * p.y + tX, m12 * p.x + m22 * p.y + tY}; }
    double determinant() const { return m11 * m22 - m12 * m21; }

    // This transform first, then the next one.
    AffineTransform followedBy(const AffineTransform& next) const
    {
        return {m11 * next.m11 + m12 * next.m21,         m11 * next.m12 + m12 * next.m22,
                m21 * next.m11 + m22 * next.m21,         m21 * next.m12 + m22 * next.m22,
                tX * next.m11 + tY * next.m21 + next.tX, tX * next.m12 + tY * next.m22 + next.tY};
    }

    // Of an invertible transform; the caller checks the determinant.
    AffineTransform inverse() const
    {
        const double k = 1 / determinant();
        return {m22 * k,
                -m12 * k,
                -m21 * k,
                m11 * k,
                (m21 * tY - m22 * tX) * k,
                (m12 * tX - m11 * tY) * k};
    }

    bool isWholePixelTranslation() const
    {
        return m11 == 1 && m12 == 0 && m21 == 0 && m22 == 1 && tX == std::floor(tX) &&
               tY == std::floor(tY) && std::abs(tX) < 1e9 && std::abs(tY) < 1e9;
    }

    friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

// The smallest upright rectangle around the transformed corners; an infinite one stays infinite.
inline Rect boundsOf(const AffineTransform& t, const Rect& r)
{
    if (r.isInfinite())
        return r;
    const Point corners[] = {t.apply({r.x, r.y}), t.apply({r.right(), r.y}),
                             t.apply({r.x, r.top()}), t.apply({r.right(), r.top()})};
    Point low = corners[0], high = corners[0];
    for (const Point& p : corners) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    return Rect::fromEdges(low.x, low.y, high.x, high.y);
}

} // namespace foundation
