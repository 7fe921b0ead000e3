// Pictures stretched, fitted on white and cut, down to the part of a pixel that is covered.
#include "plugin/Resizing.h"

#include "platform/drawing/Picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using drawing::Picture;
using foundation::PictureRef;
using foundation::Rect;
using foundation::Result;
using foundation::Size;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::PixelFormat;
using plugin::cropped;
using plugin::resized;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

using Levels = std::vector<int>;

// Red is the column, green the row from the top; every pixel has this alpha.
PictureRef grid(int width, int height, int alpha = 255, PixelFormat format = PixelFormat::Rgba8)
{
    const auto bitmap = Bitmap::make(width, height, format);
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < 4 * width; ++i) {
            const int value[] = {i / 4, y, 0, alpha};
            if (format == PixelFormat::Rgba8)
                bitmap->rowAs<std::uint8_t>(y)[i] = static_cast<std::uint8_t>(value[i % 4]);
            else
                bitmap->rowAs<std::uint16_t>(y)[i] = static_cast<std::uint16_t>(value[i % 4] * 257);
        }
    return Picture::fromBitmap(bitmap);
}

// One component of a row or a column.
Levels row(const PictureRef& picture, int y, int component)
{
    const BitmapRef bitmap = picture->bitmap();
    Levels levels;
    for (int x = 0; x < bitmap->width(); ++x)
        levels.push_back(bitmap->rowAs<std::uint8_t>(y)[4 * x + component]);
    return levels;
}

Levels column(const PictureRef& picture, int x, int component)
{
    const BitmapRef bitmap = picture->bitmap();
    Levels levels;
    for (int y = 0; y < bitmap->height(); ++y)
        levels.push_back(bitmap->rowAs<std::uint8_t>(y)[4 * x + component]);
    return levels;
}

PictureRef made(Result<PictureRef> result)
{
    EXPECT_TRUE(result) << result.error();
    return result ? *result : nullptr;
}

} // namespace

TEST(Resizing, StretchesTheWholePicture)
{
    const PictureRef picture = made(resized(grid(8, 2), 4, 4, false));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->size(), (Size{4, 4}));
    // Pairs of columns averaged, rounded up; rows between the two centres.
    EXPECT_THAT(row(picture, 0, 0), ElementsAre(1, 3, 5, 7));
    EXPECT_THAT(column(picture, 0, 1), ElementsAre(0, 0, 1, 1));
    EXPECT_THAT(row(picture, 3, 3), Each(255));
}

TEST(Resizing, FitsAThumbnailInTheMiddleOfWhite)
{
    const PictureRef wide = made(resized(grid(200, 100), 100, 100, true));
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->size(), (Size{100, 100}));
    const Levels blue = column(wide, 50, 2);
    EXPECT_EQ(std::ranges::count(blue, 255), 50);
    EXPECT_EQ(std::ranges::find(blue, 0) - blue.begin(), 25);
    EXPECT_THAT(row(wide, 25, 2), Each(0));

    const PictureRef tall = made(resized(grid(10, 40), 20, 20, true));
    ASSERT_TRUE(tall);
    EXPECT_EQ(std::ranges::count(row(tall, 10, 2), 0), 5 - 1); // 7.5 to 12.5: four are whole
    // Half of the edge pixels is white.
    EXPECT_EQ(row(tall, 10, 2)[7], 128);
    EXPECT_EQ(row(tall, 10, 2)[12], 128);
    EXPECT_THAT(column(tall, 10, 2), Each(0));
}

TEST(Resizing, KeepsTheTransparencyOfAThumbnailAndAThinOnesTrace)
{
    const PictureRef clear = made(resized(grid(20, 10, 0), 20, 20, true));
    ASSERT_TRUE(clear);
    EXPECT_THAT(row(clear, 10, 3), Each(0));
    EXPECT_THAT(row(clear, 4, 3), Each(255));
    EXPECT_THAT(row(clear, 4, 0), Each(255));

    // A quarter of a pixel high, across two rows.
    const PictureRef line = made(resized(grid(200, 1), 50, 50, true));
    ASSERT_TRUE(line);
    const Levels blue = column(line, 25, 2);
    EXPECT_EQ(blue[23], 255);
    EXPECT_NEAR(blue[24], 255 * 7 / 8, 1);
    EXPECT_NEAR(blue[25], 255 * 7 / 8, 1);
    EXPECT_EQ(blue[26], 255);
}

TEST(Resizing, KeepsSixteenBitsAndMetadata)
{
    drawing::PictureMetadata metadata;
    metadata.xmp = "kept";
    const PictureRef fine =
        Picture::fromBitmap(grid(8, 8, 255, PixelFormat::Rgba16)->bitmap(), metadata);
    for (const bool asThumbnail : {false, true}) {
        const PictureRef picture = made(resized(fine, 5, 3, asThumbnail));
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->bitmap()->format(), PixelFormat::Rgba16);
        EXPECT_EQ(picture->metadata().xmp, "kept");
    }
}

TEST(Resizing, DrawsDrawingsAfresh)
{
    drawing::Canvas canvas({4, 4});
    canvas.setColor(foundation::Color::black());
    canvas.fillRect({0, 0, 2, 4});
    const PictureRef drawn = Picture::fromRecording(canvas.finish());
    const PictureRef large = made(resized(drawn, 40, 40, false));
    ASSERT_TRUE(large);
    // No pixel between black and transparent.
    EXPECT_EQ(std::ranges::count(row(large, 20, 3), 255), 20);
    EXPECT_EQ(std::ranges::count(row(large, 20, 3), 0), 20);
    const PictureRef fitted = made(resized(drawn, 80, 40, true));
    ASSERT_TRUE(fitted);
    EXPECT_EQ(std::ranges::count(row(fitted, 20, 3), 0), 20);
    EXPECT_EQ(row(fitted, 20, 0)[20], 0);
    EXPECT_EQ(row(fitted, 20, 0)[19], 255);
}

TEST(Resizing, SaysWhyAPictureCannotBeMade)
{
    const struct {
        int width, height;
        const char* why;
    } cases[] = {
        {0, 5, "sides are from 1"}, {5, -1, "sides are from 1"}, {100'001, 1, "sides are from 1"}};
    for (const auto& c : cases)
        for (const bool asThumbnail : {false, true}) {
            const auto result = resized(grid(4, 4), c.width, c.height, asThumbnail);
            ASSERT_FALSE(result);
            EXPECT_THAT(result.error(), HasSubstr(c.why));
        }
    const auto huge = plugin::fitsMemory(100'000, 100'000, 1 << 20);
    ASSERT_FALSE(huge);
    EXPECT_THAT(huge.error(), HasSubstr("100000 x 100000 pixels needs more memory"));
    EXPECT_FALSE(resized(nullptr, 4, 4, true));
    EXPECT_FALSE(resized(Picture::blank({0, 0}), 4, 4, true));
}

TEST(Cropping, TakesTheNearestWholePixelsWithYUp)
{
    const PictureRef part = made(cropped(grid(10, 8), {2.4, 0.6, 3, 2.2}));
    ASSERT_TRUE(part);
    EXPECT_EQ(part->size(), (Size{3, 2}));
    EXPECT_THAT(row(part, 0, 0), ElementsAre(2, 3, 4));
    // From 1 to 3 above the bottom: the sixth and seventh row from the top.
    EXPECT_THAT(column(part, 0, 1), ElementsAre(5, 6));

    // Two pixels to a point; over the edge.
    const PictureRef dense = Picture::fromBitmap(grid(10, 8)->bitmap(), Size{5, 4});
    const PictureRef corner = made(cropped(dense, {4, 3, 100, 100}));
    ASSERT_TRUE(corner);
    EXPECT_EQ(corner->size(), (Size{1, 1}));
    EXPECT_THAT(row(corner, 0, 0), ElementsAre(8, 9));

    // Never nothing, unless there is nothing.
    EXPECT_EQ(made(cropped(grid(10, 8), {3.1, 3.1, 0.2, 0.2}))->size(), (Size{1, 1}));
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    for (const Rect& outside : {Rect{10, 0, 5, 5}, Rect{0, -5, 5, 5}, Rect{1, 1, 0, 3},
                                Rect{kNan, 0, 5, 5}, Rect{0, 0, 5, kNan}})
        EXPECT_FALSE(cropped(grid(10, 8), outside));
}

TEST(Cropping, LeavesADrawingADrawing)
{
    drawing::Canvas canvas({20, 10});
    canvas.setColor(foundation::Color::black());
    canvas.fillRect({10, 0, 10, 5});
    drawing::Path line;
    line.moveTo({10, 7.5});
    line.lineTo({20, 7.5});
    canvas.stroke(line);
    const PictureRef part = made(cropped(Picture::fromRecording(canvas.finish()), {8, 2, 8, 8}));
    ASSERT_TRUE(part);
    ASSERT_TRUE(part->recording());
    EXPECT_EQ(part->recording()->size, (Size{8, 8}));
    // The drawing moved, and the pixels of the whole one, are the same picture.
    const auto redrawn = drawing::rasterize(*part->recording(), 8, 8);
    ASSERT_TRUE(redrawn) << redrawn.error();
    for (int y = 0; y < 8; ++y)
        EXPECT_EQ(row(part, y, 3), row(Picture::fromBitmap(*redrawn), y, 3)) << y;
    EXPECT_THAT(row(part, 7, 3), ElementsAre(0, 0, 255, 255, 255, 255, 255, 255));
}
