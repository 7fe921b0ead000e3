#include "platform/drawing/modules/VectorFile.h"

#include "platform/drawing/modules/CairoReplay.h"
#include "platform/drawing/modules/CairoSurface.h"

#include <cairo-pdf.h>
#include <cairo-ps.h>
#include <cairo-svg.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <string_view>

namespace drawing {

namespace {

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length)
{
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::string base64(const std::string& text)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < text.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, text.size() - i);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < count ? static_cast<unsigned char>(text[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            out += k <= count ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

std::string escapedXml(const std::string& text)
{
    std::string out;
    for (char c : text) {
        switch (c) {
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '&':
            out += "&amp;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

// Cairo numbers its elements by counters that run on for the life of the process. Here they are
// counted from 0 in each file, by kind, in order of appearance.
std::string withOwnNumbers(const std::string& svg)
{
    // None of these can occur in the base64 of an embedded picture.
    constexpr std::string_view kBefore[] = {"id=\"", "href=\"#", "url(#"};
    std::size_t next[] = {0, 0, 0}; // where a name after each of them begins
    std::map<std::string, std::string> renamed;
    std::map<std::string, int> count;
    std::string out;
    std::size_t at = 0;
    for (;;) {
        for (int i = 0; i < 3; ++i)
            if (next[i] <= at) {
                const std::size_t found = svg.find(kBefore[i], at);
                next[i] = found == std::string::npos ? found : found + kBefore[i].size();
            }
        const std::size_t name = *std::min_element(std::begin(next), std::end(next));
        if (name == std::string::npos)
            break;
        const std::size_t end = svg.find_first_of("\")", name);
        const std::string old = svg.substr(name, end - name);
        std::string& fresh = renamed[old];
        if (fresh.empty()) {
            const std::string kind = old.substr(0, old.find_first_of("0123456789"));
            fresh = kind + std::to_string(count[kind]++);
        }
        out.append(svg, at, name - at).append(fresh);
        at = end;
    }
    return out.append(svg, std::min(at, svg.size()));
}

std::string finishedSvg(const std::string& svg, const std::string& metadata)
{
    std::string out = withOwnNumbers(svg);
    if (metadata.empty())
        return out;
    const std::size_t root = out.find('>', out.find("<svg"));
    return out.insert(root + 1,
                      "\n<metadata id=\"cif-recipe\">" + escapedXml(metadata) + "</metadata>");
}

std::string shown(double value)
{
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 3).ptr};
}

// The page's own bounding box instead of that of the ink, the recipe after the first line, and no
// date.
std::string finishedEps(const std::string& eps, Size size, const std::string& metadata)
{
    const std::string box = "BoundingBox: 0 0 " +
                            std::to_string(static_cast<long>(std::ceil(size.width))) + " " +
                            std::to_string(static_cast<long>(std::ceil(size.height))) + "\n";
    std::string out;
    std::size_t at = 0;
    bool header = true;
    while (at < eps.size() && header) {
        const std::size_t end = std::min(eps.find('\n', at), eps.size() - 1) + 1;
        const std::string_view line(eps.data() + at, end - at);
        if (line.starts_with("%%BoundingBox:"))
            out.append("%%").append(box).append("%%HiResBoundingBox: 0 0 " + shown(size.width) +
                                                " " + shown(size.height) + "\n");
        else if (!line.starts_with("%%CreationDate:") && !line.starts_with("%%HiResBoundingBox:"))
            out.append(line);
        if (at == 0 && !metadata.empty())
            out.append("%%cif-recipe: ").append(base64(metadata)).append("\n");
        header = !line.starts_with("%%EndComments");
        at = end;
    }
    return out.append(eps, at);
}

} // namespace

bool encodeVectorFile(const Recording& recording, VectorFormat format, const std::string& metadata,
                      std::string& bytes, std::string& error)
{
    const double width = recording.size.width, height = recording.size.height;
    bytes.clear();
    CairoSurface surface(
        format == VectorFormat::Pdf
            ? cairo_pdf_surface_create_for_stream(appendBytes, &bytes, width, height)
        : format == VectorFormat::Svg
            ? cairo_svg_surface_create_for_stream(appendBytes, &bytes, width, height)
            : cairo_ps_surface_create_for_stream(appendBytes, &bytes, width, height));
    cairo_surface_set_fallback_resolution(surface.get(), 300, 300);
    if (format == VectorFormat::Pdf) {
        // An empty date leaves the entry out: the same drawing gives the same file.
        cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
        if (!metadata.empty())
            cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_KEYWORDS,
                                           ("cif-recipe:" + base64(metadata)).c_str());
    } else if (format == VectorFormat::Svg) {
        cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
    } else {
        cairo_ps_surface_set_eps(surface.get(), 1);
    }
    {
        const CairoContext context(cairo_create(surface.get()));
        if (!replayOntoPage(recording, context.get(), recording.size, error))
            return false;
    }
    cairo_surface_finish(surface.get());
    const cairo_status_t status = cairo_surface_status(surface.get());
    surface.reset();
    if (status != CAIRO_STATUS_SUCCESS) {
        error = std::string("a drawing could not be written: ") + cairo_status_to_string(status);
        return false;
    }
    if (format == VectorFormat::Svg)
        bytes = finishedSvg(bytes, metadata);
    else if (format == VectorFormat::Eps)
        bytes = finishedEps(bytes, recording.size, metadata);
    return true;
}

} // namespace drawing
