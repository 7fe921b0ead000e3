// cif list: both catalogues, or the pictures of the content library, for people or as JSON.
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

// What the content library offers, under the names that --set takes.
Outcome<> listResources(const CIFMain& main, bool json)
{
    const struct {
        const char *title, *key;
        CIFMain::NameList names;
    } kinds[] = {
        {"Glass textures (inputTexture)", "CIFGlassTextureNames", main.CIFGlassTextureNames()},
        {"Shading materials (inputShadingImage)", "CIFShadingMaterialNames",
         main.CIFShadingMaterialNames()},
        {"Brushes (GLIFBrush)", "CIFBrushNames", main.CIFBrushNames()},
    };
    if (json) {
        Dictionary all;
        for (const auto& kind : kinds) {
            // Without the folder there is no list, not an empty one.
            Value listed;
            if (kind.names)
                listed = Array(kind.names->begin(), kind.names->end());
            all.set(kind.key, listed);
        }
        return printResult(foundation::toJson(all, 2) + '\n');
    }
    std::vector<Line> lines;
    for (const auto& kind : kinds) {
        if (!kind.names)
            continue;
        if (!lines.empty())
            lines.push_back({});
        lines.push_back({kind.title, ""});
        for (const std::string& name : *kind.names) {
            const std::string shown = main.localizedString(name);
            lines.push_back({"  " + name, shown == name ? "" : shown});
        }
    }
    if (lines.empty())
        return noPicture("there is no content library; CIF_CONTENT_LIBRARY can name its folder");
    return printResult(textOf(lines));
}

} // namespace

Outcome<> list(const ListOptions& options)
{
    if (options.toolkitVersion)
        plugin::setToolkitVersion(*options.toolkitVersion);
    CIFMain main;
    if (options.resources)
        return listResources(main, options.json);
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
