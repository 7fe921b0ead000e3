// Descriptors from catalogue rows, and the platform version that decides which rows exist.
#include "plugin/Catalogue.h"

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace plugin {

using foundation::Array;
using foundation::Dictionary;
using foundation::DictionaryRef;

namespace {

std::optional<double>& hostToolkitVersion()
{
    static std::optional<double> version;
    return version;
}

DictionaryRef describe(const Row& row, std::string (*display)(std::string_view))
{
    Dictionary d;
    d.set("CIFFilterName", display(row.name));
    d.set("CIFFilterIdentifier", row.identifier);

    if (row.layout == Layout::Group) {
        Array members;
        for (const Row& member : row.members)
            members.emplace_back(describe(member, display));
        d.set("CIFFilterStyle", row.style);
        d.set("CIFTag", row.tag);
        d.set("GROUP_TAG", row.groupTag);
        d.set("DESC_LIST", std::move(members));
        return std::make_shared<const Dictionary>(std::move(d));
    }

    d.set("CIFFilterIcon", row.icon);
    d.set("CIFFilterDefValue1", row.values[0]);
    d.set("CIFFilterDefValue2", row.values[1]);
    d.set("CIFFilterDefValue3", row.values[2]);
    if (row.layout == Layout::Four)
        d.set("CIFFilterDefValue4", row.values[3]);
    if (row.layout != Layout::Plain) {
        d.set("CIFFilterMaxValue", row.maximum);
        d.set("CIFTag", row.tag);
    }
    d.set("CIFFilterStyle", row.style);
    if (row.layout == Layout::Own || row.layout == Layout::Four)
        d.set("CIFBits", row.bits);
    return std::make_shared<const Dictionary>(std::move(d));
}

} // namespace

double toolkitVersion()
{
    if (hostToolkitVersion())
        return *hostToolkitVersion();
    constexpr double kUsual = 1404.0;
    const char* text = std::getenv("CIF_TOOLKIT_VERSION");
    if (!text)
        return kUsual;
    const std::string_view all(text);
    double version = kUsual;
    const auto [end, error] = std::from_chars(all.data(), all.data() + all.size(), version);
    return error == std::errc() && end == all.data() + all.size() ? version : kUsual;
}

void setToolkitVersion(double version)
{
    hostToolkitVersion() = version;
}

void resetToolkitVersion()
{
    hostToolkitVersion().reset();
}

DictionaryRef describeCategory(const Category& category, bool newerToolkit,
                               std::string (*display)(std::string_view))
{
    Array entries;
    for (const Row& row : category.rows)
        if (row.when == When::Always || (row.when == When::Newer) == newerToolkit)
            entries.emplace_back(describe(row, display));
    return std::make_shared<const Dictionary>(
        Dictionary{{"CIFCategoryName", display(category.name)}, {"CIFFilterList", entries}});
}

std::vector<foundation::DictionaryRef> allDescriptors(const foundation::ArrayRef& categories)
{
    std::vector<foundation::DictionaryRef> all;
    for (const foundation::Value& category : *categories)
        for (const foundation::Value& entry : *(*category.dictionary())["CIFFilterList"].array()) {
            all.push_back(entry.dictionary());
            if (const auto members = (*entry.dictionary())["DESC_LIST"].array())
                for (const foundation::Value& member : *members)
                    all.push_back(member.dictionary());
        }
    return all;
}

} // namespace plugin
