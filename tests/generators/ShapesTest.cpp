// What all eight manners share, and what some of them promise.
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace support;
using drawing::Path;
using drawing::Recording;
using foundation::Color;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_Shapes";
constexpr const char* kManners[] = {"quarters", "boomerangs", "discs",   "rings",
                                    "arcs",     "shards",     "pebbles", "hills"};
constexpr int kCount = std::size(kManners);

Dictionary manner(int type)
{
    return {{"GLIFShapesType", type}, {"GLIFColorScheme", 0}, {"GLIFSchemeKeyColor", 0.07f}};
}

// Without the colours, which the trace writes between "rgba" and the next key.
std::string outlineOf(const PictureRef& picture)
{
    std::string trace = drawing::traceOf(*picture->recording());
    for (std::size_t at = 0; (at = trace.find("\"rgba\"", at)) != std::string::npos; ++at)
        trace.erase(at, trace.find(']', at) - at);
    return trace;
}

} // namespace

TEST(Shapes, PaintsTheSameSheetInAnyColors)
{
    for (int type = 0; type < kCount; ++type) {
        const PictureRef picture = generate(kClass, 160, 120, manner(type));
        const std::uint64_t draws = generators::randomDraws();
        EXPECT_GT(draws, 20u);
        Dictionary other = manner(type);
        for (const auto& [scheme, key] : {std::pair(0, 0.4f), {4, 0.07f}, {6, 0.07f}, {7, 0.0f}}) {
            other.set("GLIFColorScheme", scheme);
            other.set("GLIFSchemeKeyColor", key);
            const PictureRef recolored = generate(kClass, 160, 120, other);
            EXPECT_EQ(generators::randomDraws(), draws) << kManners[type];
            EXPECT_EQ(outlineOf(recolored), outlineOf(picture)) << kManners[type];
            EXPECT_GT(compare(*recolored->bitmap(), *picture->bitmap()).mean, 0.01)
                << kManners[type] << " scheme " << scheme;
        }
        EXPECT_NE(outlineOf(generate(kClass, 160, 120, manner(type), 2)), outlineOf(picture));
    }
}

TEST(Shapes, LeavesGroundOpenInEveryManner)
{
    for (int type = 0; type < kCount; ++type)
        for (const unsigned seed : {1, 2, 3}) {
            const Floats alpha = alphas(*generate(kClass, 160, 120, manner(type), seed)->bitmap());
            double open = 0;
            for (const float a : alpha)
                open += 1 - a;
            open /= double(alpha.size());
            EXPECT_GT(open, 0.02) << kManners[type];
            EXPECT_LT(open, 0.8) << kManners[type];
        }
}

TEST(Shapes, StaysBoundedAtAnySize)
{
    const int sizes[][2] = {{1, 1}, {1, 20'000}, {100'000, 3}, {7, 5}, {20'000, 20'000}};
    for (int type = 0; type < kCount; ++type)
        for (const auto& [width, height] : sizes) {
            const PictureRef picture = generate(kClass, width, height, manner(type));
            ASSERT_TRUE(picture);
            EXPECT_GT(picture->recording()->ops.size(), 10u) << kManners[type];
            EXPECT_LT(picture->recording()->ops.size(), 20'000u) << kManners[type] << width;
        }
    // The same sheet, only larger.
    const auto shapes = [](int scale) {
        std::vector<std::size_t> counts;
        for (int type = 0; type < kCount; ++type)
            counts.push_back(
                generate(kClass, 320 * scale, 240 * scale, manner(type))->recording()->ops.size());
        return counts;
    };
    EXPECT_EQ(shapes(1), shapes(12));
}

TEST(Shapes, UnknownMannersAreTheFirst)
{
    std::set<std::string> different;
    for (int type = 0; type < kCount; ++type)
        different.insert(bytesOf(generate(kClass, 40, 30, manner(type))));
    EXPECT_EQ(different.size(), std::size_t(kCount));
    const std::string first = bytesOf(generate(kClass, 40, 30, manner(0)));
    for (const int type : {-1, kCount, 2'000'000'000})
        EXPECT_EQ(bytesOf(generate(kClass, 40, 30, manner(type))), first);
}

TEST(Shapes, RibbonsRunThroughEveryTileTwiceWithoutABreak)
{
    // 9 × 12 tiles of 20.
    const auto strokes = drawn<Recording::Stroke>(generate(kClass, 180, 240, manner(4), 6));
    std::set<std::pair<double, double>> arcs;
    std::size_t count = 0;
    for (std::size_t i = 0; i < strokes.size(); i += 2) { // edge and core of each
        const auto points = pointsOf(strokes[i].path);
        EXPECT_EQ(points, pointsOf(strokes[i + 1].path));
        EXPECT_GT(strokes[i].path.lineWidth, strokes[i + 1].path.lineWidth);
        Point from = points[0];
        for (const Path::Element& element : strokes[i].path.elements()) {
            if (element.kind == Path::Element::Kind::LineTo) {
                EXPECT_NEAR(std::hypot(element.points[0].x - from.x, element.points[0].y - from.y),
                            0, 1e-9);
            } else if (element.kind == Path::Element::Kind::CurveTo) {
                const Point to = element.points[2];
                EXPECT_NEAR(std::hypot(to.x - from.x, to.y - from.y), std::sqrt(200.0), 1e-9);
                // Both arcs of a tile have their ends in its sides' middles: halfway between
                // those is a point of one arc only.
                arcs.emplace(std::round(from.x + to.x), std::round(from.y + to.y));
                from = to;
                ++count;
            }
        }
        const double toEdge = std::min({from.x, from.y, 180 - from.x, 240 - from.y});
        const double toStart = std::hypot(from.x - points[0].x, from.y - points[0].y);
        EXPECT_NEAR(std::min(toEdge, toStart), 0, 1e-9) << "ends inside the sheet";
    }
    EXPECT_EQ(count, 2u * 9 * 12);
    EXPECT_EQ(arcs.size(), count);
}

TEST(Shapes, Pictures)
{
    for (int type = 0; type < kCount; ++type) {
        Dictionary attributes = manner(type);
        attributes.set("GLIFUseBackgroundColor", type != 7);
        attributes.set("GLIFBackgroundColor", Color::rgb(0.97f, 0.94f, 0.87f));
        expectGolden(std::string("shapes-") + kManners[type],
                     *generate(kClass, 96, 72, attributes, 3)->bitmap(),
                     {.largest = 8, .mean = 0.2});
    }
}
