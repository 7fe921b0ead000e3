// The sand glass: its formulas at points worked out by hand, the tables against the formulas, four
// quarters from one, and what a colour change costs.
#include "generators/GLIF_SandGlass.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace support;
using generators::sandGlassValue;

namespace {

constexpr const char* kClass = "GLIF_SandGlass";

Dictionary sandGlass(int type, float factor)
{
    return {{"GLIFShapesType", type}, {"GLIFFactor", factor}};
}

} // namespace

TEST(SandGlass, FormulasAtPointsWorkedOutByHand)
{
    EXPECT_EQ(sandGlassValue(0, 40, 0, 2, 0), 0);
    EXPECT_EQ(sandGlassValue(0, 40, 3, 1, 0), 533 % 256);     // 1600 / 3
    EXPECT_EQ(sandGlassValue(0, 10, 7, 1.5f, 0), 21);         // 14 · 1.5
    EXPECT_EQ(sandGlassValue(0, 40, 3, -1, 0), -(533 % 256)); // the sign stays
    EXPECT_EQ(sandGlassValue(0, 49'999, 1, 1e30f, 0), 255);   // the largest integer
    EXPECT_EQ(sandGlassValue(1, 0, 9, 5, 0), 127.5);
    EXPECT_NEAR(sandGlassValue(1, 100, 100, 1.5707964f, 0), 255, 1e-9);
    EXPECT_NEAR(sandGlassValue(1, 100, 300, 1.5707964f, 0), 0, 1e-9);
    // tan 0.2 / tan 0.6, and tan 1.0 / tan 0.3, which is past 2.
    EXPECT_NEAR(sandGlassValue(2, 40, 20, 1, 0), 0.2027100 / 0.6841368 * 255, 1e-3);
    EXPECT_EQ(sandGlassValue(2, 20, 10, 10, 0), 0);
    // tan 0.8 / tan 0.4 is 2.435: below 3.5, and its fraction counts.
    EXPECT_NEAR(sandGlassValue(3, 20, 20, 40, 0), (1.0296386 / 0.4227932 - 2) * 255, 1e-3);
    for (const int type : {2, 3})
        EXPECT_TRUE(std::isnan(sandGlassValue(type, 0, 0, 1, 0)));
    for (const int type : {4, 5, -1}) {
        EXPECT_EQ(sandGlassValue(type, 200, 100, 1.5f, 37), 44 + 10); // 7 · 1.5 = 10.5
        EXPECT_EQ(sandGlassValue(type, 0, 3, 1, 40), -7);
        EXPECT_EQ(sandGlassValue(type, 250, 4, 10, 19), (254 + 90) % 256);
    }
}

TEST(SandGlass, KeepsTheFormulasOfOneQuarter)
{
    const int width = 147, height = 91;
    for (int type = -1; type <= 5; ++type)
        for (const float factor :
             {0.01f, 1.83f, 10.0f, -3.0f, 1e30f, std::numeric_limits<float>::quiet_NaN()}) {
            const auto generator = makeGenerator(kClass);
            const PictureRef picture = generate(*generator, width, height, sandGlass(type, factor));
            const bool isRandom = type < 0 || type > 3;
            EXPECT_EQ(generators::randomDraws(), isRandom ? 73u * 45u : 0u);
            std::srand(1);
            const auto bitmap = picture->bitmap();
            const auto at = [&](int x, int y) { return bitmap->rowAs<std::uint32_t>(y)[x]; };
            for (int y = 0; y < 45; ++y)
                for (int x = 0; x < 73; ++x) {
                    const int drawn = isRandom ? std::rand() : 0;
                    const double value = sandGlassValue(type, x, y, factor, drawn);
                    const double kept = generator->GLIFPrefetchBuffer()[x * 45 + y];
                    ASSERT_TRUE(kept == value || (std::isnan(kept) && std::isnan(value)))
                        << type << ' ' << factor << ' ' << x << ' ' << y;
                    std::uint32_t word = 0;
                    generators::computeColorToMem(word, value / 255, 0, 1);
                    for (const int column : {73 + x, 72 - x})
                        for (const int row : {45 + y, 44 - y})
                            ASSERT_EQ(at(column, row), word) << type << ' ' << column << ' ' << row;
                }
            for (int y = 0; y < height; ++y)
                ASSERT_EQ(at(width - 1, y), 0u);
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(at(x, height - 1), 0u);
        }
}

TEST(SandGlass, DrawsNoNumbersForAColor)
{
    const auto generator = makeGenerator(kClass);
    const PictureRef first = generate(*generator, 60, 50, sandGlass(4, 1), 3);
    Dictionary recolored = sandGlass(4, 1);
    recolored.set("GLIFColorRangeMax", 0.4f);
    const PictureRef again = generate(*generator, 60, 50, recolored, 77);
    EXPECT_EQ(generators::randomDraws(), 0u);
    EXPECT_EQ(generator->fieldsComputed(), 1);
    EXPECT_EQ(bytesOf(again), bytesOf(generate(kClass, 60, 50, recolored, 3)));
    EXPECT_NE(bytesOf(again), bytesOf(first));
}

TEST(SandGlass, FallsBackOnOtherNumbersThanItAdvertises)
{
    EXPECT_EQ(bytesOf(generate(kClass, 60, 50, {})),
              bytesOf(generate(kClass, 60, 50, sandGlass(0, 1))));
}

// Tangents near their poles may fall to either side of the limit with another C library.
TEST(SandGlass, Pictures)
{
    Dictionary attributes = defaultsOf(*makeGenerator(kClass));
    expectGolden("sand-glass-defaults", *generate(kClass, 128, 128, attributes)->bitmap(),
                 {.mean = 0.05});
    attributes.set("GLIFColorRangeMax", 0.3f);
    attributes.set("GLIFShapesType", 0);
    expectGolden("sand-glass-parabolas", *generate(kClass, 128, 96, attributes)->bitmap());
    attributes.set("GLIFShapesType", 4);
    expectGolden("sand-glass-rough", *generate(kClass, 128, 96, attributes)->bitmap());
}
