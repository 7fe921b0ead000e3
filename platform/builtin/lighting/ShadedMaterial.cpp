// A relief lit like a ball: each slope takes the colour that a picture of a lit ball has where the
// ball slopes the same way.
#include "platform/builtin/lighting/ShadedMaterial.h"

#include "platform/builtin/Gradient.h"
#include "platform/builtin/Inputs.h"
#include "platform/builtin/lighting/Ball.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>

namespace builtin {

using namespace imaging;

namespace {

// The sideways parts of the surface normal in red and green; the picture's alpha stays.
struct Normals {
    double scale;

    Px operator()(const auto& window) const
    {
        const Vec2 n = gradient([&](int dx, int dy) { return window.luma(dx, dy); }) * F(-scale);
        const F shorter = F(1.0f) / sqrt(dot(n, n) + F(1.0f));
        return {n.x * shorter, n.y * shorter, 0.0f, window(0, 0).a};
    }
};

} // namespace

Image shadedMaterial(const Image& heights, const Image& ball, double scale)
{
    if (!heights || !Ball::isIn(ball))
        return {};
    // Beyond a million every slope is a cliff; the squares above must not overflow.
    const Image normals =
        neighborhood(heights, 1, Border::Clamped, Normals{std::clamp(scale, -1e6, 1e6)});
    return guidedWarp(normals, ball, Reach::anywhere(),
                      [lit = Ball(ball.extent())](Px normal, const auto& picture, const Coord&) {
                          return lit(picture, {normal.r, normal.g}) * normal.a;
                      });
}

void ShadedMaterial::initialize(FilterRegistry& registry)
{
    using T = ShadedMaterial;
    add<T>(registry, "CIShadedMaterial", "Shaded Material",
           {"Stylize", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputShadingImage", &T::inputShadingImage, "Shading Image", kImage},
               {"inputScale", &T::inputScale, "Scale", distance().min(0).slider(0.5, 200)},
           });
}

Image ShadedMaterial::outputImage() const
{
    return shadedMaterial(inputImage, inputShadingImage, inputScale);
}

} // namespace builtin
