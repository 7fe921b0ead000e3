// The corners of the spiral, and where it ends.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

using namespace support;
using drawing::Recording;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_TwistedSquares";

std::vector<Recording::Stroke> squares(const Dictionary& attributes, int width = 200,
                                       int height = 100)
{
    return drawn<Recording::Stroke>(generate(kClass, width, height, attributes));
}

} // namespace

TEST(TwistedSquares, FirstOneReachesBeyondThePicture)
{
    const auto strokes = squares({{"GLIFColorRangeMin", 0.5f}, {"GLIFColorRangeMax", 0.7f}});
    // 150 from (100, 50), at the odd eighths: 106.07 each way, truncated after adding.
    const std::vector<Point> corners = {{206, 156}, {-6, 156}, {-6, -56}, {206, -56}, {206, 156}};
    EXPECT_EQ(pointsOf(strokes[0].path), corners);
    EXPECT_EQ(strokes[0].path.lineWidth, 2);
    EXPECT_EQ(strokes[0].color, generators::computeColor(-6.0f / 100, 0.5f, 0.7f));
    EXPECT_EQ(generators::randomDraws(), 0u);
}

TEST(TwistedSquares, EachIsInscribedInTheOneBefore)
{
    const auto strokes = squares({{"GLIFStep", 9.0f}, {"GLIFSize", 20.0f}}, 4000, 3000);
    // Turned by 20 degrees, a side's corner divides the outer side as cos : sin.
    const double turn = std::numbers::pi / 9;
    const double share = std::sin(turn) / (std::sin(turn) + std::cos(turn));
    for (std::size_t k = 0; k + 1 < strokes.size(); ++k) {
        const auto outer = pointsOf(strokes[k].path), inner = pointsOf(strokes[k + 1].path);
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(inner[i].x, outer[i].x + share * (outer[i + 1].x - outer[i].x), 2.5);
            EXPECT_NEAR(inner[i].y, outer[i].y + share * (outer[i + 1].y - outer[i].y), 2.5);
        }
    }
    // Half diagonals from 3500 down to at least 21.
    const double ratio = 1 / (std::sin(turn) + std::cos(turn));
    EXPECT_EQ(strokes.size(), std::size_t(std::log(21.0 / 3500) / std::log(ratio)) + 1);
}

TEST(TwistedSquares, EndsWhereSquaresDoNotGetSmaller)
{
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    for (const float step : {2.0f, 1.9f, 0.0f, -20.0f, -1e30f, 1e30f, kNan})
        EXPECT_EQ(squares({{"GLIFStep", step}}).size(), 1u) << step;
    EXPECT_GT(squares({{"GLIFStep", 2.001f}}).size(), 1000u);
    EXPECT_EQ(squares({{"GLIFStep", 1e6f}}).size(), 10'000u);
    EXPECT_EQ(squares({{"GLIFSize", 1e30f}}).size(), 1u);
    EXPECT_LT(squares({{"GLIFSize", -1e30f}}).size(), 10'000u);
}

TEST(TwistedSquares, Pictures)
{
    expectGolden("twistedsquares-step24",
                 *generate(kClass, 96, 72,
                           {{"GLIFStep", 24.0f},
                            {"GLIFSize", 6.0f},
                            {"GLIFColorRangeMin", 0.28f},
                            {"GLIFColorRangeMax", 0.91f}})
                      ->bitmap(),
                 {.largest = 8, .mean = 0.2});
}
