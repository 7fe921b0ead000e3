// Dissolve, mod and bars swipe: three masks for one mixture of two pictures.
#include "platform/builtin/transition/Transitions.h"

#include "platform/builtin/Hash.h"
#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kTransition = {"Transition", "Video", "StillImage", "BuiltIn"};
// Mixes two images by a mask that is a function of the position: 0 the first, 1 the second, both
// exactly.
template <class Mask>
class MaskedNode : public Node {
public:
    MaskedNode(Image picture, Image target, const IRect& extent, const Mask& mask)
        : Node(extent), _picture(std::move(picture)), _target(std::move(target)), _mask(mask)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        struct Rows : Evaluator {
            Rows(EvaluatorRef p, EvaluatorRef t, const Mask& m)
                : picture(std::move(p)), target(std::move(t)), mask(m)
            {
            }
            void row(const Span& span, const Strip& out) const override
            {
                StripBuffer buffer;
                const Strip other = buffer.strip();
                picture->row(span, out);
                target->row(span, other);
                const Mask here = mask;
                for (int i = 0; i < span.count; i += kLanes) {
                    const F m = here(pixelCenters(span, i));
                    const Px a = loadPx(out, i), b = loadPx(other, i);
                    storePx(out, i, select(m >= F(1.0f), b, mix(a, b, m)));
                }
            }
            EvaluatorRef picture, target;
            Mask mask;
        };
        EvaluatorRef picture = context.evaluator(_picture, region);
        EvaluatorRef target = context.evaluator(_target, region);
        return picture && target
                   ? std::make_shared<Rows>(std::move(picture), std::move(target), _mask)
                   : nullptr;
    }

private:
    Image _picture, _target;
    Mask _mask;
};

template <class Mask>
Image masked(const Image& picture, const Image& target, const Mask& mask)
{
    if (!picture || picture.node()->extent().isEmpty())
        return picture;
    IRect extent = picture.node()->extent();
    if (target && !target.node()->extent().isPlane())
        extent = extent.united(target.node()->extent());
    return Image(std::make_shared<MaskedNode<Mask>>(picture, target, extent, mask));
}

// An angle that has a direction.
double direction(double angle)
{
    return std::isfinite(angle) ? angle : 0;
}

// Oval holes on a lattice that is compressed far from the centre, and wavy.
struct Holes {
    Holes(Point center, double time, double angle, double radius, double compression)
        : center(center), time(static_cast<float>(time)),
          sine(static_cast<float>(std::sin(direction(angle)))),
          cosine(static_cast<float>(std::cos(direction(angle)))),
          radius(static_cast<float>(std::clamp(positive(radius), 1.0, kLargest))),
          compression(static_cast<float>(std::clamp(positive(compression), 1.0, kLargest)))
    {
    }

    F operator()(const Coord& at) const
    {
        const Vec2 v = at - center;
        const F d = length(v);
        const F k = F(compression) / (F(compression) + d);
        const Vec2 turned = rotate(v, F(-sine), F(cosine));
        const F pitch = 2 * radius;
        const Vec2 q = turned * (k / pitch);
        // Along the lattice, each row swings with the other coordinate. a and b are the slopes.
        F s, c;
        turns(q.y, s, c);
        const F x = q.x + F(kSwing) * s, a = F(kSlope) * c;
        turns(x, s, c);
        const F y = q.y + F(kSwing) * s, b = F(kSlope) * c;
        const Vec2 e{x - floor(x + F(0.5f)), y - floor(y + F(0.5f))};
        const F size = length(e), distance = pitch * size;
        // How fast the distance grows for each pixel of the picture: the rim is one pixel soft.
        const M middle = size == F(0.0f), onCenter = d == F(0.0f);
        const Vec2 toRim{select(middle, F(1.0f), e.x / size), select(middle, F(0.0f), e.y / size)};
        const Vec2 outward{select(onCenter, F(1.0f), turned.x / d),
                           select(onCenter, F(0.0f), turned.y / d)};
        const Vec2 gradient{toRim.x + b * toRim.y, a * toRim.x + (F(1.0f) + a * b) * toRim.y};
        const F along = k * k * dot(gradient, outward);
        const F across = k * (gradient.y * outward.x - gradient.x * outward.y);
        const F growth = sqrt(along * along + across * across);
        return clamp01((F(time) * (F(1.41421356f * radius) + growth) - distance) / growth);
    }

    Point center;
    float time, sine, cosine, radius, compression;

private:
    static constexpr double kLargest = 1e9;
    static constexpr float kSwing = 0.1f, kSlope = 0.2f * float(kPi);

    static void turns(F x, F& sine, F& cosine)
    {
        sincos((x - floor(x + F(0.5f))) * F(2 * kPi), sine, cosine);
    }
};

// Strips across the picture, filled from one end.
struct Bars {
    Bars(const Rect& extent, double time, double angle, double width, double offset)
        : along{std::cos(direction(angle)), std::sin(direction(angle))},
          width(std::clamp(positive(width), 1.0, 1e9))
    {
        const Point corners[] = {{extent.x, extent.y},
                                 {extent.right(), extent.y},
                                 {extent.x, extent.top()},
                                 {extent.right(), extent.top()}};
        double last = -INFINITY;
        start = INFINITY;
        for (const Point& p : corners) {
            const double s = p.x * along.x + p.y * along.y;
            start = std::min(start, s);
            last = std::max(last, s);
        }
        const double length = last - start;
        // With longer delays wide bars would stand still most of the time.
        delay = std::min(positive(positive(offset) * positive(width)), 2 * length);
        travelled = time * (length + delay);
    }

    F operator()(const Coord& at) const
    {
        const double s0 = at.anchor.x * along.x + at.anchor.y * along.y - start;
        const F s = F(s0) + at.offset.x * F(along.x) + at.offset.y * F(along.y);
        // Across: whole strips of the anchor are counted apart, so that sides stay sharp far away.
        const double across = at.anchor.y * along.x - at.anchor.x * along.y;
        const double strip = std::floor(across / width);
        const F n = F(across - strip * width) - at.offset.x * F(along.y) + at.offset.y * F(along.x);
        const F side = floor(n * F(1 / width) + F(0.5f));
        const I above =
            toInt(clamp(side, -1e9f, 1e9f)) + I(static_cast<int>(static_cast<std::int64_t>(strip)));
        return mix(filled(above - I(1), s), filled(above, s),
                   clamp01(n - side * F(width) + F(0.5f)));
    }

private:
    F filled(I strip, F s) const
    {
        constexpr std::uint32_t kSalt = 40;
        const F head = F(travelled) - F(delay) * h01(strip, 0u, kSalt);
        return clamp01(head - s + F(0.5f));
    }

    Point along; // the direction of travel
    double width, start, delay, travelled;
};

} // namespace

double transitionTime(double time)
{
    return time > 0 ? std::min(time, 1.0) : 0;
}

Image dissolved(const Image& picture, const Image& target, double time)
{
    return masked(picture, target, [m = transitionTime(time)](const Coord&) { return F(m); });
}

void DissolveTransition::initialize(FilterRegistry& registry)
{
    using T = DissolveTransition;
    add<T>(registry, "CIDissolveTransition", "Dissolve",
           {"Transition", "Video", "StillImage", "Interlaced", "NonSquarePixels", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputTargetImage", &T::inputTargetImage, "Target Image", kImage},
               {"inputTime", &T::inputTime, "Time", kTransitionTime},
           });
}

Image DissolveTransition::outputImage() const
{
    return dissolved(inputImage, inputTargetImage, inputTime);
}

void ModTransition::initialize(FilterRegistry& registry)
{
    using T = ModTransition;
    add<T>(
        registry, "CIModTransition", "Mod", kTransition,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputTargetImage", &T::inputTargetImage, "Target Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputTime", &T::inputTime, "Time", kTransitionTime},
            {"inputAngle", &T::inputAngle, "Angle", angle().slider(-2 * kPi, 2 * kPi).identity(0)},
            {"inputRadius", &T::inputRadius, "Radius", distance().min(1).slider(1, 200)},
            {"inputCompression", &T::inputCompression, "Compression",
             distance().min(1).slider(100, 800)},
        });
}

Image ModTransition::outputImage() const
{
    const double time = transitionTime(inputTime);
    // Beginning and end are exact whatever the rounding of the mask.
    if (time == 0 || time == 1)
        return dissolved(inputImage, inputTargetImage, time);
    return masked(inputImage, inputTargetImage,
                  Holes(inputCenter.point(), time, inputAngle, inputRadius, inputCompression));
}

void BarsSwipeTransition::initialize(FilterRegistry& registry)
{
    using T = BarsSwipeTransition;
    add<T>(registry, "CIBarsSwipeTransition", "Bars Swipe Transition", kTransition,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputTargetImage", &T::inputTargetImage, "Target Image", kImage},
               {"inputAngle", &T::inputAngle, "Angle", angle().slider(0, 2 * kPi).identity(0)},
               {"inputWidth", &T::inputWidth, "Width", distance().min(2).slider(2, 300)},
               {"inputBarOffset", &T::inputBarOffset, "Bar Offset", scalar().min(1).slider(1, 100)},
               {"inputTime", &T::inputTime, "Time", kTransitionTime},
           });
}

Image BarsSwipeTransition::outputImage() const
{
    const double time = transitionTime(inputTime);
    const Rect extent = inputImage.extent();
    if (time == 0 || time == 1 || extent.isInfinite())
        return dissolved(inputImage, inputTargetImage, time);
    return masked(inputImage, inputTargetImage,
                  Bars(extent, time, inputAngle, inputWidth, inputBarOffset));
}

} // namespace builtin
