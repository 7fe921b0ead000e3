// Height fields and the material that they are shaded with.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>

using namespace support;
using foundation::Vector;

namespace {

// White from x = 0 to 2000, above and below without end.
Image halfPlane()
{
    return outputOf("CIStripesGenerator", nullptr,
                    {{"inputCenter", Vector(0, 0)}, {"inputWidth", 2000}});
}

Image heightField(const Image& mask, double radius)
{
    return outputOf("CIHeightFieldFromMask", nullptr,
                    {{"inputImage", mask.node()}, {"inputRadius", radius}});
}

// A "ball" whose red and green are the position in its square.
BitmapRef positions(int size)
{
    return bitmapFrom(size, size, [=](int x, int y) {
        return Rgba{float(x) + 0.5f, float(size - y) - 0.5f, 0, 1};
    });
}

// A slope that rises by `dx` a pixel to the right and `dy` upward.
BitmapRef slope(float dx, float dy, float alpha = 1)
{
    return bitmapFrom(9, 9, [=](int x, int y) {
        const float h = 1 + dx * float(x) - dy * float(y);
        return Rgba{h, h, h, alpha};
    });
}

Rgba shaded(const BitmapRef& heights, double scale)
{
    return at(outputOf("CIShadedMaterial", heights,
                       {{"inputShadingImage", imageValue(positions(11))}, {"inputScale", scale}}),
              4, 4);
}

} // namespace

TEST(HeightField, RisesFromTheOutlineOverTheRadius)
{
    const Image field = heightField(halfPlane(), 40);
    const auto height = [&](int x) { return at(field, x, 0).r; };
    EXPECT_EQ(height(-1), 0);
    EXPECT_EQ(height(-30), 0);
    // On a straight edge each width gives erf(d/σ√2).
    for (const int x : {0, 3, 7, 8, 19, 39, 80}) {
        double sum = 0;
        for (const double sigma : {20, 10, 5})
            sum += std::erf((x + 0.5) / (sigma * std::sqrt(2)));
        EXPECT_NEAR(height(x), sum / 3, 1.0 / 256) << x;
    }
    EXPECT_NEAR((height(7) + height(8)) / 2, 0.59, 0.01);
    const Rgba grey = at(field, 8, 0);
    EXPECT_EQ(grey, (Rgba{grey.r, grey.r, grey.r, 1}));
}

TEST(HeightField, ThinStrokesStayFlat)
{
    const BitmapRef stroke = bitmapFrom(121, 121, [](int x, int) {
        return x >= 58 && x < 62 ? Rgba{1, 1, 1, 1} : Rgba{0, 0, 0, 1};
    });
    EXPECT_EQ(at(heightField(image(stroke), 40), 60, 60).r, 0);
    EXPECT_GT(at(heightField(image(stroke), 4), 60, 60).r, 0.7f);
}

TEST(HeightField, AFlatGreyKeepsItsToneAndTheFrameSlopesDown)
{
    const BitmapRef grey = bitmapFrom(121, 121, [](int, int) { return Rgba{0.4f, 0.4f, 0.4f, 1}; });
    const Image field = heightField(image(grey), 20);
    EXPECT_EQ(field.extent(), Rect::fromEdges(0, 0, 121, 121));
    EXPECT_NEAR(at(field, 60, 60).r, 0.4f, 1e-3f);
    EXPECT_LT(at(field, 0, 60).r, 0.08f);
}

TEST(HeightField, WithoutARadiusItIsTheLuminance)
{
    for (const double radius : {0.0, -7.0, std::nan("")})
        EXPECT_THAT(at(heightField(image(bitmapFrom(1, 1,
                                                    [](int, int) {
                                                        return Rgba{0.5f, 0, 0, 0.5f};
                                                    })),
                                   radius),
                       0, 0),
                    IsColor(Rgba{0.10625f, 0.10625f, 0.10625f, 1}, 1e-6f))
            << radius;
}

TEST(ShadedMaterial, FlatShowsTheMiddleOfTheBall)
{
    EXPECT_THAT(shaded(slope(0, 0), 10), IsColor(Rgba{5.5f, 5.5f, 0, 1}, 1e-5f));
    EXPECT_THAT(shaded(slope(0.3f, 0.1f), 0), IsColor(Rgba{5.5f, 5.5f, 0, 1}, 1e-5f));
}

TEST(ShadedMaterial, ASlopeThatFacesLeftShowsTheLeftSide)
{
    // At 45 degrees, 1/√2 of the way to the outline, which ends a pixel inside the square.
    const float toSide = 4.5f * std::sqrt(0.5f);
    EXPECT_THAT(shaded(slope(0.1f, 0), 10), IsColor(Rgba{5.5f - toSide, 5.5f, 0, 1}, 1e-3f));
    EXPECT_THAT(shaded(slope(0.1f, 0), -10), IsColor(Rgba{5.5f + toSide, 5.5f, 0, 1}, 1e-3f));
    EXPECT_THAT(shaded(slope(0, 0.1f), 10), IsColor(Rgba{5.5f, 5.5f - toSide, 0, 1}, 1e-3f));
    // A cliff reaches the side, even where its square has no number.
    EXPECT_THAT(shaded(slope(1, 0), 1e30), IsColor(Rgba{1, 5.5f, 0, 1}, 1e-3f));
    // Seen through the picture's alpha.
    EXPECT_THAT(shaded(slope(0, 0, 0.5f), 10), IsColor(Rgba{2.75f, 2.75f, 0, 0.5f}, 1e-5f));
}

TEST(ShadedMaterial, NeedsAFinitePictureOfABall)
{
    const Image empty = image(positions(4)).cropped({});
    for (const Value& ball : {Value(), Value(halfPlane().node()), Value(empty.node())})
        EXPECT_FALSE(outputOf("CIShadedMaterial", slope(0, 0), {{"inputShadingImage", ball}}));
}

TEST(ShadedMaterial, GoldenShapesOfBronze)
{
    const BitmapRef ball = bitmapFrom(64, 64, [](int x, int y) {
        const float nx = (float(x) - 31.5f) / 32, ny = (31.5f - float(y)) / 32;
        const float r2 = nx * nx + ny * ny;
        if (r2 > 1)
            return Rgba{0.2f, 0.1f, 0, 1};
        const float nz = std::sqrt(1 - r2);
        const float light = std::max(0.0f, -0.5f * nx + 0.6f * ny + 0.62f * nz);
        const float mirrored = std::max(0.0f, 2 * light * nz - 0.62f), m4 = mirrored * mirrored;
        const float shine = m4 * m4 * m4 * m4;
        return Rgba{0.12f + 0.7f * light + shine, 0.08f + 0.45f * light + shine,
                    0.02f + 0.15f * light + shine, 1};
    });
    const Image relief = heightField(image(picture("alpha-64x48")), 10);
    expectGolden("height-field-of-shapes", *renderWhole(relief), {.largest = 1});
    expectGolden("shaded-material-bronze-shapes",
                 *renderWhole(outputOf("CIShadedMaterial", nullptr,
                                       {{"inputImage", relief.node()},
                                        {"inputShadingImage", imageValue(ball)},
                                        {"inputScale", 6}})),
                 {.largest = 1});
}
