// Names of filters and generators: which there are, and which a mistyped one may mean.
#pragma once

#include "cli/Report.h"
#include "plugin/StartingValues.h"

namespace cli {

struct CatalogueName {
    std::string identifier, displayName;
    std::vector<std::string> members; // identifiers, of a group
};

// Every entry of both catalogues and every filter that is registered besides.
std::vector<CatalogueName> allNames(CIFMain& main);

// The entry of that name, or what is wrong with the name and which are close to it.
Outcome<plugin::Entry> entryNamed(CIFMain& main, const std::string& name);

// Insertions, deletions, replacements and swaps of neighbours that turn one into the other, letter
// case aside.
int editDistance(std::string_view a, std::string_view b);

} // namespace cli
