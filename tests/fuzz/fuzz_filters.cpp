// Any filter, its declared inputs filled from bytes, applied to a small picture and rendered.
#include "tests/fuzz/Bytes.h"

#include "filters/Register.h"
#include "platform/builtin/Register.h"
#include "platform/imaging/Filter.h"
#include "platform/imaging/Renderer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace imaging;

namespace {

FilterRegistry& registry()
{
    static FilterRegistry& filled = [] -> FilterRegistry& {
        FilterRegistry& r = FilterRegistry::shared();
        builtin::registerBuiltinFilters(r);
        filters::registerFilters(r);
        return r;
    }();
    return filled;
}

void setInputs(Filter& filter, fuzz::Bytes& bytes)
{
    for (const auto& input : filter.description().inputs) {
        if (bytes.oneIn(4))
            continue;
        const bool isVector = input.attributeClass == "CIVector";
        const double low = input.attributes.doubleValue("CIAttributeSliderMin", isVector ? -20 : 0);
        const double high =
            input.attributes.doubleValue("CIAttributeSliderMax", isVector ? 80 : 10);
        filter.setValueForKey(bytes.value(input.attributeClass, low, high), input.key);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Bytes bytes({reinterpret_cast<const char*>(data), size});
    const auto names = registry().names();
    const auto first = registry().make(names[bytes.pick(names.size())]);
    first->setDefaults();
    first->setValueForKey(Image::fromBitmap(bytes.bitmap()), "inputImage");
    setInputs(*first, bytes);
    Image image = first->outputImage();

    // Sometimes its result, the part near the picture, goes through another one.
    if (bytes.oneIn(3)) {
        const auto second = registry().make(names[bytes.pick(names.size())]);
        second->setDefaults();
        setInputs(*second, bytes);
        second->setValueForKey(image.cropped({-100, -100, 300, 300}), "inputImage");
        image = second->outputImage();
    }

    const PixelRect rect{int(bytes.pick(40)) - 20, int(bytes.pick(40)) - 20,
                         1 + int(bytes.pick(90)), 1 + int(bytes.pick(90))};
    const PixelFormat format = bytes.oneIn(2) ? PixelFormat::Rgba8 : PixelFormat::RgbaF;
    const auto rendered = render(image, rect, format, {.stop = {}, .threaded = bytes.oneIn(8)});
    if (rendered && (rendered->width() != rect.width || rendered->height() != rect.height)) {
        std::fprintf(stderr, "%s: a result of the wrong size\n", first->name().c_str());
        std::abort();
    }
    const Rect extent = image.extent();
    if (std::isnan(extent.x) || std::isnan(extent.y) || std::isnan(extent.width) ||
        std::isnan(extent.height)) {
        std::fprintf(stderr, "%s: an extent that is no number\n", first->name().c_str());
        std::abort();
    }
    return 0;
}
