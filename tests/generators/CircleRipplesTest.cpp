// The ripples: two types worked out from the random sequence, what all types and controls promise,
// and what a colour change costs.
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

using namespace support;

namespace {

constexpr const char* kClass = "GLIF_CircleRipples";
constexpr int kTypes = 4;

Dictionary ripples(int type, float size = 8, float koef = 1, int resolution = 1)
{
    return {{"GLIFShapesType", type},
            {"GLIFSize", size},
            {"GLIFKoef", koef},
            {"GLIFResolution", resolution}};
}

// A generator, its last picture and its field, read as rows and columns.
struct Drawn {
    Drawn(int w, int h, const Dictionary& attributes, unsigned seed = 1)
        : width(w), height(h), generator(makeGenerator(kClass)),
          picture(generate(*generator, w, h, attributes, seed))
    {
    }
    double operator()(int x, int y) const
    {
        return generator->GLIFPrefetchBuffer()[x * height + y];
    }
    bool isOpen(int x, int y) const { return (*this)(x, y) > 1; }

    int width, height;
    std::shared_ptr<GLIFCoreObject> generator;
    PictureRef picture;
};

// The centres that the random sequence gives.
struct Centers {
    Centers(double width, double height, unsigned seed)
    {
        std::srand(seed);
        count = 3 + std::rand() % 3;
        for (auto& [x, y, phase] : of) {
            x = std::rand() / 2147483648.0 * width;
            y = std::rand() / 2147483648.0 * height;
            phase = std::rand() / 2147483648.0;
        }
    }
    // Wavelengths from a centre to the middle of a pixel, the phase taken off.
    double turns(int i, int x, int y, double wavelength) const
    {
        return std::hypot(x + 0.5 - of[i][0], y + 0.5 - of[i][1]) / wavelength - of[i][2];
    }

    int count;
    std::array<std::array<double, 3>, 16> of;
};

} // namespace

TEST(CircleRipples, WavesAddUpAndLeaveTheTroughsOpen)
{
    for (const unsigned seed : {1u, 2u, 3u}) {
        const Drawn drawn(150, 100, ripples(0, 12), seed);
        EXPECT_EQ(generators::randomDraws(), 49u);
        const Centers centers(150, 100, seed);
        int open = 0;
        for (int x = 0; x < 150; ++x)
            for (int y = 0; y < 100; ++y) {
                double height = 0;
                for (int i = 0; i < centers.count; ++i)
                    height += std::cos(2 * std::numbers::pi * centers.turns(i, x, y, 12));
                height *= std::sqrt(2.0 / centers.count);
                const double value = (height / std::sqrt(1 + height * height) + 0.58) / 1.58;
                if (std::abs(value) < 1e-4)
                    continue;
                open += value < 0;
                ASSERT_EQ(drawn.isOpen(x, y), value < 0) << x << ' ' << y;
                if (value > 0) {
                    ASSERT_NEAR(drawn(x, y), value, 1e-4) << x << ' ' << y;
                }
            }
        EXPECT_GT(open, 1500);
        EXPECT_LT(open, 6000);
    }
}

TEST(CircleRipples, RingsAreOpenWhereAnEvenNumberLies)
{
    const Drawn drawn(150, 100, ripples(1, 20), 4);
    EXPECT_EQ(generators::randomDraws(), 49u);
    const Centers centers(150, 100, 4);
    for (int x = 0; x < 150; ++x)
        for (int y = 0; y < 100; ++y) {
            int circles = 0;
            bool isClear = true;
            for (int i = 0; i < 3; ++i) {
                const double halves = 2 * centers.turns(i, x, y, 20);
                circles += static_cast<int>(std::floor(halves));
                isClear = isClear && std::abs(halves - std::round(halves)) > 1e-4;
            }
            if (isClear) {
                ASSERT_EQ(drawn.isOpen(x, y), circles % 2 == 0) << x << ' ' << y;
            }
        }
}

TEST(CircleRipples, RosetteIsHighestInTheMiddleAndSymmetric)
{
    // An odd number of waves about the middle: turned by one of them, it is itself.
    const Drawn drawn(401, 401, ripples(3, 25), 2);
    std::srand(2);
    const int count = 5 + 2 * (std::rand() % 3);
    EXPECT_FALSE(drawn.isOpen(200, 200));
    int compared = 0;
    double error = 0;
    for (int x = 0; x < 401; ++x)
        for (int y = 0; y < 401; ++y) {
            if (!drawn.isOpen(x, y)) {
                ASSERT_LE(drawn(x, y), drawn(200, 200) + 1e-4);
            }
            const double angle = 2 * std::numbers::pi / count;
            const double dx = x - 200, dy = y - 200;
            const long tx = std::lround(200 + std::cos(angle) * dx - std::sin(angle) * dy);
            const long ty = std::lround(200 + std::sin(angle) * dx + std::cos(angle) * dy);
            if (tx < 0 || tx > 400 || ty < 0 || ty > 400 || drawn.isOpen(x, y) ||
                drawn.isOpen(static_cast<int>(tx), static_cast<int>(ty)))
                continue;
            ++compared;
            error += std::abs(drawn(x, y) - drawn(static_cast<int>(tx), static_cast<int>(ty)));
        }
    EXPECT_GT(compared, 50'000);
    EXPECT_LT(error / compared, 0.01); // half a pixel of a wave of 100
}

TEST(CircleRipples, LooksTheSameAtEverySize)
{
    for (int type = 0; type < kTypes; ++type) {
        const Drawn small(90, 67, ripples(type, 15)), large(270, 201, ripples(type, 15, 1, 3));
        int different = 0;
        for (int x = 0; x < 90; ++x)
            for (int y = 0; y < 67; ++y) {
                // A block of the large one is a pixel of the small one.
                ASSERT_EQ(large(3 * x, 3 * y), large(3 * x + 2, 3 * y + 2));
                different += !(std::abs(small(x, y) - large(3 * x + 1, 3 * y + 1)) < 1e-3);
            }
        EXPECT_LT(different, 10) << type; // a hair's breadth from the water line
    }
}

TEST(CircleRipples, EveryTypeAndControlMatters)
{
    std::vector<std::string> pictures;
    for (int type = 0; type < kTypes; ++type) {
        const Drawn drawn(120, 90, ripples(type));
        int open = 0;
        for (int i = 0; i < 120 * 90; ++i)
            open += drawn.generator->GLIFPrefetchBuffer()[i] > 1;
        EXPECT_GT(open, 120 * 90 / 20) << type;
        EXPECT_LT(open, 120 * 90 * 4 / 5) << type;
        pictures.push_back(bytesOf(drawn.picture));
        for (const Dictionary& other :
             {ripples(type, 9), ripples(type, 8, 2), ripples(type, 8, 1, 2)})
            pictures.push_back(bytesOf(generate(kClass, 120, 90, other)));
        pictures.push_back(bytesOf(generate(kClass, 120, 90, ripples(type), 2)));
        Dictionary onWhite = ripples(type);
        onWhite.set("GLIFUseBackgroundColor", true);
        onWhite.set("GLIFBackgroundColor", foundation::Color::white());
        pictures.push_back(bytesOf(generate(kClass, 120, 90, onWhite)));
    }
    // No two of them are alike.
    std::sort(pictures.begin(), pictures.end());
    EXPECT_EQ(std::adjacent_find(pictures.begin(), pictures.end()), pictures.end());
}

TEST(CircleRipples, DrawsNoNumbersForAColor)
{
    for (int type = 0; type < kTypes; ++type) {
        const Drawn drawn(60, 50, ripples(type), 3);
        Dictionary recolored = ripples(type);
        recolored.set("GLIFColorRangeMin", 0.1f);
        recolored.set("GLIFColorRangeMax", 0.3f);
        const PictureRef again = generate(*drawn.generator, 60, 50, recolored, 77);
        EXPECT_EQ(generators::randomDraws(), 0u);
        EXPECT_EQ(drawn.generator->fieldsComputed(), 1);
        EXPECT_EQ(bytesOf(again), bytesOf(generate(kClass, 60, 50, recolored, 3)));
        EXPECT_NE(bytesOf(again), bytesOf(drawn.picture));
    }
}

TEST(CircleRipples, WildNumbersStayInTheRange)
{
    const float infinity = std::numeric_limits<float>::infinity();
    for (int type = -1; type <= kTypes; ++type)
        for (const float wild : {infinity, -infinity, std::nanf(""), 1e30f, 0.0f, -3.0f})
            for (const Dictionary& attributes :
                 {ripples(type, wild), ripples(type, 8, wild), ripples(type, wild, wild, 7)}) {
                const Drawn drawn(31, 17, attributes);
                for (int x = 0; x < 31; ++x)
                    for (int y = 0; y < 17; ++y)
                        ASSERT_TRUE(drawn.isOpen(x, y) || (drawn(x, y) >= 0 && drawn(x, y) <= 1));
            }
    // Types out of the range are waves.
    EXPECT_EQ(bytesOf(generate(kClass, 40, 30, ripples(9))),
              bytesOf(generate(kClass, 40, 30, ripples(0))));
}

// The rosette's centres are placed by the C library's sine, and its edges may follow its last bit.
TEST(CircleRipples, Pictures)
{
    Dictionary attributes = defaultsOf(*makeGenerator(kClass));
    attributes.set("GLIFSize", 16.0f);
    expectGolden("circle-ripples-waves", *generate(kClass, 128, 96, attributes)->bitmap());
    attributes.set("GLIFShapesType", 2);
    attributes.set("GLIFSize", 10.0f);
    expectGolden("circle-ripples-drops", *generate(kClass, 128, 96, attributes)->bitmap());
    attributes.set("GLIFShapesType", 3);
    attributes.set("GLIFSize", 16.0f);
    attributes.set("GLIFKoef", 2.0f);
    expectGolden("circle-ripples-rosette-two-runs",
                 *generate(kClass, 128, 96, attributes)->bitmap(), {.mean = 0.05});
}
