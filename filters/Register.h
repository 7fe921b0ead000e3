// The plug-in's own filters, by name.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

// Adds every filter of the plug-in's own. Doing it again changes nothing.
void registerFilters(imaging::FilterRegistry& registry);

} // namespace filters
