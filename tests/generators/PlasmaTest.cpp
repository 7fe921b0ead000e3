// The two plasmas: values worked out from the random sequence, blocks, and what a colour change
// costs.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace support;

namespace {

Dictionary plasma(int type, int smoothness, int resolution)
{
    return {
        {"GLIFShapesType", type}, {"GLIFSmoothness", smoothness}, {"GLIFResolution", resolution}};
}

// A generator, its last picture and its field, read as rows and columns.
struct Drawn {
    Drawn(int w, int h, const Dictionary& attributes, unsigned seed = 1)
        : width(w), height(h), generator(makeGenerator("GLIF_Plasma")),
          picture(generate(*generator, w, h, attributes, seed))
    {
    }
    double operator()(int x, int y) const
    {
        return generator->GLIFPrefetchBuffer()[x * height + y];
    }

    int width, height;
    std::shared_ptr<GLIFCoreObject> generator;
    PictureRef picture;
};

double unit()
{
    return std::rand() / 2147483648.0;
}

// Single precision, a few operations deep.
constexpr double kRounding = 1e-6;

} // namespace

TEST(PlasmaMidpoint, WithoutDisplacementBlendsFourCornersInAStraightLine)
{
    const Drawn drawn(32, 32, plasma(0, 0, 1), 4);
    // One draw for each corner and each of the 341 squares that are divided.
    EXPECT_EQ(generators::randomDraws(), 4u + 341u);
    std::srand(4);
    const double c1 = unit(), c2 = unit(), c3 = unit(), c4 = unit();
    for (int x = 0; x < 32; ++x)
        for (int y = 0; y < 32; ++y) {
            const double u = (x + 0.5) / 32, v = (y + 0.5) / 32;
            const double blend = (c1 * (1 - u) + c2 * u) * (1 - v) + (c4 * (1 - u) + c3 * u) * v;
            ASSERT_NEAR(drawn(x, y), blend, kRounding) << x << ' ' << y;
            std::uint32_t word = 0;
            generators::computeColorToMem(word, drawn(x, y), 0, 1);
            ASSERT_EQ(drawn.picture->bitmap()->rowAs<std::uint32_t>(y)[x], word);
        }
}

TEST(PlasmaMidpoint, DisplacesTheMiddle)
{
    for (const int type : {0, 1, -1}) {
        const Drawn drawn(2, 2, plasma(type, 2, 1), 8);
        EXPECT_EQ(generators::randomDraws(), type == 0 ? 5u : type == 1 ? 6u : 4u);
        std::srand(8);
        const double c1 = unit(), c2 = unit(), c3 = unit(), c4 = unit();
        double mid = (c1 + c2 + c3 + c4) / 4;
        // The halves of both sides together are half of both sides: the scale is 2 · 1/2.
        if (type == 0)
            mid += (unit() - 0.5) * 1;
        if (type == 1) {
            const double factor = unit() - 0.5;
            mid += factor * std::sin(unit() - 0.5 + 2 * std::numbers::pi);
        }
        mid = std::clamp(mid, 0.0, 1.0);
        const double bottom = (c1 + c2) / 2, right = (c2 + c3) / 2, top = (c3 + c4) / 2,
                     left = (c4 + c1) / 2;
        EXPECT_NEAR(drawn(0, 0), (c1 + bottom + mid + left) / 4, kRounding) << type;
        EXPECT_NEAR(drawn(1, 0), (bottom + c2 + right + mid) / 4, kRounding) << type;
        EXPECT_NEAR(drawn(1, 1), (mid + right + c3 + top) / 4, kRounding) << type;
        EXPECT_NEAR(drawn(0, 1), (left + mid + top + c4) / 4, kRounding) << type;
    }
}

TEST(PlasmaMidpoint, RoughnessGrowsWithSmoothness)
{
    const auto roughness = [](int type, int smoothness) {
        const Drawn drawn(64, 64, plasma(type, smoothness, 1));
        double sum = 0;
        for (int x = 1; x < 64; ++x)
            for (int y = 0; y < 64; ++y)
                sum += std::abs(drawn(x, y) - drawn(x - 1, y));
        return sum;
    };
    EXPECT_LT(2 * roughness(0, 0), roughness(0, 2));
    EXPECT_LT(roughness(0, 2), roughness(0, 10));
    // The sine displaces even without a scale.
    EXPECT_LT(2 * roughness(0, 0), roughness(1, 0));
}

TEST(PlasmaMidpoint, FillsBlocksThatLaterCellsCover)
{
    const Drawn drawn(32, 16, plasma(0, 5, 4));
    for (int x = 0; x < 32; ++x)
        for (int y = 0; y < 16; ++y)
            // Cells are 4 wide and 2 high; a block is 4 high too, until other cells cover it.
            ASSERT_EQ(drawn(x, y), drawn(x / 4 * 4, y)) << x << ' ' << y;
    EXPECT_NE(drawn(0, 0), drawn(4, 0));
    EXPECT_EQ(bytesOf(generate("GLIF_Plasma", 20, 20, plasma(0, 5, 0))),
              bytesOf(generate("GLIF_Plasma", 20, 20, plasma(0, 5, 1))));
    EXPECT_EQ(bytesOf(generate("GLIF_Plasma", 20, 20, plasma(1, 5, -7))),
              bytesOf(generate("GLIF_Plasma", 20, 20, plasma(1, 5, 1))));
}

TEST(PlasmaMidpoint, DrawsBlocksTooLargeForAFieldAsRectangles)
{
    const Drawn drawn(1500, 40, plasma(0, 5, 1000), 3);
    ASSERT_TRUE(drawn.picture && drawn.picture->recording());
    EXPECT_EQ(drawn.generator->GLIFPrefetchBuffer(), nullptr);
    EXPECT_EQ(drawn.picture->recording()->ops.size(), 4u);
    // Divided once; the right half is one rectangle, drawn over what reaches into it from the left,
    // and its upper part, from row 20 up, another.
    const auto bitmap = drawn.picture->bitmap();
    const auto at = [&](int x, int y) { return bitmap->rowAs<std::uint32_t>(y)[x]; };
    EXPECT_EQ(at(0, 39), at(749, 39));
    EXPECT_EQ(at(750, 39), at(1499, 39));
    EXPECT_NE(at(749, 39), at(750, 39));
    EXPECT_NE(at(0, 0), at(0, 39));
}

TEST(PlasmaSine, AddsTableValuesByRowAndColumn)
{
    for (const int resolution : {1, 5}) {
        const int smoothness = 3;
        const Drawn drawn(24, 20, plasma(2, smoothness, resolution), 6);
        EXPECT_EQ(generators::randomDraws(), 3u);
        std::srand(6);
        const int p2 = std::rand() % 255 + 1;
        const int p3 = std::rand() % 255 - 1;
        const int p4 = std::rand() % 255 - 1;
        // The tables repeat after 512 entries, so any index will do.
        const auto table = [&](int index, int sign) {
            const double t = 2 * std::numbers::pi / 512 * (index & 511);
            return int((std::sin(smoothness * t) + sign * std::sin(2 * t)) * 64 + 128);
        };
        for (int x = 0; x < 24; ++x)
            for (int y = 0; y < 20; ++y) {
                const int block = x / resolution + 1;
                const int j = 1 + 3 * y, i = p2 - 2 * y;
                const int sum = table(i + p3 + 2 * resolution * block, 1) + table(j, -1) +
                                table(i, -1) - table(j + i, 1) -
                                table(p4 - i - resolution * block, -1);
                ASSERT_NEAR(drawn(x, y), std::clamp((sum + 200) / 760.0, 0.0, 1.0), kRounding)
                    << x << ' ' << y;
            }
    }
}

TEST(PlasmaSine, HasOneKindAndNoLargeBlocks)
{
    const std::string two = bytesOf(generate("GLIF_Plasma", 30, 20, plasma(2, 4, 2)));
    EXPECT_EQ(bytesOf(generate("GLIF_Plasma", 30, 20, plasma(3, 4, 2))), two);
    EXPECT_EQ(bytesOf(generate("GLIF_Plasma", 30, 20, plasma(99, 4, 2))), two);
    const std::string large = bytesOf(generate("GLIF_Plasma", 30, 20, plasma(2, 4, 1000)));
    EXPECT_EQ(large, std::string(30 * 20 * 4, '\0'));
}

TEST(Plasma, RecoloursTheFieldItHas)
{
    for (const int type : {0, 1, 2}) {
        Drawn drawn(30, 20, plasma(type, 4, 1), 5);
        Dictionary recolored = plasma(type, 4, 1);
        recolored.set("GLIFColorRangeMin", 0.3f);
        recolored.set("GLIFColorRangeMax", 0.7f);
        // The seed does not matter to a field that is there.
        const PictureRef again = generate(*drawn.generator, 30, 20, recolored, 77);
        EXPECT_EQ(generators::randomDraws(), type < 2 ? 4u : 0u);
        EXPECT_EQ(drawn.generator->fieldsComputed(), 1);
        EXPECT_EQ(bytesOf(again), bytesOf(generate("GLIF_Plasma", 30, 20, recolored, 5)));
        EXPECT_NE(bytesOf(again), bytesOf(drawn.picture));

        // The seed among the parameters does.
        recolored.set("GLIFRandomSeed", 77);
        const PictureRef other = generate(*drawn.generator, 30, 20, recolored, 77);
        EXPECT_EQ(drawn.generator->fieldsComputed(), 2);
        EXPECT_NE(bytesOf(other), bytesOf(again));
    }
}

TEST(Plasma, FallsBackOnOtherNumbersThanItAdvertises)
{
    EXPECT_EQ(bytesOf(generate("GLIF_Plasma", 40, 30, {})),
              bytesOf(generate("GLIF_Plasma", 40, 30, plasma(0, 3, 5))));
    EXPECT_NE(bytesOf(generate("GLIF_Plasma", 40, 30, {})),
              bytesOf(generate("GLIF_Plasma", 40, 30, plasma(0, 5, 1))));
}

TEST(Plasma, SizesThatCannotBeYieldNoPictureAndNoTrace)
{
    const Drawn drawn(30, 20, plasma(0, 4, 1), 5);
    const int sizes[][2] = {{0, 20}, {30, -1}, {100'001, 1}, {100'000, 100'000}};
    for (const auto& [width, height] : sizes)
        EXPECT_EQ(generate(*drawn.generator, width, height, plasma(2, 4, 1)), nullptr);
    EXPECT_EQ(bytesOf(generate(*drawn.generator, 30, 20, plasma(0, 4, 1), 5)),
              bytesOf(drawn.picture));
}

TEST(Plasma, Pictures)
{
    const auto expect = [](std::string_view name, int type, int smoothness, int resolution,
                           float rangeMax, unsigned seed) {
        Dictionary attributes = plasma(type, smoothness, resolution);
        attributes.set("GLIFColorRangeMax", rangeMax);
        expectGolden(name, *generate("GLIF_Plasma", 128, 96, attributes, seed)->bitmap());
    };
    expect("plasma-midpoint", 0, 5, 1, 0.28f, 1);
    expect("plasma-midpoint-resolution6-whole-wheel", 0, 8, 6, 1, 2);
    expect("plasma-midpoint-through-sine", 1, 5, 1, 0.28f, 1);
    expect("plasma-sine", 2, 5, 1, 0.28f, 1);
    expect("plasma-sine-resolution12-whole-wheel", 2, 3, 12, 1, 3);
}
