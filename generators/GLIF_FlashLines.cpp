#include "generators/GLIF_FlashLines.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"

#include <algorithm>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCurveRange", 1, 2000, 832.0f},
    {"GLIFWidthLine", 0.0f, 10.0f, 1.0f},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.18f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.61f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

// They repeat themselves long before.
constexpr int kMostLines = 50'000;

// One coordinate of one end, and how far it moves at each step.
struct Bouncing {
    double at;
    int speed;

    // An end that has gone past an edge stays there; the next move brings it back.
    void move(int limit)
    {
        at += speed;
        if (at > limit || at < 0)
            speed = -speed;
    }
};

} // namespace

const AttributeTable& GLIF_FlashLines::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_FlashLines::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                 int width, int height,
                                                                 const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _curveRange = std::clamp(attributes.intValue("GLIFCurveRange", 1000), 1, kMostLines);
    _widthLine = attributes.floatValue("GLIFWidthLine", 1.0f);
    return renderDrawRect(pictureSize(reference, width, height), "GLIF_FlashLines: can't generate");
}

void GLIF_FlashLines::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    drawFlashLines(canvas, truncToInt(rect.width), truncToInt(rect.height));
}

void GLIF_FlashLines::drawFlashLines(Canvas& canvas, int width, int height) const
{
    Bouncing x1{}, y1{}, x2{}, y2{};
    x1.at = randomInt() % width;
    y1.at = randomInt() % height;
    x2.at = randomInt() % width;
    y2.at = randomInt() % height;
    x1.speed = 5 - randomInt() % 10;
    y1.speed = 5 - randomInt() % 10;
    x2.speed = x1.speed + 1 + randomInt() % 4;
    y2.speed = y1.speed + 1 + randomInt() % 4;

    const float step = 1.0f / static_cast<float>(_curveRange);
    float position = 0;
    for (int i = 0; i < _curveRange; ++i) {
        foundation::reportProgress(static_cast<double>(i) / _curveRange);
        Path path;
        path.moveTo({x1.at, y1.at});
        path.lineTo({x2.at, y2.at});
        path.lineWidth = penWidth(_widthLine);
        x1.move(width);
        x2.move(width);
        y1.move(height);
        y2.move(height);
        canvas.setColor(computeColor(position, _colorRangeMin, _colorRangeMax));
        position += step;
        canvas.stroke(path);
    }
}
