#include "plugin/CommandLineText.h"

#include "platform/foundation/Numbers.h"
#include "platform/imaging/Bitmap.h"

#include <algorithm>
#include <charconv>
#include <span>

namespace plugin {

using foundation::Rect;

namespace {

// What one command does: a generator, or a new size, begins it.
struct Command {
    Recipe steps;
    bool generates = false;
    std::optional<Size> resized; // before the steps; after them when it generates
    bool asThumbnail = false;
};

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

// Where a command of the pipe writes to, and what it does to the result before.
struct Target {
    std::string output; // " -o …"
    std::string crop;   // " --crop …", or nothing
};

std::string textOf(const Command& command, Size size, const std::string& input,
                   const Target& target)
{
    std::string text = command.generates ? "cif generate " : "cif apply ";
    std::string options, further;
    if (!command.steps.empty()) {
        const RecipeStep& first = command.steps.front();
        text.append(shellQuoted(first.identifier));
        if (first.seed)
            options.append(" --seed ").append(std::to_string(*first.seed));
        for (const auto& [key, value] : first.set)
            options.append(" --set ").append(shellQuoted(key + '=' + value));
        if (!first.withStartingValues)
            options.append(" --no-defaults");
        for (const RecipeStep& step : std::span(command.steps).subspan(1)) {
            std::string line = recipeText({step});
            line.pop_back();
            further.append(" --then ").append(shellQuoted(line));
        }
    }
    if (command.generates)
        text.append(" --size ").append(sizeText(size));
    else
        text.append(command.steps.empty() ? "" : " ").append(fileWord(input));
    text.append(target.output);
    std::string resize;
    if (command.resized) {
        resize.append(" --resize ").append(sizeText(*command.resized));
        if (command.asThumbnail)
            resize.append(":fit");
    }
    // In the order in which they are done.
    return command.generates ? text + options + further + resize + target.crop
                             : text + resize + options + further + target.crop;
}

// From the last generator on: nothing before it is left in the result. A drawing must get its new
// size where it is made, while it is one; any other new size begins a command.
std::vector<Command> commandsOf(const EditRecord& record)
{
    std::vector<Command> commands;
    for (const EditRecord::Step& step : record.steps) {
        if (step.resized) {
            const bool isDrawn =
                !commands.empty() && commands.back().generates && !commands.back().resized;
            if (!isDrawn)
                commands.emplace_back();
            commands.back().resized = step.resized;
            commands.back().asThumbnail = step.asThumbnail;
        }
        if (!step.applied)
            continue;
        const bool generates = isGeneratorName(step.applied->identifier);
        if (generates)
            commands.clear();
        if (commands.empty() || (commands.back().generates && commands.back().resized))
            commands.emplace_back();
        commands.back().generates |= generates;
        commands.back().steps.push_back(*step.applied);
    }
    return commands;
}

} // namespace

Recipe recipeOf(const EditRecord& record)
{
    const std::vector<Command> commands = commandsOf(record);
    return commands.empty() ? Recipe() : commands.back().steps;
}

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

    std::vector<Command> commands = commandsOf(record);
    const bool isDrawn = !commands.empty() && commands.front().generates;
    if (!isDrawn && record.size.width > 0)
        return {};
    if (commands.empty()) {
        commands.emplace_back();
        // Nothing was done to the picture; as a crop, it is all that lies in the largest there can
        // be.
        constexpr double kMost = imaging::Bitmap::kMaximumSide;
        if (!record.crop)
            last.crop = cropOption({0, 0, kMost, kMost});
    }
    std::string line;
    for (Command& command : commands) {
        for (RecipeStep& step : command.steps)
            step = withoutStartingValues(main, step);
        const bool isFirst = &command == &commands.front();
        if (!isFirst)
            line.append(" | ");
        line.append(textOf(command, record.size, isFirst ? input : "-",
                           &command == &commands.back() ? last : between));
    }
    return line;
}

} // namespace plugin
