#include "generators/GLIF_TwistPolygons.h"

#include "generators/ColorSchemes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCountAngle", 3, 20, 7},
    {"GLIFCountCircle", 1, 100, 28},
    {"GLIFDeltaPercent", 1, 99, 25},
    {"GLIFRadius", 5.0f, 1000.0f, 175.0f},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.0f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.38f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

constexpr int kMostCorners = 41;
// Each may cover the whole picture.
constexpr int kMostPolygons = 2'000;

} // namespace

const AttributeTable& GLIF_TwistPolygons::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_TwistPolygons::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                    int width, int height,
                                                                    const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _countAngle = attributes.intValue("GLIFCountAngle", 8);
    _countCircle = attributes.intValue("GLIFCountCircle", 150);
    _deltaPercent = attributes.intValue("GLIFDeltaPercent", 10);
    // Half the shorter side, although the number is a percentage.
    const float radius = static_cast<float>(std::min(size.width, size.height)) * 0.5f;
    _radius = attributes.floatValue("GLIFRadius", radius);
    return renderDrawRect(size, "GLIF_PolygonSquares: can't generate"); // sic
}

void GLIF_TwistPolygons::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    // Fewer corners than one and more than there is room for count as the nearest that there are.
    const int corners = std::clamp(_countAngle, 1, kMostCorners);
    const int polygons = std::min(_countCircle, kMostPolygons);
    const auto percent = static_cast<float>(_deltaPercent);
    const auto width = static_cast<float>(rect.width), height = static_cast<float>(rect.height);
    const float r = std::min(width, height) * _radius / 100.0f * 0.5f;
    const float cx = 0.5f * width, cy = 0.5f * height;

    std::array<float, kMostCorners> xs{}, ys{};
    xs[0] = cx + r;
    ys[0] = cy;
    for (int i = 1; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        xs[i] = static_cast<float>(std::cos(angle) * r + cx);
        ys[i] = static_cast<float>(std::sin(angle) * r + cy);
    }
    const auto fillPolygon = [&](float position, bool backToStart) {
        Path path;
        path.moveTo({xs[0], ys[0]});
        for (int i = 1; i < corners; ++i)
            path.lineTo({xs[i], ys[i]});
        if (backToStart)
            path.lineTo({xs[0], ys[0]});
        canvas.setColor(computeColor(position, _colorRangeMin, _colorRangeMax));
        canvas.fill(path);
    };
    fillPolygon(0, false);
    for (int k = 1; k < polygons; ++k) {
        foundation::reportProgress(static_cast<double>(k) / polygons);
        const float x0 = xs[0], y0 = ys[0];
        for (int i = 0; i < corners; ++i) {
            // The next corner has not moved yet; the first one has when the last one follows it.
            const float nextX = i + 1 < corners ? xs[i + 1] : x0;
            const float nextY = i + 1 < corners ? ys[i + 1] : y0;
            xs[i] += (nextX - xs[i]) * percent / 100.0f;
            ys[i] += (nextY - ys[i]) * percent / 100.0f;
        }
        fillPolygon(static_cast<float>(k) / static_cast<float>(polygons), true);
    }
}
