// Edges, edge work, line overlay and the comic effect: drawings of a picture.
#include "tests/builtin/Direct.h"
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <array>

using namespace support;

namespace {

// `left` up to column 19, `right` from column 20 on.
BitmapRef halves(Rgba left, Rgba right)
{
    return bitmapFrom(40, 24, [=](int x, int) { return x < 20 ? left : right; });
}
BitmapRef greyHalves(float left, float right)
{
    return halves({left, left, left, 1}, {right, right, right, 1});
}

Floats middleRow(const Floats& all)
{
    return {all.begin() + 40 * 12, all.begin() + 40 * 13};
}

// Weights of a Gaussian, to three standard deviations.
std::vector<double> bell(double sigma)
{
    std::vector<double> w;
    double sum = 0;
    for (int k = -int(3 * sigma); k <= int(3 * sigma); ++k)
        sum += w.emplace_back(std::exp(-0.5 * k * k / (sigma * sigma)));
    for (double& v : w)
        v /= sum;
    return w;
}

} // namespace

TEST(Edges, AreSlopesOfEachComponent)
{
    const BitmapRef out =
        apply("CIEdges", halves({0, 0.2f, 0.5f, 1}, {1, 0.1f, 0.5f, 1}), {{"inputIntensity", 1.5}});
    for (const int x : {19, 20})
        EXPECT_THAT(pixel(*out, x, 12), IsColor(Rgba{0.75f, 0.075f, 0, 1}, 1e-6f));
    for (const int x : {0, 18, 21, 39})
        EXPECT_EQ(pixel(*out, x, 0), (Rgba{0, 0, 0, 1}));
    // By the Sobel weights: a point has 2/8 beside it and √2/8 diagonally.
    const BitmapRef point = bitmapFrom(5, 5, [](int x, int y) {
        const float v = x == 2 && y == 2;
        return Rgba{v, v, v, 1};
    });
    const BitmapRef ring = apply("CIEdges", point, {{"inputIntensity", 1}});
    EXPECT_FLOAT_EQ(pixel(*ring, 1, 2).g, 0.25f);
    EXPECT_FLOAT_EQ(pixel(*ring, 2, 3).g, 0.25f);
    EXPECT_FLOAT_EQ(pixel(*ring, 3, 1).g, std::sqrt(2.0f) / 8);
}

TEST(Edges, StayWithinTheAlpha)
{
    const BitmapRef cut = halves({0, 0, 0, 0}, {0.3f, 0.3f, 0, 0.4f});
    const BitmapRef out = apply("CIEdges", cut, {{"inputIntensity", 10}});
    EXPECT_EQ(pixel(*out, 19, 5), (Rgba{0, 0, 0, 0}));
    EXPECT_THAT(pixel(*out, 20, 5), IsColor(Rgba{0.4f, 0.4f, 0, 0.4f}, 1e-6f));
    const BitmapRef none = apply("CIEdges", cut, {{"inputIntensity", -1}});
    EXPECT_EQ(pixel(*none, 20, 5), (Rgba{0, 0, 0, 0.4f}));
}

TEST(EdgeWork, DrawsOneLineOnTheLightSide)
{
    for (const bool lightOnTheRight : {true, false}) {
        const BitmapRef picture = lightOnTheRight ? greyHalves(0.2f, 0.9f) : greyHalves(0.9f, 0.2f);
        Floats v = middleRow(reds(*apply("CIEdgeWork", picture, {{"inputRadius", 3}})));
        if (!lightOnTheRight)
            std::reverse(v.begin(), v.end());
        for (int x = 0; x < 20; ++x)
            EXPECT_EQ(v[x], 0) << x;
        for (int x = 20; x < 23; ++x)
            EXPECT_EQ(v[x], 1) << x;
        EXPECT_TRUE(std::is_sorted(v.rbegin(), v.rend() - 20));
        for (int x = 29; x < 40; ++x)
            EXPECT_EQ(v[x], 0) << x;
    }
}

TEST(EdgeWork, IsHowMuchLighterAPixelIsThanItsNeighbourhood)
{
    constexpr float kStep = 0.1f;
    const Floats v =
        middleRow(reds(*apply("CIEdgeWork", greyHalves(0.5f, 0.5f + kStep), {{"inputRadius", 2}})));
    const std::vector<double> weights = bell(2);
    for (int x = 20; x < 28; ++x) {
        double beyond = 0; // the share of the neighbourhood on the dark side
        for (int k = -6; k <= 6; ++k)
            beyond += x + k < 20 ? weights[k + 6] : 0;
        EXPECT_NEAR(v[x], smoothstep(0.01, 0.06, kStep * beyond), 0.02) << x;
    }
    for (const double nought : {0.0, -2.0, std::nan("")})
        EXPECT_THAT(reds(*apply("CIEdgeWork", picture("photo-96x64"), {{"inputRadius", nought}})),
                    testing::Each(0));
}

TEST(LineOverlay, IsTheSlopeOfTheBlurredColors)
{
    // Without noise reduction and with a soft threshold, every pixel up to the frame.
    const BitmapRef any = longRandomPicture();
    const int width = any->width(), height = any->height();
    const std::vector<double> weights = bell(1);
    std::vector<std::array<double, 3>> blurred(std::size_t(width) * height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int j = -3; j <= 3; ++j)
                for (int i = -3; i <= 3; ++i) {
                    const Rgba p = clampedPixel(*any, x + i, y + j);
                    const double w = weights[i + 3] * weights[j + 3];
                    auto& sum = blurred[y * width + x];
                    sum[0] += w * p.r, sum[1] += w * p.g, sum[2] += w * p.b;
                }
    const BitmapRef expected = bitmapFrom(width, height, [&](int x, int y) {
        double energy = 0;
        for (int c = 0; c < 3; ++c) {
            const auto b = [&](int i, int j) {
                return blurred[std::clamp(y + j, 0, height - 1) * width +
                               std::clamp(x + i, 0, width - 1)][c];
            };
            const double gx =
                b(1, 1) + 2 * b(1, 0) + b(1, -1) - b(-1, 1) - 2 * b(-1, 0) - b(-1, -1);
            const double gy =
                b(1, 1) + 2 * b(0, 1) + b(-1, 1) - b(1, -1) - 2 * b(0, -1) - b(-1, -1);
            energy += (gx * gx + gy * gy) / 64;
        }
        const double v = std::clamp((3 * 0.8 * std::sqrt(energy / 3) - 0.05) * 2, 0.0, 1.0);
        return Rgba{0, 0, 0, float(v) * pixel(*any, x, y).a};
    });
    const BitmapRef out = apply("CILineOverlay", any,
                                {{"inputNRNoiseLevel", 0},
                                 {"inputNRSharpness", 0},
                                 {"inputEdgeIntensity", 0.8},
                                 {"inputThreshold", 0.05},
                                 {"inputContrast", 2}});
    EXPECT_LT(compare(*out, *expected).largest, 1e-5) << compare(*out, *expected);
}

TEST(LineOverlay, OutlinesShapesOnNothing)
{
    // By lightness, and by colour alone: the two have the same luminance.
    const BitmapRef equal = halves({0.7f, 0.1f, 0.1f, 1}, {0.1f, 0.278f, 0.1f, 1});
    ASSERT_NEAR(luma(pixel(*equal, 0, 0)), luma(pixel(*equal, 39, 0)), 2e-3);
    for (const BitmapRef& shape : {greyHalves(0.3f, 0.7f), equal}) {
        const Floats line = middleRow(alphas(*apply("CILineOverlay", shape, Dictionary{})));
        EXPECT_EQ(line[19], 1);
        EXPECT_EQ(line[20], 1);
        for (int x = 0; x < 40; ++x) {
            if (x < 16 || x >= 24) {
                EXPECT_EQ(line[x], 0) << x;
            }
        }
    }
    for (const Dictionary& nothing :
         {Dictionary{{"inputEdgeIntensity", 0}}, Dictionary{{"inputThreshold", 4}}})
        EXPECT_THAT(alphas(*apply("CILineOverlay", greyHalves(0, 1), nothing)), testing::Each(0));
}

TEST(ComicEffect, GreysHaveBlackDotsAndKeepTheirTone)
{
    const BitmapRef grey = bitmapFrom(120, 120, [](int, int) { return Rgba{0.6f, 0.6f, 0.6f, 1}; });
    const BitmapRef out = apply("CIComicEffect", grey, Dictionary{});
    const Floats r = reds(*out);
    EXPECT_EQ(greens(*out), r);
    EXPECT_EQ(blues(*out), r);
    // Half of it dots, half of it the fourth of six tones.
    double sum = 0;
    for (const float v : r)
        sum += v;
    EXPECT_NEAR(sum / double(r.size()), (0.6 + 0.6) / 2, 0.01);
    EXPECT_NEAR(*std::max_element(r.begin(), r.end()), 0.8, 1e-3);
    EXPECT_NEAR(*std::min_element(r.begin(), r.end()), 0.3, 1e-3);
}

TEST(ComicEffect, BlackWhiteAndAlphaStayClean)
{
    for (const float v : {0.0f, 1.0f})
        EXPECT_EQ(
            compare(*apply("CIComicEffect", greyHalves(v, v), Dictionary{}), *greyHalves(v, v))
                .largest,
            0);
    const BitmapRef soft = picture("alpha-64x48");
    EXPECT_EQ(alphas(*apply("CIComicEffect", soft, Dictionary{})),
              alphas(*renderWhole(image(soft))));
}

GOLDEN("CIEdges", "alpha-64x48", {{"inputIntensity", 4}}, {.largest = 1});
GOLDEN("CIEdgeWork", "photo-96x64", {{"inputRadius", 2}}, {.largest = 1});
GOLDEN("CILineOverlay", "photo-96x64", {{"inputThreshold", 0.4}, {"inputContrast", 8}},
       {.largest = 2});
GOLDEN("CIComicEffect", "photo-96x64", {}, {.largest = 2});
