// The catalogues and the lookups on them, as a host meets them.
#include "plugin/Catalogue.h"
#include "Environment.h"
#include "generators/GLIFCoreObject.h"
#include "generators/Register.h"
#include "platform/foundation/Bundle.h"
#include "platform/imaging/Filter.h"
#include "plugin/CIFMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>

namespace {

using foundation::Array;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Number;
using foundation::Value;
using testing::ElementsAre;
using testing::ElementsAreArray;
using Strings = std::vector<std::string>;

// English names whatever the machine's language; constructed before anything that asks for a name.
struct English {
    English() { foundation::setLanguage("C"); }
    ~English() { foundation::setLanguage(""); }
};

class Catalogue : public testing::Test {
protected:
    ~Catalogue() override { plugin::resetToolkitVersion(); }

    static std::unique_ptr<CIFMain> withVersion(double version)
    {
        plugin::setToolkitVersion(version);
        return std::make_unique<CIFMain>();
    }

    static Strings keysOf(const Dictionary& d)
    {
        Strings keys;
        for (const auto& [key, value] : d)
            keys.push_back(key);
        return keys;
    }

    static std::vector<int> countsOf(const CIFMain& main)
    {
        std::vector<int> counts;
        for (int i = 0; i < main.CIFFilterCategoriesCount(); ++i)
            counts.push_back(main.CIFFilterCountForCategoryAtIndex(i));
        return counts;
    }

    static std::vector<DictionaryRef> allDescriptors(const CIFMain& main)
    {
        return plugin::allDescriptors(main.CIFAllFilterDescriptors());
    }

    English english;
    CIFMain main;
};

Number::Kind kindOf(const Dictionary& d, const char* key)
{
    return d[key].number()->kind();
}

} // namespace

TEST_F(Catalogue, HasItsNewerAndItsOlderForm)
{
    EXPECT_THAT(countsOf(main), ElementsAre(2, 13, 6, 13, 12, 5, 7, 4, 4));
    EXPECT_EQ(main.CIFFilterCount(), 66);
    EXPECT_EQ(main.CIFFilterCountBySkipCategory(), 74);
    Strings names;
    for (int i = 0; i < 9; ++i)
        names.push_back(main.CIFCategoryNameAtIndex(i));
    EXPECT_THAT(names, ElementsAre("Crop", "Color", "Focus", "Distortion", "Style", "Halftone",
                                   "Tile", "Lumine", "Overlap"));

    const auto older = withVersion(948.99);
    EXPECT_THAT(countsOf(*older), ElementsAre(2, 12, 6, 12, 10, 5, 5, 4, 3));
    EXPECT_EQ(older->CIFFilterIdentifierAtIndexForCategoryIndex(2, 2), "CIGaussianBlur");
    const auto blur = older->CIFDescriptorForFilterName("CIGaussianBlur");
    ASSERT_TRUE(blur);
    EXPECT_EQ((*blur)["CIFTag"], Value(0));
    EXPECT_EQ((*blur)["CIFFilterMaxValue"], Value(15));

    EXPECT_EQ(withVersion(949.0)->CIFFilterCount(), 66);
    EXPECT_EQ(withVersion(949.9)->CIFFilterCount(), 66);
    EXPECT_EQ(withVersion(std::numeric_limits<double>::quiet_NaN())->CIFFilterCount(), 59);
}

TEST_F(Catalogue, TakesTheToolkitVersionFromTheEnvironmentUnlessTheHostSaysOtherwise)
{
    const Variable older("CIF_TOOLKIT_VERSION", "824.4");
    EXPECT_EQ(plugin::toolkitVersion(), 824.4);
    EXPECT_EQ(CIFMain().CIFFilterCount(), 59);
    plugin::setToolkitVersion(1000);
    EXPECT_EQ(CIFMain().CIFFilterCount(), 66);
    plugin::resetToolkitVersion();
    for (const char* nonsense : {"", "old", "12x"}) {
        const Variable variable("CIF_TOOLKIT_VERSION", nonsense);
        EXPECT_EQ(plugin::toolkitVersion(), 1404.0) << nonsense;
    }
}

TEST_F(Catalogue, WritesTheKeysOfEachLayoutInOrder)
{
    const Strings plain = {"CIFFilterName",      "CIFFilterIdentifier", "CIFFilterIcon",
                           "CIFFilterDefValue1", "CIFFilterDefValue2",  "CIFFilterDefValue3",
                           "CIFFilterStyle"};
    Strings limited = plain;
    limited.insert(limited.end() - 1, {"CIFFilterMaxValue", "CIFTag"});
    Strings own = limited;
    own.push_back("CIFBits");
    Strings four = own;
    four.insert(four.begin() + 6, "CIFFilterDefValue4");
    const Strings group = {"CIFFilterName", "CIFFilterIdentifier", "CIFFilterStyle",
                           "CIFTag",        "GROUP_TAG",           "DESC_LIST"};

    std::map<Strings, int> uses;
    for (const DictionaryRef& d : allDescriptors(main))
        ++uses[keysOf(*d)];
    // 76 descriptors: 66 top-level entries and 10 members of groups.
    EXPECT_THAT(uses, (std::map<Strings, int>{
                          {plain, 48}, {limited, 16}, {own, 8}, {four, 1}, {group, 3}}));

    const auto with = [&](const char* name) {
        return keysOf(*main.CIFDescriptorForFilterNameWithGroups(name));
    };
    EXPECT_EQ(with("CIColorControls"), plain);
    EXPECT_EQ(with("CIGlideReflectedTile"), limited);
    EXPECT_EQ(with("CIFSobel"), own);
    EXPECT_EQ(with("CIBarsSwipeTransition"), four);
}

TEST_F(Catalogue, KeepsTheKindOfEveryNumber)
{
    const std::set<std::string> doubleMaximum = {"CIGaussianBlur", "CIBoxBlur", "CIDiscBlur",
                                                 "CIMotionBlur", "CIZoomBlur"};
    const std::set<std::string> floatTag = {"CIBumpDistortionLinear", "CIEdges"};
    for (const DictionaryRef& d : allDescriptors(main)) {
        const std::string id = d->stringValue("CIFFilterIdentifier");
        for (const auto& [key, value] : *d) {
            if (!value.number())
                continue;
            Number::Kind expected = Number::Kind::Integer;
            if (key.starts_with("CIFFilterDefValue") || key == "CIFFilterMaxValue")
                expected = id == "Crop" ? Number::Kind::Integer : Number::Kind::Float;
            if (key == "CIFFilterMaxValue" && doubleMaximum.contains(id))
                expected = Number::Kind::Double;
            if (key == "CIFTag" && floatTag.contains(id))
                expected = Number::Kind::Float;
            EXPECT_EQ(value.number()->kind(), expected) << id << " " << key;
        }
    }
}

TEST_F(Catalogue, GivesEachEntryItsStyleAndAnIdentifierOfItsOwn)
{
    std::map<int, int> styles;
    std::set<std::string> identifiers;
    const auto all = allDescriptors(main);
    for (const DictionaryRef& d : all) {
        ++styles[d->intValue("CIFFilterStyle", -1)];
        identifiers.insert(d->stringValue("CIFFilterIdentifier"));
    }
    EXPECT_THAT(styles, (std::map<int, int>{{0, 28}, {1, 36}, {2, 5}, {3, 6}, {255, 1}}));
    EXPECT_EQ(identifiers.size(), all.size());
}

TEST_F(Catalogue, HoldsTellingRows)
{
    EXPECT_EQ(*main.CIFDescriptorForFilterName("Crop"), (Dictionary{{"CIFFilterName", "Crop"},
                                                                    {"CIFFilterIdentifier", "Crop"},
                                                                    {"CIFFilterIcon", "CropIcon"},
                                                                    {"CIFFilterDefValue1", 0},
                                                                    {"CIFFilterDefValue2", 0},
                                                                    {"CIFFilterDefValue3", 0},
                                                                    {"CIFFilterMaxValue", 0},
                                                                    {"CIFTag", 1},
                                                                    {"CIFFilterStyle", 255}}));
    EXPECT_EQ(*main.CIFDescriptorForFilterName("CIBarsSwipeTransition"),
              (Dictionary{{"CIFFilterName", "Bars Swipe Transition"},
                          {"CIFFilterIdentifier", "CIBarsSwipeTransition"},
                          {"CIFFilterIcon", "CIBarsSwipeTransitionIcon"},
                          {"CIFFilterDefValue1", 2.38f},
                          {"CIFFilterDefValue2", 30},
                          {"CIFFilterDefValue3", 10},
                          {"CIFFilterDefValue4", 0.3f},
                          {"CIFFilterMaxValue", 6.28f},
                          {"CIFTag", 0},
                          {"CIFFilterStyle", 0},
                          {"CIFBits", 0}}));
    // Icons that are not named after their entry, and the two tags that ask for a picture.
    EXPECT_EQ(main.CIFFilterIconAtIndexForCategoryIndex(8, 1), "CICopyMachineTransitionIcon");
    EXPECT_EQ(main.CIFFilterIconAtIndexForCategoryIndex(1, 2),
              "CICopyMachineTransitionTransitionIcon");
    EXPECT_EQ((*main.CIFDescriptorForFilterName("CIGlassDistortion"))["CIFTag"], Value(10));
    EXPECT_EQ((*main.CIFDescriptorForFilterName("CIFShadingFilter"))["CIFTag"], Value(20));
}

TEST_F(Catalogue, AnswersGroups)
{
    // "Blur" stands at position 2 of "Focus" and has no icon.
    EXPECT_EQ(main.CIFFilterNameAtIndexForCategoryIndex(2, 2), "Blur");
    EXPECT_FALSE(main.CIFFilterIconAtIndexForCategoryIndex(2, 2));

    EXPECT_TRUE(main.CIFDescriptorForFilterName("BlurFilters"));
    EXPECT_FALSE(main.CIFDescriptorForFilterName("CIBoxBlur"));
    EXPECT_FALSE(main.CIFDescriptorForFilterNameWithGroups("BlurFilters"));
    const auto box = main.CIFDescriptorForFilterNameWithGroups("CIBoxBlur");
    ASSERT_TRUE(box);
    EXPECT_EQ(box->stringValue("CIFFilterName"), "Box Blur");

    struct {
        const char* identifier;
        int tag, groupTag;
        Strings members;
    } const groups[] = {
        {"BlurFilters", 33, 3, {"CIGaussianBlur", "CIBoxBlur", "CIDiscBlur"}},
        {"TiledTextures",
         31,
         1,
         {"CIFourfoldRotatedTile", "CIFourfoldTranslatedTile", "CIGlideReflectedTile"}},
        {"ReflectedTextures",
         32,
         2,
         {"CIEightfoldReflectedTile", "CIFourfoldReflectedTile", "CISixfoldReflectedTile",
          "CISixfoldRotatedTile"}}};
    for (const auto& group : groups) {
        const auto descriptor = main.CIFDescriptorForFilterName(group.identifier);
        EXPECT_EQ(descriptor->intValue("GROUP_TAG", 0), group.groupTag);
        EXPECT_EQ(descriptor->intValue("CIFTag", 0), group.tag);
        const auto members = main.CIFFiltersDescriptorForGroup(group.identifier);
        ASSERT_TRUE(members);
        Strings names;
        for (const Value& member : *members) {
            names.push_back(member.dictionary()->stringValue("CIFFilterIdentifier"));
            EXPECT_EQ(member.dictionary()->intValue("CIFTag", 0), group.tag);
        }
        EXPECT_EQ(names, group.members);
    }
    EXPECT_FALSE(main.CIFFiltersDescriptorForGroup("CIColorControls"));
    EXPECT_FALSE(main.CIFFiltersDescriptorForGroup("NoSuchGroup"));
}

TEST_F(Catalogue, ThrowsForPositionsOutOfRange)
{
    EXPECT_THROW(main.CIFCategoryNameAtIndex(9), std::out_of_range);
    EXPECT_THROW(main.CIFCategoryNameAtIndex(-1), std::out_of_range);
    EXPECT_THROW(main.CIFFilterNameAtIndexForCategoryIndex(2, 0), std::out_of_range);
    EXPECT_THROW(main.CIFFilterIdentifierAtIndexForCategoryIndex(-1, 0), std::out_of_range);
    EXPECT_THROW(main.CIFFilterCountForCategoryAtIndex(9), std::out_of_range);
}

// The flat list is nothing but the categories in a row, with a slot after each that answers
// nothing.
TEST_F(Catalogue, CountsFlatIndicesOverCategoriesAndSeparators)
{
    for (const std::uint32_t set : {0u, 1u})
        for (const bool skip : {false, true}) {
            main.CIFSetEffectsSet(set);
            struct Slot {
                std::optional<std::string> name, identifier;
                std::string category;
            };
            std::vector<Slot> slots;
            Strings identifiers;
            for (int c = 0; c < main.CIFFilterCategoriesCount(); ++c) {
                for (int e = 0; e < main.CIFFilterCountForCategoryAtIndex(c); ++e) {
                    slots.push_back({main.CIFFilterNameAtIndexForCategoryIndex(e, c),
                                     main.CIFFilterIdentifierAtIndexForCategoryIndex(e, c),
                                     main.CIFCategoryNameAtIndex(c)});
                    identifiers.push_back(*slots.back().identifier);
                }
                if (c + 1 < main.CIFFilterCategoriesCount()) {
                    const int here = static_cast<int>(slots.size());
                    identifiers.push_back("NSToolbarSeparatorItemIdentifier");
                    if (!skip) {
                        EXPECT_EQ(main.CIFCategoryNameWithinFilterNameAtIndex(here),
                                  main.CIFCategoryNameAtIndex(c + 1));
                        slots.push_back({});
                    }
                }
            }
            EXPECT_EQ(static_cast<int>(slots.size()),
                      skip ? main.CIFFilterCount() : main.CIFFilterCountBySkipCategory());
            EXPECT_EQ(main.CIFAllFilterIdentifiers(), identifiers);
            slots.resize(slots.size() + 4);
            for (std::uint32_t i = 0; i < slots.size(); ++i) {
                EXPECT_EQ(main.CIFFilterNameAtIndexSkipCategories(i, skip), slots[i].name) << i;
                EXPECT_EQ(main.CIFFilterIdentifierAtIndexSkipCategories(i, skip),
                          slots[i].identifier);
                const auto d = main.CIFFilterDescAtIndexSkipCategories(i, skip);
                ASSERT_EQ(bool(d), slots[i].name.has_value()) << i;
                if (d) {
                    EXPECT_EQ(*d, (Dictionary{{"filterName", *slots[i].name},
                                              {"filterCategory", slots[i].category}}));
                }
                if (!skip && (slots[i].name || i + 4 >= slots.size())) {
                    EXPECT_THROW(main.CIFCategoryNameWithinFilterNameAtIndex(int(i)),
                                 std::out_of_range);
                }
            }
            EXPECT_FALSE(main.CIFFilterNameAtIndexSkipCategories(0xffffffffu, skip));
            EXPECT_THROW(main.CIFCategoryNameWithinFilterNameAtIndex(-1), std::out_of_range);
        }

    main.CIFSetEffectsSet(0);
    EXPECT_EQ(main.CIFFilterNameAtIndexSkipCategories(1, false), "Transform");
    EXPECT_EQ(main.CIFFilterNameAtIndexSkipCategories(3, false), "Color Controls");
    EXPECT_EQ(main.CIFCategoryNameWithinFilterNameAtIndex(2), "Color");
    EXPECT_EQ(main.CIFCategoryNameWithinFilterNameAtIndex(16), "Focus");
}

TEST_F(Catalogue, SwitchesEffectsSetsAndRefusesOthers)
{
    LogLines log;
    main.CIFSetEffectsSet(1);
    EXPECT_EQ(main.CIFFilterCategoriesCount(), 5);
    EXPECT_EQ(main.CIFFilterCount(), 20);
    EXPECT_EQ(main.CIFFilterCountBySkipCategory(), 24);
    EXPECT_TRUE(main.CIFDescriptorForFilterName("GLIF_Plasma"));
    EXPECT_FALSE(main.CIFDescriptorForFilterName("CIColorControls"));
    EXPECT_THAT(log.lines, ElementsAre());
    main.CIFSetEffectsSet(2);
    EXPECT_THAT(log.lines, ElementsAre("CIF Effects Set 2 Not Supported"));
    EXPECT_EQ(main.CIFFilterCount(), 20);
    EXPECT_EQ(main.CIFAllFilterDescriptors(), main.CIFAllFilterDescriptors()); // shared, not copied
}

TEST_F(Catalogue, DescribesGenerators)
{
    main.CIFSetEffectsSet(1);
    for (const DictionaryRef& d : allDescriptors(main)) {
        for (const char* key : {"CIFFilterDefValue1", "CIFFilterDefValue2", "CIFFilterDefValue3"})
            EXPECT_EQ((*d)[key], Value(0));
        EXPECT_EQ((*d)["CIFFilterMaxValue"], Value(500));
        EXPECT_EQ(kindOf(*d, "CIFFilterMaxValue"), Number::Kind::Float);
        EXPECT_EQ((*d)["CIFFilterStyle"], Value(0));
        EXPECT_TRUE(d->stringValue("CIFFilterIdentifier").starts_with("GLIF_"));
    }
    const auto bars = main.CIFDescriptorForFilterName("GLIF_ColourBars");
    EXPECT_EQ(bars->stringValue("CIFFilterName"), "Color Bars");
    EXPECT_EQ(bars->intValue("CIFBits", -1), 4);
    const auto squares = main.CIFDescriptorForFilterName("GLIF_TwistedSquares");
    EXPECT_EQ(squares->stringValue("CIFFilterName"), "Spinning Squares");
    EXPECT_EQ(squares->intValue("CIFTag", -1), 1);
    EXPECT_EQ(main.CIFCategoryNameAtIndex(2), "Lines & Fields");
}

TEST_F(Catalogue, TranslatesTheGeneratorCatalogueOnly)
{
    foundation::setLanguage("de_CH.UTF-8");
    CIFMain german;
    EXPECT_EQ(german.CIFCategoryNameAtIndex(1), "Color");
    EXPECT_EQ(german.localizedString("Color"), "Farbe");
    german.CIFSetEffectsSet(1);
    EXPECT_EQ(german.CIFCategoryNameAtIndex(1), "Wissenschaft");
    EXPECT_EQ(german.CIFFilterNameAtIndexSkipCategories(0, true), "Ansammlung");
    // Every text of both catalogues has a German one: none is left as it was, but for words
    // that are the same.
    std::set<std::string> same;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const DictionaryRef& d : allDescriptors(main))
            if (const std::string name = d->stringValue("CIFFilterName");
                german.localizedString(name) == name)
                same.insert(name);
    }
    EXPECT_THAT(same, ElementsAre("Plasma", "Sobel", "Transparent"));
}

TEST_F(Catalogue, QueriesFiltersAndGenerators)
{
    LogLines log;
    const auto keys = main.CIFQueryInputKeysForFilter("CIGammaAdjust");
    ASSERT_TRUE(keys);
    EXPECT_THAT(*keys, ElementsAre("inputImage", "inputPower"));
    EXPECT_THAT(*main.CIFQueryOutputKeysForFilter("CIGammaAdjust"), ElementsAre("outputImage"));
    const auto attributes = main.CIFQueryAttributesForFilter("CIGammaAdjust");
    ASSERT_TRUE(attributes);
    EXPECT_EQ((*(*attributes)["inputPower"].dictionary())["CIAttributeClass"], Value("NSNumber"));

    for (const char* unknown : {"CINoSuchFilter", "Crop", "BlurFilters", ""}) {
        EXPECT_FALSE(main.CIFQueryInputKeysForFilter(unknown)) << unknown;
        EXPECT_FALSE(main.CIFQueryOutputKeysForFilter(unknown)) << unknown;
        EXPECT_FALSE(main.CIFQueryAttributesForFilter(unknown)) << unknown;
    }
    EXPECT_THAT(log.lines, ElementsAre());

    EXPECT_FALSE(main.CIFQueryInputKeysForFilter("GLIF_Nothing"));
    EXPECT_THAT(log.lines, ElementsAre("can't instantiate class 'GLIF_Nothing'"));
    const auto generatorKeys = main.CIFQueryInputKeysForFilter("GLIF_Plasma");
    ASSERT_TRUE(generatorKeys);
    const auto generatorAttributes = main.CIFQueryAttributesForFilter("GLIF_Plasma");
    ASSERT_TRUE(generatorAttributes);
    EXPECT_THAT(*generatorKeys, testing::Contains("GLIFColorRangeMin"));
    EXPECT_THAT(keysOf(*generatorAttributes), testing::UnorderedElementsAreArray(*generatorKeys));
    EXPECT_THAT(*main.CIFQueryOutputKeysForFilter("GLIF_Plasma"), ElementsAre());
}

// A name that is spelled differently in the catalogue and where its class is registered shows here.
TEST_F(Catalogue, ListsWhateverIsRegistered)
{
    std::vector<std::string> listed;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const DictionaryRef& d : allDescriptors(main))
            listed.push_back(d->stringValue("CIFFilterIdentifier"));
    }
    // Building blocks that have no entry of their own.
    const std::vector<std::string> helpers = {
        "CIAdditionCompositing", "CIAffineTile",     "CIAffineTransform",
        "CIColorMatrix",         "CICrop",           "CIConstantColorGenerator",
        "CIHeightFieldFromMask", "CIShadedMaterial", "CISourceOverCompositing",
        "CIFAffineTile2Filter",  "CIFMirrorFilter",  "CIFMirrorTileFilter"};
    for (const std::string& name : imaging::FilterRegistry::shared().names()) {
        if (std::find(helpers.begin(), helpers.end(), name) == helpers.end()) {
            EXPECT_THAT(listed, testing::Contains(name));
        }
    }
    for (const std::string& name : generators::classNames())
        EXPECT_THAT(listed, testing::Contains(name));
}

// "Crop" is the editor's own business, and a group is no effect.
TEST_F(Catalogue, NamesOnlyEffectsThatExist)
{
    int filters = 0, generators = 0;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const DictionaryRef& d : allDescriptors(main)) {
            const std::string name = d->stringValue("CIFFilterIdentifier");
            if (name == "Crop" || d->contains("DESC_LIST"))
                continue;
            ++(set == 0 ? filters : generators);
            EXPECT_TRUE(set == 0 ? imaging::Filter::filterWithName(name) != nullptr
                                 : main.GLIFSmartInstanceFromName(name) != nullptr)
                << name;
        }
    }
    EXPECT_EQ(filters, 72);
    EXPECT_EQ(generators, 20);
}

TEST_F(Catalogue, KeepsOneGenerator)
{
    LogLines log;
    const auto plasma = main.GLIFSmartInstanceFromName("GLIF_Plasma");
    ASSERT_TRUE(plasma);
    EXPECT_EQ(main.GLIFSmartInstanceFromName("GLIF_Plasma"), plasma);
    EXPECT_TRUE(main.GLIFSmartInstanceFromName("GLIF_HilbertCurve"));
    EXPECT_NE(main.GLIFSmartInstanceFromName("GLIF_Plasma"), plasma);

    const auto again = main.GLIFSmartInstanceFromName("GLIF_Plasma");
    EXPECT_FALSE(main.GLIFSmartInstanceFromName("GLIF_Nothing"));
    EXPECT_NE(main.GLIFSmartInstanceFromName("GLIF_Plasma"), again);
    EXPECT_THAT(log.lines, ElementsAre("can't instantiate class 'GLIF_Nothing'"));
}
