#include "generators/GLIF_HilbertCurve.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "platform/foundation/Numbers.h"

#include <algorithm>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCurveRange", 3, 9, 6},
    {"GLIFSize", 1.0f, 10.0f, 6.0f},
    {"GLIFTypeCaps", 0, 2, 0},
    {"GLIFColorScheme", 0, 20, 1},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.5f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

// Each order has four times the strokes of the one before; ten has 350,000 and two hundred
// megabytes.
constexpr int kHighestOrder = 10;

// One walk over the curve: what its four procedures share. Coordinates are whole pixels, y up.
struct Walk {
    // Each order has a bend more than four times those of the one below.
    Walk(Canvas& on, int order) : canvas(on), steps(((std::int64_t{1} << 2 * order) - 1) / 3) {}

    Canvas& canvas;
    foundation::ProgressSteps steps; // bends
    int currX = 0, currY = 0;
    int u = 1;             // length of a step
    int stDelta = 0;       // how far a segment reaches past both its ends, to close the corners
    float stWidthLine = 1; // of the pen
    drawing::LineCap stTypeCaps = drawing::LineCap::Butt;
    Color arColor[4];
    int iPointer = 0; // the colour of the next step
    Path statPath;    // from the origin and back: it encloses nothing

    void segment(Path& path, int dx, int dy)
    {
        path.moveTo(at(currX - dx * stDelta, currY - dy * stDelta));
        currX += dx * u;
        currY += dy * u;
        path.lineTo(at(currX + dx * stDelta, currY + dy * stDelta));
    }

    void colorStep()
    {
        canvas.setColor(arColor[iPointer]);
        iPointer = (iPointer + 1) % 4;
    }

    // Three steps out, along and back, with smaller curves before, between and after them. They are
    // stroked together, in the colour that the last of the smaller curves has left.
    using Procedure = void (Walk::*)(int);
    void bend(int k, Procedure before, Procedure between, Procedure after, int outX, int outY)
    {
        if (k < 1)
            return;
        steps.add(1);
        Path path;
        path.lineWidth = stWidthLine;
        path.cap = stTypeCaps;
        (this->*before)(k - 1);
        segment(path, outX, outY);
        colorStep();
        (this->*between)(k - 1);
        segment(path, outY, outX);
        (this->*between)(k - 1);
        segment(path, -outX, -outY);
        canvas.stroke(path);
        (this->*after)(k - 1);
    }

    void a_func(int k) { bend(k, &Walk::d_func, &Walk::a_func, &Walk::c_func, 1, 0); }
    void b_func(int k) { bend(k, &Walk::c_func, &Walk::b_func, &Walk::d_func, -1, 0); }
    void c_func(int k) { bend(k, &Walk::b_func, &Walk::c_func, &Walk::a_func, 0, -1); }
    void d_func(int k) { bend(k, &Walk::a_func, &Walk::d_func, &Walk::b_func, 0, 1); }

private:
    static Point at(int x, int y) { return {static_cast<float>(x), static_cast<float>(y)}; }
};

drawing::LineCap lineCap(int type)
{
    return type == 1   ? drawing::LineCap::Round
           : type == 2 ? drawing::LineCap::Square
                       : drawing::LineCap::Butt;
}

} // namespace

const AttributeTable& GLIF_HilbertCurve::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_HilbertCurve::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                   int width, int height,
                                                                   const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _curveRange = attributes.intValue("GLIFCurveRange", 7);
    _cupSize = attributes.floatValue("GLIFSize", 5.0f);
    _typeCaps = attributes.intValue("GLIFTypeCaps", 0);
    return renderDrawRect(pictureSize(reference, width, height),
                          "GLIF_HilbertCurve: can't generate");
}

void GLIF_HilbertCurve::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    const int order = std::min(_curveRange, kHighestOrder);
    // Without an order there are no steps to divide the side into.
    if (order < 1)
        return;
    const int side = truncToInt(std::max(rect.width, rect.height));

    Walk walk(canvas, order);
    walk.statPath.moveTo({0, 0});
    walk.stWidthLine = penWidth(_cupSize);
    walk.stTypeCaps = lineCap(_typeCaps);
    walk.stDelta = truncToInt(0.5 * walk.stWidthLine);
    // Rounded up: the curve may run past the right and top edges.
    walk.u = side / ((1 << order) - 1) + 1;
    for (int discarded = 0; discarded < 4; ++discarded)
        randomInt();
    for (Color& color : walk.arColor) {
        const float position = randomUnit();
        color = computeSchemeColor(position, _schemeKeyColor, _iColorScheme);
    }
    walk.a_func(order);

    walk.statPath.lineTo({0, 0});
    canvas.setColor(computeSchemeColor(1.0, _schemeKeyColor, _iColorScheme));
    canvas.fill(walk.statPath);
}
