// Images made smaller from all of their rows, and from some.
#include "platform/imaging/Reduction.h"
#include "platform/drawing/Scaling.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

namespace {

using namespace imaging;

constexpr int kAll = 1000;

BitmapRef reduced(const Image& image, PixelRect rect, double scale, int rowsEach)
{
    return renderReduced(image, rect, scale, scale, rowsEach);
}

} // namespace

TEST(Reduction, OfAllRowsIsTheMean)
{
    for (const char* name : {"photo-96x64", "alpha-64x48"}) {
        const BitmapRef picture = support::picture(name);
        const int width = picture->width() / 4, height = picture->height() / 4;
        const BitmapRef small = reduced(support::image(picture), {0, 0, width, height}, 0.25, kAll);
        ASSERT_TRUE(small);
        EXPECT_LE(support::compare(*small, *drawing::scaledBitmap(*picture, width, height)).largest,
                  1.01 / 255)
            << name;
    }
}

TEST(Reduction, APartIsTheSameAsInTheWhole)
{
    const Image image = support::image(support::picture("photo-96x64"));
    for (const int rows : {1, 2, kAll}) {
        const BitmapRef whole = reduced(image, {0, 0, 36, 24}, 0.375, rows);
        const BitmapRef part = reduced(image, {7, 5, 11, 9}, 0.375, rows);
        ASSERT_TRUE(whole && part);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 11; ++x)
                ASSERT_EQ(support::pixel(*part, x, y),
                          support::pixel(*whole, x + 7, y + 24 - 5 - 9))
                    << x << ", " << y;
    }
}

TEST(Reduction, LooksAtSomeRowsEvenlyChosen)
{
    // Row y, counted from below, has the grey y² / 225; the top row of a bitmap is the last.
    const BitmapRef stripes = support::bitmapFrom(8, 16, [](int, int y) {
        const float v = float(15 - y) * float(15 - y) / 225;
        return support::Rgba{v, v, v, 1};
    });
    const auto expectMeans = [&](int rowsEach, float upper, float lower) {
        const support::Floats red =
            support::reds(*reduced(support::image(stripes), {0, 0, 1, 2}, 0.125, rowsEach));
        EXPECT_NEAR(red[0], upper / 225, 0.51 / 255) << rowsEach;
        EXPECT_NEAR(red[1], lower / 225, 0.51 / 255) << rowsEach;
    };
    expectMeans(1, 144, 16);          // rows 12 and 4
    expectMeans(2, 148, 20);          // 10 and 14, 2 and 6
    expectMeans(kAll, 137.5f, 17.5f); // all eight
}

// What a bitmap could not hold does not shine into the mean.
TEST(Reduction, PixelsAreLimitedBeforeTheMean)
{
    const BitmapRef bright = support::bitmapFrom(4, 4, [](int x, int) {
        return support::Rgba{x % 2 == 0 ? 9.0f : 0.0f, NAN, -1, 1};
    });
    const BitmapRef small = reduced(support::image(bright), {0, 0, 1, 1}, 0.25, kAll);
    const support::Rgba p = support::pixel(*small, 0, 0);
    EXPECT_NEAR(p.r, 0.5, 1.01 / 255);
    EXPECT_EQ(p.g, 0);
    EXPECT_EQ(p.b, 0);
}

TEST(Reduction, RefusesWhatIsNoReduction)
{
    const Image image = support::image(support::picture("photo-96x64"));
    EXPECT_FALSE(reduced(image, {0, 0, 0, 5}, 0.5, 1));
    EXPECT_FALSE(reduced(image, {0, 0, 5, 5}, 0, 1));
    EXPECT_FALSE(reduced(image, {0, 0, 5, 5}, NAN, 1));
    EXPECT_FALSE(reduced(image, {0, 0, 5, 5}, 2, 1));
#ifndef __SANITIZE_ADDRESS__ // which ends the program when so much is asked for
    EXPECT_FALSE(reduced(image, {0, 0, 100000, 100000}, 1e-6, 1));
#endif
    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(renderReduced(image, {0, 0, 5, 5}, 0.5, 0.5, 1, {stop.get_token()}));
}
