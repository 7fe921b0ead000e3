// Circular waves spread from seeded centres, and what they add up to is coloured. The picture looks
// the same at every size: lengths are measured by its shorter side.
//
//   GLIFResolution  block size in pixels
//   GLIFSize        wavelength, in percent of the shorter side
//   GLIFKoef        runs through the colour range from trough to crest
//   GLIFShapesType  0 waves: three to five equal waves, open in the troughs
//                   1 rings: the circles of three centres, open where an even number of them
//                     lies on top of each other
//                   2 drops: sixteen wave trains that die away, open where the water is still
//                   3 rosette: five, seven or nine waves from a circle around the middle, open in
//                     the troughs
//
// What is open is transparent, or takes the background colour. Draws, the same for every type: one
// for the number of centres, then for each of sixteen centres one for x, one for y (in fractions of
// the sides) and one for the phase. A change of colours draws none.
#include "generators/GLIF_CircleRipples.h"

#include "generators/Random.h"
#include "platform/imaging/Lanes.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFResolution", 1, 20, 1},
    {"GLIFSize", 1.0f, 50.0f, 8.0f},
    {"GLIFKoef", 0.25f, 10.0f, 1.0f},
    {"GLIFShapesType", 0, 3, 0},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.47f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.83f},
    {"GLIFUseBackgroundColor", false, true, true},
    {"GLIFBackgroundColor", Color::rgb(10 / 255.0f, 16 / 255.0f, 48 / 255.0f)},
};

using imaging::F;

constexpr int kCenters = 16;
constexpr float kTurn = 2 * std::numbers::pi_v<float>;
// Stands for an open pixel among values from 0 to 1.
constexpr float kOpen = 2;

struct Center {
    float x = 0, y = 0; // pixels
    float phase = 0;    // turns
};

struct Ripples {
    std::array<Center, kCenters> centers;
    int count = 0; // how many of them the type uses
    float wavesPerPixel = 0;
    float pixelsPerSide = 0; // the shorter one
    float runs = 0;          // through the colours
};

F distanceFrom(const Center& center, F x, F y)
{
    const F dx = x - F(center.x), dy = y - F(center.y);
    return sqrt(dx * dx + dy * dy);
}

// Height at a number of turns: 1 at the whole ones, -1 between them.
F wave(F turns)
{
    return cos((turns - floor(turns + F(0.5f))) * F(kTurn));
}

// Runs from 0 to 1 and back again while t goes on by 2.
F thereAndBack(F t)
{
    const F half = t * F(0.5f);
    return F(1.0f) - abs(F(2.0f) * (half - floor(half)) - F(1.0f));
}

// The value of a height, 0 on average and mostly within ±2. Bent so that no crest is flat; what is
// below the water line is open, and the colours run from there to the crest.
F colored(F height, float waterLine, float runs)
{
    const F bent = height / sqrt(F(1.0f) + height * height);
    const F above = (bent - F(waterLine)) * F(1 / (1 - waterLine));
    return select(above < F(0.0f), F(kOpen), clamp01(thereAndBack(above * F(runs))));
}

F waves(const Ripples& ripples, F x, F y)
{
    F sum = 0.0f;
    for (int i = 0; i < ripples.count; ++i) {
        const Center& center = ripples.centers[i];
        sum += wave(distanceFrom(center, x, y) * F(ripples.wavesPerPixel) - F(center.phase));
    }
    // The more waves, the seldomer their crests meet: this makes the mean square 1.
    const float scale = std::sqrt(2 / static_cast<float>(ripples.count));
    return colored(sum * F(scale), -0.58f, ripples.runs);
}

F rings(const Ripples& ripples, F x, F y)
{
    F circles = 0.0f, distances = 0.0f;
    for (int i = 0; i < ripples.count; ++i) {
        const Center& center = ripples.centers[i];
        const F distance = distanceFrom(center, x, y);
        circles += floor(distance * F(2 * ripples.wavesPerPixel) - F(2 * center.phase));
        distances += distance;
    }
    const F isOdd = circles - F(2.0f) * floor(circles * F(0.5f));
    // Coloured by the mean distance, which is seldom less than a quarter of the side.
    const F mean = distances * F(1 / (ripples.count * ripples.pixelsPerSide)) - F(0.25f);
    return select(isOdd > F(0.5f), clamp01(thereAndBack(mean * F(ripples.runs))), F(kOpen));
}

F drops(const Ripples& ripples, F x, F y)
{
    F sum = 0.0f, strength = 0.0f;
    for (int i = 0; i < ripples.count; ++i) {
        const Center& center = ripples.centers[i];
        const F turns = distanceFrom(center, x, y) * F(ripples.wavesPerPixel);
        // The longer ago a drop fell, the farther its waves have come.
        const F spent = turns * F(1 / (0.7f + 1.7f * center.phase));
        const F damped = F(1.0f) / (F(1.0f) + spent * spent * spent * spent);
        sum += damped * wave(turns - F(center.phase));
        strength += damped;
    }
    const F value = colored(sum * F(1.6f), -0.95f, ripples.runs);
    return select(strength < F(0.3f), F(kOpen), value);
}

F valueAt(int type, const Ripples& ripples, F x, F y)
{
    return type == 1   ? rings(ripples, x, y)
           : type == 2 ? drops(ripples, x, y)
                       : waves(ripples, x, y);
}

} // namespace

GLIF_CircleRipples::GLIF_CircleRipples()
{
    _bNeedUpdateCashe = true;
}

const AttributeTable& GLIF_CircleRipples::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_CircleRipples::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                    int width, int height,
                                                                    const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    readAttributes(attributes);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    if (!bitmap || (_bNeedUpdateCashe && !renewPrefetchBuffer(size.pixels())))
        return nullptr;
    if (_bNeedUpdateCashe)
        compute([&] { computeField(Sampling::all(size)); });
    paintField(*bitmap);
    return pictureOverBackground(bitmap);
}

PictureRef GLIF_CircleRipples::makeSample(const Sampling& sampling, const Dictionary& attributes)
{
    readAttributes(attributes);
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(sampling.shown());
    if (!bitmap || !renewPrefetchBuffer(sampling.shown().pixels()))
        return nullptr;
    computeField(sampling);
    paintField(*bitmap);
    return pictureOverBackground(bitmap);
}

void GLIF_CircleRipples::readAttributes(const Dictionary& attributes)
{
    _iResolution = std::max(attributes.intValue("GLIFResolution", 1), 1);
    _fSize = attributes.floatValue("GLIFSize", 8.0f);
    _fKoef = attributes.floatValue("GLIFKoef", 1.0f);
    _shapesType = attributes.intValue("GLIFShapesType", 0);
}

void GLIF_CircleRipples::computeField(const Sampling& sampling)
{
    const PixelSize size = sampling.size;
    const auto width = static_cast<float>(size.width), height = static_cast<float>(size.height);
    Ripples ripples;
    ripples.pixelsPerSide = std::min(width, height);
    const int drawnCount = randomInt();
    for (Center& center : ripples.centers) {
        center.x = randomUnit() * width;
        center.y = randomUnit() * height;
        center.phase = randomUnit();
    }
    const int type = _shapesType;
    ripples.count = type == 1 ? 3 : type == 2 ? kCenters : 3 + drawnCount % 3;
    // Written so that a not-a-number becomes the lower end. Waves shorter than two pixels cannot be
    // seen, and beyond ten pictures they are flat.
    const auto limited = [](float value, float low, float high) {
        return value > low ? std::min(value, high) : low;
    };
    const float percent = limited(_fSize, 0.0f, 1000.0f);
    ripples.wavesPerPixel = 1 / std::max(percent / 100 * ripples.pixelsPerSide, 2.0f);
    ripples.runs = limited(_fKoef, 0.0f, 1000.0f);

    if (type == 3) {
        // Evenly around the middle, where their crests meet, and so far out that all of the picture
        // is symmetric. The first centre's numbers turn and widen the circle.
        ripples.count = 5 + 2 * (drawnCount % 3);
        const Center first = ripples.centers[0];
        const float radius = ripples.pixelsPerSide * (1.5f + first.x / width);
        for (int i = 0; i < ripples.count; ++i) {
            const float angle =
                kTurn * (static_cast<float>(i) / static_cast<float>(ripples.count) + first.phase);
            ripples.centers[i] = {width / 2 + radius * std::cos(angle),
                                  height / 2 + radius * std::sin(angle),
                                  radius * ripples.wavesPerPixel};
        }
    }

    // A block is coloured by its middle. Rows in lanes, past the last block as far as they go.
    const int block = std::min(_iResolution, std::max(size.width, size.height));
    const std::vector<BlockRun> columns = blockRuns(sampling.columns, block);
    const std::vector<BlockRun> rows = blockRuns(sampling.rows, block);
    const auto middleOf = [block](const BlockRun& run) {
        return (static_cast<float>(run.block) + 0.5f) * static_cast<float>(block);
    };
    const std::size_t lanes =
        (rows.size() + imaging::kLanes - 1) / imaging::kLanes * imaging::kLanes;
    std::vector<float> middles(lanes);
    std::ranges::transform(rows, middles.begin(), middleOf);

    double* field = _prefetchBuffer.get();
    const std::size_t fieldHeight = sampling.rows.size();
    foundation::ProgressSteps steps(std::ssize(columns));
    const auto computeColumns = [&](int first, int last) {
        std::vector<float> values(lanes);
        for (int column = first; column < last; ++column) {
            const BlockRun& run = columns[column];
            for (std::size_t row = 0; row < lanes; row += imaging::kLanes)
                store(&values[row],
                      valueAt(type, ripples, middleOf(run), imaging::load(&middles[row])));
            double* pixels = field + run.begin * fieldHeight;
            for (std::size_t row = 0; row < rows.size(); ++row)
                std::fill(pixels + rows[row].begin, pixels + rows[row].end,
                          values[row] > 1 ? kUnsetValue : values[row]);
            for (int x = run.begin + 1; x < run.end; ++x)
                std::copy_n(pixels, fieldHeight, field + x * fieldHeight);
        }
        steps.add(last - first);
    };
    imaging::parallelRows(0, static_cast<int>(columns.size()), 4, computeColumns);
}
