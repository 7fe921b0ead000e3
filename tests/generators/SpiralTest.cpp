// The spiral: the quick circle against the plain one, the turn from circle to circle, and what a
// colour change costs.
#include "generators/GLIF_Spiral.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

using namespace support;

namespace {

constexpr const char* kClass = "GLIF_Spiral";
constexpr double kUnset = 32.501960784313724;

Dictionary spiral(float factor, float wind, int curvature = 0)
{
    return {{"GLIFFactor", factor}, {"GLIFRandomWind", wind}, {"GLIFCurvature", curvature}};
}

// Where along its circle a pixel lies, from 0 at the start angle to 1 opposite.
double alongCircle(double dx, double dy, double startAngle)
{
    const double turns = (std::atan2(dy, dx) - startAngle) / (2 * std::numbers::pi);
    return 1 - std::abs(2 * (turns - std::floor(turns)) - 1);
}

// A generator, its last picture and its field, read as rows and columns.
struct Field {
    Field(int w, int h, const Dictionary& attributes, unsigned seed = 1)
        : width(w), height(h), generator(makeGenerator(kClass)),
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

} // namespace

TEST(SpiralCircle, TheQuickWayLeavesTheSameBytes)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> angle(-8000, 8000);
    const auto compare = [](int radius, double startAngle) {
        const int side = 2 * radius + 3;
        std::vector<double> plain(side * side, kUnset), quick = plain;
        const generators::SpiralCircle circle = {radius + 1, radius + 1, radius, startAngle};
        drawSpiralCircle(plain.data(), side, circle);
        drawSpiralCircleQuickly(quick.data(), side, circle);
        EXPECT_EQ(plain, quick) << radius << ' ' << startAngle;
    };
    for (int radius = 1; radius < 300; ++radius)
        compare(radius, angle(random));
    for (const int radius : {1, 2, 3, 50, 600})
        for (const double special :
             {0.0, std::numbers::pi / 4, -std::numbers::pi / 2, 1e9, 1e16, -1e300})
            compare(radius, special);
}

TEST(Spiral, WithoutTurnHasOneStraightSeam)
{
    const Field drawn(121, 101, spiral(0, 50));
    // R is 50: one draw for each of the circles 1 to 49.
    EXPECT_EQ(generators::randomDraws(), 49u);
    for (int x = 0; x < 121; ++x)
        for (int y = 0; y < 101; ++y) {
            const double distance = std::hypot(x - 60, y - 50);
            if (distance > 50) {
                ASSERT_EQ(drawn(x, y), kUnset);
            } else if (distance > 2 && distance < 48.5) {
                // A pixel is up to 0.7 from the point that set it.
                const double off = 0.75 / distance / std::numbers::pi;
                ASSERT_NEAR(drawn(x, y), alongCircle(x - 60, y - 50, 0), off) << x << ' ' << y;
            }
        }
    EXPECT_EQ(drawn(60, 50), kUnset);
}

TEST(Spiral, TurnsByFactorWindAndCurvature)
{
    struct Case {
        float factor, wind;
        int curvature;
    };
    const int side = 161, middle = 80;
    for (const auto& [factor, wind, curvature] :
         {Case{1.41f, 11.76f, 0}, Case{-3, 2, 7}, Case{5, 0, 10}, Case{0, 3, 4}}) {
        const Field drawn(side, side, spiral(factor, wind, curvature), 9);
        std::srand(9);
        double start = 0;
        for (int radius = 1; radius < middle; ++radius) {
            // On the axes only this circle's points come to lie.
            const int directions[][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
            for (const auto& [dx, dy] : directions) {
                if (radius < 4)
                    continue;
                ASSERT_NEAR(drawn(middle + dx * radius, middle + dy * radius),
                            alongCircle(dx, dy, start), 0.75 / radius / std::numbers::pi)
                    << factor << ' ' << radius;
            }
            const int sign = factor > 0 ? 1 : -1;
            start += factor / 100 * (1 - wind * (std::rand() % 100 - 50) / 100.0) -
                     sign * curvature / 100.0 * (radius + 1) / middle;
        }
    }
}

TEST(Spiral, RowsRunUpwards)
{
    const Field drawn(40, 30, spiral(2, 5));
    const auto bitmap = drawn.picture->bitmap();
    for (int x = 0; x < 40; ++x)
        for (int y = 0; y < 30; ++y) {
            std::uint32_t word = 0;
            if (drawn(x, y) <= 1)
                generators::computeColorToMem(word, drawn(x, y), 0, 1);
            ASSERT_EQ(bitmap->rowAs<std::uint32_t>(29 - y)[x], word);
        }
}

TEST(Spiral, DrawsNoNumbersForAColor)
{
    Field drawn(60, 50, spiral(2, 5), 3);
    Dictionary recolored = spiral(2, 5);
    recolored.set("GLIFColorRangeMax", 0.4f);
    const PictureRef again = generate(*drawn.generator, 60, 50, recolored, 77);
    EXPECT_EQ(generators::randomDraws(), 0u);
    EXPECT_EQ(drawn.generator->fieldsComputed(), 1);
    EXPECT_EQ(bytesOf(again), bytesOf(generate(kClass, 60, 50, recolored, 3)));
    recolored.set("GLIFCurvature", 1);
    generate(*drawn.generator, 60, 50, recolored);
    EXPECT_EQ(drawn.generator->fieldsComputed(), 2);
}

TEST(Spiral, SmallPicturesAndWildFactorsAreDefined)
{
    const Dictionary white = {{"GLIFUseBackgroundColor", true},
                              {"GLIFBackgroundColor", foundation::Color::white()}};
    EXPECT_EQ(bytesOf(generate(kClass, 3, 9, white)), std::string(3 * 9 * 4, '\xff'));
    EXPECT_EQ(bytesOf(generate(kClass, 20, 20, {})),
              bytesOf(generate(kClass, 20, 20, spiral(1, 1.5f))));
    const float infinite = std::numeric_limits<float>::infinity();
    EXPECT_EQ(bytesOf(generate(kClass, 60, 60, spiral(infinite, 1))),
              bytesOf(generate(kClass, 60, 60, spiral(0, 1))));
}

// Values come from sums and cosines, pixels from where they fall: equal to the byte with one C
// library, and all but a few pixels with another.
TEST(Spiral, Pictures)
{
    Dictionary attributes = defaultsOf(*makeGenerator(kClass));
    expectGolden("spiral-defaults", *generate(kClass, 128, 128, attributes)->bitmap(),
                 {.mean = 0.05});
    attributes.set("GLIFFactor", -6.0f);
    attributes.set("GLIFCurvature", 10);
    attributes.set("GLIFRandomWind", 1.0f);
    attributes.set("GLIFUseBackgroundColor", true);
    attributes.set("GLIFColorRangeMax", 0.3f);
    expectGolden("spiral-left-curved-on-white", *generate(kClass, 128, 96, attributes)->bitmap(),
                 {.mean = 0.05});
}
