// Separable resampling, a few rows of premultiplied floats at a time.
#include "platform/drawing/Scaling.h"

#include "platform/foundation/Work.h"
#include "platform/imaging/BufferPool.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace drawing {

using imaging::Bitmap;
using imaging::PixelFormat;

namespace {

using Pixel = float __attribute__((vector_size(16), aligned(16)));

// Which source pixels, along one axis, make a new pixel and with which weights.
class Axis {
public:
    struct Taps {
        int first = 0;
        int count = 0;           // 0 where the source does not reach
        std::size_t weights = 0; // index of the first one
        float covered = 0;       // by the source
    };

    // The source's pixels lie on start … start + length of the `to` new ones.
    Axis(int from, int to, double start, double length)
    {
        _taps.reserve(to);
        const double ratio = from / length;
        for (int i = 0; i < to; ++i) {
            const double covered =
                std::min<double>(i + 1, start + length) - std::max<double>(i, start);
            if (!(covered > 0)) {
                _taps.push_back({});
                continue;
            }
            if (length < from)
                addAverage((i - start) * ratio, (i + 1 - start) * ratio, from);
            else
                addLinear((i + 0.5 - start) * ratio - 0.5, from);
            _taps.back().covered = static_cast<float>(std::min(1.0, covered));
        }
    }

    const Taps& operator[](int i) const { return _taps[i]; }
    const float* weights(const Taps& taps) const { return _weights.data() + taps.weights; }

private:
    void addAverage(double low, double high, int from)
    {
        low = std::max(0.0, low);
        high = std::min<double>(high, from);
        const int first = std::min(static_cast<int>(low), from - 1);
        const int last = std::clamp(static_cast<int>(std::ceil(high)), first + 1, from);
        _taps.push_back({first, last - first, _weights.size(), 1});
        for (int j = first; j < last; ++j) {
            const double covered = std::min<double>(high, j + 1) - std::max<double>(low, j);
            _weights.push_back(static_cast<float>(std::max(0.0, covered) / (high - low)));
        }
    }

    void addLinear(double center, int from)
    {
        const double at = std::clamp<double>(center, 0, from - 1);
        const int first = static_cast<int>(at);
        const double part = at - first;
        _taps.push_back({first, part > 0 ? 2 : 1, _weights.size(), 1});
        _weights.push_back(static_cast<float>(1 - part));
        if (part > 0)
            _weights.push_back(static_cast<float>(part));
    }

    std::vector<Taps> _taps;
    std::vector<float> _weights;
};

template <class Integer>
void unpack(const Integer* from, Pixel* to, int width)
{
    constexpr float kFull = std::numeric_limits<Integer>::max();
    for (int x = 0; x < width; ++x, from += 4) {
        const float alpha = from[3] / kFull, scale = alpha / kFull;
        to[x] = Pixel{from[0] * scale, from[1] * scale, from[2] * scale, alpha};
    }
}

template <class Integer>
void pack(const Pixel* from, Integer* to, int width)
{
    constexpr float kFull = std::numeric_limits<Integer>::max();
    const auto whole = [](float v) {
        return static_cast<Integer>(std::clamp(v, 0.0f, 1.0f) * kFull + 0.5f);
    };
    for (int x = 0; x < width; ++x, to += 4) {
        const float alpha = from[x][3];
        const float scale = alpha > 0 ? 1 / alpha : 0;
        for (int i = 0; i < 3; ++i)
            to[i] = whole(from[x][i] * scale);
        to[3] = whole(alpha);
    }
}

void readRow(const Bitmap& bitmap, int y, Pixel* to)
{
    switch (bitmap.format()) {
    case PixelFormat::Rgba8:
        unpack(bitmap.rowAs<std::uint8_t>(y), to, bitmap.width());
        break;
    case PixelFormat::Rgba16:
        unpack(bitmap.rowAs<std::uint16_t>(y), to, bitmap.width());
        break;
    case PixelFormat::RgbaF:
        std::memcpy(to, bitmap.row(y), bitmap.width() * sizeof(Pixel));
        break;
    }
}

void writeRow(const Pixel* from, Bitmap& bitmap, int y)
{
    switch (bitmap.format()) {
    case PixelFormat::Rgba8:
        pack(from, bitmap.rowAs<std::uint8_t>(y), bitmap.width());
        break;
    case PixelFormat::Rgba16:
        pack(from, bitmap.rowAs<std::uint16_t>(y), bitmap.width());
        break;
    case PixelFormat::RgbaF:
        std::memcpy(bitmap.row(y), from, bitmap.width() * sizeof(Pixel));
        break;
    }
}

// The source on the part of the target that the axes say, the background elsewhere.
imaging::BitmapRef resampled(const Bitmap& source, int width, int height, const Axis& horizontal,
                             const Axis& vertical, Pixel background)
{
    std::shared_ptr<Bitmap> target = Bitmap::make(width, height, source.format());
    // One row as read, the two rows last made narrower or wider, and one sum.
    const std::size_t sourceRow = 4 * static_cast<std::size_t>(source.width());
    const std::size_t targetRow = 4 * static_cast<std::size_t>(target ? width : 0);
    imaging::FloatBuffer memory(sourceRow + 3 * targetRow);
    if (!target || !memory)
        return nullptr;
    Pixel* read = reinterpret_cast<Pixel*>(memory.data());
    Pixel* across[] = {read + source.width(), read + source.width() + width};
    Pixel* sum = across[1] + width;
    int acrossRow[] = {-1, -1};

    const auto rowAcross = [&](int y) -> const Pixel* {
        const int slot = y % 2;
        if (acrossRow[slot] == y)
            return across[slot];
        acrossRow[slot] = y;
        readRow(source, y, read);
        for (int x = 0; x < width; ++x) {
            const Axis::Taps& taps = horizontal[x];
            const float* weight = horizontal.weights(taps);
            Pixel p = {};
            if (taps.count > 0)
                p = read[taps.first] * weight[0];
            for (int i = 1; i < taps.count; ++i)
                p += read[taps.first + i] * weight[i];
            across[slot][x] = p;
        }
        return across[slot];
    };
    for (int y = 0; y < height; ++y) {
        foundation::checkpoint();
        const Axis::Taps& taps = vertical[y];
        const float* weight = vertical.weights(taps);
        for (int i = 0; i < taps.count; ++i) {
            const Pixel* row = rowAcross(taps.first + i);
            for (int x = 0; x < width; ++x)
                sum[x] = i == 0 ? row[x] * weight[i] : sum[x] + row[x] * weight[i];
        }
        for (int x = 0; x < width; ++x)
            if (const float covered = taps.covered * horizontal[x].covered; !(covered > 0))
                sum[x] = background;
            else if (covered < 1)
                sum[x] = sum[x] * covered + background * (1 - covered);
        writeRow(sum, *target, y);
    }
    return target;
}

bool canBeMade(int width, int height)
{
    return width >= 1 && height >= 1 && width <= Bitmap::kMaximumSide &&
           height <= Bitmap::kMaximumSide;
}

} // namespace

imaging::BitmapRef scaledBitmap(const Bitmap& source, int width, int height)
{
    if (!canBeMade(width, height))
        return nullptr;
    return resampled(source, width, height, {source.width(), width, 0, double(width)},
                     {source.height(), height, 0, double(height)}, Pixel{});
}

imaging::BitmapRef bitmapOnWhite(const Bitmap& source, int width, int height,
                                 const foundation::Rect& place)
{
    if (!canBeMade(width, height) || !(place.width > 0) || !(place.height > 0))
        return nullptr;
    return resampled(source, width, height, {source.width(), width, place.x, place.width},
                     {source.height(), height, height - place.y - place.height, place.height},
                     Pixel{1, 1, 1, 1});
}

} // namespace drawing
