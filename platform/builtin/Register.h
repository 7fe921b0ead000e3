// The built-in filters, by name.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

// Adds every built-in filter. Doing it again changes nothing.
void registerBuiltinFilters(imaging::FilterRegistry& registry);

} // namespace builtin
