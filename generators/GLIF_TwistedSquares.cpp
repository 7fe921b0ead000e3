#include "generators/GLIF_TwistedSquares.h"

#include "generators/ColorSchemes.h"

#include <cmath>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFStep", 3.0f, 180.0f, 60.264f},
    {"GLIFSize", 1.0f, 200.0f, 13.876f},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.28f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.91f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::black()},
};

// At 180 steps to the half turn 650 squares lead from the largest picture to its centre.
constexpr int kMostSquares = 10'000;

constexpr double kQuarter = std::numbers::pi / 4;

} // namespace

const AttributeTable& GLIF_TwistedSquares::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_TwistedSquares::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                     int width, int height,
                                                                     const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _angleStep = attributes.floatValue("GLIFStep", 20.0f);
    _squareSize = attributes.floatValue("GLIFSize", 1.0f);
    return renderDrawRect(pictureSize(reference, width, height),
                          "GLIF_TwistedSquares: can't generate");
}

void GLIF_TwistedSquares::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    const int width = truncToInt(rect.width), height = truncToInt(rect.height);
    const auto stopRadius = static_cast<float>(truncToInt(1.0 + _squareSize));
    const double turn = std::numbers::pi / _angleStep;
    const int cx = truncToInt(width * 0.5), cy = truncToInt(height * 0.5);
    float angle = 0;
    auto radius = static_cast<float>(truncToInt((static_cast<double>(width) + height) * 0.5));
    for (int squares = 0; squares < kMostSquares; ++squares) {
        foundation::reportProgress(1 - radius / static_cast<double>(width + height));
        rectangle(canvas, radius, angle, cx, cy);
        angle = static_cast<float>(angle + turn);
        // Of the square inscribed in this one.
        const auto next =
            static_cast<float>(radius * std::sin(kQuarter) / std::sin(3 * kQuarter - turn));
        // Two steps to the half turn or fewer, or a turn backwards, lead to no smaller square (and
        // none to no square at all): the first one is then the only one.
        if (!(next < radius && next >= stopRadius))
            break;
        radius = next;
    }
}

void GLIF_TwistedSquares::rectangle(Canvas& canvas, float radius, float angle, int cx, int cy) const
{
    Path path;
    Point corners[4];
    for (int k = 0; k < 4; ++k) {
        const double at = angle + (2 * k + 1) * kQuarter;
        corners[k] = {static_cast<double>(truncToInt(std::cos(at) * radius + cx)),
                      static_cast<double>(truncToInt(std::sin(at) * radius + cy))};
    }
    path.moveTo(corners[0]);
    for (const int k : {1, 2, 3, 0})
        path.lineTo(corners[k]);
    path.lineWidth = 2;
    // From about 0, with the second corner at the left edge, to about 2 at the right one. A picture
    // one pixel wide has its centre at 0: the hue is then at one end or the other.
    const float position = static_cast<float>(corners[1].x) / static_cast<float>(cx);
    canvas.setColor(computeColor(position, _colorRangeMin, _colorRangeMax));
    canvas.stroke(path);
}
