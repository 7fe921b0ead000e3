// cif describe: what one filter or generator takes.
#include "cli/Commands.h"
#include "cli/Names.h"
#include "cli/Table.h"
#include "platform/foundation/Json.h"
#include "plugin/Recipe.h"

namespace cli {

namespace {

using foundation::Array;
using foundation::Dictionary;
using foundation::DictionaryRef;
using plugin::Parameter;
using plugin::ValueKind;

Array listOf(const std::optional<std::vector<std::string>>& names)
{
    Array list;
    if (names)
        list.assign(names->begin(), names->end());
    return list;
}

std::string jsonOf(CIFMain& main, const std::string& name)
{
    const DictionaryRef attributes = main.CIFQueryAttributesForFilter(name);
    return foundation::toJson(
               Dictionary{{"name", name},
                          {"inputKeys", listOf(main.CIFQueryInputKeysForFilter(name))},
                          {"outputKeys", listOf(main.CIFQueryOutputKeysForFilter(name))},
                          {"attributes", attributes}},
               2) +
           '\n';
}

std::string kindOf(const Parameter& p)
{
    switch (p.kind) {
    case ValueKind::Boolean:
        return "switch";
    case ValueKind::Integer:
        return "integer";
    case ValueKind::Float:
    case ValueKind::Double:
        return "number";
    case ValueKind::Point:
        return "point";
    case ValueKind::Vector:
        return p.components > 0 ? "vector of " + std::to_string(p.components) : "vector";
    case ValueKind::Color:
        return "colour";
    case ValueKind::Transform:
        return "transform";
    case ValueKind::Picture:
        return "picture";
    case ValueKind::GlassTexture:
        return "texture";
    case ValueKind::ShadingMaterial:
        return "material";
    case ValueKind::Brush:
        return "brush";
    }
    return {};
}

// With the few digits that a reader needs: floats with their own, whole numbers without a point.
std::string shown(const foundation::Value& value)
{
    std::string text = plugin::writtenForm(value, ValueKind::Float).value_or("");
    if (text.ends_with(".0"))
        text.resize(text.size() - 2);
    return text;
}

// Limits that came from single-precision numbers look like those.
std::string limit(double value)
{
    const auto narrow = static_cast<float>(value);
    return narrow == value ? shown(narrow) : shown(value);
}

std::string rangeOf(const Parameter& p)
{
    const auto& [minimum, maximum] = p.valid;
    if (minimum && maximum)
        return limit(*minimum) + " to " + limit(*maximum);
    if (minimum)
        return limit(*minimum) + " or more";
    return maximum ? limit(*maximum) + " or less" : "";
}

std::string startOf(const CIFMain& main, const Parameter& p)
{
    if (p.key == "inputImage")
        return "the picture";
    switch (p.kind) {
    case ValueKind::Point:
        return "centre of the picture";
    case ValueKind::GlassTexture:
    case ValueKind::ShadingMaterial:
    case ValueKind::Brush: {
        const std::vector<std::string> names = plugin::libraryNames(main, p.kind);
        return names.empty() ? "none in the library" : names.front();
    }
    default:
        return shown(p.startingValue);
    }
}

std::string titleOf(CIFMain& main, const plugin::Entry& entry)
{
    const DictionaryRef descriptor = main.CIFDescriptorForFilterNameWithGroups(entry.identifier);
    std::string title = entry.identifier;
    if (descriptor)
        title += ": " + main.localizedString(descriptor->stringValue("CIFFilterName"));
    return title + (entry.isGenerator ? " (generator)" : " (filter)");
}

std::string textOf(CIFMain& main, const plugin::Entry& entry)
{
    std::vector<std::vector<std::string>> rows = {
        {"KEY", "KIND", "DEFAULT", "RANGE", "STARTS WITH"}};
    std::string libraries, besides;
    for (const Parameter& p : entry.parameters) {
        if (!p.isListed && p.kind != ValueKind::Brush) {
            besides += (besides.empty() ? "\nLike every generator it understands " : ", ") + p.key;
            continue;
        }
        rows.push_back({p.key, kindOf(p), shown(p.defaultValue), rangeOf(p), startOf(main, p)});
        if (const auto names = plugin::libraryNames(main, p.kind); !names.empty()) {
            libraries += '\n' + p.key + " from the library:";
            for (const std::string& name : names)
                libraries += (name == names.front() ? " " : ", ") + name;
            libraries += '\n';
        }
    }
    if (!besides.empty())
        besides += ".\n";
    if (rows.size() == 1)
        return titleOf(main, entry) + "\n\nIt lists no values.\n" + besides;
    return titleOf(main, entry) + "\n\n" + tableOf(rows) + libraries + besides;
}

} // namespace

Outcome<> describe(const DescribeOptions& options)
{
    CIFMain main;
    const Outcome<plugin::Entry> entry = entryNamed(main, options.name);
    if (!entry)
        return std::unexpected(entry.error());
    return printResult(options.json ? jsonOf(main, options.name) : textOf(main, *entry));
}

} // namespace cli
