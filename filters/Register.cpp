// The list of the plug-in's own filters: a class without a line here does not exist.
#include "filters/Register.h"

#include "filters/AffineTile2.h"
#include "filters/AffineTransform1.h"
#include "filters/BlackWhite.h"
#include "filters/Mirror.h"
#include "filters/MirrorTile.h"
#include "filters/NetDistortion.h"
#include "filters/Offset.h"
#include "filters/Shading.h"
#include "filters/SlideFrame.h"
#include "filters/Sobel.h"
#include "filters/TransparentColor.h"

namespace filters {

void registerFilters(imaging::FilterRegistry& registry)
{
    AffineTile2::initialize(registry);
    AffineTransform1::initialize(registry);
    BlackWhite::initialize(registry);
    Mirror::initialize(registry);
    MirrorTile::initialize(registry);
    NetDistortion::initialize(registry);
    Offset::initialize(registry);
    Shading::initialize(registry);
    SlideFrame::initialize(registry);
    Sobel::initialize(registry);
    TransparentColor::initialize(registry);
}

} // namespace filters
