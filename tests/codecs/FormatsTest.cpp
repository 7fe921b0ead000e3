// Every kind of content that the formats can hold, in files made by the format libraries alone.
#include "tests/codecs/Samples.h"

#include <gmock/gmock.h>
#include <png.h>
#include <tiffio.h>

#include <cstdio>

#include <jpeglib.h>

using imaging::Bitmap;
using imaging::PixelFormat;
using testing::ElementsAre;
using testing::ElementsAreArray;
using namespace samples;

namespace {

Pixel grey(int v, int alpha = 255)
{
    return {v, v, v, alpha};
}

// Largest difference of a sample from the wanted ones.
int worst(const Bitmap& bitmap, const std::function<Pixel(int, int)>& wanted)
{
    int worst = 0;
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x) {
            const auto [r, g, b, a] = pixelAt(bitmap, x, y);
            const auto [wr, wg, wb, wa] = wanted(x, y);
            worst = std::max(
                {worst, std::abs(r - wr), std::abs(g - wg), std::abs(b - wb), std::abs(a - wa)});
        }
    return worst;
}

} // namespace

TEST(Png, SpreadsFewGreyBitsOverTheWholeRange)
{
    EXPECT_THAT(pixels(*decoded(pngFile({4, 1, 1, PNG_COLOR_TYPE_GRAY, {0b10100000}}))),
                ElementsAre(grey(255), grey(0), grey(255), grey(0)));
    EXPECT_THAT(pixels(*decoded(pngFile({4, 1, 2, PNG_COLOR_TYPE_GRAY, {0b00011011}}))),
                ElementsAre(grey(0), grey(85), grey(170), grey(255)));
    EXPECT_THAT(pixels(*decoded(pngFile({2, 1, 4, PNG_COLOR_TYPE_GRAY, {0x3F}}))),
                ElementsAre(grey(51), grey(255)));
    const auto wide =
        decoded(pngFile({2, 1, 16, PNG_COLOR_TYPE_GRAY_ALPHA, {1, 2, 0, 9, 255, 255, 3, 4}}));
    EXPECT_EQ(wide->format(), PixelFormat::Rgba16);
    EXPECT_THAT(pixels(*wide), ElementsAre(grey(258, 9), grey(65535, 772)));
}

TEST(Png, AppliesPalettesAndTransparentColours)
{
    EXPECT_THAT(pixels(*decoded(pngFile({.width = 3,
                                         .height = 1,
                                         .bits = 2,
                                         .colorType = PNG_COLOR_TYPE_PALETTE,
                                         .data = {0b00011000},
                                         .palette = {10, 20, 30, 40, 50, 60, 70, 80, 90},
                                         .paletteAlpha = {0, 128}}))),
                ElementsAre(Pixel{10, 20, 30, 0}, Pixel{40, 50, 60, 128}, Pixel{70, 80, 90, 255}));
    EXPECT_THAT(pixels(*decoded(pngFile({.width = 2,
                                         .height = 1,
                                         .bits = 8,
                                         .colorType = PNG_COLOR_TYPE_GRAY,
                                         .data = {7, 8},
                                         .transparent = {8}}))),
                ElementsAre(grey(7), grey(8, 0)));
    EXPECT_THAT(pixels(*decoded(pngFile({.width = 2,
                                         .height = 1,
                                         .bits = 8,
                                         .colorType = PNG_COLOR_TYPE_RGB,
                                         .data = {1, 2, 3, 1, 2, 4},
                                         .transparent = {1, 2, 3}}))),
                ElementsAre(Pixel{1, 2, 3, 0}, Pixel{1, 2, 4, 255}));
}

TEST(Png, InterlacingChangesNothing)
{
    for (const int bits : {8, 16}) {
        Png png{13, 11, bits, PNG_COLOR_TYPE_RGB_ALPHA, {}};
        for (int i = 0; i < 13 * 11 * bits / 2; ++i)
            png.data.push_back(static_cast<std::uint8_t>(i * 37 + i / 7));
        const auto plain = pixels(*decoded(pngFile(png)));
        png.interlaced = true;
        EXPECT_EQ(pixels(*decoded(pngFile(png))), plain);
    }
}

TEST(Jpeg, ReadsGreyRgbAndProgressive)
{
    const auto ramp = [](int components) {
        Bytes data;
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x)
                for (int c = 0; c < components; ++c)
                    data.push_back(static_cast<std::uint8_t>(c == 0 ? 8 * x : c == 1 ? 8 * y : 77));
        return data;
    };
    const auto color = [](int x, int y) { return Pixel{8 * x, 8 * y, 77, 255}; };
    EXPECT_LE(worst(*decoded(jpegFile({32, 32, 1, JCS_GRAYSCALE, JCS_GRAYSCALE, ramp(1)})),
                    [](int x, int) { return grey(8 * x); }),
              2);
    EXPECT_LE(worst(*decoded(jpegFile({32, 32, 3, JCS_RGB, JCS_RGB, ramp(3)})), color), 2);
    EXPECT_LE(worst(*decoded(jpegFile({32, 32, 3, JCS_RGB, JCS_YCbCr, ramp(3)})), color), 4);
    EXPECT_LE(worst(*decoded(jpegFile({32, 32, 3, JCS_RGB, JCS_YCbCr, ramp(3), true})), color), 4);
}

TEST(Jpeg, ConvertsInks)
{
    // Cyan 40 %, no magenta, yellow 80 %, black 20 %, as amounts of ink and inverted.
    const Bytes ink = {102, 0, 204, 51};
    const auto filled = [&](bool inverted) {
        Bytes data;
        for (int i = 0; i < 64; ++i)
            for (const int v : ink)
                data.push_back(static_cast<std::uint8_t>(inverted ? 255 - v : v));
        return data;
    };
    // (1 - ink) · (1 - black)
    const auto wanted = [](int, int) { return Pixel{122, 204, 41, 255}; };
    EXPECT_LE(worst(*decoded(jpegFile({8, 8, 4, JCS_CMYK, JCS_CMYK, filled(false), false, false})),
                    wanted),
              2);
    EXPECT_LE(worst(*decoded(jpegFile({8, 8, 4, JCS_CMYK, JCS_CMYK, filled(true)})), wanted), 2);
    EXPECT_LE(worst(*decoded(jpegFile({8, 8, 4, JCS_CMYK, JCS_YCCK, filled(true)})), wanted), 3);
}

TEST(Jpeg, ConvertsThroughCmykAndGreyProfiles)
{
    // Half black is a lightness of 50 in that profile, sRGB 119; the coloured inks do not show.
    Bytes halfBlack;
    for (int i = 0; i < 64; ++i)
        halfBlack.insert(halfBlack.end(), {55, 255, 55, 127});
    Jpeg jpeg{8, 8, 4, JCS_CMYK, JCS_CMYK, halfBlack};
    jpeg.icc = blackOnlyCmykProfile();
    EXPECT_LE(worst(*decoded(jpegFile(jpeg)), [](int, int) { return grey(119); }), 2);

    // Linear light of one half is sRGB 188.
    jpeg = {8, 8, 1, JCS_GRAYSCALE, JCS_GRAYSCALE, Bytes(64, 128)};
    jpeg.icc = greyProfile(1);
    const auto picture = codecs::decodePicture(jpegFile(jpeg), "sample");
    ASSERT_TRUE(picture) << picture.error();
    EXPECT_LE(worst(*(*picture)->bitmap(), [](int, int) { return grey(188); }), 1);
    EXPECT_EQ((*picture)->metadata().icc, "") << "pixels are sRGB now";
}

namespace {

// A TIFF of each sample layout: what is stored and what it must become.
struct Stored {
    const char* name;
    Tiff tiff;
    std::function<Pixel(int, int)> wanted;
    PixelFormat format = PixelFormat::Rgba8;
    int tolerance = 0;
};

constexpr int kWidth = 21, kHeight = 19;

int value(int x, int y, int c)
{
    return (x * 11 + y * 5 + c * 40) % 256;
}

std::vector<Stored> storedKinds()
{
    const auto bytes = [](int x, int y, int c) { return double(value(x, y, c)); };
    const auto words = [](int x, int y, int c) { return value(x, y, c) * 257.0 - c; };
    const auto tiff = [](int bits, int samples, int photometric, auto sample) {
        return Tiff{kWidth, kHeight, bits, samples, photometric, sample};
    };
    const auto rgb = [](int x, int y) {
        return Pixel{value(x, y, 0), value(x, y, 1), value(x, y, 2), 255};
    };
    const auto rgb16 = [words](int x, int y) {
        return Pixel{int(words(x, y, 0)), std::max(int(words(x, y, 1)), 0),
                     std::max(int(words(x, y, 2)), 0), 65535};
    };
    const auto positive = [words](int x, int y, int c) { return std::max(words(x, y, c), 0.0); };
    std::vector<Stored> kinds;

    kinds.push_back(
        {"Grey1",
         tiff(1, 1, PHOTOMETRIC_MINISBLACK, [](int x, int y, int) { return (x * y + x) % 2; }),
         [](int x, int y) { return grey(255 * ((x * y + x) % 2)); }});
    kinds.push_back(
        {"White4",
         tiff(4, 1, PHOTOMETRIC_MINISWHITE, [](int x, int y, int) { return (x + y) % 16; }),
         [](int x, int y) { return grey(255 - 17 * ((x + y) % 16)); }});
    kinds.push_back({"Grey12",
                     tiff(12, 1, PHOTOMETRIC_MINISBLACK,
                          [](int x, int y, int) { return (x * 200 + y) % 4096; }),
                     [](int x, int y) {
                         const int v = int(((x * 200 + y) % 4096) / 4095.0 * 65535 + 0.5);
                         return grey(v, 65535);
                     },
                     PixelFormat::Rgba16});
    Stored greyAlpha{"GreyAlpha", tiff(8, 2, PHOTOMETRIC_MINISBLACK, bytes),
                     [](int x, int y) { return grey(value(x, y, 0), value(x, y, 1)); }};
    greyAlpha.tiff.extra = {EXTRASAMPLE_UNASSALPHA};
    kinds.push_back(greyAlpha);

    Stored palette{"Palette4",
                   tiff(4, 1, PHOTOMETRIC_PALETTE, [](int x, int, int) { return x % 16; }),
                   [](int x, int) {
                       return Pixel{(x % 16) * 10, 255 - (x % 16), 3, 255};
                   }};
    for (const auto& level :
         {+[](int i) { return i * 10; }, +[](int i) { return 255 - i; }, +[](int) { return 3; }})
        for (int i = 0; i < 16; ++i)
            palette.tiff.palette.push_back(static_cast<std::uint16_t>(level(i) * 257));
    kinds.push_back(palette);
    palette.name = "PaletteOfBytes";
    for (std::uint16_t& v : palette.tiff.palette)
        v /= 257;
    kinds.push_back(palette);

    Stored plain{"Rgb8", tiff(8, 3, PHOTOMETRIC_RGB, bytes), rgb};
    kinds.push_back(plain);
    plain.name = "Rgb8Separate";
    plain.tiff.separate = true;
    kinds.push_back(plain);
    plain.name = "Rgb8SeparateTiles";
    plain.tiff.tile = 16;
    kinds.push_back(plain);
    plain.name = "Rgb8TilesLzw";
    plain.tiff.separate = false;
    plain.tiff.compression = COMPRESSION_LZW;
    kinds.push_back(plain);
    plain = {"Rgb16BigEndian", tiff(16, 3, PHOTOMETRIC_RGB, positive), rgb16, PixelFormat::Rgba16};
    plain.tiff.mode = "wb";
    kinds.push_back(plain);
    plain.name = "Rgb16Large";
    plain.tiff.mode = "w8";
    plain.tiff.compression = COMPRESSION_ADOBE_DEFLATE;
    kinds.push_back(plain);

    Stored alpha{"RgbaUnassociated", tiff(8, 4, PHOTOMETRIC_RGB, bytes), [](int x, int y) {
                     return Pixel{value(x, y, 0), value(x, y, 1), value(x, y, 2), value(x, y, 3)};
                 }};
    alpha.tiff.extra = {EXTRASAMPLE_UNASSALPHA};
    kinds.push_back(alpha);
    // Channels that a program keeps beside the picture are no transparency.
    alpha = {"RgbAndChannel", alpha.tiff, rgb};
    alpha.tiff.extra = {EXTRASAMPLE_UNSPECIFIED};
    kinds.push_back(alpha);
    alpha = {"RgbaAssociated",
             tiff(8, 4, PHOTOMETRIC_RGB,
                  [](int x, int y, int c) { return c == 3 ? 12 * x : 12 * x * (y % 3) / 2; }),
             [](int x, int y) {
                 const int a = 12 * x;
                 return x == 0 ? grey(0, 0) : grey(std::min(255, a * (y % 3) / 2 * 255 / a), a);
             },
             PixelFormat::Rgba8, 1};
    alpha.tiff.extra = {EXTRASAMPLE_ASSOCALPHA};
    kinds.push_back(alpha);

    Stored real{"Float",
                tiff(32, 3, PHOTOMETRIC_RGB,
                     [](int x, int y, int c) { return c == 2 ? y - 5.0 : x / 20.0; }),
                [](int x, int y) {
                    const int v = int(float(x / 20.0) * 65535.0 + 0.5);
                    return Pixel{v, v, y > 5 ? 65535 : 0, 65535};
                },
                PixelFormat::Rgba16};
    real.tiff.format = SAMPLEFORMAT_IEEEFP;
    kinds.push_back(real);
    real.name = "Double";
    real.tiff.bits = 64;
    real.tolerance = 1;
    kinds.push_back(real);
    kinds.push_back(
        {"Integer32",
         tiff(32, 1, PHOTOMETRIC_MINISBLACK, [](int x, int, int) { return x * 204522252.0; }),
         [](int x, int) { return grey(int(x * 204522252.0 / 65536), 65535); },
         PixelFormat::Rgba16});

    kinds.push_back({"Cmyk", tiff(8, 4, PHOTOMETRIC_SEPARATED, bytes), [](int x, int y) {
                         const auto light = [&](int c) {
                             return int((255 - value(x, y, c)) * (255 - value(x, y, 3)) / 255.0 +
                                        0.5);
                         };
                         return Pixel{light(0), light(1), light(2), 255};
                     }});
    Stored profiled{"CmykProfile",
                    tiff(16, 4, PHOTOMETRIC_SEPARATED,
                         [](int x, int, int c) { return c == 3 ? 32768 : x * 3000; }),
                    [](int, int) { return grey(119 * 257, 65535); }, PixelFormat::Rgba16, 300};
    profiled.tiff.icc = blackOnlyCmykProfile();
    kinds.push_back(profiled);

    Stored ycbcr{
        "YCbCrJpeg",
        tiff(8, 3, PHOTOMETRIC_YCBCR, [](int, int y, int c) { return c == 2 ? 200 : y * 10; }),
        [](int, int y) {
            return Pixel{y * 10, y * 10, 200, 255};
        },
        PixelFormat::Rgba8, 8};
    ycbcr.tiff.compression = COMPRESSION_JPEG;
    kinds.push_back(ycbcr);
    // L* of 53.7 without colour is mid grey; libtiff's screen is a plain power and a little
    // lighter.
    kinds.push_back(
        {"Lab", tiff(8, 3, PHOTOMETRIC_CIELAB, [](int, int, int c) { return c == 0 ? 137 : 0; }),
         [](int, int) { return grey(128); }, PixelFormat::Rgba8, 16});
    return kinds;
}

class TiffKinds : public testing::TestWithParam<Stored> {};

} // namespace

TEST_P(TiffKinds, GivesTheColoursThatAreStored)
{
    const Stored& kind = GetParam();
    const auto bitmap = decoded(tiffFile(kind.tiff));
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->width(), kWidth);
    ASSERT_EQ(bitmap->height(), kHeight);
    EXPECT_EQ(bitmap->format(), kind.format);
    EXPECT_LE(worst(*bitmap, kind.wanted), kind.tolerance);
}

INSTANTIATE_TEST_SUITE_P(Kinds, TiffKinds, testing::ValuesIn(storedKinds()),
                         [](const auto& info) { return info.param.name; });

TEST(WebP, ReadsTheFirstFrameOnTransparent)
{
    const auto bitmap = decoded(animatedWebP());
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(std::pair(bitmap->width(), bitmap->height()), std::pair(10, 8));
    EXPECT_EQ(worst(*bitmap,
                    [](int x, int y) {
                        return x >= 2 && x < 6 && y >= 4 && y < 6 ? Pixel{255, 0, 0, 255}
                                                                  : Pixel{0, 0, 0, 0};
                    }),
              0);
}

TEST(Formats, AreKnownByContentAndByName)
{
    using codecs::FileFormat;
    const std::string png = pngFile({1, 1, 8, PNG_COLOR_TYPE_GRAY, {5}});
    EXPECT_TRUE(codecs::decodePicture(png, "misnamed.jpg"));
    EXPECT_EQ(codecs::decodePicture("hello", "a\nb.png").error(),
              "a?b.png: not a picture (PNG, JPEG, TIFF, WebP, PDF, EPS or SVG expected)");
    EXPECT_EQ(codecs::decodePicture("", "x.png").error(), "x.png: an empty file");
    EXPECT_EQ(codecs::formatNamed(".JPeG"), FileFormat::Jpeg);
    EXPECT_EQ(codecs::formatNamed("tiff"), codecs::formatNamed("TIF"));
    EXPECT_EQ(codecs::formatNamed("gif"), std::nullopt);
    for (const std::string& extension : codecs::readableExtensions())
        EXPECT_TRUE(codecs::formatNamed(extension)) << extension;
}
