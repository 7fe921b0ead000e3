#include "bench/Report.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace bench {

namespace {

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

} // namespace

Row measure(const std::string& name, double megapixels, const std::function<void()>& work)
{
    using Clock = std::chrono::steady_clock;
    const auto seconds = [](Clock::duration d) { return std::chrono::duration<double>(d).count(); };
    work();
    std::vector<double> times;
    double total = 0, last = 0;
    while (total < 4) {
        const Clock::time_point start = Clock::now();
        work();
        times.push_back(seconds(Clock::now() - start));
        total += times.back();
        if (times.size() < 5 || total < 0.25)
            continue;
        const double now = median(times);
        if (std::abs(now - last) < 0.01 * now)
            break;
        last = now;
    }
    return {name, megapixels, median(times) * 1e3,
            *std::min_element(times.begin(), times.end()) * 1e3, static_cast<int>(times.size())};
}

void report(const std::vector<Row>& rows, const std::string& jsonFile)
{
    std::printf("%-34s %8s %10s %10s %8s\n", "entry", "MP", "median ms", "best ms", "MP/s");
    for (const Row& r : rows)
        std::printf("%-34s %8.1f %10.2f %10.2f %8.0f\n", r.name.c_str(), r.megapixels,
                    r.milliseconds, r.best, r.megapixels / r.milliseconds * 1e3);
    if (jsonFile.empty())
        return;
    std::ofstream out(jsonFile);
    out << "[\n";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        char line[256];
        std::snprintf(line, sizeof line,
                      "  {\"name\":\"%s\",\"megapixels\":%.3f,\"median_ms\":%.3f,\"best_ms\":%.3f,"
                      "\"runs\":%d}%s\n",
                      rows[i].name.c_str(), rows[i].megapixels, rows[i].milliseconds, rows[i].best,
                      rows[i].runs, i + 1 < rows.size() ? "," : "");
        out << line;
    }
    out << "]\n";
    if (!out.flush())
        std::fprintf(stderr, "bench: cannot write %s\n", jsonFile.c_str());
}

Arguments parse(int argc, char** argv)
{
    Arguments a;
    bool sized = false;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--json") && i + 1 < argc) {
            a.jsonFile = argv[++i];
        } else if (!std::strcmp(argv[i], "--size") && i + 1 < argc) {
            if (!sized)
                a.megapixels.clear();
            sized = true;
            a.megapixels.push_back(std::max(1, std::atoi(argv[++i])));
        } else {
            a.pattern = argv[i];
        }
    }
    return a;
}

imaging::BitmapRef testPicture(int megapixels)
{
    const int width = static_cast<int>(std::lround(std::sqrt(megapixels * 1e6 * 4 / 3)));
    const int height = static_cast<int>(std::lround(width * 0.75));
    auto bitmap = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    std::uint32_t state = 1;
    for (int y = 0; y < height; ++y) {
        auto* p = bitmap->rowAs<std::uint8_t>(y);
        for (int x = 0; x < width; ++x) {
            state = state * 1664525u + 1013904223u;
            const bool edge = (x / 97 + y / 61) % 7 == 0;
            p[4 * x] = static_cast<std::uint8_t>(edge ? 230 : 255 * x / width);
            p[4 * x + 1] = static_cast<std::uint8_t>(255 * y / height);
            p[4 * x + 2] = static_cast<std::uint8_t>(96 + (state >> 26));
            p[4 * x + 3] = 255;
        }
    }
    return bitmap;
}

} // namespace bench
