// Halftone screens: where their dots and lines lie, and that they keep the tone.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>
#include <numbers>

using namespace support;
using foundation::Vector;

namespace {

const char* const kTurned[] = {"CIDotScreen", "CIHatchedScreen", "CILineScreen"};
const char* const kScreens[] = {"CICircularScreen", "CIDotScreen", "CIHatchedScreen",
                                "CILineScreen"};

BitmapRef flat(Rgba color, int size)
{
    return bitmapFrom(size, size, [=](int, int) { return color; });
}
Rgba grey(float v)
{
    return {v, v, v, 1};
}

Rgba mean(const Bitmap& b)
{
    double sum[4] = {};
    for (int y = 0; y < b.height(); ++y)
        for (int x = 0; x < b.width(); ++x) {
            const Rgba p = pixel(b, x, y);
            sum[0] += p.r, sum[1] += p.g, sum[2] += p.b, sum[3] += p.a;
        }
    const double n = double(b.width()) * b.height();
    return {float(sum[0] / n), float(sum[1] / n), float(sum[2] / n), float(sum[3] / n)};
}

// A soft screen of width 8 on middle grey is 1 - h; the centre is the middle of pixel (10, 10).
float soft(const char* filter, int dx, int dy, double angle = 0)
{
    Dictionary inputs{
        {"inputCenter", Vector(10.5, 10.5)}, {"inputWidth", 8}, {"inputSharpness", 0}};
    if (angle != 0)
        inputs.set("inputAngle", angle);
    return at(outputOf(filter, flat(grey(0.5f), 24), inputs), 10 + dx, 10 + dy).g;
}

} // namespace

TEST(Screens, LieOnTheirCenter)
{
    EXPECT_NEAR(soft("CICircularScreen", 0, 0), 0, 1e-5);
    EXPECT_NEAR(soft("CICircularScreen", 0, -2), 0.5, 1e-5);
    EXPECT_NEAR(soft("CICircularScreen", 4, 0), 1, 1e-5);
    EXPECT_NEAR(soft("CICircularScreen", 3, 4), 0.75, 1e-5);

    EXPECT_NEAR(soft("CILineScreen", 5, 0), 0, 1e-5);
    EXPECT_NEAR(soft("CILineScreen", -3, 2), 0.5, 1e-5);
    EXPECT_NEAR(soft("CILineScreen", 7, 4), 1, 1e-5);

    EXPECT_NEAR(soft("CIHatchedScreen", 0, 3), 0, 1e-5);
    EXPECT_NEAR(soft("CIHatchedScreen", 2, 4), 0.75, 1e-5);
    EXPECT_NEAR(soft("CIHatchedScreen", 4, -4), 1, 1e-5);

    EXPECT_NEAR(soft("CIDotScreen", 0, 8), 0, 1e-5);
    EXPECT_NEAR(soft("CIDotScreen", 4, 0), 0.5, 1e-5);
    EXPECT_NEAR(soft("CIDotScreen", 4, 4), 1, 1e-5);
    const double z = std::cos(std::numbers::pi / 4) / 2 + 0.5; // one of eight pixels off
    EXPECT_NEAR(soft("CIDotScreen", 1, 0), 0.5 - z / 2 * (1 - 0.38 * std::log(z)), 1e-5);
}

TEST(Screens, TurnCounterClockwise)
{
    // Lines at 30 degrees: steep enough to tell the sense.
    const double angle = std::numbers::pi / 6;
    for (const auto& [dx, dy] : {std::pair{3, 1}, {-2, 4}, {6, -5}}) {
        const double across = (dy * std::cos(angle) - dx * std::sin(angle)) / 8;
        EXPECT_NEAR(soft("CILineScreen", dx, dy, angle), 2 * std::abs(across - std::round(across)),
                    1e-5)
            << dx << ", " << dy;
    }
}

TEST(Screens, KeepTheMeanToneAtEverySharpness)
{
    for (const char* filter : kScreens)
        for (const double sharpness : {0.0, 0.5, 0.7, 1.0})
            for (const float tone : {0.03f, 0.2f, 0.5f, 0.65f, 0.9f}) {
                Dictionary inputs{{"inputWidth", 9.3}, {"inputSharpness", sharpness}};
                if (filter != kScreens[0])
                    inputs.set("inputAngle", 0.37);
                EXPECT_NEAR(mean(*apply(filter, flat(grey(tone), 300), inputs)).g, tone, 0.005)
                    << filter << ", sharpness " << sharpness;
            }
}

TEST(Screens, BlackAndWhiteStayClean)
{
    for (const char* filter : kScreens)
        for (const double sharpness : {0.0, 0.7, 1.0, 5.0, std::nan("")})
            for (const float tone : {0.0f, 1.0f}) {
                const BitmapRef picture = flat(grey(tone), 40);
                const BitmapRef out = apply(filter, picture, {{"inputSharpness", sharpness}});
                EXPECT_EQ(compare(*out, *picture).largest, 0) << filter << ", " << sharpness;
            }
}

TEST(Screens, ASharpEdgeIsOnePixelWide)
{
    const BitmapRef out =
        apply("CILineScreen", flat(grey(0.5f), 200), {{"inputWidth", 50}, {"inputSharpness", 1}});
    int between = 0, edges = 0;
    const auto v = [&](int y) { return pixel(*out, 100, y).r; };
    for (int y = 1; y < 200; ++y) {
        between += v(y) > 0 && v(y) < 1;
        edges += (v(y) > 0.5f) != (v(y - 1) > 0.5f);
    }
    EXPECT_EQ(edges, 8);
    EXPECT_LE(between, edges);
}

TEST(Screens, ShowTheToneThroughTheAlpha)
{
    for (const char* filter : kTurned) {
        const BitmapRef half = apply(filter, flat({0.3f, 0.2f, 0.1f, 0.5f}, 30), Dictionary{});
        const BitmapRef whole = apply(filter, flat({0.6f, 0.4f, 0.2f, 1}, 30), Dictionary{});
        for (int i = 0; i < 30; ++i) {
            const Rgba p = pixel(*whole, i, 2 * i % 30);
            EXPECT_THAT(pixel(*half, i, 2 * i % 30),
                        IsColor(Rgba{p.r / 2, p.r / 2, p.r / 2, 0.5f}, 1e-5f));
        }
    }
}

TEST(CMYKHalftone, TheInksMixToTheColor)
{
    for (const Rgba& color : {Rgba{0.8f, 0.35f, 0.2f, 1}, Rgba{0.25f, 0.5f, 0.55f, 1},
                              Rgba{0.1f, 0.1f, 0.3f, 1}, Rgba{0.7f, 0.7f, 0.7f, 1}})
        for (const auto& [gcr, ucr] : {std::pair{0.0, 0.5}, {0.5, 0.2}, {1.0, 0.5}, {1.0, 1.0}}) {
            const BitmapRef out = apply("CICMYKHalftone", flat(color, 400),
                                        {{"inputWidth", 12.7},
                                         {"inputAngle", 0.1},
                                         {"inputSharpness", 0.8},
                                         {"inputGCR", gcr},
                                         {"inputUCR", ucr}});
            EXPECT_THAT(mean(*out), IsColor(color, 0.012f)) << "GCR " << gcr << ", UCR " << ucr;
        }
}

TEST(CMYKHalftone, PrintsOnlyTheInksThatAColorNeeds)
{
    const auto printed = [](Rgba color, double ucr) {
        return apply("CICMYKHalftone", flat(color, 40), {{"inputUCR", ucr}});
    };
    // Nothing but magenta and yellow.
    EXPECT_THAT(reds(*printed({1, 0.4f, 0.2f, 1}, 0.5)), testing::Each(1));
    // Nothing but black.
    const BitmapRef black = printed(grey(0.4f), 1);
    EXPECT_EQ(greens(*black), reds(*black));
    EXPECT_EQ(blues(*black), reds(*black));
    // Light greys are not all black at a low under color removal.
    EXPECT_NE(greens(*printed(grey(0.6f), 0)), reds(*printed(grey(0.6f), 0)));
    for (const float v : {0.0f, 1.0f})
        EXPECT_EQ(compare(*printed(grey(v), 0.5), *flat(grey(v), 40)).largest, 0);
}

TEST(CMYKHalftone, DotsGrowFromTheLatticePoints)
{
    // Yellow is not turned.
    const Image dots = outputOf("CICMYKHalftone", flat({1, 1, 0.8f, 1}, 40),
                                {{"inputCenter", Vector(20.5, 20.5)}, {"inputWidth", 10}});
    EXPECT_EQ(at(dots, 20, 20).b, 0);
    EXPECT_EQ(at(dots, 30, 10).b, 0);
    EXPECT_EQ(at(dots, 25, 25).b, 1);
    // A negative width is as good as a positive one.
    EXPECT_EQ(reds(*apply("CICMYKHalftone", picture("photo-96x64"), {{"inputWidth", -6}})),
              reds(*apply("CICMYKHalftone", picture("photo-96x64"), {{"inputWidth", 6}})));
}

TEST(Halftone, Goldens)
{
    const auto drawn = [&](const char* filter, Dictionary inputs) {
        inputs.set("inputCenter", Vector(48, 32));
        inputs.set("inputWidth", 5);
        return apply(filter, picture("photo-96x64"), inputs);
    };
    expectGolden("circular-screen-around-the-middle", *drawn("CICircularScreen", {}),
                 {.largest = 2});
    expectGolden("dot-screen-turned", *drawn("CIDotScreen", {{"inputAngle", 0.4}}), {.largest = 2});
    expectGolden("hatched-screen-turned-and-sharp",
                 *drawn("CIHatchedScreen", {{"inputAngle", 0.6}, {"inputSharpness", 1}}),
                 {.largest = 2});
    expectGolden("line-screen-turned", *drawn("CILineScreen", {{"inputAngle", -0.5}}),
                 {.largest = 2});
    expectGolden("cmyk-halftone-of-photo", *drawn("CICMYKHalftone", {}), {.largest = 2});
}
