// What generators share: parameters, the record of the last computation, background and pictures.
#include "generators/GLIFCoreObject.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"

#include <gmock/gmock.h>

using namespace support;
using drawing::Canvas;
using foundation::Color;
using foundation::Rect;
using foundation::Size;
using testing::ElementsAre;

namespace {

constexpr generators::AttributeTable kProbeAttributes = {
    {"GLIFCount", 1, 9, 3.0f},
    {"GLIFBackgroundColor", Color::white()},
    {"GLIFNothing", generators::Attribute::Kind::EmptyDescription},
    {"GLIFUnknown", generators::Attribute::Kind::NoDescription},
};

// A generator of two strokes, with what the base keeps made visible.
struct Probe : GLIFCoreObject {
    using GLIFCoreObject::_backColor;
    using GLIFCoreObject::_bNeedUpdateCashe;
    using GLIFCoreObject::_colorRangeMax;
    using GLIFCoreObject::_colorRangeMin;
    using GLIFCoreObject::_iColorScheme;
    using GLIFCoreObject::_prefetchBuffer;
    using GLIFCoreObject::_schemeKeyColor;
    using GLIFCoreObject::_useBackColor;
    using GLIFCoreObject::kUnsetValue;
    using GLIFCoreObject::makeBitmap;
    using GLIFCoreObject::paintField;
    using GLIFCoreObject::penWidth;
    using GLIFCoreObject::pictureOverBackground;
    using GLIFCoreObject::renderBitmap;
    using GLIFCoreObject::renewPrefetchBuffer;

    const AttributeTable& attributeTable() const override { return kProbeAttributes; }

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override
    {
        readSharedAttributes(attributes);
        return renderDrawRect(pictureSize(reference, width, height), "Probe: can't generate");
    }

    void drawRect(Canvas& canvas, const Rect& rect) override
    {
        drawBackgroundInRect(canvas, rect);
        canvas.setColor(Color::rgb(1, 0, 0));
        canvas.fillRect({0, 0, rect.width / 2, rect.height / 2});
    }
};

} // namespace

TEST(GeneratorBase, ReadsTheSharedParameters)
{
    Probe probe;
    generate(probe, 4, 4,
             {{"GLIFColorScheme", 2.9},
              {"GLIFSchemeKeyColor", 0.1},
              {"GLIFColorRangeMin", 0.1},
              {"GLIFColorRangeMax", 0.5},
              {"GLIFUseBackgroundColor", true},
              {"GLIFBackgroundColor", Color::rgb(0, 1, 0)}});
    EXPECT_EQ(probe._iColorScheme, 2);
    EXPECT_EQ(probe._schemeKeyColor, 0.1);
    EXPECT_EQ(probe._colorRangeMin, 0.100000001490116119384765625);
    EXPECT_EQ(probe._colorRangeMax, 0.5);

    // Left out: the range starts afresh, everything else keeps its value.
    generate(probe, 4, 4, {{"GLIFColorRangeMax", 0.25}, {"GLIFBackgroundColor", "no colour"}});
    EXPECT_EQ(probe._colorRangeMin, 0);
    EXPECT_EQ(probe._colorRangeMax, 0.25);
    EXPECT_EQ(probe._iColorScheme, 2);
    EXPECT_TRUE(probe._useBackColor);
    EXPECT_EQ(probe._backColor, Color::rgb(0, 1, 0));
    generate(probe, 4, 4, {});
    EXPECT_EQ(probe._colorRangeMax, 1);
}

TEST(GeneratorBase, DescribesItsParametersInOrder)
{
    const Probe probe;
    EXPECT_THAT(probe.GLIFQueryInputKeys(),
                ElementsAre("GLIFCount", "GLIFBackgroundColor", "GLIFNothing", "GLIFUnknown"));
    const Dictionary attributes = probe.GLIFQueryAttributes();
    const Dictionary count = *attributes["GLIFCount"].dictionary();
    using Kind = foundation::Number::Kind;
    EXPECT_EQ(count["GLIFMinValue"].number()->kind(), Kind::Integer);
    EXPECT_EQ(count["GLIFDefValue"].number()->kind(), Kind::Float);
    EXPECT_EQ(*attributes["GLIFBackgroundColor"].dictionary(),
              (Dictionary{{"GLIFDefValue", Color::white()}}));
    EXPECT_TRUE(attributes["GLIFNothing"].dictionary()->empty());
    EXPECT_FALSE(attributes.contains("GLIFUnknown"));
    EXPECT_TRUE(GLIFCoreObject().GLIFQueryInputKeys().empty());
    EXPECT_TRUE(GLIFCoreObject().GLIFQueryAttributes().empty());
}

TEST(GeneratorBase, OnlySizeAndOwnParametersMakeTheFieldStale)
{
    Probe probe;
    Dictionary attributes = {{"GLIFCount", 3}, {"GLIFRandomSeed", 1}, {"GLIFColorScheme", 1}};
    const auto isStale = [&](int width, int height) {
        probe.GLIFUpdateCasheWidthHeight(attributes, width, height);
        return probe._bNeedUpdateCashe;
    };
    EXPECT_TRUE(isStale(10, 20));
    EXPECT_FALSE(isStale(10, 20));
    for (const char* key : {"GLIFColorScheme", "GLIFSchemeKeyColor", "GLIFColorRangeMin",
                            "GLIFColorRangeMax", "GLIFUseBackgroundColor", "GLIFBackgroundColor"}) {
        attributes.set(key, 0.75);
        EXPECT_FALSE(isStale(10, 20)) << key;
    }
    EXPECT_TRUE(isStale(11, 20));
    EXPECT_TRUE(isStale(11, 21));
    attributes.set("GLIFCount", 4);
    EXPECT_TRUE(isStale(11, 21));
    attributes.set("GLIFRandomSeed", 2);
    EXPECT_TRUE(isStale(11, 21));
    attributes.remove("GLIFCount");
    EXPECT_TRUE(isStale(11, 21));
    EXPECT_FALSE(isStale(11, 21));
    // The question alone does not record the answer.
    EXPECT_TRUE(probe.GLIFIsChangeAttributesNewWidthNewHeight(attributes, 5, 5));
    EXPECT_TRUE(probe.GLIFIsChangeAttributesNewWidthNewHeight(attributes, 5, 5));
}

TEST(GeneratorBase, FieldSizeSaturates)
{
    const Probe probe;
    EXPECT_EQ(probe.GLIFQueryPrefetchBufferSizeForSize({100, 50}), 40000u);
    EXPECT_EQ(probe.GLIFQueryPrefetchBufferSizeForSize({0, 10}), 0u);
    EXPECT_EQ(probe.GLIFQueryPrefetchBufferSizeForSize({-1, 10}), 0u);
    EXPECT_EQ(probe.GLIFQueryPrefetchBufferSizeForSize({1e5, 1e5}), 4294967295u);
}

TEST(GeneratorBase, BackgroundReplacesWhatWasThere)
{
    Probe probe;
    const auto opsOf = [&](const Dictionary& attributes) {
        return generate(probe, 8, 8, attributes)->recording()->ops.size();
    };
    EXPECT_EQ(opsOf({}), 1u);
    EXPECT_EQ(opsOf({{"GLIFUseBackgroundColor", true}}), 1u); // wanted, but no colour is set
    EXPECT_EQ(opsOf({{"GLIFBackgroundColor", Color::rgb(0, 0, 1, 0.5f)}}), 2u);
    EXPECT_EQ(opsOf({{"GLIFUseBackgroundColor", false}}), 1u);

    // In a bitmap: under the pixels that were set, and only there.
    auto bitmap = probe.makeBitmap({2, 1});
    bitmap->rowAs<std::uint32_t>(0)[1] = 0xFF112233;
    generate(probe, 8, 8, {{"GLIFUseBackgroundColor", true}});
    const auto* row = probe.pictureOverBackground(bitmap)->bitmap()->rowAs<std::uint32_t>(0);
    EXPECT_EQ(row[0], 0x80FF0000u);
    EXPECT_EQ(row[1], 0xFF112233u);
}

TEST(GeneratorBase, TakesTheSizeOfTheReferencePicture)
{
    Probe probe;
    const PictureRef reference = drawing::Picture::blank({30.9, 20.2});
    const PictureRef picture = probe.GLIFOutputImageWidthHeightAttributes(reference, 0, 0, {});
    EXPECT_EQ(picture->size(), (Size{30, 20}));
    EXPECT_TRUE(picture->isVector());
    EXPECT_FALSE(generate("GLIF_Plasma", 8, 8, {})->isVector());
}

TEST(GeneratorBase, SaysWhenItCannotGenerate)
{
    Probe probe;
    const int sizes[][2] = {{0, 5}, {5, -1}, {100'001, 5}, {5, 100'001}};
    for (const auto& [width, height] : sizes) {
        LogRecorder log;
        EXPECT_EQ(generate(probe, width, height, {}), nullptr);
        EXPECT_THAT(log.lines, ElementsAre("Probe: can't generate"));
        EXPECT_EQ(probe.makeBitmap({width, height}), nullptr);
        EXPECT_EQ(probe.renderBitmap({width, height}, [](Canvas&) {}), nullptr);
    }
    // 40 gigabytes, and twice that for its field.
    EXPECT_EQ(probe.makeBitmap({100'000, 100'000}), nullptr);
    EXPECT_FALSE(probe.renewPrefetchBuffer(10'000'000'000));
    EXPECT_EQ(probe.GLIFPrefetchBuffer(), nullptr);
    EXPECT_EQ(probe.fieldsComputed(), 0);
}

TEST(GeneratorBase, PaintsAFieldColumnByColumn)
{
    // Sides that are no multiple of any tile.
    constexpr int kWidth = 37, kHeight = 300;
    Probe probe;
    generate(probe, 1, 1, {});
    ASSERT_TRUE(probe.renewPrefetchBuffer(kWidth * kHeight));
    const auto valueAt = [](int x, int y) { return ((x * 31 + y * 17) % 512 - 1) / 500.0; };
    for (int x = 0; x < kWidth; ++x)
        for (int y = 0; y < kHeight; ++y)
            probe._prefetchBuffer[x * kHeight + y] = valueAt(x, y);
    probe._prefetchBuffer[0] = Probe::kUnsetValue;
    probe._prefetchBuffer[1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Probe::kUnsetValue, 32.501960784313724);

    auto bitmap = probe.makeBitmap({kWidth, kHeight});
    probe.paintField(*bitmap, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            std::uint32_t expected = 0;
            if (!(x == 0 && y < 2) && valueAt(x, y) > 0 && valueAt(x, y) <= 1)
                generators::computeColorToMem(expected, valueAt(x, y), 0, 1);
            ASSERT_EQ(bitmap->rowAs<std::uint32_t>(y)[x], expected) << x << ' ' << y;
        }
}

TEST(GeneratorBase, DrawingIntoABitmapKeepsTheDrawing)
{
    Probe probe;
    const PictureRef picture = probe.renderBitmap({6, 4}, [](Canvas& canvas) {
        canvas.fillRect({0, 0, 3, 2});
    });
    ASSERT_TRUE(picture);
    ASSERT_TRUE(picture->recording());
    // Lower left: y is up, rows are down.
    EXPECT_EQ(picture->bitmap()->rowAs<std::uint32_t>(3)[0], 0xFF000000u);
    EXPECT_EQ(picture->bitmap()->rowAs<std::uint32_t>(0)[0], 0u);
}

TEST(GeneratorBase, PensAreNeverNegative)
{
    EXPECT_EQ(Probe::penWidth(2.5f), 2.5f);
    EXPECT_EQ(Probe::penWidth(-1), 0);
    EXPECT_EQ(Probe::penWidth(std::nanf("")), 0);
    EXPECT_EQ(Probe::penWidth(1e30f), 100'000);
}

TEST(RandomSequence, IsTheCLibrarysAndCounted)
{
    std::srand(3);
    const int first = std::rand();
    const int second = std::rand();
    std::srand(3);
    generators::restartRandomDraws();
    EXPECT_EQ(generators::randomInt(), first);
    EXPECT_EQ(generators::randomUnit(), static_cast<float>(second) / 2147483648.0f);
    EXPECT_EQ(generators::randomDraws(), 2u);
    generate("GLIF_HilbertCurve", 8, 8, {{"GLIFCurveRange", 0}});
    EXPECT_EQ(generators::randomDraws(), 0u);
}
