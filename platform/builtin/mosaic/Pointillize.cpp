// Pointillize: dots on a jittered grid, in a random order, each in the colour of the picture under
// its middle.
#include "platform/builtin/mosaic/Mosaics.h"

#include "platform/builtin/Hash.h"
#include "platform/builtin/Inputs.h"
#include "platform/builtin/mosaic/CellMosaic.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <tuple>

namespace builtin {

using namespace imaging;

namespace {

constexpr std::uint32_t kDotX = 18, kDotY = 19, kDotRadius = 20, kDotOrder = 21;
// In pitches. With the soft rim of half a pixel, no dot reaches farther than two squares.
constexpr double kSmallest = 0.62, kVariation = 0.28;

struct Dot {
    Point at; // from the centre
    double radius;
    std::uint32_t order; // later ones lie above earlier ones
    std::int64_t cell;   // index of its colour
};

class DotRows : public Evaluator {
public:
    DotRows(const JitteredGrid& grid, const CellRange& range, FloatBuffer colors)
        : _grid(grid), _range(range), _colors(std::move(colors)), _id(nextId())
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        const double y = span.y + 0.5 - _grid.center().y;
        out.clear(span.count);
        for (const Dot& dot : dotsNear(span, _grid.square(y)))
            paint(dot, y, span, out);
    }

private:
    // What one thread remembers: the rows of a tile meet the same dots many times.
    struct Kept {
        std::uint64_t id = 0;
        int x = 0, count = 0;
        std::int64_t row = 0;
        std::vector<Dot> dots; // from the lowest to the topmost
    };

    static std::uint64_t nextId()
    {
        static std::atomic<std::uint64_t> last{0};
        return ++last;
    }

    const std::vector<Dot>& dotsNear(const Span& span, std::int64_t row) const
    {
        thread_local Kept kept;
        if (kept.id == _id && kept.x == span.x && kept.count == span.count && kept.row == row)
            return kept.dots;
        kept.id = _id;
        kept.x = span.x;
        kept.count = span.count;
        kept.row = row;
        kept.dots.clear();
        const double left = span.x + 0.5 - _grid.center().x;
        const std::int64_t first = _grid.square(left) - 2,
                           last = _grid.square(left + span.count - 1) + 2;
        for (std::int64_t j = row - 2; j <= row + 2; ++j)
            for (std::int64_t i = first; i <= last; ++i) {
                const auto column = static_cast<std::uint32_t>(i),
                           r = static_cast<std::uint32_t>(j);
                const double size = kSmallest + kVariation * h01(column, r, kDotRadius);
                kept.dots.push_back({_grid.site({i, j}), _grid.pitch() * size,
                                     hash(column, r, kDotOrder), _range.indexOf({i, j})});
            }
        // Of equals, the one farther down and to the left lies above.
        std::sort(kept.dots.begin(), kept.dots.end(), [](const Dot& a, const Dot& b) {
            return std::tie(a.order, b.cell) < std::tie(b.order, a.cell);
        });
        return kept.dots;
    }

    void paint(const Dot& dot, double y, const Span& span, const Strip& out) const
    {
        const double away = y - dot.at.y, reach = dot.radius + 0.5;
        if (!(std::abs(away) < reach))
            return;
        const float* c = _colors.data() + 4 * dot.cell;
        // The pixels within reach; one more does no harm, its coverage is 0.
        const double half = std::sqrt(reach * reach - away * away);
        const double middle = _grid.center().x + dot.at.x;
        const double first = std::max(std::floor(middle - half - 0.5), double(span.x));
        const double last = std::min(std::ceil(middle + half + 0.5), double(span.x + span.count));
        if (first >= last)
            return;
        // Distances are taken from the pixel that the middle lies in, so that they are the same
        // wherever a span begins.
        const double pixel =
            std::clamp(std::floor(middle), -double(IRect::kEdge), double(IRect::kEdge));
        const F offset = pixel + 0.5 - middle, awaySquared = away * away, radius = dot.radius + 0.5;
        const Px color{c[0], c[1], c[2], c[3]};
        const int begin = static_cast<int>(first) - span.x, end = static_cast<int>(last) - span.x;
        const int toPixel = span.x - static_cast<int>(pixel);
        for (int i = begin; i < end; i += kLanes) {
            const F dx = offset + toFloat(I(i + toPixel) + iotaInts());
            const F coverage = clamp01(radius - sqrt(dx * dx + awaySquared));
            const Px below = loadPx(out, i);
            const Px above = color * coverage + below * (F(1.0f) - color.a * coverage);
            storePx(out, i, select(coverage > F(0.0f), above, below));
        }
    }

    JitteredGrid _grid;
    CellRange _range;
    FloatBuffer _colors;
    std::uint64_t _id;
};

class DotNode : public Node {
public:
    DotNode(Image image, const JitteredGrid& grid)
        : Node(image.node()->extent()), _image(std::move(image)), _grid(grid)
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const CellRange range = _grid.squaresOf(region, 2);
        const double pitch = _grid.pitch();
        // Dots stand up to a pitch outside the picture, in the colour of its border.
        const auto positionsOf = [&](std::int64_t row, Point* positions) {
            for (std::int64_t i = 0; i < range.width; ++i) {
                const Point site = _grid.site({range.left + i, row});
                positions[i] = sampledAt({_grid.center().x + site.x, _grid.center().y + site.y});
            }
        };
        const int margin = static_cast<int>(std::min(std::ceil(3 * pitch), double(IRect::kEdge)));
        FloatBuffer colors =
            samplesOf(_image, range, pitch, region.grown(margin, margin), positionsOf, context);
        return colors ? std::make_shared<DotRows>(_grid, range, std::move(colors)) : nullptr;
    }

private:
    // Where the dot at a site takes its colour: outside the picture for one that is not painted.
    Point sampledAt(Point site) const
    {
        const IRect& e = extent();
        if (e.isPlane())
            return site;
        const auto beyond = [](double v, int low, int high) {
            return v - std::clamp<double>(v, low, high);
        };
        if (std::hypot(beyond(site.x, e.left, e.right), beyond(site.y, e.bottom, e.top)) >
            _grid.pitch())
            return {e.left - 2.0, e.bottom - 2.0};
        return {std::clamp(site.x, e.left + 0.5, e.right - 0.5),
                std::clamp(site.y, e.bottom + 0.5, e.top - 0.5)};
    }

    Image _image;
    JitteredGrid _grid;
};

} // namespace

void Pointillize::initialize(FilterRegistry& registry)
{
    using T = Pointillize;
    add<T>(registry, "CIPointillize", "Pointillize", {"Stylize", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(1).slider(1, 100).identity(1)},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
           });
}

Image Pointillize::outputImage() const
{
    if (!inputImage || inputImage.node()->extent().isEmpty())
        return inputImage;
    return Image(std::make_shared<DotNode>(
        inputImage, JitteredGrid(inputCenter.point(), inputRadius, kDotX, kDotY)));
}

} // namespace builtin
