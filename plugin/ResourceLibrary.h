// What surrounds the resource operations of CIFMain: the named-image cache and the order of shading
// materials.
#pragma once

#include "platform/foundation/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace plugin {

// Pictures by name, kept for the life of the process: a second request gives the same object. Null
// when there is none of that name.
foundation::PictureRef namedImage(std::string_view name);
void setNamedImage(std::string_view name, foundation::PictureRef picture);

// The names in the order in which they are shown: a stable insertion sort by
// sortShadingMateriaNames.
std::vector<std::string> sortedShadingMaterialNames(std::vector<std::string> names);

} // namespace plugin

// −1, 0 or 1: the order of two names. "Sand", on either side, makes it −1; other names compare
// without regard to case. Not a strict weak order, and not to be handed to a library sort.
extern "C" int sortShadingMateriaNames(const char* a, const char* b,
                                       void* context) noexcept; // sic
