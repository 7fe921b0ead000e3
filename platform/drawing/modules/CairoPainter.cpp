// The module's table: pixels here, files in VectorFile.cpp.
#include "platform/drawing/modules/CairoReplay.h"
#include "platform/drawing/modules/CairoSurface.h"
#include "platform/drawing/modules/Tables.h"
#include "platform/drawing/modules/VectorFile.h"

namespace drawing {

namespace {

bool rasterizeRecording(const Recording& recording, const TilePainting& painting,
                        imaging::Bitmap& target, std::string& error)
{
    const CairoSurface surface = surfaceOver(target, painting.tile);
    const CairoContext context(cairo_create(surface.get()));
    if (!replayInto(painting, recording, context.get(), error))
        return false;
    finishPixels(surface.get(), target, painting.tile);
    return true;
}

constexpr PainterTable kTable{kModuleLayout, rasterizeRecording, encodeVectorFile};

} // namespace

} // namespace drawing

extern "C" __attribute__((visibility("default"))) const drawing::PainterTable* CIFDrawingPainter()
{
    return &drawing::kTable;
}
