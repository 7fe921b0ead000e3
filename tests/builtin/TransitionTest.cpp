// Transitions: beginnings and ends, masks at points worked out by hand, and a page that is rolled
// up.
#include "platform/builtin/Hash.h"
#include "platform/imaging/Filter.h"
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>
#include <cstring>
#include <limits>

using namespace support;
using foundation::Color;
using foundation::Vector;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

const char* const kAll[] = {"CIDissolveTransition", "CIModTransition", "CIBarsSwipeTransition",
                            "CIPageCurlTransition"};

BitmapRef flat(int width, int height, Rgba color)
{
    return bitmapFrom(width, height, [=](int, int) { return color; });
}

// Inputs that a filter does not have are left out.
Image between(std::string_view filter, const Image& from, const Image& to, const Dictionary& inputs)
{
    registerFilters();
    const auto made = imaging::Filter::filterWithName(filter);
    made->setDefaults();
    made->setValueForKey(from, "inputImage");
    made->setValueForKey(to, "inputTargetImage");
    for (const auto& [key, value] : inputs)
        if (made->description().input(key)) {
            EXPECT_TRUE(made->setValueForKey(value, key)) << key;
        }
    return made->outputImage();
}

// How much of the target there is at a pixel, between black and white pictures of 400 × 300.
float mask(std::string_view filter, const Dictionary& inputs, int x, int y)
{
    static const Image black = image(flat(400, 300, {0, 0, 0, 1})),
                       white = image(flat(400, 300, {1, 1, 1, 1}));
    return at(between(filter, black, white, inputs), x, y).r;
}

} // namespace

TEST(Transition, BeginsWithThePictureAndEndsWithTheTarget)
{
    const Image from = image(picture("photo-96x64")).cropped({0, 0, 64, 48}),
                to = image(picture("alpha-64x48"));
    const Rect all{0, 0, 64, 48};
    for (const char* filter : kAll)
        for (const double time : {0.0, -3.0, kNan, 1.0, 7.0}) {
            const Image out = between(filter, from, to,
                                      {{"inputTime", time}, {"inputExtent", Vector(0, 0, 64, 48)}});
            EXPECT_EQ(compare(*render(out, all), *render(time >= 1 ? to : from, all)).largest, 0)
                << filter << " at " << time;
        }
}

TEST(Transition, TilesAreTheWholeHalfWay)
{
    const Image opaque = image(picture("photo-96x64")), soft = image(picture("alpha-64x48"));
    for (const char* filter : kAll)
        for (const Image& from :
             {opaque, soft, opaque.translated(-7, 5).cropped({-7, 5, 61, 50})}) {
            const Image out = between(filter, from, opaque.translated(9, 3),
                                      {{"inputTime", 0.4},
                                       {"inputAngle", 0.7},
                                       {"inputRadius", 20},
                                       {"inputWidth", 6.5},
                                       {"inputShadingImage", imageValue(picture("alpha-64x48"))},
                                       {"inputExtent", Vector(2, 3, 64, 48)}});
            const Rect e = out.extent();
            const BitmapRef whole = renderWhole(out);
            for (int y = 0; y + 7 <= whole->height(); y += 7)
                for (int x = 0; x + 11 <= whole->width(); x += 11) {
                    const BitmapRef tile = render(out, {e.x + x, e.top() - y - 7, 11, 7});
                    for (int j = 0; j < 7; ++j)
                        ASSERT_EQ(std::memcmp(tile->row(j), whole->row(y + j) + 16 * x, 16 * 11), 0)
                            << filter << " at " << x << ", " << y;
                }
        }
}

TEST(Transition, MasksCoverBothPicturesUnlessTheTargetIsInfinite)
{
    const Image from = image(flat(10, 10, {1, 0, 0, 1})),
                to = image(flat(4, 4, {0, 1, 0, 1})).translated(20, -3);
    const Image clear =
        outputOf("CIConstantColorGenerator", nullptr, {{"inputColor", Color::clear()}});
    for (const char* filter : {kAll[0], kAll[1], kAll[2]}) {
        EXPECT_EQ(between(filter, from, to, {}).extent(), Rect::fromEdges(0, -3, 24, 10));
        EXPECT_EQ(between(filter, from, clear, {{"inputTime", 0.5}}).extent(), from.extent());
        EXPECT_EQ(between(filter, from, Image(), {{"inputTime", 0.5}}).extent(), from.extent());
        EXPECT_TRUE(between(filter, clear, to, {{"inputTime", 0.5}}).extent().isInfinite());
    }
    EXPECT_THAT(at(between(kAll[0], from, clear, {{"inputTime", 0.25}}), 3, 3),
                IsColor(Rgba{0.75f, 0, 0, 0.75f}, 1e-6f));
    EXPECT_THAT(at(between(kAll[0], from, to, {{"inputTime", 0.25}}), 21, -2),
                IsColor(Rgba{0, 0.25f, 0, 0.25f}, 1e-6f));
}

TEST(Mod, HolesAtPointsWorkedOutByHand)
{
    // In the middle of a hole at the centre: slopes of 1 across and 0.2π along.
    const double growth = std::sqrt(1 + 0.04 * M_PI * M_PI);
    const auto holes = [](double time, double angle, double radius, double compression) {
        return Dictionary{{"inputCenter", Vector(100.5, 100.5)},
                          {"inputTime", time},
                          {"inputAngle", angle},
                          {"inputRadius", radius},
                          {"inputCompression", compression}};
    };
    EXPECT_NEAR(mask("CIModTransition", holes(0.2, 0, 1, 300), 100, 100),
                0.2 * (std::sqrt(2) + growth) / growth, 1e-5);
    // A hundred pixels out the lattice is half as fine: two and a half holes of 20 away from the
    // centre, at half a pitch from either hole, where a hole grows by 1/4 a pixel across and
    // 0.1π along.
    const double far = std::sqrt(0.0625 + 0.01 * M_PI * M_PI);
    const double expected = (0.7 * (10 * std::sqrt(2) + far) - 10) / far;
    EXPECT_NEAR(mask("CIModTransition", holes(0.7, 0, 10, 100), 200, 100), expected, 1e-3);
    // Turned by a quarter, the same is found above.
    EXPECT_NEAR(mask("CIModTransition", holes(0.7, M_PI / 2, 10, 100), 100, 200), expected, 1e-2);
    EXPECT_EQ(mask("CIModTransition", holes(0.66, 0, 10, 100), 200, 100), 0);
    EXPECT_EQ(mask("CIModTransition", holes(0.75, 0, 10, 100), 200, 100), 1);
}

TEST(BarsSwipe, BarsArriveInTheOrderOfTheirDelays)
{
    // Ten bars of 30 from the left, delayed by up to 300 pixels.
    const Dictionary inputs{{"inputAngle", 0}, {"inputTime", 0.5}};
    for (std::uint32_t k = 0; k < 10; ++k) {
        const double head = 0.5 * (400 + 300) - 300 * builtin::h01(k, 0u, 40);
        const int row = static_cast<int>(30 * k) + 14, pixel = static_cast<int>(head);
        EXPECT_NEAR(mask("CIBarsSwipeTransition", inputs, pixel, row), head - pixel, 1e-4) << k;
        EXPECT_EQ(mask("CIBarsSwipeTransition", inputs, pixel - 1, row), 1);
        EXPECT_EQ(mask("CIBarsSwipeTransition", inputs, pixel + 1, row), 0);
    }
}

TEST(BarsSwipe, SidesAreSmoothAndDelaysAreLimited)
{
    // The border of the first two bars runs through the middle of row 10.
    const auto bars = [](double time) {
        return Dictionary{
            {"inputAngle", 0}, {"inputTime", time}, {"inputWidth", 10.5}, {"inputBarOffset", 1e30}};
    };
    // The delays are up to twice the length of 400: bar 0 has the hash that is known for (0, 0).
    const auto head = [](std::uint32_t k, double time) {
        return time * 1200 - 800 * builtin::h01(k, 0u, 40);
    };
    for (const double time : {0.3, 0.45, 0.6, 0.8}) {
        const auto filled = [&](std::uint32_t k) {
            return std::clamp(head(k, time) - 200.5 + 0.5, 0.0, 1.0);
        };
        EXPECT_NEAR(mask("CIBarsSwipeTransition", bars(time), 200, 10), (filled(0) + filled(1)) / 2,
                    1e-3)
            << time;
        EXPECT_NEAR(mask("CIBarsSwipeTransition", bars(time), 200, 9), filled(0), 1e-3) << time;
        EXPECT_NEAR(mask("CIBarsSwipeTransition", bars(time), 200, 11), filled(1), 1e-3) << time;
    }
    // An infinite picture has no side to come from.
    const Image red = outputOf("CIConstantColorGenerator", nullptr);
    EXPECT_THAT(at(between(kAll[2], red, Image(), {{"inputTime", 0.25}}), 5, 5),
                IsColor(Rgba{0.75f, 0, 0, 0.75f}, 1e-6f));
}

namespace {

// A page of 100 × 20 whose red is the position along it, on a green table. Half way, 59.5 pixels of
// it are rolled up from the right over a cylinder of radius 10 that touches the table at 40.5.
class PageCurl : public testing::Test {
protected:
    static BitmapRef positions(int width, int height)
    {
        return bitmapFrom(width, height, [=](int x, int y) {
            return Rgba{float(x) + 0.5f, float(height - y) - 0.5f, 0, 1};
        });
    }
    static Dictionary halfWay(Dictionary more = {})
    {
        more.set("inputTime", 0.5);
        more.set("inputRadius", 10);
        more.set("inputExtent", Vector(0, 0, 100, 20));
        return more;
    }
    static Image page(const Dictionary& inputs)
    {
        return between("CIPageCurlTransition", image(positions(100, 20)),
                       image(flat(100, 20, {0, 1, 0, 1})), inputs);
    }
    static float red(int x, const Dictionary& more = {})
    {
        return at(page(halfWay(more)), x, 10).r;
    }

    static constexpr float kLine = 40.5f, kRoll = 10;
    static constexpr float kPi = 3.14159265f;
};

} // namespace

TEST_F(PageCurl, ShowsThePagePointThatTheSheetLengthLeadsTo)
{
    // Flat on the table.
    EXPECT_EQ(at(page(halfWay()), 0, 10), (Rgba{0.5f, 10.5f, 0, 1}));
    // Twenty pixels back from the line, turned over: half a turn of the roll and twenty more.
    EXPECT_NEAR(red(20), kLine + kPi * kRoll + 20, 1e-3f);
    // On top of the roll, half its radius beyond the line: 150 degrees round, leaning by 30.
    const float light = 0.4f + 0.6f * std::sqrt(0.75f);
    EXPECT_NEAR(red(45), (kLine + kRoll * kPi * 5 / 6) * light, 1e-3f);
    // Below it, seen through a clear back: 30 degrees round, and half of the light's effect.
    const Dictionary clear{{"inputBacksideImage", imageValue(flat(100, 20, {0, 0, 0, 0}))}};
    EXPECT_NEAR(red(45, clear), (kLine + kRoll * kPi / 6) * (1 + light) / 2, 1e-3f);
    // The back has its own picture.
    const Dictionary blue{{"inputBacksideImage", imageValue(flat(100, 20, {0, 0, 1, 1}))}};
    EXPECT_THAT(at(page(halfWay(blue)), 20, 10), IsColor(Rgba{0, 0, 1, 1}, 1e-5f));
}

TEST_F(PageCurl, TheShadowFallsOnTheTargetAndOnThePage)
{
    // Three pixels beyond the roll, of nine.
    const double part = 3.0 / 9, shade = 0.5 * (1 - part * part * (3 - 2 * part));
    EXPECT_THAT(at(page(halfWay()), 53, 10), IsColor(Rgba{0, float(1 - shade), 0, 1}, 1e-4f));
    EXPECT_EQ(at(page(halfWay()), 62, 10), (Rgba{0, 1, 0, 1}));
    // The end of the flap lies at 40.5 - (59.5 - 10π) = 12.416; the pixel at 8.5 is 3.916 beside
    // it.
    const double beside = (12.416 - 8.5) / 9;
    EXPECT_NEAR(red(8), 8.5 * (1 - 0.5 * (1 - beside * beside * (3 - 2 * beside))), 1e-2);
    // A clear back throws none.
    EXPECT_EQ(at(page(halfWay({{"inputBacksideImage", imageValue(flat(100, 20, {0, 0, 0, 0}))}})),
                 53, 10),
              (Rgba{0, 1, 0, 1}));
}

TEST_F(PageCurl, TheBallColorsTheSides)
{
    // Its red is the position in its square of 11 pixels: 5.5 in the middle, 10 at the right.
    const Dictionary opaque{{"inputShadingImage", imageValue(positions(11, 11))}};
    EXPECT_NEAR(red(20, opaque), (kLine + kPi * kRoll + 20) * 5.5f, 1e-2f);
    EXPECT_NEAR(red(45, opaque), (kLine + kRoll * kPi * 5 / 6) * 7.75f, 1e-2f);
    // Translucent black darkens.
    const Dictionary dark{{"inputShadingImage", imageValue(flat(11, 11, {0, 0, 0, 0.25f}))}};
    EXPECT_NEAR(red(20, dark), (kLine + kPi * kRoll + 20) * 0.75f, 1e-2f);
    // The front leans the other way.
    Dictionary front = opaque;
    front.set("inputBacksideImage", imageValue(flat(100, 20, {0, 0, 0, 0})));
    EXPECT_NEAR(red(45, front), (kLine + kRoll * kPi / 6) * (1 + 3.25f) / 2, 1e-2f);
}

TEST_F(PageCurl, NothingLeavesThePage)
{
    const Image red = outputOf("CIConstantColorGenerator", nullptr),
                wide = image(picture("photo-96x64"));
    for (const double time : {0.2, 0.5, 0.9})
        for (const double angle : {0.0, 0.7, -2.4}) {
            const Image out = between("CIPageCurlTransition", wide, red,
                                      {{"inputTime", time},
                                       {"inputAngle", angle},
                                       {"inputExtent", Vector(20.25, 10.5, 40, 30)}});
            EXPECT_EQ(out.extent(), Rect::fromEdges(20, 10, 61, 41));
            const auto around = imaging::render(out, {15, 5, 51, 41}, PixelFormat::RgbaF);
            for (int y = 0; y < 41; ++y)
                for (int x = 0; x < 51; ++x) {
                    const bool inside = x >= 5 && x < 46 && y >= 5 && y < 36;
                    // The table shows wherever the page does not.
                    ASSERT_NEAR(pixel(*around, x, y).a, inside ? 1 : 0, 1e-5f) << x << ", " << y;
                }
        }
}

TEST_F(PageCurl, PagesWithoutPixelsOrWithoutEnd)
{
    const double inf = std::numeric_limits<double>::infinity();
    for (const Vector& empty : {Vector(0, 0, 0, 20), Vector(0, 0, -5, 20), Vector(kNan, 0, 10, 10)})
        EXPECT_TRUE(page({{"inputTime", 0.5}, {"inputExtent", empty}}).extent().isEmpty());
    EXPECT_THAT(
        at(page({{"inputTime", 0.5}, {"inputExtent", Vector(-inf, -inf, inf, inf)}}), 3, 10),
        IsColor(Rgba{1.75f, 5.75f, 0, 1}, 1e-5f));
    // Thin and tiny pages, and rolls of any size.
    for (const double radius : {-1.0, 0.0, 1e-30, 1e30, inf, kNan})
        for (const Vector& small : {Vector(3, 3, 0.25, 12), Vector(5, 5, 1, 1)})
            for (const float v : reds(*renderWhole(
                     page({{"inputTime", 0.5}, {"inputRadius", radius}, {"inputExtent", small}}))))
                EXPECT_TRUE(std::isfinite(v));
}

TEST(Transition, Goldens)
{
    const Image photo = image(picture("photo-96x64")),
                stripes = outputOf("CIStripesGenerator", nullptr,
                                   {{"inputWidth", 8},
                                    {"inputColor0", Color::rgb(0.9f, 0.85f, 0.7f)},
                                    {"inputColor1", Color::rgb(0.3f, 0.4f, 0.5f)}}),
                shapes = image(picture("alpha-64x48"));
    expectGolden("mod-half-way",
                 *renderWhole(between("CIModTransition", photo, stripes,
                                      {{"inputTime", 0.5},
                                       {"inputRadius", 9},
                                       {"inputCompression", 60},
                                       {"inputCenter", Vector(40, 30)}})),
                 {.largest = 1});
    expectGolden(
        "bars-from-below-left",
        *renderWhole(between("CIBarsSwipeTransition", photo, stripes,
                             {{"inputTime", 0.5}, {"inputAngle", 0.6}, {"inputWidth", 9}})),
        {.largest = 1});
    const Dictionary corner{{"inputTime", 0.4}, {"inputAngle", 0.7}, {"inputRadius", 14}};
    Dictionary whole = corner, cut = corner;
    whole.set("inputExtent", Vector(0, 0, 96, 64));
    cut.set("inputExtent", Vector(0, 0, 64, 48));
    expectGolden("page-curl-over-stripes",
                 *renderWhole(between("CIPageCurlTransition", photo, stripes, whole)),
                 {.largest = 1});
    expectGolden("page-curl-of-shapes",
                 *renderWhole(between("CIPageCurlTransition", shapes, Image(), cut)),
                 {.largest = 1});
}
