// The Gaussian blur, affine transform, crop and affine tile.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include "platform/imaging/Filter.h"

#include <cmath>

using namespace support;
using foundation::AffineTransform;
using foundation::Vector;

namespace {

// Every pixel tells its place: red its column, green its row from below.
BitmapRef numbered(int width, int height)
{
    return bitmapFrom(width, height, [=](int x, int y) {
        return Rgba{float(x), float(height - 1 - y), 0, 1};
    });
}

} // namespace

TEST(GaussianBlur, APointBecomesABell)
{
    const BitmapRef point = bitmapFrom(41, 41, [](int x, int y) {
        return x == 20 && y == 20 ? Rgba{1, 1, 1, 1} : Rgba{};
    });
    const BitmapRef out = apply("CIGaussianBlur", point, {{"inputRadius", 4}});
    double sum = 0;
    for (int k = -12; k <= 12; ++k)
        sum += std::exp(-k * k / 32.0);
    for (const int k : {0, 3, 7, 12}) {
        const double expected = std::exp(-(k * k + 4) / 32.0) / (sum * sum);
        EXPECT_NEAR(pixel(*out, 20 + k, 22).r, expected, 1.0 / 512) << k;
    }
    EXPECT_EQ(compare(*apply("CIGaussianBlur", point, {{"inputRadius", 0}}), *point).largest, 0);
}

TEST(GaussianBlur, TheBorderFadesAndTheMiddleStays)
{
    const BitmapRef white = bitmapFrom(60, 60, [](int, int) { return Rgba{1, 1, 1, 1}; });
    const Image out = outputOf("CIGaussianBlur", white, {{"inputRadius", 5}});
    EXPECT_EQ(out.extent(), Rect::fromEdges(-15, -15, 75, 75));
    EXPECT_NEAR(at(out, 30, 30).a, 1, 1e-3f);
    // On the border half of the window lies outside.
    EXPECT_NEAR((at(out, 0, 30).a + at(out, -1, 30).a) / 2, 0.5f, 1.0f / 512);
}

TEST(AffineTransform, WholePixelsArriveUnchanged)
{
    const BitmapRef source = picture("alpha-64x48");
    const Image moved = outputOf("CIAffineTransform", source,
                                 {{"inputTransform", AffineTransform::translation(-1000, 77)}});
    EXPECT_EQ(moved.extent(), Rect::fromEdges(-1000, 77, -936, 125));
    EXPECT_EQ(compare(*renderWhole(moved), *renderWhole(image(source))).largest, 0);
}

TEST(AffineTransform, AQuarterTurnIsCounterClockwise)
{
    const Image turned = outputOf("CIAffineTransform", numbered(4, 3),
                                  {{"inputTransform", AffineTransform{0, 1, -1, 0, 3, 0}}});
    EXPECT_EQ(turned.extent(), Rect::fromEdges(0, 0, 3, 4));
    // (x, y) goes to (3 - y, x).
    EXPECT_EQ(at(turned, 2, 3), (Rgba{3, 0, 0, 1}));
    EXPECT_EQ(at(turned, 0, 1), (Rgba{1, 2, 0, 1}));
}

TEST(AffineTransform, ASingularMapGivesAnEmptyImage)
{
    for (const char* name : {"CIAffineTransform", "CIAffineTile"}) {
        const Image out =
            outputOf(name, numbered(4, 3), {{"inputTransform", AffineTransform{1, 2, 2, 4, 0, 0}}});
        EXPECT_TRUE(out);
        EXPECT_TRUE(out.extent().isEmpty()) << name;
    }
}

TEST(Crop, KeepsWhatLiesInTheRectangle)
{
    const auto extentAfter = [](Value rectangle) {
        return outputOf("CICrop", numbered(8, 6), {{"inputRectangle", std::move(rectangle)}})
            .extent();
    };
    EXPECT_EQ(extentAfter(Vector(2, 1, 3, 2)), Rect::fromEdges(2, 1, 5, 3));
    EXPECT_EQ(extentAfter(Vector(-5, 4.5, 7.25, 100)), Rect::fromEdges(0, 4, 3, 6));
    EXPECT_TRUE(extentAfter(Vector(20, 20, 5, 5)).isEmpty());
    EXPECT_TRUE(extentAfter(Vector(0, 0, -3, 5)).isEmpty());
    // Not a rectangle: two numbers.
    const auto crop = imaging::Filter::filterWithName("CICrop");
    EXPECT_FALSE(crop->setValueForKey(Vector(1, 2), "inputRectangle"));
    EXPECT_EQ(outputOf("CICrop", numbered(8, 6)).extent(), Rect::fromEdges(0, 0, 8, 6));
}

TEST(AffineTile, RepeatsThePictureExactly)
{
    // Where it stands, also away from the origin.
    const Image source = Image::fromBitmap(numbered(4, 4), 5, 7);
    const Image tiled = outputOf("CIAffineTile", nullptr, {{"inputImage", source.node()}});
    EXPECT_TRUE(tiled.extent().isInfinite());
    const BitmapRef out = render(tiled, {-9, -9, 30, 30});
    for (int y = -9; y < 21; ++y)
        for (int x = -9; x < 21; ++x)
            EXPECT_EQ(pixel(*out, x + 9, 20 - y),
                      (Rgba{float((x + 15) % 4), float((y + 17) % 4), 0, 1}))
                << x << ' ' << y;
    EXPECT_EQ(at(tiled, 400'000'005, -400'000'001), (Rgba{0, 0, 0, 1}));
}

TEST(AffineTile, HasNoSeamWhereThePictureIsEnlarged)
{
    const BitmapRef blackWhite = bitmapFrom(2, 1, [](int x, int) {
        return Rgba{float(x), 0, 0, 1};
    });
    const Image tiled =
        outputOf("CIAffineTile", blackWhite, {{"inputTransform", AffineTransform::scaling(4, 1)}});
    // From the middle of black to the middle of white and back, in steps of a quarter.
    const Floats wave = {0.375f, 0.125f, 0.125f, 0.375f, 0.625f, 0.875f, 0.875f, 0.625f};
    EXPECT_EQ(reds(*render(tiled, {0, 0, 8, 1})), wave);
    EXPECT_EQ(reds(*render(tiled, {-16, 3, 8, 1})), wave);
    // Opaque bytes take another path to the same colours.
    const Image bytes = outputOf("CIAffineTile", converted(*blackWhite, PixelFormat::Rgba8),
                                 {{"inputTransform", AffineTransform::scaling(4, 1)}});
    EXPECT_LT(compare(*render(bytes, {-16, 0, 41, 3}), *render(tiled, {-16, 0, 41, 3})).largest,
              1e-6);
}

TEST(AffineTile, AnInfinitePictureIsOnlyTransformed)
{
    const Image stripes =
        outputOf("CIStripesGenerator", nullptr, {{"inputCenter", Vector(0, 0)}, {"inputWidth", 3}});
    const Image tiled = outputOf(
        "CIAffineTile", nullptr,
        {{"inputImage", stripes.node()}, {"inputTransform", AffineTransform::translation(1, 0)}});
    EXPECT_EQ(reds(*render(tiled, {0, 0, 8, 1})), (Floats{0, 1, 1, 1, 0, 0, 0, 1}));
}

GOLDEN("CIGaussianBlur", "edges-64x48", {{"inputRadius", 3}}, {.largest = 1});

TEST(AffineTile, GoldenTurnedAndShrunk)
{
    expectGolden("affine-tile-turned-and-shrunk",
                 *apply("CIAffineTile", picture("photo-96x64"),
                        {{"inputTransform", AffineTransform{0.4, 0.15, -0.15, 0.4, 20, 10}}}),
                 {.largest = 1});
}
