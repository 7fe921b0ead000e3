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
//     cif generate NAME --size WxH -o OUTPUT --seed N …
// Further steps follow as recipe lines (--then). A new size is made where the command begins
// (--resize WxH, or WxH:fit as a thumbnail), or where a new picture is finished; sizes that do not
// fit in are joined by pipes. A crop comes last (--crop X,Y,W,H). Values that a step starts with
// are left out. What came before the last generator is left out too, and so is INPUT. Empty when
// the picture was begun empty and no generator has drawn on it: no command begins so.
std::string commandLine(const EditRecord& record, const std::string& input,
                        const std::string& output);

// The steps that the last command of the line runs. They are what its result notes as its recipe.
Recipe recipeOf(const EditRecord& record);

} // namespace plugin
