// How long every generator takes with its advertised defaults: the picture drawn from nothing, and
// recoloured where only colours change.
#include "bench/Brush.h"
#include "bench/Report.h"
#include "generators/GLIFCoreObject.h"
#include "generators/Register.h"
#include "platform/drawing/Picture.h"

#include <cmath>
#include <cstdlib>

using foundation::Dictionary;

int main(int argc, char** argv)
{
    const bench::Arguments arguments = bench::parse(argc, argv);
    const drawing::PictureRef brush = bench::roundBrush();
    std::vector<bench::Row> rows;
    for (const int megapixels : arguments.megapixels) {
        const int width = static_cast<int>(std::lround(std::sqrt(megapixels * 1e6 * 4 / 3)));
        const int height = static_cast<int>(std::lround(width * 0.75));
        for (const std::string& name : generators::classNames()) {
            if (name.find(arguments.pattern) == std::string::npos)
                continue;
            const auto generator = generators::makeGenerator(name);
            Dictionary attributes = {{"GLIFBrush", brush}};
            for (const auto& [key, description] : generator->GLIFQueryAttributes())
                attributes.set(key, (*description.dictionary())["GLIFDefValue"]);
            int seed = 0;
            const auto draw = [&](int useSeed) {
                attributes.set("GLIFRandomSeed", useSeed);
                std::srand(useSeed);
                const auto picture = generator->GLIFOutputImageWidthHeightAttributes(
                    nullptr, width, height, attributes);
                if (picture)
                    (void)picture->bitmap();
            };
            const double size = width * 1e-6 * height;
            // A new seed each time, so that nothing comes from the cache.
            rows.push_back(bench::measure(name, size, [&] { draw(++seed); }));
            if (!attributes.contains("GLIFColorRangeMax"))
                continue;
            float range = 0;
            rows.push_back(bench::measure(name + " recoloured", size, [&] {
                range = range > 0.9f ? 0.1f : range + 0.01f;
                attributes.set("GLIFColorRangeMax", range);
                draw(seed);
            }));
        }
    }
    bench::report(rows, arguments.jsonFile);
}
