// The picture as a printed comic: few tones and dots, drawn over with lines.
#include "platform/builtin/stylize/ComicEffect.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/blur/NoiseReduction.h"
#include "platform/builtin/color/Posterize.h"
#include "platform/builtin/halftone/CMYKHalftone.h"
#include "platform/builtin/stylize/LineOverlay.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

// Six tones of every hue. Levels for each component by itself would turn a grey-blue sky into
// patches of green and violet.
Rgb inFewTones(Rgb color)
{
    const Rgb u{clamp01(color.r), clamp01(color.g), clamp01(color.b)};
    const F tone = max(max(u.r, u.g), u.b);
    const F k = select(tone > F(0.0f), Posterize{6}(tone) / tone, F(0.0f));
    return u * k;
}

} // namespace

void ComicEffect::initialize(FilterRegistry& registry)
{
    add<ComicEffect>(registry, "CIComicEffect", "Comic Effect",
                     {"Stylize", "Video", "StillImage", "BuiltIn"},
                     {{"inputImage", &ComicEffect::inputImage, "Image", kImage}});
}

Image ComicEffect::outputImage() const
{
    if (!inputImage)
        return {};
    const Image smooth = noiseReduction(inputImage, 0.07, 0.71);
    // Greys get black dots only.
    const FourColorPrint press(
        {.center = {150, 150}, .width = 6, .angle = 0, .sharpness = 0.7, .gcr = 1, .ucr = 1});
    const Image screens = generate([press](const Coord& at) { return press.spots(at); });
    // In one step, as the colours that both are made of are not computed for nothing.
    const Image colors = combine(smooth, screens, smooth.extent(), [press](Px s, Px spots) {
        const Rgb u = unpremultiplied(s);
        return premultiplied(mix(inFewTones(u), press.print(u, spots), 0.5f), s.a);
    });
    return combine(edgeLines(smooth, 1, 0.1, 50), colors, smooth.extent(), [](Px line, Px c) {
        const F paper = F(1.0f) - line.a;
        return Px{c.r * paper, c.g * paper, c.b * paper, c.a};
    });
}

} // namespace builtin
