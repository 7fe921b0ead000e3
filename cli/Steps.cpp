// Turns options into steps, steps into calls of the plug-in object.
#include "cli/Steps.h"

#include "cli/Names.h"
#include "generators/Random.h"
#include "plugin/Resizing.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

namespace cli {

namespace {

constexpr std::size_t kLargestRecipe = std::size_t{16} << 20;

constexpr const char* kMakesPixels =
    " makes pixels; pdf, svg and eps hold drawings: use png, jpg, tif or webp";

plugin::Checking checkingOf(const StepOptions& options)
{
    return options.unchecked ? plugin::Checking::Unchecked : plugin::Checking::Strict;
}

// Text as a person or this program writes it: no control characters, and not the beginning of one
// of the picture formats that are text.
bool looksLikeRecipe(std::string_view bytes)
{
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && (bytes[first] == '<' || bytes[first] == '%'))
        return false;
    return std::ranges::none_of(bytes, [](unsigned char c) {
        return (c < ' ' && c != '\t' && c != '\n' && c != '\r') || c == 0x7f;
    });
}

Outcome<plugin::Recipe> recipeFrom(const std::string& file)
{
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        return noPicture("can't read " + inQuotes(file) + ": it is a folder");
    const Outcome<std::string> bytes = readFile(file, kLargestRecipe, kNoPicture);
    std::string text;
    if (bytes && looksLikeRecipe(*bytes)) {
        text = *bytes;
    } else if (!bytes && !std::filesystem::is_regular_file(file, error)) {
        return std::unexpected(bytes.error());
    } else {
        const Outcome<drawing::PictureRef> picture = readPicture(file);
        if (!picture)
            return std::unexpected(picture.error());
        text = (*picture)->metadata().recipe;
        if (text.empty())
            return wrongUsage("the picture " + inQuotes(file) + " carries no recipe");
    }
    foundation::Result<plugin::Recipe> recipe = plugin::parseRecipe(text);
    if (!recipe)
        return wrongUsage(inQuotes(file) + ": " + recipe.error());
    return *std::move(recipe);
}

// By name, or those of a file.
Outcome<plugin::Recipe> firstSteps(const StepOptions& options)
{
    if (!options.recipeFile.empty()) {
        Outcome<plugin::Recipe> recipe = recipeFrom(options.recipeFile);
        if (recipe)
            for (plugin::RecipeStep& step : *recipe) {
                if (options.noDefaults)
                    step.withStartingValues = false;
                if (options.seed)
                    step.seed = options.seed;
            }
        return recipe;
    }
    if (options.name.empty())
        return plugin::Recipe();
    plugin::RecipeStep step;
    step.identifier = options.name;
    step.withStartingValues = !options.noDefaults;
    step.seed = options.seed;
    for (const std::string& word : options.set) {
        const auto assignment = plugin::splitAssignment(word);
        if (!assignment)
            return wrongUsage("--set: " + assignment.error());
        step.setValue(assignment->first, assignment->second);
    }
    return plugin::Recipe{step};
}

Outcome<plugin::Recipe> recipeOf(const StepOptions& options)
{
    Outcome<plugin::Recipe> recipe = firstSteps(options);
    if (!recipe)
        return recipe;
    for (const std::string& text : options.then) {
        const foundation::Result<plugin::Recipe> further = plugin::parseRecipe(text);
        if (!further)
            return wrongUsage("--then: " + further.error());
        recipe->insert(recipe->end(), (*further).begin(), (*further).end());
    }
    return recipe;
}

Failure failureOf(const plugin::StepError& error)
{
    return {error.isPicture ? kNoPicture : kWrongUsage, error.text};
}

} // namespace

Outcome<std::vector<Step>> stepsOf(CIFMain& main, const StepOptions& options)
{
    const Outcome<plugin::Recipe> recipe = recipeOf(options);
    if (!recipe)
        return std::unexpected(recipe.error());
    std::vector<Step> steps;
    for (const plugin::RecipeStep& step : *recipe) {
        Outcome<plugin::Entry> entry = entryNamed(main, step.identifier);
        if (!entry)
            return std::unexpected(entry.error());
        const auto prepared = plugin::prepareStep(main, *entry, step, {1, 1}, checkingOf(options));
        if (!prepared)
            return std::unexpected(failureOf(prepared.error()));
        steps.push_back({*std::move(entry), step});
    }
    return steps;
}

Outcome<> checkFormat(const std::vector<Step>& steps, const Output& output)
{
    if (codecs::isVectorFormat(output.format) && (steps.empty() || !steps.back().entry.isGenerator))
        return wrongUsage((steps.empty() ? "this" : steps.back().entry.identifier) + kMakesPixels);
    return {};
}

Progress::Progress(CIFMain& main, const StepOptions& options, drawing::PictureRef source)
    : _main(main), _checking(checkingOf(options)), _source(source), _picture(std::move(source))
{
    if (_picture)
        _size = _picture->size();
}

Outcome<> Progress::run(const Step& step)
{
    const auto started = std::chrono::steady_clock::now();
    const auto prepared = plugin::prepareStep(_main, step.entry, step.recipe, _size, _checking);
    if (!prepared)
        return std::unexpected(failureOf(prepared.error()));

    const std::string& name = step.entry.identifier;
    drawing::PictureRef made;
    if (!step.entry.isGenerator) {
        made = _main.CIFApplyFilterAttributesForImage(name, prepared->attributes, _picture);
    } else {
        std::srand(*prepared->asRun.seed);
        made = _picture
                   ? _main.CIFGenerateLayerAttributesForImage(name, prepared->attributes, _picture)
                   : _main.CIFGenerateLayerAttributesSize(name, prepared->attributes, _size);
        _randomDraws = generators::randomDraws();
        _source = nullptr; // nothing of it is left, its metadata would be wrong
    }
    if (!made) {
        const std::string why = lastLogLine();
        return noPicture(why.empty() ? name + " made no picture" : why);
    }
    // Pixels are made when they are looked at; looking now tells at which step they fail.
    if (!made->recording() && !made->bitmap())
        return noPicture(name + " made no pixels: memory is short");
    _picture = std::move(made);
    _size = _picture->size();
    _asRun.push_back(prepared->asRun);

    const std::chrono::duration<double, std::milli> took =
        std::chrono::steady_clock::now() - started;
    detail(plugin::recipeText({prepared->asRun}).append(std::to_string(_picture->pixelsWide())) +
           " x " + std::to_string(_picture->pixelsHigh()) + " pixels, " +
           std::to_string(std::lround(took.count())) + " ms");
    return {};
}

Outcome<> Progress::resize(const Resizing& resizing)
{
    auto made =
        plugin::resized(_picture, resizing.size.width, resizing.size.height, resizing.asThumbnail);
    if (!made)
        return noPicture("--resize: " + made.error());
    _picture = *std::move(made);
    _size = _picture->size();
    return {};
}

Outcome<> Progress::crop(const foundation::Rect& rect)
{
    auto made = plugin::cropped(_picture, rect);
    if (!made)
        return noPicture("--crop: " + made.error());
    _picture = *std::move(made);
    _size = _picture->size();
    return {};
}

Outcome<> Progress::write(Output output) const
{
    return writeResult(_picture, _source, _asRun, std::move(output));
}

Outcome<> checkReplacing(const std::string& input, const Output& output, bool inPlace)
{
    std::error_code error;
    if (!inPlace && input != "-" && !output.file.empty() &&
        std::filesystem::equivalent(input, output.file, error))
        return wrongUsage("OUTPUT is INPUT itself; add --in-place to replace it");
    return {};
}

Outcome<> writeResult(const drawing::PictureRef& picture, const drawing::PictureRef& source,
                      const plugin::Recipe& recipe, Output output)
{
    const std::string what = recipe.empty() ? "this" : recipe.back().identifier;
    output.options.recipe = !recipe.empty() ? plugin::recipeJson(recipe, CIF_VERSION)
                            : source        ? source->metadata().recipe
                                            : "";
    if (codecs::isVectorFormat(output.format)) {
        if (!picture->recording())
            return wrongUsage(what + kMakesPixels);
        return cli::write(output, *picture);
    }
    if (!source)
        return cli::write(output, *picture);
    const imaging::BitmapRef bitmap = picture->bitmap();
    if (!bitmap)
        return noPicture(what + " made no pixels: " + lastLogLine());
    return cli::write(output, *drawing::Picture::fromBitmap(bitmap, source->metadata()));
}

} // namespace cli
