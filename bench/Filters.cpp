// How long every registered filter takes with its defaults, in process, on an opaque 8-bit picture.
#include "bench/Report.h"
#include "filters/Register.h"
#include "platform/builtin/Register.h"
#include "platform/imaging/Filter.h"
#include "platform/imaging/Renderer.h"

using namespace imaging;

int main(int argc, char** argv)
{
    const bench::Arguments arguments = bench::parse(argc, argv);
    FilterRegistry& registry = FilterRegistry::shared();
    builtin::registerBuiltinFilters(registry);
    filters::registerFilters(registry);

    std::vector<bench::Row> rows;
    for (const int megapixels : arguments.megapixels) {
        const BitmapRef picture = bench::testPicture(megapixels);
        const Image source = Image::fromBitmap(picture);
        const PixelRect all{0, 0, picture->width(), picture->height()};
        const double size = all.width * 1e-6 * all.height;
        for (const std::string& name : registry.names()) {
            if (name.find(arguments.pattern) == std::string::npos)
                continue;
            const std::unique_ptr<Filter> filter = registry.make(name);
            filter->setDefaults();
            // Every image input gets the picture: a second one makes compositing do its work.
            for (const auto& input : filter->description().inputs)
                if (input.attributeClass == "CIImage")
                    filter->setValueForKey(source, input.key);
            rows.push_back(bench::measure(
                name, size, [&] { render(filter->outputImage(), all, PixelFormat::Rgba8); }));
        }
    }
    bench::report(rows, arguments.jsonFile);
}
