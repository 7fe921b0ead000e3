// The real program with its window and a person at it: what is written, what is printed, and that
// the printed line makes the same file.
#include "Shell.h"

#include "plugin/Recipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using foundation::Size;
using testing::HasSubstr;
using testing::StartsWith;
using tests::pixelsOf;
using tests::Ran;

using Words = std::vector<std::string>;

class Edit : public testing::Test {
protected:
    Edit()
    {
        shell.writePicture("photo.png", 60, 40, true);
        shell.setVariable("QT_QPA_PLATFORM", "offscreen");
        shell.setVariable("QT_PLUGIN_PATH", CIF_TEST_PLUGINS);
        shell.setVariable("QT_QPA_GENERIC_PLUGINS", "person");
        shell.setVariable("QT_LOGGING_RULES", "*=false");
        shell.setVariable("XDG_CONFIG_HOME", shell.library().string());
    }

    // What the person does, and with which words the program is called.
    Ran edit(const std::string& actions, Words words)
    {
        shell.setVariable("CIF_TEST_PERSON", actions);
        words.insert(words.begin(), "edit");
        return shell.run(words);
    }

    // Accepted, and once more by the line that was printed.
    void expectRepeats(const std::string& actions, Words words, const std::string& output)
    {
        words.insert(words.end(), {"-o", output, "--print-command"});
        const Ran ran = edit(actions + ";click _buttonSet", words);
        ASSERT_EQ(ran.status, 0) << ran.err;
        line = ran.out;
        EXPECT_EQ(std::ranges::count(line, '\n'), 1) << line;
        const std::string written = shell.read(output);
        ASSERT_FALSE(written.empty());
        std::filesystem::remove(shell.path(output));
        const Ran again = shell.runLine(line);
        ASSERT_EQ(again.status, 0) << line << again.err;
        EXPECT_TRUE(shell.read(output) == written) << line;
    }

    Size sizeOf(const std::string& name) { return shell.picture(name)->size(); }

    tests::Shell shell;
    std::string line;
};

TEST_F(Edit, WritesWhatAHostWouldBeGivenWithItsRecipe)
{
    const Ran ran = edit("choose CIColorInvert;click _buttonSet", {"photo.png", "-o", "out.png"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(shell.run({"apply", "CIColorInvert", "photo.png", "-o", "same.png"}).status, 0);
    EXPECT_TRUE(shell.read("out.png") == shell.read("same.png"));
    const auto recipe = plugin::parseRecipe(shell.picture("out.png")->metadata().recipe);
    ASSERT_TRUE(recipe) << recipe.error();
    EXPECT_EQ((*recipe).front().identifier, "CIColorInvert");

    EXPECT_EQ(edit("choose CIColorInvert;click _buttonSet", {"out.png", "--in-place"}).status, 0);
    EXPECT_EQ(pixelsOf(shell.picture("out.png")), pixelsOf(shell.picture("photo.png")));
}

TEST_F(Edit, PrintsTheLineThatRepeatsIt)
{
    expectRepeats("choose CIMotionBlur;click _applyButton;await _undoButton;"
                  "choose CIFSobel;type _textField1 0.7",
                  {"photo.png"}, "two.png");
    EXPECT_THAT(line, StartsWith("cif apply CIMotionBlur photo.png -o two.png --then 'CIFSobel "));
    expectRepeats("choose CIGlassDistortion", {"photo.png", "--quality", "40", "--metadata", "icc"},
                  "glass.jpg");
    expectRepeats("choose Crop;drag _pictureView 0.4,0.4 0.55,0.6", {"photo.png"}, "part.tif");
    EXPECT_THAT(line, HasSubstr(" --crop "));
    EXPECT_LT(sizeOf("part.tif").width, 60);
    expectRepeats("choose CIFSobel;click _sizeButton;type _widthTextField 30;"
                  "choose CIColorInvert",
                  {"photo.png"}, "small.png");
    EXPECT_EQ(sizeOf("small.png"), (Size{30, 20}));
}

TEST_F(Edit, PrintsTheLineThatRepeatsANewPicture)
{
    expectRepeats("choose GLIF_Plasma;click _generateButton", {"--generate", "64x48"},
                  "plasma.png");
    EXPECT_THAT(line, StartsWith("cif generate GLIF_Plasma --size 64x48 -o plasma.png --seed "));
    expectRepeats("choose GLIF_HilbertCurve", {"--generate", "64x48"}, "curve.svg");
    expectRepeats("choose GLIF_HilbertCurve;click _applyButton;await _undoButton;click "
                  "_windowTabSegmentButton;"
                  "choose CIFSobel",
                  {"--generate", "64x48"}, "both.png");
    EXPECT_THAT(line, HasSubstr(" --then CIFSobel"));

    // Nothing was drawn on it.
    const Ran ran = edit("click _windowTabSegmentButton;choose CIColorInvert;click _buttonSet",
                         {"--generate", "64x48", "-o", "inverted.png", "--print-command"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "cif: no command begins with an empty picture, so none is printed\n");
    EXPECT_TRUE(shell.has("inverted.png"));
}

TEST_F(Edit, WritesNothingUnlessAccepted)
{
    const auto before = shell.files();
    for (const char* ending : {"click _buttonCancel", "close"})
        for (const Words& words : {Words{"photo.png", "-o", "out.png", "--print-command"},
                                   Words{"photo.png", "--in-place"},
                                   Words{"--generate", "20x20", "-o", "-", "--format", "png"}}) {
            const std::string bytes = shell.read("photo.png");
            const Ran ran = edit(ending, words);
            EXPECT_EQ(ran.status, 3);
            EXPECT_EQ(ran.out, "");
            EXPECT_EQ(ran.err, "cif: cancelled; nothing is written\n");
            EXPECT_EQ(shell.files(), before);
            EXPECT_EQ(shell.read("photo.png"), bytes);
        }
    // A filter's result is no drawing.
    const Ran ran = edit("choose CIFSobel;click _buttonSet", {"photo.png", "-o", "out.svg"});
    EXPECT_EQ(ran.status, 2);
    EXPECT_THAT(ran.err, HasSubstr("makes pixels"));
    EXPECT_EQ(shell.files(), before);
}

TEST_F(Edit, SaysWhyThereIsNoWindow)
{
    shell.setVariable("QT_QPA_PLATFORM", "none-such");
    for (const Words& words :
         {Words{"photo.png", "-o", "out.png"}, Words{"--generate", "20x20", "-o", "out.png"}}) {
        const Ran ran = edit("", words);
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.err, "cif: can't open the editor: there is no display where its window could "
                           "be shown\n");
        EXPECT_FALSE(shell.has("out.png"));
    }
    shell.setVariable("QT_QPA_PLATFORM", "offscreen");
    shell.setVariable("CIF_RESOURCES", shell.library().string());
    const Ran ran = edit("", {"photo.png", "-o", "out.png"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("can't open the editor: Failed to load"));
}

} // namespace
