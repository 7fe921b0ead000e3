// The module's table: pixels here, files in VectorFile.cpp.
#include "platform/drawing/modules/CairoReplay.h"
#include "platform/drawing/modules/CairoSurface.h"
#include "platform/drawing/modules/Tables.h"
#include "platform/drawing/modules/VectorFile.h"

namespace drawing {

namespace {

bool rasterizeRecording(const Recording& recording, imaging::Bitmap& target, std::string& error)
{
    const Size size = recording.size;
    if (!(size.width > 0 && size.height > 0)) {
        error = "a drawing without a size cannot be made into pixels";
        return false;
    }
    const CairoSurface surface = surfaceOver(target);
    const CairoContext context(cairo_create(surface.get()));
    const Size device{double(target.width()), double(target.height())};
    if (!replay(recording, context.get(), device, ReplayTarget::Pixels, error))
        return false;
    finishPixels(surface.get(), target);
    return true;
}

constexpr PainterTable kTable{kModuleLayout, rasterizeRecording, encodeVectorFile};

} // namespace

} // namespace drawing

extern "C" __attribute__((visibility("default"))) const drawing::PainterTable* CIFDrawingPainter()
{
    return &drawing::kTable;
}
