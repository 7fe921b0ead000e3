#include "generators/GLIF_Plasma.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFSmoothness", 0, 10, 5},
    {"GLIFResolution", 1, 20, 1},
    {"GLIFShapesType", 0, 3, 0},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.0f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.28f},
};

// Larger blocks are drawn as rectangles instead of being kept in a field.
constexpr int kLargestBlockInField = 999;

// Quarters of this part of each side are counted for the progress.
constexpr float kReportedSide = 64;

} // namespace

GLIF_Plasma::GLIF_Plasma()
{
    _bNeedUpdateCashe = true;
}

const AttributeTable& GLIF_Plasma::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Plasma::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                             int height,
                                                             const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    if (!size.isValid())
        return nullptr;
    readAttributes(attributes);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    return _shapesType < 2 ? plasmaGenerator(reference, size.width, size.height)
                           : plasmaSineGeneratorWidthHeight(reference, size.width, size.height);
}

// Midpoints are displaced by draws in an order that is the whole picture's.
PictureRef GLIF_Plasma::makeSample(const Sampling& sampling, const Dictionary& attributes)
{
    readAttributes(attributes);
    _dResolution = std::max(_dResolution, 1);
    if (_shapesType < 2 || _dResolution > kLargestBlockInField)
        return nullptr;
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(sampling.shown());
    if (!bitmap || !renewPrefetchBuffer(sampling.shown().pixels()))
        return nullptr;
    const auto [p2, p3, p4] = drawSineWaves();
    computeSineField(1, p2, p3, p4, sampling);
    paintField(*bitmap);
    return drawing::Picture::fromBitmap(bitmap);
}

void GLIF_Plasma::readAttributes(const Dictionary& attributes)
{
    // What a host that omits a key gets; the table above is what the editor starts with.
    _dResolution = attributes.intValue("GLIFResolution", 5);
    _iSmoothness = attributes.intValue("GLIFSmoothness", 3);
    _shapesType = attributes.intValue("GLIFShapesType", 0);
}

PictureRef GLIF_Plasma::plasmaGenerator(const PictureRef& reference, int width, int height)
{
    const PixelSize size = pictureSize(reference, width, height);
    // Drawn although a field that is only coloured again has no use for them.
    const float c1 = randomUnit();
    const float c2 = randomUnit();
    const float c3 = randomUnit();
    const float c4 = randomUnit();
    _dResolution = std::max(_dResolution, 1);
    _quartersDone = 0;

    const auto w = static_cast<float>(size.width), h = static_cast<float>(size.height);
    if (_dResolution > kLargestBlockInField)
        return renderBitmap(
            size, [&](Canvas& canvas) { divideGrid(0, 0, w, h, c1, c2, c3, c4, w, h, &canvas); });

    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    if (!bitmap || (_bNeedUpdateCashe && !renewPrefetchBuffer(size.pixels())))
        return nullptr;
    if (_bNeedUpdateCashe)
        compute([&] { divideGrid(0, 0, w, h, c1, c2, c3, c4, w, h, nullptr); });
    paintField(*bitmap);
    return drawing::Picture::fromBitmap(bitmap);
}

// One undivided cell, in the mean of its corners.
inline void GLIF_Plasma::fillCell(float x, float y, float c1, float c2, float c3, float c4,
                                  float totalWidth, float totalHeight, Canvas* canvas)
{
    const float average = (c1 + c2 + c3 + c4) * 0.25f;
    // Neither is negative, nor beyond the largest side of a picture.
    const auto xi = static_cast<int>(x), yi = static_cast<int>(y);
    if (canvas) {
        canvas->setColor(computeColor(average, _colorRangeMin, _colorRangeMax));
        // Cut where no picture reaches, so that no block is too large to be drawn.
        const float side = std::min(static_cast<float>(_dResolution) + 0.5f,
                                    static_cast<float>(Bitmap::kMaximumSide));
        canvas->fillRect({static_cast<double>(xi), static_cast<double>(yi), side, side});
        return;
    }
    const auto height = static_cast<std::size_t>(totalHeight);
    double* column = &_prefetchBuffer[xi * height];
    if (_dResolution < 2) {
        column[yi] = average;
        return;
    }
    // Blocks reach over their cells' ends; later ones cover them.
    const int xEnd = truncToInt(std::min<double>(x + (_dResolution + 0.5), totalWidth));
    const int yEnd = truncToInt(std::min<double>(y + (_dResolution + 0.5), totalHeight));
    for (int left = xi; left < xEnd; ++left, column += height)
        std::fill(column + yi, column + yEnd, average);
}

// Corner values c1 at (x, y), c2 at (x + w, y), c3 at (x + w, y + h), c4 at (x, y + h). Each level
// draws its own displacement before its quarters do, depth first; that order is the picture. It is
// also what keeps the work on one thread. Without a canvas the values go to the field.
void GLIF_Plasma::divideGrid(float x, float y, float w, float h, float c1, float c2, float c3,
                             float c4, float totalWidth, float totalHeight, Canvas* canvas)
{
    const auto limit = static_cast<float>(_dResolution);
    if (!(w > limit || h > limit))
        return fillCell(x, y, c1, c2, c3, c4, totalWidth, totalHeight, canvas);

    if (w * kReportedSide <= totalWidth && w * (2 * kReportedSide) > totalWidth) {
        foundation::checkpoint();
        foundation::reportProgress(_quartersDone++ / (kReportedSide * kReportedSide));
    }
    const float nw = w * 0.5f;
    const float nh = h * 0.5f;
    const float average = (c1 + c2 + c3 + c4) * 0.25f;
    const float displaced = average + displace(nw + nh, totalWidth, totalHeight);
    const float mid = displaced < 0 ? 0 : displaced > 1 ? 1 : displaced;
    const float e1 = (c1 + c2) * 0.5f;
    const float e2 = (c2 + c3) * 0.5f;
    const float e3 = (c3 + c4) * 0.5f;
    const float e4 = (c4 + c1) * 0.5f;
    const auto quarter = [&](float left, float bottom, float q1, float q2, float q3, float q4) {
        // Three of four calls would only fill a cell: do it here.
        if (nw > limit || nh > limit)
            divideGrid(left, bottom, nw, nh, q1, q2, q3, q4, totalWidth, totalHeight, canvas);
        else
            fillCell(left, bottom, q1, q2, q3, q4, totalWidth, totalHeight, canvas);
    };
    quarter(x, y, c1, e1, mid, e4);
    quarter(x + nw, y, e1, c2, e2, mid);
    quarter(x + nw, y + nh, mid, e2, c3, e3);
    quarter(x, y + nh, e4, mid, e3, c4);
}

float GLIF_Plasma::displace(float num, float totalWidth, float totalHeight) const
{
    const auto smoothness = static_cast<float>(_iSmoothness);
    if (_shapesType == 0) {
        const float max = smoothness * (num / (totalWidth + totalHeight));
        const float u = randomUnit();
        return (u - 0.5f) * max;
    }
    if (_shapesType == 1) {
        const float k = num / (totalWidth + totalHeight) * smoothness;
        const auto phase = static_cast<float>(k * (2 * std::numbers::pi));
        const float u1 = randomUnit();
        const float u2 = randomUnit();
        const float angle = u2 - 0.5f + phase;
        return static_cast<float>((u1 - 0.5f) * std::sin(static_cast<double>(angle)));
    }
    return 0;
}

PictureRef GLIF_Plasma::plasmaSineGeneratorWidthHeight(const PictureRef& reference, int width,
                                                       int height)
{
    const PixelSize size = pictureSize(reference, width, height);
    _dResolution = std::max(_dResolution, 1);
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    const bool inField = _dResolution <= kLargestBlockInField;
    if (!bitmap || (inField && _bNeedUpdateCashe && !renewPrefetchBuffer(size.pixels())))
        return nullptr;
    if (!_bNeedUpdateCashe && inField) {
        paintField(*bitmap);
        return drawing::Picture::fromBitmap(bitmap);
    }

    const auto [p2, p3, p4] = drawSineWaves();
    // Blocks too large for the field are not drawn at all: the picture is transparent.
    if (inField)
        compute([&] {
            divideSinePlasmaA2A3A4WidthHeightBitmap(1, p2, p3, p4, size.width, size.height,
                                                    *bitmap);
        });
    return drawing::Picture::fromBitmap(bitmap);
}

// Fills the two tables, and draws where the waves begin in them.
std::array<int, 3> GLIF_Plasma::drawSineWaves()
{
    const int r1 = randomInt();
    const int r2 = randomInt();
    const int r3 = randomInt();
    for (int k = 0; k < 512; ++k) {
        const double t = 0.01227184630308513 * k;
        const double wave = std::sin(t * static_cast<double>(_iSmoothness));
        SIN[k] = truncToInt((wave + std::sin(2 * t)) * 64.0 + 128.0);
        COS[k] = truncToInt((wave + std::sin(t * -2.0)) * 64.0 + 128.0);
    }
    return {r1 % 255 + 1, r2 % 255 - 1, r3 % 255 - 1};
}

void GLIF_Plasma::divideSinePlasmaA2A3A4WidthHeightBitmap(int p1, int p2, int p3, int p4, int width,
                                                          int height, Bitmap& bitmap)
{
    computeSineField(p1, p2, p3, p4, Sampling::all({width, height}));
    paintField(bitmap);
}

// Blocks are as wide as the resolution, but rows advance by one and cover all but the first row of
// the blocks above: the picture is blocky along the rows and smooth down the columns. So each row
// keeps exactly what it computes itself, and the rows do not depend on each other.
void GLIF_Plasma::computeSineField(int p1, int p2, int p3, int p4, const Sampling& sampling)
{
    const auto sine = [this](int index) { return SIN[index & 511]; };
    const auto cosine = [this](int index) { return COS[index & 511]; };
    // Five table values make up a sum from -512 to 768; the division is done once for each sum.
    constexpr int kLowest = -512, kHighest = 768;
    std::array<double, kHighest - kLowest + 1> values;
    for (int sum = kLowest; sum <= kHighest; ++sum) {
        const auto value = static_cast<float>((sum + 200) / 760.0);
        values[sum - kLowest] = std::clamp(value, 0.0f, 1.0f);
    }

    const std::vector<BlockRun> columns = blockRuns(sampling.columns, _dResolution);
    const std::vector<int>& rows = sampling.rows;
    const std::size_t height = rows.size();
    // Strips of rows, so that each column of the field is written in whole cache lines.
    constexpr int kStrip = 64;
    const auto computeStrip = [&](int top, int bottom) {
        int u[kStrip], v[kStrip], base[kStrip];
        for (int y = top; y < bottom; ++y) {
            // Three forward and two back from row to row.
            const int j = (p1 + 3 * rows[y]) & 511;
            const int i = (p2 - 2 * rows[y]) & 511;
            u[y - top] = i + p3;
            v[y - top] = p4 - i;
            base[y - top] = cosine(j) + cosine(i) - sine(j + i);
        }
        for (const BlockRun& run : columns) {
            // And from block to block.
            const int on = (run.block + 1) * _dResolution;
            double* column = &_prefetchBuffer[run.begin * height];
            for (int y = top; y < bottom; ++y) {
                const int sum = sine(u[y - top] + 2 * on) + base[y - top] - cosine(v[y - top] - on);
                column[y] = values[sum - kLowest];
            }
            for (int copy = run.begin + 1; copy < run.end; ++copy)
                std::copy(column + top, column + bottom, &_prefetchBuffer[copy * height + top]);
        }
    };
    const int rowCount = static_cast<int>(rows.size());
    const int strips = (rowCount + kStrip - 1) / kStrip;
    foundation::ProgressSteps steps(strips);
    imaging::parallelRows(0, strips, 1, [&](int first, int last) {
        for (int strip = first; strip < last; ++strip)
            computeStrip(strip * kStrip, std::min(rowCount, (strip + 1) * kStrip));
        steps.add(last - first);
    });
}
