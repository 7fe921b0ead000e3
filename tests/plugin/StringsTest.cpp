// String tables: which one serves a language, and what a damaged one does.
#include "Environment.h"
#include "platform/foundation/Bundle.h"
#include "platform/imaging/Filter.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <set>

namespace {

using foundation::localizedString;
using foundation::setLanguage;

using Entries = std::vector<std::pair<std::string, std::string>>;

// A compiled table as msgfmt writes it, in either byte order.
std::string compiledTable(const Entries& entries, bool swapped = false)
{
    std::string head, texts;
    const auto word = [&](std::size_t v) {
        auto w = static_cast<std::uint32_t>(v);
        if (swapped)
            w = std::byteswap(w);
        head.append(reinterpret_cast<const char*>(&w), 4);
    };
    const std::size_t n = entries.size(), start = 28 + 16 * n;
    for (const std::size_t v : {std::size_t{0x950412de}, std::size_t{0}, n, std::size_t{28},
                                28 + 8 * n, std::size_t{0}, start})
        word(v);
    for (const bool translations : {false, true})
        for (const auto& [key, translation] : entries) {
            const std::string& text = translations ? translation : key;
            word(text.size());
            word(start + texts.size());
            texts += text + '\0';
        }
    return head + texts;
}

std::filesystem::path shippedTables()
{
    const Variable unset("CIF_RESOURCES", std::nullopt);
    return foundation::resourceFolder() / "locale";
}

class StringTables : public testing::Test {
protected:
    ~StringTables() override { setLanguage("C"); }

    void install(const std::string& language, const std::string& table) const
    {
        folder.write(std::filesystem::path("locale") / language / "LC_MESSAGES/CoreImageFilter.mo",
                     table);
    }

    TemporaryFolder folder;
    Variable resources{"CIF_RESOURCES", folder.path().string()};
    Variable language{"LANGUAGE", std::nullopt}, all{"LC_ALL", std::nullopt},
        messages{"LC_MESSAGES", std::nullopt}, lang{"LANG", std::nullopt};
};

} // namespace

TEST_F(StringTables, FallBackFromPlaceToLanguageToEnglishToKey)
{
    install("de", compiledTable(
                      {{"", "Language: de\n"}, {"Triangles", "Dreiecke"}, {"Street", "Straße"}}));
    install("de_CH", compiledTable({{"Street", "Strasse"}}, true));
    install("en", compiledTable({{"link", "<b>Link</b>"}}));

    setLanguage("de_CH.UTF-8");
    EXPECT_EQ(localizedString("Street"), "Strasse");
    EXPECT_EQ(localizedString("Triangles"), "Dreiecke");
    EXPECT_EQ(localizedString("link"), "<b>Link</b>");
    EXPECT_EQ(localizedString("Unknown"), "Unknown");
    EXPECT_EQ(localizedString(""), "");
    setLanguage("de_AT@euro");
    EXPECT_EQ(localizedString("Street"), "Straße");
    for (const char* english : {"C", "POSIX", "C.UTF-8", "en", "en_GB.UTF-8", "xx", "../de"}) {
        setLanguage(english);
        EXPECT_EQ(localizedString("Triangles"), "Triangles") << english;
        EXPECT_EQ(localizedString("link"), "<b>Link</b>") << english;
    }
}

TEST_F(StringTables, FollowTheEnvironment)
{
    install("de", compiledTable({{"Stripes", "Streifen"}, {"Edges", "Kanten"}}));
    install("fr", compiledTable({{"Stripes", "Rayures"}}));
    const auto says = [](const char* key) {
        setLanguage("");
        return localizedString(key);
    };
    EXPECT_EQ(says("Stripes"), "Stripes");
    const Variable lang("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(says("Stripes"), "Rayures");
    {
        const Variable list("LANGUAGE", "xx:fr:de");
        EXPECT_EQ(says("Stripes"), "Rayures");
        EXPECT_EQ(says("Edges"), "Kanten");
        const Variable english("LANGUAGE", "en:de");
        EXPECT_EQ(says("Edges"), "Edges");
    }
    const Variable messages("LC_MESSAGES", "de_DE");
    EXPECT_EQ(says("Stripes"), "Streifen");
    // The plain locale is the user's wish for no translation, whatever the list says.
    const Variable all("LC_ALL", "C");
    const Variable list("LANGUAGE", "de");
    EXPECT_EQ(says("Stripes"), "Stripes");
}

// Whatever becomes of a table, its keys are answered: no byte of it is trusted.
TEST_F(StringTables, AnswerKeysWhenDamaged)
{
    const std::string good = compiledTable({{"Edges", "Kanten"}, {"Stripes", "Streifen"}});
    const auto edges = [&](const std::string& table) {
        install("de", table);
        setLanguage("de");
        return localizedString("Edges");
    };
    ASSERT_EQ(edges(good), "Kanten");
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_EQ(edges(good.substr(0, length)), "Edges") << length;
    int changed = 0;
    for (std::size_t i = 0; i < 28 + 32; ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 0xff);
        const std::string answer = edges(bad);
        changed += answer == "Edges";
        EXPECT_TRUE(answer == "Edges" || answer == "Kanten") << i << " " << answer;
    }
    EXPECT_GT(changed, 40);
}

TEST_F(StringTables, AreFoundBesideTheLibrary)
{
    const Variable unset("CIF_RESOURCES", std::nullopt);
    ASSERT_FALSE(foundation::resourceFolder().empty());
    setLanguage("de");
    EXPECT_EQ(localizedString("Hilbert Curve"), "Hilbert-Kurve");
    setLanguage("C");
    EXPECT_TRUE(localizedString("Powered by Lumigrove link").starts_with("<p"));
}

// Every text that is shown under its own name has an entry in each table that is shipped.
TEST_F(StringTables, LackNoKey)
{
    support::registerFilters();
    std::set<std::string> keys = {"Powered by Lumigrove link", "Picture",
                                  "%1 by %2 points, zoom %3 percent",
                                  "selection of %1 by %2 at %3, %4"};
    setLanguage("C");
    CIFMain main;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const foundation::Value& category : *main.CIFAllFilterDescriptors())
            keys.insert(category.dictionary()->stringValue("CIFCategoryName"));
        for (const auto& entry : plugin::allDescriptors(main.CIFAllFilterDescriptors()))
            keys.insert(entry->stringValue("CIFFilterName"));
    }
    ASSERT_GT(keys.size(), 100u);
    for (const std::string& name : imaging::FilterRegistry::shared().names()) {
        const auto* filter = imaging::FilterRegistry::shared().find(name);
        for (const auto& input : filter->inputs)
            if (const std::string shown = input.attributes.stringValue("CIAttributeDisplayName");
                !shown.empty())
                keys.insert(shown);
    }
    ASSERT_TRUE(keys.contains("Halo Overlap"));
    {
        const Variable shipped("CIF_RESOURCES", std::nullopt);
        for (const auto& names :
             {main.CIFGlassTextureNames(), main.CIFShadingMaterialNames(), main.CIFBrushNames()})
            if (names)
                keys.insert(names->begin(), names->end());
    }

    // The English table behind the one in question says which keys had to be asked of it.
    Entries marked;
    for (const std::string& key : keys)
        marked.emplace_back(key, "missing");
    const std::filesystem::path tables = shippedTables();
    for (const std::string language : {"en", "de", "fr", "ja"}) {
        std::filesystem::remove_all(folder.path() / "locale");
        const auto table = tables / language / "LC_MESSAGES/CoreImageFilter.mo";
        ASSERT_TRUE(std::filesystem::exists(table)) << table;
        const std::string shown = language == "en" ? "en_GB" : language;
        install("en", compiledTable(marked));
        std::ifstream in(table, std::ios::binary);
        install(shown, {std::istreambuf_iterator<char>(in), {}});
        setLanguage(shown);
        for (const std::string& key : keys)
            EXPECT_NE(localizedString(key), "missing") << language << ": " << key;
    }
}

TEST_F(StringTables, LieAmongResourcesThatAreFoundByNameAndType)
{
    folder.write("whiteBall.tiff", "x");
    folder.write("Cursors/box.tif", "x");
    EXPECT_EQ(foundation::resourcePath("whiteBall", "tiff"), folder.path() / "whiteBall.tiff");
    EXPECT_EQ(foundation::resourcePath("box", "tif", "Cursors"), folder.path() / "Cursors/box.tif");
    EXPECT_FALSE(foundation::resourcePath("box", "tif"));
    EXPECT_FALSE(foundation::resourcePath("Cursors", ""));
    const Variable missing("CIF_RESOURCES", (folder.path() / "none").string());
    EXPECT_TRUE(foundation::resourceFolder().empty());
    EXPECT_FALSE(foundation::resourcePath("whiteBall", "tiff"));
}
