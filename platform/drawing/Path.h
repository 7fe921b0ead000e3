// A vector path: lines, cubic curves and closed figures, y up, in points.
#pragma once

#include "platform/foundation/Geometry.h"

#include <vector>

namespace drawing {

using foundation::AffineTransform;
using foundation::Point;
using foundation::Rect;

enum class FillRule { NonZero, EvenOdd };
enum class LineCap { Butt, Round, Square };
enum class LineJoin { Miter, Round, Bevel };

class Path {
public:
    struct Element {
        enum class Kind { MoveTo, LineTo, CurveTo, Close } kind;
        // The end point is the last one used: points[0] of a move or line, points[2] of a curve.
        Point points[3];
    };

    // An ellipse as four cubic curves, counter-clockwise from its rightmost point.
    static Path ovalInRect(const Rect& rect);

    // A move directly after a move takes its place.
    void moveTo(Point p);
    // Without a current point the line starts where it ends.
    void lineTo(Point p);
    void curveTo(Point control1, Point control2, Point end);
    void close();
    void appendRect(const Rect& rect);
    void appendOvalInRect(const Rect& rect);
    // A circular arc, counter-clockwise from the start to the end angle, in degrees; a line joins
    // the current point, if any, to its start. At most a quarter circle to a curve. The end angle
    // counts as ahead of the start in the direction of drawing; equal angles draw no arc.
    void appendArc(Point center, double radius, double startDegrees, double endDegrees,
                   bool clockwise = false);
    void append(const Path& other);
    void transform(const AffineTransform& t);

    bool isEmpty() const { return _elements.empty(); }
    // Where the next line would start; the origin for an empty path.
    Point currentPoint() const;
    const std::vector<Element>& elements() const { return _elements; }
    // Around all points, control points included; empty for an empty path.
    Rect controlBounds() const;
    // Whether the point lies inside by the given rule; curves are flattened to 0.01 points.
    bool contains(Point p, FillRule rule) const;

    // What stroking and filling this path uses.
    double lineWidth = 1; // 0 draws a one-pixel line
    LineCap cap = LineCap::Butt;
    LineJoin join = LineJoin::Miter;
    FillRule rule = FillRule::NonZero;

private:
    std::vector<Element> _elements;
    Point _figureStart;
};

} // namespace drawing
