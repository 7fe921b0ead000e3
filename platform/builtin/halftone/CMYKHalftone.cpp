// A picture printed in four inks, each through a dot screen of its own angle.
//
// (1 − x)(1 − K) is the colour that an amount x of an ink and K of black leave of the paper, and
// the separation is its inverse: without screens the inks give the colour back, whatever share
// black has.
#include "platform/builtin/halftone/CMYKHalftone.h"

#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

// As far apart as four can be, the least visible one (yellow) nearest to its neighbours.
constexpr double kDegree = kPi / 180;
constexpr double kCyan = 15 * kDegree, kMagenta = 75 * kDegree, kYellow = 0, kBlack = 45 * kDegree;

// Not-a-number becomes 0.
float limited01(double v)
{
    return static_cast<float>(std::min(positive(v), 1.0));
}

} // namespace

FourColorPrint::FourColorPrint(const Settings& s)
    : _cyan(s.center, s.width, s.angle + kCyan), _magenta(s.center, s.width, s.angle + kMagenta),
      _yellow(s.center, s.width, s.angle + kYellow), _black(s.center, s.width, s.angle + kBlack),
      _ink(s.width, s.sharpness, 2), _gcr(limited01(s.gcr)), _ucr(limited01(s.ucr))
{
}

void CMYKHalftone::initialize(FilterRegistry& registry)
{
    using T = CMYKHalftone;
    add<T>(
        registry, "CICMYKHalftone", "CMYK Halftone",
        {"HalftoneEffect", "Video", "StillImage", "BuiltIn"},
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputWidth", &T::inputWidth, "Width", distance().min(-2).slider(2, 100).identity(6)},
            {"inputAngle", &T::inputAngle, "Angle", kTurn},
            {"inputSharpness", &T::inputSharpness, "Sharpness", distance().min(0).slider(0, 1)},
            {"inputGCR", &T::inputGCR, "Gray Component Replacement",
             scalar().min(0).slider(0, 1).identity(1)},
            {"inputUCR", &T::inputUCR, "Under Color Removal",
             scalar().min(0).slider(0, 1).identity(0.5)},
        });
}

Image CMYKHalftone::outputImage() const
{
    if (!inputImage)
        return {};
    const FourColorPrint press(
        {inputCenter.point(), inputWidth, inputAngle, inputSharpness, inputGCR, inputUCR});
    const Image screens = generate([press](const Coord& at) { return press.spots(at); });
    return combine(inputImage, screens, inputImage.extent(), [press](Px s, Px spots) {
        return premultiplied(press.print(unpremultiplied(s), spots), s.a);
    });
}

} // namespace builtin
