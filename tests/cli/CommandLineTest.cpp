// The real program: what it prints, how it ends, and that failures leave nothing behind.
#include "Shell.h"

#include "generators/Random.h"
#include "platform/drawing/Canvas.h"
#include "platform/foundation/Json.h"
#include "plugin/Recipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <sys/stat.h>
#include <thread>

namespace {

using foundation::Array;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Value;
using testing::HasSubstr;
using testing::Not;
using tests::pixelsOf;
using tests::Ran;
using tests::Shell;

using Words = std::vector<std::string>;

Value json(const std::string& text)
{
    foundation::Result<Value> value = foundation::parseJson(text);
    EXPECT_TRUE(value) << value.error();
    return value ? *std::move(value) : Value();
}

// As the program prints it: floats become doubles of the same digits, values without a JSON form
// null.
Value throughJson(const Value& value)
{
    return json(foundation::toJson(value));
}

void expectDone(const Ran& ran)
{
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.err, "");
}

void expectOneLineError(const Ran& ran, int status, const std::string& part)
{
    EXPECT_EQ(ran.status, status) << ran.err;
    EXPECT_EQ(ran.out, "");
    EXPECT_TRUE(ran.err.starts_with("cif: ")) << ran.err;
    EXPECT_THAT(ran.err, HasSubstr(part));
    EXPECT_EQ(std::ranges::count(ran.err, '\n'), 1) << ran.err;
    EXPECT_TRUE(ran.err.ends_with('\n'));
}

struct BadInvocation {
    Words arguments;
    int status;
    const char* part; // of the message
};

TEST(CommandLine, StepsFollowAndSizesGoAround)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    expectDone(shell.run({"apply", "CIFSobel", "in.png", "-o", "one.png"}));
    expectDone(shell.run({"apply", "CIColorInvert", "one.png", "-o", "two.png"}));
    expectDone(
        shell.run({"apply", "CIFSobel", "in.png", "-o", "both.png", "--then", "CIColorInvert"}));
    EXPECT_EQ(pixelsOf(shell.picture("both.png")), pixelsOf(shell.picture("two.png")));
    const auto recipe = plugin::parseRecipe(shell.picture("both.png")->metadata().recipe);
    ASSERT_TRUE(recipe) << recipe.error();
    EXPECT_EQ((*recipe).size(), 2u);

    // First the size, then the steps, then the crop.
    expectDone(shell.run({"apply", "in.png", "-o", "small.png", "--resize", "12x12:fit"}));
    expectDone(shell.run({"apply", "CIFSobel", "small.png", "-o", "three.png"}));
    expectDone(shell.run({"apply", "three.png", "-o", "part.png", "--crop", "1,3,10,5.2"}));
    expectDone(shell.run({"apply", "CIFSobel", "in.png", "-o", "all.png", "--crop", "1,3,10,5.2",
                          "--resize", "12x12:fit"}));
    EXPECT_EQ(shell.picture("all.png")->size(), (foundation::Size{10, 5}));
    EXPECT_EQ(shell.read("all.png"), shell.read("part.png"));

    // A drawing is drawn afresh and stays one.
    expectDone(shell.run({"generate", "GLIF_HilbertCurve", "--size", "32x32", "--resize", "96x96",
                          "-o", "large.png"}));
    EXPECT_EQ(shell.picture("large.png")->size(), (foundation::Size{96, 96}));
    expectDone(shell.run({"generate", "GLIF_HilbertCurve", "--size", "32x32", "--crop", "0,0,16,16",
                          "-o", "quarter.svg"}));
    EXPECT_THAT(shell.read("quarter.svg"), HasSubstr("viewBox=\"0 0 16 16\""));
}

TEST(CommandLine, RefusesBadInvocationsInOneLineAndLeavesNothing)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    shell.write("broken.png", shell.read("in.png").substr(0, 60));
    shell.write("text.png", "this is no picture");
    shell.write("bad.recipe", "CIGaussianBlur inputRadius=5\nCIGaussianBlur inputRadius");
    shell.write("bad.json", "[{\"id\": \"CIGaussianBlur\",]");
    shell.write("blend.recipe", "CIColorInvert blend=multiply");
    shell.write("late.recipe", "CIColorInvert\nCINoSuchFilter");
    std::filesystem::create_directory(shell.path("folder"));
    const auto before = shell.files();

    const Words blur = {"apply", "CIGaussianBlur", "in.png", "-o", "out.png"};
    const auto blurWith = [&](std::initializer_list<const char*> more) {
        Words words = blur;
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    const auto plasmaOf = [](const char* size, std::initializer_list<const char*> more = {}) {
        Words words = {"generate", "GLIF_Plasma", "--size", size, "-o", "out.png"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    const BadInvocation cases[] = {
        {{}, 2, "list, describe, apply, generate or edit"},
        {{"paint"}, 2, "no command \"paint\""},
        {{"--paint"}, 2, "\"--paint\" is not understood"},
        {{"list", "brushes"}, 2, "filters or generators"},
        {{"list", "--toolkit-version", "new"}, 2, "949"},
        {{"list", "--loud"}, 2, "\"--loud\" is not understood"},
        {{"list", "filters", "--resources"}, 2, "content library"},
        {{"describe"}, 2, "NAME is missing"},
        {{"describe", "CIGausianBlur"}, 2, "did you mean CIGaussianBlur"},
        {{"describe", "GLIF_Plasmo"}, 2, "GLIF_Plasma"},
        {{"describe", "BlurFilters"}, 2, "CIGaussianBlur, CIBoxBlur or CIDiscBlur"},
        {{"describe", "Crop"}, 2, "selection in the editor"},
        {{"describe", "qqqqqqqq"}, 2, "cif list shows all"},
        {{"apply"}, 2, "NAME is missing"},
        {{"apply", "CIColorInvert"}, 2, "INPUT is missing"},
        {{"apply", "CIColorInvert", "in.png"}, 2, "-o OUTPUT is missing"},
        {{"apply", "CIColorInvert", "in.png", "out.png"}, 2, "\"out.png\" is not understood"},
        {{"apply", "CIColorInvert", "in.png", "b", "-o", "out.png"}, 2, "\"b\" is not understood"},
        {{"apply", "Gaussian Blr", "in.png", "-o", "out.png"}, 2, "CIGaussianBlur"},
        {{"apply", "Crop", "in.png", "-o", "out.png"}, 2, "selection in the editor"},
        {blurWith({"--set"}), 2, "--set"},
        {blurWith({"--set", "inputRadius"}), 2, "KEY=VALUE"},
        {blurWith({"--set", "inputRadios=5"}), 2, "it takes inputRadius"},
        {blurWith({"--set", "inputRadius=five"}), 2, "takes a number"},
        {blurWith({"--set", "inputRadius=1,2"}), 2, "takes a number"},
        {blurWith({"--set", "inputRadius=true"}), 2, "takes a number"},
        {blurWith({"--set", "inputRadius=nan"}), 2, "takes a number"},
        {blurWith({"--set", "inputRadius=1e999"}), 2, "takes a number"},
        {blurWith({"--set", "inputRadius=-1"}), 2, "out of range"},
        {blurWith({"--set", "inputImage=in.png"}), 2, "the picture that is worked on"},
        {blurWith({"--seed", "-1"}), 2, "0 to 4294967295"},
        {blurWith({"--quality", "101"}), 2, "1 to 100"},
        {blurWith({"--metadata", "some"}), 2, "all, icc or none"},
        {blurWith({"--format", "bmp"}), 2, "png, jpg, tif"},
        {blurWith({"--format", "pdf"}), 2, "makes pixels"},
        {blurWith({"--recipe-from", "bad.recipe"}), 2, "one word too many"},
        {{"apply", "CIColorInvert", "in.png", "-o", "out"}, 2, "does not tell the format"},
        {{"apply", "CIColorInvert", "in.png", "-o", "out.bmp"}, 2, "does not tell the format"},
        {{"apply", "CIColorInvert", "in.png", "-o", "-"}, 2, "--format"},
        {{"apply", "CIColorInvert", "in.png", "-o", "out.pdf"}, 2, "makes pixels"},
        {{"apply", "CIColorInvert", "in.png", "-o", "in.png"}, 2, "--in-place"},
        {{"apply", "CIColorInvert", "in.png", "-o", "./folder/../in.png"}, 2, "--in-place"},
        {{"apply", "CIColorInvert", "none.png", "-o", "out.png"}, 1, "none.png"},
        {{"apply", "CIColorInvert", "broken.png", "-o", "out.png"}, 1, "broken.png"},
        {{"apply", "CIColorInvert", "text.png", "-o", "out.png"}, 1, "text.png"},
        {{"apply", "CIColorInvert", "folder", "-o", "out.png"}, 1, "folder"},
        {{"apply", "CIColorInvert", "-", "-o", "out.png"}, 1, "standard input"},
        {{"apply", "CIColorInvert", "in.png", "-o", "folder"}, 2, "does not tell the format"},
        {{"apply", "CIColorInvert", "in.png", "-o", "folder", "--format", "png"}, 1, "is a folder"},
        {{"apply", "CIColorInvert", "in.png", "-o", "none/out.png"}, 1, "no folder \"none\""},
        {{"apply", "CICheckerboardGenerator", "in.png", "-o", "out.png", "--set", "inputCenter=5"},
         2,
         "a point x,y"},
        {{"apply", "CIColorMonochrome", "in.png", "-o", "out.png", "--set", "inputColor=red"},
         2,
         "a colour r,g,b[,a]"},
        {{"apply", "CIColorMonochrome", "in.png", "-o", "out.png", "--set", "inputColor=2,0,0"},
         2,
         "from 0 to 1"},
        {{"apply", "CIColorMonochrome", "in.png", "-o", "out.png", "--set", "inputColor=#12345"},
         2,
         "#rrggbb"},
        {{"apply", "CIShadedMaterial", "in.png", "-o", "out.png", "--set", "inputShadingImage=Fog"},
         1,
         "the library has Marble, Sand, clay"},
        {{"apply", "--recipe-from", "bad.recipe", "in.png", "-o", "out.png"},
         2,
         "line 2, column 16"},
        {{"apply", "--recipe-from", "bad.json", "in.png", "-o", "out.png"}, 2, "line 1, column 26"},
        {{"apply", "--recipe-from", "blend.recipe", "in.png", "-o", "out.png"}, 2, "\"blend\""},
        {{"apply", "--recipe-from", "late.recipe", "in.png", "-o", "out.png"}, 2, "CINoSuchFilter"},
        {{"apply", "--recipe-from", "in.png", "in.png", "-o", "out.png"}, 2, "carries no recipe"},
        {{"apply", "--recipe-from", "none.txt", "in.png", "-o", "out.png"}, 1, "none.txt"},
        {{"apply", "--recipe-from", "folder", "in.png", "-o", "out.png"}, 1, "folder"},
        {{"apply", "--recipe-from", "bad.json"}, 2, "INPUT is missing"},
        {{"apply", "--recipe-from", "bad.json", "in.png", "-o", "out.png", "--set", "a=1"},
         2,
         "goes with a NAME"},
        {{"apply", "--resize", "9x9"}, 2, "INPUT is missing"},
        {{"apply", "in.png", "--resize", "9x9"}, 2, "-o OUTPUT is missing"},
        {{"apply", "in.png", "-o", "out.png", "--crop", "1,1,1,1", "--set", "a=1"}, 2, "NAME"},
        {{"apply", "in.png", "-o", "out.pdf", "--crop", "1,1,1,1"}, 2, "makes pixels"},
        {{"apply", "in.png", "-o", "out.png", "--crop", "24,0,1,1"}, 1, "outside the picture"},
        {blurWith({"--resize", "9"}), 2, "640x480:fit"},
        {blurWith({"--resize", "9x0:fit"}), 2, "1 to 100000"},
        {blurWith({"--resize", "9x9:fill"}), 2, "640x480:fit"},
        {blurWith({"--crop", "1,2,3"}), 2, "X,Y,W,H"},
        {blurWith({"--crop", "1,2,3,0"}), 2, "X,Y,W,H"},
        {blurWith({"--crop", "1,2,3,nan"}), 2, "X,Y,W,H"},
        {blurWith({"--crop", "1,2,3,4,5"}), 2, "X,Y,W,H"},
        {blurWith({"--then", "CISobl"}), 2, "CIFSobel"},
        {blurWith({"--then", "CIFSobel inputIntensity"}), 2, "--then: line 1"},
        {{"edit"}, 2, "INPUT is missing"},
        {{"edit", "in.png"}, 2, "-o OUTPUT is missing"},
        {{"edit", "in.png", "-o", "in.png"}, 2, "--in-place"},
        {{"edit", "none.png", "-o", "out.png"}, 1, "none.png"},
        {{"edit", "--generate", "9", "-o", "out.png"}, 2, "WxH such as"},
        {{"edit", "in.png", "--generate", "9x9", "-o", "out.png"}, 2, "one word too many"},
        {{"edit", "--generate", "9x9", "--in-place"}, 2, "goes with an INPUT"},
        {{"edit", "in.png", "-o", "-", "--format", "png", "--print-command"}, 2, "standard output"},
        {{"generate"}, 2, "NAME is missing"},
        {{"generate", "GLIF_Plasma", "-o", "out.png"}, 2, "--size WxH is missing"},
        {{"generate", "GLIF_Plasma", "--size", "9x9"}, 2, "-o OUTPUT is missing"},
        {plasmaOf("9"), 2, "WxH such as"},
        {plasmaOf("9x"), 2, "WxH such as"},
        {plasmaOf("9.5x9"), 2, "WxH such as"},
        {plasmaOf("0x9"), 2, "1 to 100000"},
        {plasmaOf("9x-9"), 2, "1 to 100000"},
        {plasmaOf("100001x9"), 2, "1 to 100000"},
        {plasmaOf("9x99999999999999999999"), 2, "WxH such as"},
        {plasmaOf("100000x100000"), 1, "more memory"},
        {plasmaOf("9x9", {"--seed", "4294967296"}), 2, "4294967295"},
        {plasmaOf("9x9", {"--seed", "1.5"}), 2, "4294967295"},
        {plasmaOf("9x9", {"--set", "GLIFResolution=2.5"}), 2, "whole number"},
        {plasmaOf("9x9", {"--set", "GLIFResolution=100000"}), 2, "out of range"},
        {plasmaOf("9x9", {"--set", "GLIFUseBackgroundColor=1"}), 2, "true or false"},
        {plasmaOf("9x9", {"--set", "GLIFRandomSeed=1"}), 2, "by the seed alone"},
        {plasmaOf("9x9", {"--set", "GLIFBrush=Dot"}), 2, "it takes"},
        {plasmaOf("9x9", {"--trace", "none/trace"}), 1, "no folder"},
        {{"generate", "GLIF_Plasma", "--size", "9x9", "-o", "out.svg"}, 2, "makes pixels"},
        {{"generate", "GLIF_Plasma", "--size", "9x9", "-o", "out.svg", "--trace", "trace"},
         2,
         "makes pixels"},
        {{"generate", "CIGaussianBlur", "--size", "9x9", "-o", "out.png"}, 2, "use cif apply"},
        {{"generate", "GLIF_Plasma", "in.png", "--size", "9x9", "-o", "out.png"}, 2, "\"in.png\""},
    };
    for (const BadInvocation& c : cases) {
        std::string line = "cif";
        for (const std::string& word : c.arguments)
            line += ' ' + word;
        SCOPED_TRACE(line);
        expectOneLineError(shell.run(c.arguments, "not a picture"), c.status, c.part);
        EXPECT_EQ(shell.files(), before);
    }
}

TEST(CommandLine, SaysWhatTheLibraryLacks)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    std::filesystem::remove_all(shell.library() / "Textures");
    expectOneLineError(shell.run({"apply", "CIShadedMaterial", "in.png", "-o", "out.png"}), 1,
                       "can't locate shading material");
    expectDone(shell.run({"apply", "CIShadedMaterial", "in.png", "-o", "out.png", "--set",
                          "inputShadingImage=in.png"}));
}

TEST(CommandLine, AnInterruptEndsWith130AndLeavesNothing)
{
    Shell shell;
    const Ran ran = shell.interrupt({"apply", "CIColorInvert", "-", "-o", "out.png"});
    EXPECT_EQ(ran.status, 130);
    EXPECT_EQ(ran.out + ran.err, "");
    EXPECT_EQ(shell.files(), Words());
}

TEST(CommandLine, HelpsOnStandardOutput)
{
    const Shell shell;
    EXPECT_EQ(shell.run({"--version"}).out, "cif " CIF_VERSION "\n");
    EXPECT_THAT(shell.run({"--help"}).out, HasSubstr("generate"));
    for (const char* command : {"list", "describe", "apply", "generate"}) {
        const Ran ran = shell.run({command, "--help"});
        expectDone(ran);
        EXPECT_THAT(ran.out, HasSubstr("Examples:\n  cif " + std::string(command)));
        // Every effect that an example names is there.
        std::istringstream words(ran.out);
        for (std::string word; words >> word;)
            if (word.starts_with("CI") || word.starts_with("GLIF_")) {
                EXPECT_EQ(shell.run({"describe", word}).status, 0) << word;
            }
    }
}

TEST(List, AsJsonIsTheCatalogueItself)
{
    const Shell shell;
    const Ran ran = shell.run({"list", "--json"});
    expectDone(ran);
    const auto sets = (*json(ran.out).dictionary())["effectsSets"].array();
    ASSERT_EQ(sets->size(), 2u);
    CIFMain main;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        const DictionaryRef listed = (*sets)[set].dictionary();
        EXPECT_EQ(listed->intValue("index", -1), int(set));
        EXPECT_EQ((*listed)["categories"], throughJson(main.CIFAllFilterDescriptors()));

        const Ran one = shell.run({"list", set == 0 ? "filters" : "generators", "--json"});
        const auto alone = (*json(one.out).dictionary())["effectsSets"].array();
        ASSERT_EQ(alone->size(), 1u);
        EXPECT_EQ(alone->front(), (*sets)[set]);
    }
    EXPECT_THAT(ran.out, HasSubstr("\"DESC_LIST\""));
}

TEST(List, ForPeopleShowsEveryEntryUnderItsCategory)
{
    const Shell shell;
    const Ran ran = shell.run({"list"});
    expectDone(ran);
    EXPECT_TRUE(ran.out.starts_with("Crop\n  Crop  ")) << ran.out.substr(0, 200);
    EXPECT_THAT(ran.out, HasSubstr("\nDistortion\n  Bump Distortion  "));
    // Members of a group stand further in; identifiers stand below each other.
    EXPECT_THAT(ran.out, HasSubstr("\n    Gaussian Blur  "));
    const auto columnOf = [&](const std::string& identifier) {
        const std::size_t at = ran.out.find(' ' + identifier + '\n');
        return at - ran.out.rfind('\n', at);
    };
    EXPECT_EQ(columnOf("CIGaussianBlur"), columnOf("Crop"));
    EXPECT_EQ(columnOf("GLIF_Cafel"), columnOf("Crop"));
    EXPECT_THAT(shell.run({"list", "generators"}).out, Not(HasSubstr("CIGaussianBlur")));
    EXPECT_THAT(shell.run({"list", "filters"}).out, Not(HasSubstr("GLIF_Plasma")));
}

TEST(List, OlderToolkitsHaveFewerFilters)
{
    Shell shell;
    EXPECT_THAT(shell.run({"list", "--toolkit-version", "949"}).out, HasSubstr("BlurFilters"));
    EXPECT_THAT(shell.run({"list", "--toolkit-version", "948.99"}).out,
                Not(HasSubstr("BlurFilters")));
    shell.setVariable("CIF_TOOLKIT_VERSION", "824");
    EXPECT_THAT(shell.run({"list"}).out, Not(HasSubstr("BlurFilters")));
    EXPECT_THAT(shell.run({"list", "--toolkit-version", "1404"}).out, HasSubstr("BlurFilters"));
}

TEST(List, ShowsTheContentLibraryUnderTheNamesThatItsPicturesAreSetBy)
{
    Shell shell;
    const Ran ran = shell.run({"list", "--resources"});
    expectDone(ran);
    EXPECT_EQ(ran.out, "Glass textures (inputTexture)\n  Bubbles\n  Ripple\n\n"
                       "Shading materials (inputShadingImage)\n  Marble\n  Sand\n  clay\n\n"
                       "Brushes (GLIFBrush)\n  Dot\n");
    const Ran json = shell.run({"list", "--resources", "--json"});
    expectDone(json);
    EXPECT_THAT(json.out, HasSubstr("\"CIFBrushNames\": [\n    \"Dot\"\n  ]"));
    std::filesystem::remove_all(shell.library());
    EXPECT_EQ(shell.run({"list", "--resources"}).status, 1);
    EXPECT_THAT(shell.run({"list", "--resources", "--json"}).out,
                HasSubstr("\"CIFBrushNames\": null"));
}

TEST(Describe, AsJsonIsWhatThePlugInAnswers)
{
    const Shell shell;
    CIFMain main;
    for (const char* name : {"CIGaussianBlur", "CIFSobel", "CICheckerboardGenerator",
                             "CIShadedMaterial", "GLIF_Plasma"}) {
        SCOPED_TRACE(name);
        const Ran ran = shell.run({"describe", name, "--json"});
        expectDone(ran);
        const Value answer = json(ran.out);
        const auto keys = main.CIFQueryInputKeysForFilter(name);
        ASSERT_TRUE(keys);
        const auto outputs = main.CIFQueryOutputKeysForFilter(name);
        EXPECT_EQ(answer,
                  throughJson(Dictionary{{"name", name},
                                         {"inputKeys", Array(keys->begin(), keys->end())},
                                         {"outputKeys", Array(outputs->begin(), outputs->end())},
                                         {"attributes", main.CIFQueryAttributesForFilter(name)}}));
    }
}

TEST(Describe, ForPeopleNamesKindRangeAndStartingValue)
{
    const Shell shell;
    const std::string material = shell.run({"describe", "CIShadedMaterial"}).out;
    EXPECT_THAT(material, testing::ContainsRegex("inputShadingImage +material +Marble\n"));
    EXPECT_THAT(material, HasSubstr("from the library: Marble, Sand, clay\n"));
    EXPECT_THAT(shell.run({"describe", "CICheckerboardGenerator"}).out,
                testing::ContainsRegex("inputCenter +point .*centre of the picture\n"));
    const std::string curve = shell.run({"describe", "GLIF_HilbertCurve"}).out;
    EXPECT_THAT(curve, testing::ContainsRegex("GLIFUseBackgroundColor +switch +false +false\n"));
    EXPECT_THAT(curve, HasSubstr("understands GLIFColorRangeMin, GLIFColorRangeMax."));
}

// What the command line makes equals what a host gets for the same attributes.
TEST(Apply, HandsOverStartingValuesAndWhatIsSet)
{
    using foundation::Color;
    using foundation::Point;
    const char* const name = "CICheckerboardGenerator";
    Shell shell;
    shell.writePicture("in.png", 40, 30, true);
    expectDone(
        shell.run({"apply", name, "in.png", "-o", "out.png", "--set", "inputSharpness=0.5"}));
    expectDone(shell.run({"apply", name, "in.png", "-o", "bare.png", "--no-defaults", "--set",
                          "inputCenter=10,5", "--set", "inputColor0=#ff000080"}));
    CIFMain main;
    const auto made = main.CIFApplyFilterAttributesForImage(name,
                                                            {{"CIFinputCenter", Point{20, 15}},
                                                             {"inputColor0", Color::white()},
                                                             {"inputColor1", Color::black()},
                                                             {"inputWidth", 32.0f},
                                                             {"inputSharpness", 0.5}},
                                                            shell.picture("in.png"));
    EXPECT_EQ(pixelsOf(shell.picture("out.png")), pixelsOf(made));
    const auto bare = main.CIFApplyFilterAttributesForImage(
        name,
        {{"CIFinputCenter", Point{10, 5}}, {"inputColor0", Color::rgb(1, 0, 0, 128 / 255.0f)}},
        shell.picture("in.png"));
    EXPECT_EQ(pixelsOf(shell.picture("bare.png")), pixelsOf(bare));
    EXPECT_NE(pixelsOf(made), pixelsOf(bare));
}

TEST(Apply, TakesMaterialsByNameOrFile)
{
    Shell shell;
    shell.writePicture("in.png", 40, 30);
    shell.writePicture("material.png", 20, 20);
    const auto shaded = [&](const char* output, const Words& more) {
        Words words = {"apply", "CIShadedMaterial", "in.png", "-o", output};
        words.insert(words.end(), more.begin(), more.end());
        expectDone(shell.run(words));
        return pixelsOf(shell.picture(output));
    };
    // The library's materials are all alike here; a file of another size is not.
    const std::string first = shaded("first.png", {});
    EXPECT_EQ(shaded("named.png", {"--set", "inputShadingImage=clay"}), first);
    EXPECT_NE(shaded("file.png", {"--set", "CIFinputShadingImage=material.png"}), first);
}

TEST(Apply, UncheckedHandsOverAnything)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    for (const char* assignment : {"inputRadius=-5", "inputRadius=nan", "inputRadius=text",
                                   "unknown=1", "inputRadius=1,2"}) {
        SCOPED_TRACE(assignment);
        expectDone(shell.run({"apply", "CIGaussianBlur", "in.png", "-o", "out.png", "--unchecked",
                              "--set", assignment}));
    }
}

TEST(Apply, ReadsStandardInputAndWritesStandardOutput)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    expectDone(shell.run({"apply", "CIColorInvert", "in.png", "-o", "out.png"}));
    const Ran ran = shell.run({"apply", "CIColorInvert", "-", "-o", "-", "--format", "png"},
                              shell.read("in.png"));
    expectDone(ran);
    EXPECT_EQ(ran.out, shell.read("out.png"));
    shell.write("piped.png", ran.out);
    EXPECT_EQ(pixelsOf(shell.picture("piped.png")), pixelsOf(shell.picture("out.png")));
}

TEST(Apply, ReadsNamedPipes)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    ASSERT_EQ(mkfifo(shell.path("pipe").c_str(), 0600), 0);
    std::thread writer([&] { shell.write("pipe", shell.read("in.png")); });
    expectDone(shell.run({"apply", "CIColorInvert", "pipe", "-o", "out.png"}));
    writer.join();
    expectDone(shell.run({"apply", "CIColorInvert", "in.png", "-o", "same.png"}));
    EXPECT_EQ(shell.read("out.png"), shell.read("same.png"));
}

TEST(Apply, ReplacesItsInputOnlyWhenAsked)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    shell.writePicture("other.png", 8, 8);
    expectDone(shell.run({"apply", "CIColorInvert", "in.png", "-o", "other.png"}));
    const std::string inverted = pixelsOf(shell.picture("other.png"));
    expectDone(shell.run({"apply", "CIColorInvert", "in.png", "--in-place"}));
    EXPECT_EQ(pixelsOf(shell.picture("in.png")), inverted);

    // A link is written through, also in place.
    std::filesystem::create_symlink("other.png", shell.path("link.png"));
    expectOneLineError(shell.run({"apply", "CIColorInvert", "other.png", "-o", "link.png"}), 2,
                       "--in-place");
    expectDone(shell.run({"apply", "CIColorInvert", "other.png", "-o", "link.png", "--in-place"}));
    EXPECT_TRUE(std::filesystem::is_symlink(shell.path("link.png")));
    EXPECT_NE(pixelsOf(shell.picture("other.png")), inverted);
    EXPECT_EQ(shell.files(), (Words{"in.png", "link.png", "other.png"}));
}

TEST(Apply, WritesToDevicesWithoutReplacingThem)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    const Ran ran =
        shell.run({"apply", "CIColorInvert", "in.png", "-o", "/dev/stdout", "--format", "png"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.out.substr(0, 4), "\x89PNG");
    EXPECT_TRUE(std::filesystem::exists("/dev/stdout"));
}

TEST(Recipe, OfAPictureRepeatsIt)
{
    Shell shell;
    shell.writePicture("in.png", 40, 30, true);
    for (const Words& step :
         {Words{"CICheckerboardGenerator", "--set", "inputWidth=7.5"},
          Words{"CIShadedMaterial", "--set", "inputShadingImage=clay"}, Words{"CIColorControls"},
          Words{"CIGaussianBlur", "--no-defaults"}, Words{"GLIF_Plasma", "--seed", "9"}}) {
        SCOPED_TRACE(step.front());
        Words words = {"apply", step.front(), "in.png", "-o", "made.png"};
        words.insert(words.end(), step.begin() + 1, step.end());
        expectDone(shell.run(words));
        expectDone(shell.run({"apply", "--recipe-from", "made.png", "in.png", "-o", "again.png"}));
        EXPECT_EQ(shell.read("again.png"), shell.read("made.png"));
        EXPECT_EQ(pixelsOf(shell.picture("again.png")), pixelsOf(shell.picture("made.png")));
        EXPECT_NE(pixelsOf(shell.picture("made.png")), pixelsOf(shell.picture("in.png")));
    }
}

TEST(Recipe, OfAGeneratedPictureRepeatsItFromEveryFormat)
{
    const Shell shell;
    const Words squares = {"generate", "GLIF_HilbertCurve", "--size", "60x40", "--seed", "5",
                           "--set",    "GLIFColorScheme=3", "-o"};
    const auto with = [](Words words, const char* last) {
        words.emplace_back(last);
        return words;
    };
    expectDone(shell.run(with(squares, "made.png")));
    for (const char* file : {"made.png", "made.jpg", "made.tif", "made.svg", "made.pdf"}) {
        SCOPED_TRACE(file);
        expectDone(shell.run(with(squares, file)));
        expectDone(
            shell.run({"generate", "--recipe-from", file, "--size", "60x40", "-o", "again.png"}));
        EXPECT_EQ(pixelsOf(shell.picture("again.png")), pixelsOf(shell.picture("made.png")));
    }
    const std::string recipe = shell.picture("made.png")->metadata().recipe;
    const auto read = plugin::parseRecipe(recipe);
    ASSERT_TRUE(read) << read.error();
    EXPECT_EQ(read->at(0).identifier, "GLIF_HilbertCurve");
    EXPECT_EQ(read->at(0).seed, 5u);
    EXPECT_EQ(*read->at(0).find("GLIFColorScheme"), "3");
    EXPECT_THAT(recipe, HasSubstr("\"version\":\"" CIF_VERSION "\""));

    expectDone(shell.run(with(with(squares, "bare.png"), "--metadata=none")));
    EXPECT_EQ(shell.picture("bare.png")->metadata().recipe, "");
    EXPECT_EQ(pixelsOf(shell.picture("bare.png")), pixelsOf(shell.picture("made.png")));
}

TEST(Recipe, RunsItsStepsInOrder)
{
    Shell shell;
    shell.writePicture("in.png", 24, 16);
    shell.write("steps.txt", "# text form\nCIColorInvert\nCIGaussianBlur inputRadius=2\n");
    shell.write("steps.json",
                R"([{"id":"CIColorInvert"},{"id":"CIGaussianBlur","set":{"inputRadius":2}}])");
    expectDone(shell.run({"apply", "CIColorInvert", "in.png", "-o", "1.png"}));
    expectDone(
        shell.run({"apply", "CIGaussianBlur", "1.png", "-o", "2.png", "--set", "inputRadius=2"}));
    expectDone(shell.run({"apply", "--recipe-from", "steps.txt", "in.png", "-o", "text.png"}));
    expectDone(shell.run({"apply", "--recipe-from", "steps.json", "in.png", "-o", "json.png"}));
    EXPECT_EQ(pixelsOf(shell.picture("text.png")), pixelsOf(shell.picture("2.png")));
    EXPECT_EQ(shell.read("json.png"), shell.read("text.png"));

    shell.write("new.txt", "GLIF_Plasma seed=3\nCIColorInvert\n");
    expectDone(
        shell.run({"generate", "GLIF_Plasma", "--size", "30x20", "--seed", "3", "-o", "p.png"}));
    expectDone(shell.run({"apply", "CIColorInvert", "p.png", "-o", "inverted.png"}));
    expectDone(
        shell.run({"generate", "--recipe-from", "new.txt", "--size", "30x20", "-o", "new.png"}));
    EXPECT_EQ(pixelsOf(shell.picture("new.png")), pixelsOf(shell.picture("inverted.png")));
}

TEST(Generate, TheSeedDecidesThePicture)
{
    const Shell shell;
    const auto plasma = [&](const char* file, const Words& more) {
        Words words = {"generate", "GLIF_Plasma", "--size", "64x48", "-o", file};
        words.insert(words.end(), more.begin(), more.end());
        expectDone(shell.run(words));
        return pixelsOf(shell.picture(file));
    };
    const std::string unseeded = plasma("none.png", {});
    EXPECT_EQ(plasma("zero.png", {"--seed", "0"}), unseeded);
    // (The C library takes seeds 0 and 1 for the same.)
    EXPECT_NE(plasma("two.png", {"--seed", "2"}), unseeded);
    EXPECT_EQ(plasma("most.png", {"--seed", "4294967295"}),
              plasma("again.png", {"--seed=4294967295"}));

    CIFMain main;
    Dictionary attributes;
    const DictionaryRef described = main.CIFQueryAttributesForFilter("GLIF_Plasma");
    for (const auto& [key, description] : *described)
        attributes.set(key, (*description.dictionary())["GLIFDefValue"]);
    attributes.set("GLIFRandomSeed", 0);
    std::srand(0);
    EXPECT_EQ(pixelsOf(main.CIFGenerateLayerAttributesSize("GLIF_Plasma", attributes, {64, 48})),
              unseeded);
    EXPECT_NE(plasma("bare.png", {"--no-defaults"}), unseeded);
}

TEST(Generate, TracesEveryDrawingOperation)
{
    const Shell shell;
    for (const char* name : {"GLIF_HilbertCurve", "GLIF_Plasma"}) {
        SCOPED_TRACE(name);
        expectDone(shell.run({"generate", name, "--size", "60x40", "--seed", "5", "-o", "out.png",
                              "--trace", "trace.jsonl"}));
        CIFMain main;
        const auto entry = plugin::describeEntry(main, name);
        ASSERT_TRUE(entry);
        auto attributes = plugin::startingValues(main, *entry, {60, 40});
        ASSERT_TRUE(attributes);
        attributes->set("GLIFRandomSeed", 5);
        std::srand(5);
        const auto made = main.CIFGenerateLayerAttributesSize(name, *attributes, {60, 40});
        const std::uint64_t draws = generators::randomDraws();
        const auto recording = made->recording();

        std::istringstream lines(shell.read("trace.jsonl"));
        std::vector<Value> trace;
        for (std::string line; std::getline(lines, line);)
            trace.push_back(json(line));
        ASSERT_EQ(trace.size(), (recording ? recording->ops.size() : 0) + 1);
        EXPECT_EQ(trace.back(), Value(Dictionary{{"rand_calls", std::int64_t(draws)}}));
        trace.pop_back();
        for (const Value& line : trace)
            EXPECT_THAT(line.dictionary()->stringValue("op"),
                        testing::AnyOf("fill", "stroke", "image"));
    }
}

TEST(Generate, DrawnPicturesBecomeVectorFiles)
{
    const Shell shell;
    const std::pair<const char*, const char*> starts[] = {
        {"pdf", "%PDF"}, {"svg", "<?xml"}, {"eps", "%!PS"}};
    for (const auto& [extension, start] : starts) {
        const std::string file = std::string("out.") + extension;
        expectDone(shell.run({"generate", "GLIF_HilbertCurve", "--size", "60x40", "-o", file}));
        EXPECT_TRUE(shell.read(file).starts_with(start)) << file;
    }
}

TEST(Textures, AreTakenByNameOrFile)
{
    Shell shell;
    shell.writePicture("in.png", 40, 30);
    shell.writePicture("texture.png", 20, 20);
    const auto glass = [&](const char* output, const Words& more) {
        Words words = {"apply", "CIGlassDistortion", "in.png", "-o", output,
                       "--set", "inputScale=20"};
        words.insert(words.end(), more.begin(), more.end());
        expectDone(shell.run(words));
        return pixelsOf(shell.picture(output));
    };
    const std::string first = glass("first.png", {});
    EXPECT_EQ(glass("named.png", {"--set", "inputTexture=Ripple"}), first);
    const std::string file = glass("file.png", {"--set", "inputTexture=texture.png"});
    EXPECT_NE(file, first);
    EXPECT_THAT(shell.run({"describe", "CIGlassDistortion"}).out,
                testing::ContainsRegex("inputTexture +texture +Bubbles\n"));

    shell.write("../library/Textures/Glass Textures/Broken.jpg", "no picture");
    expectOneLineError(shell.run({"apply", "CIGlassDistortion", "in.png", "-o", "out.png", "--set",
                                  "inputTexture=Broken"}),
                       1, "library's picture Broken cannot be read");
    std::filesystem::remove_all(shell.library() / "Textures");
    expectOneLineError(shell.run({"apply", "CIGlassDistortion", "in.png", "-o", "out.png"}), 1,
                       "can't locate glass texture");
    EXPECT_EQ(glass("file.png", {"--set", "inputTexture=texture.png"}), file);
}

TEST(Brushes, AreTakenByNameOrFile)
{
    Shell shell;
    const auto dabs = [&](const char* output, const Words& more) {
        Words words = {"generate", "GLIF_Dabs", "--size", "50x40", "-o", output};
        words.insert(words.end(), more.begin(), more.end());
        expectDone(shell.run(words));
        return pixelsOf(shell.picture(output));
    };
    const std::string first = dabs("first.png", {});
    EXPECT_EQ(dabs("named.png", {"--set", "GLIFBrush=Dot"}), first);
    EXPECT_EQ(dabs("file.png", {"--set", "GLIFBrush=../library/Brushes/Dot.tif"}), first);
    EXPECT_THAT(shell.run({"describe", "GLIF_Dabs"}).out,
                testing::ContainsRegex("GLIFBrush +brush +Dot\n"));

    std::filesystem::remove_all(shell.library() / "Brushes");
    expectOneLineError(shell.run({"generate", "GLIF_Dabs", "--size", "9x9", "-o", "out.png"}), 1,
                       "Can't loaded resource");
    EXPECT_FALSE(shell.has("out.png"));
}

} // namespace
