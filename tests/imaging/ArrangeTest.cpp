// Patches and repeats: every pixel is the right one's, however the result is cut and whatever the
// parts are made of.
#include "platform/imaging/Arrange.h"
#include "platform/imaging/Kernel.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

using namespace imaging;
using support::Rgba;

namespace {

// Tells its column and row in its own numbers.
Image numbered(int width, int height, int x, int y, float blue = 0)
{
    return Image::fromBitmap(
        support::bitmapFrom(width, height,
                            [=](int column, int row) {
                                return Rgba{float(column), float(height - 1 - row), blue, 1};
                            }),
        x, y);
}

// The same in opaque bytes, and as something that has to be computed.
Image bytes(int width, int height, int x, int y)
{
    const auto bitmap = support::bitmapFrom(width, height, [=](int column, int row) {
        return Rgba{float(column % 16) / 16, float((height - 1 - row) % 16) / 16, 0, 1};
    });
    return Image::fromBitmap(support::converted(*bitmap, PixelFormat::Rgba8), x, y);
}
Image computed(const Image& image)
{
    return mapPixels(image, [](Px p) { return p; });
}

Rgba at(const Bitmap& bitmap, const PixelRect& rect, int x, int y)
{
    return support::pixel(bitmap, x - rect.x, rect.y + rect.height - 1 - y);
}

int modulo(int a, int b)
{
    return (a % b + b) % b;
}

} // namespace

TEST(Patched, ShowsThePatchWhereItIsAndTheBaseElsewhere)
{
    // Across the borders of strips, 512 pixels wide, and at odd places in them.
    const Image base = numbered(700, 40, -100, -5), patch = numbered(523, 11, -3, 8, 1);
    const Image whole = patched(base, patch, {-120, -20, 800, 80});
    EXPECT_EQ(whole.extent(), (Rect{-120, -20, 800, 80}));
    for (const PixelRect& rect :
         {PixelRect{-125, -25, 810, 90}, PixelRect{-3, 8, 523, 11}, PixelRect{5, 9, 3, 2},
          PixelRect{-40, 0, 50, 30}, PixelRect{515, 10, 9, 20}, PixelRect{-90, 20, 7, 7}}) {
        const auto pixels = render(whole, rect, PixelFormat::RgbaF);
        for (int y = rect.y; y < rect.y + rect.height; ++y)
            for (int x = rect.x; x < rect.x + rect.width; ++x) {
                Rgba expected{0, 0, 0, 0};
                if (x >= -3 && x < 520 && y >= 8 && y < 19)
                    expected = {float(x + 3), float(y - 8), 1, 1};
                else if (x >= -100 && x < 600 && y >= -5 && y < 35)
                    expected = {float(x + 100), float(y + 5), 0, 1};
                ASSERT_EQ(at(*pixels, rect, x, y), expected) << x << ' ' << y;
            }
    }
    EXPECT_EQ(patched(base, {}, base.extent()), base);
}

TEST(Repeated, ShowsEveryPixelInItsTurn)
{
    for (const auto& [width, height, x, y] :
         {std::tuple{7, 5, 0, 0}, {1, 3, 100, -100}, {600, 2, -17, 9}, {29, 31, 1000, 77}}) {
        const Image cell = numbered(width, height, x, y), whole = repeated(cell);
        EXPECT_TRUE(whole.extent().isInfinite());
        for (const PixelRect& rect :
             {PixelRect{-30, -20, 90, 60}, PixelRect{x + 2, y, 4, 2}, PixelRect{x - 2, y - 1, 4, 2},
              PixelRect{500, 500, 1030, 3}, PixelRect{1'000'000'000, -1'000'000'000, 21, 2}})
            for (const Image& image : {whole, repeated(computed(cell))}) {
                const auto pixels = render(image, rect, PixelFormat::RgbaF);
                for (int j = rect.y; j < rect.y + rect.height; ++j)
                    for (int i = rect.x; i < rect.x + rect.width; ++i)
                        ASSERT_EQ(
                            at(*pixels, rect, i, j),
                            (Rgba{float(modulo(i - x, width)), float(modulo(j - y, height)), 0, 1}))
                            << i << ' ' << j;
            }
        // Bytes are read by another path.
        const PixelRect rect{-30, -20, 90, 60};
        const Image small = bytes(width, height, x, y);
        EXPECT_EQ(support::compare(*render(repeated(small), rect, PixelFormat::RgbaF),
                                   *render(repeated(computed(small)), rect, PixelFormat::RgbaF))
                      .largest,
                  0);
    }
}

TEST(Repeated, LeavesAloneWhatCannotBeRepeated)
{
    const Image plane = generate([](const Coord&) { return transparent(); });
    const Image empty = numbered(3, 3, 0, 0).cropped({});
    EXPECT_EQ(repeated(plane), plane);
    EXPECT_EQ(repeated(empty), empty);
    EXPECT_FALSE(repeated({}));
}
