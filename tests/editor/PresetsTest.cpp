// Presets and favourites as files that people and other programs touch, too.
#include "editor/Presets.h"

#include "platform/foundation/Log.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <fstream>
#include <random>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using editor::Preset;
using editor::Presets;
using plugin::RecipeStep;
using testing::ElementsAre;
using testing::HasSubstr;

class PresetsTest : public testing::Test {
protected:
    PresetsTest()
    {
        _former = foundation::setLogSink([this](std::string_view line) { log.emplace_back(line); });
    }
    ~PresetsTest() override { foundation::setLogSink(_former); }

    fs::path root() const { return _folder.path().toStdString(); }
    void write(const char* name, std::string_view text) const
    {
        fs::create_directories((root() / name).parent_path());
        std::ofstream(root() / name) << text;
    }
    std::string read(const char* name) const
    {
        std::ostringstream text;
        text << std::ifstream(root() / name).rdbuf();
        return text.str();
    }
    std::vector<std::string> names(const char* entry = "CIFSobel") const
    {
        std::vector<std::string> all;
        for (const Preset& preset : presets.ofEntry(entry))
            all.push_back(preset.name);
        return all;
    }

private:
    QTemporaryDir _folder;
    foundation::LogSink _former;

protected:
    std::vector<std::string> log;
    Presets presets{root() / "new"};
};

TEST_F(PresetsTest, AreReadableFilesThatComeBackAsTheyWere)
{
    const RecipeStep step{"GLIF_Plasma",
                          {{"GLIFResolution", "4"}, {"GLIFBackgroundColor", "1,0.5,0,0.25"}},
                          4294967295,
                          true};
    ASSERT_TRUE(presets.save("Two words", step));
    EXPECT_EQ(read("new/presets/GLIF_Plasma/Two words.recipe"),
              "GLIF_Plasma GLIFResolution=4 GLIFBackgroundColor=1,0.5,0,0.25 seed=4294967295\n");
    const std::vector<Preset> all = presets.ofEntry("GLIF_Plasma");
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].name, "Two words");
    EXPECT_EQ(all[0].step, step);
    EXPECT_TRUE(presets.ofEntry("CIFSobel").empty());
    RecipeStep other = step;
    other.seed = 1;
    ASSERT_TRUE(presets.save("Two words", other));
    EXPECT_EQ(presets.ofEntry("GLIF_Plasma").at(0).step, other);
    ASSERT_TRUE(presets.remove("GLIF_Plasma", "Two words"));
    EXPECT_FALSE(presets.contains("GLIF_Plasma", "Two words"));
    EXPECT_TRUE(presets.remove("GLIF_Plasma", "Two words"));
    EXPECT_TRUE(log.empty());
}

TEST_F(PresetsTest, HaveNamesOfAnyCharacters)
{
    const std::vector<std::string> odd = {"..",      "a/b",      ".hidden",      "50%",
                                          "50%25",   "%2F",      "new\nline",    "tab\t\x7f",
                                          "ä日本語", "x.recipe", "it's $HOME `", "\\ * ?"};
    for (const std::string& name : odd) {
        EXPECT_EQ(editor::fileNameOf(name).find('/'), std::string::npos);
        ASSERT_TRUE(presets.save(name, {"CIFSobel", {{"inputRadius", name}}, {}, true})) << name;
    }
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(odd));
    for (const Preset& preset : presets.ofEntry("CIFSobel"))
        EXPECT_EQ(*preset.step.find("inputRadius"), preset.name);
    for (const std::string& name : odd)
        ASSERT_TRUE(presets.remove("CIFSobel", name));
    EXPECT_TRUE(fs::is_empty(root() / "new/presets/CIFSobel"));

    std::mt19937 engine{5};
    for (int i = 0; i < 2000; ++i) {
        std::string name;
        for (unsigned n = engine() % 8; n > 0; --n)
            name += "%/.2Fa\n\xff"[engine() % 8];
        EXPECT_EQ(editor::textOfFileName(editor::fileNameOf(name)), name);
    }

    for (const char* blank : {"", "  ", "\t"})
        EXPECT_FALSE(presets.save(blank, {"CIFSobel", {}, {}, true}));
    EXPECT_TRUE(presets.save(std::string(248, 'x'), {"CIFSobel", {}, {}, true}));
    EXPECT_FALSE(presets.save(std::string(249, 'x'), {"CIFSobel", {}, {}, true}));
    EXPECT_FALSE(presets.save(std::string(100, '/'), {"CIFSobel", {}, {}, true}));
}

// Nothing is remembered: what others do to the files counts.
TEST_F(PresetsTest, FollowWhatHappensToTheFiles)
{
    ASSERT_TRUE(presets.save("b", {"CIFSobel", {}, {}, true}));
    write("new/presets/CIFSobel/A.recipe", "# by hand\nCIFSobel \\\n  inputRadius=2\n");
    write("new/presets/CIFSobel/7%.recipe", "CIFSobel inputRadius=7");
    EXPECT_THAT(names(), ElementsAre("7%", "A", "b"));
    // Saving under a name that somebody wrote in another way replaces that file.
    ASSERT_TRUE(presets.save("7%", {"CIFSobel", {{"inputRadius", "8"}}, {}, true}));
    EXPECT_FALSE(fs::exists(root() / "new/presets/CIFSobel/7%.recipe"));
    EXPECT_THAT(names(), ElementsAre("7%", "A", "b"));
    EXPECT_EQ(*presets.ofEntry("CIFSobel")[0].step.find("inputRadius"), "8");
    fs::remove(root() / "new/presets/CIFSobel/b.recipe");
    EXPECT_THAT(names(), ElementsAre("7%", "A"));
    EXPECT_TRUE(log.empty());
}

TEST_F(PresetsTest, LeaveBrokenFilesOutWithALineEach)
{
    ASSERT_TRUE(presets.save("good", {"CIFSobel", {}, {}, true}));
    const std::pair<const char*, std::string> files[] = {{"empty", ""},
                                                         {"quote", "CIFSobel x='1"},
                                                         {"other", "CIFMirror"},
                                                         {"two", "CIFSobel\nCIFSobel\n"},
                                                         {"binary", {"\0\xff\0", 3}},
                                                         {"large", std::string(2 << 20, '#')}};
    for (const auto& [name, text] : files)
        write((std::string("new/presets/CIFSobel/") + name + ".recipe").c_str(), text);
    fs::create_directories(root() / "new/presets/CIFSobel/folder.recipe");
    write("new/presets/CIFSobel/notes.txt", "not a preset");
    EXPECT_THAT(names(), ElementsAre("good"));
    EXPECT_EQ(log.size(), 7u) << testing::PrintToString(log);
    EXPECT_THAT(log, testing::Contains(
                         AllOf(HasSubstr("quote.recipe"), HasSubstr("the closing ' is missing"))));

    // A file where the folder should be: an error, and nothing is lost.
    write("new/presets/CIFMirror", "a file");
    EXPECT_FALSE(presets.save("x", {"CIFMirror", {}, {}, true}));
    EXPECT_EQ(read("new/presets/CIFMirror"), "a file");
}

TEST_F(PresetsTest, KeepFavouritesInTheirOrder)
{
    EXPECT_TRUE(presets.favourites().empty());
    ASSERT_TRUE(presets.setFavourite("GLIF_Plasma", true));
    ASSERT_TRUE(presets.setFavourite("CIFSobel", true));
    ASSERT_TRUE(presets.setFavourite("GLIF_Plasma", true));
    EXPECT_EQ(read("new/favourites"), "GLIF_Plasma\nCIFSobel\n");
    EXPECT_TRUE(presets.isFavourite("CIFSobel"));

    write("new/favourites", "# mine\nCIFMirror # the best\r\n\nCIFSobel\nCIFSobel");
    EXPECT_THAT(presets.favourites(), ElementsAre("CIFMirror", "CIFSobel"));
    ASSERT_TRUE(presets.setFavourite("CIFSobel", false));
    ASSERT_TRUE(presets.setFavourite("GLIF_Foam", true));
    EXPECT_EQ(read("new/favourites"), "# mine\nCIFMirror # the best\r\n\nGLIF_Foam\n");
    EXPECT_TRUE(presets.setFavourite("", true));
    EXPECT_TRUE(presets.setFavourite("never", false));
    EXPECT_THAT(presets.favourites(), ElementsAre("CIFMirror", "GLIF_Foam"));
}

} // namespace
