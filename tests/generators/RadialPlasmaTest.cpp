// The radial plasma: its parts at values worked out by hand, the rings against their definition,
// and the two ways in which a seed of 0 is drawn.
#include "generators/GLIF_RadialPlasma.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gmock/gmock.h>

#include <numbers>

using namespace support;

namespace {

constexpr const char* kClass = "GLIF_RadialPlasma";
constexpr double kUnset = 32.501960784313724;

Dictionary plasma(float fadeOut, float roughness)
{
    return {{"GLIFFadeOut", fadeOut}, {"GLIFRoughness", roughness}};
}

// The parts that the disc is grown from, made visible.
struct Probe : GLIF_RadialPlasma {
    using GLIF_RadialPlasma::beginDisc;
    using GLIF_RadialPlasma::Distance;
    using GLIF_RadialPlasma::FindX;
    using GLIF_RadialPlasma::FindY;
    using GLIF_RadialPlasma::GetPixelAtXAtY;
    using GLIF_RadialPlasma::LineOut;
    using GLIF_RadialPlasma::NearIn;
    using GLIF_RadialPlasma::PutPixelAtXAtYColor;
    using GLIF_RadialPlasma::RandOf;
    using GLIF_RadialPlasma::RoundOutAng1Ang2Radius;

    Probe(float fadeOut, float roughness) { generate(*this, 9, 9, plasma(fadeOut, roughness)); }
};

// What the next draw will be.
int peek(unsigned seed)
{
    std::srand(seed);
    const int drawn = std::rand();
    std::srand(seed);
    return drawn;
}

} // namespace

TEST(RadialPlasma, DisplacesTheMeanByDistance)
{
    const Probe probe(0.5f, 3);
    for (unsigned seed = 0; seed < 50; ++seed) {
        // Span 21, half of it 10, lowered by 3; the same below 1 and above 255.
        const int offset = peek(seed) % 21 - 10 - 3;
        EXPECT_EQ(probe.RandOf(100, 7), 100 + offset);
        std::srand(seed);
        EXPECT_EQ(probe.RandOf(3, 7), std::max(1, 3 + offset));
        std::srand(seed);
        EXPECT_EQ(probe.RandOf(255, 7), std::min(255, 255 + offset));
    }
    EXPECT_EQ(Probe(0, 0.1f).RandOf(100, 7), 100); // no span, nothing to divide by
    EXPECT_EQ(Probe(-1e30f, 1).RandOf(100, 7), 255);
    EXPECT_EQ(Probe(0, -1e30f).RandOf(100, 7), 255);
    EXPECT_EQ(Probe::Distance(-3, 1, 0, 5), 5);
    EXPECT_EQ(Probe::FindX(std::numbers::pi, 7.9), -7);
    EXPECT_EQ(Probe::FindY(std::numbers::pi / 6, 9), 4);
}

TEST(RadialPlasma, KnowsWhereThePictureEnds)
{
    LogRecorder log;
    Probe probe(0, 1);
    ASSERT_TRUE(probe.beginDisc({4, 3}));
    probe.PutPixelAtXAtYColor(4, 0, 9); // the entry past the last: no pixel, and no complaint
    EXPECT_TRUE(log.lines.empty());
    probe.PutPixelAtXAtYColor(4, 1, 9);
    probe.PutPixelAtXAtYColor(-1, 2, 9);
    EXPECT_THAT(log.lines, testing::ElementsAre("Buffer out of range (x = 4, y = 1)",
                                                "Buffer out of range (x = -1, y = 2)"));
    probe.PutPixelAtXAtYColor(3, 2, 200);
    EXPECT_EQ(probe.GetPixelAtXAtY(3, 2), 200);
    EXPECT_EQ(probe.GetPixelAtXAtY(3, 1), 0);
}

TEST(RadialPlasma, SetsALineFromItsMiddles)
{
    Probe probe(0, 1e-9f); // no displacement
    ASSERT_TRUE(probe.beginDisc({9, 1}));
    probe.PutPixelAtXAtYColor(0, 0, 10);
    probe.PutPixelAtXAtYColor(8, 0, 51);
    probe.PutPixelAtXAtYColor(2, 0, 255); // overwritten
    probe.LineOut(0, 0, 8, 0);
    const int expected[] = {10, 15, 20, 25, 30, 35, 40, 45, 51};
    for (int x = 0; x < 9; ++x)
        EXPECT_EQ(probe.GetPixelAtXAtY(x, 0), expected[x]) << x;
}

TEST(RadialPlasma, NearInEndsAtTheCentre)
{
    Probe probe(0, 2);
    ASSERT_TRUE(probe.beginDisc({21, 21}));
    for (int x = 0; x < 21; ++x)
        probe.PutPixelAtXAtYColor(x, 10, 100);
    probe.PutPixelAtXAtYColor(10 + 7, 10, 0);
    // 10, 8.58, 7.17: the unset one, 2 from the position at 9. Span 4: the offset is -2 to 1, of
    // which only the last is a value above 0.
    EXPECT_EQ(probe.NearIn(0, 9), 1);
    // To the left all are set: from the centre, with a span of 6.
    const int offset = peek(5) % 6 - 3;
    EXPECT_EQ(probe.NearIn(std::numbers::pi, 3), 100 + offset);
}

TEST(RadialPlasma, GrowsSeedsThenRadiiThenRings)
{
    struct Case {
        int width, height;
        float fadeOut, roughness;
    };
    for (const auto& [width, height, fadeOut, roughness] :
         {Case{64, 48, 0, 3.35f}, Case{201, 333, 0.3f, 12}, Case{700, 900, -0.7f, 1},
          Case{2, 3, 0, 1}, Case{1, 1, 0, 4}, Case{40, 30, 1, 0}}) {
        const auto generator = makeGenerator(kClass);
        const PictureRef picture =
            generate(*generator, width, height, plasma(fadeOut, roughness), 6);
        const std::uint64_t draws = generators::randomDraws();

        Probe probe(fadeOut, roughness);
        ASSERT_TRUE(probe.beginDisc({width, height}));
        std::srand(6);
        const std::uint64_t drawsBefore = generators::randomDraws();
        const int cx = width / 2, cy = height / 2, radius = std::min(cx, cy);
        const int right = std::min(cx + radius, width - 1);
        const int bottom = std::min(cy + radius, height - 1);
        const auto seed = [&](int x, int y) {
            const int drawn = generators::randomInt();
            probe.PutPixelAtXAtYColor(
                x, y, static_cast<std::uint8_t>(drawn % 255 + 1 - int(radius * double(fadeOut))));
        };
        seed(cx, cy);
        seed(cx - radius, cy);
        seed(right, cy);
        seed(cx, cy - radius);
        seed(cx, bottom);
        probe.LineOut(cx, cy, right, cy);
        probe.LineOut(cx, cy, cx - radius, cy);
        probe.LineOut(cx, cy, cx, bottom);
        probe.LineOut(cx, cy, cx, cy - radius);
        const double quarter = std::numbers::pi / 2;
        for (double ring = 1; ring < radius; ring += 0.7)
            for (int i = 0; i < 4; ++i)
                probe.RoundOutAng1Ang2Radius(i * quarter, (i + 1) * quarter, ring);
        EXPECT_EQ(generators::randomDraws() - drawsBefore, draws);

        for (int x = 0; x < width; ++x)
            for (int y = 0; y < height; ++y) {
                const int byte = probe.GetPixelAtXAtY(x, y);
                const double value = generator->GLIFPrefetchBuffer()[x * height + y];
                std::uint32_t word = 0;
                generators::computeColorToMem(word, value, 0, 1);
                if (byte != 0)
                    ASSERT_EQ(value, double(float(byte / 255.0))) << x << ' ' << y;
                else
                    ASSERT_TRUE(value == kUnset || value == 0) << x << ' ' << y;
                ASSERT_EQ(picture->bitmap()->rowAs<std::uint32_t>(y)[x],
                          value == kUnset ? 0 : word);
            }
    }
}

TEST(RadialPlasma, LeavesOutASeedOfZeroWhenItRecolours)
{
    // A radius of 1 with a fade of 1: the remainder of the draw itself. The second draw is the left
    // end's.
    unsigned seed = 0;
    for (bool isFound = false; !isFound; seed += !isFound) {
        std::srand(seed);
        std::rand();
        isFound = std::rand() % 255 == 0;
    }
    const auto generator = makeGenerator(kClass);
    const auto leftEnd = [&] {
        return generate(*generator, 3, 3, plasma(1, 1), seed)->bitmap()->rowAs<std::uint32_t>(1)[0];
    };
    EXPECT_EQ(leftEnd(), 0xFF0000FF); // the first hue
    EXPECT_EQ(leftEnd(), 0u);
    EXPECT_EQ(generator->fieldsComputed(), 1);
}

TEST(RadialPlasma, DrawsNoNumbersForAColor)
{
    const auto generator = makeGenerator(kClass);
    const PictureRef first = generate(*generator, 60, 50, plasma(0, 5), 3);
    Dictionary recolored = plasma(0, 5);
    recolored.set("GLIFColorRangeMax", 0.4f);
    recolored.set("GLIFUseBackgroundColor", true);
    recolored.set("GLIFBackgroundColor", foundation::Color::rgb(0, 0, 0.2f));
    const PictureRef again = generate(*generator, 60, 50, recolored, 77);
    EXPECT_EQ(generators::randomDraws(), 0u);
    EXPECT_EQ(generator->fieldsComputed(), 1);
    EXPECT_EQ(bytesOf(again), bytesOf(generate(kClass, 60, 50, recolored, 3)));
    EXPECT_NE(bytesOf(again), bytesOf(first));
    EXPECT_EQ(bytesOf(generate(kClass, 60, 50, {})),
              bytesOf(generate(kClass, 60, 50, plasma(0, 10))));
}

TEST(RadialPlasma, Pictures)
{
    Dictionary attributes = defaultsOf(*makeGenerator(kClass));
    expectGolden("radial-plasma-defaults", *generate(kClass, 128, 96, attributes)->bitmap());
    attributes.set("GLIFRoughness", 1.5f);
    attributes.set("GLIFFadeOut", 0.4f);
    attributes.set("GLIFColorRangeMin", 0.0f);
    attributes.set("GLIFColorRangeMax", 0.7f);
    attributes.set("GLIFUseBackgroundColor", true);
    expectGolden("radial-plasma-fading-on-white",
                 *generate(kClass, 128, 96, attributes, 2)->bitmap());
}
