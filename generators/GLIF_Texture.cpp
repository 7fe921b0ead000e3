#include "generators/GLIF_Texture.h"

#include "generators/ColorSchemes.h"
#include "generators/FieldTiles.h"
#include "generators/Random.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFIter", 1, 100, 73},
    {"GLIFTile", 1, 10, 1},
    {"GLIFShapesType", 0, 2, 0},
    {"GLIFColorScheme", 0, 20, 4},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.52f},
};

// Ten times what the control offers. Beyond it a walk takes ever longer and looks the same.
constexpr int kMostIterations = 1000;

int tileCount(int wanted)
{
    if (wanted == 0)
        return 1;
    // The last step of the control's ten gives no more than the one before.
    return wanted > -10 && wanted < 10 ? std::abs(wanted) : 9;
}

// A coordinate that has left 0 … count - 1 by less than the count, or by one.
int wrapped(int at, int count)
{
    return at < 0 ? at + count : at >= count ? at - count : at;
}

// Counts by pixel, laid out along the direction in which a walk is quick.
struct Counts {
    std::unique_ptr<std::int32_t[]> of;
    std::ptrdiff_t perColumn = 0, perRow = 0;

    // Null when memory is short.
    static Counts make(PixelSize tile, int type)
    {
        Counts counts;
        counts.of.reset(new (std::nothrow) std::int32_t[tile.pixels()]());
        const bool alongRows = type != 0 && type != 1 && type != 3;
        counts.perColumn = alongRows ? 1 : tile.height;
        counts.perRow = alongRows ? tile.width : 1;
        return counts;
    }
    std::int32_t& at(int x, int y) const { return of[x * perColumn + y * perRow]; }
};

// A walk over a tile whose sides meet.
class Walk {
    struct Place {
        int x, y;
    };

public:
    Walk(const Counts& counts, PixelSize tile, int x, int y)
        : _counts(counts), _width(tile.width), _height(tile.height), _at{x, y}
    {
    }

    // Walks so many steps and adds up to 4 to the count of each pixel it leaves.
    void take(int type, std::int64_t steps)
    {
        switch (type) {
        case 0: // wanders
            repeat<2>(steps, [this](Place& at, const int* drawn) {
                at.x = wrapped(at.x + drawn[0] % 3 - 1, _width);
                at.y = wrapped(at.y + drawn[1] % 3 - 1, _height);
            });
            break;
        case 1: // runs down the picture
            repeat<1>(steps, [this](Place& at, const int* drawn) {
                at.x = wrapped(at.x + drawn[0] % 3 - 1, _width);
                at.y = wrapped(at.y + 1, _height);
            });
            break;
        case 3: // swaps the directions
            repeat<2>(steps, [this](Place& at, const int* drawn) {
                at.x = (_width + drawn[0] % 3 + at.y - 1) % _width;
                at.y = (_height + drawn[1] % 3 + at.x - 1) % _height;
            });
            break;
        default: // drifts with the waves
            takeInWaves(steps);
            break;
        }
    }

    // The largest count.
    std::int32_t most() const { return _most; }

private:
    // After the draw for the count, a move gets so many more.
    template <int kDrawsToMove, class Move>
    void repeat(std::int64_t steps, const Move& move)
    {
        constexpr int kDraws = 1 + kDrawsToMove;
        constexpr std::int64_t kStepsAtOnce = 1024, kStepsWatched = 64 * kStepsAtOnce;
        RandomRun random;
        // Of this function alone, so that it need not go through memory.
        Place at = _at;
        std::int32_t most = _most;
        int drawn[kDraws * kStepsAtOnce];
        for (std::int64_t first = 0; first < steps; first += kStepsAtOnce) {
            // In less than a millisecond.
            if (first % kStepsWatched == 0) {
                foundation::checkpoint();
                foundation::reportProgress(static_cast<double>(first) / static_cast<double>(steps));
            }
            const std::int64_t count = std::min(steps - first, kStepsAtOnce);
            random.take(drawn, kDraws * count);
            for (const int* draw = drawn; draw != drawn + kDraws * count; draw += kDraws) {
                std::int32_t& visits = _counts.at(at.x, at.y);
                visits += draw[0] % 5;
                most = std::max(most, visits);
                move(at, draw + 1);
            }
        }
        _at = at;
        _most = most;
    }

    void takeInWaves(std::int64_t steps)
    {
        // Tiles less than 20 high are too low for a wave.
        const auto waveLength = static_cast<float>(_height / 20);
        std::vector<double> drifts(_height);
        for (int y = 0; y < _height; ++y)
            if (waveLength > 0)
                drifts[y] = std::sin(static_cast<double>(static_cast<float>(y) / waveLength)) * 3.0;

        // Sums with a drift are rounded and then truncated. Unless a drift is so close to a whole
        // number that rounding reaches it, that is to go by the whole number below the drift.
        std::vector<int> wholeDrifts(_height);
        bool isClear = _width > kFarthestMove;
        for (int y = 0; y < _height; ++y) {
            const double below = std::floor(drifts[y]), above = drifts[y] - below;
            wholeDrifts[y] = static_cast<int>(below);
            isClear = isClear && (above == 0 || (above > 1e-9 && above < 1 - 1e-9));
        }
        if (isClear)
            repeat<2>(steps, [this, &wholeDrifts](Place& at, const int* drawn) {
                at.x = wrapped(at.x + wholeDrifts[at.y] + drawn[0] % 3 - 1, _width);
                at.y = wrapped(at.y + drawn[1] % 3 - 1, _height);
            });
        else
            repeat<2>(steps, [this, &drifts](Place& at, const int* drawn) {
                const double drifted = at.x + drifts[at.y];
                const double moved = drifted + drawn[0] % 3 - 1.0 + _width;
                at.x = static_cast<int>(moved) % _width;
                // In a tile narrower than the drift.
                if (at.x < 0)
                    at.x += _width;
                at.y = wrapped(at.y + drawn[1] % 3 - 1, _height);
            });
    }

    static constexpr int kFarthestMove = 4;

    const Counts& _counts;
    int _width, _height;
    Place _at;
    std::int32_t _most = 0;
};

} // namespace

const AttributeTable& GLIF_Texture::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Texture::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                              int width, int height,
                                                              const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    _nIter = attributes.intValue("GLIFIter", _nIter);
    _iTile = attributes.intValue("GLIFTile", _iTile);
    _shapesType = attributes.intValue("GLIFShapesType", _shapesType);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    return textureGeneratorWidthHeight(size.width, size.height);
}

PictureRef GLIF_Texture::textureGeneratorWidthHeight(int width, int height)
{
    const std::shared_ptr<Bitmap> bitmap = makeBitmap({width, height});
    if (!bitmap)
        return nullptr;
    // Of a picture smaller than its number of tiles, a tile is a pixel.
    const int tiles = tileCount(_iTile);
    const PixelSize tile = {std::max(width / tiles, 1), std::max(height / tiles, 1)};
    // Drawn although a tile that is only coloured again has no use for them.
    const int drawnX = randomInt();
    const int drawnY = randomInt();
    if (_bNeedUpdateCashe &&
        !compute([&] { return computeField(tile, drawnX % tile.width, drawnY % tile.height); }))
        return nullptr;
    paintTiles(*bitmap, tile);
    return drawing::Picture::fromBitmap(bitmap);
}

// One thread does it, and what it waits for are two or three draws for each step: where a step goes
// depends on all before it.
bool GLIF_Texture::computeField(PixelSize tile, int x, int y)
{
    const Counts counts = Counts::make(tile, _shapesType);
    if (!counts.of || !renewPrefetchBuffer(tile.pixels())) {
        _preAttr.clear();
        return false;
    }
    Walk walk(counts, tile, x, y);
    const int iterations = std::clamp(_nIter, 0, kMostIterations);
    const auto pixels = static_cast<double>(tile.pixels());
    walk.take(_shapesType, static_cast<std::int64_t>(pixels * iterations / 5.0));
    _most = walk.most();

    const auto most = static_cast<float>(_most);
    double* field = _prefetchBuffer.get();
    imaging::parallelRows(0, tile.width, 16, [&](int first, int last) {
        const auto height = static_cast<std::size_t>(tile.height);
        // A walk without a step leaves nothing to divide by: then all values are 0.
        for (std::size_t row = 0; row < height; ++row)
            for (int column = first; column < last; ++column)
                field[column * height + row] =
                    _most > 0 ? static_cast<float>(counts.at(column, static_cast<int>(row))) / most
                              : 0;
    });
    return true;
}

std::uint32_t GLIF_Texture::colorWord(double value) const
{
    const Color color = computeSchemeColor(value, _schemeKeyColor, _iColorScheme);
    const auto byteOf = [](float component) {
        return static_cast<std::uint32_t>(foundation::lowByte(component * 255.0));
    };
    return 0xFF000000 | byteOf(color.blue) << 16 | byteOf(color.green) << 8 | byteOf(color.red);
}

void GLIF_Texture::paintTiles(Bitmap& bitmap, PixelSize tile) const
{
    // There are no more colours than counts, and a value leads back to its count as long as single
    // precision can tell the quotients apart.
    constexpr int kMostInTable = 1 << 20;
    std::vector<std::uint32_t> table;
    if (_most < kMostInTable)
        for (int count = 0; count <= _most; ++count)
            table.push_back(
                colorWord(_most > 0 ? static_cast<float>(count) / static_cast<float>(_most) : 0));
    const auto color = [&](std::uint32_t* words, const double* values, int count) {
        for (int y = 0; y < count; ++y)
            words[y] = table.empty() ? colorWord(values[y])
                                     : table[static_cast<int>(values[y] * _most + 0.5)];
    };
    const auto put = [&](int x, int y, const std::uint32_t* words, int count) {
        std::copy_n(words, count, bitmap.rowAs<std::uint32_t>(y) + x);
    };
    forFieldTiles(_prefetchBuffer.get(), tile.width, tile.height, color, put);

    // The first tile, in the upper left corner, to the right and then down; the last ones are cut.
    const int width = bitmap.width();
    imaging::parallelRows(0, tile.height, 64, [&](int first, int last) {
        for (int y = first; y < last; ++y) {
            auto* row = bitmap.rowAs<std::uint32_t>(y);
            for (int x = tile.width; x < width; x += tile.width)
                std::copy_n(row, std::min(tile.width, width - x), row + x);
        }
    });
    imaging::parallelRows(tile.height, bitmap.height(), 64, [&](int first, int last) {
        for (int y = first; y < last; ++y)
            std::copy_n(bitmap.rowAs<std::uint32_t>(y % tile.height), width,
                        bitmap.rowAs<std::uint32_t>(y));
    });
}
