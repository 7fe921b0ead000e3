// The biomorph: orbits against the definition, blocks and odd sides, and the two ways in which a
// start outside the box is drawn.
#include "generators/GLIF_Biomorph.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <random>

using namespace support;

namespace {

constexpr const char* kClass = "GLIF_Biomorph";

Dictionary biomorph(int resolution, double real = -1.65, double imaginary = 0.47)
{
    return {{"GLIFResolution", resolution}, {"GLIFCReal", real}, {"GLIFCImag", imaginary}};
}

std::uint32_t pixel(const PictureRef& picture, int x, int y)
{
    return picture->bitmap()->rowAs<std::uint32_t>(y)[x];
}

std::uint32_t wheel(double position, double rangeMax = 1)
{
    std::uint32_t word = 0;
    generators::computeColorToMem(word, position, 0, rangeMax);
    return word;
}

} // namespace

TEST(BiomorphOrbit, FollowsThePowersOfTheNumber)
{
    // Where single precision cannot matter: few steps, far from every threshold.
    std::mt19937 random(3);
    std::uniform_real_distribution<float> part(-3, 3);
    int compared = 0;
    for (int i = 0; i < 2000; ++i) {
        const float real = part(random), imaginary = part(random);
        std::complex<double> z(real, imaginary);
        const std::complex<double> c(-1.65f, 0.47f);
        int steps = 0;
        const auto isNear = [](double value, double edge) {
            return std::abs(std::abs(value) / edge - 1) < 1e-3;
        };
        bool isClear = true;
        while (isClear && z.real() * z.real() < 70 && z.imag() * z.imag() < 70 && steps < 4) {
            z = z * z * z * z + c;
            ++steps;
            isClear = !isNear(z.real(), std::sqrt(70)) && !isNear(z.imag(), std::sqrt(70)) &&
                      !isNear(z.real(), 10) && !isNear(z.imag(), 1000);
        }
        if (!isClear || steps == 4)
            continue;
        ++compared;
        const auto orbit = generators::biomorphOrbit(real, imaginary, -1.65f, 0.47f);
        ASSERT_EQ(orbit.steps, steps) << real << ' ' << imaginary;
        ASSERT_EQ(orbit.isColored, std::abs(z.real()) > 10 || std::abs(z.imag()) > 1000);
    }
    EXPECT_GT(compared, 1000);
    EXPECT_EQ(generators::biomorphOrbit(0, 0, 0, 0).steps, 50);
    EXPECT_FALSE(generators::biomorphOrbit(0, 0, 0, 0).isColored);
    EXPECT_EQ(generators::biomorphOrbit(9, 9, 0, 0).steps, 0);
    EXPECT_FALSE(generators::biomorphOrbit(9, 9, 0, 0).isColored);
}

TEST(BiomorphOrbit, LanesAreThePlainOrbitsToTheBit)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> part(-2, 2);
    const float odd[] = {std::numeric_limits<float>::quiet_NaN(),
                         std::numeric_limits<float>::infinity(), 1e30f};
    for (int count = 0; count < 400; ++count) {
        std::vector<float> imaginaries(count);
        for (float& value : imaginaries)
            value = part(random);
        const float real = part(random);
        const float cReal = count % 50 < 3 ? odd[count % 50] : part(random);
        const float cImaginary = count % 60 < 3 ? odd[count % 60] : part(random);
        std::vector<std::uint8_t> outcomes(count + 1, 99);
        generators::biomorphOrbits(outcomes.data(), imaginaries.data(), count, real, cReal,
                                   cImaginary);
        for (int i = 0; i < count; ++i) {
            const auto orbit = generators::biomorphOrbit(real, imaginaries[i], cReal, cImaginary);
            ASSERT_EQ(outcomes[i], orbit.isColored ? orbit.steps : generators::kBiomorphUncolored);
        }
        ASSERT_EQ(outcomes[count], 99);
    }
}

TEST(Biomorph, MapsTheMiddleOfThePictureToTheOrigin)
{
    const int width = 300, height = 200;
    const auto generator = makeGenerator(kClass);
    const PictureRef picture = generate(*generator, width, height, biomorph(1));
    EXPECT_EQ(generators::randomDraws(), 0u);
    int colored = 0;
    for (int x = 0; x < width; ++x)
        for (int y = 0; y < height; ++y) {
            const auto orbit =
                generators::biomorphOrbit(static_cast<float>((x - 150) * 0.01),
                                          static_cast<float>((y - 100) * 0.01), -1.65f, 0.47f);
            const double value = generator->GLIFPrefetchBuffer()[x * height + y];
            if (!orbit.isColored) {
                ASSERT_GT(value, 1);
                ASSERT_EQ(pixel(picture, x, y), 0u);
                continue;
            }
            ++colored;
            ASSERT_EQ(value, double(float(1.0 / orbit.steps)));
            ASSERT_EQ(pixel(picture, x, y), wheel(value));
        }
    EXPECT_GT(colored, 1000);
}

TEST(Biomorph, CutsBlocksAtTheSidesAndLeavesTheRestOfAnOddOne)
{
    // c is so large that every start leaves the box at once: one step, position 1.
    const auto coveredOf = [](int width, int height, int resolution) {
        const PictureRef picture =
            generate(kClass, width, height, biomorph(resolution, 20000, 20000));
        int columns = 0, rows = 0;
        while (columns < width && pixel(picture, columns, 0) == wheel(1))
            ++columns;
        while (rows < height && pixel(picture, 0, rows) == wheel(1))
            ++rows;
        return std::pair(columns, rows);
    };
    EXPECT_EQ(coveredOf(5, 7, 1), std::pair(4, 6));
    EXPECT_EQ(coveredOf(12, 12, 5), std::pair(12, 12));
    EXPECT_EQ(coveredOf(5, 7, 3), std::pair(5, 6)); // blocks 0-2, 3-4 and 0-2, 3-5
    EXPECT_EQ(coveredOf(9, 8, 2'147'483'647), std::pair(9, 8));
    EXPECT_EQ(coveredOf(1, 4, 1), std::pair(0, 0));
    EXPECT_EQ(coveredOf(5, 7, -3), std::pair(4, 6));

    const auto fine = makeGenerator(kClass), coarse = makeGenerator(kClass);
    generate(*fine, 212, 112, biomorph(1));
    generate(*coarse, 212, 112, biomorph(5));
    for (int x = 0; x < 212; ++x)
        for (int y = 0; y < 112; ++y)
            ASSERT_EQ(coarse->GLIFPrefetchBuffer()[x * 112 + y],
                      fine->GLIFPrefetchBuffer()[x / 5 * 5 * 112 + y / 5 * 5]);
}

TEST(Biomorph, DrawsStartsOutsideTheBoxOnlyWhenItComputes)
{
    // Column 0 starts at -10.05, column 60 at -9.45: both outside the box, one far outside.
    const int width = 2010;
    const Dictionary attributes = biomorph(1);
    const auto generator = makeGenerator(kClass);
    const PictureRef computed = generate(*generator, width, 9, attributes);
    EXPECT_EQ(pixel(computed, 0, 0), wheel(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(pixel(computed, 0, 7), pixel(computed, 0, 0));
    EXPECT_EQ(pixel(computed, 0, 8), 0u); // the odd height's last row
    EXPECT_EQ(pixel(computed, width - 1, 0), pixel(computed, 0, 0));
    EXPECT_EQ(pixel(computed, 60, 0), 0u);
    const PictureRef recolored = generate(*generator, width, 9, attributes);
    EXPECT_EQ(pixel(recolored, 0, 0), 0u);
    EXPECT_EQ(pixel(recolored, width / 2, 4), pixel(computed, width / 2, 4));
    EXPECT_EQ(generator->fieldsComputed(), 1);
}

TEST(Biomorph, ReadsTheImaginaryPartOnlyBesideTheRealOne)
{
    const auto bytes = [](const Dictionary& c) {
        Dictionary attributes = c;
        attributes.set("GLIFResolution", 1);
        return bytesOf(generate(kClass, 300, 200, attributes));
    };
    const std::string fallback = bytes({{"GLIFCReal", 1.00003}, {"GLIFCImag", 1.01828}});
    EXPECT_EQ(bytes({}), fallback);
    EXPECT_EQ(bytes({{"GLIFCImag", 0.25}}), fallback);
    EXPECT_EQ(bytes({{"GLIFCReal", 0.5}}), bytes({{"GLIFCReal", 0.5}, {"GLIFCImag", 0}}));
    EXPECT_NE(bytes({{"GLIFCReal", 0.5}}), bytes({{"GLIFCReal", 0.5}, {"GLIFCImag", 1.01828}}));
    EXPECT_EQ(bytesOf(generate(kClass, 300, 200, {})),
              bytesOf(generate(kClass, 300, 200, biomorph(2, 1.00003, 1.01828))));
}

// Of the middle, where the orbits take long: at 0.01 a pixel, 128 pixels are 1.28 wide.
TEST(Biomorph, Pictures)
{
    using foundation::Color;
    Dictionary attributes = biomorph(1, 0.5, 0);
    attributes.set("GLIFColorRangeMax", 0.8f);
    attributes.set("GLIFUseBackgroundColor", true);
    attributes.set("GLIFBackgroundColor", Color::rgb(0.63f, 0.08f, 0.125f));
    expectGolden("biomorph-half", *generate(kClass, 128, 128, attributes)->bitmap());
    attributes.set("GLIFResolution", 3);
    attributes.set("GLIFCReal", -0.8);
    attributes.set("GLIFCImag", 0.9);
    expectGolden("biomorph-resolution3", *generate(kClass, 128, 96, attributes)->bitmap());
}
