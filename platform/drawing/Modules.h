// Opening the modules that need Cairo and librsvg, each once, when first asked for.
#pragma once

#include "platform/drawing/modules/Tables.h"
#include "platform/foundation/Result.h"

namespace drawing {

// Errors name the missing file or package.
const foundation::Result<const PainterTable*>& painter();
const foundation::Result<const SvgTable*>& svgReader();

} // namespace drawing
