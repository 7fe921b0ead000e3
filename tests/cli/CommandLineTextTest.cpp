// Lines made of what was done in the editor, run by a real shell: they make the same picture again.
#include "Shell.h"

#include "platform/codecs/Codecs.h"
#include "plugin/CommandLineText.h"
#include "plugin/Resizing.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using foundation::PictureRef;
using foundation::Size;
using plugin::EditRecord;
using plugin::RecipeStep;
using tests::Ran;

class CommandLineText : public testing::Test {
protected:
    CommandLineText() { setenv("CIF_CONTENT_LIBRARY", shell.library().c_str(), 1); }
    ~CommandLineText() override { unsetenv("CIF_CONTENT_LIBRARY"); }

    // What the editor would do, in one go.
    PictureRef make(const EditRecord& record, PictureRef picture)
    {
        for (const EditRecord::Step& step : record.steps) {
            if (step.resized) {
                auto done = plugin::resized(picture, int(step.resized->width),
                                            int(step.resized->height), step.asThumbnail);
                EXPECT_TRUE(done) << done.error();
                picture = *done;
            }
            if (step.applied)
                picture = apply(*step.applied, picture ? picture->size() : record.size, picture);
        }
        if (record.crop) {
            auto done = plugin::cropped(picture, *record.crop);
            EXPECT_TRUE(done) << done.error();
            picture = *done;
        }
        return picture;
    }

    PictureRef apply(const RecipeStep& step, Size size, const PictureRef& picture)
    {
        const auto entry = plugin::describeEntry(main, step.identifier);
        const auto prepared =
            plugin::prepareStep(main, *entry, step, size, plugin::Checking::Strict);
        EXPECT_TRUE(prepared) << prepared.error().text;
        if (!entry->isGenerator)
            return main.CIFApplyFilterAttributesForImage(step.identifier, prepared->attributes,
                                                         picture);
        std::srand(*prepared->asRun.seed);
        return main.CIFGenerateLayerAttributesSize(step.identifier, prepared->attributes, size);
    }

    // Runs the line and compares its picture with the editor's.
    void expectSamePicture(const EditRecord& record, const std::string& input = "photo.png",
                           const std::string& output = "out.png")
    {
        const PictureRef picture = input.empty() ? nullptr : shell.picture(input);
        const std::string line = plugin::commandLine(record, input, output);
        EXPECT_EQ(line.find('\n'), std::string::npos);
        const Ran ran = shell.runLine(line);
        ASSERT_EQ(ran.status, 0) << line << '\n' << ran.err;
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(tests::pixelsOf(shell.picture(output)), tests::pixelsOf(make(record, picture)))
            << line;
    }

    static EditRecord::Step applied(std::string identifier,
                                    std::vector<std::pair<std::string, std::string>> set = {},
                                    std::optional<std::uint32_t> seed = {})
    {
        return {{}, false, RecipeStep{std::move(identifier), std::move(set), seed, true}};
    }
    static EditRecord::Step resized(double width, double height, bool asThumbnail = false)
    {
        return {Size{width, height}, asThumbnail, {}};
    }

    tests::Shell shell;
    CIFMain main;
};

TEST_F(CommandLineText, WritesOnlyWhatAStepDoesNotStartWith)
{
    EditRecord record;
    record.steps = {applied(
        "CIFSlideFrameFilter",
        {{"inputFactorX", "0.5"}, {"inputFactorY", "0.800000011920929"}, {"inputCenter", "12,8"}})};
    EXPECT_EQ(plugin::commandLine(record, "a.png", "b.png"),
              "cif apply CIFSlideFrameFilter a.png -o b.png --set inputFactorX=0.5 --set "
              "inputCenter=12,8");
    record.steps = {applied("CIGlassDistortion", {{"inputTexture", "Bubbles"}}),
                    applied("CIGlassDistortion", {{"inputTexture", "Ripple"}})};
    EXPECT_EQ(plugin::commandLine(record, "a.png", "b.png"),
              "cif apply CIGlassDistortion a.png -o b.png --then 'CIGlassDistortion "
              "inputTexture=Ripple'");
    record.steps = {applied("GLIF_Plasma", {}, 0)};
    record.size = {40, 30};
    EXPECT_EQ(plugin::commandLine(record, "a.png", "b.png"),
              "cif generate GLIF_Plasma --size 40x30 -o b.png --seed 0");
}

TEST_F(CommandLineText, RepeatsFilters)
{
    shell.writePicture("photo.png", 61, 43, true);
    shell.writePicture("-a name with 'quotes' $x.png", 20, 20);
    EditRecord record;
    record.steps = {
        applied("CIFSobel"),
        applied("CIFSlideFrameFilter", {{"inputFactorX", "0.5"}, {"inputCenter", "12,8"}}),
        applied("CIPointillize", {{"inputRadius", "3.3000001907348633"}})};
    expectSamePicture(record);
    record.steps = {
        applied("CIGlassDistortion",
                {{"inputTexture", shell.path("-a name with 'quotes' $x.png").string()}})};
    expectSamePicture(record, "-a name with 'quotes' $x.png", "-it's here.png");
}

// Drawings are worked on at a finer resolution than their size, so that what follows must get the
// drawing itself.
TEST_F(CommandLineText, RepeatsGeneratorsWithWhatFollows)
{
    EditRecord record;
    record.size = {50, 40};
    record.steps = {applied("GLIF_HilbertCurve", {}, 7)};
    expectSamePicture(record, "");
    record.steps.push_back(applied("CIFSobel"));
    expectSamePicture(record, "");
    record.steps.push_back(applied("CIFSlideFrameFilter", {{"inputCenter", "12,8"}}));
    record.steps.insert(record.steps.begin(), {resized(10, 10), applied("CIPixellate")});
    EXPECT_EQ(plugin::commandLine(record, "unused.png", "o.png").find("unused"), std::string::npos);
    record.steps.erase(record.steps.begin(), record.steps.begin() + 2);
    expectSamePicture(record, "");
}

TEST_F(CommandLineText, RepeatsSizesAndCrops)
{
    shell.writePicture("photo.png", 61, 43, true);
    EditRecord record;
    record.crop = foundation::Rect{10, 5, 20.5, 30};
    expectSamePicture(record);
    record.steps = {resized(30, 40)};
    expectSamePicture(record);
    record.steps = {resized(90, 40, true), applied("CIFSobel"), resized(200, 100), resized(99, 77)};
    record.steps[0].applied = record.steps[1].applied;
    expectSamePicture(record);

    record = {};
    expectSamePicture(record);

    record.size = {50, 40};
    record.steps = {applied("GLIF_HilbertCurve", {}, 7), resized(31, 22), applied("CIFSobel")};
    expectSamePicture(record, "");
    EXPECT_EQ(plugin::recipeOf(record), plugin::Recipe{*record.steps[2].applied});
    record.crop = foundation::Rect{1, 2, 3, 4};
    expectSamePicture(record, "");
    record.steps.resize(1);
    expectSamePicture(record, "");
}

} // namespace
