// Recordings into pixels and files, through the module that has Cairo.
#include "platform/drawing/Canvas.h"
#include "platform/drawing/Modules.h"
#include "platform/foundation/Work.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace drawing {

using foundation::Error;
using foundation::Result;
using imaging::Bitmap;

namespace {

// Fewer rows spend more time on setting up shapes than on painting them.
constexpr int kLeastRows = 96;
// Every band converts the bitmaps that it draws.
constexpr std::int64_t kMostPixelsConverted = 256 * 256;

// Rows to a band. Bands are cut across only: what is cut down a column, Cairo rounds anew.
int bandRows(const Recording& recording, int height)
{
    for (const Recording::Op& op : recording.ops)
        if (const auto* image = std::get_if<Recording::Image>(&op))
            if (std::int64_t{image->bitmap->width()} * image->bitmap->height() >
                kMostPixelsConverted)
                return height;
    return std::max(kLeastRows, (height + 3) / 4);
}

// What an operation may paint, and a little more, in points.
class ReachOf {
public:
    Rect operator()(const Recording::Fill& op) const { return op.path.controlBounds(); }

    Rect operator()(const Recording::Stroke& op) const
    {
        // A mitre is at most ten half widths long.
        const double reach = 10 * op.path.lineWidth / 2;
        const Rect box = op.path.controlBounds();
        return foundation::boundsOf(op.matrix, {box.x - reach, box.y - reach, box.width + 2 * reach,
                                                box.height + 2 * reach});
    }

    Rect operator()(const Recording::Image& op) const
    {
        return foundation::boundsOf(op.matrix, {0, 0, op.size.width, op.size.height});
    }
};

// Whether an operation of that reach may paint a tile. Points that are not finite are not painted,
// but the others of their path are.
bool mayMeet(const Rect& reach, const AffineTransform& toPixels, const Tile& tile)
{
    // A pixel that is touched, and the thinnest line with its mitres.
    constexpr double kMargin = 8;
    const Rect box = foundation::boundsOf(toPixels, reach);
    return !(box.x - kMargin > tile.left + tile.width || box.right() + kMargin < tile.left ||
             box.y - kMargin > tile.top + tile.height || box.top() + kMargin < tile.top);
}

struct Job {
    const Recording& recording;
    AffineTransform toPixels;
    int width, height;
    bool exact; // every operation, by one thread, in one piece
    bool threaded;
};

Result<std::shared_ptr<Bitmap>> painted(const Job& job)
{
    const auto& [recording, toPixels, width, height, exact, threaded] = job;
    if (width < 1 || height < 1 || !(recording.size.width > 0 && recording.size.height > 0))
        return Error{"a drawing without a size cannot be made into pixels"};
    if (width > kMaximumRasterSide || height > kMaximumRasterSide)
        return Error{"a drawing of " + std::to_string(width) + " × " + std::to_string(height) +
                     " pixels is too large (at most " + std::to_string(kMaximumRasterSide) +
                     " a side)"};
    const auto& table = painter();
    if (!table)
        return Error{table.error()};
    std::shared_ptr<Bitmap> bitmap = Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    if (!bitmap)
        return Error{"not enough memory for a drawing"};

    const int rows = exact ? height : bandRows(recording, height);
    const int bands = (height + rows - 1) / rows;
    const auto tileOf = [&](int band) {
        return Tile{0, band * rows, width, std::min(rows, height - band * rows)};
    };
    std::vector<std::vector<std::uint32_t>> ops(bands);
    std::int64_t count = 0;
    for (std::size_t i = 0; i < recording.ops.size(); ++i) {
        const Rect reach = exact ? Rect{} : std::visit(ReachOf{}, recording.ops[i]);
        for (int band = 0; band < bands; ++band)
            if (exact || mayMeet(reach, toPixels, tileOf(band))) {
                ops[band].push_back(static_cast<std::uint32_t>(i));
                ++count;
            }
    }

    foundation::ProgressSteps steps(std::max<std::int64_t>(count, 1));
    const std::function<bool()> goesOn = [&] {
        steps.add(1);
        return !foundation::stopRequested();
    };
    std::mutex lock;
    std::string error;
    imaging::parallelRows(0, bands, 1, threaded && bands > 1, [&](int first, int last) {
        for (int band = first; band < last; ++band) {
            std::string reason;
            const TilePainting painting{toPixels, tileOf(band), ops[band], goesOn};
            if (!(*table)->rasterize(recording, painting, *bitmap, reason)) {
                const std::lock_guard guard(lock);
                error = reason;
            }
        }
    });
    foundation::checkpoint();
    if (!error.empty())
        return Error{error};
    return bitmap;
}

} // namespace

Result<std::shared_ptr<Bitmap>> rasterize(const Recording& recording, int width, int height)
{
    const AffineTransform toPixels{width / recording.size.width,    0, 0,
                                   -height / recording.size.height, 0, double(height)};
    return painted({recording, toPixels, width, height, true, false});
}

Result<std::shared_ptr<Bitmap>> rasterizePart(const Recording& recording, const Rect& part,
                                              int width, int height, const RasterOptions& options)
{
    const double scaleX = width / part.width, scaleY = height / part.height;
    const AffineTransform toPixels{
        scaleX, 0, 0, -scaleY, -part.x * scaleX, height + part.y * scaleY};
    if (!(part.width > 0 && part.height > 0 && std::isfinite(toPixels.tX) &&
          std::isfinite(toPixels.tY)))
        return Error{"a part without a size cannot be made into pixels"};
    const Job job{recording, toPixels, width, height, false, options.threaded};
    if (!options.stop.stop_possible())
        return painted(job);
    try {
        const foundation::WorkScope scope(options.stop);
        return painted(job);
    } catch (const foundation::Stopped&) {
        // Not ours, if there is a scope around this that was stopped.
        foundation::checkpoint();
        return Error{"the drawing was stopped"};
    }
}

Result<std::string> encodeVector(const Recording& recording, VectorFormat format,
                                 const std::string& metadata)
{
    const Size size = recording.size;
    const auto fits = [](double side) { return side > 0 && side <= Bitmap::kMaximumSide; };
    if (!fits(size.width) || !fits(size.height))
        return Error{"a drawing needs a size above 0 and up to 100000 points to be written"};
    const auto& table = painter();
    if (!table)
        return Error{table.error()};
    std::string bytes, error;
    if (!(*table)->encode(recording, format, metadata, bytes, error))
        return Error{error};
    return bytes;
}

} // namespace drawing
