#include "platform/drawing/modules/CairoReplay.h"

#include "platform/drawing/modules/CairoSurface.h"
#include "platform/drawing/modules/DevicePath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

namespace drawing {

namespace {

using imaging::Bitmap;
using imaging::PixelFormat;

enum class ReplayTarget { Pixels, VectorFile };

double unit(double v)
{
    return v > 0 ? std::min(v, 1.0) : 0.0; // not-a-number counts as 0
}

bool isFinite(const AffineTransform& m)
{
    return std::isfinite(m.m11) && std::isfinite(m.m12) && std::isfinite(m.m21) &&
           std::isfinite(m.m22) && std::isfinite(m.tX) && std::isfinite(m.tY);
}

// The factors by which the linear part stretches most and least.
std::pair<double, double> stretches(const AffineTransform& m)
{
    const double a = std::hypot(m.m11 + m.m22, m.m12 - m.m21) / 2;
    const double b = std::hypot(m.m11 - m.m22, m.m12 + m.m21) / 2;
    return {a + b, std::abs(a - b)};
}

// Whether areas stay areas, well enough for the inverse to exist in floating point.
bool isUsable(const AffineTransform& m)
{
    const auto [most, least] = stretches(m);
    return isFinite(m) && std::isfinite(most) && least > 1e-9 * most;
}

cairo_matrix_t cairoMatrix(const AffineTransform& m)
{
    return {m.m11, m.m12, m.m21, m.m22, m.tX, m.tY};
}

cairo_operator_t operatorFor(Operation operation, bool opaqueSource)
{
    switch (operation) {
    // The same for an opaque source, and understood by every format.
    case Operation::Copy:
        return opaqueSource ? CAIRO_OPERATOR_OVER : CAIRO_OPERATOR_SOURCE;
    case Operation::SourceOver:
        return CAIRO_OPERATOR_OVER;
    case Operation::Clear:
        return CAIRO_OPERATOR_CLEAR;
    case Operation::SourceIn:
        return CAIRO_OPERATOR_IN;
    case Operation::SourceAtop:
        return CAIRO_OPERATOR_ATOP;
    case Operation::DestinationOver:
        return CAIRO_OPERATOR_DEST_OVER;
    case Operation::Plus:
        return CAIRO_OPERATOR_ADD;
    case Operation::Multiply:
        return CAIRO_OPERATOR_MULTIPLY;
    }
    return CAIRO_OPERATOR_OVER;
}

// Unpremultiplied fractions, red first.
using Components = std::array<float, 4>;

std::uint32_t premultipliedWord(const Components& rgba)
{
    std::uint32_t word = 0;
    const double alpha = unit(rgba[3]);
    for (double part : {alpha, unit(rgba[0]) * alpha, unit(rgba[1]) * alpha, unit(rgba[2]) * alpha})
        word = word << 8 | static_cast<std::uint32_t>(part * 255 + 0.5);
    return word;
}

template <class Integer>
Components fractions(const Integer* p)
{
    constexpr float kFull = std::numeric_limits<Integer>::max();
    return {p[0] / kFull, p[1] / kFull, p[2] / kFull, p[3] / kFull};
}

Components pixelAt(const Bitmap& bitmap, int x, int y)
{
    switch (bitmap.format()) {
    case PixelFormat::Rgba8:
        return fractions(bitmap.rowAs<std::uint8_t>(y) + 4 * x);
    case PixelFormat::Rgba16:
        return fractions(bitmap.rowAs<std::uint16_t>(y) + 4 * x);
    case PixelFormat::RgbaF:
        break;
    }
    const float* p = bitmap.rowAs<float>(y) + 4 * x;
    const float scale = p[3] > 0 ? 1 / p[3] : 0;
    return {p[0] * scale, p[1] * scale, p[2] * scale, p[3]};
}

class Replay {
public:
    Replay(cairo_t* context, const AffineTransform& toDevice, Size device, ReplayTarget target)
        : _context(context), _toDevice(toDevice), _device(device), _target(target),
          _reach(target == ReplayTarget::Pixels ? kPixelReach : kFileReach)
    {
    }

    void operator()(const Recording::Fill& op)
    {
        setFillPath(_context, op.path.elements(), _toDevice, _reach.point);
        cairo_set_fill_rule(_context, op.rule == FillRule::EvenOdd ? CAIRO_FILL_RULE_EVEN_ODD
                                                                   : CAIRO_FILL_RULE_WINDING);
        setSource(op.color);
        cairo_set_operator(_context, operatorFor(op.operation, op.color.alpha >= 1));
        if (op.operation == Operation::SourceIn) {
            // Cairo's own goes on to wipe out everything outside the shape.
            cairo_save(_context);
            cairo_clip(_context);
            cairo_paint(_context);
            cairo_restore(_context);
        } else {
            cairo_fill(_context);
        }
    }

    void operator()(const Recording::Stroke& op)
    {
        AffineTransform pen = op.matrix.followedBy(_toDevice);
        if (!isUsable(pen))
            return;
        setStrokePath(_context, op.path.elements(), pen, _reach.point);
        setSource(op.color);
        cairo_set_operator(_context, CAIRO_OPERATOR_OVER);
        cairo_set_line_cap(_context, op.path.cap == LineCap::Butt    ? CAIRO_LINE_CAP_BUTT
                                     : op.path.cap == LineCap::Round ? CAIRO_LINE_CAP_ROUND
                                                                     : CAIRO_LINE_CAP_SQUARE);
        cairo_set_line_join(_context, op.path.join == LineJoin::Miter   ? CAIRO_LINE_JOIN_MITER
                                      : op.path.join == LineJoin::Round ? CAIRO_LINE_JOIN_ROUND
                                                                        : CAIRO_LINE_JOIN_BEVEL);
        cairo_save(_context);
        if (op.path.lineWidth > 0) {
            // The shape of the pen in the matrix, its size in the width.
            const double most = stretches(pen).first;
            const cairo_matrix_t shape{
                pen.m11 / most, pen.m12 / most, pen.m21 / most, pen.m22 / most, 0, 0};
            cairo_set_matrix(_context, &shape);
            const double width = std::min(op.path.lineWidth * most, _reach.pen);
            cairo_set_line_width(_context, width);
            cairo_set_miter_limit(_context, miterLimit(width, _reach));
        } else {
            cairo_set_line_width(_context, 1);
            cairo_set_miter_limit(_context, miterLimit(1, _reach));
        }
        cairo_stroke(_context);
        cairo_restore(_context);
    }

    void operator()(const Recording::Image& op)
    {
        const Bitmap& bitmap = *op.bitmap;
        const AffineTransform toDevice = op.matrix.followedBy(_toDevice);
        // Pixels count down from the top.
        const AffineTransform pixels =
            AffineTransform{op.size.width / bitmap.width(),    0, 0,
                            -op.size.height / bitmap.height(), 0, op.size.height}
                .followedBy(toDevice);
        if (!isUsable(pixels) || !isFinite(pixels.inverse()))
            return;
        // Out of sight is left out: a file would take it in, wherever it lies.
        const Rect bounds = foundation::boundsOf(toDevice, {0, 0, op.size.width, op.size.height});
        if (!(bounds.x < _device.width && bounds.right() > 0 && bounds.y < _device.height &&
              bounds.top() > 0))
            return;
        const bool reachesTooFar =
            !(std::abs(bounds.x) < _reach.point && std::abs(bounds.y) < _reach.point &&
              bounds.width < _reach.point && bounds.height < _reach.point);
        cairo_surface_t* surface = surfaceFor(op);
        CairoPattern pattern(cairo_pattern_create_for_surface(surface));
        const cairo_matrix_t toPixels = cairoMatrix(pixels.inverse());
        cairo_pattern_set_matrix(pattern.get(), &toPixels);
        cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_GOOD);
        cairo_set_operator(_context, operatorFor(op.operation, false));

        cairo_save(_context);
        // In pixels the rectangle's own edge is the picture's edge, sharp however much the picture
        // is enlarged. A file keeps the picture as it is, and a viewer draws it so by itself; only
        // what is far larger than the page is cut to it.
        if (_target == ReplayTarget::Pixels || op.operation == Operation::SourceIn ||
            reachesTooFar) {
            if (_target == ReplayTarget::Pixels)
                cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
            using Kind = Path::Element::Kind;
            const auto [width, height] = op.size;
            const Path::Element outline[] = {{Kind::MoveTo, {{0, 0}}},
                                             {Kind::LineTo, {{width, 0}}},
                                             {Kind::LineTo, {{width, height}}},
                                             {Kind::LineTo, {{0, height}}},
                                             {Kind::Close, {}}};
            setFillPath(_context, outline, toDevice, _reach.point);
            cairo_set_fill_rule(_context, CAIRO_FILL_RULE_WINDING);
            cairo_clip(_context);
        }
        if (op.tinted) {
            Color tint = op.tint;
            tint.alpha = static_cast<float>(unit(tint.alpha) * unit(op.fraction));
            setSource(tint);
            cairo_mask(_context, pattern.get());
        } else {
            cairo_set_source(_context, pattern.get());
            if (op.fraction >= 1 || replaces(op.operation))
                cairo_paint(_context);
            else
                cairo_paint_with_alpha(_context, unit(op.fraction));
        }
        cairo_restore(_context);
    }

private:
    void setSource(const Color& c)
    {
        cairo_set_source_rgba(_context, unit(c.red), unit(c.green), unit(c.blue), unit(c.alpha));
    }

    // Cairo would let what is below shine through by the rest of the opacity.
    static bool replaces(Operation operation)
    {
        return operation == Operation::Copy || operation == Operation::Clear;
    }

    // A bitmap drawn many times is converted once, and a file holds it once.
    cairo_surface_t* surfaceFor(const Recording::Image& op)
    {
        const double fraction = replaces(op.operation) ? unit(op.fraction) : 1;
        CairoSurface& surface = _surfaces[{op.bitmap.get(), op.tinted, fraction}];
        if (surface)
            return surface.get();
        const Bitmap& bitmap = *op.bitmap;
        surface.reset(cairo_image_surface_create(op.tinted ? CAIRO_FORMAT_A8 : CAIRO_FORMAT_ARGB32,
                                                 bitmap.width(), bitmap.height()));
        unsigned char* data = cairo_image_surface_get_data(surface.get());
        if (!data) // too large or no memory: the pattern made of it carries the failure on
            return surface.get();
        const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface.get());
        for (int y = 0; y < bitmap.height(); ++y, data += stride)
            for (int x = 0; x < bitmap.width(); ++x) {
                Components rgba = pixelAt(bitmap, x, y);
                rgba[3] *= static_cast<float>(fraction);
                if (op.tinted)
                    data[x] = static_cast<unsigned char>(unit(rgba[3]) * 255 + 0.5);
                else
                    reinterpret_cast<std::uint32_t*>(data)[x] = premultipliedWord(rgba);
            }
        cairo_surface_mark_dirty(surface.get());
        return surface.get();
    }

    cairo_t* _context;
    AffineTransform _toDevice;
    Size _device;
    ReplayTarget _target;
    Reach _reach;
    std::map<std::tuple<const Bitmap*, bool, double>, CairoSurface> _surfaces;
};

void prepare(cairo_t* context)
{
    // All of Cairo's grey modes but the fast one have 15 × 256 samples to a pixel (a slanted edge
    // is off by at most 5 % of a pixel) and cover upright rectangles exactly; the best asks for
    // whatever else a version has to offer.
    cairo_set_antialias(context, CAIRO_ANTIALIAS_BEST);
    cairo_set_tolerance(context, 0.05);
}

bool isDone(cairo_t* context, std::string& error)
{
    const cairo_status_t status = cairo_status(context);
    if (status == CAIRO_STATUS_SUCCESS)
        return true;
    error = std::string("a drawing failed: ") + cairo_status_to_string(status);
    return false;
}

} // namespace

bool replayOntoPage(const Recording& recording, cairo_t* context, Size page, std::string& error)
{
    prepare(context);
    const AffineTransform toPage{page.width / recording.size.width,    0, 0,
                                 -page.height / recording.size.height, 0, page.height};
    Replay painter(context, toPage, page, ReplayTarget::VectorFile);
    for (const Recording::Op& op : recording.ops)
        std::visit(painter, op);
    return isDone(context, error);
}

bool replayInto(const TilePainting& painting, const Recording& recording, cairo_t* context,
                std::string& error)
{
    prepare(context);
    const Tile& tile = painting.tile;
    const AffineTransform toTile =
        painting.toPixels.followedBy(AffineTransform::translation(-tile.left, -tile.top));
    Replay painter(context, toTile, {double(tile.width), double(tile.height)},
                   ReplayTarget::Pixels);
    for (const std::uint32_t index : painting.ops) {
        if (!painting.goesOn())
            return false;
        std::visit(painter, recording.ops[index]);
    }
    return isDone(context, error);
}

} // namespace drawing
