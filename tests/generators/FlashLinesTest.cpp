// The bouncing segment.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <climits>

using namespace support;
using drawing::Recording;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_FlashLines";

std::vector<Recording::Stroke> lines(const Dictionary& attributes, int width, int height)
{
    return drawn<Recording::Stroke>(generate(kClass, width, height, attributes, 21));
}

} // namespace

TEST(FlashLines, MovesBothEndsAndTurnsThemBackAtTheEdges)
{
    const int sizes[][2] = {{60, 40}, {3, 200}, {1, 1}};
    for (const auto& [width, height] : sizes) {
        const auto strokes = lines({{"GLIFCurveRange", 300},
                                    {"GLIFColorRangeMin", 0.25f},
                                    {"GLIFColorRangeMax", 0.75f},
                                    {"GLIFWidthLine", 2.5f}},
                                   width, height);
        EXPECT_EQ(generators::randomDraws(), 8u);
        ASSERT_EQ(strokes.size(), 300u);
        std::srand(21);
        int at[4], speed[4];
        for (int i = 0; i < 4; ++i)
            at[i] = std::rand() % (i % 2 == 0 ? width : height);
        for (int i = 0; i < 4; ++i)
            speed[i] = i < 2 ? 5 - std::rand() % 10 : speed[i - 2] + 1 + std::rand() % 4;
        float position = 0;
        for (const Recording::Stroke& stroke : strokes) {
            const std::vector<Point> ends = {{double(at[0]), double(at[1])},
                                             {double(at[2]), double(at[3])}};
            ASSERT_EQ(pointsOf(stroke.path), ends);
            EXPECT_EQ(stroke.color, generators::computeColor(position, 0.25, 0.75));
            EXPECT_EQ(stroke.path.lineWidth, 2.5);
            position += 1.0f / 300;
            for (int i = 0; i < 4; ++i) {
                at[i] += speed[i];
                if (at[i] < 0 || at[i] > (i % 2 == 0 ? width : height))
                    speed[i] = -speed[i];
            }
        }
    }
}

TEST(FlashLines, DrawsOneLineAtLeastAndNoEndOfThem)
{
    for (const int count : {1, 0, INT_MIN})
        EXPECT_EQ(lines({{"GLIFCurveRange", count}}, 20, 20).size(), 1u);
    EXPECT_EQ(lines({}, 20, 20).size(), 1000u);
    EXPECT_EQ(lines({{"GLIFCurveRange", INT_MAX}}, 20, 20).size(), 50'000u);
    EXPECT_EQ(lines({{"GLIFWidthLine", -3.0f}}, 20, 20)[0].path.lineWidth, 0);
}

TEST(FlashLines, Pictures)
{
    expectGolden(
        "flashlines-120",
        *generate(
             kClass, 96, 72,
             {{"GLIFCurveRange", 120}, {"GLIFColorRangeMin", 0.18f}, {"GLIFColorRangeMax", 0.61f}},
             2)
             ->bitmap(),
        {.largest = 8, .mean = 0.2});
}
