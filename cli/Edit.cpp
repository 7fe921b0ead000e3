// cif edit: the editor's window on a picture file or a new picture, and what was accepted in it.
#include "cli/Names.h"
#include "cli/Steps.h"
#include "plugin/CommandLineText.h"
#include "plugin/EditorLoader.h"
#include "plugin/Resizing.h"

namespace cli {

namespace {

// The window, run by the entry points that every host calls.
Outcome<> showWindow(CIFMain& main, const drawing::PictureRef& picture,
                     const std::optional<PixelSize>& size)
{
    const bool accepted = size ? main.GLIFShowDialogWithRect(
                                     nullptr, {0, 0, double(size->width), double(size->height)})
                               : main.CIFShowDialogUseSelectionWithRect(picture, false, {});
    if (accepted)
        return {};
    if (const std::string why = plugin::editorFailure(); !why.empty())
        return noPicture("can't open the editor: " + why);
    // The window could not be read: that is no choice of the user's.
    if (const std::string line = lastLogLine(); line.starts_with("Failed to load"))
        return noPicture("can't open the editor: " + line);
    return std::unexpected(Failure{kCancelled, "cancelled; nothing is written"});
}

// What the result notes: every value that was handed over.
Outcome<plugin::Recipe> writtenRecipe(CIFMain& main, const plugin::EditRecord& record)
{
    plugin::Recipe recipe = plugin::recipeOf(record);
    for (plugin::RecipeStep& step : recipe) {
        const Outcome<plugin::Entry> entry = entryNamed(main, step.identifier);
        if (!entry)
            return std::unexpected(entry.error());
        // As the printed line has it, so that both note the same.
        auto prepared = plugin::prepareStep(main, *entry, plugin::withoutStartingValues(main, step),
                                            {1, 1}, plugin::Checking::Unchecked);
        if (!prepared)
            return noPicture(prepared.error().text);
        step = std::move(prepared->asRun);
    }
    return recipe;
}

bool hasGenerator(const plugin::EditRecord& record)
{
    return std::ranges::any_of(record.steps, [](const plugin::EditRecord::Step& step) {
        return step.applied && plugin::isGeneratorName(step.applied->identifier);
    });
}

// The options of the result that a command needs besides.
std::string outputOptions(const EditOptions& options)
{
    std::string text;
    const OutputOptions standard;
    if (!options.output.format.empty())
        text += " --format " + options.output.format;
    if (options.output.metadata != standard.metadata)
        text += " --metadata " + options.output.metadata;
    if (options.output.quality != standard.quality)
        text += " --quality " + std::to_string(options.output.quality);
    if (options.inPlace)
        text += " --in-place";
    return text;
}

} // namespace

Outcome<> edit(const EditOptions& options)
{
    const Outcome<Output> output = openOutput(options.output);
    if (!output)
        return std::unexpected(output.error());
    if (!options.generate)
        if (auto done = checkReplacing(options.input, *output, options.inPlace); !done)
            return done;
    drawing::PictureRef source;
    if (options.generate) {
        const PixelSize size = *options.generate;
        if (const auto fits = plugin::fitsMemory(size.width, size.height); !fits)
            return noPicture(fits.error());
    } else {
        Outcome<drawing::PictureRef> input = readPicture(options.input);
        if (!input)
            return std::unexpected(input.error());
        source = *std::move(input);
    }

    CIFMain main;
    if (auto done = showWindow(main, source, options.generate); !done)
        return done;
    drawing::PictureRef result = main.CIFOutputImage();
    if (!result)
        return noPicture("the editor made no picture");
    plugin::EditRecord record = plugin::sharedImageEditor()->record();
    // The host's answer where there is one: a window that makes a new picture is not asked for it.
    if (!options.generate) {
        record.crop.reset();
        if (main.CIFIsSelected())
            record.crop = main.CIFSelectionRect();
    }
    if (record.crop) {
        auto part = plugin::cropped(result, *record.crop);
        if (!part)
            return noPicture("can't cut the selection out: " + part.error());
        result = *std::move(part);
    }
    const Outcome<plugin::Recipe> recipe = writtenRecipe(main, record);
    if (!recipe)
        return std::unexpected(recipe.error());
    if (auto done = writeResult(result, hasGenerator(record) ? nullptr : source, *recipe, *output);
        !done)
        return done;
    if (!options.printCommand)
        return {};
    const std::string line = plugin::commandLine(record, options.input, options.output.file);
    if (line.empty())
        return noPicture("no command begins with an empty picture, so none is printed");
    return printResult(line + outputOptions(options) + '\n');
}

} // namespace cli
