// From a host's picture to a result: what the inputs become, what is kept between calls, and how
// each kind of result is finished.
#include "Environment.h"
#include "generators/GLIFCoreObject.h"
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Work.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace {

using drawing::Picture;
using foundation::Color;
using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Point;
using foundation::Value;
using foundation::Vector;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::Image;
using imaging::PixelFormat;
using testing::ElementsAre;

using Pixel = std::array<int, 4>;

BitmapRef bitmapFrom(int width, int height, const std::function<Pixel(int x, int y)>& at)
{
    const auto bitmap = Bitmap::make(width, height, PixelFormat::Rgba8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c)
                bitmap->rowAs<std::uint8_t>(y)[4 * x + c] =
                    static_cast<std::uint8_t>(at(x, y)[static_cast<std::size_t>(c)]);
    return bitmap;
}

PictureRef plain(int width, int height, Pixel color)
{
    return Picture::fromBitmap(bitmapFrom(width, height, [&](int, int) { return color; }));
}

// No two pixels alike, opaque.
PictureRef patterned(int width, int height)
{
    return Picture::fromBitmap(bitmapFrom(width, height, [](int x, int y) {
        return Pixel{8 * x, 8 * y, 5 * (x ^ y), 255};
    }));
}

// A drawing of that size in points, its left half red.
PictureRef vectorPicture(double width, double height)
{
    drawing::Canvas canvas({width, height});
    canvas.setColor(Color::rgb(1, 0, 0));
    canvas.fillRect({0, 0, width / 2, height});
    return Picture::fromRecording(canvas.finish());
}

Pixel pixelOf(const Bitmap& bitmap, int x, int y)
{
    const std::uint8_t* p = bitmap.rowAs<std::uint8_t>(y) + 4 * x;
    return {p[0], p[1], p[2], p[3]};
}

// Of the result's own pixels, from the top left corner.
Pixel pixel(const PictureRef& picture, int x, int y)
{
    const BitmapRef bitmap = picture ? picture->bitmap() : nullptr;
    if (!bitmap || x >= bitmap->width() || y >= bitmap->height())
        return {-1, -1, -1, -1};
    return pixelOf(*bitmap, x, y);
}

Pixel pixel(const Image& image, int x, int y)
{
    const auto bitmap = imaging::render(image, {x, y, 1, 1}, PixelFormat::Rgba8);
    return bitmap ? pixelOf(*bitmap, 0, 0) : Pixel{-1, -1, -1, -1};
}

bool sameBytes(const BitmapRef& a, const BitmapRef& b)
{
    if (!a || !b || a->width() != b->width() || a->height() != b->height() ||
        a->format() != b->format())
        return false;
    const std::size_t length = static_cast<std::size_t>(a->width() * bytesPerPixel(a->format()));
    for (int y = 0; y < a->height(); ++y)
        if (std::memcmp(a->row(y), b->row(y), length) != 0)
            return false;
    return true;
}

class Pipeline : public testing::Test {
protected:
    PictureRef apply(std::string_view name, const Dictionary& attributes, const PictureRef& picture)
    {
        return main.CIFApplyFilterAttributesForImage(name, attributes, picture);
    }
    Image output(std::string_view name, const Dictionary& attributes, const PictureRef& picture)
    {
        return main.CIFOutputImageForFilterAttributesForImage(name, attributes, picture);
    }
    // The inputs that a filter gets for these parameters.
    Dictionary prepared(std::string_view name, const Dictionary& attributes)
    {
        apply(name, {}, small);
        return main.prepareAttributes(attributes);
    }

    CIFMain main;
    const PictureRef small = plain(4, 4, {200, 100, 50, 255});
};

} // namespace

TEST_F(Pipeline, TranslatesParametersIntoInputs)
{
    const PictureRef texture = patterned(5, 3);
    const Dictionary inputs =
        prepared("CIGammaAdjust", {{"CIFinputCenter", Point{3, 4}},
                                   {"CIFinputTexture", texture},
                                   {"CIFinputShadingImage", texture},
                                   {"inputColor", Color::deviceRgb(0.25f, 0.5f, 0.75f, 0.5f)},
                                   {"inputColor1", Color{1, 1, 1, 1, Color::Space::Pattern}},
                                   {"GLIFRandomSeed", 7},
                                   {"GLIFBrush", texture},
                                   {"inputPower", 2.5f}});
    std::vector<std::string> keys;
    for (const auto& [key, value] : inputs)
        keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("inputCenter", "inputTexture", "inputShadingImage", "inputColor",
                                  "inputPower"));
    EXPECT_EQ(inputs["inputCenter"], Value(Vector(3, 4)));
    EXPECT_EQ(inputs["inputColor"], Value(Color::rgb(0.25f, 0.5f, 0.75f, 0.5f)));
    EXPECT_EQ(inputs["inputPower"], Value(2.5f));
    for (const char* key : {"inputTexture", "inputShadingImage"}) {
        const Image image{inputs[key].image()};
        EXPECT_EQ(image.extent(), (foundation::Rect{0, 0, 5, 3})) << key;
        EXPECT_EQ(pixel(image, 4, 2), pixel(texture, 4, 0)) << key;
    }
    EXPECT_TRUE(main.prepareAttributes({{"CIFinputTexture", "a name"}}).empty());
    EXPECT_TRUE(main.prepareAttributes({{"CIFinputTexture", PictureRef()}}).empty());
    // The brush stays where the current entry is a generator.
    EXPECT_TRUE(prepared("GLIF_Dabs", {{"GLIFBrush", texture}}).contains("GLIFBrush"));
}

TEST_F(Pipeline, KeepsTwoParametersAwayFromZero)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto count = [&](Value v) {
        return *prepared("CIKaleidoscope", {{"inputCount", v}})["inputCount"].number();
    };
    EXPECT_EQ(count(0.5f), 1.0);
    EXPECT_EQ(count(-0.5f), 1.0);
    EXPECT_EQ(count(0), 1.0);
    EXPECT_EQ(count(1.0f), 1.0);
    EXPECT_EQ(count(-3), -3);
    EXPECT_TRUE(std::isnan(count(nan).doubleValue()));
    const auto refraction = [&](Value v) {
        return *prepared("CITorusLensDistortion", {{"inputRefraction", v}})["inputRefraction"]
                    .number();
    };
    EXPECT_EQ(refraction(0), 0.0001);
    EXPECT_EQ(refraction(-0.00005), 0.0001);
    EXPECT_EQ(refraction(-1.7), -1.7);
    EXPECT_TRUE(std::isnan(refraction(nan).doubleValue()));
    // Only there, and only when present.
    EXPECT_EQ(prepared("CIGammaAdjust", {{"inputCount", 0.5}})["inputCount"], Value(0.5));
    EXPECT_FALSE(prepared("CIKaleidoscope", {}).contains("inputCount"));
}

TEST_F(Pipeline, RunsTransitionsTowardTransparency)
{
    for (const char* name : {"CIDissolveTransition", "CIModTransition", "CIBarsSwipeTransition"}) {
        const Image target{prepared(name, {})["inputTargetImage"].image()};
        EXPECT_EQ(target, main.constantColorImage()) << name;
    }
    EXPECT_TRUE(main.constantColorImage().extent().isInfinite());
    EXPECT_EQ(pixel(main.constantColorImage(), 123, -45), (Pixel{0, 0, 0, 0}));
}

TEST_F(Pipeline, GivesThePageCurlItsBall)
{
    TemporaryFolder folder;
    const Variable resources("CIF_RESOURCES", folder.path().string());
    LogLines log;
    const Dictionary without = prepared("CIPageCurlTransition", {});
    // Once when it is applied, once when its inputs are asked for.
    const char* const missing = "prepareAttributes: failed to set 'inputShadingImage'";
    EXPECT_THAT(log.lines, ElementsAre(missing, missing));
    EXPECT_FALSE(without.contains("inputShadingImage"));
    EXPECT_TRUE(without.contains("inputTargetImage"));

    log.lines.clear();
    const PictureRef ball = plain(8, 8, {40, 80, 120, 255});
    folder.write("whiteBall.tiff", *codecs::encodePicture(*ball, codecs::FileFormat::Tiff, {}));
    const Image loaded{prepared("CIPageCurlTransition", {})["inputShadingImage"].image()};
    EXPECT_EQ(pixel(loaded, 3, 3), (Pixel{40, 80, 120, 255}));
    EXPECT_THAT(log.lines, ElementsAre());
    // It is read once.
    std::filesystem::remove(folder.path() / "whiteBall.tiff");
    EXPECT_TRUE(prepared("CIPageCurlTransition", {}).contains("inputShadingImage"));
}

// A call that was stopped counts for nothing: the next one is no repetition, which would be as
// large as the points.
TEST_F(Pipeline, StartsAgainAfterItWasStopped)
{
    const PictureRef picture = vectorPicture(20, 10);
    std::stop_source source;
    source.request_stop();
    {
        const foundation::WorkScope scope(source.get_token());
        EXPECT_THROW(apply("CIStripesGenerator", {}, picture), foundation::Stopped);
    }
    const PictureRef result = apply("CIStripesGenerator", {}, picture);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->pixelsWide(), 80);
    {
        const foundation::WorkScope scope(source.get_token());
        EXPECT_THROW(result->bitmap(), foundation::Stopped);
    }
    EXPECT_FALSE(result->bitmapIfMade());
    const BitmapRef pixels = result->bitmap();
    ASSERT_TRUE(pixels);
    CIFMain fresh;
    const BitmapRef expected =
        fresh.CIFApplyFilterAttributesForImage("CIStripesGenerator", {}, picture)->bitmap();
    for (int y = 0; y < 40; ++y)
        ASSERT_EQ(std::memcmp(pixels->row(y), expected->row(y), 4 * 80), 0) << y;
}

TEST_F(Pipeline, ReusesSourceAndFilterForTheSamePictureAndName)
{
    const auto counts = [&] {
        return std::pair(main.pipelineCounters().rasterizations,
                         main.pipelineCounters().filtersCreated);
    };
    const PictureRef picture = vectorPicture(20, 10);
    apply("CIExposureAdjust", {{"inputEV", 1}}, picture);
    EXPECT_EQ(counts(), std::pair(1, 1));
    apply("CIExposureAdjust", {{"inputEV", 2}}, picture);
    output("CIExposureAdjust", {}, picture);
    EXPECT_EQ(counts(), std::pair(1, 1));
    apply("CIColorInvert", {}, picture);
    EXPECT_EQ(counts(), std::pair(2, 2));
    // Equal is not the same.
    apply("CIColorInvert", {}, vectorPicture(20, 10));
    EXPECT_EQ(counts(), std::pair(3, 3));
    // Generator-type filters keep both of their sources.
    apply("CIStripesGenerator", {}, picture);
    EXPECT_EQ(counts(), std::pair(4, 4));
    apply("CIStripesGenerator", {}, picture);
    EXPECT_EQ(counts(), std::pair(5, 4));
    for (int i = 0; i < 3; ++i) {
        apply("CIStripesGenerator", {}, picture);
        output("CIStripesGenerator", {}, picture);
    }
    EXPECT_EQ(counts(), std::pair(5, 4));
    // A bitmap's points are its pixels.
    apply("CIStripesGenerator", {}, small);
    apply("CIStripesGenerator", {}, small);
    EXPECT_EQ(counts(), std::pair(6, 5));
}

TEST_F(Pipeline, KeepsInputsBetweenRepeatedCalls)
{
    const PictureRef once = apply("CIExposureAdjust", {{"inputEV", -1}}, small);
    EXPECT_EQ(pixel(apply("CIExposureAdjust", {}, small), 0, 0), pixel(once, 0, 0));
    apply("CIColorInvert", {}, small);
    EXPECT_NE(pixel(apply("CIExposureAdjust", {}, small), 0, 0), pixel(once, 0, 0));
}

// Results become pixels late; what is asked of the same filter meanwhile must not show in them.
TEST_F(Pipeline, MakesResultsThatLaterCallsDoNotChange)
{
    const PictureRef squared = apply("CIGammaAdjust", {{"inputPower", 2}}, small);
    const PictureRef same = apply("CIGammaAdjust", {{"inputPower", 1}}, small);
    apply("CIColorInvert", {}, plain(4, 4, {0, 0, 0, 0}));
    EXPECT_EQ(pixel(same, 3, 3), (Pixel{200, 100, 50, 255}));
    EXPECT_EQ(pixel(squared, 3, 3), (Pixel{157, 39, 10, 255}));
}

TEST_F(Pipeline, WorksOnVectorsAtFourTimesTheirPoints)
{
    const PictureRef result = apply("CIColorInvert", {}, vectorPicture(100, 50));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->pixelsWide(), 400);
    EXPECT_EQ(result->pixelsHigh(), 200);
    EXPECT_EQ(result->size(), (foundation::Size{400, 200}));
    EXPECT_EQ(pixel(result, 100, 100), (Pixel{0, 255, 255, 255}));

    EXPECT_FALSE(apply("CIColorInvert", {}, vectorPicture(25001, 10)));
    EXPECT_FALSE(output("CIColorInvert", {}, vectorPicture(10, 25001)));
    EXPECT_FALSE(apply("CIColorInvert", {}, Picture::blank({0, 10})));
    EXPECT_FALSE(apply("CIColorInvert", {}, nullptr));
    EXPECT_FALSE(output("CIColorInvert", {}, nullptr));
}

TEST_F(Pipeline, KeepsSixteenBits)
{
    const auto deep = Bitmap::make(3, 1, PixelFormat::Rgba16);
    for (int i = 0; i < 12; ++i)
        deep->rowAs<std::uint16_t>(0)[i] =
            i % 4 == 3 ? 65535 : static_cast<std::uint16_t>(1000 + i);
    for (const char* name : {"CIColorInvert", "CIFAffineTransform2Filter", "CIStripesGenerator"}) {
        const PictureRef result = apply(name, {}, Picture::fromBitmap(deep));
        ASSERT_TRUE(result && result->bitmap()) << name;
        EXPECT_EQ(result->bitmap()->format(), PixelFormat::Rgba16) << name;
    }
    const PictureRef inverted = apply("CIColorInvert", {}, Picture::fromBitmap(deep));
    EXPECT_EQ(inverted->bitmap()->rowAs<std::uint16_t>(0)[0], 64535);
    // The next picture has its own depth.
    EXPECT_EQ(apply("CIColorInvert", {}, small)->bitmap()->format(), PixelFormat::Rgba8);
}

TEST_F(Pipeline, AppliesWithTransparencyAndOutputsOverTheBackground)
{
    const PictureRef glass = plain(4, 4, {255, 0, 0, 128});
    const Dictionary asItIs = {{"inputPower", 1}};
    EXPECT_EQ(pixel(apply("CIGammaAdjust", asItIs, glass), 2, 2), (Pixel{255, 0, 0, 128}));
    const Image overWhite = output("CIGammaAdjust", asItIs, glass);
    EXPECT_EQ(pixel(overWhite, 2, 2), (Pixel{255, 127, 127, 255}));
    EXPECT_EQ(pixel(overWhite, -7, 90), (Pixel{255, 255, 255, 255}));

    main.CIFSetBackgroundColor(Color::rgb(0, 0, 1, 0.25f));
    const Image overBlue = output("CIGammaAdjust", asItIs, glass);
    EXPECT_EQ(pixel(overBlue, 2, 2), (Pixel{128, 0, 127, 255}));
    EXPECT_EQ(pixel(overBlue, -7, 90), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(pixel(apply("CIGammaAdjust", asItIs, glass), 2, 2), (Pixel{255, 0, 0, 128}));
    main.CIFSetBackgroundColor({1, 1, 1, 1, Color::Space::Pattern});
    EXPECT_EQ(pixel(output("CIGammaAdjust", asItIs, glass), -7, 90), (Pixel{0, 0, 255, 255}));
}

TEST_F(Pipeline, AddsLightOntoThePicture)
{
    // One stripe of dim white covers the picture from x = 2 on.
    const Dictionary stripes = {{"CIFinputCenter", Point{2, 0}},
                                {"inputWidth", 50},
                                {"inputColor0", Color::rgb(0.2f, 0.2f, 0.2f, 1)},
                                {"inputColor1", Color::rgb(0, 0, 0, 1)}};
    const PictureRef source = plain(6, 4, {100, 150, 250, 255});
    for (int repeated = 0; repeated < 2; ++repeated) {
        const PictureRef result = apply("CIStripesGenerator", stripes, source);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->size(), (foundation::Size{6, 4}));
        EXPECT_EQ(pixel(result, 5, 1), (Pixel{151, 201, 255, 255}));
        EXPECT_EQ(pixel(result, 0, 1), (Pixel{100, 150, 250, 255}));
        // Laid over no background: light is added as it is.
        const Image image = output("CIStripesGenerator", stripes, source);
        EXPECT_EQ(pixel(image, 5, 1), (Pixel{151, 201, 255, 255}));
        EXPECT_EQ(pixel(image, 30, 1), (Pixel{51, 51, 51, 255}));
    }

    // The size in points comes in when a picture has a resolution of its own and the call repeats.
    const PictureRef fine = Picture::fromBitmap(source->bitmap(), {3, 2});
    EXPECT_EQ(apply("CIStripesGenerator", stripes, fine)->size(), (foundation::Size{6, 4}));
    EXPECT_EQ(apply("CIStripesGenerator", stripes, fine)->size(), (foundation::Size{3, 2}));
    EXPECT_EQ(apply("CIColorInvert", {}, fine)->size(), (foundation::Size{6, 4}));
    EXPECT_EQ(apply("CIColorInvert", {}, fine)->size(), (foundation::Size{6, 4}));
}

TEST_F(Pipeline, AddsTwoImagesForTheHost)
{
    const Image a = Image::fromBitmap(plain(2, 2, {60, 60, 60, 255})->bitmap());
    const Image b = Image::fromBitmap(plain(5, 3, {10, 20, 200, 255})->bitmap());
    const Image sum = main.outputAdditionalCompositingWithBackground(a, b);
    EXPECT_EQ(pixel(sum, 1, 1), (Pixel{70, 80, 255, 255}));
    EXPECT_EQ(pixel(sum, 4, 1), (Pixel{10, 20, 200, 255}));
    const PictureRef picture = main.performAdditionalCompositingWithBackground(a, b);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->size(), (foundation::Size{5, 3}));
    EXPECT_EQ(pixel(picture, 1, 2), (Pixel{70, 80, 255, 255}));
    EXPECT_EQ(pixel(picture, 1, 0), (Pixel{10, 20, 200, 255}));
    EXPECT_FALSE(main.performAdditionalCompositingWithBackground(a, {}));
    EXPECT_FALSE(main.performAdditionalCompositingWithBackground(a, main.constantColorImage()));
}

TEST_F(Pipeline, CropsInfiniteResultsToThePicture)
{
    const PictureRef result = apply("CIAffineTile", {}, patterned(12, 7)); // tiles the whole plane
    ASSERT_TRUE(result);
    EXPECT_EQ(result->size(), (foundation::Size{12, 7}));
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 12; ++x)
            EXPECT_EQ(pixel(result, x, y)[3], 255) << x << " " << y;
}

TEST_F(Pipeline, FitsTransformedResultsIntoThePicture)
{
    // Squeezed to half its height: twice as wide as high in a square, bands above and below.
    const PictureRef square = plain(40, 40, {10, 200, 30, 255});
    const Dictionary flat = {{"inputAngle", 0}, {"inputSqueeze", -0.5f}, {"inputSkew", 0}};
    const auto covered = [](const auto& result, int x, int y) { return pixel(result, x, y)[3]; };
    const PictureRef bands = apply("CIFAffineTransform2Filter", flat, square);
    ASSERT_TRUE(bands);
    EXPECT_EQ(bands->size(), (foundation::Size{40, 40}));
    for (const int x : {0, 20, 39})
        for (int y = 0; y < 40; ++y)
            EXPECT_EQ(covered(bands, x, y), y >= 10 && y < 30 ? 255 : 0) << x << " " << y;

    // Skewed by 1 it is 40 wide and 80 high, so it is halved: 20 columns in the middle, and in the
    // middle column the 20 rows around the centre.
    const Dictionary skewed = {{"inputAngle", 0}, {"inputSqueeze", 0}, {"inputSkew", 1}};
    const PictureRef halved = apply("CIFAffineTransform2Filter", skewed, square);
    int columns = 0, rows = 0;
    for (int i = 0; i < 40; ++i) {
        bool any = false;
        for (int y = 0; y < 40; ++y)
            any = any || covered(halved, i, y) == 255;
        columns += any;
        EXPECT_TRUE(!any || (i >= 10 && i < 30)) << i;
        rows += covered(halved, 20, i) == 255;
    }
    EXPECT_NEAR(columns, 20, 2);
    EXPECT_NEAR(rows, 20, 2);

    // For the host it is fitted into the size in points, over the background.
    const PictureRef fine = Picture::fromBitmap(square->bitmap(), {20, 20});
    const Image image = output("CIFAffineTransform2Filter", flat, fine);
    EXPECT_EQ(pixel(image, 10, 10), (Pixel{10, 200, 30, 255}));
    EXPECT_EQ(pixel(image, 10, 2), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(pixel(image, 25, 10), (Pixel{255, 255, 255, 255}));
}

TEST_F(Pipeline, FitsTheKaleidoscopeIntoThePicture)
{
    // Red above blue. One pair of mirrored halves shows the upper one twice: 60 by 40 pixels in the
    // middle of a square of 74, which is shrunk to the picture's height.
    const PictureRef halves = Picture::fromBitmap(bitmapFrom(60, 40, [](int, int y) {
        return y < 20 ? Pixel{255, 0, 0, 255} : Pixel{0, 0, 255, 255};
    }));
    const Dictionary once = {{"inputCount", 1}, {"CIFinputCenter", Point{30, 20}}};
    const PictureRef result = apply("CIKaleidoscope", once, halves);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->size(), (foundation::Size{60, 40}));
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x) {
            const bool beside = x < 13 || x >= 47 || y < 8 || y >= 32;
            const bool within = x >= 15 && x < 45 && y >= 11 && y < 29;
            if (beside) {
                EXPECT_EQ(pixel(result, x, y)[3], 0) << x << " " << y;
            } else if (within) {
                EXPECT_EQ(pixel(result, x, y), (Pixel{255, 0, 0, 255})) << x << " " << y;
            }
        }
    const Image overWhite = output("CIKaleidoscope", once, halves);
    EXPECT_EQ(pixel(overWhite, 20, 20), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(pixel(overWhite, 5, 20), (Pixel{255, 255, 255, 255}));
}

TEST_F(Pipeline, AnswersNothingForWhatIsNoFilter)
{
    LogLines log;
    for (const char* name : {"Crop", "CINoSuchFilter", "BlurFilters", "GLIF_Plasma", ""}) {
        EXPECT_FALSE(apply(name, {}, small)) << name;
        EXPECT_FALSE(output(name, {}, small)) << name;
    }
    EXPECT_THAT(log.lines, ElementsAre());
    EXPECT_TRUE(apply("CIColorInvert", {}, small));
}

// A filter that lacks a picture it needs has no output: transparent, or the plain background.
TEST_F(Pipeline, FinishesWithoutAnOutput)
{
    const PictureRef result = apply("CIShadedMaterial", {}, small);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->size(), (foundation::Size{4, 4}));
    ASSERT_TRUE(output("CIShadedMaterial", {}, small));
}

// Every entry that has a filter, with its own defaults on a small picture; a texture and a material
// where they are taken.
TEST_F(Pipeline, AppliesEveryEntryOfTheCatalogue)
{
    const PictureRef source = patterned(24, 16), aid = patterned(8, 8);
    const Dictionary common = {{"CIFinputCenter", Point{12, 8}},
                               {"CIFinputTexture", aid},
                               {"CIFinputShadingImage", aid},
                               {"inputRadius", "not a number"}};
    int applied = 0;
    for (const std::string& name : main.CIFAllFilterIdentifiers()) {
        if (name == "NSToolbarSeparatorItemIdentifier" || name == "Crop")
            continue;
        std::vector<std::string> names = {name};
        if (const auto members = main.CIFFiltersDescriptorForGroup(name)) {
            names.clear();
            for (const Value& member : *members)
                names.push_back(member.dictionary()->stringValue("CIFFilterIdentifier"));
        }
        for (const std::string& filter : names) {
            if (!main.CIFQueryInputKeysForFilter(filter))
                continue;
            ++applied;
            // The circle that these two clear is larger than the picture, unless it is told.
            Dictionary attributes = common;
            if (filter == "CIHoleDistortion" || filter == "CICircularWrap")
                attributes.set("inputRadius", 4);
            const PictureRef result = apply(filter, attributes, source);
            ASSERT_TRUE(result) << filter;
            ASSERT_TRUE(result->bitmap()) << filter;
            EXPECT_EQ(result->size(), (foundation::Size{24, 16})) << filter;
            int covered = 0;
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < 24; ++x)
                    covered += pixel(result, x, y)[3] > 0;
            EXPECT_GT(covered, 0) << filter;
            EXPECT_TRUE(output(filter, attributes, source)) << filter;
        }
    }
    EXPECT_EQ(applied, 72);
}

TEST_F(Pipeline, GeneratesLayers)
{
    LogLines log;
    const Dictionary attributes = {{"GLIFRandomSeed", 3}};
    const auto layer = [&](foundation::Size size) {
        srand(3);
        return main.CIFGenerateLayerAttributesSize("GLIF_Plasma", attributes, size);
    };
    const PictureRef plasma = layer({40.9, 20.2});
    ASSERT_TRUE(plasma);
    EXPECT_EQ(plasma->size(), (foundation::Size{40, 20}));
    EXPECT_TRUE(sameBytes(plasma->bitmap(), layer({40, 20})->bitmap()));
    EXPECT_FALSE(layer({-5, 20}));
    EXPECT_FALSE(layer({std::numeric_limits<double>::quiet_NaN(), 20}));

    srand(3);
    const PictureRef like = main.CIFGenerateLayerAttributesForImage(
        "GLIF_Plasma", attributes, Picture::fromBitmap(patterned(80, 40)->bitmap(), {40, 20}));
    ASSERT_TRUE(like);
    EXPECT_TRUE(sameBytes(plasma->bitmap(), like->bitmap()));
    EXPECT_THAT(log.lines, ElementsAre());
    EXPECT_FALSE(main.CIFGenerateLayerAttributesSize("GLIF_Nothing", {}, {4, 4}));
    EXPECT_FALSE(main.CIFGenerateLayerAttributesForImage("CISobel", {}, small));
    EXPECT_THAT(log.lines, ElementsAre("can't instantiate class 'GLIF_Nothing'",
                                       "can't instantiate class 'CISobel'"));
}
