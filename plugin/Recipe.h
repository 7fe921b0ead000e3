// Recipes: what was done to a picture, step by step, as text or JSON, and the written form of
// values.
//
// Text form: one step to a line, IDENTIFIER KEY=VALUE …, quoted as in a shell, # for comments.
//     CIGaussianBlur inputRadius=5
//     GLIF_Plasma GLIFResolution=4 seed=7
// JSON form: an array of {"id": …, "set": {KEY: VALUE, …}, "seed": …}.
//
// The words blend, opacity and mask are kept for every step and not understood yet. The word
// defaults=false ("defaults": false) makes a step hand over nothing but what it sets; without it
// the editor's starting values stand for the rest.
#pragma once

#include "plugin/WrittenValues.h"

#include <cstdint>
#include <expected>
#include <utility>

namespace plugin {

struct RecipeStep {
    std::string identifier;
    // Keys with values in their written form, in order; a key occurs once.
    std::vector<std::pair<std::string, std::string>> set;
    std::optional<std::uint32_t> seed;
    bool withStartingValues = true;

    const std::string* find(std::string_view key) const;
    void setValue(std::string_view key, std::string_view text);

    friend bool operator==(const RecipeStep&, const RecipeStep&) = default;
};

using Recipe = std::vector<RecipeStep>;

// Either form, told by its first character. An empty recipe is an error. Errors name line and
// column, or the step and what is wrong with it.
Result<Recipe> parseRecipe(std::string_view text);

// Every recipe reads back as it was (in JSON, as far as its words are UTF-8).
std::string recipeText(const Recipe& recipe);
// `version`, unless empty, is noted in every step; readers pass over it.
std::string recipeJson(const Recipe& recipe, std::string_view version = {});

// A word as a shell, and the text form, reads it back.
std::string shellQuoted(const std::string& word);

// KEY=VALUE split at the first equals sign. The error says what is wrong with it.
Result<std::pair<std::string, std::string>> splitAssignment(std::string_view word);

struct PreparedStep {
    Dictionary attributes; // to be handed to the plug-in object
    RecipeStep asRun;      // repeats the step: every value that was handed over, the seed
};

struct StepError {
    std::string text;
    bool isPicture = false; // a picture could not be read or found; else the step itself is wrong
};

// Everything that a step hands over for a picture of that size in points: starting values unless
// the step does without, then what it sets, then for a generator its seed as "GLIFRandomSeed" (0
// unless given). A centre that the step does not set stays out of `asRun`, so that a repeat takes
// the centre of its own picture.
std::expected<PreparedStep, StepError> prepareStep(const CIFMain& main, const Entry& entry,
                                                   const RecipeStep& step, Size pictureSize,
                                                   Checking checking);

} // namespace plugin
