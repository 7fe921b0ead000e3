// The comparison's operations through our own filters.
#include "bench/Peers.h"
#include "filters/Register.h"
#include "platform/builtin/Register.h"
#include "platform/imaging/Filter.h"
#include "platform/imaging/Renderer.h"

using namespace imaging;

namespace bench {

namespace {

Image through(const char* name, const Image& image, const Dictionary& inputs)
{
    const std::unique_ptr<Filter> filter = Filter::filterWithName(name);
    filter->setDefaults();
    filter->setValueForKey(image, "inputImage"); // generators have none
    for (const auto& [key, value] : inputs)
        filter->setValueForKey(value, key);
    return filter->outputImage();
}

} // namespace

Operations oursOn(const BitmapRef& picture)
{
    builtin::registerBuiltinFilters(FilterRegistry::shared());
    filters::registerFilters(FilterRegistry::shared());
    const Image source = Image::fromBitmap(picture);
    const PixelRect all{0, 0, picture->width(), picture->height()};
    const auto rendered = [all](const Image& image) {
        return [all, image] { render(image, all, PixelFormat::Rgba8); };
    };
    const double x = picture->width() * 0.5, y = picture->height() * 0.5;
    const AffineTransform turn = AffineTransform::translation(-x, -y)
                                     .followedBy(AffineTransform::rotation(kAngle))
                                     .followedBy(AffineTransform::translation(x, y));
    const Image controls =
        through("CIColorControls", source, {{"inputSaturation", 1.5}, {"inputContrast", 1.2}});
    const Image gamma = through("CIGammaAdjust", controls, {{"inputPower", 0.7}});
    return {
        {"sobel", rendered(through("CIFSobel", source, {{"inputIntensity", 1.0}}))},
        {"gauss 7", rendered(through("CIGaussianBlur", source, {{"inputRadius", 7.0}}))},
        {"gauss 50", rendered(through("CIGaussianBlur", source, {{"inputRadius", 50.0}}))},
        {"box 10", rendered(through("CIBoxBlur", source, {{"inputRadius", 10.0}}))},
        {"disc 8", rendered(through("CIDiscBlur", source, {{"inputRadius", 8.0}}))},
        {"motion 20", rendered(through("CIMotionBlur", source, {{"inputRadius", 20.0}}))},
        {"motion turned", rendered(through("CIMotionBlur", source,
                                           {{"inputRadius", 20.0}, {"inputAngle", kTurned}}))},
        {"zoom 20", rendered(through("CIZoomBlur", source,
                                     {{"inputCenter", Vector(x, y)}, {"inputAmount", 20.0}}))},
        {"unsharp 2.5", rendered(through("CIUnsharpMask", source, {{"inputRadius", 2.5}}))},
        {"noise reduction", rendered(through("CINoiseReduction", source, {}))},
        {"noise / median", rendered(through("CINoiseReduction", source, {}))},
        {"edges", rendered(through("CIEdges", source, {}))},
        {"pixellate 8",
         rendered(through("CIPixellate", source, {{"inputCenter", Vector(0.0, 0.0)}}))},
        {"invert", rendered(through("CIColorInvert", source, {}))},
        {"gamma", rendered(through("CIGammaAdjust", source, {{"inputPower", 0.7}}))},
        {"posterize", rendered(through("CIColorPosterize", source, {}))},
        {"random", rendered(through("CIRandomGenerator", source, {}))},
        {"checkerboard", rendered(through("CICheckerboardGenerator", source, {}))},
        {"affine", rendered(through("CIAffineTransform", source, {{"inputTransform", turn}}))},
        {"colour", rendered(through("CIHueAdjust", gamma, {{"inputAngle", 0.5}}))},
    };
}

} // namespace bench
