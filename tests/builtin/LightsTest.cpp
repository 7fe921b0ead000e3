// Halo, star and sun: their profiles without rays, then how they look.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>

using namespace support;
using foundation::Color;
using foundation::Vector;

namespace {

const Value kCenter = Vector(0.5, 0.5); // the middle of pixel (0, 0)

Image halo(double overlap, Dictionary inputs = {})
{
    Dictionary all = {
        {"inputCenter", kCenter},      {"inputColor", Color::rgb(1, 0.5f, 0.25f, 0.5f)},
        {"inputHaloRadius", 40},       {"inputHaloWidth", 20},
        {"inputHaloOverlap", overlap}, {"inputStriationStrength", 0}};
    for (const auto& [key, value] : inputs)
        all.set(key, value);
    return outputOf("CILenticularHaloGenerator", nullptr, all);
}

Image sun(Dictionary inputs)
{
    Dictionary all = {{"inputCenter", kCenter}, {"inputSunRadius", 20}};
    for (const auto& [key, value] : inputs)
        all.set(key, value);
    return outputOf("CISunbeamsGenerator", nullptr, all);
}

Image star(Dictionary inputs)
{
    Dictionary all = {{"inputCenter", kCenter}, {"inputRadius", 20}};
    for (const auto& [key, value] : inputs)
        all.set(key, value);
    return outputOf("CIStarShineGenerator", nullptr, all);
}

const Rgba kNothing{0, 0, 0, 0};

} // namespace

TEST(LenticularHalo, OneRingWhereTheColorsOverlap)
{
    // 0.6 in the middle of the ring, times colour and alpha; nothing from half a width on.
    EXPECT_THAT(at(halo(1), 40, 0), IsColor(Rgba{0.3f, 0.15f, 0.075f, 0.3f}, 1e-6f));
    EXPECT_THAT(at(halo(1), 0, -45),
                IsColor(Rgba{0.16875f, 0.084375f, 0.0421875f, 0.16875f}, 1e-6f));
    EXPECT_EQ(at(halo(1), 50, 0), kNothing);
    EXPECT_EQ(at(halo(1), -30, 0), kNothing);
    EXPECT_EQ(at(halo(1, {{"inputHaloWidth", 0}}), 40, 0), kNothing);
}

TEST(LenticularHalo, SplitIntoARainbowRedIsOutside)
{
    const Rgba outer = at(halo(0), 47, 0), inner = at(halo(0), 33, 0);
    EXPECT_NEAR(outer.r, 0.3f, 1e-6f); // its own middle, 0.7 of the half width further out
    EXPECT_EQ(outer.b, 0);
    EXPECT_EQ(inner.r, 0);
    EXPECT_NEAR(inner.b, 0.25f * 0.3f, 1e-6f);
}

TEST(LenticularHalo, RaysMoveWithTimeWithoutAJump)
{
    const auto ring = [](double time) {
        return render(halo(1, {{"inputStriationStrength", 1}, {"inputTime", time}}),
                      {-50, -50, 100, 100});
    };
    EXPECT_GT(compare(*ring(0), *ring(0.25)).largest, 0.1);
    // Across a step of the noise, and where time is no number at all.
    EXPECT_LT(compare(*ring(0.125 - 1e-5), *ring(0.125 + 1e-5)).largest, 1e-3);
    EXPECT_EQ(compare(*ring(0), *ring(std::nan(""))).largest, 0);
}

TEST(Sunbeams, TheDiscTurnsWhiteInItsMiddle)
{
    // Brightness 1.5: the half that is too much spills over into all components.
    EXPECT_THAT(at(sun({{"inputColor", Color::rgb(0.6f, 0.2f, 0)}}), 0, 0),
                IsColor(Rgba{1, 0.8f, 0.5f, 1}, 1e-6f));
    // Without beams the disc ends at 1.25 radii; at 0.625 it has (3/4)³ of the 1.5.
    const Image disc = sun({{"inputStriationStrength", 0}, {"inputSunRadius", 16}});
    const float level = 1.5f * 27 / 64;
    EXPECT_THAT(at(disc, 10, 0), IsColor(Rgba{level, level * 0.5f, 0, level}, 1e-5f));
    EXPECT_EQ(at(disc, 20, 0), kNothing);
}

TEST(Sunbeams, BeamsEndWhereTheirRadiusSays)
{
    const BitmapRef beams = render(sun({{"inputMaxStriationRadius", 1}}), {-60, -60, 121, 121});
    double lit = 0;
    for (int y = 0; y < 121; ++y)
        for (int x = 0; x < 121; ++x) {
            const double d = std::hypot(x - 60, y - 60);
            if (d >= 40)
                ASSERT_EQ(pixel(*beams, x, 120 - y), kNothing) << x << ' ' << y;
            else if (d > 25)
                lit += pixel(*beams, x, 120 - y).a;
        }
    EXPECT_GT(lit, 10);
    EXPECT_EQ(at(sun({{"inputSunRadius", -3}}), 0, 0), kNothing);
}

TEST(StarShine, TheCoreAloneFallsToTheRadius)
{
    const Image core = star({{"inputCrossScale", 0}, {"inputColor", Color::rgb(1, 0.5f, 0, 1)}});
    EXPECT_THAT(at(core, 10, 0), IsColor(Rgba{0.5f, 0.25f, 0, 0.5f}, 1e-6f)); // 2·(1 - ½)²
    EXPECT_EQ(at(core, 0, 20), kNothing);
}

TEST(StarShine, TheCrossLiesAtItsAngle)
{
    const Image cross =
        star({{"inputCrossAngle", std::atan2(3, 4)}, {"inputColor", Color::white()}});
    const Rgba along = at(cross, 40, 30), across = at(cross, -30, 40), between = at(cross, 50, 0);
    // Length 50 is 2.5 radii: 0.15 / (2.5 + 0.01), and the arm 2.5/√3.5 wide.
    EXPECT_THAT(along, IsColor(Rgba{0.059761f, 0.059761f, 0.059761f, 0.059761f}, 1e-5f));
    EXPECT_THAT(across, IsColor(along, 1e-6f));
    EXPECT_EQ(between, kNothing);
}

TEST(Lights, Goldens)
{
    const Rect square{0, 0, 96, 96};
    const Value middle = Vector(48, 48);
    expectGolden("halo-rainbow-with-rays",
                 *render(outputOf("CILenticularHaloGenerator", nullptr,
                                  {{"inputCenter", middle},
                                   {"inputHaloRadius", 26},
                                   {"inputHaloWidth", 24},
                                   {"inputHaloOverlap", 0.3},
                                   {"inputStriationStrength", 1}}),
                         square),
                 {.largest = 1});
    expectGolden(
        "star-shine-turned-cross",
        *render(
            outputOf("CIStarShineGenerator", nullptr,
                     {{"inputCenter", middle}, {"inputRadius", 16}, {"inputCrossOpacity", -1.5}}),
            square),
        {.largest = 1});
    expectGolden("sunbeams-strong",
                 *render(outputOf("CISunbeamsGenerator", nullptr,
                                  {{"inputCenter", middle},
                                   {"inputSunRadius", 12},
                                   {"inputStriationStrength", 1}}),
                         square),
                 {.largest = 1});
}
