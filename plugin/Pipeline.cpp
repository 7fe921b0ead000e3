// From a host's picture, an identifier and parameters to a result: preparing the inputs, keeping
// source and filter between calls, and both ways of finishing.
#include "generators/GLIFCoreObject.h"
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Work.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"

#include <cmath>

using drawing::Picture;
using foundation::AffineTransform;
using foundation::Color;
using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Rect;
using foundation::Value;
using foundation::Vector;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::Filter;
using imaging::Image;
using imaging::PixelFormat;

namespace {

struct PixelSize {
    int width = 0, height = 0;

    // Zero when a side is absurd.
    static PixelSize of(double width, double height)
    {
        const auto fits = [](double v) { return v > 0 && v <= Bitmap::kMaximumSide; };
        if (!fits(width) || !fits(height))
            return {};
        return {static_cast<int>(std::ceil(width)), static_cast<int>(std::ceil(height))};
    }
    explicit operator bool() const { return width > 0; }
};

// Vector pictures are worked on at four times their points, all others in their own pixels.
PixelSize workingSize(const Picture& picture)
{
    constexpr double kVectorScale = 4.0;
    if (picture.isVector())
        return PixelSize::of(picture.size().width * kVectorScale,
                             picture.size().height * kVectorScale);
    return PixelSize::of(picture.pixelsWide(), picture.pixelsHigh());
}

// A rectangle of a filter's result that becomes pixels when somebody looks at them. The image is a
// value: what happens to the filter afterwards does not change it.
class FilterResult final : public drawing::DeferredSource {
public:
    FilterResult(Image image, PixelSize size, PixelFormat format)
        : _image(std::move(image)), _size(size), _format(format)
    {
    }
    int pixelsWide() const override { return _size.width; }
    int pixelsHigh() const override { return _size.height; }
    BitmapRef render() const override
    {
        return imaging::render(_image, {0, 0, _size.width, _size.height}, _format);
    }

private:
    Image _image;
    PixelSize _size;
    PixelFormat _format;
};

PictureRef pictureOf(Image image, PixelSize size, PixelFormat format)
{
    return Picture::fromDeferred(std::make_shared<FilterResult>(std::move(image), size, format),
                                 {double(size.width), double(size.height)});
}

std::unique_ptr<Filter> filterWithDefaults(std::string_view name)
{
    std::unique_ptr<Filter> filter = Filter::filterWithName(name);
    if (filter)
        filter->setDefaults();
    return filter;
}

Image constantColor(const Color& color)
{
    const auto filter = Filter::filterWithName("CIConstantColorGenerator");
    if (!filter)
        return {};
    filter->setValueForKey(color, "inputColor");
    return filter->outputImage();
}

Image transformed(const Image& image, const AffineTransform& transform)
{
    const auto filter = filterWithDefaults("CIAffineTransform");
    if (!filter)
        return {};
    filter->setValueForKey(image, "inputImage");
    filter->setValueForKey(transform, "inputTransform");
    return filter->outputImage();
}

Image composited(const char* operation, const Image& image, const Image& background)
{
    const auto filter = filterWithDefaults(operation);
    if (!filter)
        return {};
    filter->setValueForKey(image, "inputImage");
    filter->setValueForKey(background, "inputBackgroundImage");
    return filter->outputImage();
}

// A picture in a parameter as a filter image; missing when it cannot be read.
Image imageOf(const Value& value)
{
    if (const foundation::ImageRef image = value.image())
        return Image(image);
    const PictureRef picture = value.picture();
    const BitmapRef bitmap = picture ? picture->bitmap() : nullptr;
    return bitmap ? Image::fromBitmap(bitmap) : Image();
}

// Keeps a number at least `least` away from zero, but never below it: smaller ones of either sign
// become `least` itself. A not-a-number stays.
void clampMagnitude(Dictionary& inputs, const char* key, double least)
{
    const foundation::Number* number = inputs[key].number();
    if (number && std::abs(number->doubleValue()) < least)
        inputs.set(key, least);
}

// Whether results of the filter are made to fit the picture, rather than cropped to it.
bool fitsResult(std::string_view name)
{
    return name == "CIKaleidoscope" || name == "CIFAffineTransform2Filter";
}

bool canBeFitted(const Rect& extent)
{
    return !extent.isInfinite() && !extent.isEmpty();
}

} // namespace

// What the two application operations have in hand once the filter is set up.
struct CIFMain::Application {
    PixelSize size;           // working size
    bool fit = false;         // see fitsResult
    bool isGenerator = false; // the filter takes no image; its light is added onto the source
    Image source;             // only of a generator-type filter, or when it was made by this call
    Image output;
};

Dictionary CIFMain::prepareAttributes(const Dictionary& attributes)
{
    Dictionary inputs;
    for (const auto& [key, value] : attributes) {
        if (key == "CIFinputCenter") {
            if (const auto* point = value.get<foundation::Point>())
                inputs.set("inputCenter", Vector(point->x, point->y));
            else if (const auto* vector = value.get<Vector>())
                inputs.set("inputCenter", Vector(vector->x, vector->y));
        } else if (const Color* color = value.color()) {
            if (color->space != Color::Space::Pattern)
                inputs.set(key, Color::rgb(color->red, color->green, color->blue, color->alpha));
        } else if (key == "CIFinputTexture" || key == "CIFinputShadingImage") {
            if (const Image image = imageOf(value))
                inputs.set(key.substr(3), image.node());
        } else if (key == "GLIFRandomSeed") {
            continue;
        } else if (key == "GLIFBrush" && !_currFilterName.starts_with("GLIF_")) {
            continue;
        } else {
            inputs.set(key, value);
        }
    }

    if (_currFilterName == "CIPageCurlTransition") {
        if (!_whiteBallImage) {
            if (const auto file = foundation::resourcePath("whiteBall", "tiff"))
                if (const auto picture = codecs::readPicture(*file))
                    _whiteBallImage = imageOf(*picture);
        }
        if (_whiteBallImage)
            inputs.set("inputShadingImage", _whiteBallImage.node());
        else
            foundation::log("prepareAttributes: failed to set 'inputShadingImage'");
        if (const Image clear = constantColorImage())
            inputs.set("inputTargetImage", clear.node());
        else
            foundation::log(
                "prepareAttributes: failed to set 'CIPageCurlTransition::inputTargetImage'");
    } else if (_currFilterName == "CIDissolveTransition" || _currFilterName == "CIModTransition" ||
               _currFilterName == "CIBarsSwipeTransition") {
        // A transition runs from the picture toward full transparency.
        if (const Image clear = constantColorImage())
            inputs.set("inputTargetImage", clear.node());
    } else if (_currFilterName == "CIKaleidoscope") {
        clampMagnitude(inputs, "inputCount", 1.0);
    } else if (_currFilterName == "CITorusLensDistortion") {
        clampMagnitude(inputs, "inputRefraction", 0.0001);
    }
    return inputs;
}

Image CIFMain::constantColorImage()
{
    if (!_constColorImage)
        _constColorImage = constantColor(Color::clear());
    return _constColorImage;
}

Image CIFMain::outputAdditionalCompositingWithBackground(const Image& image,
                                                         const Image& background) const
{
    return composited("CIAdditionCompositing", image, background);
}

plugin::FilterOutput CIFMain::sumWithBackground(const Image& image, const Image& background) const
{
    const Image sum = outputAdditionalCompositingWithBackground(image, background);
    const Rect extent = background.extent();
    const PixelSize size = PixelSize::of(extent.width, extent.height);
    return sum && size ? plugin::FilterOutput{sum, size.width, size.height, _sourceFormat}
                       : plugin::FilterOutput();
}

PictureRef CIFMain::performAdditionalCompositingWithBackground(const Image& image,
                                                               const Image& background)
{
    const plugin::FilterOutput sum = sumWithBackground(image, background);
    return sum ? pictureOf(sum.image, {sum.width, sum.height}, sum.format) : nullptr;
}

Image CIFMain::rasterized(const PictureRef& picture, int width, int height)
{
    ++_counters.rasterizations;
    const BitmapRef bitmap = picture->bitmapOfSize(width, height);
    if (!bitmap)
        return {};
    _sourceFormat =
        bitmap->format() == PixelFormat::Rgba8 ? PixelFormat::Rgba8 : PixelFormat::Rgba16;
    return Image::fromBitmap(bitmap);
}

bool CIFMain::beginApplication(Application& application, std::string_view name,
                               const Dictionary& attributes, const PictureRef& picture,
                               RepeatedSource repeatedSource)
try {
    application.fit = fitsResult(name);
    application.size = picture ? workingSize(*picture) : PixelSize();
    if (!application.size)
        return false;

    const bool isRepeated = picture == _currImage && name == _currFilterName;
    if (!isRepeated) {
        _CIFilterInstance.reset();
        _sourceImage = _pointSizeImage = {};
        _currImage = picture;
        _currFilterName = name;
    }
    if (!_CIFilterInstance) {
        _CIFilterInstance = filterWithDefaults(name);
        if (!_CIFilterInstance)
            return false;
        ++_counters.filtersCreated;
    }
    if (!_sourceImage) {
        _sourceImage = rasterized(picture, application.size.width, application.size.height);
        if (!_sourceImage)
            return false;
        application.source = _sourceImage;
    }

    Filter& filter = *_CIFilterInstance;
    const Dictionary description = filter.attributes();
    if (description.contains("inputImage")) {
        if (application.source) {
            filter.setValueForKey(application.source, "inputImage");
            if (description.contains("inputBacksideImage"))
                filter.setValueForKey(application.source, "inputBacksideImage");
        }
    } else {
        application.isGenerator = true;
        if (!application.source)
            application.source =
                repeatedSource == RepeatedSource::PointSize ? pointSizeImage() : _sourceImage;
    }

    for (const auto& [key, value] : prepareAttributes(attributes))
        filter.setValueForKey(value, key);
    if (name == "CIPageCurlTransition") {
        if (const Image input{filter.valueForKey("inputImage").image()}) {
            const Rect extent = input.extent();
            filter.setValueForKey(Vector(0, 0, extent.width, extent.height), "inputExtent");
        }
    }
    application.output = filter.outputImage();
    return true;
} catch (const foundation::Stopped&) {
    // Given up half-way: the next call with this picture and name is no repetition.
    _CIFilterInstance.reset();
    _sourceImage = _pointSizeImage = {};
    _currImage.reset();
    _currFilterName.clear();
    throw;
}

Image CIFMain::pointSizeImage()
{
    if (_pointSizeImage)
        return _pointSizeImage;
    const PixelSize size = PixelSize::of(_currImage->size().width, _currImage->size().height);
    const Rect extent = _sourceImage.extent();
    if (size.width == extent.width && size.height == extent.height)
        _pointSizeImage = _sourceImage;
    else if (size)
        _pointSizeImage = rasterized(_currImage, size.width, size.height);
    return _pointSizeImage;
}

Image CIFMain::CIFOutputImageForFilterAttributesForImage(std::string_view name,
                                                         const Dictionary& attributes,
                                                         const PictureRef& picture)
{
    Application a;
    if (!beginApplication(a, name, attributes, picture, RepeatedSource::WorkingSize))
        return {};
    if (a.isGenerator)
        return a.output && a.source ? outputAdditionalCompositingWithBackground(a.output, a.source)
                                    : a.output;

    const Image background = constantColor(_backgroundColor.value_or(Color::white()));
    if (!a.output)
        return background;
    if (const Rect e = a.output.extent(); a.fit && canBeFitted(e)) {
        const foundation::Size size = picture->size();
        const double scale = std::min(size.width / e.width, size.height / e.height);
        a.output = transformed(a.output, AffineTransform::translation(-e.midX(), -e.midY())
                                             .followedBy(AffineTransform::scaling(scale, scale))
                                             .followedBy(AffineTransform::translation(
                                                 0.5 * size.width, 0.5 * size.height)));
    }
    return composited("CISourceOverCompositing", a.output, background);
}

PictureRef CIFMain::CIFApplyFilterAttributesForImage(std::string_view name,
                                                     const Dictionary& attributes,
                                                     const PictureRef& picture)
{
    const plugin::FilterOutput output = outputOfFilter(name, attributes, picture);
    return output ? pictureOf(output.image, {output.width, output.height}, output.format) : nullptr;
}

plugin::FilterOutput CIFMain::outputOfFilter(std::string_view name, const Dictionary& attributes,
                                             const PictureRef& picture)
{
    Application a;
    // A generator-type filter's result is as large as the source it is added onto: the working size
    // the first time, the size in points when the call repeats picture and name. They differ for
    // vector pictures and for those with a resolution of their own.
    if (!beginApplication(a, name, attributes, picture, RepeatedSource::PointSize))
        return {};
    if (a.isGenerator && a.output && a.source)
        return sumWithBackground(a.output, a.source);

    if (const Rect e = a.output.extent(); a.fit && canBeFitted(e)) {
        const double width = a.size.width, height = a.size.height;
        const double ratio = e.width / e.height;
        const Rect target = width / height > ratio
                                ? Rect{(width - height * ratio) * 0.5, 0, height * ratio, height}
                                : Rect{0, (height - width / ratio) * 0.5, width, width / ratio};
        a.output = transformed(a.output,
                               AffineTransform::translation(-e.x, -e.y)
                                   .followedBy(AffineTransform::scaling(target.width / e.width,
                                                                        target.height / e.height))
                                   .followedBy(AffineTransform::translation(target.x, target.y)));
    }
    return {a.output, a.size.width, a.size.height, _sourceFormat};
}

PictureRef CIFMain::CIFGenerateLayerAttributesForImage(std::string_view name,
                                                       const Dictionary& attributes,
                                                       const PictureRef& picture)
{
    const auto generator = GLIFSmartInstanceFromName(name);
    return generator ? generator->GLIFOutputImageWidthHeightAttributes(picture, 0, 0, attributes)
                     : nullptr;
}

PictureRef CIFMain::CIFGenerateLayerAttributesSize(std::string_view name,
                                                   const Dictionary& attributes, Size size)
{
    const auto generator = GLIFSmartInstanceFromName(name);
    // Sizes pass through single precision, as rectangles of hosts do.
    const auto side = [](double v) { return foundation::truncToInt(static_cast<float>(v)); };
    return generator ? generator->GLIFOutputImageWidthHeightAttributes(
                           nullptr, side(size.width), side(size.height), attributes)
                     : nullptr;
}
