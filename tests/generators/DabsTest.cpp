// Where the prints of a brush go, and what they leave.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;

namespace {

constexpr const char* kClass = "GLIF_Dabs";
constexpr const char* kNoBrush = "Can't loaded resource";

PictureRef brushOf(int width, int height, const std::function<float(int x, int y)>& alpha)
{
    const auto pixels = bitmapFrom(width, height, [&](int x, int y) {
        return Rgba{0, 0, 0, alpha(x, y)};
    });
    return drawing::Picture::fromBitmap(converted(*pixels, PixelFormat::Rgba8));
}

// A comb of bristles that fades to the right.
PictureRef bristles()
{
    return brushOf(48, 24, [](int x, int y) {
        const float tip = std::min(1.0f, static_cast<float>(x) / 4);
        return y % 4 < 2 ? tip * (1 - static_cast<float>(x) / 48) : 0;
    });
}

PictureRef dabs(int width, int height, const PictureRef& brush, const Dictionary& more = {},
                unsigned seed = 1)
{
    Dictionary attributes = {{"GLIFBrush", brush}};
    for (const auto& [key, value] : more)
        attributes.set(key, value);
    return generate(kClass, width, height, attributes, seed);
}

} // namespace

TEST(Dabs, AreStrewnTurnedAndTintedAtRandom)
{
    constexpr int kWidth = 90, kHeight = 70;
    const PictureRef brush = brushOf(50, 40, [](int, int) { return 1.0f; });
    const auto images = drawn<Recording::Image>(dabs(
        kWidth, kHeight, brush,
        {{"GLIFCountDabs", 9}, {"GLIFLength", 50}, {"GLIFAngle", -35}, {"GLIFColorScheme", 7}}, 8));
    ASSERT_EQ(images.size(), 40u);
    EXPECT_EQ(generators::randomDraws(), 160u);
    std::srand(8);
    for (const Recording::Image& image : images) {
        EXPECT_EQ(image.size, (foundation::Size{25, 20}));
        // Margins: 50 % of the stamp, truncated; half of them lies beyond the left and bottom edge.
        const double x = std::rand() % (kWidth + 12) - 6;
        const double y = std::rand() % (kHeight + 10) - 5;
        const float hue = static_cast<float>(std::rand()) / 2147483648.0f;
        const double degrees = -35 + std::rand() % 20 - 10;
        const Point center = image.matrix.apply({12.5, 10});
        EXPECT_NEAR(center.x, x, 1e-9);
        EXPECT_NEAR(center.y, y, 1e-9);
        EXPECT_NEAR(std::atan2(image.matrix.m12, image.matrix.m11) * 180 / std::numbers::pi,
                    degrees, 1e-5);
        EXPECT_TRUE(image.tinted);
        EXPECT_EQ(image.tint, Color::hsb(hue, 1, 1));
    }
}

TEST(Dabs, KeepTheShapeOfTheirBrush)
{
    // One opaque quarter, upper left; the stamp turns by at most ten degrees about its middle.
    const PictureRef brush = brushOf(40, 40, [](int x, int y) { return x < 20 && y < 20; });
    const PictureRef picture =
        dabs(200, 200, brush, {{"GLIFCountDabs", 2}, {"GLIFLength", 100}}, 11);
    const auto last = drawn<Recording::Image>(picture).back();
    const auto at = [&](double x, double y) {
        const Point p = last.matrix.apply({x, y});
        return pixel(*picture->bitmap(), static_cast<int>(p.x), 199 - static_cast<int>(p.y));
    };
    EXPECT_NEAR(at(10, 30).r, last.tint.red, 0.01);
    EXPECT_NEAR(at(10, 30).b, last.tint.blue, 0.01);
    EXPECT_EQ(at(10, 30).a, 1);
    for (const Point& p : {Point{30, 30}, Point{10, 10}, Point{30, 10}})
        EXPECT_EQ(at(p.x, p.y).a, 0);
}

TEST(Dabs, NeedABrushThatLives)
{
    LogRecorder log;
    const auto generator = makeGenerator(kClass);
    EXPECT_FALSE(generate(*generator, 9, 9, {}));
    EXPECT_FALSE(generate(*generator, 9, 9, {{"GLIFBrush", 3}}));
    PictureRef brush = bristles();
    EXPECT_TRUE(generate(*generator, 9, 9, {{"GLIFBrush", brush}}));
    EXPECT_TRUE(generate(*generator, 9, 9, {})) << "the caller still holds it";
    brush.reset();
    EXPECT_FALSE(generate(*generator, 9, 9, {}));
    EXPECT_EQ(log.lines, std::vector<std::string>(3, kNoBrush));
}

TEST(Dabs, CountAndLengthDecideHowManyAndHowLarge)
{
    const PictureRef brush = bristles();
    const auto printed = [&](int count, int length, int type = 0) {
        return dabs(60, 40, brush,
                    {{"GLIFCountDabs", count}, {"GLIFLength", length}, {"GLIFType", type}});
    };
    const auto countOf = [&](int count, int length) {
        return printed(count, length)->recording()->ops.size();
    };
    EXPECT_EQ(countOf(1, 50), 0u);
    EXPECT_EQ(countOf(-3, 50), 4u);
    EXPECT_EQ(countOf(15, 0), 0u);
    EXPECT_EQ(countOf(15, -50), 0u);
    EXPECT_EQ(countOf(2'000'000'000, 1), 5000u);
    EXPECT_EQ(bytesOf(printed(5, 30, 0)), bytesOf(printed(5, 30, 360)));
    // Stamps smaller than a pixel, margins of none: every centre lies in the picture.
    for (const auto& image : drawn<Recording::Image>(printed(40, 1))) {
        const Point center = image.matrix.apply({image.size.width / 2, image.size.height / 2});
        EXPECT_TRUE(center.x > -1e-9 && center.x < 59.1 && center.y > -1e-9 && center.y < 39.1);
    }
    const auto huge = drawn<Recording::Image>(printed(2, 2'000'000'000));
    EXPECT_LE(huge[0].size.width, 48 * 100);
    // A brush that measures next to nothing, or more than can be said.
    for (const double side : {0.0, 1e-30, 1e30, 1e300}) {
        const PictureRef odd = drawing::Picture::fromBitmap(brush->bitmap(), {side, 10});
        EXPECT_TRUE(dabs(60, 40, odd, {{"GLIFLength", 90}})->recording()->ops.empty());
    }
}

// Printed from the last dab down, and all of them painted. The drawing library rounds to a byte at
// every dab and is off by some levels at the slanted edges of a stamp itself.
TEST(Dabs, PixelsAreThoseOfAllDabsPainted)
{
    const PictureRef brushes[] = {bristles(), brushOf(50, 40, [](int, int) { return 1.0f; }),
                                  brushOf(1, 1, [](int, int) { return 0.5f; })};
    for (const PictureRef& brush : brushes)
        for (const int length : {1, 15, 68, 200})
            for (const int count : {2, 15, 40}) {
                const PictureRef picture =
                    dabs(173, 131, brush,
                         {{"GLIFCountDabs", count},
                          {"GLIFLength", length},
                          {"GLIFAngle", count * 10},
                          {"GLIFColorScheme", 7},
                          {"GLIFUseBackgroundColor", count == 15},
                          {"GLIFBackgroundColor", Color::rgb(1, 0.9f, 0.8f, 0.5f)}},
                         length);
                const auto painted = drawing::rasterize(*picture->recording(), 173, 131);
                const Difference difference = compare(*picture->bitmap(), **painted);
                EXPECT_LE(difference.largest, 32 / 255.0) << length << ' ' << count;
                EXPECT_LE(difference.mean, 2.0 / 255) << length << ' ' << count;
            }
}

TEST(Dabs, Pictures)
{
    expectGolden("dabs-bristles-on-cream",
                 *dabs(128, 96, bristles(),
                       {{"GLIFCountDabs", 12},
                        {"GLIFLength", 80},
                        {"GLIFAngle", 30},
                        {"GLIFColorScheme", 2},
                        {"GLIFSchemeKeyColor", 0.6},
                        {"GLIFUseBackgroundColor", true},
                        {"GLIFBackgroundColor", Color::rgb(1, 0.95f, 0.85f)}},
                       2)
                      ->bitmap(),
                 {.largest = 8, .mean = 0.3});
}
