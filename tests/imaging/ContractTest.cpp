// What every filter keeps to, whatever it draws: a filter is covered from the day it is registered.
#include "tests/support/Support.h"

#include "platform/imaging/Filter.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>

using namespace support;
using foundation::AffineTransform;
using foundation::Array;
using foundation::Color;
using foundation::Number;
using foundation::Vector;
using imaging::Filter;
using imaging::FilterDescription;
using imaging::FilterRegistry;
using imaging::PixelRect;

namespace {

std::vector<std::string> allFilters()
{
    registerFilters();
    return FilterRegistry::shared().names();
}

// Pictures for every input that takes one: "inputImage", and another for the rest.
void setImages(Filter& filter, const Image& input, const Image& auxiliary)
{
    for (const FilterDescription::InputDescription& in : filter.description().inputs)
        if (in.attributeClass == "CIImage") {
            ASSERT_TRUE(filter.setValueForKey(in.key == "inputImage" ? input : auxiliary, in.key));
        }
}

bool takesImage(const Filter& filter)
{
    return filter.description().input("inputImage") != nullptr;
}

// The part of an image that is worth looking at: what it covers around the test pictures.
PixelRect region(const Image& image)
{
    const Rect e = image.extent();
    const double left = std::max(e.x, -40.0), right = std::min(e.right(), 140.0);
    const double bottom = std::max(e.y, -30.0), top = std::min(e.top(), 110.0);
    return {int(left), int(bottom), int(std::max(0.0, right - left)),
            int(std::max(0.0, top - bottom))};
}

std::shared_ptr<Bitmap> pixels(const Image& image, const PixelRect& rect)
{
    return imaging::render(image, rect, PixelFormat::RgbaF);
}

bool sameBytes(const Bitmap& a, int ax, int ay, const Bitmap& b, int bx, int by, int width,
               int height)
{
    for (int y = 0; y < height; ++y)
        if (std::memcmp(a.row(ay + y) + 16 * ax, b.row(by + y) + 16 * bx, 16 * width) != 0)
            return false;
    return true;
}

bool allFinite(const Bitmap& bitmap)
{
    for (int y = 0; y < bitmap.height(); ++y)
        for (int i = 0; i < 4 * bitmap.width(); ++i)
            if (!std::isfinite(bitmap.rowAs<float>(y)[i]))
                return false;
    return true;
}

bool allZero(const Bitmap& bitmap)
{
    for (int y = 0; y < bitmap.height(); ++y)
        for (int i = 0; i < 4 * bitmap.width(); ++i)
            if (bitmap.rowAs<float>(y)[i] != 0)
                return false;
    return true;
}

class FilterContract : public testing::TestWithParam<std::string> {
protected:
    // With its defaults and with pictures.
    static std::unique_ptr<Filter> made(const Image& input = image(picture("photo-96x64")),
                                        const Image& auxiliary = image(picture("alpha-64x48")))
    {
        std::unique_ptr<Filter> filter = Filter::filterWithName(GetParam());
        filter->setDefaults();
        setImages(*filter, input, auxiliary);
        // Its wedge opens to the right of the centre, which must not lie beyond these pictures.
        if (GetParam() == "CIKaleidoscope")
            filter->setValueForKey(Vector(30, 20), "inputCenter");
        return filter;
    }
};

// Pictures give the same wherever they lie, when centres move with them; not so for these.
const std::set<std::string> kTiedToTheOrigin = {
    "CIRandomGenerator",    // the pixel's own coordinates are what it shows
    "CIComicEffect",        // its dots lie on one grid for the whole plane
    "CIPageCurlTransition", // the page is a rectangle of the plane
    // These turn, scale, mirror or ripple as if the picture began at the origin.
    "CIFAffineTile2Filter",
    "CIFAffineTransform2Filter",
    "CIFMirrorFilter",
    "CIFMirrorTileFilter",
    "CIFNetDistortion",
    "CIFOffset",
};

} // namespace

TEST_P(FilterContract, RendersFromItsDefaults)
{
    for (const char* name : {"photo-96x64", "alpha-64x48", "edges-64x48"}) {
        const Image out = made(image(picture(name)))->outputImage();
        ASSERT_FALSE(out.extent().isEmpty()) << name;
        const auto whole = pixels(out, region(out));
        ASSERT_TRUE(whole) << name;
        EXPECT_TRUE(allFinite(*whole)) << name;
        for (const PixelFormat format : {PixelFormat::Rgba8, PixelFormat::Rgba16})
            EXPECT_TRUE(imaging::render(out, region(out), format)) << name;
    }
}

TEST_P(FilterContract, TilesAreTheWhole)
{
    const Image opaque = image(picture("photo-96x64")), soft = image(picture("alpha-64x48"));
    // Bytes, floats, and pixels that have to be computed first.
    for (const Image& input : {opaque, soft, opaque.translated(-7, 5).cropped({-7, 5, 61, 50})}) {
        const Image out = made(input)->outputImage();
        const PixelRect all = region(out);
        const auto whole = pixels(out, all);
        ASSERT_TRUE(whole);
        constexpr int kWidth = 37, kHeight = 23;
        for (int y = 0; y < all.height; y += kHeight)
            for (int x = 0; x < all.width; x += kWidth) {
                const int w = std::min(kWidth, all.width - x),
                          h = std::min(kHeight, all.height - y);
                const auto tile = pixels(out, {all.x + x, all.y + y, w, h});
                ASSERT_TRUE(tile);
                ASSERT_TRUE(sameBytes(*tile, 0, 0, *whole, x, all.height - y - h, w, h))
                    << "tile at " << all.x + x << ", " << all.y + y;
            }
        // On one thread, too.
        imaging::RenderOptions options;
        options.threaded = false;
        const auto alone = imaging::render(out, all, PixelFormat::RgbaF, options);
        EXPECT_TRUE(sameBytes(*alone, 0, 0, *whole, 0, 0, all.width, all.height));
    }
}

TEST_P(FilterContract, NothingLiesOutsideItsExtent)
{
    const Image out = made()->outputImage();
    const Rect e = out.extent();
    EXPECT_EQ(e.x, std::floor(e.x));
    EXPECT_EQ(e.y, std::floor(e.y));
    if (e.isInfinite())
        return;
    const int left = int(e.x), bottom = int(e.y), right = int(e.right()), top = int(e.top());
    const int width = right - left + 10, height = top - bottom + 10;
    for (const PixelRect& beside :
         {PixelRect{left - 5, bottom - 5, width, 5}, PixelRect{left - 5, top, width, 5},
          PixelRect{left - 5, bottom - 5, 5, height}, PixelRect{right, bottom - 5, 5, height}})
        EXPECT_TRUE(allZero(*pixels(out, beside)));
}

TEST_P(FilterContract, MovesWithItsPictures)
{
    if (kTiedToTheOrigin.contains(GetParam()))
        GTEST_SKIP() << "depends on where the picture lies";
    // By whole tiles, which grids of blurs and strips of rows keep to.
    constexpr int kRight = 2048, kDown = -1024;
    const Image opaque = image(picture("photo-96x64")), soft = image(picture("alpha-64x48"));
    const Image here = made(opaque, soft)->outputImage();
    const auto filter = made(opaque.translated(kRight, kDown), soft.translated(kRight, kDown));
    if (const Value center = filter->valueForKey("inputCenter");
        const auto* v = center.get<Vector>())
        filter->setValueForKey(Vector(v->x + kRight, v->y + kDown), "inputCenter");
    const Image there = filter->outputImage();
    const Rect e = here.extent();
    if (e.isInfinite())
        EXPECT_TRUE(there.extent().isInfinite());
    else
        EXPECT_EQ(there.extent(), (Rect{e.x + kRight, e.y + kDown, e.width, e.height}));
    const PixelRect all = region(here);
    const auto a = pixels(here, all);
    const auto b = pixels(there, {all.x + kRight, all.y + kDown, all.width, all.height});
    EXPECT_LT(compare(*a, *b).largest, 1e-4) << compare(*a, *b);
}

TEST_P(FilterContract, NothingComesOfAnEmptyPicture)
{
    const Image empty = image(picture("photo-96x64")).cropped({});
    const auto filter = made(empty, empty);
    if (!takesImage(*filter))
        GTEST_SKIP() << "takes no picture";
    const Image out = filter->outputImage();
    EXPECT_TRUE(out.extent().isEmpty());
    EXPECT_TRUE(allZero(*pixels(out, {-3, -3, 9, 7})));
}

TEST_P(FilterContract, WithoutItsPictureThereIsNoOutput)
{
    const auto filter = made(Image());
    if (!takesImage(*filter))
        GTEST_SKIP() << "takes no picture";
    EXPECT_FALSE(filter->outputImage());
}

TEST_P(FilterContract, OnePixelIsEnough)
{
    const Image one = image(bitmapFrom(1, 1, [](int, int) { return Rgba{0.5f, 0.25f, 0, 0.5f}; }));
    const Image out = made(one, one)->outputImage();
    const auto whole = pixels(out, {-8, -8, 17, 17});
    ASSERT_TRUE(whole);
    EXPECT_TRUE(allFinite(*whole));
}

TEST_P(FilterContract, AbsurdNumbersAreSurvived)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    const Image small = image(bitmapFrom(13, 9, [](int x, int y) {
        return Rgba{float(x) / 13, float(y) / 9, 0.5f, 1};
    }));
    const auto valueOf = [](const std::string& kind, double v) -> Value {
        if (kind == "CIColor")
            return Color::rgb(float(v), float(v), float(v), float(v));
        if (kind == "CIVector")
            return Vector(v, v, v, v);
        if (kind == "NSAffineTransform")
            return AffineTransform{v, 0, 0, v, v, 1};
        return v;
    };
    const auto check = [&](Filter& filter, const std::string& what) {
        const Image out = filter.outputImage();
        if (out) {
            EXPECT_TRUE(imaging::render(out, {-5, -5, 24, 18}, PixelFormat::Rgba8)) << what;
        }
    };
    for (const double v : {std::nan(""), inf, -inf, 1e300, -1e300, 1e30, -1e10, 70'000.0, -1.0, 0.0,
                           1e-30, std::numeric_limits<double>::denorm_min()}) {
        const auto all = made(small, small);
        for (const FilterDescription::InputDescription& in : all->description().inputs) {
            if (in.attributeClass == "CIImage")
                continue;
            const Value absurd = valueOf(in.attributeClass, v);
            const auto one = made(small, small);
            ASSERT_TRUE(one->setValueForKey(absurd, in.key)) << in.key;
            check(*one, in.key + " = " + std::to_string(v));
            all->setValueForKey(absurd, in.key);
        }
        check(*all, "all = " + std::to_string(v));
    }
}

TEST_P(FilterContract, DescribesItsInputs)
{
    const auto filter = Filter::filterWithName(GetParam());
    const Dictionary attributes = filter->attributes();
    EXPECT_EQ(attributes["CIAttributeFilterName"], Value(GetParam()));
    EXPECT_FALSE(attributes.stringValue("CIAttributeFilterDisplayName").empty());
    const auto categories = attributes["CIAttributeFilterCategories"].array();
    ASSERT_TRUE(categories);
    for (const Value& c : *categories)
        EXPECT_TRUE(c.string()->starts_with("CICategory") && c.string()->size() > 10);
    const std::vector<std::string> keys = filter->inputKeys();
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()).size(), keys.size());
    for (const std::string& key : keys) {
        ASSERT_TRUE(attributes[key].dictionary()) << key;
        const Dictionary in = *attributes[key].dictionary();
        EXPECT_TRUE(key.starts_with("input"));
        EXPECT_FALSE(in.stringValue("CIAttributeClass").empty()) << key;
        if (const Value& type = in["CIAttributeType"]; !type.isNothing()) {
            EXPECT_TRUE(type.string()->starts_with("CIAttributeType") && type.string()->size() > 15)
                << key;
        }
        const Number* value = in["CIAttributeDefault"].number();
        if (!value)
            continue;
        const double v = value->doubleValue();
        EXPECT_TRUE(std::isfinite(v)) << key;
        EXPECT_LE(in.doubleValue("CIAttributeMin", v), v) << key;
        EXPECT_GE(in.doubleValue("CIAttributeMax", v), v) << key;
        EXPECT_EQ(in.contains("CIAttributeSliderMin"), in.contains("CIAttributeSliderMax")) << key;
        const double low = in.doubleValue("CIAttributeSliderMin", v);
        const double high = in.doubleValue("CIAttributeSliderMax", v);
        EXPECT_TRUE(low <= v && v <= high) << key;
        EXPECT_LE(in.doubleValue("CIAttributeMin", low), low) << key;
        EXPECT_GE(in.doubleValue("CIAttributeMax", high), high) << key;
    }
}

TEST_P(FilterContract, TakesItsDefaultsAndNothingOfTheWrongKind)
{
    const auto filter = Filter::filterWithName(GetParam());
    filter->setDefaults();
    for (const std::string& key : filter->inputKeys()) {
        const Value described = (*filter->attributes()[key].dictionary())["CIAttributeDefault"];
        const Value before = filter->valueForKey(key);
        if (!described.isNothing()) {
            EXPECT_EQ(before, described) << key;
        }
        EXPECT_FALSE(filter->setValueForKey(Value("a text"), key)) << key;
        EXPECT_FALSE(filter->setValueForKey(Value(Array{1, 2, 3, 4}), key)) << key;
        EXPECT_EQ(filter->valueForKey(key), before) << key;
    }
    EXPECT_FALSE(filter->setValueForKey(Value(1), "inputNothingOfThatName"));
    EXPECT_TRUE(filter->valueForKey("inputNothingOfThatName").isNothing());
}

TEST_P(FilterContract, BuiltInFiltersStartFromTheirDefaults)
{
    if (GetParam().starts_with("CIF") && std::isupper(GetParam()[3]))
        GTEST_SKIP() << "the plug-in's own filters start from nought";
    const auto fresh = Filter::filterWithName(GetParam()), set = Filter::filterWithName(GetParam());
    set->setDefaults();
    for (const std::string& key : fresh->inputKeys())
        if (fresh->description().input(key)->attributeClass != "CIImage") {
            EXPECT_EQ(fresh->valueForKey(key), set->valueForKey(key)) << key;
        }
}

INSTANTIATE_TEST_SUITE_P(, FilterContract, testing::ValuesIn(allFilters()),
                         [](const auto& info) { return info.param; });
