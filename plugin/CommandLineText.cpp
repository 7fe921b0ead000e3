#include "plugin/CommandLineText.h"

#include "platform/foundation/Numbers.h"
#include "platform/imaging/Bitmap.h"

#include <algorithm>
#include <charconv>
#include <span>

namespace plugin {

using foundation::Rect;

namespace {

using Steps = std::span<const EditRecord::Step>;

bool isStartingValue(const CIFMain& main, const Parameter& p, std::string_view text)
{
    // A centre starts where the picture has its own.
    if (p.kind == ValueKind::Point)
        return false;
    if (isPicture(p.kind)) {
        const std::vector<std::string> names = libraryNames(main, p.kind);
        return !names.empty() && names.front() == text;
    }
    if (p.startingValue.isNothing())
        return false;
    const Result<Value> value = valueOf(main, p, text, Checking::Strict);
    return value && *value == p.startingValue;
}

std::string side(double points)
{
    return std::to_string(foundation::truncToInt(points));
}

std::string sizeText(Size size)
{
    return side(size.width) + 'x' + side(size.height);
}

std::string cropOption(const Rect& rect)
{
    std::string text;
    for (const double n : {rect.x, rect.y, rect.width, rect.height}) {
        char digits[400]; // enough for any double
        text += text.empty() ? " --crop " : ",";
        text.append(digits,
                    std::to_chars(digits, digits + sizeof digits, n, std::chars_format::fixed).ptr);
    }
    return text;
}

// A file whose name looks like an option is still a file.
std::string fileWord(const std::string& file)
{
    const bool looksLikeOption = file.size() > 1 && file.starts_with('-');
    return shellQuoted(looksLikeOption ? std::string("./").append(file) : file);
}

bool isGenerator(const EditRecord::Step& step)
{
    return step.applied && isGeneratorName(step.applied->identifier);
}

// Options of one step by name.
std::string optionsOf(const RecipeStep& step)
{
    std::string options;
    if (step.seed)
        options.append(" --seed ").append(std::to_string(*step.seed));
    for (const auto& [key, value] : step.set)
        options.append(" --set ").append(shellQuoted(key + '=' + value));
    if (!step.withStartingValues)
        options += " --no-defaults";
    return options;
}

// Where a command of the pipe writes to, and what it does to the result before.
struct Target {
    std::string output; // " -o …"
    std::string crop;   // " --crop …", or nothing
};

std::string generateCommand(const Recipe& recipe, Size size, const Target& target)
{
    std::string command;
    if (recipe.size() > 1) {
        command = "printf '%s\\n'";
        for (const RecipeStep& step : recipe) {
            std::string line = recipeText({step});
            line.pop_back();
            command.append(" ").append(shellQuoted(line));
        }
        command += " | cif generate --recipe-from /dev/stdin";
    } else {
        command.append("cif generate ").append(shellQuoted(recipe.front().identifier));
    }
    command.append(" --size ").append(sizeText(size)).append(target.output);
    if (recipe.size() == 1)
        command += optionsOf(recipe.front());
    return command + target.crop;
}

std::string applyCommand(const EditRecord::Step& step, const RecipeStep* applied,
                         const std::string& input, const Target& target)
{
    std::string command = "cif apply ";
    if (applied)
        command += shellQuoted(applied->identifier) + ' ';
    command += fileWord(input) + target.output;
    if (step.resized) {
        command.append(" --resize ").append(sizeText(*step.resized));
        if (step.asThumbnail)
            command += ":fit";
    }
    if (applied)
        command += optionsOf(*applied);
    return command + target.crop;
}

} // namespace

RecipeStep withoutStartingValues(CIFMain& main, const RecipeStep& step)
{
    const std::optional<Entry> entry = describeEntry(main, step.identifier);
    RecipeStep shorter = step;
    if (entry && step.withStartingValues)
        std::erase_if(shorter.set, [&](const auto& assignment) {
            const Parameter* p = entry->find(assignment.first);
            return p && isStartingValue(main, *p, assignment.second);
        });
    return shorter;
}

std::string commandLine(const EditRecord& record, const std::string& input,
                        const std::string& output)
{
    CIFMain main;
    const std::string piped = "-";
    const Target between{" -o - --format png", {}};
    Target last{std::string(" -o ").append(fileWord(output)), {}};
    if (record.crop)
        last.crop = cropOption(*record.crop);

    Steps steps = record.steps;
    std::vector<std::string> commands;
    const auto generator = std::find_if(steps.rbegin(), steps.rend(), isGenerator);
    if (generator != steps.rend()) {
        steps = steps.subspan(static_cast<std::size_t>(steps.rend() - generator) - 1);
        Recipe recipe;
        do {
            recipe.push_back(withoutStartingValues(main, *steps.front().applied));
            steps = steps.subspan(1);
        } while (!steps.empty() && steps.front().applied && !steps.front().resized);
        commands.push_back(generateCommand(recipe, record.size, steps.empty() ? last : between));
    }
    for (; !steps.empty(); steps = steps.subspan(1)) {
        const EditRecord::Step& step = steps.front();
        std::optional<RecipeStep> applied;
        if (step.applied)
            applied = withoutStartingValues(main, *step.applied);
        commands.push_back(applyCommand(step, applied ? &*applied : nullptr,
                                        commands.empty() ? input : piped,
                                        steps.size() == 1 ? last : between));
    }
    if (commands.empty()) {
        // Nothing was done to the picture; as a crop, it is all that lies in the largest there can
        // be.
        constexpr double kMost = imaging::Bitmap::kMaximumSide;
        if (!record.crop)
            last.crop = cropOption({0, 0, kMost, kMost});
        commands.push_back(applyCommand({}, nullptr, input, last));
    }
    std::string line = commands.front();
    for (const std::string& command : std::span(commands).subspan(1))
        line.append(" | ").append(command);
    return line;
}

} // namespace plugin
