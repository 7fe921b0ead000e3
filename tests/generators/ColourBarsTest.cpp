// The bars' places, read back from the fills and seen in the pixels.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_ColourBars";

std::vector<Recording::Fill> bars(const Dictionary& attributes, unsigned seed = 3)
{
    return drawn<Recording::Fill>(generate(kClass, 200, 100, attributes, seed));
}

} // namespace

TEST(ColourBars, EvenBarsFillTheDiagonal)
{
    const PictureRef picture = generate(kClass, 200, 100,
                                        {{"GLIFSize", 10},
                                         {"GLIFDiff", 0.0f},
                                         {"GLIFAngle", 0.0f},
                                         {"GLIFWidthLine", 2.0f},
                                         {"GLIFColorScheme", 7}},
                                        3);
    const auto fills = drawn<Recording::Fill>(picture);
    // The diagonal of 223.6 takes 23 bars of 10, two draws each.
    ASSERT_EQ(fills.size(), 23u);
    EXPECT_EQ(generators::randomDraws(), 46u);
    const double half = -0.5 * std::sqrt(50000.0);
    std::srand(3);
    for (int i = 0; i < 23; ++i) {
        std::rand();
        const Color color = Color::hsb(static_cast<float>(std::rand()) / 2147483648.0f, 1, 1);
        EXPECT_EQ(fills[i].color, color);
        // As wide as the way behind it, and two pens taller than the diagonal.
        const foundation::Rect box = fills[i].path.controlBounds();
        EXPECT_NEAR(box.x, 100 + half + 10 * i, 1e-3);
        EXPECT_NEAR(box.width, 10 * (i + 1), 1e-3);
        EXPECT_NEAR(box.y, 50 + half - 2, 1e-3);
        EXPECT_NEAR(box.height, -2 * half + 4, 1e-3);
        // What is seen of it is what the bars after it leave.
        const int x = static_cast<int>(box.x + 5);
        if (x < 0 || x >= 200)
            continue;
        const Rgba seen = pixel(*picture->bitmap(), x, 50);
        EXPECT_NEAR(seen.r, color.red, 1.01 / 255);
        EXPECT_NEAR(seen.g, color.green, 1.01 / 255);
        EXPECT_NEAR(seen.b, color.blue, 1.01 / 255);
    }
}

TEST(ColourBars, WidthsSpreadAboutTheMean)
{
    const float spread = 0.5f;
    const auto fills = bars({{"GLIFSize", 8}, {"GLIFDiff", spread}, {"GLIFAngle", 90}}, 8);
    std::srand(8);
    double x = 0;
    for (const Recording::Fill& fill : fills) {
        const float share = static_cast<float>(std::rand()) / 2147483648.0f;
        std::rand();
        x += 4 + 8.0 * share;
        // A quarter turn clockwise.
        EXPECT_NEAR(fill.path.controlBounds().height, x, 1e-3);
    }
    EXPECT_GE(x, std::sqrt(50000.0));
}

TEST(ColourBars, TurnsByWholeDegreesClockwise)
{
    const auto ofAngle = [](float angle) { return pointsOf(bars({{"GLIFAngle", angle}})[0].path); };
    EXPECT_EQ(ofAngle(17.9f), ofAngle(17.0f));
    EXPECT_EQ(ofAngle(-17.9f), ofAngle(-17.0f));
    const auto side = ofAngle(30);
    EXPECT_NEAR(std::atan2(side[1].y - side[0].y, side[1].x - side[0].x), -0.5235988, 1e-4);
}

TEST(ColourBars, OutlinesTakeTheBackgroundThatIsNotPainted)
{
    const Color red = Color::rgb(1, 0, 0);
    const auto generator = makeGenerator(kClass);
    const auto first = [&](const Dictionary& attributes) {
        const PictureRef picture = generate(*generator, 200, 100, attributes);
        EXPECT_NE(drawn<Recording::Fill>(picture)[0].color, red);
        return std::pair(drawn<Recording::Stroke>(picture)[0].color,
                         drawn<Recording::Fill>(picture)[0].color);
    };
    EXPECT_EQ(first({}).first, Color::black());
    const auto [line, bar] = first({{"GLIFUseBackgroundColor", true}});
    EXPECT_EQ(line, bar) << "no colour to take";
    EXPECT_EQ(first({{"GLIFBackgroundColor", red}}).first, red);
    EXPECT_EQ(first({{"GLIFUseBackgroundColor", false}}).first, Color::black());
}

TEST(ColourBars, AlwaysReachesTheOtherSide)
{
    const std::size_t thinnest = bars({{"GLIFSize", 1}, {"GLIFDiff", 0.0f}}).size();
    EXPECT_EQ(thinnest, 224u);
    for (const int size : {0, -7, INT_MIN})
        EXPECT_EQ(bars({{"GLIFSize", size}, {"GLIFDiff", 0.0f}}).size(), thinnest);
    EXPECT_EQ(bars({{"GLIFSize", INT_MAX}, {"GLIFDiff", 0.0f}}).size(), 1u);
    for (const float spread : {-1.0f, std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(bars({{"GLIFSize", 1}, {"GLIFDiff", spread}}).size(), thinnest);
    EXPECT_EQ(bars({{"GLIFSize", 1}, {"GLIFDiff", 1e30f}}).size(), 1u);
}

// Whatever later bars cover is left out of the pixels of many bars and of parts, and nothing else;
// Cairo rounds slanted edges by what else is in their rows.
TEST(ColourBars, SeenBarsAreThoseDrawn)
{
    for (const int angle : {0, 17, 45, 90, -133})
        for (const int size : {1, 4, 30})
            for (const float pen : {0.0f, 1.0f, 10.0f}) {
                SCOPED_TRACE(testing::Message() << angle << ' ' << size << ' ' << pen);
                const PictureRef picture = generate(kClass, 320, 180,
                                                    {{"GLIFSize", size},
                                                     {"GLIFDiff", 1.0f},
                                                     {"GLIFAngle", angle},
                                                     {"GLIFWidthLine", pen},
                                                     {"GLIFColorScheme", 7},
                                                     {"GLIFUseBackgroundColor", true}});
                const Recording& drawing = *picture->recording();
                for (const double scale : {1.0, 0.3, 2.0}) {
                    const int width = static_cast<int>(320 * scale);
                    const int height = static_cast<int>(180 * scale);
                    const auto drawn = drawing::rasterize(drawing, width, height);
                    const auto seen = picture->bitmapOfSize(width, height);
                    const int levels = angle % 90 == 0 || size > 1 ? 0 : 20;
                    EXPECT_LE(compare(*seen, **drawn).largest, levels / 255.0) << scale;
                    EXPECT_LE(compare(*seen, **drawn).mean, 1 / 255.0) << scale;
                    const foundation::Rect part{41, 13, 70, 50};
                    const int w = static_cast<int>(70 * scale), h = static_cast<int>(50 * scale);
                    const auto drawnPart = drawing::rasterizePart(drawing, part, w, h);
                    EXPECT_LE(compare(*picture->part(part, w, h), **drawnPart).largest, 20 / 255.0)
                        << scale;
                }
            }
}

TEST(ColourBars, Pictures)
{
    expectGolden("colourbars-uneven",
                 *generate(kClass, 96, 72,
                           {{"GLIFSize", 10},
                            {"GLIFDiff", 0.8f},
                            {"GLIFAngle", 30},
                            {"GLIFColorScheme", 2},
                            {"GLIFSchemeKeyColor", 0.33f}},
                           2)
                      ->bitmap(),
                 {.largest = 8, .mean = 0.2});
}
