#include "generators/GLIF_Triangles.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "platform/foundation/Numbers.h"

#include <algorithm>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCount", 2, 50, 7},
    {"GLIFWidthLine", 0.0f, 10.0f, 1.0f},
    {"GLIFColorScheme", 0, 20, 5},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.28f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

// Finding the triangle of a point looks through all of them; three thousand points take a quarter
// of a second.
constexpr int kLargestCount = 3000;

struct Triangle {
    Triangle(const std::vector<Point>& points, int i, int j, int k) : corners{i, j, k}
    {
        path.moveTo(points[i]);
        path.lineTo(points[j]);
        path.lineTo(points[k]);
        path.close();
        path.join = drawing::LineJoin::Bevel;
    }

    Path path;
    int corners[3]; // in the table of points
};

} // namespace

const AttributeTable& GLIF_Triangles::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Triangles::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                int width, int height,
                                                                const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _nTriangle = attributes.intValue("GLIFCount", 7);
    _widthLine = attributes.floatValue("GLIFWidthLine", 3.0f);
    return renderDrawRect(pictureSize(reference, width, height), "GLIF_Triangles: can't generate");
}

void GLIF_Triangles::drawRect(Canvas& canvas, const Rect& rect)
{
    const int width = truncToInt(rect.width), height = truncToInt(rect.height);
    const int count = std::min(_nTriangle, kLargestCount);
    if (count < 2 || width < 1 || height < 1)
        return;

    // All of the picture lies in the first triangle.
    const double reach = width + height + 10.0;
    std::vector<Point> points = {
        {static_cast<double>(-width / 2), static_cast<double>(-height / 2)},
        {0, reach},
        {reach, 0}};
    std::vector<Triangle> triangles = {{points, 0, 1, 2}};
    for (int i = 3; i <= count + 1; ++i) {
        foundation::checkpoint();
        foundation::reportProgress(static_cast<double>(i) / (count + 1));
        const int y = randomInt() % height;
        const int x = randomInt() % width;
        const Point point = {static_cast<double>(x), static_cast<double>(y)};
        points.push_back(point);
        const auto split = std::ranges::find_if(triangles, [&](const Triangle& triangle) {
            return triangle.path.contains(point, drawing::FillRule::NonZero);
        });
        if (split == triangles.end())
            continue;
        const auto [a, b, c] = split->corners;
        triangles.erase(split);
        triangles.emplace_back(points, i, a, b);
        triangles.emplace_back(points, i, a, c);
        triangles.emplace_back(points, i, b, c);
    }

    const auto total = static_cast<float>(triangles.size());
    for (std::size_t k = 0; k < triangles.size(); ++k) {
        Path& path = triangles[k].path;
        const float position = static_cast<float>(k) / total;
        canvas.setColor(computeSchemeColor(position, _schemeKeyColor, _iColorScheme));
        // In its own colour first: it closes the seam to its neighbours.
        path.lineWidth = 1;
        canvas.stroke(path);
        path.lineWidth = penWidth(_widthLine);
        canvas.fill(path);
        // A background that is wanted but was never set changes nothing.
        if (!_useBackColor)
            canvas.setColor(Color::black());
        else if (_backColor)
            canvas.setColor(*_backColor);
        canvas.stroke(path);
    }
}
