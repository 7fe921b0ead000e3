// Looks names up in both catalogues and the filter registry.
#include "cli/Names.h"

#include "platform/imaging/Filter.h"

#include <algorithm>

namespace cli {

namespace {

using foundation::Array;
using foundation::ArrayRef;
using foundation::DictionaryRef;

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lower(std::string_view text)
{
    std::string s(text);
    std::ranges::transform(s, s.begin(), [](char c) { return lower(c); });
    return s;
}

void addEntries(std::vector<CatalogueName>& names, const ArrayRef& entries)
{
    if (!entries)
        return;
    for (const foundation::Value& value : *entries) {
        const DictionaryRef entry = value.dictionary();
        CatalogueName name{
            entry->stringValue("CIFFilterIdentifier"), entry->stringValue("CIFFilterName"), {}};
        const ArrayRef members = (*entry)["DESC_LIST"].array();
        if (members)
            for (const foundation::Value& member : *members)
                name.members.push_back(member.dictionary()->stringValue("CIFFilterIdentifier"));
        names.push_back(std::move(name));
        addEntries(names, members);
    }
}

std::string listed(const std::vector<std::string>& words)
{
    std::string s;
    for (std::size_t i = 0; i < words.size(); ++i)
        s += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
    return s;
}

// How far the typed name is from an entry; large when they have nothing in common.
int distanceTo(const CatalogueName& entry, std::string_view typed)
{
    constexpr int kFar = 1000;
    const std::string wanted = lower(typed);
    int best = kFar;
    for (const std::string& name : {entry.identifier, entry.displayName}) {
        if (name.empty())
            continue;
        const int d = editDistance(name, typed);
        if (d <= std::max(2, static_cast<int>(typed.size()) / 4))
            best = std::min(best, d);
        // A part of a name that is long enough to mean something.
        if (typed.size() >= 4 && lower(name).contains(wanted))
            best = std::min(best, 3);
    }
    return best;
}

std::vector<std::string> closeNames(const std::vector<CatalogueName>& names, std::string_view typed)
{
    std::vector<std::pair<int, std::string>> found;
    for (const CatalogueName& entry : names)
        if (const int d = distanceTo(entry, typed); d < 1000 && entry.members.empty())
            found.emplace_back(d, entry.identifier);
    std::ranges::stable_sort(found, {}, &std::pair<int, std::string>::first);
    std::vector<std::string> best;
    for (const auto& [d, name] : found)
        if (best.size() < 3 && d <= found.front().first + 1)
            best.push_back(name);
    return best;
}

} // namespace

int editDistance(std::string_view a, std::string_view b)
{
    // Three rows of the usual table: the one before last is needed for swaps.
    std::vector<int> before, last(b.size() + 1), now(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = static_cast<int>(j);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        now[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1]))
                now[j] = std::min(now[j], before[j - 2] + 1);
        }
        before = std::exchange(last, now);
    }
    return last[b.size()];
}

std::vector<CatalogueName> allNames(CIFMain& main)
{
    std::vector<CatalogueName> names;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const foundation::Value& category : *main.CIFAllFilterDescriptors())
            addEntries(names, (*category.dictionary())["CIFFilterList"].array());
    }
    for (const std::string& name : imaging::FilterRegistry::shared().names())
        if (std::ranges::find(names, name, &CatalogueName::identifier) == names.end())
            names.push_back({name, "", {}});
    return names;
}

Outcome<plugin::Entry> entryNamed(CIFMain& main, const std::string& name)
{
    const std::vector<CatalogueName> names = allNames(main);
    const auto known = std::ranges::find(names, name, &CatalogueName::identifier);
    if (known != names.end()) {
        if (auto entry = plugin::describeEntry(main, name))
            return *std::move(entry);
        if (!known->members.empty())
            return wrongUsage(inQuotes(name) +
                              " is a group; name one of its filters: " + listed(known->members));
        if (name == "Crop")
            return wrongUsage(
                "\"Crop\" is a selection in the editor; it names no filter to use here");
        return wrongUsage(inQuotes(name) + " is in the catalogue but can't be made here");
    }
    const std::vector<std::string> close = closeNames(names, name);
    return wrongUsage(
        "there is no filter or generator " + inQuotes(name) +
        (close.empty() ? "; cif list shows all" : "; did you mean " + listed(close) + "?"));
}

} // namespace cli
