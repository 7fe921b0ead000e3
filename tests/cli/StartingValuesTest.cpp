// The values that the editor's controls start with, worked out by hand from catalogue and filters.
#include "Shell.h"

#include "plugin/Catalogue.h"
#include "plugin/Recipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using foundation::Color;
using foundation::Dictionary;
using foundation::Point;
using foundation::Value;
using namespace plugin;

class StartingValues : public testing::Test {
protected:
    StartingValues()
    {
        setenv("CIF_CONTENT_LIBRARY", _shell.library().c_str(), 1);
        _main.emplace();
    }
    ~StartingValues() override { unsetenv("CIF_CONTENT_LIBRARY"); }

    Entry entry(std::string_view name)
    {
        auto described = describeEntry(*_main, name);
        EXPECT_TRUE(described) << name;
        return described ? *described : Entry();
    }
    Dictionary of(std::string_view name, foundation::Size size = {300, 200})
    {
        auto values = startingValues(*_main, entry(name), size);
        EXPECT_TRUE(values) << values.error();
        return values ? *values : Dictionary();
    }

    // Of both catalogues, members in place of their groups.
    std::vector<std::string> everyName()
    {
        std::vector<std::string> names;
        for (const std::uint32_t set : {0u, 1u}) {
            _main->CIFSetEffectsSet(set);
            for (const auto& entry : plugin::allDescriptors(_main->CIFAllFilterDescriptors()))
                if (!entry->contains("DESC_LIST"))
                    names.push_back(entry->stringValue("CIFFilterIdentifier"));
        }
        return names;
    }

    tests::Shell _shell;
    std::optional<CIFMain> _main;
};

TEST_F(StartingValues, TakeRowsFromTheCatalogueInKeyOrder)
{
    EXPECT_EQ(of("CIColorControls"),
              (Dictionary{
                  {"inputSaturation", 1.5f}, {"inputBrightness", 0.0f}, {"inputContrast", 1.3f}}));
    EXPECT_EQ(of("CICheckerboardGenerator"), (Dictionary{{"CIFinputCenter", Point{150, 100}},
                                                         {"inputColor0", Color::white()},
                                                         {"inputColor1", Color::black()},
                                                         {"inputWidth", 32.0f},
                                                         {"inputSharpness", 1.0f}}));
    // Picked points are in single precision.
    EXPECT_EQ(of("CICheckerboardGenerator", {0.2, 0.2})["CIFinputCenter"],
              Value(Point{double(0.1f), double(0.1f)}));
}

TEST_F(StartingValues, AreTheDescribedDefaultsWhereTheCatalogueOffersNone)
{
    // Registered, but without an entry of its own.
    EXPECT_EQ(of("CIShadedMaterial"),
              (Dictionary{{"CIFinputShadingImage", _main->CIFShadingMaterialWithName("Marble")},
                          {"inputScale", 10}}));
}

TEST_F(StartingValues, HoldEveryAdvertisedDefaultOfAGenerator)
{
    const auto attributes = _main->CIFQueryAttributesForFilter("GLIF_Plasma");
    const Dictionary values = of("GLIF_Plasma");
    EXPECT_EQ(values.size(), attributes->size());
    for (const auto& [key, description] : *attributes)
        EXPECT_EQ(values[key], (*description.dictionary())["GLIFDefValue"]) << key;
}

TEST_F(StartingValues, TakeTheFirstTextureAndMaterialOfTheMenu)
{
    // Textures stand in byte order. Of the materials Marble, Sand and clay the comparison puts Sand
    // behind whatever comes before it in the list; clay then sorts before Marble but not past Sand.
    EXPECT_THAT(libraryNames(*_main, ValueKind::GlassTexture),
                testing::ElementsAre("Bubbles", "Ripple"));
    EXPECT_THAT(libraryNames(*_main, ValueKind::ShadingMaterial),
                testing::ElementsAre("Marble", "Sand", "clay"));
    EXPECT_NE(_main->CIFShadingMaterialWithName("Marble"), nullptr);
}

TEST_F(StartingValues, BrushesFromFilesWithoutTransparencyBecomeMasks)
{
    _shell.writePicture("grey.png", 9, 7);
    _shell.writePicture("clear.png", 9, 7, true);
    const auto grey = _shell.picture("grey.png"), clear = _shell.picture("clear.png");
    const auto mask = convertMaskImage(grey)->bitmap();
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 9; ++x) {
            const std::uint8_t* m = mask->rowAs<std::uint8_t>(y) + x * 4;
            EXPECT_EQ(m[0] + m[1] + m[2], 0);
            EXPECT_EQ(m[3], grey->bitmap()->rowAs<std::uint8_t>(y)[x * 4]);
        }
    }
    EXPECT_EQ(convertMaskImage(clear), clear);
}

TEST_F(StartingValues, EveryOneLiesInItsOwnRanges)
{
    int numbers = 0;
    for (const std::string& name : everyName()) {
        const auto described = describeEntry(*_main, name);
        for (const Parameter& p : described ? described->parameters : std::vector<Parameter>()) {
            const foundation::Number* n = p.startingValue.number();
            if (!n)
                continue;
            ++numbers;
            EXPECT_TRUE(p.valid.contains(n->doubleValue())) << name << ' ' << p.key;
            EXPECT_TRUE(p.slider.contains(n->doubleValue())) << name << ' ' << p.key;
        }
    }
    EXPECT_GT(numbers, 150);
}

TEST_F(StartingValues, TheCatalogueOnlyWidensWhatIsValid)
{
    const Entry sobel = entry("CIFSobel");
    const Parameter& intensity = *sobel.find("inputIntensity");
    EXPECT_EQ(intensity.row, 1);
    EXPECT_EQ(intensity.slider.maximum, 10);
    EXPECT_TRUE(!intensity.valid.maximum || *intensity.valid.maximum >= 10);

    // 15 is where the slider ends, not what the filter takes.
    const Entry blur = entry("CIGaussianBlur");
    const Parameter& radius = *blur.find("inputRadius");
    EXPECT_EQ(radius.slider.maximum, 15);
    EXPECT_TRUE(radius.valid.contains(50));
    EXPECT_FALSE(radius.valid.contains(-1));
}

TEST_F(StartingValues, PreparedStepsRepeatToTheSameAttributes)
{
    for (const char* name : {"CIColorControls", "CIShadedMaterial", "CICheckerboardGenerator",
                             "CIColorMonochrome", "GLIF_Plasma", "GLIF_HilbertCurve"}) {
        SCOPED_TRACE(name);
        const Entry e = entry(name);
        ASSERT_FALSE(e.parameters.empty());
        const auto first =
            prepareStep(*_main, e, {name, {}, 77, true}, {300, 200}, Checking::Strict);
        ASSERT_TRUE(first) << first.error().text;
        const auto recipe = parseRecipe(recipeJson({first->asRun}, "1"));
        ASSERT_TRUE(recipe) << recipe.error();
        const auto second = prepareStep(*_main, e, recipe->front(), {300, 200}, Checking::Strict);
        ASSERT_TRUE(second) << second.error().text;
        EXPECT_EQ(second->attributes, first->attributes);
        EXPECT_EQ(second->asRun, first->asRun);
        EXPECT_EQ(first->attributes.contains("GLIFRandomSeed"), e.isGenerator);
    }
}

} // namespace
