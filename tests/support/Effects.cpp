// Filters made by name, set, and rendered.
#include "tests/support/Support.h"

#include "filters/Register.h"
#include "platform/builtin/Register.h"
#include "platform/imaging/Filter.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace support {

namespace {

Rect intersection(const Rect& a, const Rect& b)
{
    return Rect::fromEdges(std::max(a.x, b.x), std::max(a.y, b.y), std::min(a.right(), b.right()),
                           std::min(a.top(), b.top()));
}

} // namespace

void registerFilters()
{
    [[maybe_unused]] static const bool done = [] {
        imaging::FilterRegistry& registry = imaging::FilterRegistry::shared();
        builtin::registerBuiltinFilters(registry);
        filters::registerFilters(registry);
        return true;
    }();
}

Image image(const BitmapRef& bitmap)
{
    return Image::fromBitmap(bitmap);
}

Value imageValue(const BitmapRef& bitmap)
{
    return image(bitmap).node();
}

Rect rectangleOf(const Bitmap& bitmap)
{
    return {0, 0, double(bitmap.width()), double(bitmap.height())};
}

BitmapRef render(const Image& image, const Rect& rect, PixelFormat format,
                 const imaging::RenderOptions& options)
{
    const Rect part = intersection(image.extent(), rect);
    if (part.isEmpty())
        throw std::runtime_error("nothing to render: the image does not reach the rectangle");
    if (part.isInfinite())
        throw std::runtime_error("nothing to render: the rectangle is infinite");
    BitmapRef bitmap = imaging::render(
        image, {int(part.x), int(part.y), int(part.width), int(part.height)}, format, options);
    if (!bitmap)
        throw std::runtime_error("the image was not rendered");
    return bitmap;
}

BitmapRef renderWhole(const Image& image, PixelFormat format)
{
    return render(image, image.extent(), format);
}

Image outputOf(std::string_view filterName, const BitmapRef& bitmap, const Dictionary& inputs)
{
    registerFilters();
    const auto filter = imaging::Filter::filterWithName(filterName);
    if (!filter)
        throw std::runtime_error("no filter is named " + std::string(filterName));
    filter->setDefaults();
    if (bitmap && filter->description().input("inputImage"))
        filter->setValueForKey(image(bitmap), "inputImage");
    for (const auto& [key, value] : inputs)
        if (!filter->setValueForKey(value, key))
            throw std::runtime_error(std::string(filterName) + " does not take " +
                                     value.kindName() + " for " + key);
    return filter->outputImage();
}

BitmapRef apply(std::string_view filterName, const BitmapRef& bitmap, const Dictionary& inputs,
                PixelFormat format)
{
    return render(outputOf(filterName, bitmap, inputs), rectangleOf(*bitmap), format);
}

} // namespace support
