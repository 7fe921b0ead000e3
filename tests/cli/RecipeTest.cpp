// Recipes in both forms: nothing is lost, and mistakes are named with their place.
#include "plugin/Recipe.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

namespace {

using namespace plugin;

Recipe read(std::string_view text)
{
    Result<Recipe> recipe = parseRecipe(text);
    EXPECT_TRUE(recipe) << text << '\n' << recipe.error();
    return recipe ? *std::move(recipe) : Recipe();
}

std::string errorOf(std::string_view text)
{
    const Result<Recipe> recipe = parseRecipe(text);
    EXPECT_FALSE(recipe) << text;
    EXPECT_EQ(recipe.error().find('\n'), std::string::npos);
    return recipe.error();
}

TEST(RecipeText, ReadsStepsLineByLine)
{
    const Recipe recipe = read("# soften, then frame\n"
                               "\n"
                               "CIGaussianBlur inputRadius=5   # a comment\r\n"
                               "  GLIF_Plasma \\\n"
                               "    GLIFResolution=4 seed=7\n"
                               "CIFSlideFrameFilter inputFactorX=0.5 defaults=false");
    ASSERT_EQ(recipe.size(), 3u);
    EXPECT_EQ(recipe[0], (RecipeStep{"CIGaussianBlur", {{"inputRadius", "5"}}, {}, true}));
    EXPECT_EQ(recipe[1], (RecipeStep{"GLIF_Plasma", {{"GLIFResolution", "4"}}, 7, true}));
    EXPECT_EQ(recipe[2], (RecipeStep{"CIFSlideFrameFilter", {{"inputFactorX", "0.5"}}, {}, false}));
}

TEST(RecipeText, QuotesAsAShellDoes)
{
    const Recipe recipe = read("X a='two words' b=\"say \\\"hi\\\" \\n\" c=x\\ y d='' e=#ff0000 "
                               "f='it'\\''s' g=a=b 'h i'=1");
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"a", "two words"}, {"b", "say \"hi\" \\n"}, {"c", "x y"}, {"d", ""},
        {"e", "#ff0000"},   {"f", "it's"},           {"g", "a=b"}, {"h i", "1"}};
    EXPECT_EQ(recipe.at(0).set, expected);
}

TEST(RecipeText, NamesThePlaceOfAMistake)
{
    EXPECT_EQ(errorOf("A x=1\nB  radius"),
              "line 2, column 4: \"radius\" is not of the form KEY=VALUE");
    EXPECT_EQ(errorOf("A =1"), "line 1, column 3: \"=1\" is not of the form KEY=VALUE");
    EXPECT_EQ(errorOf("A x='1\ny"), "line 1, column 3: the closing ' is missing");
    EXPECT_EQ(errorOf("\n  x=1"),
              "line 2, column 3: a step begins with the name of a filter or generator");
    EXPECT_EQ(errorOf("A x=1 x=2"), "line 1, column 7: x is set twice");
    EXPECT_EQ(errorOf("A seed=-1"),
              "line 1, column 3: seed takes a whole number from 0 to 4294967295, not \"-1\"");
    EXPECT_NE(errorOf("A seed=1.5").find("whole number"), std::string::npos);
    EXPECT_NE(errorOf("A seed=4294967296").find("whole number"), std::string::npos);
    for (const char* word : {"blend", "opacity", "mask"})
        EXPECT_EQ(errorOf("A " + std::string(word) + "=1"),
                  "line 1, column 3: \"" + std::string(word) +
                      "\" is not supported yet; leave it out");
    EXPECT_EQ(errorOf("# nothing\n\n"), "the recipe has no steps");
    EXPECT_EQ(errorOf(""), "the recipe has no steps");
}

TEST(RecipeJson, ReadsTheSameStepsAsTheTextForm)
{
    EXPECT_EQ(read(R"([{"id": "A", "set": {"n": 5, "r": 0.5, "w": 3.0, "on": true, "p": [1, 2.5],
                        "c": "#ff0000", "file": "a b.png"}, "seed": 7, "version": "1.0"},
                       {"id": "B", "defaults": false}])"),
              read("A n=5 r=0.5 w=3.0 on=true p=1,2.5 c=#ff0000 file='a b.png' seed=7\n"
                   "B defaults=false"));
}

TEST(RecipeJson, NamesTheStepOfAMistake)
{
    EXPECT_NE(errorOf("[{\"id\": \"A\"},\n {\"id\" \"B\"}]").find("line 2, column"),
              std::string::npos);
    EXPECT_EQ(errorOf(R"([{"id": "A"}, {"set": {}}])"),
              "step 2: has no \"id\", the name of a filter or generator");
    EXPECT_EQ(errorOf("[5]"), "step 1: is no object {\"id\": …, \"set\": {…}}");
    EXPECT_NE(errorOf(R"([{"id": "A", "set": {"x": null}}])").find("sets \"x\" to nothing"),
              std::string::npos);
    EXPECT_NE(errorOf(R"([{"id": "A", "set": {"x": [1, "2"]}}])").find("sets \"x\" to a list"),
              std::string::npos);
    EXPECT_NE(errorOf(R"([{"id": "A", "radius": 5}])").find("unknown member \"radius\""),
              std::string::npos);
    EXPECT_NE(errorOf(R"([{"id": "A", "opacity": 0.5}])").find("not supported yet"),
              std::string::npos);
    EXPECT_NE(errorOf(R"([{"id": "A", "set": {"seed": 5}}])").find("belongs beside \"set\""),
              std::string::npos);
    EXPECT_NE(errorOf(R"([{"id": "A", "set": 5}])").find("\"set\" that is no object"),
              std::string::npos);
    EXPECT_EQ(errorOf("[]"), "the recipe has no steps");
}

TEST(RecipeJson, WritesValuesAsWhatTheyAre)
{
    const Recipe recipe = read("A n=5 r=0.5 on=true p=1,2.5 c=#ff0000 odd=05 file=1.png\n"
                               "GLIF_Foam seed=4294967295");
    EXPECT_EQ(recipeJson(recipe),
              R"([{"id":"A","set":{"n":5,"r":0.5,"on":true,"p":[1,2.5],"c":"#ff0000","odd":"05",)"
              R"("file":"1.png"}},{"id":"GLIF_Foam","set":{},"seed":4294967295}])");
    EXPECT_EQ(read(recipeJson(recipe, "2.3.0")), recipe);
    EXPECT_NE(recipeJson(recipe, "2.3.0").find(R"("version":"2.3.0")"), std::string::npos);
}

// Recipes with everything that quoting, number parsing and JSON could trip over.
class RandomRecipes {
public:
    Recipe make()
    {
        Recipe recipe(1 + pick(3));
        for (RecipeStep& step : recipe) {
            step.identifier = std::string("F").append(text("="));
            for (int n = pick(5); n > 0; --n)
                step.setValue(std::string("k").append(text("=")), pick(2) ? text("") : number());
            if (pick(2))
                step.seed = static_cast<std::uint32_t>(_engine());
            step.withStartingValues = pick(3) != 0;
        }
        return recipe;
    }

private:
    int pick(int n) { return static_cast<int>(_engine() % static_cast<unsigned>(n)); }
    std::string text(std::string_view without)
    {
        static constexpr const char* kPieces[] = {
            "a", " ",    "'", "\"", "\\", "#", "\n", "\t", "$", "=", ",",    "[", "{",
            "ä", "true", "1", "0",  "-",  ".", "e5", "+",  "/", "`", "null", "\r"};
        std::string s;
        for (int n = pick(7); n > 0; --n)
            if (const char* piece = kPieces[pick(std::size(kPieces))]; !without.contains(piece[0]))
                s += piece;
        return s;
    }
    std::string number()
    {
        static constexpr const char* kNumbers[] = {"0",
                                                   "-0",
                                                   "1",
                                                   "007",
                                                   "3.0",
                                                   "3.",
                                                   "1e5",
                                                   "1e+05",
                                                   "0.1",
                                                   "nan",
                                                   "inf",
                                                   "1e999",
                                                   "-1.5",
                                                   "true",
                                                   "1,2,3",
                                                   "1,-0",
                                                   "9223372036854775808",
                                                   "100000.0"};
        return kNumbers[pick(std::size(kNumbers))];
    }

    std::mt19937 _engine{11};
};

TEST(Recipe, RoundTripsThroughBothForms)
{
    RandomRecipes random;
    for (int i = 0; i < 5000; ++i) {
        const Recipe recipe = random.make();
        ASSERT_EQ(read(recipeText(recipe)), recipe) << recipeText(recipe);
        ASSERT_EQ(read(recipeJson(recipe)), recipe) << recipeJson(recipe);
        ASSERT_EQ(recipeText(read(recipeJson(recipe, "9"))), recipeText(recipe));
    }
}

// Arbitrary text is read or refused; what is read can be written again.
TEST(Recipe, SurvivesAnyText)
{
    std::mt19937 engine{3};
    const std::string_view alphabet = "A =\"'\\#\n[]{}:,.0e1-ä\xff";
    int understood = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string text = i % 2 ? "[{\"id\":\"A\",\"set\":{" : "A ";
        for (unsigned n = engine() % 12; n > 0; --n)
            text += alphabet[engine() % alphabet.size()];
        const Result<Recipe> recipe = parseRecipe(text);
        if (!recipe) {
            EXPECT_FALSE(recipe.error().empty());
            continue;
        }
        ++understood;
        EXPECT_EQ(read(recipeText(*recipe)), *recipe) << text;
    }
    EXPECT_GT(understood, 100);
}

TEST(WrittenForm, NumbersReadBackToTheSameValue)
{
    EXPECT_EQ(writtenForm(5), "5");
    EXPECT_EQ(writtenForm(5.0), "5.0");
    EXPECT_EQ(writtenForm(true), "true");
    EXPECT_EQ(writtenForm(0.2f, ValueKind::Float), "0.2");
    EXPECT_EQ(writtenForm(0.2f, ValueKind::Double), "0.20000000298023224");
    EXPECT_EQ(writtenForm(foundation::Color::rgb(1, 0.5f, 0)), "1,0.5,0");
    EXPECT_EQ(writtenForm(foundation::Color::rgb(1, 0.1f, 0, 0.25f)), "1,0.1,0,0.25");
    EXPECT_EQ(writtenForm(foundation::Vector(1, -2.5, 3)), "1,-2.5,3");
    EXPECT_EQ(writtenForm("text"), std::nullopt);

    std::mt19937_64 engine{1};
    for (int i = 0; i < 20'000; ++i) {
        const double d = std::bit_cast<double>(engine());
        const float f = std::bit_cast<float>(static_cast<std::uint32_t>(engine()));
        if (!std::isfinite(d) || !std::isfinite(f))
            continue;
        const auto asDouble = numberFrom(*writtenForm(d));
        ASSERT_TRUE(asDouble && asDouble->kind() == foundation::Number::Kind::Double);
        EXPECT_EQ(asDouble->doubleValue(), d);
        EXPECT_EQ(numberFrom(*writtenForm(f, ValueKind::Float))->floatValue(), f);
        EXPECT_EQ(numberFrom(*writtenForm(f))->doubleValue(), double(f));
        const auto whole = static_cast<std::int64_t>(engine());
        EXPECT_EQ(*numberFrom(*writtenForm(whole)), foundation::Number(whole));
    }
}

} // namespace
