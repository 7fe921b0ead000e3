// What was done in the editor, as a line for a shell.
#pragma once

#include "plugin/EditorLoader.h"

#include <string>

namespace plugin {

// The step without the values that it would start with anyway. The effects set of `main` becomes
// the step's.
RecipeStep withoutStartingValues(CIFMain& main, const RecipeStep& step);

// One line for a POSIX shell that makes the same picture again with the command line:
//     cif apply NAME INPUT -o OUTPUT --set KEY=VALUE …
//     cif generate NAME --size WxH --seed N -o OUTPUT …
// Steps are joined by pipes, except those right after a generator: its drawing would lose the
// resolution that they work at, so that it runs with them, as a recipe. A new size comes before its
// step (--resize WxH, or WxH:fit as a thumbnail), a crop after the last one (--crop X,Y,W,H);
// either may stand without a NAME. Values that a step starts with are left out. What came before
// the last generator is left out too, and so is INPUT.
std::string commandLine(const EditRecord& record, const std::string& input,
                        const std::string& output);

} // namespace plugin
