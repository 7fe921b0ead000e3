// Foam and tiles: the layers they draw, and their pixels against all layers painted.
#include "generators/ColorSchemes.h"
#include "generators/GLIF_Cafel.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace support;
using drawing::Recording;
using foundation::Color;
using foundation::Point;
using Fills = std::vector<Recording::Fill>;

namespace {

constexpr const char* kFoam = "GLIF_Foam";
constexpr const char* kCafel = "GLIF_Cafel";

// Corners at the lower left and upper right of each square in a path.
std::vector<Rect> squaresOf(const drawing::Path& path)
{
    std::vector<Rect> squares;
    const auto points = pointsOf(path);
    for (std::size_t i = 0; i + 3 < points.size(); i += 4)
        squares.push_back({points[i].x, points[i].y, points[i + 2].x - points[i].x,
                           points[i + 2].y - points[i].y});
    return squares;
}

Rect squareAbout(int x, int y, int radius)
{
    return {double(x - radius), double(y - radius), 2.0 * radius, 2.0 * radius};
}

// How far the colours of two pixels are apart, in levels.
int levelsBetween(const std::uint8_t* a, const std::uint8_t* b)
{
    int levels = 0;
    for (int i = 0; i < 4; ++i)
        levels = std::max(levels, std::abs(a[i] - b[i]));
    return levels;
}

// Whether all nine pixels about this one are alike.
bool isFlat(const Bitmap& bitmap, int x, int y)
{
    const std::uint32_t here = bitmap.rowAs<std::uint32_t>(y)[x];
    bool flat = true;
    for (int row = y - 1; row <= y + 1; ++row)
        for (int column = x - 1; column <= x + 1; ++column)
            flat = flat && bitmap.rowAs<std::uint32_t>(row)[column] == here;
    return flat;
}

// Pixels found directly against all layers painted. Squares have no slanted edges and are the same.
// At the edges of circles the drawing library's coverage is off by some levels itself; elsewhere a
// rim painted over its own colour may have cost a level of rounding.
void expectPainted(const char* className, Dictionary attributes, unsigned seed)
{
    constexpr int kWidth = 173, kHeight = 131;
    const PictureRef picture = generate(className, kWidth, kHeight, attributes, seed);
    const auto painted = drawing::rasterize(*picture->recording(), kWidth, kHeight);
    const Difference difference = compare(*picture->bitmap(), **painted);
    const bool isSquare = attributes.intValue("GLIFIdFigure", 0) == 1;
    EXPECT_LE(difference.largest, isSquare ? 0 : 32 / 255.0) << difference;
    EXPECT_LE(difference.mean, 0.5 / 255);
    int farOff = 0;
    for (int y = 1; y < kHeight - 1; ++y)
        for (int x = 1; x < kWidth - 1; ++x)
            farOff += isFlat(**painted, x, y) &&
                      levelsBetween(picture->bitmap()->rowAs<std::uint8_t>(y) + 4 * x,
                                    (*painted)->rowAs<std::uint8_t>(y) + 4 * x) > 1;
    EXPECT_EQ(farOff, 0) << "pixels away from edges";
}

} // namespace

TEST(Foam, ShrinksAllSpheresLayerByLayer)
{
    constexpr int kQuantity = 25, kSize = 30, kStep = 4;
    const auto fills = drawn<Recording::Fill>(generate(kFoam, 80, 60,
                                                       {{"GLIFQuantity", kQuantity},
                                                        {"GLIFSize", kSize},
                                                        {"GLIFQuality", kStep},
                                                        {"GLIFIdFigure", 1},
                                                        {"GLIFColorScheme", 7}},
                                                       9));
    EXPECT_EQ(generators::randomDraws(), 3u * kQuantity);
    std::srand(9);
    int spheres[kQuantity][3];
    for (auto& [x, y, radius] : spheres) {
        x = std::rand() % 80;
        y = std::rand() % 60;
        radius = std::rand() % kSize;
    }
    // The sizes left over are 30, 26 … 2; no sphere is as large as the largest size.
    ASSERT_GE(fills.size(), 7u);
    for (std::size_t layer = 0; layer < fills.size(); ++layer) {
        std::vector<Rect> expected;
        for (auto& [x, y, radius] : spheres)
            if (radius > 0) {
                radius -= kStep;
                expected.push_back(squareAbout(x, y, radius)); // may be turned inside out
            }
        EXPECT_EQ(squaresOf(fills[layer].path), expected);
        const float position = 1.0f - static_cast<float>(kSize - 4 * int(layer)) / kSize;
        EXPECT_EQ(fills[layer].color, generators::computeSchemeColor(position, 0, 7));
    }
}

TEST(Foam, NumbersOutOfReachGiveADefinedPicture)
{
    LogRecorder log;
    const auto layers = [](const Dictionary& attributes) {
        return drawn<Recording::Fill>(generate(kFoam, 30, 20, attributes));
    };
    EXPECT_EQ(layers({{"GLIFQuality", 63}}).size(), 1u) << "without a size, 62";
    EXPECT_EQ(layers({{"GLIFQuality", 0}, {"GLIFSize", 9}}).size(), 8u) << "steps of 1";
    EXPECT_TRUE(layers({{"GLIFSize", 0}}).empty());
    EXPECT_TRUE(layers({{"GLIFQuantity", -4}}).empty());
    EXPECT_TRUE(log.lines.empty());
    const auto many = layers({{"GLIFQuantity", 5002}, {"GLIFIdFigure", 1}, {"GLIFSize", 10}});
    EXPECT_EQ(generators::randomDraws(), 3u * 5001);
    EXPECT_NEAR(static_cast<double>(squaresOf(many[0].path).size()), 5001 * 0.9, 100);
    EXPECT_EQ(log.lines, std::vector<std::string>{"GLIF_Foam: Error! Too many of spheres!"});
    // A size beyond all bounds takes as many steps as memory can hold.
    std::size_t shapes = 0;
    for (const auto& fill : layers({{"GLIFSize", 1e30}, {"GLIFQuantity", 300}}))
        shapes += squaresOf(fill.path).size();
    EXPECT_LE(shapes, 1'000'000u);
}

TEST(Foam, PixelsAreThoseOfAllLayersPainted)
{
    for (const int figure : {0, 1})
        for (const int step : {1, 2, 7, 90, 1'000'000'000})
            for (const int size : {12, 62, 100})
                for (const int quantity : {5, 120})
                    expectPainted(kFoam,
                                  {{"GLIFQuality", step},
                                   {"GLIFSize", size},
                                   {"GLIFQuantity", quantity},
                                   {"GLIFIdFigure", figure},
                                   {"GLIFColorScheme", 1},
                                   {"GLIFUseBackgroundColor", quantity == 5},
                                   {"GLIFBackgroundColor", Color::rgb(1, 0.5f, 0, 0.6f)}},
                                  size);
}

TEST(Cafel, SpacesItsCentresAndSkipsTheOneJustBefore)
{
    // Everything is too near to everything else, but the second is not compared with the first.
    const auto fills = drawn<Recording::Fill>(generate(
        kCafel, 60, 40, {{"GLIFQuantity", 12}, {"GLIFQuality", 100}, {"GLIFColorScheme", 7}}, 5));
    EXPECT_EQ(generators::randomDraws(), 2u * 3 + 10 * 2);
    std::srand(5);
    ASSERT_EQ(fills.size(), 2u) << "one layer";
    for (const auto& fill : fills) {
        const int x = std::rand() % 60;
        const int y = std::rand() % 40;
        const float hue = static_cast<float>(std::rand()) / 2147483648.0f;
        EXPECT_EQ(fill.path.controlBounds().midX(), x);
        EXPECT_EQ(fill.path.controlBounds().midY(), y);
        EXPECT_EQ(fill.color, Color::hsb(hue, 1, 1));
    }
}

TEST(Cafel, ShrinksFromTheRadiusThatCoversThePicture)
{
    // One centre: the farthest pixel is one in a corner of the picture, but counts as no farther
    // than the side of a square as large as the picture.
    const auto fills = drawn<Recording::Fill>(generate(
        kCafel, 60, 40, {{"GLIFQuantity", 1}, {"GLIFQuality", 3}, {"GLIFIdFigure", 1}}, 5));
    std::srand(5);
    const int x = std::rand() % 60;
    const int y = std::rand() % 40;
    const double corner = std::hypot(std::max(x, 59 - x), std::max(y, 39 - y));
    EXPECT_GT(corner, std::sqrt(60.0 * 40));
    int radius = static_cast<int>(std::sqrt(60.0 * 40)) + 1;
    ASSERT_EQ(fills.size(), (radius + 2) / 3u);
    for (const auto& fill : fills) {
        EXPECT_EQ(squaresOf(fill.path), std::vector<Rect>{squareAbout(x, y, radius)});
        radius -= 3;
    }
}

TEST(Cafel, TheCoverIsThatOfEveryPixelAndCentre)
{
    using generators::Block, generators::Centre;
    std::srand(3);
    for (const auto& [width, height, count] :
         {std::array{1, 1, 1}, {97, 3, 2}, {64, 64, 0}, {131, 77, 9}, {200, 150, 400}}) {
        std::vector<Centre> centres;
        for (int i = 0; i < count; ++i) {
            const int x = std::rand() % width;
            const int y = std::rand() % height;
            centres.push_back({x, y});
        }
        const Block whole = {0, 0, width, height};
        for (const std::int64_t most : {width * height, 50})
            EXPECT_EQ(generators::coverSquared(whole, centres, most),
                      generators::coverSquaredPlain(whole, centres, most));
    }
}

TEST(Cafel, NumbersOutOfReachGiveADefinedPicture)
{
    LogRecorder log;
    const auto shapes = [](const Dictionary& attributes) {
        return drawn<Recording::Fill>(generate(kCafel, 30, 20, attributes)).size();
    };
    EXPECT_EQ(shapes({{"GLIFQuantity", -1}}), 0u);
    EXPECT_GT(shapes({{"GLIFQuality", 0}}), 10u);
    EXPECT_TRUE(log.lines.empty());
    EXPECT_GT(shapes({{"GLIFQuantity", 1e30}, {"GLIFQuality", -100}}), 0u);
    EXPECT_EQ(log.lines, std::vector<std::string>{"GLIF_Cafel: Error! Too many of spheres!"});
    // Two keys are listed that nothing describes and no drawing reads.
    const auto generator = makeGenerator(kCafel);
    EXPECT_EQ(generator->GLIFQueryInputKeys().size(), 7u);
    EXPECT_EQ(generator->GLIFQueryAttributes().size(), 5u);
    EXPECT_EQ(shapes({{"GLIFQuantity", 0},
                      {"GLIFUseBackgroundColor", true},
                      {"GLIFBackgroundColor", Color::white()}}),
              0u);
}

TEST(Cafel, PixelsAreThoseOfAllLayersPainted)
{
    for (const int figure : {0, 1})
        for (const int step : {1, 2, 10, 90, 1'000'000'000})
            for (const int quantity : {1, 3, 20, 100, 2000})
                expectPainted(kCafel,
                              {{"GLIFQuality", step},
                               {"GLIFQuantity", quantity},
                               {"GLIFIdFigure", figure},
                               {"GLIFColorScheme", 8}},
                              quantity + step % 7);
}

TEST(StackedShapes, Pictures)
{
    const Tolerance tolerance = {.largest = 4};
    expectGolden("foam-rings-on-navy",
                 *generate(kFoam, 128, 96,
                           {{"GLIFQuantity", 20},
                            {"GLIFSize", 40},
                            {"GLIFQuality", 3},
                            {"GLIFColorScheme", 1},
                            {"GLIFSchemeKeyColor", 0.35},
                            {"GLIFUseBackgroundColor", true},
                            {"GLIFBackgroundColor", Color::rgb(0, 0, 0.4f)}},
                           2)
                      ->bitmap(),
                 tolerance);
    for (const int figure : {0, 1})
        expectGolden(figure == 0 ? "cafel-20-round-step3" : "cafel-20-square-step3",
                     *generate(kCafel, 128, 96,
                               {{"GLIFQuantity", 20},
                                {"GLIFQuality", 3},
                                {"GLIFIdFigure", figure},
                                {"GLIFColorScheme", 2},
                                {"GLIFSchemeKeyColor", 0.35}},
                               2)
                          ->bitmap(),
                     tolerance);
}
