#include "platform/drawing/modules/DevicePath.h"

#include "platform/drawing/Flatten.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace drawing {

namespace {

using Element = Path::Element;
using Kind = Element::Kind;

// A polyline; closed figures do not repeat their first point.
struct Figure {
    std::vector<Point> points;
    bool closed = false;
};

struct Mapped {
    std::vector<Element> elements; // in device units, finite, every figure beginning with a move
    bool reachesTooFar = false;
};

bool isFinite(Point p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

Mapped mapped(std::span<const Path::Element> path, const AffineTransform& toDevice, double reach)
{
    // Far beyond any picture, and near enough that differences and products stay finite.
    constexpr double kEndOfWorld = 1e15;
    Mapped out;
    out.elements.reserve(path.size());
    bool needsMove = true;
    for (Element element : path) {
        if (element.kind == Kind::Close) {
            if (!needsMove)
                out.elements.push_back(element);
            continue;
        }
        bool usable = true;
        const int count = element.kind == Kind::CurveTo ? 3 : 1;
        for (int i = 0; i < count; ++i) {
            Point& p = element.points[i];
            p = toDevice.apply(p);
            usable = usable && isFinite(p);
            p = {std::clamp(p.x, -kEndOfWorld, kEndOfWorld),
                 std::clamp(p.y, -kEndOfWorld, kEndOfWorld)};
            out.reachesTooFar |= !(std::abs(p.x) <= reach && std::abs(p.y) <= reach);
        }
        if (!usable) {
            // What follows a lost move is a figure of its own, not a part of the one before.
            needsMove |= element.kind == Kind::MoveTo;
            continue;
        }
        if (needsMove)
            element = {Kind::MoveTo, {element.points[count - 1]}};
        needsMove = false;
        out.elements.push_back(element);
    }
    return out;
}

void emitElements(cairo_t* context, const std::vector<Element>& elements)
{
    for (const Element& element : elements) {
        const Point* p = element.points;
        switch (element.kind) {
        case Kind::MoveTo:
            cairo_move_to(context, p->x, p->y);
            break;
        case Kind::LineTo:
            cairo_line_to(context, p->x, p->y);
            break;
        case Kind::CurveTo:
            cairo_curve_to(context, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
            break;
        case Kind::Close:
            cairo_close_path(context);
            break;
        }
    }
}

Point middle(Point a, Point b)
{
    return {(a.x + b.x) / 2, (a.y + b.y) / 2};
}

// A curve none of which is within reach may be replaced by its chord: both lie on the same side.
bool misses(double reach, const Point (&p)[4])
{
    const auto [lowX, highX] = std::minmax({p[0].x, p[1].x, p[2].x, p[3].x});
    const auto [lowY, highY] = std::minmax({p[0].y, p[1].y, p[2].y, p[3].y});
    return lowX > reach || highX < -reach || lowY > reach || highY < -reach;
}

void flattenCurve(const Point (&p)[4], double reach, int depth, std::vector<Point>& out)
{
    constexpr double kTolerance = 0.05;
    constexpr int kStepsAtOnce = 64;
    const int steps = curveSteps(p[0], p[1], p[2], p[3], kTolerance);
    if (depth == 0 || steps == 1 || misses(reach, p)) {
        out.push_back(p[3]);
    } else if (steps <= kStepsAtOnce) {
        for (int i = 1; i < steps; ++i)
            out.push_back(curvePoint(p[0], p[1], p[2], p[3], double(i) / steps));
        out.push_back(p[3]);
    } else {
        const Point a = middle(p[0], p[1]), b = middle(p[1], p[2]), c = middle(p[2], p[3]);
        const Point ab = middle(a, b), bc = middle(b, c), half = middle(ab, bc);
        flattenCurve({p[0], a, ab, half}, reach, depth - 1, out);
        flattenCurve({half, bc, c, p[3]}, reach, depth - 1, out);
    }
}

std::vector<Figure> flattened(const std::vector<Element>& elements, double reach)
{
    std::vector<Figure> figures;
    for (const Element& element : elements) {
        if (element.kind == Kind::Close) {
            figures.back().closed = true;
            continue;
        }
        if (element.kind == Kind::MoveTo)
            figures.push_back({});
        else if (figures.back().closed) // goes on from the start of the figure just closed
            figures.push_back({{figures.back().points.front()}, false});
        std::vector<Point>& points = figures.back().points;
        if (element.kind == Kind::CurveTo) {
            constexpr int kDepth = 40; // from the end of the world down to less than a pixel
            const Point* p = element.points;
            flattenCurve({points.back(), p[0], p[1], p[2]}, reach, kDepth, points);
        } else {
            points.push_back(element.points[0]);
        }
    }
    return figures;
}

// How far beyond one edge of the reach a point lies; above 0 is outside.
double beyond(Point p, int edge, double reach)
{
    switch (edge) {
    case 0:
        return p.x - reach;
    case 1:
        return -reach - p.x;
    case 2:
        return p.y - reach;
    default:
        return -reach - p.y;
    }
}

// Cuts a polygon at one edge after the other: what lies outside is pressed flat onto the edge,
// which leaves the winding number of every point inside as it was.
std::vector<Point> cutPolygon(std::vector<Point> polygon, double reach)
{
    for (int edge = 0; edge < 4; ++edge) {
        std::vector<Point> kept;
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Point from = polygon[i], to = polygon[(i + 1) % polygon.size()];
            const double a = beyond(from, edge, reach), b = beyond(to, edge, reach);
            if (a <= 0)
                kept.push_back(from);
            if ((a > 0) != (b > 0)) {
                const double t = a / (a - b);
                kept.push_back({from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)});
            }
        }
        polygon = std::move(kept);
    }
    return polygon;
}

bool isWithin(double reach, Point p)
{
    return std::abs(p.x) <= reach && std::abs(p.y) <= reach;
}

// The part of a line within reach, if any.
bool cutLine(Point& from, Point& to, double reach)
{
    double enter = 0, leave = 1;
    for (int edge = 0; edge < 4; ++edge) {
        const double a = beyond(from, edge, reach), b = beyond(to, edge, reach);
        if (a > 0 && b > 0)
            return false;
        if (a > 0)
            enter = std::max(enter, a / (a - b));
        else if (b > 0)
            leave = std::min(leave, a / (a - b));
    }
    if (enter > leave)
        return false;
    const Point start = from;
    const double dx = to.x - from.x, dy = to.y - from.y;
    if (enter > 0)
        from = {start.x + enter * dx, start.y + enter * dy};
    if (leave < 1)
        to = {start.x + leave * dx, start.y + leave * dy};
    return true;
}

void strokeFigure(cairo_t* context, Figure figure, double reach)
{
    std::vector<Point>& points = figure.points;
    const auto outside =
        std::ranges::find_if_not(points, [&](Point p) { return isWithin(reach, p); });
    if (outside == points.end()) {
        for (std::size_t i = 0; i < points.size(); ++i)
            (i == 0 ? cairo_move_to : cairo_line_to)(context, points[i].x, points[i].y);
        if (figure.closed)
            cairo_close_path(context);
        return;
    }
    // A closed figure is begun at a point out of sight, so that all its joins in sight stay joins.
    if (figure.closed) {
        std::ranges::rotate(points, outside);
        points.push_back(points.front());
    }
    bool goesOn = false;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        Point from = points[i], to = points[i + 1];
        if (!cutLine(from, to, reach)) {
            goesOn = false;
            continue;
        }
        if (!goesOn)
            cairo_move_to(context, from.x, from.y);
        cairo_line_to(context, to.x, to.y);
        goesOn = to == points[i + 1];
    }
}

} // namespace

void setFillPath(cairo_t* context, std::span<const Path::Element> path,
                 const AffineTransform& toDevice, double reach)
{
    cairo_new_path(context);
    const Mapped device = mapped(path, toDevice, reach);
    if (!device.reachesTooFar)
        return emitElements(context, device.elements);
    for (Figure& figure : flattened(device.elements, reach)) {
        bool first = true;
        for (const Point& p : cutPolygon(std::move(figure.points), reach)) {
            (first ? cairo_move_to : cairo_line_to)(context, p.x, p.y);
            first = false;
        }
        if (!first)
            cairo_close_path(context);
    }
}

void setStrokePath(cairo_t* context, std::span<const Path::Element> path,
                   const AffineTransform& toDevice, double reach)
{
    cairo_new_path(context);
    Mapped device = mapped(path, toDevice, reach);
    if (!device.reachesTooFar)
        return emitElements(context, device.elements);
    for (Figure& figure : flattened(device.elements, reach))
        strokeFigure(context, std::move(figure), reach);
}

} // namespace drawing
