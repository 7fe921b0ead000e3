// Page curl: what a sheet of paper looks like while it is rolled off a table.
//
// Positions along the direction of the angle are counted from the line where the sheet leaves the
// table. Before the line the sheet lies flat; beyond it, up to the radius, it goes up the outside
// of the cylinder (the lower layer, its front), over the top and back (the upper layer, its back),
// whence the rest lies flat over the line again. The page point that is seen at a position follows
// from the length of the sheet between the line and there.
#include "platform/builtin/transition/PageCurl.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/lighting/Ball.h"
#include "platform/builtin/transition/Transitions.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace builtin {

using namespace imaging;

namespace {

// The page and how far it is rolled up, which has begun.
struct Roll {
    Roll(const Rect& page, double time, double angle, double radius)
        : page(page), middle{page.midX(), page.midY()}
    {
        if (std::isfinite(angle))
            toward = {std::cos(angle), std::sin(angle)};
        const double reach =
            (std::abs(toward.x) * page.width + std::abs(toward.y) * page.height) / 2;
        const double length = 2 * reach;
        const double widest = std::min(std::max(positive(radius), 0.01), length / 4);
        const double peeled = time * (length + 1.5 * widest + 4);
        line = middle.x * toward.x + middle.y * toward.y + reach - peeled;
        // A short peel makes a tight roll, so that the sheet always turns over and shows its back.
        roll = std::min(widest, peeled / 4);
        shadow = std::min(widest / 2 + 4, peeled / 4);
    }

    // How far a position is beyond the line where the sheet leaves the table.
    double beyond(Point p) const { return p.x * toward.x + p.y * toward.y - line; }

    // All page points that are seen within a region, limited to the page.
    IRect seenFrom(const IRect& region) const
    {
        double first = 0;
        for (const int x : {region.left, region.right})
            for (const int y : {region.bottom, region.top})
                first = std::min(first, beyond({double(x), double(y)}));
        // Flat pages go on behind the line, shadows look back at the roll.
        const double farthest = kPi * roll - 2 * first, back = roll + shadow + 1;
        const auto axis = [&](double low, double high, double direction, double start, double end) {
            const double ends[] = {-back * direction, farthest * direction};
            return std::pair(std::clamp(low + std::min(ends[0], ends[1]), start, end),
                             std::clamp(high + std::max(ends[0], ends[1]), start, end));
        };
        const auto [left, right] = axis(region.left, region.right, toward.x, page.x, page.right());
        const auto [bottom, top] = axis(region.bottom, region.top, toward.y, page.y, page.top());
        return IRect::around(Rect::fromEdges(left - 2, bottom - 2, right + 2, top + 2));
    }

    Rect page;
    Point middle;
    Point toward{1, 0}; // where the page is taken up
    double line;        // the line's place in that direction
    double roll;        // radius of the cylinder
    double shadow;      // how far the shadow reaches
};

// Samples a block of either format. All lanes of a row take the same way.
class AnySampler {
public:
    AnySampler(const PixelBlock& block, const IRect& extent)
        : _bytes(block, extent), _floats(block, extent),
          _isBytes(block.format == PixelBlock::Format::OpaqueBytes)
    {
    }
    Px operator()(const Coord& at) const { return _isBytes ? _bytes(at) : _floats(at); }
    Px clamped(const Coord& at) const
    {
        return _isBytes ? _bytes.clamped(at) : _floats.clamped(at);
    }

private:
    ByteSampler _bytes;
    FloatSampler _floats;
    bool _isBytes;
};

Px over(Px above, Px below)
{
    return above + below * (F(1.0f) - above.a);
}

class PageRows : public Evaluator {
public:
    struct Source {
        PixelBlockRef block;
        IRect extent;

        explicit operator bool() const { return block != nullptr; }
        AnySampler sampler() const { return {*block, extent}; }
    };

    PageRows(const Roll& roll, EvaluatorRef target, Source front, Source back,
             std::optional<Source> ball)
        : _roll(roll), _target(std::move(target)), _front(std::move(front)), _back(std::move(back)),
          _ball(std::move(ball))
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        _target->row(span, out);
        const AnySampler front = _front.sampler(), back = _back.sampler();
        for (int i = 0; i < span.count; i += kLanes) {
            const Coord at = pixelCenters(span, i);
            const F x = F(_roll.beyond(at.anchor)) + at.offset.x * F(_roll.toward.x) +
                        at.offset.y * F(_roll.toward.y);
            if (all(x > F(_roll.roll + _roll.shadow + 1)))
                continue;
            storePx(out, i, page(front, back, at, x, loadPx(out, i)));
        }
    }

private:
    Px page(const AnySampler& front, const AnySampler& back, const Coord& at, F x, Px target) const
    {
        const F radius = _roll.roll;
        const F f = clamp01(x / radius);
        const F arc = radius * asin(f);
        const M onRoll = x >= F(0.0f);
        // How much more of the page there is on the roll than is seen, squared, less 1; at its
        // outline as much as half a pixel inside.
        const F steepness =
            F(1.0f) / max((F(1.0f) - f) * (F(1.0f) + f), F(0.5f) / radius) - F(1.0f);
        // Smooths the outline of the roll.
        const F outline = clamp01(radius + F(0.5f) - x);

        // The upper layer, and the shadow that it throws.
        const F turned = radius * F(kPi);
        const PagePoint turnedOver =
            pagePoint(at, select(onRoll, turned - arc - x, turned - F(2.0f) * x), steepness);
        const F aside = max(x - radius, 0.0f);
        const F distance = sqrt(turnedOver.outside * turnedOver.outside + aside * aside);
        const F reach = _roll.shadow;
        const F depth = F(0.5f) * (F(1.0f) - smoothstep(0.0f, reach, distance));
        const F coverage = turnedOver.cover * outline;
        Px above = transparent();
        if (any((coverage > F(0.0f)) | (depth > F(0.0f)))) {
            const Px print = back(turnedOver.limited);
            const Px sheet = shaded(print, f, 1.0f, F(1.0f)) * coverage;
            above = over(sheet, {0.0f, 0.0f, 0.0f, depth * print.a});
            if (all(above.a >= F(1.0f)))
                return above;
        }

        // The lower layer: the outside of the roll, and the page that still lies flat.
        Px below = transparent();
        if (any(outline > F(0.0f))) {
            const PagePoint under = pagePoint(at, select(onRoll, arc - x, F(0.0f)), steepness);
            const Px rolled = shaded(front(under.limited), f, -1.0f, f) * (under.cover * outline);
            below = select(onRoll, rolled, front(at));
        }
        return over(above, over(below, target));
    }

    // A point of the page, so far from a position in the direction of the roll.
    struct PagePoint {
        Coord limited; // to where the print's pixels are whole
        F cover;       // 1 on the page, 0 beside it, between them a ramp a pixel of the result wide
        F outside;     // distance to the page
    };
    PagePoint pagePoint(const Coord& at, F shift, F steepness) const
    {
        const Vec2 toward{F(_roll.toward.x), F(_roll.toward.y)};
        const Vec2 v = at + toward * shift - _roll.middle;
        const F halfX = _roll.page.width / 2, halfY = _roll.page.height / 2;
        const F printX = max(halfX - F(0.5f), 0.0f), printY = max(halfY - F(0.5f), 0.0f);
        const F pastX = abs(v.x) - halfX, pastY = abs(v.y) - halfY;
        const Vec2 outside{max(pastX, 0.0f), max(pastY, 0.0f)};
        // Where the page rises, its border passes in fewer pixels.
        const F rampX = sqrt(F(1.0f) + steepness * toward.x * toward.x);
        const F rampY = sqrt(F(1.0f) + steepness * toward.y * toward.y);
        return {_roll.middle + Vec2{clamp(v.x, -printX, printX), clamp(v.y, -printY, printY)},
                clamp01(F(0.5f) - pastX / rampX) * clamp01(F(0.5f) - pastY / rampY),
                length(outside)};
    }

    // The colour in the light of its side of the roll, or part of the way to it. f is how far the
    // side leans, `side` 1 for the back and -1 for the front.
    Px shaded(Px print, F f, float side, F part) const
    {
        const F up = sqrt((F(1.0f) - f) * (F(1.0f) + f));
        Rgb light;
        if (_ball) {
            const F lean = f * F(side);
            const Px z = Ball(_ball->extent.rect())(
                _ball->sampler(), {lean * F(_roll.toward.x), lean * F(_roll.toward.y)});
            light = Rgb{z.r, z.g, z.b} + (F(1.0f) - z.a);
        } else {
            const F grey = F(0.4f) + F(0.6f) * up;
            light = {grey, grey, grey};
        }
        const Rgb white{1.0f, 1.0f, 1.0f};
        const Rgb c = Rgb{print.r, print.g, print.b} * mix(white, light, part);
        return {c.r, c.g, c.b, print.a};
    }

    Roll _roll;
    EvaluatorRef _target;
    Source _front, _back;
    std::optional<Source> _ball;
};

class PageNode : public Node {
public:
    PageNode(const Roll& roll, const IRect& extent, Image front, Image back, Image target,
             Image ball)
        : Node(extent), _roll(roll), _front(std::move(front)), _back(std::move(back)),
          _target(std::move(target)), _ball(std::move(ball))
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const auto source = [&](const Image& image, const IRect& rect) {
            const IRect& extent = image.node()->extent();
            return PageRows::Source{context.pixels(image, rect.intersected(extent)), extent};
        };
        const IRect seen = _roll.seenFrom(region);
        EvaluatorRef target = context.evaluator(_target, region);
        PageRows::Source front = source(_front, seen.united(region.grown(1, 1)));
        PageRows::Source back = source(_back, seen);
        std::optional<PageRows::Source> ball;
        if (Ball::isIn(_ball))
            ball = source(_ball, _ball.node()->extent());
        if (!target || !front || !back || (ball && !*ball))
            return nullptr;
        return std::make_shared<PageRows>(_roll, std::move(target), std::move(front),
                                          std::move(back), std::move(ball));
    }

private:
    Roll _roll;
    Image _front, _back, _target, _ball;
};

} // namespace

void PageCurlTransition::initialize(FilterRegistry& registry)
{
    using T = PageCurlTransition;
    add<T>(registry, "CIPageCurlTransition", "Page Curl",
           {"Transition", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputTargetImage", &T::inputTargetImage, "Target Image", kImage},
               {"inputBacksideImage", &T::inputBacksideImage, "Backside Image", kImage},
               {"inputShadingImage", &T::inputShadingImage, "Shading Image", kImage},
               {"inputExtent", &T::inputExtent, "Extent", Details(InputType::Rectangle)},
               {"inputTime", &T::inputTime, "Time", kTransitionTime},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0.01).slider(0.01, 400)},
           });
}

Image PageCurlTransition::outputImage() const
{
    if (!inputImage || inputImage.node()->extent().isEmpty())
        return inputImage;
    const double time = transitionTime(inputTime);
    const IRect extent = IRect::around(inputExtent);
    if (extent.isPlane())
        return dissolved(inputImage, inputTargetImage, time);
    if (time == 0 || time == 1 || extent.isEmpty())
        return dissolved(inputImage, inputTargetImage, time).cropped(extent.rect());
    // What lies outside the plane cannot be seen.
    const double kEdge = IRect::kEdge;
    const Rect page =
        Rect::fromEdges(std::max(inputExtent.x, -kEdge), std::max(inputExtent.y, -kEdge),
                        std::min(inputExtent.right(), kEdge), std::min(inputExtent.top(), kEdge));
    return Image(std::make_shared<PageNode>(
        Roll(page, time, inputAngle, inputRadius), extent, inputImage,
        inputBacksideImage ? inputBacksideImage : inputImage, inputTargetImage, inputShadingImage));
}

} // namespace builtin
