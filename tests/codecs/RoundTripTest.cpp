// What is written is what is read again.
#include "tests/codecs/Samples.h"

#include <gmock/gmock.h>

#include <cmath>

using codecs::FileFormat;
using codecs::WriteOptions;
using imaging::Bitmap;
using imaging::PixelFormat;
using namespace samples;

namespace {

std::string encoded(const drawing::PictureRef& picture, FileFormat format, int quality = 100)
{
    WriteOptions options;
    options.quality = quality;
    const auto bytes = codecs::encodePicture(*picture, format, options);
    EXPECT_TRUE(bytes) << bytes.error();
    return bytes ? *bytes : std::string();
}

struct Case {
    const char* name;
    FileFormat format;
    PixelFormat pixels;
    bool opaque;
};

class Lossless : public testing::TestWithParam<Case> {};

} // namespace

TEST_P(Lossless, KeepsEveryPixel)
{
    const Case& c = GetParam();
    // A single pixel, a row longer than a strip, and sides that fit no block.
    for (const auto& [width, height] : {std::pair{1, 1}, {9001, 3}, {37, 61}}) {
        const auto source = noise(width, height, c.pixels, c.opaque);
        const auto result = decoded(encoded(pictureOf(source), c.format));
        ASSERT_TRUE(result);
        ASSERT_EQ(result->format(), c.pixels);
        ASSERT_EQ(std::pair(result->width(), result->height()), std::pair(width, height));
        EXPECT_TRUE(pixels(*result) == pixels(*source)) << width << " x " << height;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, Lossless,
    testing::Values(Case{"Png8", FileFormat::Png, PixelFormat::Rgba8, false},
                    Case{"Png8Opaque", FileFormat::Png, PixelFormat::Rgba8, true},
                    Case{"Png16", FileFormat::Png, PixelFormat::Rgba16, false},
                    Case{"Png16Opaque", FileFormat::Png, PixelFormat::Rgba16, true},
                    Case{"Tiff8", FileFormat::Tiff, PixelFormat::Rgba8, false},
                    Case{"Tiff8Opaque", FileFormat::Tiff, PixelFormat::Rgba8, true},
                    Case{"Tiff16", FileFormat::Tiff, PixelFormat::Rgba16, false},
                    Case{"Tiff16Opaque", FileFormat::Tiff, PixelFormat::Rgba16, true},
                    Case{"WebP", FileFormat::WebP, PixelFormat::Rgba8, false},
                    Case{"WebPOpaque", FileFormat::WebP, PixelFormat::Rgba8, true}),
    [](const auto& info) { return info.param.name; });

TEST(RoundTrip, RoundsSixteenBitsWhereTheFormatHoldsEight)
{
    const auto source = noise(40, 30, PixelFormat::Rgba16, false);
    const auto result = decoded(encoded(pictureOf(source), FileFormat::WebP));
    ASSERT_TRUE(result);
    for (int y = 0; y < 30; ++y)
        for (int i = 0; i < 160; ++i)
            ASSERT_EQ(result->rowAs<std::uint8_t>(y)[i],
                      std::lround(source->rowAs<std::uint16_t>(y)[i] / 257.0));
}

TEST(RoundTrip, WritesFloatsUnpremultipliedAndClamped)
{
    const auto source = Bitmap::make(3, 1, PixelFormat::RgbaF);
    const float values[] = {0.25f, 0.5f, 0, 0.5f, -1, 2, 0.5f, 1, 0.1f, NAN, 1, 0};
    std::copy(std::begin(values), std::end(values), source->rowAs<float>(0));
    const auto result = decoded(encoded(pictureOf(source), FileFormat::Png));
    ASSERT_TRUE(result);
    EXPECT_THAT(pixels(*result),
                testing::ElementsAre(Pixel{32768, 65535, 0, 32768}, Pixel{0, 65535, 32768, 65535},
                                     Pixel{0, 0, 0, 0}));
}

TEST(RoundTrip, LossyFormatsStayClose)
{
    const auto source = Bitmap::make(64, 48, PixelFormat::Rgba8);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) {
            const std::uint8_t pixel[] = {std::uint8_t(4 * x), std::uint8_t(5 * y), 90, 255};
            std::copy_n(pixel, 4, source->rowAs<std::uint8_t>(y) + 4 * x);
        }
    for (const FileFormat format : {FileFormat::Jpeg, FileFormat::WebP}) {
        const std::string good = encoded(pictureOf(source), format, 92);
        EXPECT_LT(encoded(pictureOf(source), format, 30).size(), good.size());
        const auto result = decoded(good);
        ASSERT_TRUE(result);
        int worst = 0;
        for (int y = 0; y < 48; ++y)
            for (int i = 0; i < 256; ++i)
                worst = std::max(worst, std::abs(result->rowAs<std::uint8_t>(y)[i] -
                                                 source->rowAs<std::uint8_t>(y)[i]));
        EXPECT_LE(worst, 12) << int(format);
    }
}

TEST(RoundTrip, JpegShowsTransparencyOnWhite)
{
    const auto source = Bitmap::make(16, 8, PixelFormat::Rgba8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x) {
            const std::uint8_t pixel[] = {100, 0, 0, std::uint8_t(x < 8 ? 0 : 128)};
            std::copy_n(pixel, 4, source->rowAs<std::uint8_t>(y) + 4 * x);
        }
    const auto result = decoded(encoded(pictureOf(source), FileFormat::Jpeg));
    ASSERT_TRUE(result);
    EXPECT_EQ(pixelAt(*result, 2, 4), (Pixel{255, 255, 255, 255}));
    const auto [r, g, b, a] = pixelAt(*result, 12, 4);
    EXPECT_NEAR(r, 177, 2); // (100 · 128 + 255 · 127) / 255
    EXPECT_NEAR(g, 127, 2);
    EXPECT_NEAR(b, 127, 2);
    EXPECT_EQ(a, 255);
}

TEST(RoundTrip, RefusesWhatAFormatCannotHold)
{
    const auto wide = pictureOf(Bitmap::makeClear(70'000, 1, PixelFormat::Rgba8));
    const auto error = [](const drawing::PictureRef& picture, FileFormat format) {
        return codecs::encodePicture(*picture, format, {}).error();
    };
    EXPECT_EQ(error(wide, FileFormat::WebP), "WebP holds at most 16383 pixels a side");
    EXPECT_EQ(error(wide, FileFormat::Jpeg), "JPEG holds at most 65500 pixels a side");
    EXPECT_EQ(error(wide, FileFormat::Svg),
              "SVG needs a picture that was drawn as a vector; this one is made of pixels");
    EXPECT_EQ(decoded(encoded(wide, FileFormat::Png))->width(), 70'000);
}
