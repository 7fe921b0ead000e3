// Pointillize: dots on a jittered grid, in a random order, each in the colour of the picture under
// its middle.
#include "platform/builtin/mosaic/Mosaics.h"

#include "platform/builtin/Hash.h"
#include "platform/builtin/Inputs.h"
#include "platform/builtin/mosaic/CellMosaic.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <numeric>

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
        // For their making.
        std::vector<Dot> unsorted;
        std::vector<float> random, jitter;
        std::vector<double> xs, ys;
        std::vector<std::uint32_t> orders;
        std::vector<int> begins;
    };

    static std::uint64_t nextId()
    {
        static std::atomic<std::uint64_t> last{0};
        return ++last;
    }

    const std::vector<Dot>& dotsNear(const Span& span, std::int64_t row) const
    {
        thread_local Kept all;
        Kept& kept = all;
        if (kept.id == _id && kept.x == span.x && kept.count == span.count && kept.row == row)
            return kept.dots;
        kept.id = _id;
        kept.x = span.x;
        kept.count = span.count;
        kept.row = row;
        collect(kept, span);
        return kept.dots;
    }

    // The dots that reach the row of squares, sorted.
    void collect(Kept& kept, const Span& span) const
    {
        const double left = span.x + 0.5 - _grid.center().x, pitch = _grid.pitch();
        const std::int64_t first = _grid.square(left) - 2,
                           last = _grid.square(left + span.count - 1) + 2;
        const int count = static_cast<int>(last - first + 1);
        kept.random.resize(static_cast<std::size_t>(count) + kLanes);
        kept.xs.resize(kept.random.size());
        kept.ys.resize(kept.random.size());
        kept.orders.resize(kept.random.size());
        kept.unsorted.clear();
        const double bottom = pitch * static_cast<double>(kept.row), top = bottom + pitch;
        for (std::int64_t row = kept.row - 2; row <= kept.row + 2; ++row) {
            _grid.sites({first, row}, count, kept.jitter, kept.xs.data(), kept.ys.data());
            for (int i = 0; i < count; i += kLanes) {
                const I columns = I(static_cast<int>(first + i)) + iotaInts();
                const auto j = static_cast<std::uint32_t>(row);
                store(&kept.random[i], h01(columns, j, kDotRadius));
                storeInts(&kept.orders[i], hash(columns, j, kDotOrder));
            }
            for (int i = 0; i < count; ++i) {
                const Dot dot{{kept.xs[i], kept.ys[i]},
                              pitch * (kSmallest + kVariation * kept.random[i]),
                              kept.orders[i],
                              _range.indexOf({first + i, row})};
                const double reach = dot.radius + 0.5;
                if (dot.at.y > bottom - reach && dot.at.y < top + reach)
                    kept.unsorted.push_back(dot);
            }
        }
        sort(kept);
    }

    // Hashes are spread evenly: dots put into as many bins as there are dots are nearly in order.
    static void sort(Kept& kept)
    {
        const std::vector<Dot>& from = kept.unsorted;
        const int bits = std::bit_width(from.size());
        const auto binOf = [bits](const Dot& d) { return d.order >> (32 - bits); };
        std::vector<int>& begins = kept.begins;
        begins.assign((std::size_t{1} << bits) + 1, 0);
        for (const Dot& d : from)
            ++begins[binOf(d) + 1];
        std::partial_sum(begins.begin(), begins.end(), begins.begin());
        kept.dots.resize(from.size());
        for (const Dot& d : from)
            kept.dots[begins[binOf(d)]++] = d;
        // Of equals, the one farther down and to the left lies above.
        const auto below = [](const Dot& a, const Dot& b) {
            return a.order != b.order ? a.order < b.order : a.cell > b.cell;
        };
        for (std::size_t i = 1; i < kept.dots.size(); ++i)
            for (std::size_t k = i; k > 0 && below(kept.dots[k], kept.dots[k - 1]); --k)
                std::swap(kept.dots[k], kept.dots[k - 1]);
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
