// The steps of an apply or generate command, prepared and run one after another.
#pragma once

#include "cli/Files.h"
#include "plugin/Recipe.h"

namespace cli {

struct Step {
    plugin::Entry entry;
    plugin::RecipeStep recipe;
};

// From the command line or the recipe file. Names, keys and values are all checked before anything
// is done.
Outcome<std::vector<Step>> stepsOf(CIFMain& main, const StepOptions& options);

// Refuses a vector format for a result that only has pixels as far as can be told beforehand;
// without steps there are only pixels.
Outcome<> checkFormat(const std::vector<Step>& steps, const Output& output);

// What the last steps have made, and the recipe that makes it again.
class Progress {
public:
    Progress(CIFMain& main, const StepOptions& options, drawing::PictureRef source);

    // A generator as first step draws a new picture of this size.
    void startWithSize(foundation::Size size) { _size = size; }

    Outcome<> run(const Step& step);
    Outcome<> resize(const Resizing& resizing);
    Outcome<> crop(const foundation::Rect& rect);

    const drawing::PictureRef& picture() const { return _picture; }
    // Numbers the last generator drew.
    std::uint64_t randomDraws() const { return _randomDraws; }

    // Writes the picture with its recipe and the source's metadata.
    Outcome<> write(Output output) const;

private:
    CIFMain& _main;
    plugin::Checking _checking;
    drawing::PictureRef _source; // whose metadata the result keeps
    drawing::PictureRef _picture;
    foundation::Size _size;
    plugin::Recipe _asRun;
    std::uint64_t _randomDraws = 0;
};

// Refuses a file that is both, unless it may be.
Outcome<> checkReplacing(const std::string& input, const Output& output, bool inPlace);

// Writes a result with the recipe that makes it and the metadata of what it was made of, if there
// was anything. Without a recipe the source's own is kept.
Outcome<> writeResult(const drawing::PictureRef& picture, const drawing::PictureRef& source,
                      const plugin::Recipe& recipe, Output output);

} // namespace cli
