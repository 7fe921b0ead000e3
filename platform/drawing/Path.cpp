// Building paths and asking what lies inside them.
#include "platform/drawing/Path.h"

#include "platform/drawing/Flatten.h"

#include <numbers>

namespace drawing {

namespace {

using Kind = Path::Element::Kind;

// The control length at which a cubic quarter circle is off by at most 0.027 % of the radius.
constexpr double kCircleControl = 0.5522847498307936;

int pointCount(Kind kind)
{
    switch (kind) {
    case Kind::MoveTo:
    case Kind::LineTo:
        return 1;
    case Kind::CurveTo:
        return 3;
    case Kind::Close:
        return 0;
    }
    return 0;
}

// What an edge adds to the winding number of a point whose ray runs to the right. An edge owns its
// lower end and not its upper one, so that a vertex counts once.
int crossing(Point a, Point b, Point p)
{
    const bool upward = a.y <= p.y && b.y > p.y;
    const bool downward = b.y <= p.y && a.y > p.y;
    if (!upward && !downward)
        return 0;
    const double side = (b.x - a.x) * (p.y - a.y) - (p.x - a.x) * (b.y - a.y);
    if (upward)
        return side > 0 ? 1 : 0;
    return side < 0 ? -1 : 0;
}

} // namespace

Path Path::ovalInRect(const Rect& rect)
{
    Path path;
    path.appendOvalInRect(rect);
    return path;
}

void Path::moveTo(Point p)
{
    _figureStart = p;
    // Of several moves in a row only the last one means anything.
    if (!_elements.empty() && _elements.back().kind == Kind::MoveTo)
        _elements.back().points[0] = p;
    else
        _elements.push_back({Kind::MoveTo, {p}});
}

void Path::lineTo(Point p)
{
    if (_elements.empty())
        return moveTo(p);
    _elements.push_back({Kind::LineTo, {p}});
}

void Path::curveTo(Point control1, Point control2, Point end)
{
    if (_elements.empty())
        moveTo(control1);
    _elements.push_back({Kind::CurveTo, {control1, control2, end}});
}

void Path::close()
{
    if (!_elements.empty() && _elements.back().kind != Kind::Close)
        _elements.push_back({Kind::Close, {}});
}

void Path::appendRect(const Rect& rect)
{
    if (_elements.empty())
        _elements.reserve(5);
    moveTo({rect.x, rect.y});
    lineTo({rect.x + rect.width, rect.y});
    lineTo({rect.x + rect.width, rect.y + rect.height});
    lineTo({rect.x, rect.y + rect.height});
    close();
}

void Path::appendOvalInRect(const Rect& rect)
{
    const double rx = rect.width * 0.5, ry = rect.height * 0.5;
    const double cx = rect.x + rx, cy = rect.y + ry;
    const double kx = rx * kCircleControl, ky = ry * kCircleControl;
    if (_elements.empty())
        _elements.reserve(6);
    moveTo({cx + rx, cy});
    curveTo({cx + rx, cy + ky}, {cx + kx, cy + ry}, {cx, cy + ry});
    curveTo({cx - kx, cy + ry}, {cx - rx, cy + ky}, {cx - rx, cy});
    curveTo({cx - rx, cy - ky}, {cx - kx, cy - ry}, {cx, cy - ry});
    curveTo({cx + kx, cy - ry}, {cx + rx, cy - ky}, {cx + rx, cy});
    close();
}

void Path::appendArc(Point center, double radius, double startDegrees, double endDegrees,
                     bool clockwise)
{
    const double turn = clockwise ? startDegrees - endDegrees : endDegrees - startDegrees;
    // The end lies ahead of the start in the direction asked for; what goes beyond a full turn ends
    // at the right place after one turn.
    double sweep = std::fmod(turn, 360);
    if (sweep < 0)
        sweep += 360;
    if (turn >= 360 || (sweep == 0 && turn != 0))
        sweep += 360;
    sweep *= (clockwise ? -1 : 1) * std::numbers::pi / 180;
    const double start = std::fmod(startDegrees, 360) * std::numbers::pi / 180;

    const auto onCircle = [&](double angle) {
        return Point{center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)};
    };
    if (_elements.empty())
        moveTo(onCircle(start));
    else
        lineTo(onCircle(start));
    // A hair below a whole number of quarters must not cost one more curve.
    const double quarters = std::abs(sweep) / (std::numbers::pi / 2);
    const int pieces = std::isfinite(quarters) ? static_cast<int>(std::ceil(quarters - 1e-9)) : 0;
    const double step = pieces > 0 ? sweep / pieces : 0;
    const double control = radius * 4 / 3 * std::tan(step / 4);
    for (int i = 0; i < pieces; ++i) {
        const double a = start + step * i, b = start + step * (i + 1);
        const Point from = onCircle(a), to = onCircle(b);
        curveTo({from.x - control * std::sin(a), from.y + control * std::cos(a)},
                {to.x + control * std::sin(b), to.y - control * std::cos(b)}, to);
    }
}

void Path::append(const Path& other)
{
    if (other.isEmpty())
        return;
    const Point start = other._figureStart;
    _elements.insert(_elements.end(), other._elements.begin(), other._elements.end());
    _figureStart = start;
}

void Path::transform(const AffineTransform& t)
{
    for (Element& element : _elements)
        for (int i = 0; i < pointCount(element.kind); ++i)
            element.points[i] = t.apply(element.points[i]);
    _figureStart = t.apply(_figureStart);
}

Point Path::currentPoint() const
{
    if (_elements.empty())
        return {};
    const Element& last = _elements.back();
    switch (last.kind) {
    case Kind::MoveTo:
    case Kind::LineTo:
        return last.points[0];
    case Kind::CurveTo:
        return last.points[2];
    case Kind::Close:
        break;
    }
    return _figureStart;
}

Rect Path::controlBounds() const
{
    if (_elements.empty())
        return {};
    Point low = _elements.front().points[0], high = low;
    for (const Element& element : _elements)
        for (int i = 0; i < pointCount(element.kind); ++i) {
            const Point p = element.points[i];
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
    return Rect::fromEdges(low.x, low.y, high.x, high.y);
}

bool Path::contains(Point p, FillRule rule) const
{
    constexpr double kTolerance = 0.01;
    int winding = 0;
    Point start, at;
    for (const Element& element : _elements) {
        switch (element.kind) {
        case Kind::MoveTo:
            winding += crossing(at, start, p); // an open figure is filled as if closed
            start = at = element.points[0];
            break;
        case Kind::LineTo:
            winding += crossing(at, element.points[0], p);
            at = element.points[0];
            break;
        case Kind::CurveTo: {
            const Point from = at;
            const auto& [c1, c2, to] = element.points;
            const int steps = curveSteps(from, c1, c2, to, kTolerance);
            for (int i = 1; i <= steps; ++i) {
                const Point next =
                    i == steps ? to : curvePoint(from, c1, c2, to, double(i) / steps);
                winding += crossing(at, next, p);
                at = next;
            }
            break;
        }
        case Kind::Close:
            winding += crossing(at, start, p);
            at = start;
            break;
        }
    }
    winding += crossing(at, start, p);
    return rule == FillRule::NonZero ? winding != 0 : winding % 2 != 0;
}

} // namespace drawing
