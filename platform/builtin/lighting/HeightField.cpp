// A relief from a mask: flat at the outline of its shapes, rising over about the radius.
//
// With g the blurred mask and q its blurred square, 2g - q/g is the local mean less the local
// variance over the mean: 0 at the outline of a white shape, however soft it is, the mask itself
// where that is even. Three widths are averaged, so that the slope has neither a rim nor a plateau.
#include "platform/builtin/lighting/HeightField.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

// Of a blurred pixel with g in red and q in green.
F height(Px blurred)
{
    const F g = blurred.r, q = blurred.g;
    return select(g >= F(1.0f / 1024), max(F(2.0f) * g - q / g, 0.0f), F(0.0f));
}

Px grey(F v)
{
    return {v, v, v, 1.0f};
}

} // namespace

Image heightField(const Image& mask, double radius)
{
    if (!mask)
        return {};
    if (positive(radius) == 0)
        return mapPixels(mask, [](Px s) { return grey(max(luminance(s), 0.0f)); });
    // One blur serves g and q, so that its errors cancel in their quotient.
    const Image levels = mapPixels(mask, [](Px s) {
        const F m = max(luminance(s), 0.0f);
        return Px{m, m * m, 0.0f, 0.0f};
    });
    const auto blurred = [&](double part) {
        return gaussian(levels, radius * part, Border::Transparent);
    };
    const Rect extent = mask.extent();
    const Image wide = combine(blurred(1.0 / 2), blurred(1.0 / 4), extent,
                               [](Px a, Px b) { return grey(height(a) + height(b)); });
    return combine(wide, blurred(1.0 / 8), extent,
                   [](Px sum, Px c) { return grey((sum.r + height(c)) * F(1.0 / 3)); });
}

void HeightFieldFromMask::initialize(FilterRegistry& registry)
{
    using T = HeightFieldFromMask;
    add<T>(registry, "CIHeightFieldFromMask", "Height Field From Mask",
           {"Stylize", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(0).slider(0, 300).identity(10)},
           });
}

Image HeightFieldFromMask::outputImage() const
{
    return heightField(inputImage, inputRadius);
}

} // namespace builtin
