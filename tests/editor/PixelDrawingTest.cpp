// Scaling to the screen, against sums over the exact areas in double precision.
#include "editor/PixelDrawing.h"
#include "tests/support/Support.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace editor;
using imaging::BitmapRef;

namespace {

constexpr Checkers kCheckers = {0xffffffff, 0xff808080, 8, {3, 5}};

// Noise over a gradient, some of it see-through where wanted.
BitmapRef noise(int width, int height, bool opaque = true)
{
    std::uint32_t state = 7;
    const auto bitmap = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c) {
                state = state * 1664525 + 1013904223;
                bitmap->rowAs<std::uint8_t>(y)[4 * x + c] =
                    c == 3 && opaque ? 255 : static_cast<std::uint8_t>(state >> 24);
            }
    return bitmap;
}

BitmapRef made(int width, int height, const std::function<support::Rgba(int, int)>& color)
{
    return support::converted(*support::bitmapFrom(width, height, color),
                              imaging::PixelFormat::Rgba8);
}

std::shared_ptr<PicturePyramid> built(const BitmapRef& bitmap)
{
    auto pyramid = std::make_shared<PicturePyramid>(bitmap);
    pyramid->build({}, [] {});
    return pyramid;
}

QImage drawn(const PicturePyramid& pyramid, const QRectF& target, const QRect& part,
             bool smooth = false)
{
    QImage canvas(part.size(), QImage::Format_RGB32);
    canvas.fill(0xff0000ff);
    drawPixels(pyramid, target, smooth, kCheckers, Canvas::of(canvas, part));
    return canvas;
}

// The average of the picture over a device pixel, over the checkers.
QRgb reference(const imaging::Bitmap& bitmap, const QRectF& target, int x, int y)
{
    const double stepX = bitmap.width() / target.width(), stepY = bitmap.height() / target.height();
    const double left = (x - target.left()) * stepX, top = (y - target.top()) * stepY;
    double sum[4] = {}, area = 0;
    for (int v = std::max(int(std::floor(top)), 0);
         v < std::min<double>(top + stepY, bitmap.height()); ++v)
        for (int u = std::max(int(std::floor(left)), 0);
             u < std::min<double>(left + stepX, bitmap.width()); ++u) {
            const double weight = (std::min(left + stepX, u + 1.0) - std::max(left, double(u))) *
                                  (std::min(top + stepY, v + 1.0) - std::max(top, double(v)));
            const std::uint8_t* p = bitmap.rowAs<std::uint8_t>(v) + 4 * u;
            for (int c = 0; c < 3; ++c)
                sum[c] += weight * p[c] * p[3] / 255.0;
            sum[3] += weight * p[3];
            area += weight;
        }
    const auto odd = [](int d) { return int(std::floor(d / 8.0)) & 1; };
    const double square = odd(x - 3) == odd(y - 5) ? 255 : 128;
    const auto component = [&](int c) {
        return int(std::lround(sum[c] / area + square * (1 - sum[3] / area / 255)));
    };
    return qRgb(component(0), component(1), component(2));
}

int largestDifference(const QImage& image, const QRect& part, const imaging::Bitmap& bitmap,
                      const QRectF& target)
{
    int largest = 0;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x) {
            if (!coveredPixels(target).contains(x, y))
                continue;
            const QRgb is = image.pixel(x - part.left(), y - part.top());
            const QRgb wanted = reference(bitmap, target, x, y);
            largest = std::max({largest, std::abs(qRed(is) - qRed(wanted)),
                                std::abs(qGreen(is) - qGreen(wanted)),
                                std::abs(qBlue(is) - qBlue(wanted))});
        }
    return largest;
}

} // namespace

TEST(PixelDrawing, AveragesWhatEachPixelCovers)
{
    const QRect part(0, 0, 200, 150);
    for (const bool opaque : {true, false}) {
        const BitmapRef bitmap = noise(128, 80, opaque);
        const auto pyramid = built(bitmap);
        for (const double scale : {1.0, 1.37, 0.83, 0.52, 0.5, 0.25}) {
            const QRectF target(7, 4, 128 * scale, 80 * scale);
            // Smaller copies are rounded to bytes.
            EXPECT_LE(largestDifference(drawn(*pyramid, target, part), part, *bitmap, target), 2)
                << scale << (opaque ? " opaque" : " see-through");
        }
    }
}

// Between powers of two the area is the pixel's own but for a tenth of a pixel on screen. What has
// no finer detail than the screen can show comes out right all the same; the finest detail comes
// out as its average.
TEST(PixelDrawing, ReducesWithoutMoire)
{
    const QRect part(0, 0, 120, 90);
    const BitmapRef waves = made(301, 203, [](int x, int y) {
        const float v = 0.5f + 0.4f * std::sin(0.03f * float(x + 2 * y));
        return support::Rgba{v, 1 - v, v * v, 1};
    });
    const BitmapRef checks = made(301, 203, [](int x, int y) {
        const float v = (x + y) % 2 == 0 ? 1.0f : 0.0f;
        return support::Rgba{v, v, v, 1};
    });
    for (const double scale : {0.39, 0.3, 0.2501, 0.11}) {
        const QRectF target(3, 4, 301 * scale, 203 * scale);
        EXPECT_LE(largestDifference(drawn(*built(waves), target, part), part, *waves, target), 5)
            << scale;
        const QImage grey = drawn(*built(checks), target, part);
        const QRect inner = coveredPixels(target).adjusted(0, 0, -1, -1) & part;
        for (int y = inner.top(); y <= inner.bottom(); ++y)
            for (int x = inner.left(); x <= inner.right(); ++x)
                ASSERT_NEAR(qRed(grey.pixel(x, y)), 128, 2) << scale << ": " << x << ", " << y;
    }
}

TEST(PixelDrawing, EnlargesToBlocksOfWholePixels)
{
    const BitmapRef bitmap = noise(9, 7, false);
    const QRectF target(-13, 5, 9 * 5, 7 * 5);
    const QRect part(0, 0, 40, 50);
    EXPECT_LE(largestDifference(drawn(*built(bitmap), target, part), part, *bitmap, target), 1);
    // At other scales blocks differ by a pixel in size, but no pixel mixes two.
    const auto opaque = noise(9, 7);
    const QImage uneven = drawn(*built(opaque), QRectF(0, 0, 9 * 3.3, 7 * 3.3), {0, 0, 30, 23});
    for (int x = 0; x < 30; ++x) {
        const auto* p = opaque->rowAs<std::uint8_t>(3) + 4 * int((x + 0.5) / 3.3);
        EXPECT_EQ(uneven.pixel(x, int(3.5 * 3.3)), qRgb(p[0], p[1], p[2])) << x;
    }
}

TEST(PixelDrawing, DoesNotDependOnThePartDrawn)
{
    const auto pyramid = built(noise(150, 130, false));
    for (const double scale : {0.07, 0.31, 0.77, 1.0, 1.6, 2.0, 3.7}) {
        const QRectF target(-20, 11, 150 * scale, 130 * scale);
        const QRect whole(0, 0, 120, 110);
        const QImage all = drawn(*pyramid, target, whole);
        for (const QRect& part : {QRect(0, 0, 17, 110), QRect(31, 20, 64, 1), QRect(40, 33, 9, 70)})
            EXPECT_EQ(drawn(*pyramid, target, part), all.copy(part)) << scale;
        // Nothing outside the target is touched.
        QImage beside = all;
        QPainter(&beside).fillRect(coveredPixels(target) & whole, QColor(0, 0, 255));
        EXPECT_EQ(beside, drawn(*pyramid, {-500, -500, 1, 1}, whole)) << scale;
    }
}

// So that nothing changes on the screen when it turns out.
TEST(PixelDrawing, ShowsOpaquePixelsAlikeBeforeTheyAreKnownToBe)
{
    const BitmapRef bitmap = noise(160, 120);
    const PicturePyramid unknown(bitmap);
    const auto known = built(bitmap);
    ASSERT_TRUE(known->isOpaque() && !unknown.isOpaque());
    const QRect part(0, 0, 150, 110);
    for (const double scale : {0.52, 0.6, 0.83, 1.0, 1.26, 1.9, 3.3})
        for (const bool smooth : {false, true}) {
            const QRectF target(-3, 2, 160 * scale, 120 * scale);
            EXPECT_EQ(drawn(unknown, target, part, smooth), drawn(*known, target, part, smooth))
                << scale << (smooth ? " smooth" : "");
        }
}

TEST(PixelDrawing, InterpolatesPixelsThatAreCoarserThanThePicture)
{
    const BitmapRef two = made(2, 1, [](int x, int) { return support::Rgba{float(x), 0, 0, 1}; });
    const QImage image = drawn(*built(two), {0, 0, 8, 2}, {0, 0, 8, 2}, true);
    const int wanted[] = {0, 0, 32, 96, 159, 223, 255, 255};
    for (int x = 0; x < 8; ++x)
        EXPECT_NEAR(qRed(image.pixel(x, 1)), wanted[x], 1) << x;
}

TEST(PicturePyramid, HalvesAndStopsWhenAsked)
{
    const auto pyramid = built(noise(101, 37));
    ASSERT_TRUE(pyramid->isComplete());
    EXPECT_TRUE(pyramid->isOpaque());
    int width = 101, height = 37;
    for (int i = 0; i < pyramid->levels(); ++i) {
        EXPECT_EQ(pyramid->level(i).width, width);
        EXPECT_EQ(pyramid->level(i).height, height);
        width = (width + 1) / 2;
        height = (height + 1) / 2;
    }
    EXPECT_LE(pyramid->level(pyramid->levels() - 1).width, 16);

    PicturePyramid stopped(noise(101, 37));
    std::stop_source stop;
    stop.request_stop();
    stopped.build(stop.get_token(), [] {});
    EXPECT_EQ(stopped.levels(), 1);
    // What is there is drawn sparsely: of the picture, and every pixel.
    const QImage image = drawn(stopped, {0, 0, 20, 15}, {0, 0, 20, 15});
    EXPECT_NE(image.pixel(3, 3), image.pixel(9, 11));
    EXPECT_NE(image.pixel(19, 14), 0xff0000ff);

    PicturePyramid none{BitmapRef()};
    none.build({}, [] {});
    EXPECT_EQ(none.levels(), 0);
}

TEST(PicturePyramid, TakesEveryFormat)
{
    const BitmapRef deep = support::bitmapFrom(2, 1, [](int x, int) {
        return support::Rgba{0.5f * float(x), 0, 0, 0.5f};
    });
    for (const auto format : {imaging::PixelFormat::Rgba16, imaging::PixelFormat::RgbaF}) {
        const auto pyramid =
            built(format == imaging::PixelFormat::RgbaF ? deep : support::converted(*deep, format));
        ASSERT_EQ(pyramid->levels(), 1);
        EXPECT_EQ(pyramid->level(0).row(0)[1], 0x800000ffu);
        EXPECT_FALSE(pyramid->isOpaque());
    }
}
