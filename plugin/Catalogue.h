// How catalogue tables are written down and turned into descriptors.
#pragma once

#include "platform/foundation/Value.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace plugin {

// The identifier that stands between categories in lists for toolbars.
inline constexpr const char* kToolbarSeparatorItemIdentifier = "NSToolbarSeparatorItemIdentifier";

// The platform version at which the filter catalogue has its newer, longer form.
inline constexpr double kNewerToolkitVersion = 949.0;

// 1404.0 unless the host or, failing that, the environment variable CIF_TOOLKIT_VERSION says
// otherwise. Catalogues read it when a CIFMain is made.
double toolkitVersion();
void setToolkitVersion(double version);
// Back to the environment or 1404.0.
void resetToolkitVersion();

// With which platform versions an entry exists.
enum class When { Always, Newer, Older };

// Which keys an entry carries, and in which order.
enum class Layout {
    Plain,   // name, identifier, icon, three default values, style
    Limited, // Plain with maximum and tag before the style
    Own,     // Limited, then bits
    Four,    // Own with a fourth default value after the third
    Group    // name, identifier, style, tag, group tag, members
};

// One entry. A number's literal chooses its kind, which hosts receive: 1 an integer, 1.0f a
// float, 1.0 a double.
struct Row {
    using Number = foundation::Number;
    using Values = std::array<Number, 3>;

    const char* name;
    const char* identifier;
    Layout layout;
    const char* icon = nullptr;
    std::array<Number, 4> values = {0.0f, 0.0f, 0.0f, 0.0f};
    Number maximum = 0.0f;
    Number tag = 0;
    int style = 0;
    int bits = 0;
    int groupTag = 0;
    std::span<const Row> members = {};
    When when = When::Always;
};

constexpr Row plain(const char* name, const char* identifier, const char* icon, Row::Values values,
                    int style)
{
    return {.name = name,
            .identifier = identifier,
            .layout = Layout::Plain,
            .icon = icon,
            .values = {values[0], values[1], values[2], 0.0f},
            .style = style};
}

constexpr Row limited(const char* name, const char* identifier, const char* icon,
                      Row::Values values, Row::Number maximum, Row::Number tag, int style)
{
    Row row = plain(name, identifier, icon, values, style);
    row.layout = Layout::Limited;
    row.maximum = maximum;
    row.tag = tag;
    return row;
}

constexpr Row own(const char* name, const char* identifier, const char* icon, Row::Values values,
                  Row::Number maximum, Row::Number tag, int style, int bits = 0)
{
    Row row = limited(name, identifier, icon, values, maximum, tag, style);
    row.layout = Layout::Own;
    row.bits = bits;
    return row;
}

constexpr Row four(const char* name, const char* identifier, const char* icon,
                   std::array<Row::Number, 4> values, Row::Number maximum, Row::Number tag,
                   int style)
{
    Row row = own(name, identifier, icon, {values[0], values[1], values[2]}, maximum, tag, style);
    row.layout = Layout::Four;
    row.values = values;
    return row;
}

constexpr Row group(const char* name, const char* identifier, std::span<const Row> members, int tag,
                    int style, int groupTag)
{
    return {.name = name,
            .identifier = identifier,
            .layout = Layout::Group,
            .tag = tag,
            .style = style,
            .groupTag = groupTag,
            .members = members};
}

constexpr Row newer(Row row)
{
    row.when = When::Newer;
    return row;
}

constexpr Row older(Row row)
{
    row.when = When::Older;
    return row;
}

struct Category {
    const char* name;
    std::span<const Row> rows;
};

// The descriptor of a category: its display name and those of its entries that exist with the
// version. `display` turns the English texts into what is stored.
foundation::DictionaryRef describeCategory(const Category& category, bool newerToolkit,
                                           std::string (*display)(std::string_view));

// What a generator and its category are called before translation; empty when there is no such
// generator.
struct EnglishNames {
    std::string_view entry, category;
};
EnglishNames generatorNamesInEnglish(std::string_view identifier);

// The descriptors in a list of categories as the plug-in object answers it: every entry in order,
// each group before its members.
std::vector<foundation::DictionaryRef> allDescriptors(const foundation::ArrayRef& categories);

} // namespace plugin
