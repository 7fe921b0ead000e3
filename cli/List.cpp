// cif list: both catalogues, for people or as JSON.
#include "cli/Commands.h"
#include "cli/Table.h"
#include "platform/foundation/Json.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <algorithm>

namespace cli {

namespace {

using foundation::Array;
using foundation::ArrayRef;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Value;

struct Line {
    std::string name, identifier; // no identifier: a heading
};

void addEntries(std::vector<Line>& lines, const CIFMain& main, const ArrayRef& entries,
                const std::string& indent)
{
    if (!entries)
        return;
    for (const Value& value : *entries) {
        const DictionaryRef entry = value.dictionary();
        lines.push_back({indent + main.localizedString(entry->stringValue("CIFFilterName")),
                         entry->stringValue("CIFFilterIdentifier")});
        addEntries(lines, main, (*entry)["DESC_LIST"].array(), indent + "  ");
    }
}

std::string textOf(const std::vector<Line>& lines)
{
    std::size_t width = 0;
    for (const Line& line : lines)
        if (!line.identifier.empty())
            width = std::max(width, widthOf(line.name));
    std::string text;
    for (const Line& line : lines)
        text +=
            (line.identifier.empty() ? line.name : padded(line.name, width + 2) + line.identifier) +
            '\n';
    return text;
}

} // namespace

Outcome<> list(const ListOptions& options)
{
    if (options.toolkitVersion)
        plugin::setToolkitVersion(*options.toolkitVersion);
    CIFMain main;
    Array sets;
    std::vector<Line> lines;
    for (const std::uint32_t set : {0u, 1u}) {
        if (options.effectsSet && *options.effectsSet != set)
            continue;
        main.CIFSetEffectsSet(set);
        const ArrayRef categories = main.CIFAllFilterDescriptors();
        sets.push_back(Dictionary{{"index", set}, {"categories", categories}});
        for (const Value& category : *categories) {
            const DictionaryRef described = category.dictionary();
            if (!lines.empty())
                lines.push_back({});
            lines.push_back({main.localizedString(described->stringValue("CIFCategoryName")), ""});
            addEntries(lines, main, (*described)["CIFFilterList"].array(), "  ");
        }
    }
    if (options.json)
        return printResult(foundation::toJson(Dictionary{{"effectsSets", std::move(sets)}}, 2) +
                           '\n');
    return printResult(textOf(lines));
}

} // namespace cli
