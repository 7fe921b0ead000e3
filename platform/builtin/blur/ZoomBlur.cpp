// The mean along a ray through each pixel, as if the camera had moved toward the centre.
#include "platform/builtin/blur/ZoomBlur.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr int kMostSamples = 256;

struct Zoom {
    Point center;
    float kappa;  // the logarithm of the zoom
    float length; // of the ray, as a part of the distance from the centre

    explicit Zoom(const Vector& c, double amount)
        : center{c.x, c.y}, kappa(static_cast<float>(amount)),
          length(static_cast<float>(std::abs(1 - std::exp(-amount))))
    {
    }

    Px operator()(const auto& image, const Coord& at) const
    {
        const Vec2 v = at - center;
        const F wanted = clamp(imaging::length(v) * F(length), 1.0f, F(kMostSamples));
        const I count = toInt(F(0.0f) - floor(F(0.0f) - wanted));
        int most = 1;
        for (int k = 0; k < kLanes; ++k)
            most = std::max(most, count.v[k]);
        const F step = F(-kappa) / toFloat(count);
        Px sum = transparent();
        for (int i = 0; i < most; ++i) {
            const Px p = image(center + v * exp(step * F(i + 0.5f)));
            sum = sum + select(I(i) < count, p, transparent());
        }
        return sum * (F(1.0f) / toFloat(count));
    }
};

// A rectangle and what becomes of it when it is scaled about the centre.
Rect swept(const Rect& r, const Vector& center, double scale)
{
    const auto low = [&](double a, double c) { return std::min(a, c + (a - c) * scale); };
    const auto high = [&](double a, double c) { return std::max(a, c + (a - c) * scale); };
    return Rect::fromEdges(low(r.x, center.x), low(r.y, center.y), high(r.right(), center.x),
                           high(r.top(), center.y));
}

} // namespace

void ZoomBlur::initialize(FilterRegistry& registry)
{
    using T = ZoomBlur;
    add<T>(registry, "CIZoomBlur", "Zoom Blur", {"Blur", "StillImage", "Video", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputAmount", &T::inputAmount, "Amount", distance().slider(0, 200).identity(0)},
           });
}

Image ZoomBlur::outputImage() const
{
    const double amount = inputAmount == inputAmount ? inputAmount / 100 : 0;
    const double kappa = std::clamp(amount, -10.0, 10.0);
    if (!inputImage || kappa == 0 || inputImage.extent().isEmpty())
        return inputImage;
    const Rect extent = inputImage.extent().isInfinite()
                            ? Rect::infinite()
                            : swept(inputImage.extent(), inputCenter, std::exp(kappa));
    const Reach reach = Reach::of(
        [c = inputCenter, kappa](const Rect& r) { return swept(r, c, std::exp(-kappa)); });
    return warp(inputImage, extent, reach, Zoom(inputCenter, kappa));
}

} // namespace builtin
