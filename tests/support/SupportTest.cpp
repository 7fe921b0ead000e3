// The tests' own tools: that a comparison fails when it should.
#include "tests/support/Golden.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

using namespace support;

namespace {

BitmapRef ramp()
{
    return bitmapFrom(4, 2, [](int x, int y) { return Rgba{float(x), float(y), 0, 1}; });
}

// A corner of the photo, with one component of one pixel moved by some levels.
BitmapRef cornerMovedBy(int levels)
{
    return bitmapFrom(24, 16, [&, photo = picture("photo-96x64")](int x, int y) {
        Rgba p = pixel(*photo, x + 8, y + 20);
        if (x == 14 && y == 5)
            p.g -= float(levels) / 255;
        return p;
    });
}

std::string recordOf(const std::string& name)
{
    std::ifstream file(std::filesystem::path(CIF_TEST_OUTPUT) / "golden" / (name + ".txt"));
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(Pixels, RowZeroIsOnTopAndComponentsAreRowByRow)
{
    EXPECT_EQ(reds(*ramp()), (Floats{0, 1, 2, 3, 0, 1, 2, 3}));
    EXPECT_EQ(greens(*ramp()), (Floats{0, 0, 0, 0, 1, 1, 1, 1}));
    const BitmapRef top = render(image(ramp()), {0, 1, 4, 1});
    EXPECT_EQ(greens(*top), (Floats{0, 0, 0, 0}));
}

TEST(Pixels, EveryFormatReadsBackPremultiplied)
{
    const Rgba half{0.25f, 0.5f, 0, 0.5f};
    const BitmapRef floats = bitmapFrom(3, 1, [&](int x, int) {
        return x ? half : Rgba{0, 0, 0, 0};
    });
    const BitmapRef bytes = converted(*floats, PixelFormat::Rgba8);
    const auto* b = bytes->rowAs<std::uint8_t>(0) + 4;
    EXPECT_EQ((std::vector<int>{b[0], b[1], b[2], b[3]}), (std::vector<int>{128, 255, 0, 128}));
    for (const PixelFormat format : {PixelFormat::Rgba8, PixelFormat::Rgba16, PixelFormat::RgbaF})
        EXPECT_LT(compare(*converted(*floats, format), *floats).largest, 0.003);
    EXPECT_THROW(pixel(*floats, 3, 0), std::runtime_error);
}

TEST(Pixels, CompareSeesSizesNotANumbersAndTheWorstPlace)
{
    const BitmapRef a = ramp();
    const BitmapRef b = bitmapFrom(4, 2, [](int x, int y) {
        return Rgba{float(x), float(y), x == 2 && y == 1 ? 0.5f : 0, 1};
    });
    const Difference d = compare(*a, *b);
    EXPECT_EQ(d.largest, 0.5);
    EXPECT_EQ(d.mean, 0.5 / 32);
    EXPECT_EQ(d.x, 2);
    EXPECT_EQ(d.y, 1);
    EXPECT_TRUE(
        std::isinf(compare(*a, *bitmapFrom(4, 3, [](int, int) { return Rgba{}; })).largest));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const BitmapRef broken = bitmapFrom(4, 2, [&](int, int) { return Rgba{nan, 0, 0, 1}; });
    EXPECT_TRUE(std::isinf(compare(*a, *broken).largest));
    EXPECT_EQ(compare(*broken, *broken).largest, 0);
}

TEST(Pixels, UnknownNamesAreErrorsInWords)
{
    EXPECT_THROW(picture("photo-1x1"), std::runtime_error);
    EXPECT_THROW(apply("NoSuchFilter", ramp(), {}), std::runtime_error);
    EXPECT_THROW(render(image(ramp()), {10, 10, 5, 5}), std::runtime_error);
}

TEST(Goldens, OfTheTestPicturesThemselves)
{
    for (const char* name : {"photo-96x64", "edges-64x48", "alpha-64x48"})
        expectGolden(name, *picture(name));
    EXPECT_NE(recordOf("photo-96x64").find("state\tpassed\nlargest\t0\n"), std::string::npos);
}

TEST(Goldens, AMissingOneIsAFailureAndLeavesThePicture)
{
    const std::filesystem::path shown =
        std::filesystem::path(CIF_TEST_OUTPUT) / "golden" / "support-no-such.actual.png";
    EXPECT_NONFATAL_FAILURE(expectGolden("support-no-such", *picture("edges-64x48")),
                            "there is no golden");
    EXPECT_EQ(compare(*readPng(shown), *picture("edges-64x48")).largest, 0);
    // This failure was wanted: nothing of it belongs on the review page.
    std::filesystem::remove(shown);
    std::filesystem::remove(shown.parent_path() / "support-no-such.txt");
}

TEST(Goldens, ToleranceIsInLevelsAndExactUnlessGiven)
{
    const BitmapRef moved = cornerMovedBy(3);
    const auto expectCorner = [](const Bitmap& actual, Tolerance tolerance) {
        expectGolden("photo-corner-24x16", actual, tolerance);
    };
    EXPECT_NONFATAL_FAILURE(expectCorner(*cornerMovedBy(1), {}), "off by 1 levels");
    EXPECT_NONFATAL_FAILURE(expectCorner(*moved, {.largest = 2}), "off by 3 levels at (14, 5)");
    EXPECT_NONFATAL_FAILURE(expectCorner(*moved, {.largest = 3, .mean = 0.001}), "in the mean");
    EXPECT_NONFATAL_FAILURE(expectCorner(*ramp(), {.largest = 255}), "measures 4 x 2");
    expectCorner(*moved, {.largest = 3, .mean = 0.002});
    expectCorner(*cornerMovedBy(0), {});
}

TEST(Goldens, AreNamedAfterFilterPictureAndInputs)
{
    EXPECT_EQ(goldenName("CIFNet", "photo-96x64",
                         {{"inputFactorX", 0.4f}, {"inputCenter", foundation::Vector(4, -0.5)}}),
              "CIFNet-photo-96x64-inputFactorX-0.4-inputCenter-4_-0.5");
}
