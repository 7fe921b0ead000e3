// Where parts of the plane lie: what warps tell about the pixels they read, and how far their
// results reach.
#pragma once

#include "platform/foundation/Geometry.h"

#include <vector>

namespace builtin {

using foundation::AffineTransform;
using foundation::Point;
using foundation::Rect;

inline Rect squareAround(Point center, double half)
{
    return Rect::fromEdges(center.x - half, center.y - half, center.x + half, center.y + half);
}

// Empty ones count with their edges: a point is a place, too.
inline Rect unitedBounds(const Rect& a, const Rect& b)
{
    return Rect::fromEdges(std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.right(), b.right()),
                           std::max(a.top(), b.top()));
}

inline Rect commonPart(const Rect& a, const Rect& b)
{
    return Rect::fromEdges(std::max(a.x, b.x), std::max(a.y, b.y), std::min(a.right(), b.right()),
                           std::min(a.top(), b.top()));
}

inline Rect grown(const Rect& r, double dx, double dy)
{
    return r.isInfinite() ? r : Rect::fromEdges(r.x - dx, r.y - dy, r.right() + dx, r.top() + dy);
}

// From a point to the nearest and to the farthest point of a rectangle.
inline double nearestDistance(const Rect& r, Point p)
{
    return std::hypot(std::max({r.x - p.x, p.x - r.right(), 0.0}),
                      std::max({r.y - p.y, p.y - r.top(), 0.0}));
}
inline double farthestDistance(const Rect& r, Point p)
{
    return std::hypot(std::max(std::abs(r.x - p.x), std::abs(r.right() - p.x)),
                      std::max(std::abs(r.y - p.y), std::abs(r.top() - p.y)));
}

// Around all points of the rectangle, each moved along its ray from the centre to between `low` and
// `high` times its distance.
inline Rect movedAlongRays(const Rect& r, Point center, double low, double high)
{
    const auto scaled = [&](double k) {
        const AffineTransform map{k, 0, 0, k, center.x * (1 - k), center.y * (1 - k)};
        return foundation::boundsOf(map, r);
    };
    return unitedBounds(scaled(low), scaled(high));
}

// A convex polygon.
using Polygon = std::vector<Point>;

inline Polygon cornersOf(const Rect& r)
{
    return {{r.x, r.y}, {r.right(), r.y}, {r.right(), r.top()}, {r.x, r.top()}};
}

// The part of it where the vector from `origin` points to the side of `normal`.
inline Polygon cutTo(const Polygon& polygon, Point origin, Point normal)
{
    const auto side = [&](Point p) {
        return (p.x - origin.x) * normal.x + (p.y - origin.y) * normal.y;
    };
    Polygon kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        const double sa = side(a), sb = side(b);
        if (sa >= 0)
            kept.push_back(a);
        if ((sa > 0 && sb < 0) || (sa < 0 && sb > 0)) {
            const double k = sa / (sa - sb);
            kept.push_back({a.x + (b.x - a.x) * k, a.y + (b.y - a.y) * k});
        }
    }
    return kept;
}

// The smallest upright rectangle around a polygon; empty for an empty one.
inline Rect boundsOf(const Polygon& polygon)
{
    if (polygon.empty())
        return {};
    Point low = polygon[0], high = polygon[0];
    for (const Point& p : polygon) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    return Rect::fromEdges(low.x, low.y, high.x, high.y);
}

} // namespace builtin
