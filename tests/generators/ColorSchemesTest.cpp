// Schemes, ranges and the hue wheel, at points worked out by hand.
#include "generators/ColorSchemes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

using namespace generators;
using foundation::Color;

namespace {

// The components that the schemes think in.
void expectHsb(const Color& color, float hue, float saturation, float brightness)
{
    const Color expected = Color::hsb(hue, saturation, brightness);
    EXPECT_FLOAT_EQ(color.red, expected.red);
    EXPECT_FLOAT_EQ(color.green, expected.green);
    EXPECT_FLOAT_EQ(color.blue, expected.blue);
    EXPECT_EQ(color.alpha, 1);
}

struct Bytes {
    int red, green, blue, alpha;
    friend bool operator==(const Bytes&, const Bytes&) = default;
};

Bytes wheel(double position, double rangeMin = 0, double rangeMax = 1)
{
    std::uint32_t word = 0;
    computeColorToMem(word, position, rangeMin, rangeMax);
    std::uint8_t b[4];
    std::memcpy(b, &word, 4);
    return {b[0], b[1], b[2], b[3]};
}

} // namespace

TEST(ColorSchemes, ComplementaryHalvesStepByQuarters)
{
    // Key 0.1: positions from 35 to 85 percent are the complement's, the others the key's.
    expectHsb(computeSchemeColor(0.3, 0.1, 0), 0.1f, 0.5f, 1);
    expectHsb(computeSchemeColor(0.5, 0.1, 0), 0.6f, 0.5f, 1);
    expectHsb(computeSchemeColor(0.4, 0.1, 0), 0.6f, 0.5f, 0.5f);
    expectHsb(computeSchemeColor(0.9, 0.1, 0), 0.1f, 1, 0.5f); // 65: six tenths along
    // Either end is outside the quarters and keeps full colour.
    expectHsb(computeSchemeColor(0.35, 0.1, 0), 0.6f, 1, 1);

    // Key 0.5: its own half is 25 to 75, and the value is shifted by a quarter even inside it.
    expectHsb(computeSchemeColor(0.3, 0.5, 0), 0.5f, 1, 0.5f); // 55: six tenths along
    expectHsb(computeSchemeColor(0.6, 0.5, 0), 0.5f, 1, 1);    // 85: past the end
    expectHsb(computeSchemeColor(0.1, 0.5, 0), 0, 0.5f, 0.5f); // 35: two tenths along
}

TEST(ColorSchemes, DividedWheelsWrapOnlyBelowTheKey)
{
    expectHsb(computeSchemeColor(0.9, 0, 1), 2 / 3.0f, 1, 0.5f);
    expectHsb(computeSchemeColor(0.9, 0.8, 1), 0.8f, 0.5f, 1);
    expectHsb(computeSchemeColor(0.5, 0.8, 1), 0.46f, 0.5f, 0.5f);
    expectHsb(computeSchemeColor(0.99, 0.2, 2), 0.95f, 0.5f, 1);
    expectHsb(computeSchemeColor(0.99, 0.3, 2), 0.8f, 0.5f, 0.5f);
    expectHsb(computeSchemeColor(0.99, 0.4, 1), 0.4f + 1 / 3.0f, 1,
              1); // the eighth of twelve shades
    // Below the key: 90 percent on, the last of four parts, 0.95 + 0.75 wrapped.
    expectHsb(computeSchemeColor(0.85, 0.95, 2), 0.7f, 1, 0.5f);
}

TEST(ColorSchemes, RampsAndShades)
{
    expectHsb(computeSchemeColor(0.1, 0.4, 3), 0.4f, 1, 1);
    expectHsb(computeSchemeColor(0.3, 0.4, 3), 0.4f, 0.5f, 1);
    expectHsb(computeSchemeColor(0.6, 0.4, 3), 0.4f, 1, 0.5f);
    expectHsb(computeSchemeColor(0.8, 0.4, 3), 0.4f, 0.5f, 0.5f);
    expectHsb(computeSchemeColor(1.0, 0.4, 3), 0.4f, 1, 1);
    expectHsb(computeSchemeColor(0.25, 0.4, 4), 0.4f, 1, 0.25f);
    expectHsb(computeSchemeColor(0.25, 0.4, 5), 0.4f, 0.25f, 1);
    expectHsb(computeSchemeColor(0.25, 0.4, 6), 0.4f, 0.85f, 0.85f);
    expectHsb(computeSchemeColor(0.25, 0.4, 7), 0.25f, 1, 1);
    expectHsb(computeSchemeColor(0.25, 0.4, -1), 0.25f, 1, 1);
    expectHsb(computeColor(0.5, 0.2, 0.6), 0.4f, 1, 1);
    expectHsb(computeBWColor(0.3, 0.7), 0.7f, 1, 0.3f);
}

TEST(ColorSchemes, AnyNumberGivesAColor)
{
    const double odd[] = {0,
                          -0.3,
                          -1e300,
                          1e300,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
    for (int scheme = -1; scheme <= 7; ++scheme)
        for (const double position : odd)
            for (const double key : odd) {
                const Color c = computeSchemeColor(position, key, scheme);
                for (const float component : {c.red, c.green, c.blue})
                    EXPECT_TRUE(component >= 0 && component <= 1)
                        << scheme << ' ' << position << ' ' << key;
            }
}

TEST(ColorSchemes, SplitsLeaveBothNumbersOutsideTheirInterval)
{
    for (const double value : {0.2, 0.6, 0.1, 0.7, std::nan("")}) {
        double saturation = 7, brightness = 8;
        computeColorQuadSplit(0.2, 0.6, value, saturation, brightness);
        EXPECT_EQ(saturation, 7) << value;
        EXPECT_EQ(brightness, 8) << value;
    }
    double saturation = 7, brightness = 8;
    computeColorSBSplit(-0.1, 0, saturation, brightness);
    EXPECT_EQ(saturation, 7);
    EXPECT_EQ(brightness, 8);
}

TEST(HueWheel, RunsThroughTheSixCorners)
{
    EXPECT_EQ(wheel(0), (Bytes{255, 0, 0, 255}));
    EXPECT_EQ(wheel(1 / 12.0), (Bytes{255, 127, 0, 255}));
    EXPECT_EQ(wheel(0.25), (Bytes{128, 255, 0, 255})); // 510 - 382
    EXPECT_EQ(wheel(0.4), (Bytes{0, 255, 102, 255}));
    EXPECT_EQ(wheel(0.5), (Bytes{0, 255, 255, 255}));
    EXPECT_EQ(wheel(0.75), (Bytes{127, 0, 255, 255})); // 1147 - 1020
    EXPECT_EQ(wheel(0.9), (Bytes{255, 0, 153, 255}));
    EXPECT_EQ(wheel(1), (Bytes{255, 0, 0, 255}));
    EXPECT_EQ(wheel(0.5, 0.2, 0.8), wheel(0.5));
    // Outside the wheel: the low byte of 1530 - x; the far ends and not-a-number are defined too.
    EXPECT_EQ(wheel(-0.5), (Bytes{255, 0, (1530 + 765) % 256, 255}));
    EXPECT_EQ(wheel(2), (Bytes{255, 0, (1530 - 3060) & 255, 255}));
    EXPECT_EQ(wheel(1e300), (Bytes{255, 0, (1530 - 0x7FFFFFFF) & 255, 255}));
    EXPECT_EQ(wheel(std::nan("")), (Bytes{255, 0, 0, 255}));
}

// Words in bulk are those of one call each, at every length of the row, around the corners of the
// wheel and for any bit pattern.
TEST(HueWheel, ColorsOfARowEqualTheColorsOfItsPixels)
{
    std::mt19937_64 random(5);
    std::vector<double> positions;
    for (int corner = -1; corner <= 7; ++corner)
        for (int ulp = -3; ulp <= 3; ++ulp) {
            double at = corner / 6.0;
            for (int i = 0; i < std::abs(ulp); ++i)
                at = std::nextafter(at, ulp < 0 ? -9.0 : 9.0);
            positions.push_back(at);
        }
    for (int step = 0; step <= 1530; ++step)
        positions.push_back(step / 1530.0);
    for (int i = 0; i < 5000; ++i)
        positions.push_back(std::bit_cast<double>(random()));
    const double ranges[][2] = {{0, 1}, {0.28, 0.91}, {1, 0}, {-3e9, 4e9}};
    for (const auto& [low, high] : ranges) {
        std::vector<std::uint32_t> bulk(positions.size()), single(positions.size());
        computeColorsToMem(bulk.data(), positions.data(), positions.size(), low, high);
        for (std::size_t i = 0; i < positions.size(); ++i)
            computeColorToMem(single[i], positions[i], low, high);
        EXPECT_EQ(bulk, single) << low << ' ' << high;
    }
    for (std::size_t length = 0; length < 140; ++length) {
        std::vector<std::uint32_t> bulk(length + 1, 42), single(length + 1, 42);
        computeColorsToMem(bulk.data(), positions.data() + 200, length, 0, 1);
        for (std::size_t i = 0; i < length; ++i)
            computeColorToMem(single[i], positions[200 + i], 0, 1);
        EXPECT_EQ(bulk, single) << length;
    }
}

TEST(RotatePoint, TurnsCounterClockwiseAboutTheCentre)
{
    double x = 1, y = 0;
    rotatePoint(&x, &y, std::numbers::pi / 2, 0, 0);
    EXPECT_NEAR(x, 0, 1e-15);
    EXPECT_NEAR(y, 1, 1e-15);
    x = 5, y = 2;
    rotatePoint(&x, &y, std::numbers::pi, 3, 1);
    EXPECT_NEAR(x, 1, 1e-15);
    EXPECT_NEAR(y, 0, 1e-15);
    rotatePoint(&x, nullptr, 1, 0, 0);
    EXPECT_NEAR(x, 1, 1e-15);
}
