#include "generators/GLIF_Biomorph.h"

#include "generators/ColorSchemes.h"
#include "platform/imaging/Lanes.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <array>
#include <cmath>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFResolution", 1, 5, 1},
    {"GLIFCReal", -10.0, 10.0, -1.65},
    {"GLIFCImag", -10.0, 10.0, 0.47},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.0f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.28f},
    {"GLIFUseBackgroundColor", false, true, true},
    {"GLIFBackgroundColor", Color::rgb(161 / 255.0f, 20 / 255.0f, 32 / 255.0f)},
};

constexpr int kMostSteps = 50;
constexpr float kBox = 70;     // an orbit goes on while both squares are below
constexpr float kFarReal = 10; // one that stopped is coloured beyond either of these
constexpr float kFarImag = 1000;
constexpr double kPointsPerPixel = 0.01; // the plane's origin is the middle of the picture

// One step of the orbit, for one number or for lanes of them: real and imaginary part of
// (a + bi)⁴ + c, multiplied out from left to right.
template <class Number>
Number nextReal(Number a, Number b, Number cReal)
{
    return a * a * a * a + b * b * b * b - Number(6.0f) * a * a * b * b + cReal;
}
template <class Number>
Number nextImaginary(Number a, Number b, Number cImaginary)
{
    return Number(4.0f) * a * a * a * b - Number(4.0f) * a * b * b * b + cImaginary;
}

float planeCoordinate(std::int64_t pixel)
{
    return static_cast<float>(static_cast<double>(pixel) * kPointsPerPixel);
}

// The blocks of a side: from minus half of it in steps of the resolution. Of an odd side, the pixel
// past the second half may be in none.
struct Blocks {
    Blocks(int side, int resolution) : _side(side), _resolution(resolution) {}

    int count() const
    {
        return static_cast<int>((2 * (_side / 2) + std::int64_t{_resolution} - 1) / _resolution);
    }
    float start(int block) const
    {
        return planeCoordinate(std::int64_t{block} * _resolution - _side / 2);
    }
    // Of those that are seen.
    std::vector<BlockRun> runs(const std::vector<int>& seen) const
    {
        std::vector<BlockRun> runs = blockRuns(seen, _resolution);
        std::erase_if(runs, [count = count()](const BlockRun& run) { return run.block >= count; });
        return runs;
    }

private:
    int _side, _resolution;
};

} // namespace

namespace generators {

BiomorphOrbit biomorphOrbit(float real, float imaginary, float cReal, float cImaginary)
{
    float a = real, b = imaginary;
    int steps = 0;
    while (a * a < kBox && b * b < kBox && steps < kMostSteps) {
        ++steps;
        const float next = nextReal(a, b, cReal);
        b = nextImaginary(a, b, cImaginary);
        a = next;
    }
    return {steps, std::abs(a) > kFarReal || std::abs(b) > kFarImag};
}

void biomorphOrbits(std::uint8_t* outcomes, const float* imaginaries, int count, float real,
                    float cReal, float cImaginary)
{
    using namespace imaging;
    int done = 0;
    for (; done + kLanes <= count; done += kLanes) {
        F a = real, b = load(imaginaries + done);
        I steps = 0;
        for (int step = 0; step < kMostSteps; ++step) {
            const M inside = (a * a < F(kBox)) & (b * b < F(kBox));
            if (!any(inside))
                break;
            const F nextA = nextReal(a, b, F(cReal));
            const F nextB = nextImaginary(a, b, F(cImaginary));
            a = select(inside, nextA, a);
            b = select(inside, nextB, b);
            steps = steps - I(inside.v); // true is -1
        }
        const M far = (abs(a) > F(kFarReal)) | (abs(b) > F(kFarImag));
        const I lanes = select(far, steps, I(int{kBiomorphUncolored}));
        for (int k = 0; k < kLanes; ++k)
            outcomes[done + k] = static_cast<std::uint8_t>(lanes.v[k]);
    }
    for (; done < count; ++done) {
        const BiomorphOrbit orbit = biomorphOrbit(real, imaginaries[done], cReal, cImaginary);
        outcomes[done] =
            orbit.isColored ? static_cast<std::uint8_t>(orbit.steps) : kBiomorphUncolored;
    }
}

} // namespace generators

GLIF_Biomorph::GLIF_Biomorph()
{
    _bNeedUpdateCashe = true;
}

const AttributeTable& GLIF_Biomorph::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Biomorph::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                               int width, int height,
                                                               const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    if (!size.isValid())
        return nullptr;
    readAttributes(attributes);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    return drawBiomorph(size.width, size.height, _dCReal, _dCImag, _iResolution);
}

PictureRef GLIF_Biomorph::makeSample(const Sampling& sampling, const Dictionary& attributes)
{
    readAttributes(attributes);
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(sampling.shown());
    if (!bitmap || !renewPrefetchBuffer(sampling.shown().pixels()))
        return nullptr;
    computeField(sampling, static_cast<float>(_dCReal), static_cast<float>(_dCImag), _iResolution);
    paintField(*bitmap);
    if (_bNeedUpdateCashe)
        paintStartsOutside(*bitmap);
    return pictureOverBackground(bitmap);
}

void GLIF_Biomorph::readAttributes(const Dictionary& attributes)
{
    // What a host that omits a key gets; the table above is what the editor starts with.
    _iResolution = std::max(attributes.intValue("GLIFResolution", 2), 1);
    _dCReal = 1.00003;
    _dCImag = 1.01828;
    // The imaginary part counts only beside a real part, and is then 0 if it is missing.
    if (attributes.contains("GLIFCReal")) {
        _dCReal = attributes.doubleValue("GLIFCReal", _dCReal);
        _dCImag = attributes.doubleValue("GLIFCImag", 0);
    }
}

PictureRef GLIF_Biomorph::drawBiomorph(int width, int height, double cReal, double cImag,
                                       int resolution)
{
    const PixelSize size = {width, height};
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    if (!bitmap || (_bNeedUpdateCashe && !renewPrefetchBuffer(size.pixels())))
        return nullptr;
    if (!_bNeedUpdateCashe) {
        paintField(*bitmap);
        return pictureOverBackground(bitmap);
    }
    return compute([&] {
        computeField(Sampling::all(size), static_cast<float>(cReal), static_cast<float>(cImag),
                     resolution);
        paintField(*bitmap);
        paintStartsOutside(*bitmap);
        return pictureOverBackground(bitmap);
    });
}

void GLIF_Biomorph::computeField(const Sampling& sampling, float cReal, float cImag, int resolution)
{
    const Blocks acrossBlocks(sampling.size.width, resolution);
    const Blocks downBlocks(sampling.size.height, resolution);
    const std::vector<BlockRun> columns = acrossBlocks.runs(sampling.columns);
    const std::vector<BlockRun> rows = downBlocks.runs(sampling.rows);
    std::vector<float> imaginaries;
    for (const BlockRun& run : rows)
        imaginaries.push_back(downBlocks.start(run.block));
    // By outcome; the infinity of a start outside the box among them.
    std::array<double, kBiomorphUncolored + 1> values;
    for (int steps = 0; steps < kBiomorphUncolored; ++steps)
        values[steps] = static_cast<float>(1.0 / steps);
    values[kBiomorphUncolored] = kUnsetValue;

    const std::size_t height = sampling.rows.size();
    double* field = _prefetchBuffer.get();
    foundation::ProgressSteps steps(std::ssize(columns));
    const auto computeColumns = [&](int first, int last) {
        std::vector<std::uint8_t> outcomes(rows.size());
        for (int i = first; i < last; ++i) {
            const BlockRun& run = columns[i];
            biomorphOrbits(outcomes.data(), imaginaries.data(), static_cast<int>(rows.size()),
                           acrossBlocks.start(run.block), cReal, cImag);
            double* column = field + run.begin * height;
            std::fill_n(column, height, kUnsetValue);
            for (std::size_t row = 0; row < rows.size(); ++row)
                std::fill(column + rows[row].begin, column + rows[row].end, values[outcomes[row]]);
            for (int copy = run.begin + 1; copy < run.end; ++copy)
                std::copy_n(column, height, field + copy * height);
        }
        steps.add(last - first);
    };
    imaging::parallelRows(0, static_cast<int>(columns.size()), 8, computeColumns);
    const int covered = columns.empty() ? 0 : columns.back().end;
    std::fill(field + covered * height, field + sampling.shown().pixels(), kUnsetValue);
}

// Orbits that start outside the box have taken no step when they stop. They are drawn in the colour
// of infinity when they are computed, and left out when they are coloured again. No picture is high
// enough for the imaginary part to colour them, so a column has only such starts or none.
void GLIF_Biomorph::paintStartsOutside(Bitmap& bitmap) const
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    std::uint32_t word = 0;
    computeColorToMem(word, kInfinity, _colorRangeMin, _colorRangeMax);
    const auto height = static_cast<std::size_t>(bitmap.height());
    std::vector<int> columns;
    for (int x = 0; x < bitmap.width(); ++x)
        if (_prefetchBuffer[x * height] == kInfinity)
            columns.push_back(x);
    const double* first = columns.empty() ? nullptr : &_prefetchBuffer[columns[0] * height];
    const auto rows = static_cast<int>(std::count(first, first + (first ? height : 0), kInfinity));
    for (int y = 0; y < rows; ++y)
        for (const int x : columns)
            bitmap.rowAs<std::uint32_t>(y)[x] = word;
}
