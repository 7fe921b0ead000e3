// Pictures: sizes, representations, scaling.
#include "platform/drawing/Picture.h"

#include "platform/foundation/Log.h"
#include "tests/drawing/Support.h"

#include <vector>

namespace drawing {
namespace {

imaging::BitmapRef scaled(const imaging::BitmapRef& bitmap, int width, int height)
{
    return Picture::fromBitmap(bitmap)->bitmapOfSize(width, height);
}

std::vector<int> reds(const imaging::Bitmap& bitmap)
{
    std::vector<int> out;
    for (int x = 0; x < bitmap.width(); ++x)
        out.push_back(pixel(bitmap, x, 0).red);
    return out;
}

TEST(Picture, BitmapHasItsPixelsAndMaybeAnotherSizeInPoints)
{
    const auto bitmap = bitmapFrom(6, 4, [](int, int) { return Rgba{1, 2, 3, 255}; });
    EXPECT_EQ(Picture::fromBitmap(bitmap)->size(), (Size{6, 4}));
    const PictureRef fine = Picture::fromBitmap(bitmap, {3, 2});
    EXPECT_EQ(fine->size(), (Size{3, 2}));
    EXPECT_EQ(fine->pixelsWide(), 6);
    EXPECT_EQ(fine->bitmap(), bitmap);
    EXPECT_EQ(fine->bitmapOfSize(6, 4), bitmap); // the very same
    EXPECT_FALSE(fine->isVector());
    EXPECT_EQ(Picture::fromBitmap(nullptr), nullptr);
    EXPECT_EQ(Picture::fromRecording(nullptr), nullptr);
    EXPECT_EQ(fine->bitmapOfSize(0, 4), nullptr);
    EXPECT_EQ(fine->bitmapOfSize(100'001, 4), nullptr);
}

TEST(Picture, AveragesWhatItMakesSmaller)
{
    const auto ramp = bitmapFrom(6, 1, [](int x, int) { return Rgba{40 * x, 0, 0, 255}; });
    EXPECT_EQ(reds(*scaled(ramp, 3, 1)), (std::vector{20, 100, 180}));
    // One and a half pixels each.
    EXPECT_EQ(reds(*scaled(ramp, 4, 1)), (std::vector{13, 67, 133, 187}));
    // What is transparent has no say in the colour.
    const auto half = bitmapFrom(2, 2, [](int x, int y) {
        return x == y ? Rgba{200, 100, 50, 255} : Rgba{0, 255, 0, 0};
    });
    EXPECT_EQ(pixel(*scaled(half, 1, 1), 0, 0), (Rgba{200, 100, 50, 128}));
}

TEST(Picture, GoesFromPixelCentreToPixelCentreWhenItMakesLarger)
{
    const auto pair = bitmapFrom(2, 1, [](int x, int) { return Rgba{200 * x, 0, 0, 255}; });
    const auto wide = scaled(pair, 4, 3);
    EXPECT_EQ(reds(*wide), (std::vector{0, 50, 150, 200}));
    EXPECT_EQ(pixel(*wide, 1, 2).red, 50);
    EXPECT_TRUE(wide->computeIsOpaque());
}

// One axis shrinks while the other grows, in each format, against the same sums done one by one.
TEST(Picture, ScalesEveryFormatAlike)
{
    const auto value = [](int x, int y, int i) {
        return i == 3 ? 255 : (x * 37 + y * 59 + i * 83) % 256;
    };
    const int width = 45, height = 13, newWidth = 17, newHeight = 31;
    auto eight = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    auto sixteen = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba16);
    auto floats = imaging::Bitmap::make(width, height, imaging::PixelFormat::RgbaF);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int i = 0; i < 4; ++i) {
                eight->rowAs<std::uint8_t>(y)[4 * x + i] = value(x, y, i);
                sixteen->rowAs<std::uint16_t>(y)[4 * x + i] = 257 * value(x, y, i);
                floats->rowAs<float>(y)[4 * x + i] = value(x, y, i) / 255.0f;
            }
    const auto small = scaled(eight, newWidth, newHeight);
    const auto smallSixteen = scaled(sixteen, newWidth, newHeight);
    const auto smallFloats = scaled(floats, newWidth, newHeight);
    for (int y = 0; y < newHeight; ++y)
        for (int x = 0; x < newWidth; ++x)
            for (int i = 0; i < 4; ++i) {
                const double at =
                    std::clamp((y + 0.5) * height / newHeight - 0.5, 0.0, height - 1.0);
                const int above = static_cast<int>(at), below = std::min(above + 1, height - 1);
                double sum = 0;
                constexpr int kSteps = newWidth; // a whole number of steps to every piece
                for (int k = 0; k < kSteps * width / newWidth; ++k) {
                    const int from = (x * width + k) / newWidth;
                    sum += value(from, above, i) * (1 - at + above) +
                           value(from, below, i) * (at - above);
                }
                const double expected = sum / (kSteps * width / newWidth);
                EXPECT_NEAR(small->rowAs<std::uint8_t>(y)[4 * x + i], expected, 0.501);
                EXPECT_NEAR(smallSixteen->rowAs<std::uint16_t>(y)[4 * x + i], expected * 257, 0.6);
                EXPECT_NEAR(smallFloats->rowAs<float>(y)[4 * x + i], expected / 255, 1e-5);
            }
}

TEST(Picture, DrawsARecordingAfreshForEverySizeAndKeepsTheLast)
{
    Canvas canvas({10.5, 4});
    canvas.fillRect({0, 0, 5.25, 4});
    const PictureRef picture = Picture::fromRecording(canvas.finish());
    EXPECT_TRUE(picture->isVector());
    EXPECT_TRUE(picture->recording());
    EXPECT_EQ(picture->pixelsWide(), 11);
    EXPECT_EQ(picture->pixelsHigh(), 4);
    const auto large = picture->bitmapOfSize(200, 40);
    EXPECT_EQ(pixel(*large, 99, 20).alpha, 255); // sharp, not an enlarged copy
    EXPECT_EQ(pixel(*large, 100, 20).alpha, 0);
    EXPECT_EQ(picture->bitmapOfSize(200, 40), large);
    EXPECT_EQ(picture->bitmap()->width(), 11);

    std::vector<std::string> lines;
    const auto former =
        foundation::setLogSink([&](std::string_view line) { lines.emplace_back(line); });
    EXPECT_EQ(picture->bitmapOfSize(40'000, 4), nullptr);
    foundation::setLogSink(former);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("40000 × 4"), std::string::npos);
}

TEST(Picture, KeepsTheDrawingBesideTheBitmap)
{
    Canvas canvas({10, 4});
    const auto bitmap = bitmapFrom(20, 8, [](int, int) { return Rgba{}; });
    const PictureRef picture = Picture::fromBitmapAndRecording(bitmap, canvas.finish());
    EXPECT_EQ(picture->size(), (Size{10, 4}));
    EXPECT_EQ(picture->bitmap(), bitmap);
    EXPECT_FALSE(picture->isVector());
    EXPECT_TRUE(picture->recording());
}

TEST(Picture, MakesDeferredPixelsOnce)
{
    struct Counted : DeferredSource {
        mutable int renders = 0;
        int pixelsWide() const override { return 8; }
        int pixelsHigh() const override { return 2; }
        imaging::BitmapRef render() const override
        {
            ++renders;
            return bitmapFrom(8, 2, [](int x, int) { return Rgba{x, 0, 0, 255}; });
        }
    };
    const auto source = std::make_shared<Counted>();
    const PictureRef picture = Picture::fromDeferred(source, {4, 1});
    EXPECT_EQ(picture->pixelsWide(), 8);
    EXPECT_EQ(picture->bitmapIfMade(), nullptr);
    EXPECT_EQ(source->renders, 0);
    const auto whole = picture->bitmap();
    EXPECT_EQ(picture->bitmapIfMade(), whole);
    EXPECT_EQ(picture->bitmapOfSize(8, 2), whole);
    EXPECT_EQ(picture->bitmapOfSize(4, 1)->width(), 4);
    EXPECT_EQ(picture->bitmap(), whole);
    EXPECT_EQ(source->renders, 1);
}

TEST(Picture, BlankIsTransparentAndKeepsItsSize)
{
    const PictureRef picture = Picture::blank({3.5, 2});
    EXPECT_EQ(picture->size(), (Size{3.5, 2}));
    ASSERT_TRUE(picture->bitmap());
    EXPECT_EQ(picture->bitmap()->width(), 4);
    EXPECT_EQ(pixel(*picture->bitmap(), 3, 1), (Rgba{0, 0, 0, 0}));
    EXPECT_FALSE(picture->isVector());
    EXPECT_EQ(Picture::blank({0, 5})->bitmap(), nullptr);
    EXPECT_EQ(Picture::blank({1e9, 5})->bitmap(), nullptr);
}

} // namespace
} // namespace drawing
