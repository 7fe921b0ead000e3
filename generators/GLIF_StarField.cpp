#include "generators/GLIF_StarField.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFDensity", 1, 1000, 160},
    {"GLIFSize", 1, 500, 139},
    {"GLIFShapesType", 0, 2, 0},
    {"GLIFCount", 1, 16, 4},
    {"GLIFColorScheme", 0, 20, 0},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.07f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

// More rings to a shape, or corners, than can be told apart, and more of them in all than anyone
// waits for (some ten seconds on a large picture). What goes beyond is left out.
constexpr int kMostCount = 1'000;
constexpr int kMostFigures = 50'000;

constexpr double kPi = std::numbers::pi;

Point singlePrecision(double x, double y)
{
    return {static_cast<float>(x), static_cast<float>(y)};
}

// The remainder of one draw, which has the sign of a draw: none. There is no remainder by 0 (shapes
// without a size, or with a negative one as large as the picture): those draws count as 0.
double randomBelow(std::int64_t end)
{
    const int drawn = randomInt();
    return end == 0 ? 0.0 : static_cast<double>(drawn % end);
}

// A polygon whose corners are each turned on from the one before by what `nextAngle` answers.
template <class NextAngle>
Path polygon(double x0, double y0, double w, double h, double n, NextAngle nextAngle)
{
    const double ratio = w / h;
    const double cx = x0 + w / 2, cy = y0 + h / 2;
    double x = cx, y = y0;
    Path path;
    path.moveTo(singlePrecision(x, y));
    for (int i = 1; i < n; ++i) {
        const double angle = nextAngle();
        rotatePoint(&x, &y, angle, cx, cy);
        path.lineTo(singlePrecision(cx + (x - cx) * ratio, y));
    }
    path.close();
    return path;
}

} // namespace

namespace generators {

Path PathStar(double x0, double y0, double w, double h, double k, int n)
{
    const double spikes = n > 1 ? n : 2;
    const double reach = k != 0 ? k : 0.005;
    const double ratio = w / h;
    const double cx = x0 + w / 2, cy = y0 + h / 2;
    double outerX = cx, outerY = y0;
    double innerX = cx, innerY = cy - reach * h / 2;
    rotatePoint(&innerX, &innerY, kPi / spikes, cx, cy);
    Path path;
    path.moveTo(singlePrecision(cx, y0));
    path.lineTo(singlePrecision(cx + (innerX - cx) * ratio, innerY));
    for (int i = 1; i < spikes; ++i) {
        rotatePoint(&outerX, &outerY, 2 * kPi / spikes, cx, cy);
        rotatePoint(&innerX, &innerY, 2 * kPi / spikes, cx, cy);
        path.lineTo(singlePrecision(cx + (outerX - cx) * ratio, outerY));
        path.lineTo(singlePrecision(cx + (innerX - cx) * ratio, innerY));
    }
    path.close();
    return path;
}

Path PathPolygon(double x0, double y0, double w, double h, double /*k*/, int n)
{
    const double corners = n > 2 ? n : 3;
    return polygon(x0, y0, w, h, corners, [&] { return 2 * kPi / corners; });
}

Path PathHaosPolygon(double x0, double y0, double w, double h, double /*k*/, int n)
{
    const double corners = n > 2 ? n : 3;
    return polygon(x0, y0, w, h, corners, [&] {
        const int step = randomInt() % 3;
        const float more = static_cast<float>(step) / static_cast<float>(corners);
        return std::min(2 * kPi / corners + more, 2 * kPi);
    });
}

} // namespace generators

const AttributeTable& GLIF_StarField::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_StarField::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                int width, int height,
                                                                const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // A key that is left out keeps the value of the picture before, at first the field's own.
    _density = attributes.intValue("GLIFDensity", _density);
    _nSize = attributes.intValue("GLIFSize", _nSize);
    _shapesType = attributes.intValue("GLIFShapesType", _shapesType);
    _iCount = attributes.intValue("GLIFCount", _iCount);
    return renderDrawRect(pictureSize(reference, width, height), "GLIF_StarField: can't generate");
}

void GLIF_StarField::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    drawStarField(canvas, truncToInt(rect.width), truncToInt(rect.height));
}

// Stars have a box of the size drawn, as have rings and squares; polygons one twice as large.
Path GLIF_StarField::shapeAt(double x0, double y0, double size) const
{
    const int count = std::min(_iCount, kMostCount);
    switch (_shapesType) {
    case 2:
        return PathStar(x0, y0, size, size, 3.0, count);
    case 3:
        return PathPolygon(x0, y0, 2 * size, 2 * size, 3.0, count);
    case 4:
        return PathHaosPolygon(x0, y0, 2 * size, 2 * size, 3.0, count);
    default:
        break;
    }
    Path path;
    path.rule = drawing::FillRule::EvenOdd;
    for (int k = 0; k < count; ++k) {
        const double inset = k * size / count;
        const auto side = static_cast<float>(size - inset);
        const Point corner = singlePrecision(x0 + inset / 2, y0 + inset / 2);
        const Rect box{corner.x, corner.y, side, side};
        if (_shapesType == 0)
            path.appendOvalInRect(box);
        else
            path.appendRect(box);
    }
    return path;
}

void GLIF_StarField::drawStarField(Canvas& canvas, int width, int height) const
{
    const std::int64_t size = _nSize;
    const std::int64_t shapes = std::min<std::int64_t>(
        std::llabs(_density), kMostFigures / std::clamp(_iCount, 1, kMostCount));
    for (std::int64_t i = 0; i < shapes; ++i) {
        foundation::reportProgress(static_cast<double>(i) / static_cast<double>(shapes));
        const double x = randomBelow(width + size);
        const double y = randomBelow(size + height);
        const double turn = randomBelow(360);
        const double position = randomUnit();
        const double extent = randomBelow(size) + 1;
        const Path path =
            shapeAt(x - static_cast<double>(size), y - static_cast<double>(size), extent);
        canvas.setColor(computeSchemeColor(position, _schemeKeyColor, _iColorScheme));
        canvas.save();
        // About the point drawn, not about the shape's own middle.
        canvas.concat(AffineTransform::translation(-x, -y)
                          .followedBy(AffineTransform::rotation(turn * kPi / 180))
                          .followedBy(AffineTransform::translation(x, y)));
        canvas.fill(path);
        canvas.restore();
    }
}
