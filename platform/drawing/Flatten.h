// Curves as polylines.
#pragma once

#include "platform/foundation/Geometry.h"

#include <algorithm>
#include <cmath>

namespace drawing {

// How many equal steps of the parameter keep the chords of a cubic within the tolerance. The
// distance of a chord from its arc is at most |B''| / 8 / n², and |B''| at most six times the
// larger second difference of the control points.
inline int curveSteps(const foundation::Point& p0, const foundation::Point& p1,
                      const foundation::Point& p2, const foundation::Point& p3, double tolerance)
{
    const double d1 = std::hypot(p0.x - 2 * p1.x + p2.x, p0.y - 2 * p1.y + p2.y);
    const double d2 = std::hypot(p1.x - 2 * p2.x + p3.x, p1.y - 2 * p2.y + p3.y);
    const double n = std::ceil(std::sqrt(0.75 * std::max(d1, d2) / tolerance));
    return n < 1 ? 1 : n < 4096 ? static_cast<int>(n) : 4096;
}

inline foundation::Point curvePoint(const foundation::Point& p0, const foundation::Point& p1,
                                    const foundation::Point& p2, const foundation::Point& p3,
                                    double t)
{
    const double s = 1 - t;
    const double w0 = s * s * s, w1 = 3 * s * s * t, w2 = 3 * s * t * t, w3 = t * t * t;
    return {w0 * p0.x + w1 * p1.x + w2 * p2.x + w3 * p3.x,
            w0 * p0.y + w1 * p1.y + w2 * p2.y + w3 * p3.y};
}

} // namespace drawing
