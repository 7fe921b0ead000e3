#include "generators/GLIF_ColourBars.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFSize", 1, 100, 64},
    {"GLIFAngle", -180.0f, 180.0f, 17.0f},
    {"GLIFDiff", 0.0f, 1.0f, 0.0f},
    {"GLIFWidthLine", 0.0f, 10.0f, 1.0f},
    {"GLIFColorScheme", 0, 20, 2},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.33f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

// One bar then covers any picture.
constexpr float kLargestSpread = 1e6f;

} // namespace

const AttributeTable& GLIF_ColourBars::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_ColourBars::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                 int width, int height,
                                                                 const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _nSize = attributes.intValue("GLIFSize", 5);
    // In whole degrees, although it is described as continuous.
    _fAngle = static_cast<float>(attributes.intValue("GLIFAngle", 17));
    _difference = attributes.floatValue("GLIFDiff", 1.0f);
    _widthLine = attributes.floatValue("GLIFWidthLine", 1.0f);
    return renderDrawRect(pictureSize(reference, width, height), "GLIF_ColourBars: can't generate");
}

void GLIF_ColourBars::drawRect(Canvas& canvas, const Rect& rect)
{
    // Without the background: the bars cover it.
    drawColourBars(canvas, truncToInt(rect.width), truncToInt(rect.height));
}

void GLIF_ColourBars::drawColourBars(Canvas& canvas, int width, int height) const
{
    // Bars without a width would never reach the other side, and negative ones go away from it.
    const auto mean = static_cast<float>(std::max(_nSize, 1));
    // Written so that a not-a-number becomes 0.
    const float spread = _difference > 0 ? std::min(_difference, kLargestSpread) * mean : 0.0f;
    const float least = std::max(mean - spread, 0.0f);
    const float pen = penWidth(_widthLine);
    const float diagonal =
        std::sqrt(static_cast<float>(std::int64_t{width} * width + std::int64_t{height} * height));
    const double half = -0.5 * diagonal;
    const AffineTransform toPicture =
        AffineTransform::rotation(-_fAngle * std::numbers::pi / 180)
            .followedBy(AffineTransform::translation(width * 0.5, height * 0.5));
    double x = 0;
    while (diagonal > x) {
        foundation::reportProgress(x / diagonal);
        const float share = randomUnit();
        const float position = randomUnit();
        const double next = x + (least + ((static_cast<double>(mean) + spread) - least) * share);
        // As wide as the way behind it: the bars to come are painted over what is too much.
        Path path;
        path.appendRect({static_cast<float>(x + half), static_cast<float>(half - pen),
                         static_cast<float>(next), diagonal + 2 * pen});
        path.transform(toPicture);
        path.lineWidth = pen;
        canvas.setColor(computeSchemeColor(position, _schemeKeyColor, _iColorScheme));
        canvas.fill(path);
        // Wanted but not set, a background colour leaves the outline in the bar's own.
        if (!_useBackColor)
            canvas.setColor(Color::black());
        else if (_backColor)
            canvas.setColor(*_backColor);
        canvas.stroke(path);
        x = next;
    }
}
