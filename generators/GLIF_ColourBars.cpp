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

// The bars, from the first edge of the picture to the last.
struct GLIF_ColourBars::Bars {
    struct Bar {
        double x, next;
        Color color;
    };

    std::vector<Bar> all;
    AffineTransform toPicture;
    float pen, diagonal;
    std::optional<Color> outline;

    bool areOpaque() const
    {
        return std::ranges::all_of(all, [](const Bar& bar) { return bar.color.alpha >= 1; });
    }

    void draw(Canvas& canvas) const
    {
        foundation::ProgressSteps steps(std::ssize(all));
        for (const Bar& bar : all) {
            // As wide as the way behind it: the bars to come are painted over what is too much.
            drawOne(canvas, bar, bar.next);
            steps.add(1);
        }
    }

    // The same for who looks at the part at that scale (pixels to a point): of opaque bars only
    // what the next ones leave of them.
    void drawSeen(Canvas& canvas, const Rect& part, double scale) const
    {
        // A pixel that a bar covers in part is covered by one before it, so much and the outline
        // behind its end.
        const double margin = pen + 4 / scale;
        const Rect seen = foundation::boundsOf(toPicture.inverse(), part);
        const double start = seen.x + 0.5 * diagonal - margin;
        const double end = seen.right() + 0.5 * diagonal + margin;
        for (const Bar& bar : all)
            if (bar.next + 2 * margin >= start && bar.x <= end)
                drawOne(canvas, bar, std::min(bar.next, bar.next - bar.x + margin));
    }

private:
    void drawOne(Canvas& canvas, const Bar& bar, double width) const
    {
        const double half = -0.5 * diagonal;
        Path path;
        path.appendRect({static_cast<float>(bar.x + half), static_cast<float>(half - pen),
                         static_cast<float>(width), diagonal + 2 * pen});
        path.transform(toPicture);
        path.lineWidth = pen;
        canvas.setColor(bar.color);
        canvas.fill(path);
        if (outline)
            canvas.setColor(*outline);
        canvas.stroke(path);
    }
};

namespace {

// Bars that each cover all behind them take seconds when there are thousands. What is seen of them
// at the end is the same, but for how Cairo rounds their slanted edges: at most 20 levels.
class SeenBars : public drawing::VectorSource {
public:
    SeenBars(drawing::RecordingRef whole, std::shared_ptr<const GLIF_ColourBars::Bars> bars)
        : _whole(std::move(whole)), _bars(std::move(bars))
    {
    }

    foundation::Size size() const override { return _whole->size; }
    drawing::RecordingRef recording() const override { return _whole; }

    foundation::Result<imaging::BitmapRef> rasterize(int width, int height) const override
    {
        if (_bars->all.size() < kMany)
            return result(drawing::rasterize(*_whole, width, height));
        const foundation::Size size = _whole->size;
        const double scale = std::min(width / size.width, height / size.height);
        return result(
            drawing::rasterize(*seen({0, 0, size.width, size.height}, scale), width, height));
    }

    foundation::Result<imaging::BitmapRef> rasterizePart(
        const Rect& part, int width, int height,
        const drawing::RasterOptions& options) const override
    {
        const double scale = std::min(width / part.width, height / part.height);
        // Written so that a not-a-number is left to whoever refuses it.
        if (!(scale > 0 && scale < 1e6))
            return VectorSource::rasterizePart(part, width, height, options);
        return result(drawing::rasterizePart(*seen(part, scale), part, width, height, options));
    }

private:
    // Fewer are drawn whole in half a second, even on large pictures.
    static constexpr std::size_t kMany = 200;

    drawing::RecordingRef seen(const Rect& part, double scale) const
    {
        const foundation::ProgressPart unheard(0, 0);
        Canvas canvas(_whole->size);
        _bars->drawSeen(canvas, part, scale);
        return canvas.finish();
    }

    static foundation::Result<imaging::BitmapRef> result(
        foundation::Result<std::shared_ptr<Bitmap>> drawn)
    {
        if (!drawn)
            return foundation::Error{drawn.error()};
        return imaging::BitmapRef(*std::move(drawn));
    }

    drawing::RecordingRef _whole;
    std::shared_ptr<const GLIF_ColourBars::Bars> _bars;
};

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
    const PictureRef picture =
        renderDrawRect(pictureSize(reference, width, height), "GLIF_ColourBars: can't generate");
    const std::shared_ptr<const Bars> bars = std::move(_bars);
    if (!picture || !bars || !bars->areOpaque())
        return picture;
    return drawing::Picture::fromVector(std::make_shared<SeenBars>(picture->recording(), bars));
}

void GLIF_ColourBars::drawRect(Canvas& canvas, const Rect& rect)
{
    // Without the background: the bars cover it.
    drawColourBars(canvas, truncToInt(rect.width), truncToInt(rect.height));
}

GLIF_ColourBars::Bars GLIF_ColourBars::drawnBars(int width, int height) const
{
    // Bars without a width would never reach the other side, and negative ones go away from it.
    const auto mean = static_cast<float>(std::max(_nSize, 1));
    // Written so that a not-a-number becomes 0.
    const float spread = _difference > 0 ? std::min(_difference, kLargestSpread) * mean : 0.0f;
    const float least = std::max(mean - spread, 0.0f);
    Bars bars;
    bars.pen = penWidth(_widthLine);
    bars.diagonal =
        std::sqrt(static_cast<float>(std::int64_t{width} * width + std::int64_t{height} * height));
    bars.toPicture = AffineTransform::rotation(-_fAngle * std::numbers::pi / 180)
                         .followedBy(AffineTransform::translation(width * 0.5, height * 0.5));
    // Wanted but not set, a background colour leaves the outline in the bar's own.
    if (!_useBackColor)
        bars.outline = Color::black();
    else
        bars.outline = _backColor;
    double x = 0;
    while (bars.diagonal > x) {
        const float share = randomUnit();
        const float position = randomUnit();
        const double next = x + (least + ((static_cast<double>(mean) + spread) - least) * share);
        bars.all.push_back({x, next, computeSchemeColor(position, _schemeKeyColor, _iColorScheme)});
        x = next;
    }
    return bars;
}

void GLIF_ColourBars::drawColourBars(Canvas& canvas, int width, int height)
{
    _bars = std::make_shared<const Bars>(drawnBars(width, height));
    _bars->draw(canvas);
}
