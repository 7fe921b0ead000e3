#include "generators/GLIF_SandGlass.h"

#include "generators/ColorSchemes.h"
#include "generators/FieldTiles.h"
#include "generators/Random.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cmath>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFFactor", 0.01f, 10.0f, 1.83f},
    {"GLIFShapesType", 0, 4, 2},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.0f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 1.0f},
};

// The fraction of a quotient as a value; 0 past the limit. At the corner of the quarter the
// quotient is no number, and neither is the value.
double foldQuotient(double quotient, float limit)
{
    const auto a = static_cast<float>(std::abs(quotient));
    const float kept = a > limit ? 0.0f : a;
    return (kept - std::trunc(kept)) * 255.0;
}

// The three tangents of the quotients. Two of them depend on a sum or difference only.
double tangentOfDifference(std::int64_t difference, float factor)
{
    return std::tan(difference / 100.0 * factor);
}
double tangentOfSum(std::int64_t sum)
{
    return std::tan(sum / 100.0);
}
double tangentOfProduct(std::int64_t product, float factor)
{
    return std::tan(product / 100.0 * factor / 200.0);
}

constexpr float kDifferenceLimit = 2.0f;
constexpr float kProductLimit = 3.5f;

constexpr bool isDrawn(int type)
{
    return type < 0 || type > 3;
}

// The values of a quarter, of any type that is not drawn. Most of the time goes into tangents;
// those of sums and differences are taken from tables.
class QuarterValues {
public:
    QuarterValues(int type, float factor, PixelSize quarter)
        : _type(type), _factor(factor), _height(quarter.height)
    {
        if (type >= 2)
            for (int sum = 0; sum < quarter.width + quarter.height; ++sum)
                _ofSums.push_back(tangentOfSum(sum));
        if (type == 2)
            for (int difference = -quarter.height; difference < quarter.width; ++difference)
                _ofDifferences.push_back(tangentOfDifference(difference, factor));
    }

    double at(int x, int y) const
    {
        if (_type == 2)
            return foldQuotient(_ofDifferences[x - y + _height] / _ofSums[x + y], kDifferenceLimit);
        if (_type == 3)
            return foldQuotient(tangentOfProduct(std::int64_t{x} * y, _factor) / _ofSums[x + y],
                                kProductLimit);
        return sandGlassValue(_type, x, y, _factor, 0);
    }

private:
    int _type;
    float _factor;
    int _height;
    std::vector<double> _ofSums, _ofDifferences;
};

// Places in the quarter of the columns or rows that are seen, without those in no quarter.
std::vector<int> placesInQuarter(const std::vector<int>& seen, int side)
{
    std::vector<int> places;
    for (const int at : seen)
        if (at < 2 * side)
            places.push_back(at < side ? side - 1 - at : at - side);
    return places;
}

} // namespace

namespace generators {

double sandGlassValue(int type, std::int64_t x, std::int64_t y, float factor, int drawn)
{
    switch (type) {
    case 0:
        return y == 0 ? 0 : truncToInt(static_cast<float>(x * x / y) * factor) % 256;
    case 1:
        return (std::sin(x * y / 10000.0 * factor) + 1.0) * 127.5;
    case 2:
        return foldQuotient(tangentOfDifference(x - y, factor) / tangentOfSum(x + y),
                            kDifferenceLimit);
    case 3:
        return foldQuotient(tangentOfProduct(x * y, factor) / tangentOfSum(x + y), kProductLimit);
    default: {
        const float rough = static_cast<float>(drawn % 20 - 10) * factor;
        return truncToInt(static_cast<float>((x + y) % 256) + rough) % 256;
    }
    }
}

} // namespace generators

GLIF_SandGlass::GLIF_SandGlass()
{
    _bNeedUpdateCashe = true;
}

const AttributeTable& GLIF_SandGlass::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_SandGlass::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                int width, int height,
                                                                const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    readAttributes(attributes);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    return sandGlassGeneratorWidthHeight(size.width, size.height);
}

template <class Put>
void GLIF_SandGlass::paintValues(PixelSize size, const Put& put) const
{
    const auto color = [&](std::uint32_t* words, const double* values, int count) {
        double positions[kTileRows];
        for (int y = 0; y < count; ++y)
            positions[y] = values[y] / 255.0;
        computeColorsToMem(words, positions, count, _colorRangeMin, _colorRangeMax);
    };
    forFieldTiles(_prefetchBuffer.get(), size.width, size.height, color, put);
}

PictureRef GLIF_SandGlass::makeSample(const Sampling& sampling, const Dictionary& attributes)
{
    readAttributes(attributes);
    const PixelSize quarter = {sampling.size.width / 2, sampling.size.height / 2};
    const std::vector<int> xs = placesInQuarter(sampling.columns, quarter.width);
    const std::vector<int> ys = placesInQuarter(sampling.rows, quarter.height);
    const PixelSize filled = {static_cast<int>(xs.size()), static_cast<int>(ys.size())};
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(sampling.shown());
    if (isDrawn(_shapesType) || !bitmap || !renewPrefetchBuffer(filled.pixels()))
        return nullptr;
    const QuarterValues values(_shapesType, _iFactor, quarter);
    imaging::parallelRows(0, filled.width, 8, [&](int first, int last) {
        for (int x = first; x < last; ++x)
            for (int y = 0; y < filled.height; ++y)
                _prefetchBuffer[x * ys.size() + y] = values.at(xs[x], ys[y]);
    });
    paintValues(filled, [&](int x, int y, const std::uint32_t* words, int count) {
        std::copy_n(words, count, bitmap->rowAs<std::uint32_t>(y) + x);
    });
    return drawing::Picture::fromBitmap(bitmap);
}

void GLIF_SandGlass::readAttributes(const Dictionary& attributes)
{
    // What a host that omits a key gets; the table above is what the editor starts with.
    _iFactor = attributes.floatValue("GLIFFactor", 1.0f);
    _shapesType = attributes.intValue("GLIFShapesType", 0);
}

// The last column of an odd width and the last row of an odd height are in no quarter and stay
// transparent.
PictureRef GLIF_SandGlass::sandGlassGeneratorWidthHeight(int width, int height)
{
    const std::shared_ptr<Bitmap> bitmap = makeBitmap({width, height});
    const PixelSize quarter = {width / 2, height / 2};
    if (!bitmap || (_bNeedUpdateCashe && !renewPrefetchBuffer(quarter.pixels())))
        return nullptr;
    if (_bNeedUpdateCashe)
        compute([&] { computeField(quarter); });
    paintQuarters(*bitmap, quarter);
    return drawing::Picture::fromBitmap(bitmap);
}

void GLIF_SandGlass::computeField(PixelSize quarter)
{
    const auto height = static_cast<std::size_t>(quarter.height);
    double* field = _prefetchBuffer.get();
    if (isDrawn(_shapesType)) {
        // Row by row: that is the order of the draws.
        for (int y = 0; y < quarter.height; ++y) {
            foundation::checkpoint();
            foundation::reportProgress(static_cast<double>(y) / quarter.height);
            for (int x = 0; x < quarter.width; ++x) {
                const int drawn = randomInt();
                field[x * height + y] = sandGlassValue(_shapesType, x, y, _iFactor, drawn);
            }
        }
        return;
    }

    const QuarterValues values(_shapesType, _iFactor, quarter);
    foundation::ProgressSteps steps(quarter.width);
    imaging::parallelRows(0, quarter.width, 8, [&](int first, int last) {
        for (int x = first; x < last; ++x)
            for (int y = 0; y < quarter.height; ++y)
                field[x * height + y] = values.at(x, y);
        steps.add(last - first);
    });
}

void GLIF_SandGlass::paintQuarters(Bitmap& bitmap, PixelSize quarter) const
{
    paintValues(quarter, [&](int x, int y, const std::uint32_t* words, int count) {
        for (const int row : {quarter.height + y, quarter.height - 1 - y}) {
            auto* middle = bitmap.rowAs<std::uint32_t>(row) + quarter.width;
            std::copy_n(words, count, middle + x);
            std::reverse_copy(words, words + count, middle - x - count);
        }
    });
}
