// SVG documents through librsvg.
#include "platform/drawing/modules/CairoSurface.h"
#include "platform/drawing/modules/Tables.h"

#include <librsvg/rsvg.h>

namespace drawing {

namespace {

// Why librsvg gave up, on one line.
std::string takeError(const char* what, GError* error)
{
    std::string text = what;
    if (error) {
        std::string reason = error->message ? error->message : "";
        for (char& c : reason)
            if (c == '\n' || c == '\r')
                c = ' ';
        while (reason.ends_with(' ') || reason.ends_with('.'))
            reason.pop_back();
        text += ": " + reason;
        g_error_free(error);
    }
    return text;
}

// Width and height as given; else those of the view box; else what the drawing covers.
Size sizeOf(RsvgHandle* handle)
{
    Size size;
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &size.width, &size.height))
        return size;
    gboolean hasWidth = 0, hasHeight = 0, hasViewBox = 0;
    RsvgLength width, height;
    RsvgRectangle box{};
    rsvg_handle_get_intrinsic_dimensions(handle, &hasWidth, &width, &hasHeight, &height,
                                         &hasViewBox, &box);
    if (hasViewBox)
        return {box.width, box.height};
    RsvgRectangle ink{}, logical{};
    if (rsvg_handle_get_geometry_for_element(handle, nullptr, &ink, &logical, nullptr))
        return {ink.width, ink.height};
    return {};
}

void* openDocument(const std::string& bytes, Size& size, std::string& error)
{
    GError* reason = nullptr;
    // Without an address of its own a document can refer to nothing outside itself, and without the
    // flag for huge ones the parser keeps its limits.
    RsvgHandle* handle = rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(bytes.data()),
                                                   bytes.size(), &reason);
    if (!handle) {
        error = takeError("SVG file is broken", reason);
        return nullptr;
    }
    rsvg_handle_set_dpi(handle, 96); // CSS pixels
    size = sizeOf(handle);
    return handle;
}

bool drawDocument(void* document, Size size, imaging::Bitmap& target, std::string& error)
{
    const Tile whole{0, 0, target.width(), target.height()};
    const CairoSurface surface = surfaceOver(target, whole);
    const CairoContext context(cairo_create(surface.get()));
    cairo_scale(context.get(), target.width() / size.width, target.height() / size.height);
    const RsvgRectangle page{0, 0, size.width, size.height};
    GError* reason = nullptr;
    if (!rsvg_handle_render_document(static_cast<RsvgHandle*>(document), context.get(), &page,
                                     &reason)) {
        error = takeError("SVG picture could not be drawn", reason);
        return false;
    }
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) {
        error = std::string("SVG picture could not be drawn: ") +
                cairo_status_to_string(cairo_status(context.get()));
        return false;
    }
    finishPixels(surface.get(), target, whole);
    return true;
}

void closeDocument(void* document)
{
    g_object_unref(document);
}

constexpr SvgTable kTable{kModuleLayout, openDocument, drawDocument, closeDocument};

} // namespace

} // namespace drawing

extern "C" __attribute__((visibility("default"))) const drawing::SvgTable* CIFDrawingSvg()
{
    return &drawing::kTable;
}
