// What travels beside the pixels: profiles, EXIF with its orientation, XMP, resolution and recipes.
#include "platform/codecs/Metadata.h"
#include "tests/codecs/Samples.h"

#include <gmock/gmock.h>
#include <png.h>
#include <tiffio.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <unistd.h>

#include <jpeglib.h>
#include <zlib.h>

using codecs::FileFormat;
using codecs::KeepMetadata;
using codecs::WriteOptions;
using drawing::PictureMetadata;
using drawing::PictureRef;
using imaging::Bitmap;
using imaging::PixelFormat;
using testing::HasSubstr;
using namespace samples;

namespace {

constexpr FileFormat kPixelFormats[] = {FileFormat::Png, FileFormat::Jpeg, FileFormat::Tiff,
                                        FileFormat::WebP};
const std::string kRecipe = R"([{"id":"CIGaussianBlur","set":{"inputRadius":2.5}},"<&\"ü]]>"])";

PictureMetadata everything()
{
    PictureMetadata metadata;
    metadata.icc = rgbProfile();
    metadata.exif = exifBlock(1, true);
    metadata.xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\xC3\xBC</x:xmpmeta>";
    metadata.recipe = "of the source, not of the target";
    metadata.dpiX = 300;
    metadata.dpiY = 150;
    return metadata;
}

std::string encoded(const drawing::Picture& picture, FileFormat format,
                    KeepMetadata keep = KeepMetadata::All, const std::string& recipe = kRecipe)
{
    const auto bytes = codecs::encodePicture(picture, format, {keep, 92, recipe});
    EXPECT_TRUE(bytes) << bytes.error();
    return bytes ? *bytes : std::string();
}

PictureRef read(const std::string& bytes)
{
    const auto picture = codecs::decodePicture(bytes, "sample");
    EXPECT_TRUE(picture) << picture.error();
    return picture ? *picture : drawing::Picture::blank({1, 1});
}

// Six squares of 8 pixels in the order of the letters, 'a' to 'f', three to a row; each has its own
// grey.
constexpr int kSquare = 8;

std::shared_ptr<Bitmap> lettered()
{
    const auto bitmap = Bitmap::make(3 * kSquare, 2 * kSquare, PixelFormat::Rgba8);
    for (int y = 0; y < bitmap->height(); ++y)
        for (int x = 0; x < bitmap->width(); ++x) {
            const auto grey =
                static_cast<std::uint8_t>(40 * (x / kSquare + 3 * (y / kSquare)) + 20);
            std::uint8_t* p = bitmap->rowAs<std::uint8_t>(y) + 4 * x;
            p[0] = p[1] = p[2] = grey;
            p[3] = 255;
        }
    return bitmap;
}

// The letters of a picture's squares, rows separated by a stroke.
std::string letters(const Bitmap& bitmap)
{
    std::string text;
    for (int y = kSquare / 2; y < bitmap.height(); y += kSquare) {
        text += text.empty() ? "" : "/";
        for (int x = kSquare / 2; x < bitmap.width(); x += kSquare)
            text += static_cast<char>('a' + std::get<0>(pixelAt(bitmap, x, y)) / 40);
    }
    return text;
}

// How the squares "abc/def" are seen under each orientation: row 0 and column 0 of what is stored
// become the sides that the EXIF standard lists (2: top, right; 5: left, top; …).
constexpr const char* kSeen[] = {"",         "abc/def",  "cba/fed",  "fed/cba", "def/abc",
                                 "ad/be/cf", "da/eb/fc", "fc/eb/da", "cf/be/ad"};

} // namespace

TEST(Metadata, TravelsThroughEveryFormatUnchanged)
{
    const auto picture = pictureOf(noise(5, 4, PixelFormat::Rgba8, true), everything());
    for (const FileFormat format : kPixelFormats) {
        SCOPED_TRACE(static_cast<int>(format));
        const PictureMetadata& wanted = picture->metadata();
        const PictureRef copy = read(encoded(*picture, format));
        const PictureMetadata& found = copy->metadata();
        EXPECT_TRUE(found.icc == wanted.icc);
        EXPECT_EQ(found.xmp, wanted.xmp);
        EXPECT_EQ(found.recipe, kRecipe);
        EXPECT_TRUE(format == FileFormat::Tiff || found.exif == wanted.exif);
        if (format != FileFormat::WebP) {
            EXPECT_NEAR(found.dpiX, 300, 0.02);
            EXPECT_NEAR(found.dpiY, 150, 0.02);
        }
        EXPECT_EQ(copy->size().width, 5) << "resolution does not change the size in points";
    }
}

TEST(Metadata, ExifBecomesTiffDirectoriesAndBack)
{
    for (const bool big : {false, true}) {
        PictureMetadata metadata;
        metadata.exif = exifBlock(1, big);
        const auto picture = pictureOf(noise(5, 4, PixelFormat::Rgba16, true), metadata);
        const std::string file = encoded(*picture, FileFormat::Tiff);
        EXPECT_EQ(file.substr(0, 2), big ? "MM" : "II");

        // As another reader sees it.
        const std::string name = testing::TempDir() + "exif-" + std::to_string(::getpid()) + ".tif";
        std::ofstream(name, std::ios::binary) << file;
        TIFFSetWarningHandler(nullptr); // it does not know our own tag
        TIFF* tiff = TIFFOpen(name.c_str(), "r");
        ASSERT_TRUE(tiff);
        char* maker = nullptr;
        ASSERT_TRUE(TIFFGetField(tiff, TIFFTAG_MAKE, &maker));
        EXPECT_STREQ(maker, "Some Maker.");
        toff_t exif = 0, gps = 0;
        EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_GPSIFD, &gps));
        ASSERT_TRUE(TIFFGetField(tiff, TIFFTAG_EXIFIFD, &exif));
        ASSERT_TRUE(TIFFReadEXIFDirectory(tiff, exif));
        float number = 0;
        EXPECT_TRUE(TIFFGetField(tiff, EXIFTAG_FNUMBER, &number));
        EXPECT_FLOAT_EQ(number, 2.8f);
        EXPECT_TRUE(TIFFReadGPSDirectory(tiff, gps));
        TIFFClose(tiff);
        ::unlink(name.c_str());

        // The block that is made of them is complete, and stays the same from then on.
        const PictureRef copy = read(file);
        EXPECT_THAT(copy->metadata().exif, HasSubstr("Some Maker."));
        const PictureRef again = read(encoded(*copy, FileFormat::Tiff));
        EXPECT_TRUE(again->metadata().exif == copy->metadata().exif);
        const PictureRef png = read(encoded(*copy, FileFormat::Png));
        EXPECT_TRUE(png->metadata().exif == copy->metadata().exif);
    }
}

TEST(Metadata, IsLeftOutWhenNotWanted)
{
    const auto picture = pictureOf(noise(5, 4, PixelFormat::Rgba8, true), everything());
    for (const FileFormat format : kPixelFormats) {
        SCOPED_TRACE(static_cast<int>(format));
        const PictureRef icc = read(encoded(*picture, format, KeepMetadata::Icc));
        EXPECT_TRUE(icc->metadata().icc == picture->metadata().icc);
        EXPECT_EQ(icc->metadata().exif + icc->metadata().xmp, "");
        EXPECT_LT(icc->metadata().dpiX, 100);
        EXPECT_EQ(icc->metadata().recipe, kRecipe);
        const PictureRef none = read(encoded(*picture, format, KeepMetadata::None));
        EXPECT_EQ(none->metadata().icc + none->metadata().recipe, "");
        const PictureRef plain = read(encoded(*picture, format, KeepMetadata::All, ""));
        EXPECT_EQ(plain->metadata().recipe, "");
    }
}

TEST(Metadata, LargeBlocksAreSplitOrRefusedInJpeg)
{
    std::string large(300'000, ' ');
    for (std::size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<char>('!' + i * i % 90);
    PictureMetadata metadata;
    metadata.icc = rgbProfile() + large; // beyond what the profile says of itself: still carried
    const auto picture = pictureOf(noise(3, 3, PixelFormat::Rgba8, true), metadata);
    for (const FileFormat format : kPixelFormats) {
        const PictureRef copy = read(encoded(*picture, format, KeepMetadata::All, large));
        EXPECT_TRUE(copy->metadata().recipe == large);
        EXPECT_TRUE(copy->metadata().icc == metadata.icc);
    }
    const auto error = [&](PictureMetadata m, const std::string& recipe) {
        return codecs::encodePicture(*pictureOf(noise(3, 3, PixelFormat::Rgba8, true), m),
                                     FileFormat::Jpeg, {KeepMetadata::All, 92, recipe})
            .error();
    };
    EXPECT_EQ(error({}, std::string(17'000'000, 'x')),
              "JPEG has no room for a recipe of 17000000 bytes");
    PictureMetadata m;
    m.exif = exifBlock(1, true) + large;
    EXPECT_THAT(error(m, ""), HasSubstr("no room for an EXIF block"));
    m = {};
    m.xmp = large;
    EXPECT_THAT(error(m, ""), HasSubstr("no room for an XMP packet"));
}

TEST(Metadata, ResolutionsThatCannotBeCountAsUnknown)
{
    for (const double dpi : {0.0, -72.0, double(NAN), double(INFINITY), 1e300})
        for (const FileFormat format : kPixelFormats) {
            PictureMetadata metadata;
            metadata.dpiX = 300;
            metadata.dpiY = dpi;
            const auto picture = pictureOf(noise(3, 3, PixelFormat::Rgba8, true), metadata);
            EXPECT_EQ(read(encoded(*picture, format))->metadata().dpiX, 0);
        }
}

TEST(Metadata, ProfilesOfOtherKindsOfPixelsAreDropped)
{
    PictureMetadata metadata;
    metadata.icc = blackOnlyCmykProfile();
    const auto picture = pictureOf(noise(3, 3, PixelFormat::Rgba8, true), metadata);
    EXPECT_EQ(read(encoded(*picture, FileFormat::Png))->metadata().icc, "");
}

TEST(Metadata, UnpacksNoBombs)
{
    // 100 MB of zeros in a profile and in an XMP packet; the picture itself is fine.
    const std::string bomb = codecs::deflate(std::string(100'000'000, '\0'));
    std::string file = pngFile({1, 1, 8, PNG_COLOR_TYPE_GRAY, {5}});
    using namespace std::string_literals;
    file.insert(33, pngChunk("iCCP", "x\0\0"s + bomb) +
                        pngChunk("iTXt", "XML:com.adobe.xmp\0\1\0\0\0"s + bomb));
    const PictureRef picture = read(file);
    EXPECT_EQ(picture->metadata().icc + picture->metadata().xmp, "");
    EXPECT_EQ(pixelAt(*picture->bitmap(), 0, 0), (Pixel{5, 5, 5, 255}));
    // The same with a text of reasonable length arrives.
    file.insert(33, pngChunk("iTXt", "XML:com.adobe.xmp\0\1\0\0\0"s + codecs::deflate("<x/>")));
    EXPECT_EQ(read(file)->metadata().xmp, "<x/>");
}

TEST(Orientation, OfExifTurnsThePictureAndIsWrittenAsNone)
{
    for (const FileFormat format : {FileFormat::Png, FileFormat::Jpeg, FileFormat::WebP})
        for (int orientation = 1; orientation <= 8; ++orientation) {
            SCOPED_TRACE(testing::Message() << int(format) << ' ' << orientation);
            // The encoder writes the block as it stands, so the file asks to be turned.
            PictureMetadata metadata;
            metadata.exif = exifBlock(orientation, orientation % 2);
            const PictureRef seen = read(encoded(*pictureOf(lettered(), metadata), format));
            EXPECT_EQ(letters(*seen->bitmap()), kSeen[orientation]);
            EXPECT_TRUE(seen->metadata().exif == exifBlock(1, orientation % 2));
        }
}

TEST(Orientation, OfTiffTurnsThePicture)
{
    const auto squares = lettered();
    for (int orientation = 1; orientation <= 8; ++orientation)
        for (const int photometric : {PHOTOMETRIC_RGB, PHOTOMETRIC_CIELAB}) {
            Tiff tiff{3 * kSquare, 2 * kSquare, 8, 3, photometric, [&](int x, int y, int c) {
                          const int grey = std::get<0>(pixelAt(*squares, x, y));
                          // Lightness alone; steps of 40 stay well apart.
                          return photometric == PHOTOMETRIC_RGB || c == 0 ? grey : 0;
                      }};
            tiff.orientation = orientation;
            const PictureRef seen = read(tiffFile(tiff));
            EXPECT_EQ(letters(*seen->bitmap()), kSeen[orientation]) << photometric;
            EXPECT_EQ(letters(*read(encoded(*seen, FileFormat::Tiff))->bitmap()),
                      kSeen[orientation]);
        }
}

TEST(Recipe, IsReadBackFromVectorFiles)
{
    drawing::Canvas canvas({40, 30});
    canvas.fillRect({5, 5, 20, 10});
    const PictureRef picture = drawing::Picture::fromRecording(canvas.finish());
    const std::string name = testing::TempDir() + "recipe-" + std::to_string(::getpid());
    const std::string recipes[] = {kRecipe, std::string(20'000, 'r')};
    for (const FileFormat format : {FileFormat::Pdf, FileFormat::Svg, FileFormat::Eps})
        for (const std::string& recipe : recipes) {
            SCOPED_TRACE(static_cast<int>(format));
            ASSERT_TRUE(
                codecs::writePicture(*picture, name, format, {KeepMetadata::Icc, 92, recipe}));
            const auto found = codecs::readRecipe(name);
            ASSERT_TRUE(found) << found.error();
            EXPECT_EQ(*found, recipe);
            ASSERT_TRUE(
                codecs::writePicture(*picture, name, format, {KeepMetadata::None, 92, recipe}));
            EXPECT_EQ(*codecs::readRecipe(name), "");
        }
    ::unlink(name.c_str());
}

TEST(Recipe, IsFoundHoweverAVectorFileHoldsIt)
{
    // "{}" is "e30=" in base64.
    EXPECT_EQ(codecs::recipeOfPdf("%PDF-1.5\n/Keywords (cif-recipe:e30=)"), "{}");
    EXPECT_EQ(codecs::recipeOfPdf("%PDF-1.7\n<</Type /ObjStm /Filter /FlateDecode>>\nstream\r\n" +
                                  codecs::deflate("<</Keywords(cif-recipe:e30=)>>") +
                                  "\nendstream"),
              "{}");
    EXPECT_EQ(
        codecs::recipeOfEps("%!PS-Adobe-3.0 EPSF-3.0\r\n%%cif-recipe: e3\r\n%%cif-recipe: 0=\r\n"),
        "{}");
    EXPECT_EQ(codecs::recipeOfSvg("<svg><metadata>x</metadata><metadata id='cif-recipe'>"
                                  "&lt;&#252;&#x2014;&amp;lt;&unknown;</metadata></svg>"),
              "<\xC3\xBC\xE2\x80\x94&lt;&unknown;");
    for (const char* broken : {"<svg><metadata id=\"cif-recipe\">", "<metadata", ""})
        EXPECT_EQ(codecs::recipeOfSvg(broken), "");
}

TEST(Exif, BrokenBlocksCountAsAbsent)
{
    const std::string whole = exifBlock(6, false);
    EXPECT_EQ(codecs::exifOrientation(whole), 6);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        std::string block = whole.substr(0, length);
        const int orientation = codecs::exifOrientation(block);
        EXPECT_TRUE(orientation == 1 || orientation == 6);
        codecs::resetExifOrientation(block);
        EXPECT_EQ(block.size(), length);
        EXPECT_EQ(codecs::exifOrientation(block), 1);
    }
    // A sub-directory that is its own parent ends.
    std::string loop = whole;
    loop[10 + 2 * 12 + 8] = 8;
    EXPECT_LT(codecs::exifOfTiff(loop).size(), 1000u);
}
