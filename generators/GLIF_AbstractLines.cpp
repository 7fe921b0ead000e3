#include "generators/GLIF_AbstractLines.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "platform/foundation/Numbers.h"

#include <algorithm>
#include <cmath>
#include <set>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCountLines", 1, 20, 8},
    {"GLIFWidthLine", 0.0f, 10.0f, 1.0f},
    {"GLIFShapesType", 0, 3, 0},
    {"GLIFColorScheme", 0, 20, 5},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.28f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

constexpr int kMostLines = 30;
constexpr int kGrid = 20; // points

Point at(int x, int y)
{
    return {static_cast<double>(x), static_cast<double>(y)};
}

// Where the chords of one drawing end, as positions along the border.
struct Chords {
    int width, height;
    int slantX, slantY; // of the slanted grid
    std::set<int> taken = {};
    int takenColumns = 0, takenRows = 0;

    struct Ends {
        int a = 0; // up the left edge, then along the top
        int b = 0; // along the bottom, then up the right edge
    };

    Point first(int a) const { return a <= height ? at(0, a) : at(a - height, height); }
    Point second(int b) const { return b <= width ? at(b, 0) : at(width, b - width); }

    // A random grid line of so many points. A side shorter than the grid has the one at its start.
    static int gridLine(int points) { return randomInt() % std::max(points / kGrid, 1) * kGrid; }

    // A grid line that is not among those taken, shifted by the offset. When all of them are taken
    // any one will do.
    int freeGridLine(int points, int offset, int key, int& takenOfThese)
    {
        const int lines = std::max(points / kGrid, 1);
        int line = offset + gridLine(points);
        while (takenOfThese < lines && taken.contains(line + key))
            line = offset + gridLine(points);
        takenOfThese += taken.insert(line + key).second ? 1 : 0;
        return line;
    }

    Ends next(int type, int i)
    {
        const bool isColumn = i % 2 == 0;
        Ends ends;
        switch (type) {
        case 0:
            ends.a = randomInt() % (width + height);
            ends.b = randomInt() % (width + height);
            break;
        case 1:
            if (isColumn) {
                ends.a = height + gridLine(width);
                ends.b = ends.a - height;
            } else {
                ends.a = gridLine(height);
                ends.b = ends.a + width;
            }
            break;
        case 2:
            if (isColumn) {
                ends.a = freeGridLine(slantX < 1 ? slantX + width : width, height, width + height,
                                      takenColumns);
                ends.b = ends.a - height - slantX;
            } else {
                ends.a = freeGridLine(slantY < 1 ? height : height - slantY, std::max(slantY, 0), 0,
                                      takenRows);
                ends.b = ends.a + width - slantY;
            }
            break;
        default: // both at the origin
            break;
        }
        return ends;
    }
};

} // namespace

const AttributeTable& GLIF_AbstractLines::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_AbstractLines::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                    int width, int height,
                                                                    const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _countLines = attributes.intValue("GLIFCountLines", 6);
    _widthLine = attributes.floatValue("GLIFWidthLine", 1.0f);
    _shapesType = attributes.intValue("GLIFShapesType", 0);
    return renderDrawRect(pictureSize(reference, width, height),
                          "GLIF_abstractLines: can't generate"); // sic
}

Color GLIF_AbstractLines::ComputeColorLocal(double hue) const
{
    return Color::hsb(static_cast<float>(hue), 0.5f, 0.9f);
}

void GLIF_AbstractLines::drawRect(Canvas& canvas, const Rect& rect)
{
    const int width = truncToInt(rect.width), height = truncToInt(rect.height);
    if (width < 1 || height < 1)
        return;
    _countLines = std::min(_countLines, kMostLines);
    const int count = _countLines;
    const double key = _schemeKeyColor;

    for (int discarded = 0; discarded < 2; ++discarded)
        randomInt();
    Path background;
    background.appendRect({0, 0, rect.width, rect.height});
    canvas.setFillColor(computeSchemeColor(1.0, static_cast<float>(key), _iColorScheme));
    canvas.fill(background);

    const int slantY = randomInt() % height / 2 - truncToInt(rect.height * 0.25);
    const int slantX = randomInt() % width / 2 - truncToInt(rect.width * 0.25);
    Chords chords{width, height, slantX, slantY};
    std::vector<Chords::Ends> drawn;
    // The key colour of a wash wanders by up to a fiftieth of the wheel for every chord.
    const auto wander = [&] { return randomInt() * 0.2 / 2147483647.0 * (count / -10.0); };

    for (int i = 0; i < count; ++i) {
        foundation::reportProgress(static_cast<double>(i) / count);
        const Chords::Ends ends = chords.next(_shapesType, i);
        drawn.push_back(ends);
        Path corner;
        corner.moveTo({0, 0});
        if (ends.a > height)
            corner.lineTo(at(0, height));
        corner.lineTo(chords.first(ends.a));
        if (ends.b > width)
            corner.lineTo(chords.second(ends.b));
        corner.lineTo(at(std::min(ends.b, width), 0));
        corner.lineTo({0, 0});
        canvas.setColor(Color::black());

        const auto alpha =
            static_cast<float>(1.0 - static_cast<float>(i) / static_cast<float>(count));
        const double nearKey = key + wander();
        const float nearPosition = randomUnit();
        const auto fraction = static_cast<float>(std::abs(nearKey - truncToInt(nearKey)));
        canvas.setFillColor(
            computeSchemeColor(nearPosition, fraction, _iColorScheme).withAlpha(alpha));
        canvas.fill(corner);

        // The rest of the picture.
        corner.rule = drawing::FillRule::EvenOdd;
        corner.appendRect(rect);
        const auto farKey = static_cast<float>((1 - key) + 0.4 + wander());
        const float farPosition = randomUnit();
        canvas.setFillColor(
            computeSchemeColor(farPosition, farKey, _iColorScheme).withAlpha(alpha));
        canvas.fill(corner);
    }

    for (const auto& [a, b] : drawn) {
        Path chord;
        chord.cap = drawing::LineCap::Round;
        chord.moveTo(chords.first(a));
        chord.lineTo(chords.second(b));
        // A background that is wanted but was never set changes nothing: strokes are black then.
        canvas.setColor(_useBackColor && _backColor ? *_backColor : Color::black());
        chord.lineWidth = penWidth(_widthLine);
        canvas.stroke(chord);
    }
}
