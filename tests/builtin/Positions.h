// A picture whose colours are its positions: what a warp makes of it is the warp's map.
#pragma once

#include "tests/builtin/OnePixel.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace support {

using foundation::Point;
using foundation::Vector;

// 120 by 90 pixels away from the origin.
inline const Rect kPositions = Rect::fromEdges(-13, 7, 107, 97);

inline Image positions()
{
    const int width = int(kPositions.width), height = int(kPositions.height);
    return Image::fromBitmap(
        bitmapFrom(
            width, height,
            [=](int x, int y) {
                return Rgba{float(kPositions.x + x + 0.5), float(kPositions.top() - y - 0.5), 0, 1};
            }),
        int(kPositions.x), int(kPositions.y));
}

inline Dictionary with(Dictionary inputs, const Image& image)
{
    inputs.set("inputImage", image.node());
    return inputs;
}

// Where the colours of a pixel come from; several are averaged, none leave the pixel out.
using Sources = std::vector<Point>;

// A filter and its map, from a pixel's middle to its sources, written down on its own.
struct Mapping {
    std::string label;
    std::string filter;
    Dictionary inputs;
    std::function<Sources(Point)> sources;

    friend std::ostream& operator<<(std::ostream& out, const Mapping& m) { return out << m.label; }
};

// Compares everywhere in and around the picture, as far as the result reaches.
inline void expectMapping(const Mapping& m)
{
    const Image out = outputOf(m.filter, nullptr, with(m.inputs, positions()));
    const Rect reached = out.extent();
    const Rect region =
        Rect::fromEdges(std::max(reached.x, -60.0), std::max(reached.y, -40.0),
                        std::min(reached.right(), 160.0), std::min(reached.top(), 150.0));
    const BitmapRef pixels = render(out, region);
    const auto inside = [](Point p, double margin) {
        return p.x >= kPositions.x + margin && p.x <= kPositions.right() - margin &&
               p.y >= kPositions.y + margin && p.y <= kPositions.top() - margin;
    };
    int compared = 0, wrong = 0;
    for (int j = 0; j < pixels->height(); ++j)
        for (int i = 0; i < pixels->width(); ++i) {
            const Point p{region.x + i + 0.5, region.top() - j - 0.5};
            const Sources sources = m.sources(p);
            bool allIn = !sources.empty(), allOut = allIn;
            Point mean;
            for (const Point& s : sources) {
                allIn = allIn && inside(s, 0.501);
                allOut = allOut && !inside(s, -0.501);
                mean.x += s.x / double(sources.size());
                mean.y += s.y / double(sources.size());
            }
            if (!allIn && !allOut)
                continue;
            const Rgba expected =
                allIn ? Rgba{float(mean.x), float(mean.y), 0, 1} : Rgba{0, 0, 0, 0};
            const Rgba got = pixel(*pixels, i, j);
            const double error =
                std::max({std::abs(got.r - expected.r), std::abs(got.g - expected.g),
                          std::abs(got.a - expected.a)});
            ++compared;
            if (!(error < 2e-3) && ++wrong <= 3)
                ADD_FAILURE() << m.label << " at " << p.x << ", " << p.y << ": " << got
                              << " instead of " << expected;
        }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(compared, 5000);
}

} // namespace support
