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

// Floats with their own few digits: this is for reading.
std::string shown(const foundation::Value& value)
{
    return plugin::writtenForm(value, ValueKind::Float).value_or("");
}

std::string end(const std::optional<double>& value)
{
    if (!value)
        return "";
    const auto whole = static_cast<std::int64_t>(*value);
    // Limits that came from single-precision numbers look like those.
    const auto narrow = static_cast<float>(*value);
    const bool isFloat = double(narrow) == *value;
    return double(whole) == *value ? std::to_string(whole)
           : isFloat               ? shown(narrow)
                                   : shown(*value);
}

std::string rangeOf(const Parameter& p)
{
    const auto& [minimum, maximum] = p.valid;
    if (!minimum && !maximum)
        return "";
    return (minimum ? end(minimum) : "") + " … " + (maximum ? end(maximum) : "");
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
    std::string libraries;
    for (const Parameter& p : entry.parameters) {
        rows.push_back({p.key, kindOf(p), shown(p.defaultValue), rangeOf(p), startOf(main, p)});
        if (const auto names = plugin::libraryNames(main, p.kind); !names.empty()) {
            libraries += '\n' + p.key + " from the library:";
            for (const std::string& name : names)
                libraries += (name == names.front() ? " " : ", ") + name;
            libraries += '\n';
        }
    }
    if (entry.parameters.empty())
        return titleOf(main, entry) + "\n\nIt takes no values.\n";
    return titleOf(main, entry) + "\n\n" + tableOf(rows) + libraries;
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
