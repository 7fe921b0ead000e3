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
    filter->setValueForKey(image, "inputImage");
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
        {"affine", rendered(through("CIAffineTransform", source, {{"inputTransform", turn}}))},
        {"colour", rendered(through("CIHueAdjust", gamma, {{"inputAngle", 0.5}}))},
    };
}

} // namespace bench
