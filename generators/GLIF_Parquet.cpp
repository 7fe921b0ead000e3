#include "generators/GLIF_Parquet.h"

#include "generators/ColorSchemes.h"
#include "platform/drawing/Scaling.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCellWidth", 20, 200, 121},
    {"GLIFCellHeight", 20, 200, 100},
    {"GLIFDencity", 10, 100, 89}, // sic
    {"GLIFIdFigure", 0, 1, 1},
    {"GLIFColorScheme", 0, 20, 4},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.06f},
    {"GLIFUseBackgroundColor", Attribute::Kind::EmptyDescription},
    {"GLIFBackgroundColor", Attribute::Kind::EmptyDescription},
};

constexpr const char* kFailure = "GLIF_Parquet: can't generate";

// A shape takes half a kilobyte. Only large pictures of the smallest cells, and numbers far beyond
// the described ranges, come to more.
constexpr double kMostShapes = 2e6;

// How the shapes of a cell shrink: the longer side by a point a step, the other in proportion.
struct Steps {
    Steps(int cellWidth, int cellHeight, int density)
    {
        const auto width = static_cast<float>(cellWidth), height = static_cast<float>(cellHeight);
        const bool isWide = cellHeight < cellWidth;
        if (isWide)
            vertical = height / width;
        else
            horizontal = width / height;
        const auto most = static_cast<float>((isWide ? width : height) * 0.5 * density);
        last = truncToInt(most / 100.0);
    }

    float horizontal = 1;
    float vertical = 1;
    int last; // the shapes are numbered from -1 to this
};

double shapeCount(PixelSize size, int cellWidth, int cellHeight, int lastStep)
{
    const double columns = size.width / cellWidth + 1, rows = size.height / cellHeight + 1;
    return columns * rows * std::max(lastStep + 2.0, 0.0);
}

// The drawing, and the pixels of its lower left corner of two by two cells. From the second on all
// cells look alike, so at the drawing's own size their pixels are those of the second, laid side by
// side; only what single precision does to their places can differ, by a few levels on slanted
// edges. Other sizes are drawn whole.
class LaidCells : public drawing::VectorSource {
public:
    LaidCells(drawing::RecordingRef whole, drawing::RecordingRef corner, int cellWidth,
              int cellHeight)
        : _whole(std::move(whole)), _corner(std::move(corner)), _cellWidth(cellWidth),
          _cellHeight(cellHeight)
    {
    }

    // How far a shape reaches out of its cell, and more than that, while the shapes shrink.
    static constexpr int kSmallestCell = 4;

    foundation::Size size() const override { return _whole->size; }
    drawing::RecordingRef recording() const override { return _whole; }

    foundation::Result<imaging::BitmapRef> rasterize(int width, int height) const override
    {
        const bool isOwnSize = width == _whole->size.width && height == _whole->size.height;
        auto drawn = isOwnSize ? drawing::rasterize(*_corner, 2 * _cellWidth, 2 * _cellHeight)
                               : drawing::rasterize(*_whole, width, height);
        if (!drawn)
            return foundation::Error{drawn.error()};
        return isOwnSize ? laid(**drawn, {0, 0, width, height})
                         : imaging::BitmapRef(*std::move(drawn));
    }

    // Made smaller, the pixels of the drawing's own size are laid and averaged: that is quicker
    // than drawing every shape, and at most half a point off.
    foundation::Result<imaging::BitmapRef> rasterizePart(
        const Rect& part, int width, int height,
        const drawing::RasterOptions& options) const override
    {
        const bool isInside = part.x >= 0 && part.y >= 0 && part.right() <= _whole->size.width &&
                              part.top() <= _whole->size.height;
        if (!isInside || width < 1 || height < 1 || width > part.width || height > part.height)
            return VectorSource::rasterizePart(part, width, height, options);
        const long left = std::lround(part.x), bottom = std::lround(part.y);
        const OwnPixels own = {left, bottom, std::lround(part.right()) - left,
                               std::lround(part.top()) - bottom};
        if (own.width < width || own.height < height)
            return VectorSource::rasterizePart(part, width, height, options);
        auto drawn = drawing::rasterize(*_corner, 2 * _cellWidth, 2 * _cellHeight);
        if (!drawn)
            return foundation::Error{drawn.error()};
        auto pixels = laid(**drawn, own);
        if (!pixels || (width == own.width && height == own.height))
            return pixels;
        if (auto scaled = drawing::scaledBitmap(**pixels, width, height))
            return scaled;
        return foundation::Error{"not enough memory for a drawing"};
    }

private:
    // In pixels of the drawing's own size, y up.
    struct OwnPixels {
        long x, y, width, height;
    };

    // Rows count from the top here, cells from the bottom.
    foundation::Result<imaging::BitmapRef> laid(const Bitmap& corner, const OwnPixels& part) const
    {
        const auto bitmap =
            Bitmap::make(static_cast<int>(part.width), static_cast<int>(part.height),
                         imaging::PixelFormat::Rgba8);
        if (!bitmap)
            return foundation::Error{"not enough memory for a drawing"};
        const auto inCorner = [](long at, int cell) { return at < cell ? at : cell + at % cell; };
        imaging::parallelRows(0, bitmap->height(), 64, [&](int first, int last) {
            for (int row = first; row < last; ++row) {
                const long y = part.y + part.height - 1 - row;
                const std::byte* from =
                    corner.row(corner.height() - 1 - static_cast<int>(inCorner(y, _cellHeight)));
                std::byte* to = bitmap->row(row);
                for (long x = part.x; x < part.x + part.width;) {
                    const long inCell = x % _cellWidth;
                    const long count = std::min(_cellWidth - inCell, part.x + part.width - x);
                    std::memcpy(to + (x - part.x) * kBytes, from + inCorner(x, _cellWidth) * kBytes,
                                count * kBytes);
                    x += count;
                }
            }
        });
        return imaging::BitmapRef(bitmap);
    }

    static constexpr std::size_t kBytes = imaging::bytesPerPixel(imaging::PixelFormat::Rgba8);

    drawing::RecordingRef _whole, _corner;
    int _cellWidth, _cellHeight;
};

} // namespace

const AttributeTable& GLIF_Parquet::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Parquet::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                              int width, int height,
                                                              const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _cellWidth = std::max(attributes.intValue("GLIFCellWidth", 50), 1);
    _cellHeight = std::max(attributes.intValue("GLIFCellHeight", 30), 1);
    _dencity = attributes.intValue("GLIFDencity", 90);
    _idFigure = attributes.intValue("GLIFIdFigure", 0);
    _colorRangeMin = 0.0;
    _colorRangeMax = 1.0;
    const int lastStep = Steps(_cellWidth, _cellHeight, _dencity).last;
    if (shapeCount(size, _cellWidth, _cellHeight, lastStep) > kMostShapes) {
        foundation::log(kFailure);
        return nullptr;
    }
    const PictureRef picture = renderDrawRect(size, kFailure);
    // Denser than this, shapes turn inside out and grow over other cells.
    const bool staysInCells =
        _dencity <= 100 && std::min(_cellWidth, _cellHeight) >= LaidCells::kSmallestCell;
    const bool isWorthIt = _cellWidth < size.width / 2 && _cellHeight < size.height / 2;
    if (!picture || !staysInCells || !isWorthIt)
        return picture;
    try {
        const double cornerWidth = 2.0 * _cellWidth, cornerHeight = 2.0 * _cellHeight;
        Canvas corner({cornerWidth, cornerHeight});
        drawRect(corner, {0, 0, cornerWidth, cornerHeight});
        return drawing::Picture::fromVector(std::make_shared<LaidCells>(
            picture->recording(), corner.finish(), _cellWidth, _cellHeight));
    } catch (const std::bad_alloc&) {
        return picture;
    }
}

void GLIF_Parquet::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    const Steps steps(_cellWidth, _cellHeight, _dencity);
    const float a = steps.horizontal, b = steps.vertical;

    const auto drawShape = [&](float x, float y, float x1, float y1, int k) {
        const auto step = static_cast<float>(k), twice = 2 * step;
        Path path;
        if (_idFigure == 0) {
            // A point wider and higher than its steps, so that neighbouring cells overlap.
            path.appendRect({x + a * step, y + b * step,
                             static_cast<float>(_cellWidth) - twice * a + 1.0f,
                             static_cast<float>(_cellHeight) - twice * b + 1.0f});
        } else {
            // On either side of a diagonal that draws in its ends.
            const Point upperLeft = {x + a * step, y1 - b * step};
            const Point lowerRight = {x1 - a * step, y + b * step};
            for (const Point corner : {Point{x, y}, Point{x1, y1}}) {
                path.moveTo(upperLeft);
                path.lineTo(lowerRight);
                path.lineTo(corner);
            }
        }
        // A cell too small for a step divides by zero: infinitely far below the ramp, then no
        // number; both are positions that a scheme answers.
        const float position = step / static_cast<float>(steps.last);
        canvas.setColor(computeSchemeColor(position, _schemeKeyColor, _iColorScheme));
        canvas.fill(path);
    };

    // Wider than the fields, so that the last sum does not overflow.
    using Wide = std::int64_t;
    const auto width = static_cast<float>(rect.width), height = static_cast<float>(rect.height);
    for (Wide x = 0; static_cast<float>(x) <= width; x += _cellWidth) {
        foundation::reportProgress(static_cast<double>(x) / width);
        for (Wide y = 0; static_cast<float>(y) <= height; y += _cellHeight)
            // Counted wider too: the last step may be the largest number there is.
            for (Wide k = -1; k <= steps.last; ++k)
                drawShape(static_cast<float>(x), static_cast<float>(y),
                          static_cast<float>(x + _cellWidth), static_cast<float>(y + _cellHeight),
                          static_cast<int>(k));
    }
}
