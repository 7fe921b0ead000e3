// The engine against small plain computations: what a pixel is must not depend on how the picture
// is stored, cut into pieces or asked for.
#include "platform/imaging/Kernel.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace imaging;
using support::Rgba;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Noise with or without transparency.
BitmapRef noise(int width, int height, bool opaque, unsigned seed = 1)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    return support::converted(
        *support::bitmapFrom(width, height,
                             [&](int, int) {
                                 const float a = opaque ? 1 : byte(random) / 255.f;
                                 return Rgba{byte(random) / 255.f * a, byte(random) / 255.f * a,
                                             byte(random) / 255.f * a, a};
                             }),
        PixelFormat::Rgba8);
}

// The pixel of a bitmap that lies at (x, y), y up from its bottom row; transparent outside.
Rgba at(const Bitmap& b, int x, int y)
{
    if (x < 0 || y < 0 || x >= b.width() || y >= b.height())
        return {0, 0, 0, 0};
    return support::pixel(b, x, b.height() - 1 - y);
}

// The definition of a bilinear sample, in double precision.
Rgba plainSample(const Bitmap& b, double x, double y)
{
    const double fx = std::floor(x - 0.5), fy = std::floor(y - 0.5);
    const double tx = x - 0.5 - fx, ty = y - 0.5 - fy;
    const int i = static_cast<int>(fx), j = static_cast<int>(fy);
    const Rgba p[4] = {at(b, i, j), at(b, i + 1, j), at(b, i, j + 1), at(b, i + 1, j + 1)};
    const auto mixed = [&](float Rgba::*c) {
        return static_cast<float>((p[0].*c * (1 - tx) + p[1].*c * tx) * (1 - ty) +
                                  (p[2].*c * (1 - tx) + p[3].*c * tx) * ty);
    };
    return {mixed(&Rgba::r), mixed(&Rgba::g), mixed(&Rgba::b), mixed(&Rgba::a)};
}

// The rectangle whole, transparent where the image does not reach; support::render cuts to the
// extent.
BitmapRef framed(const Image& image, const PixelRect& rect)
{
    return render(image, rect, PixelFormat::RgbaF);
}

double largestDifference(const Bitmap& a, const Bitmap& b)
{
    return support::compare(a, b).largest;
}

// The same image put together from odd pieces.
BitmapRef inPieces(const Image& image, const PixelRect& r)
{
    auto whole = Bitmap::make(r.width, r.height, PixelFormat::RgbaF);
    for (int y = 0; y < r.height; y += 29)
        for (int x = 0; x < r.width; x += 37) {
            const PixelRect piece{r.x + x, r.y + y, std::min(37, r.width - x),
                                  std::min(29, r.height - y)};
            const auto part =
                render(image, piece, PixelFormat::RgbaF, {.stop = {}, .threaded = false});
            for (int row = 0; row < piece.height; ++row)
                std::memcpy(whole->row(r.height - y - piece.height + row) + 16 * x, part->row(row),
                            16 * piece.width);
        }
    return whole;
}

Image wobble(const Image& image)
{
    return warp(image, image.extent(), Reach::within(8), [](const auto& source, const Coord& p) {
        return source(p + Vec2{F(6.0f) * sin(p.y() * F(0.3f)), F(5.0f) * cos(p.x() * F(0.2f))});
    });
}

Image softened(const Image& image, Border border)
{
    return neighborhood(image, 2, border, [](const auto& w) {
        return (w(-2, -1) + w(0, 0) + w(1, 2) + w(2, -2)) * F(0.25f);
    });
}

} // namespace

class EverySource : public testing::TestWithParam<PixelFormat> {
protected:
    BitmapRef source(bool opaque) const
    {
        return support::converted(*noise(41, 23, opaque), GetParam());
    }
};
INSTANTIATE_TEST_SUITE_P(Formats, EverySource,
                         testing::Values(PixelFormat::Rgba8, PixelFormat::Rgba16,
                                         PixelFormat::RgbaF));

TEST_P(EverySource, GoesThroughUnchanged)
{
    for (const bool opaque : {true, false}) {
        const BitmapRef in = source(opaque);
        const BitmapRef out = support::renderWhole(Image::fromBitmap(in), GetParam());
        EXPECT_EQ(largestDifference(*in, *out), 0) << (opaque ? "opaque" : "transparent");
    }
}

TEST_P(EverySource, SamplesAreBilinearAndTransparentOutside)
{
    for (const bool opaque : {true, false}) {
        const BitmapRef in = source(opaque);
        // A map that leaves the picture on all sides, at fractions of a pixel.
        const AffineTransform inverse{0.83, 0.41, -0.37, 1.09, 2.3, -4.7};
        const Image image =
            transformed(Image::fromBitmap(in), inverse.inverse()).cropped({-30, -30, 100, 90});
        const BitmapRef out = framed(image, {-30, -30, 100, 90});
        double worst = 0;
        for (int y = -30; y < 60; ++y)
            for (int x = -30; x < 70; ++x) {
                const Point p = inverse.apply({x + 0.5, y + 0.5});
                const Rgba expected = plainSample(*in, p.x, p.y),
                           got = support::pixel(*out, x + 30, 59 - y);
                worst = std::max({worst, std::abs(double(expected.r) - got.r),
                                  std::abs(double(expected.b) - got.b),
                                  std::abs(double(expected.a) - got.a)});
            }
        EXPECT_LT(worst, 5e-5) << (opaque ? "opaque" : "transparent");
    }
}

TEST_P(EverySource, WindowsReachOverTheBorder)
{
    const BitmapRef in = source(false);
    const BitmapRef transparent =
        support::renderWhole(softened(Image::fromBitmap(in), Border::Transparent));
    const BitmapRef clamped =
        support::renderWhole(softened(Image::fromBitmap(in), Border::Clamped));
    constexpr int taps[4][2] = {{-2, -1}, {0, 0}, {1, 2}, {2, -2}};
    for (int y = 0; y < in->height(); ++y)
        for (int x = 0; x < in->width(); ++x) {
            float open = 0, closed = 0;
            for (const auto& t : taps) {
                open += at(*in, x + t[0], y + t[1]).g / 4;
                closed += at(*in, std::clamp(x + t[0], 0, 40), std::clamp(y + t[1], 0, 22)).g / 4;
            }
            ASSERT_NEAR(at(*transparent, x, y).g, open, 1e-6) << x << ", " << y;
            ASSERT_NEAR(at(*clamped, x, y).g, closed, 1e-6) << x << ", " << y;
        }
}

TEST(Engine, PiecesAreTheSameBytesAsTheWhole)
{
    // Wider than a strip, off the origin, through every kind of node.
    const Image source = Image::fromBitmap(noise(700, 150, false), -333, 77);
    Image image = wobble(softened(source, Border::Clamped));
    image = mapColor(image, [](Rgb c) { return Rgb{c.g, pow(max(c.r, 0.0f), 0.6f), c.b}; });
    image = combine(image, source.translated(13, -7), Rect::infinite(),
                    [](Px p, Px q) { return p * F(0.5f) + q * F(0.5f); });
    image = wobble(image.cropped({-400, 60, 800, 180}));
    image = gaussian(image, 5, Border::Transparent);
    const PixelRect rect{-420, 50, 850, 210};
    const BitmapRef whole = render(image, rect, PixelFormat::RgbaF);
    ASSERT_TRUE(whole);
    EXPECT_EQ(largestDifference(*whole, *inPieces(image, rect)), 0);
    EXPECT_EQ(largestDifference(*whole, *render(image, rect, PixelFormat::RgbaF,
                                                {.stop = {}, .threaded = false})),
              0);
}

TEST(Engine, WholePixelTranslationsCopy)
{
    const BitmapRef in = noise(30, 20, false);
    const Image moved =
        transformed(Image::fromBitmap(in), AffineTransform::translation(1000003, -7));
    EXPECT_EQ(moved.extent(), (Rect{1000003, -7, 30, 20}));
    EXPECT_EQ(largestDifference(*in, *support::renderWhole(moved, PixelFormat::Rgba8)), 0);
}

TEST(Engine, PositionsFarAwayKeepTheirFractions)
{
    // A quarter pixel to the right, a hundred million pixels from the origin.
    const BitmapRef in = noise(16, 8, true);
    constexpr int far = 100'000'000;
    const Image near = transformed(Image::fromBitmap(in), AffineTransform::translation(0.25, 0));
    const Image distant =
        transformed(Image::fromBitmap(in, far, far), AffineTransform::translation(0.25, 0));
    EXPECT_LT(largestDifference(*framed(near, {0, 0, 17, 8}), *framed(distant, {far, far, 17, 8})),
              1e-5);
}

TEST(Engine, ClampingRepeatsTheBorder)
{
    const BitmapRef in = noise(5, 4, false);
    const Image clamped = Image::fromBitmap(in, 10, 10).clampedToExtent();
    EXPECT_TRUE(clamped.extent().isInfinite());
    const BitmapRef out = support::render(clamped, {0, 0, 600, 30});
    for (int y = 0; y < 30; ++y)
        for (const int x : {0, 9, 10, 12, 14, 15, 511, 512, 599})
            EXPECT_EQ(support::pixel(*out, x, 29 - y),
                      at(*in, std::clamp(x - 10, 0, 4), std::clamp(y - 10, 0, 3)));
}

TEST(Engine, ExtentsAreWholePixelsRoundedOutward)
{
    const Image image = Image::fromBitmap(noise(10, 10, true));
    EXPECT_EQ(image.cropped({2.3, 2.7, 3, 3}).extent(), (Rect{2, 2, 4, 4}));
    EXPECT_TRUE(image.cropped({50, 50, 5, 5}).extent().isEmpty());
    EXPECT_TRUE(image.cropped({std::nan(""), 0, 5, 5}).extent().isEmpty());
    EXPECT_EQ(image.cropped(Rect::infinite()), image);
    EXPECT_TRUE(Image().extent().isEmpty());
    EXPECT_TRUE(transformed(image, AffineTransform::scaling(0, 1)).extent().isEmpty());
    EXPECT_TRUE(transformed(image, AffineTransform::scaling(std::nan(""), 1)).extent().isEmpty());
    const BitmapRef outside = framed(image, {-3, -3, 4, 4});
    EXPECT_EQ(support::pixel(*outside, 0, 0), (Rgba{0, 0, 0, 0}));
}

TEST(Engine, ColoursWithoutAlphaStayAway)
{
    // A formula that gives transparent pixels a colour, even an infinite one, shows nothing.
    const Image image =
        mapColor(Image::fromBitmap(Bitmap::makeClear(4, 4, PixelFormat::Rgba8)), [](Rgb) {
            return Rgb{kInfinity, 1.0f, 1.0f};
        });
    EXPECT_EQ(support::pixel(*support::renderWhole(image), 1, 1), (Rgba{0, 0, 0, 0}));
}

TEST(Renderer, RoundsToNearestAndLimits)
{
    const BitmapRef in = support::bitmapFrom(5, 1, [](int x, int) {
        constexpr float reds[] = {100.49f / 255, 100.51f / 255, -3, 7, NAN};
        return Rgba{reds[x], 0.25f, 0, x == 1 ? 1.0f : 0.5f};
    });
    const BitmapRef bytes = support::renderWhole(Image::fromBitmap(in), PixelFormat::Rgba8);
    const auto* p = bytes->rowAs<std::uint8_t>(0);
    EXPECT_EQ(p[0], 201); // 100.49 / 255 at half alpha
    EXPECT_EQ(p[3], 128);
    EXPECT_EQ(p[4], 101);
    EXPECT_EQ(p[8], 0);
    EXPECT_EQ(p[12], 255);
    EXPECT_EQ(p[16], 0);
    EXPECT_EQ(p[17], 128);
}

TEST(Renderer, RefusesWhatCannotBe)
{
    const Image image = Image::fromBitmap(noise(4, 4, true));
    EXPECT_FALSE(render(image, {0, 0, 0, 4}, PixelFormat::Rgba8));
    EXPECT_FALSE(render(image, {0, 0, -4, 4}, PixelFormat::Rgba8));
    EXPECT_FALSE(render(image, {0, 0, 100'001, 1}, PixelFormat::Rgba8));
    EXPECT_FALSE(render(image, {2'147'483'000, 0, 4, 4}, PixelFormat::Rgba8));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(render(image, {0, 0, 4, 4}, PixelFormat::Rgba8,
                        {.stop = stop.get_token(), .threaded = true}));
}
