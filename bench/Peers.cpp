// Our operations beside the same ones of other libraries, interleaved in one run on two threads.
#include "bench/Peers.h"
#include "bench/Report.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

int main(int argc, char** argv)
{
    const bench::Arguments arguments = bench::parse(argc, argv);
    const imaging::BitmapRef picture = bench::testPicture(12);

    std::vector<std::pair<std::string, bench::Operations>> libraries;
    // The measure of the machine: the same bytes copied by both threads.
    auto copy = imaging::Bitmap::make(picture->width(), picture->height(), picture->format());
    const auto copyAll = [&] {
        imaging::parallelRows(0, picture->height(), 64, [&](int first, int last) {
            for (int y = first; y < last; ++y)
                std::memcpy(copy->row(y), picture->row(y), std::size_t{4} * picture->width());
        });
    };
    libraries.emplace_back("ours", bench::oursOn(picture));
#ifdef CIF_PEER_OPENCV
    libraries.emplace_back("OpenCV", bench::openCvOn(picture));
#endif
#ifdef CIF_PEER_VIPS
    libraries.emplace_back("libvips", bench::vipsOn(picture));
#endif
#ifdef CIF_PEER_GEGL
    libraries.emplace_back("GEGL", bench::geglOn(picture));
#endif
#ifdef CIF_PEER_MAGICK
    libraries.emplace_back("ImageMagick", bench::magickOn(picture));
#endif

    const auto milliseconds = [](const std::function<void()>& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
            .count();
    };
    constexpr double kNever = 1e9;
    double copyTime = kNever;
    for (int i = 0; i < 15; ++i)
        copyTime = std::min(copyTime, milliseconds(copyAll));
    std::printf(
        "copy of %d x %d bytes: %.2f ms; best of the runs below, in ms and as a multiple of ours\n",
        picture->width(), picture->height(), copyTime);
    std::printf("%-16s", "");
    for (const auto& [library, operations] : libraries)
        std::printf(" %18s", library.c_str());
    std::printf("\n");

    std::ofstream json;
    if (!arguments.jsonFile.empty())
        json.open(arguments.jsonFile);
    for (const auto& [name, ours] : libraries.front().second) {
        if (name.find(arguments.pattern) == std::string::npos)
            continue;
        std::vector<double> best(libraries.size(), kNever);
        // In turn, so that a disturbance hits all of them alike. What takes seconds runs twice.
        for (int round = 0; round < 9; ++round)
            for (std::size_t i = 0; i < libraries.size(); ++i)
                if (const auto found = libraries[i].second.find(name);
                    found != libraries[i].second.end() && (round < 2 || best[i] < 1500))
                    best[i] = std::min(best[i], milliseconds(found->second));
        std::printf("%-16s", name.c_str());
        for (const double b : best)
            if (b < kNever)
                std::printf(" %9.1f (%5.1fx)", b, b / best[0]);
            else
                std::printf(" %18s", "-");
        std::printf("\n");
        std::fflush(stdout);
        if (json)
            for (std::size_t i = 0; i < best.size(); ++i)
                if (best[i] < kNever)
                    json << "{\"operation\":\"" << name << "\",\"library\":\"" << libraries[i].first
                         << "\",\"best_ms\":" << best[i] << ",\"copy_ms\":" << copyTime << "}\n";
    }
}
