#include "generators/GLIF_Cafel.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"

#include <algorithm>
#include <cmath>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFQuantity", 20, 100, 20},
    {"GLIFQuality", 1, 10, 1},
    {"GLIFIdFigure", 0, 1, 1},
    {"GLIFColorScheme", 0, 20, 2},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.35f},
    // No background is ever drawn.
    {"GLIFUseBackgroundColor", Attribute::Kind::NoDescription},
    {"GLIFBackgroundColor", Attribute::Kind::NoDescription},
};

constexpr int kMostCentres = 5000;
constexpr int kTableSize = 5001;

// A candidate; one that was too near to another has no place and no colour.
struct Candidate {
    int x = -1, y = -1;
    float position = -1; // of its colour in the scheme
};

std::vector<Candidate> drawCandidates(int width, int height, int quantity, int quality)
{
    const auto spacing = static_cast<double>(quality) + 3;
    std::vector<Candidate> table;
    for (int i = 0; i < quantity; ++i) {
        foundation::checkpoint();
        const int x = randomInt() % width;
        const int y = randomInt() % height;
        const auto isTooNear = [&](const Candidate& other) {
            const double dx = x - other.x, dy = y - other.y;
            return other.x >= 0 && spacing * spacing >= dx * dx + dy * dy;
        };
        // The one just before is not compared.
        const bool isRejected =
            i > 1 && std::any_of(table.begin(), table.begin() + (i - 1), isTooNear);
        table.push_back(isRejected ? Candidate{} : Candidate{x, y, randomUnit()});
    }
    return table;
}

// The pixels that the layers leave, each from the tiles that can be seen in it: the last layer
// with a shape over the pixel decides, and in it the latest centre.
class TilePixels {
public:
    TilePixels(Bitmap& bitmap, Figure figure, int radius, int step,
               const std::vector<Centre>& centres, const std::vector<Ink>& inks)
        : _painter(bitmap), _figure(figure), _radius(radius), _step(step),
          _lastLayer((radius - 1) / step), _centres(centres), _inks(inks)
    {
    }

    void paint() const
    {
        std::vector<int> all(_centres.size());
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i] = static_cast<int>(i);
        _painter.forEachBlock([&](const Block& block) {
            Leaf leaf;
            paintBlock(block, all, leaf);
        });
    }

private:
    // What the leaf's pixels are told from. Kept between leaves for its memory.
    using Leaf = std::vector<LeafNumbers>; // distances of the centres seen

    float radiusOf(int layer) const
    {
        return static_cast<float>(_radius - static_cast<double>(layer) * _step);
    }

    // The last layer whose shapes reach so far from their centres; -1 if none does.
    int topLayer(double distance) const
    {
        const double left = _radius - distance;
        return left < 0 ? -1 : static_cast<int>(std::min(left / _step, double(_lastLayer)));
    }

    void paintBlock(const Block& block, const std::vector<int>& candidates, Leaf& leaf) const
    {
        double nearestOfAll = 1e9, nearestFar = 1e9;
        for (const int i : candidates) {
            const auto [x, y] = _centres[i];
            nearestOfAll = std::min(nearestOfAll, nearest(_figure, block, x, y));
            nearestFar = std::min(nearestFar, farthest(_figure, block, x, y));
        }
        // The layers that its pixels end in have no smaller radius than this, so a shape that
        // covers the block at this radius hides all that come before it in the table.
        const double rim = blockRimWidth(_figure, _radius);
        const double smallest = radiusOf(topLayer(nearestOfAll - rim));
        const double largest = nearestFar + 2 * rim + _step;
        std::size_t first = 0;
        for (std::size_t k = 0; k < candidates.size(); ++k) {
            const auto [x, y] = _centres[candidates[k]];
            if (farthest(_figure, block, x, y) + rim <= smallest)
                first = k;
        }
        std::vector<int> seen;
        for (std::size_t k = first; k < candidates.size(); ++k) {
            const auto [x, y] = _centres[candidates[k]];
            if (nearest(_figure, block, x, y) <= largest)
                seen.push_back(candidates[k]);
        }
        if (seen.size() == 1 && nearestFar + rim <= _radius) {
            _painter.fill(block, _inks[seen[0]]);
        } else if (block.longestSide() > kLeafSide) {
            for (const Block& half : block.halves())
                paintBlock(half, seen, leaf);
        } else {
            paintLeaf(block, seen, leaf);
        }
    }

    void paintLeaf(const Block& block, const std::vector<int>& seen, Leaf& leaf) const
    {
        const float rim = rimWidth(_figure);
        LeafNumbers least;
        least.fill(1e9f);
        leaf.resize(seen.size());
        for (std::size_t k = 0; k < seen.size(); ++k) {
            const auto [x, y] = _centres[seen[k]];
            distances(_figure, block, x, y, leaf[k]);
            for (int i = 0; i < kLeafPixels; ++i)
                least[i] = std::min(least[i], leaf[k][i]);
        }
        for (int y = block.bottom; y < block.top; ++y)
            for (int x = block.left; x < block.right; ++x) {
                const int i = (y - block.bottom) * kLeafSide + x - block.left;
                Ink result;
                // From the last layer that covers all of the pixel to the last that touches it.
                const int touched = topLayer(least[i] - rim);
                int layer = std::max(topLayer(least[i] + rim), 0);
                for (; layer <= touched; ++layer)
                    for (std::size_t k = 0; k < seen.size(); ++k)
                        paintShape(result, x, y, seen[k], leaf[k][i], radiusOf(layer));
                _painter.set(x, y, result);
            }
    }

    void paintShape(Ink& pixel, int x, int y, int index, float away, float radius) const
    {
        const float rim = rimWidth(_figure);
        if (away + rim <= radius) {
            pixel = _inks[index];
        } else if (away - rim < radius) {
            const Rim part = {radius, away, static_cast<float>(x - _centres[index].x) + 0.5f,
                              static_cast<float>(y - _centres[index].y) + 0.5f};
            pixel = pixel.under(_inks[index], coverage({&part, 1}));
        }
    }

    BlockPainter _painter;
    Figure _figure;
    int _radius, _step, _lastLayer;
    const std::vector<Centre>& _centres;
    const std::vector<Ink>& _inks;
};

// Blocks in which no pixel can be farther from its centre than one already found are passed over.
void searchCover(const Block& block, std::span<const Centre> candidates, std::int64_t most,
                 std::int64_t& largest)
{
    constexpr int kSmallestBlock = 8;
    foundation::checkpoint();
    // Of the pixels' corners, the last of which lie inside the block.
    const Block corners = {block.left, block.bottom, block.right - 1, block.top - 1};
    const auto squared = [](double distance) { return std::llround(distance * distance); };
    std::int64_t bound = most;
    for (const auto& [x, y] : candidates)
        bound = std::min<std::int64_t>(bound, squared(farthest(Figure::Circle, corners, x, y)));
    if (bound <= largest)
        return;
    std::vector<Centre> near;
    for (const Centre& centre : candidates)
        if (squared(nearest(Figure::Circle, corners, centre.x, centre.y)) <= bound)
            near.push_back(centre);
    if (block.longestSide() <= kSmallestBlock)
        largest = std::max(largest, coverSquaredPlain(block, near, most));
    else
        for (const Block& half : block.halves())
            searchCover(half, near, most, largest);
}

} // namespace

namespace generators {

std::int64_t coverSquaredPlain(const Block& block, std::span<const Centre> centres,
                               std::int64_t most)
{
    std::int64_t largest = 0;
    for (int y = block.bottom; y < block.top; ++y)
        for (int x = block.left; x < block.right; ++x) {
            std::int64_t least = most;
            for (const Centre& centre : centres) {
                const std::int64_t dx = x - centre.x, dy = y - centre.y;
                least = std::min(least, dx * dx + dy * dy);
            }
            largest = std::max(largest, least);
        }
    return largest;
}

std::int64_t coverSquared(const Block& block, std::span<const Centre> centres, std::int64_t most)
{
    std::int64_t largest = 0;
    searchCover(block, centres, most, largest);
    return largest;
}

} // namespace generators

const AttributeTable& GLIF_Cafel::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Cafel::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                            int height,
                                                            const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _quantity = attributes.intValue("GLIFQuantity", 10);
    _size = 200;
    _quality = attributes.intValue("GLIFQuality", 1);
    _idFigure = attributes.intValue("GLIFIdFigure", 0);
    return cafelGenerator(size.width, size.height, _quantity, _size, _quality, _idFigure,
                          _schemeKeyColor, _colorRangeMax);
}

PictureRef GLIF_Cafel::cafelGenerator(int width, int height, int /*quantity*/, int /*size*/,
                                      int quality, int figure, double /*schemeKeyColor*/,
                                      double /*colorRangeMax*/)
{
    const PixelSize pixels = {width, height};
    if (!pixels.isValid())
        return nullptr;
    _size = truncToInt(std::sqrt(static_cast<double>(width) * height)) / 2;
    if (_quantity > kMostCentres) {
        foundation::log("GLIF_Cafel: Error! Too many of spheres!"); // sic
        _quantity = kTableSize;
    }
    std::vector<Centre> centres;
    std::vector<Color> colors;
    for (const Candidate& candidate : drawCandidates(width, height, _quantity, _quality))
        if (candidate.x >= 0) {
            centres.push_back({candidate.x, candidate.y});
            colors.push_back(
                computeSchemeColor(candidate.position, _schemeKeyColor, _iColorScheme));
        }

    const std::int64_t cover =
        coverSquared({0, 0, width, height}, centres, static_cast<std::int64_t>(width) * height);
    const int radius = truncToInt(std::sqrt(static_cast<double>(cover))) + 1;
    // A step below 1 would never end and counts as 1. Thousands of centres on a large picture, far
    // beyond the described range, shrink in larger steps, to keep the drawing within bounds.
    const std::int64_t shapes = static_cast<std::int64_t>(centres.size()) * radius;
    const int step = std::max({quality, 1, static_cast<int>(shapes / kMostStackedShapes) + 1});
    const Figure shape = figure == 1 ? Figure::Square : Figure::Circle;

    const auto draw = [&](Canvas& canvas) {
        for (std::int64_t r = radius; r >= 1; r -= step) {
            foundation::reportProgress(1 - static_cast<double>(r) / radius);
            for (std::size_t i = 0; i < centres.size(); ++i) {
                Path path;
                canvas.setColor(colors[i]);
                appendFigure(path, shape, centres[i].x, centres[i].y, static_cast<int>(r));
                canvas.fill(path);
            }
        }
    };
    const auto paint = [&](Bitmap& bitmap) {
        const std::vector<Ink> inks = inksOf(colors);
        if (inks.empty())
            return centres.empty();
        TilePixels(bitmap, shape, radius, step, centres, inks).paint();
        return true;
    };
    return renderBitmap(pixels, draw, paint);
}
