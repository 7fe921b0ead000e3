// Halftone screens in black and white: rings, dots, hatching and lines.
//
// Each is a spot function of the position that takes every value in 0…1 equally often; the picture
// is white where its tone lies above it.
#include "platform/builtin/halftone/Screens.h"

#include "platform/builtin/halftone/Ink.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kHalftone = {"HalftoneEffect", "Video", "StillImage", "BuiltIn"};
constexpr Details kWidth = distance().min(1).slider(2, 50);
constexpr Details kSharpness = scalar().min(0).max(1).slider(0, 1);

// The picture's tones through a screen; spot is F(Coord).
template <class Spot>
Image screened(const Image& image, const Ink& ink, const Spot& spot)
{
    if (!image)
        return {};
    const Image screen = generate([spot](const Coord& at) {
        const F h = spot(at);
        return Px{h, h, h, h};
    });
    return combine(image, screen, image.extent(), [ink](Px s, Px screen) {
        const F v = ink(luminance(unpremultiplied(s)), screen.r) * s.a;
        return Px{v, v, v, s.a};
    });
}

template <class T>
void addTurned(FilterRegistry& registry, const char* name, const char* displayName)
{
    add<T>(registry, name, displayName, kHalftone,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
               {"inputWidth", &T::inputWidth, "Width", kWidth},
               {"inputSharpness", &T::inputSharpness, "Sharpness", kSharpness},
           });
}

Lattice latticeOf(const TurnedScreen& f)
{
    return {f.inputCenter.point(), f.inputWidth, f.inputAngle};
}

} // namespace

void CircularScreen::initialize(FilterRegistry& registry)
{
    using T = CircularScreen;
    add<T>(registry, "CICircularScreen", "Circular Screen", kHalftone,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputWidth", &T::inputWidth, "Width", kWidth},
               {"inputSharpness", &T::inputSharpness, "Sharpness", kSharpness},
           });
}

Image CircularScreen::outputImage() const
{
    return screened(
        inputImage, Ink(inputWidth, inputSharpness, 2),
        [center = inputCenter.point(), perPixel = 1 / screenWidth(inputWidth)](const Coord& at) {
            const F d = length(at - center) * F(perPixel);
            return triangle(d - floor(d + F(0.5f)));
        });
}

void DotScreen::initialize(FilterRegistry& registry)
{
    addTurned<DotScreen>(registry, "CIDotScreen", "Dot Screen");
}

Image DotScreen::outputImage() const
{
    return screened(inputImage, Ink(inputWidth, inputSharpness, 2),
                    [lattice = latticeOf(*this)](const Coord& at) { return dotSpot(lattice(at)); });
}

void HatchedScreen::initialize(FilterRegistry& registry)
{
    addTurned<HatchedScreen>(registry, "CIHatchedScreen", "Hatched Screen");
}

Image HatchedScreen::outputImage() const
{
    return screened(inputImage, Ink(inputWidth, inputSharpness, 3),
                    [lattice = latticeOf(*this)](const Coord& at) {
                        const Vec2 d = lattice(at);
                        // Both sets of lines are light where neither is dark; the square makes up
                        // for how seldom that is.
                        const F h = max(triangle(d.x), triangle(d.y));
                        return h * h;
                    });
}

void LineScreen::initialize(FilterRegistry& registry)
{
    addTurned<LineScreen>(registry, "CILineScreen", "Line Screen");
}

Image LineScreen::outputImage() const
{
    return screened(
        inputImage, Ink(inputWidth, inputSharpness, 2),
        [lattice = latticeOf(*this)](const Coord& at) { return triangle(lattice(at).y); });
}

} // namespace builtin
