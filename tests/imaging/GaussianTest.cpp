// The Gaussian blur against the sum that defines it.
#include "platform/imaging/Kernel.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace imaging;
using support::Rgba;

namespace {

// Weights exp(−k²/2σ²) for |k| ≤ ceil(3σ), in double precision, along one axis of a float plane.
std::vector<double> plainBlur(const std::vector<double>& in, int width, int height, double sigma,
                              bool clamped)
{
    const int radius = static_cast<int>(std::ceil(3 * sigma));
    std::vector<double> weights;
    double sum = 0;
    for (int k = -radius; k <= radius; ++k)
        weights.push_back(std::exp(-k * k / (2 * sigma * sigma))), sum += weights.back();
    const auto pass = [&](const std::vector<double>& from, int dx, int dy) {
        std::vector<double> to(from.size());
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int k = -radius; k <= radius; ++k) {
                    int u = x + k * dx, v = y + k * dy;
                    if (clamped) {
                        u = std::clamp(u, 0, width - 1);
                        v = std::clamp(v, 0, height - 1);
                    }
                    if (u >= 0 && v >= 0 && u < width && v < height)
                        to[y * width + x] += weights[k + radius] / sum * from[v * width + u];
                }
        return to;
    };
    return pass(pass(in, 1, 0), 0, 1);
}

} // namespace

class GaussianSigma : public testing::TestWithParam<double> {};
INSTANTIATE_TEST_SUITE_P(FineToCoarse, GaussianSigma,
                         testing::Values(0.1, 0.4, 1.0, 2.5, 3.1, 3.3, 5.0, 7.0, 12.8, 20.0));

TEST_P(GaussianSigma, IsWithinAFiveHundredthOfTheDefinition)
{
    const double sigma = GetParam();
    // Hard edges and single pixels, the worst case for a coarse grid.
    const int width = 120, height = 90;
    const BitmapRef in = support::converted(
        *support::bitmapFrom(
            width, height,
            [](int x, int y) {
                const bool on = (x / 20 + y / 15) % 2 || (x == 33 && y == 21);
                return Rgba{on ? 1.f : 0.f, x / 119.f, (x * 7 + y * 13) % 5 / 4.f, 1};
            }),
        PixelFormat::Rgba8);
    for (const Border border : {Border::Transparent, Border::Clamped})
        for (const PixelFormat format : {PixelFormat::Rgba8, PixelFormat::RgbaF}) {
            const Image image =
                gaussian(Image::fromBitmap(support::converted(*in, format)), sigma, border);
            const BitmapRef out = support::render(image, {0, 0, width, height});
            const auto check = [&](float Rgba::*channel, const char* name) {
                std::vector<double> plane;
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x)
                        plane.push_back(support::pixel(*in, x, y).*channel);
                const std::vector<double> expected =
                    plainBlur(plane, width, height, sigma, border == Border::Clamped);
                double worst = 0;
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x)
                        worst = std::max(worst, std::abs(support::pixel(*out, x, y).*channel -
                                                         expected[y * width + x]));
                EXPECT_LT(worst, 1.0 / 512)
                    << name << ", border " << int(border) << ", format " << int(format);
            };
            check(&Rgba::r, "red");
            check(&Rgba::b, "blue");
            check(&Rgba::a, "alpha");
        }
}

TEST_P(GaussianSigma, LeavesConstantsAloneBehindAClampedBorder)
{
    const BitmapRef in = support::bitmapFrom(40, 30, [](int, int) {
        return Rgba{0.3f, 0.6f, 0.9f, 1};
    });
    for (const PixelFormat format : {PixelFormat::Rgba8, PixelFormat::RgbaF}) {
        const BitmapRef same = support::converted(*in, format);
        const BitmapRef out =
            support::renderWhole(gaussian(Image::fromBitmap(same), GetParam(), Border::Clamped));
        EXPECT_LT(support::compare(*same, *out).largest, 2e-6);
    }
}

TEST(Gaussian, GrowsATransparentExtentByThreeSigma)
{
    const Image image = Image::fromBitmap(support::picture("edges-64x48"), 5, 6);
    EXPECT_EQ(gaussian(image, 7, Border::Transparent).extent(),
              (Rect{5 - 21, 6 - 21, 64 + 42, 48 + 42}));
    EXPECT_EQ(gaussian(image, 7, Border::Clamped).extent(), image.extent());
    // Nothing is cut off visibly where the extent ends.
    const BitmapRef out = support::renderWhole(gaussian(image, 7, Border::Transparent));
    EXPECT_LT(support::pixel(*out, 0, 45).a, 2.5 / 255);
}

TEST(Gaussian, OddSigmasAreHarmless)
{
    const Image image = Image::fromBitmap(support::picture("alpha-64x48"));
    EXPECT_EQ(gaussian(image, -5, Border::Transparent), image);
    EXPECT_EQ(gaussian(image, std::nan(""), Border::Transparent), image);
    EXPECT_FALSE(gaussian(Image(), 5, Border::Transparent));
    for (const double sigma : {500.0, 1e9}) {
        EXPECT_TRUE(support::render(gaussian(image, sigma, Border::Transparent), {0, 0, 64, 48}));
        // So wide that everything is nearly one colour.
        const BitmapRef out = support::renderWhole(gaussian(image, sigma, Border::Clamped));
        const Rgba first = support::pixel(*out, 0, 0), last = support::pixel(*out, 63, 47);
        EXPECT_NEAR(first.r, last.r, 0.1);
        EXPECT_NEAR(first.a, last.a, 0.1);
    }
}

TEST(Gaussian, GivesFlatCutoutsNoDarkFringe)
{
    // One colour everywhere it is not transparent: still the same colour after blurring.
    const BitmapRef in = support::bitmapFrom(60, 40, [](int x, int y) {
        const float a = x > 15 && x < 40 && y > 10 && y < 30 ? 1 : 0;
        return Rgba{0.8f * a, 0.4f * a, 0.2f * a, a};
    });
    for (const double sigma : {1.5, 6.0}) {
        const BitmapRef out =
            support::renderWhole(gaussian(Image::fromBitmap(in), sigma, Border::Transparent));
        for (int x = 0; x < out->width(); ++x) {
            const Rgba p = support::pixel(*out, x, out->height() / 2);
            EXPECT_NEAR(p.r, 0.8 * p.a, 1e-5);
            EXPECT_NEAR(p.b, 0.2 * p.a, 1e-5);
        }
    }
}
