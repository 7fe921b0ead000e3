// How long every generator takes with its defaults and with each control at either end: making the
// picture, and drawing what is seen of a recorded one, fitted to a window and at its own size.
// Processor time of all threads, which says the same on a machine that does other work.
#include "bench/Brush.h"
#include "bench/Report.h"
#include "generators/GLIFCoreObject.h"
#include "generators/Register.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>

using foundation::Dictionary;

namespace {

constexpr int kWindowWidth = 1100, kWindowHeight = 800;

// The best of so many times, of one when it takes long.
double milliseconds(const std::function<void()>& work, int times = 3)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    };
    double best = 1e9, spent = 0;
    for (int i = 0; i < times && spent < 300; ++i) {
        const double begin = now();
        work();
        const double time = now() - begin;
        best = std::min(best, time);
        spent += time;
    }
    return best;
}

void measure(const std::string& name, const std::string& control, const Dictionary& attributes,
             int width, int height)
{
    const std::string label = name.substr(5) + ' ' + control;
    drawing::PictureRef picture;
    const double run = milliseconds([&] {
        std::srand(1);
        picture = generators::makeGenerator(name)->GLIFOutputImageWidthHeightAttributes(
            nullptr, width, height, attributes);
    });
    if (!picture) {
        std::printf("%-44s %10.1f\n", label.c_str(), run);
        return;
    }
    const bool isDrawn = picture->isVector();
    const double scale =
        std::min({1.0, double(kWindowWidth) / width, double(kWindowHeight) / height});
    const int fitWidth = std::max(1, int(width * scale)),
              fitHeight = std::max(1, int(height * scale));
    const double fit = milliseconds([&] {
        (void)picture->part({0, 0, double(width), double(height)}, fitWidth, fitHeight);
    });
    const int w = std::min(width, kWindowWidth), h = std::min(height, kWindowHeight);
    const double own = milliseconds([&] {
        (void)picture->part({(width - w) / 2.0, (height - h) / 2.0, double(w), double(h)}, w, h);
    });
    const double whole = milliseconds([&] { (void)picture->bitmapOfSize(width, height); }, 1);
    const std::size_t shapes = picture->recording() ? picture->recording()->ops.size() : 0;
    if (isDrawn)
        std::printf("%-44s %10.1f %10.1f %10.1f %10.1f %10zu\n", label.c_str(), run, fit, own,
                    whole, shapes);
    else
        std::printf("%-44s %10.1f %43zu\n", label.c_str(), run, shapes);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const bench::Arguments arguments = bench::parse(argc, argv);
    const drawing::PictureRef brush = bench::roundBrush();
    std::printf("%-44s %10s %10s %10s %10s %10s\n", "ms of processor time", "run", "fitted", "part",
                "whole", "shapes");
    for (const int megapixels : arguments.megapixels) {
        const int width = static_cast<int>(std::lround(std::sqrt(megapixels * 1e6 * 4 / 3)));
        const int height = static_cast<int>(std::lround(width * 0.75));
        for (const std::string& name : generators::classNames()) {
            if (name.find(arguments.pattern) == std::string::npos)
                continue;
            const auto generator = generators::makeGenerator(name);
            const Dictionary descriptions = generator->GLIFQueryAttributes();
            Dictionary defaults = {{"GLIFBrush", brush}};
            for (const auto& [key, description] : descriptions)
                defaults.set(key, (*description.dictionary())["GLIFDefValue"]);
            measure(name, "", defaults, width, height);
            for (const auto& [key, description] : descriptions)
                for (const char* end : {"GLIFMinValue", "GLIFMaxValue"}) {
                    const foundation::Value value = (*description.dictionary())[end];
                    if (!value.number() || key.find("Color") != std::string::npos)
                        continue;
                    Dictionary attributes = defaults;
                    attributes.set(key, value);
                    char control[64];
                    std::snprintf(control, sizeof control, "%s=%g", key.c_str() + 4,
                                  value.number()->doubleValue());
                    measure(name, control, attributes, width, height);
                }
        }
    }
}
