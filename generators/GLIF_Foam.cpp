#include "generators/GLIF_Foam.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"

#include <algorithm>
#include <cmath>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFQuantity", 20, 1000, 300},
    {"GLIFSize", 10, 100, 62},
    {"GLIFQuality", 1, 10, 2},
    {"GLIFIdFigure", 0, 1, 0},
    {"GLIFColorScheme", 0, 20, 4},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.35f},
    {"GLIFUseBackgroundColor", false, true, true},
    {"GLIFBackgroundColor", Color::black()},
};

constexpr int kMostSpheres = 5000;
constexpr int kTableSize = 5001;
constexpr int kMostLayers = 10'000;

struct Sphere {
    int x, y;
    int radius; // before the first layer
};

// The radius step between layers. A step below 1 would never end and counts as 1; a size far beyond
// the described range is shrunk in steps large enough to keep the drawing within bounds.
int layerStep(int quality, int size, int quantity)
{
    const int layers = std::min(kMostLayers, kMostStackedShapes / std::max(quantity, 1));
    return std::max({quality, 1, size / layers + 1 - (size % layers == 0)});
}

// The pixels that the layers leave, each from the spheres that can be seen in it.
//
// Layer j shows sphere i, of radius R, as a disc of radius |R - (j + 1) step| while R - j step is
// above 0: shrinking discs, and a last one whose radius would be negative and is taken as positive
// (the dot). A layer is one path, so its discs are a union.
class FoamPixels {
public:
    FoamPixels(Bitmap& bitmap, Figure figure, int step, const std::vector<Sphere>& spheres,
               const Ink& background, const std::vector<Ink>& layers)
        : _painter(bitmap), _figure(figure), _step(step), _spheres(spheres),
          _background(background), _layers(layers)
    {
    }

    void paint() const
    {
        std::vector<int> all(_spheres.size());
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i] = static_cast<int>(i);
        _painter.forEachBlock([&](const Block& block) {
            Leaf leaf;
            paintBlock(block, all, kNone, leaf);
        });
    }

private:
    static constexpr int kNone = -1; // below the first layer

    // What the leaf's pixels are told from. Kept between leaves for its memory.
    struct Leaf {
        std::vector<LeafNumbers> distances; // of the spheres seen
        std::vector<Rim> rims;
    };

    // The sphere's last layer, of the dot, and the dot's radius.
    int lastLayer(const Sphere& sphere) const { return (sphere.radius - 1) / _step; }
    double dotRadius(const Sphere& sphere) const
    {
        return (lastLayer(sphere) + 1.0) * _step - sphere.radius;
    }

    // The last layer whose shrinking discs are at least that far inside their sphere's edge.
    int layerAt(double depth) const
    {
        return depth < _step ? kNone : static_cast<int>(depth / _step) - 1;
    }

    // The last layer in which the sphere covers points at that distance from its centre.
    int topLayer(const Sphere& sphere, double distance) const
    {
        if (sphere.radius <= 0)
            return kNone;
        const int last = lastLayer(sphere);
        return distance <= dotRadius(sphere) ? last
                                             : std::min(layerAt(sphere.radius - distance), last);
    }

    const Ink& ink(int layer) const { return layer == kNone ? _background : _layers[layer]; }

    // All of the block is covered in the layer `covered` at least, and in later ones by none but
    // the candidates.
    void paintBlock(const Block& block, const std::vector<int>& candidates, int covered,
                    Leaf& leaf) const
    {
        // No disc is larger than its sphere or the step.
        const auto rim = [&](const Sphere& sphere) {
            return blockRimWidth(_figure, std::max(sphere.radius, _step));
        };
        for (const int i : candidates) {
            const Sphere& sphere = _spheres[i];
            const double reach = farthest(_figure, block, sphere.x, sphere.y) + rim(sphere);
            covered = std::max(covered, topLayer(sphere, reach));
        }
        std::vector<int> seen;
        for (const int i : candidates) {
            const Sphere& sphere = _spheres[i];
            const double reach = nearest(_figure, block, sphere.x, sphere.y) - rim(sphere);
            if (topLayer(sphere, reach) > covered)
                seen.push_back(i);
        }
        if (seen.empty()) {
            _painter.fill(block, ink(covered));
        } else if (block.longestSide() > kLeafSide) {
            for (const Block& half : block.halves())
                paintBlock(half, seen, covered, leaf);
        } else {
            paintLeaf(block, seen, covered, leaf);
        }
    }

    void paintLeaf(const Block& block, const std::vector<int>& seen, int covered, Leaf& leaf) const
    {
        const float rim = rimWidth(_figure);
        std::array<int, kLeafPixels> whole, touched; // layers that cover all and part of a pixel
        whole.fill(covered);
        LeafNumbers depth;
        depth.fill(0);
        leaf.distances.resize(seen.size());
        for (std::size_t k = 0; k < seen.size(); ++k) {
            const Sphere& sphere = _spheres[seen[k]];
            LeafNumbers& away = leaf.distances[k];
            distances(_figure, block, sphere.x, sphere.y, away);
            const auto radius = static_cast<float>(sphere.radius);
            for (int i = 0; i < kLeafPixels; ++i)
                depth[i] = std::max(depth[i], radius - away[i]);
        }
        for (int i = 0; i < kLeafPixels; ++i) {
            whole[i] = std::max(whole[i], layerAt(depth[i] - rim));
            touched[i] = std::max(whole[i], layerAt(depth[i] + rim));
        }
        for (std::size_t k = 0; k < seen.size(); ++k) {
            const Sphere& sphere = _spheres[seen[k]];
            const auto dot = static_cast<float>(dotRadius(sphere));
            const int last = lastLayer(sphere);
            for (int i = 0; i < kLeafPixels && dot > 0; ++i) {
                const float away = leaf.distances[k][i];
                whole[i] = away + rim <= dot ? std::max(whole[i], last) : whole[i];
                touched[i] = away - rim < dot ? std::max(touched[i], last) : touched[i];
            }
        }
        for (int y = block.bottom; y < block.top; ++y)
            for (int x = block.left; x < block.right; ++x) {
                const int i = (y - block.bottom) * kLeafSide + x - block.left;
                _painter.set(x, y,
                             whole[i] == touched[i]
                                 ? ink(whole[i])
                                 : blended(x, y, i, seen, whole[i], touched[i], leaf));
            }
    }

    Ink blended(int x, int y, int i, const std::vector<int>& seen, int whole, int touched,
                Leaf& leaf) const
    {
        const float rim = rimWidth(_figure);
        Ink result = ink(whole);
        for (int layer = whole + 1; layer <= touched; ++layer) {
            leaf.rims.clear();
            for (std::size_t k = 0; k < seen.size(); ++k) {
                const Sphere& sphere = _spheres[seen[k]];
                const std::int64_t before = sphere.radius - std::int64_t{layer} * _step;
                const auto radius = static_cast<float>(std::abs(before - _step));
                const float away = leaf.distances[k][i];
                if (before > 0 && away < radius + rim)
                    leaf.rims.push_back({radius, away, static_cast<float>(x - sphere.x) + 0.5f,
                                         static_cast<float>(y - sphere.y) + 0.5f});
            }
            if (!leaf.rims.empty())
                result = result.under(ink(layer), coverage(leaf.rims));
        }
        return result;
    }

    BlockPainter _painter;
    Figure _figure;
    int _step;
    const std::vector<Sphere>& _spheres;
    Ink _background;
    const std::vector<Ink>& _layers;
};

} // namespace

const AttributeTable& GLIF_Foam::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Foam::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                           int height, const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    // What a host that omits a key gets.
    _quantity = attributes.intValue("GLIFQuantity", 300);
    _size = attributes.intValue("GLIFSize", 62);
    _quality = attributes.intValue("GLIFQuality", 2);
    _idFigure = attributes.intValue("GLIFIdFigure", 0);
    return foamGenerator(size.width, size.height, _quantity, _size, _quality, _idFigure,
                         _schemeKeyColor, _colorRangeMax);
}

PictureRef GLIF_Foam::foamGenerator(int width, int height, int /*quantity*/, int /*size*/,
                                    int quality, int figure, double /*schemeKeyColor*/,
                                    double /*colorRangeMax*/)
{
    const PixelSize pixels = {width, height};
    if (!pixels.isValid())
        return nullptr;
    if (_quantity > kMostSpheres) {
        foundation::log("GLIF_Foam: Error! Too many of spheres!"); // sic
        _quantity = kTableSize;
    }
    std::vector<Sphere> spheres;
    // Spheres without a size have no radius to draw; the background stays.
    for (int i = 0; i < _quantity && _size > 0; ++i) {
        const int x = randomInt() % width;
        const int y = randomInt() % height;
        const int radius = randomInt() % _size;
        spheres.push_back({x, y, radius});
    }

    const int step = layerStep(quality, _size, _quantity);
    const Figure shape = figure == 1 ? Figure::Square : Figure::Circle;
    std::vector<Color> colors;
    for (std::int64_t left = _size; left > 0; left -= step) {
        const float position = 1.0f - static_cast<float>(left) / static_cast<float>(_size);
        colors.push_back(computeSchemeColor(position, _schemeKeyColor, _iColorScheme));
    }

    const auto draw = [&](Canvas& canvas) {
        drawBackgroundInRect(canvas,
                             {0, 0, static_cast<double>(width), static_cast<double>(height)});
        std::vector<Sphere> shrinking = spheres;
        foundation::ProgressSteps steps(std::ssize(colors));
        for (const Color& color : colors) {
            steps.add(1);
            Path path;
            canvas.setColor(color);
            for (Sphere& sphere : shrinking) {
                if (sphere.radius <= 0)
                    continue;
                sphere.radius -= step;
                appendFigure(path, shape, sphere.x, sphere.y, sphere.radius);
            }
            canvas.fill(path);
        }
    };
    const auto paint = [&](Bitmap& bitmap) {
        std::vector<Color> palette = colors;
        palette.push_back(_useBackColor && _backColor ? *_backColor : Color::clear());
        std::vector<Ink> inks = inksOf(palette);
        if (inks.empty())
            return false;
        const Ink background = inks.back();
        inks.pop_back();
        FoamPixels(bitmap, shape, step, spheres, background, inks).paint();
        return true;
    };
    return renderBitmap(pixels, draw, paint);
}
