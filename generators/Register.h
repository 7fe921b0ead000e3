// The generators by class name.
#pragma once

#include "generators/GLIFCoreObject.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace generators {

// A new generator with an empty cache; null when no class has that name.
std::shared_ptr<GLIFCoreObject> makeGenerator(std::string_view className);

// Every name that makeGenerator knows.
std::vector<std::string> classNames();

} // namespace generators
