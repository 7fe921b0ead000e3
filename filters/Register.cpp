// The list of the plug-in's own filters: a class without a line here does not exist.
#include "filters/Register.h"

#include "filters/AffineTransform1.h"
#include "filters/Sobel.h"
#include "filters/TransparentColor.h"

namespace filters {

void registerFilters(imaging::FilterRegistry& registry)
{
    AffineTransform1::initialize(registry);
    Sobel::initialize(registry);
    TransparentColor::initialize(registry);
}

} // namespace filters
