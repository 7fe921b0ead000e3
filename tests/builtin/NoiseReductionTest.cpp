// Noise reduction: what is averaged, what is kept, what is sharpened.
#include "tests/builtin/Direct.h"
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

using namespace support;

namespace {

BitmapRef reduced(const BitmapRef& bitmap, double level, double sharpness)
{
    return apply("CINoiseReduction", bitmap,
                 {{"inputNoiseLevel", level}, {"inputSharpness", sharpness}});
}

// All 25 neighbours of every pixel, weighed one by one.
BitmapRef directly(const Bitmap& b, double level, double sharpness)
{
    constexpr double binomial[] = {1, 4, 6, 4, 1};
    return bitmapFrom(b.width(), b.height(), [&](int x, int y) {
        const Rgba s = pixel(b, x, y);
        double weights = 0, mean[4] = {}, blur[4] = {};
        for (int j = -2; j <= 2; ++j)
            for (int i = -2; i <= 2; ++i) {
                const Rgba n = clampedPixel(b, x + i, y + j);
                const double w = binomial[i + 2] * binomial[j + 2] / 256;
                const double difference = std::abs(luma(n) - luma(s));
                const double share =
                    level > 0 ? 1 - smoothstep(level, 2 * level, difference) : (i == 0 && j == 0);
                weights += w * share;
                const double color[4] = {n.r, n.g, n.b, n.a};
                for (int c = 0; c < 4; ++c) {
                    mean[c] += w * share * color[c];
                    blur[c] += w * color[c];
                }
            }
        const double edge = (1 - weights) / (1 - 9.0 / 64);
        const auto component = [&](int c, float own) {
            const double m = mean[3] == 0 ? 0 : mean[c] * s.a / mean[3];
            const double d = blur[3] == 0 ? 0 : blur[c] * s.a / blur[3];
            return float(std::max(0.0, m + sharpness * edge * (own - d)));
        };
        return Rgba{component(0, s.r), component(1, s.g), component(2, s.b), s.a};
    });
}

// Dark on the left, lighter by `step` on the right, with a grain of ±0.01.
BitmapRef grainyStep(float step)
{
    return bitmapFrom(40, 20, [=](int x, int y) {
        const float v = 0.2f + (x < 20 ? 0 : step) + ((x * 7 + y * 5) % 3 - 1) * 0.01f;
        return Rgba{v, v, v, 1};
    });
}

} // namespace

TEST(NoiseReduction, IsTheMeanOfSimilarNeighbours)
{
    const BitmapRef any = longRandomPicture(), opaque = picture("photo-96x64");
    for (const auto& [level, sharpness] :
         {std::pair{0.07, 0.71}, {0.02, 0.0}, {0.0, 1.5}, {3.0, 0.4}}) {
        SCOPED_TRACE(std::to_string(level) + ", " + std::to_string(sharpness));
        for (const BitmapRef& b : {any, opaque}) {
            const Difference d =
                compare(*reduced(b, level, sharpness), *directly(*b, level, sharpness));
            EXPECT_LT(d.largest, 2e-5) << d;
        }
    }
}

TEST(NoiseReduction, WithoutLevelAndSharpnessNothingChanges)
{
    const BitmapRef any = longRandomPicture();
    for (const double nought : {0.0, -1.0, std::nan("")})
        EXPECT_EQ(compare(*reduced(any, nought, nought), *any).largest, 0) << nought;
}

TEST(NoiseReduction, GrainGoesAndEdgesStay)
{
    const BitmapRef out = reduced(grainyStep(0.5f), 0.03, 0);
    const Floats v = reds(*out);
    for (int y = 3; y < 17; ++y)
        for (int x = 3; x < 37; ++x)
            EXPECT_NEAR(v[y * 40 + x], x < 20 ? 0.2f : 0.7f, 0.004f) << x << ", " << y;
    // Far above the slider: steps well below the level are blurred, those above twice it are not.
    const BitmapRef blurred = reduced(grainyStep(0.2f), 0.25, 0);
    EXPECT_NEAR(pixel(*blurred, 20, 10).r - pixel(*blurred, 19, 10).r, 0.2 * 6 / 16, 0.01);
    const BitmapRef kept = reduced(grainyStep(0.55f), 0.25, 0);
    EXPECT_NEAR(pixel(*kept, 20, 10).r - pixel(*kept, 19, 10).r, 0.55, 0.01);
}

TEST(NoiseReduction, SharpnessLiftsTheEdgeOnly)
{
    const BitmapRef out = reduced(grainyStep(0.5f), 0.03, 1);
    EXPECT_GT(pixel(*out, 20, 10).r, 0.75f);
    EXPECT_LT(pixel(*out, 19, 10).r, 0.15f);
    EXPECT_NEAR(pixel(*out, 30, 10).r, 0.7f, 0.004f);
}

TEST(NoiseReduction, ACutOutShapeKeepsItsColor)
{
    const BitmapRef soft = bitmapFrom(16, 9, [](int x, int) {
        const float a = std::clamp(float(x - 4) / 4, 0.0f, 1.0f);
        return Rgba{0.8f * a, 0.4f * a, 0.2f * a, a};
    });
    EXPECT_LT(compare(*reduced(soft, 0.5, 2), *soft).largest, 1e-6);
}

GOLDEN("CINoiseReduction", "photo-96x64", {{"inputNoiseLevel", 0.1}, {"inputSharpness", 1.5}},
       {.largest = 1});
