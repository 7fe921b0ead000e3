// What every registered generator promises.
#include "generators/Random.h"
#include "tests/generators/Generate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace support;
using foundation::Color;
using foundation::Number;
using foundation::Value;

namespace {

class Generator : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override { ASSERT_TRUE(_generator); }

    const std::shared_ptr<GLIFCoreObject> _generator = makeGenerator(GetParam());
    LogRecorder _log; // keeps expected complaints off the terminal
};

// Other colours than these attributes have.
Dictionary recolored(Dictionary attributes)
{
    attributes.set("GLIFColorRangeMin", 0.4f);
    attributes.set("GLIFColorRangeMax", 0.9f);
    attributes.set("GLIFColorScheme", 6);
    attributes.set("GLIFSchemeKeyColor", 0.85f);
    attributes.set("GLIFUseBackgroundColor", true);
    attributes.set("GLIFBackgroundColor", Color::rgb(0.2f, 0.3f, 0.4f));
    return attributes;
}

} // namespace

TEST_P(Generator, IsListedUnderItsOwnName)
{
    EXPECT_NE(makeGenerator(GetParam()), _generator);
    EXPECT_EQ(makeGenerator(GetParam() + "x"), nullptr);
    EXPECT_EQ(makeGenerator(""), nullptr);
}

TEST_P(Generator, DescribesItsParameters)
{
    const std::vector<std::string> keys = _generator->GLIFQueryInputKeys();
    const Dictionary attributes = _generator->GLIFQueryAttributes();
    EXPECT_FALSE(keys.empty());
    EXPECT_TRUE(_generator->GLIFQueryOutputKeys().empty());
    std::size_t described = 0;
    for (const std::string& key : keys) {
        const bool isBackground = key == "GLIFUseBackgroundColor" || key == "GLIFBackgroundColor";
        const Value* entry = attributes.find(key);
        EXPECT_TRUE(entry || isBackground) << key;
        if (!entry)
            continue;
        ++described;
        ASSERT_TRUE(entry->dictionary()) << key;
        const Dictionary& description = *entry->dictionary();
        const Number* least = description["GLIFMinValue"].number();
        const Number* most = description["GLIFMaxValue"].number();
        const Number* normal = description["GLIFDefValue"].number();
        if (!normal) {
            EXPECT_TRUE(description["GLIFDefValue"].color() || isBackground) << key;
            continue;
        }
        ASSERT_TRUE(least && most) << key;
        EXPECT_EQ(least->kind(), most->kind()) << key;
        EXPECT_LE(least->doubleValue(), normal->doubleValue()) << key;
        EXPECT_LE(normal->doubleValue(), most->doubleValue()) << key;
    }
    EXPECT_EQ(described, attributes.size()) << "a description without a key";
}

TEST_P(Generator, RepeatsItselfToTheByte)
{
    for (const Dictionary& attributes : {defaultsOf(*_generator), Dictionary()}) {
        const std::string once = bytesOf(generate(GetParam(), 64, 48, attributes, 7));
        const std::uint64_t draws = generators::randomDraws();
        EXPECT_EQ(bytesOf(generate(GetParam(), 64, 48, attributes, 7)), once);
        EXPECT_EQ(generators::randomDraws(), draws);
    }
}

TEST_P(Generator, DrawsWhatItIsAskedForWhateverItDrewBefore)
{
    const Dictionary attributes = recolored(defaultsOf(*_generator));
    const std::string fresh = bytesOf(generate(GetParam(), 40, 30, attributes, 7));
    generate(*_generator, 64, 48, defaultsOf(*_generator), 9);
    EXPECT_EQ(bytesOf(generate(*_generator, 40, 30, attributes, 7)), fresh);
}

TEST_P(Generator, NeverComputesItsFieldAgainForAColor)
{
    const Dictionary attributes = defaultsOf(*_generator);
    generate(*_generator, 64, 48, attributes);
    const int computed = _generator->fieldsComputed();
    EXPECT_LE(computed, 1);
    for (const Dictionary& colors : {attributes, recolored(attributes), attributes})
        generate(*_generator, 64, 48, colors, 99);
    EXPECT_EQ(_generator->fieldsComputed(), computed);
    generate(*_generator, 64, 49, attributes);
    EXPECT_EQ(_generator->fieldsComputed(), 2 * computed);
}

TEST_P(Generator, BearsAnyNumberUnderAnyKey)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const int sizes[][2] = {{1, 1}, {3, 2}, {64, 48}};
    for (const std::string& key : _generator->GLIFQueryInputKeys()) {
        const Value description = _generator->GLIFQueryAttributes()[key];
        std::vector<Value> values = {0, -1, 1e30, -1e30, nan, "text", Color::clear()};
        if (description.dictionary()) {
            values.push_back((*description.dictionary())["GLIFMinValue"]);
            values.push_back((*description.dictionary())["GLIFMaxValue"]);
        }
        for (const Value& value : values)
            for (const auto& [width, height] : sizes) {
                Dictionary attributes = defaultsOf(*_generator);
                attributes.set(key, value);
                const PictureRef picture = generate(*_generator, width, height, attributes);
                if (!picture)
                    continue;
                ASSERT_EQ(picture->size(), (foundation::Size{double(width), double(height)}));
                EXPECT_TRUE(picture->bitmap()) << key;
            }
    }
}

// The texts are fixed, odd spellings included; a bitmap generator says nothing.
TEST(VectorGenerators, SayWhenThereIsNoPicture)
{
    const std::pair<const char*, const char*> texts[] = {
        {"GLIF_ColourBars", "GLIF_ColourBars: can't generate"},
        {"GLIF_FlashLines", "GLIF_FlashLines: can't generate"},
        {"GLIF_Shapes", "GLIF_Shapes: can't generate"},
        {"GLIF_StarField", "GLIF_StarField: can't generate"},
        {"GLIF_TwistPolygons", "GLIF_PolygonSquares: can't generate"},
        {"GLIF_TwistedSquares", "GLIF_TwistedSquares: can't generate"},
    };
    for (const auto& [name, text] : texts) {
        LogRecorder log;
        EXPECT_EQ(generate(name, 10, 0, {}), nullptr);
        EXPECT_EQ(log.lines, std::vector<std::string>{text});
        EXPECT_TRUE(generate(name, 10, 1, {})->isVector());
    }
}

INSTANTIATE_TEST_SUITE_P(Registered, Generator, testing::ValuesIn(generators::classNames()),
                         [](const auto& test) { return test.param; });
