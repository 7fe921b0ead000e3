// The mean along a ray through each pixel, as if the camera had moved toward the centre.
//
// The plain sum takes hundreds of samples a pixel. Instead, all pixels of a small cell that is not
// too near the centre take as many as the cell's farthest corner does: then a step along the rays
// scales the whole cell by one factor, its rows come from pairs of rows and its columns lie at the
// same places in all of them. Of opaque bytes, whole numbers of 16 bits do that many at a time.
#include "platform/builtin/blur/ZoomBlur.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/ColumnMemory.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace builtin {

using namespace imaging;

namespace {

constexpr int kMostSamples = 256;

struct Zoom {
    Point center;
    float kappa;  // the logarithm of the zoom
    float length; // of the ray, as a part of the distance from the centre

    explicit Zoom(const Vector& c, double amount)
        : center{c.x, c.y}, kappa(static_cast<float>(amount)),
          length(static_cast<float>(std::abs(1 - std::exp(-amount))))
    {
    }

    Px operator()(const auto& image, const Coord& at) const
    {
        const Vec2 v = at - center;
        const F wanted = clamp(imaging::length(v) * F(length), 1.0f, F(kMostSamples));
        const I count = toInt(F(0.0f) - floor(F(0.0f) - wanted));
        int most = 1;
        for (int k = 0; k < kLanes; ++k)
            most = std::max(most, count.v[k]);
        const F step = F(-kappa) / toFloat(count);
        Px sum = transparent();
        for (int i = 0; i < most; ++i) {
            const Px p = image(center + v * exp(step * F(i + 0.5f)));
            sum = sum + select(I(i) < count, p, transparent());
        }
        return sum * (F(1.0f) / toFloat(count));
    }
};

// Bytes as planes with a margin of nothing, so that columns near the border need no care, and a row
// of nothing for those beyond it. Between any two rows lies their mean.
class BytePlanes {
public:
    // Of the part of the block that lies in the rectangle.
    BytePlanes(const PixelBlock& block, const IRect& needed, const RenderContext& context)
        : _rect(block.rect.intersected(needed)),
          // Neighbouring rows must not compete for the same lines of the cache.
          _stride((_rect.width() + 2 * kMargin + 127) / 128 * 128 + 64),
          _planeSize(_stride * (lastRow() + 1)),
          _memory(static_cast<std::size_t>(_planeSize) * 4 / sizeof(float) + 1)
    {
        if (!_memory)
            return;
        const std::vector<std::byte> nothing(std::size_t{4} * _rect.width());
        const auto pixels = [&](int y) {
            return y >= 0 && y < _rect.height() ? block.pixel(_rect.left, _rect.bottom + y)
                                                : nothing.data();
        };
        parallelRows(0, lastRow() + 1, 64, context.threaded(), [&](int first, int last) {
            for (int i = first; i < last; ++i) {
                // Twice the height, which is odd between rows; the last one is of nothing.
                const int twice = i == lastRow() ? -4 : i - 1;
                const std::byte *low = pixels(twice >> 1), *high = pixels((twice + 1) >> 1);
                for (int c = 0; c < 4; ++c)
                    fill(memory() + c * _planeSize + i * _stride, low + c, high + c);
            }
        });
    }

    explicit operator bool() const { return bool(_memory); }
    const IRect& rect() const { return _rect; }
    std::ptrdiff_t planeSize() const { return _planeSize; }

    // From column 0 of the rectangle's row of half that height above its bottom, in the plane of
    // red.
    const std::uint8_t* row(int twice) const
    {
        const bool present = twice >= -1 && twice < lastRow() - 1;
        const int i = present ? twice + 1 : lastRow();
        return reinterpret_cast<const std::uint8_t*>(_memory.data()) + i * _stride + kMargin;
    }
    // A column of the rectangle, or one in the margin from which only nothing is seen.
    int column(int x) const
    {
        return std::clamp(x - _rect.left, -kMargin, _rect.width() + kMargin - kWindow);
    }

    static constexpr int kWindow = 16; // that many columns are read from one

private:
    static constexpr int kMargin = 2 * kWindow;

    std::uint8_t* memory() { return reinterpret_cast<std::uint8_t*>(_memory.data()); }
    int lastRow() const { return 2 * _rect.height() + 1; }

    // Halves are rounded up and down in turns.
    void fill(std::uint8_t* row, const std::byte* low, const std::byte* high)
    {
        const int width = _rect.width();
        std::memset(row, 0, kMargin);
        std::memset(row + kMargin + width, 0, kMargin);
        for (int x = 0; x < width; ++x) {
            const int sum = static_cast<int>(low[4 * x]) + static_cast<int>(high[4 * x]);
            row[kMargin + x] = static_cast<std::uint8_t>((sum + (x & 1)) >> 1);
        }
    }

    IRect _rect;
    std::ptrdiff_t _stride, _planeSize;
    FloatBuffer _memory;
};

// Where 16 neighbouring pixels read a row at one step: of each one's two columns the places,
// counted from the first of its half, and the weights, in parts of kParts; the left one's in the
// low byte.
constexpr int kGroup = 16, kParts = 16;
struct Columns {
    int first[2];
    alignas(32) std::uint16_t places[kGroup], weights[kGroup];
};

// Adds the pixels' samples, in parts of kParts, each from the row of bytes that belongs to its row
// of sums, which are `stride` numbers apart.
void addSamples(const Columns& columns, const std::uint8_t* const* rows, int count,
                std::ptrdiff_t plane, std::uint16_t* sums, std::ptrdiff_t stride)
{
    const std::ptrdiff_t first = plane + columns.first[0], second = plane + columns.first[1];
#if defined(__AVX2__)
    const __m256i places = _mm256_load_si256(reinterpret_cast<const __m256i*>(columns.places));
    const __m256i weights = _mm256_load_si256(reinterpret_cast<const __m256i*>(columns.weights));
    const auto window = [](const std::uint8_t* p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    };
#pragma GCC unroll 4
    for (int y = 0; y < count; ++y) {
        const __m256i both = _mm256_inserti128_si256(
            _mm256_castsi128_si256(window(rows[y] + first)), window(rows[y] + second), 1);
        const __m256i samples = _mm256_maddubs_epi16(_mm256_shuffle_epi8(both, places), weights);
        auto* to = reinterpret_cast<__m256i*>(sums + y * stride);
        _mm256_storeu_si256(to, _mm256_add_epi16(_mm256_loadu_si256(to), samples));
    }
#else
    for (int y = 0; y < count; ++y)
        for (int k = 0; k < kGroup; ++k) {
            const std::uint8_t* p = rows[y] + (k < kGroup / 2 ? first : second);
            const int place = columns.places[k] & 255, weight = columns.weights[k];
            const int sample = p[place] * (weight & 255) + p[place + 1] * (weight >> 8);
            sums[y * stride + k] = static_cast<std::uint16_t>(sums[y * stride + k] + sample);
        }
#endif
}

// The zoom cell by cell.
class CellZoom : public Evaluator {
public:
    // The columns of a cell must find their places in one stretch of a row not much longer.
    static bool serves(const Vector& center, double kappa)
    {
        return std::abs(center.x) < 1e6 && std::abs(center.y) < 1e6 && std::exp(-kappa) < 1.8;
    }

    CellZoom(PixelBlockRef block, const IRect& extent, const IRect& region, const Vector& center,
             double kappa)
        : _block(std::move(block)), _extent(extent), _region(region), _center{center.x, center.y},
          _kappa(kappa), _plain(center, kappa)
    {
        // The fewest samples a pixel may have where others decide about their number: it shows as
        // the square of the widest gap between them, unless all have the most there are.
        const double gap = kappa * std::max(1.0, std::exp(-kappa)) / (1 - std::exp(-kappa));
        _fewest = static_cast<int>(std::min(64 * gap * gap, double{kMostSamples}));
        for (int n = 1; n <= kMostSamples; ++n)
            for (int i = 0; i < n; ++i)
                _factors.push_back(std::exp(-kappa * (i + 0.5) / n));
    }

    void row(const Span& span, const Strip& out) const override
    {
        constexpr int kNowhere = std::numeric_limits<int>::min();
        Band& band = _memory.of(span, [](Band& fresh) { fresh.bottom = kNowhere; });
        const int bottom = span.y & ~(kHeight - 1);
        if (band.bottom != bottom) {
            band.bottom = bottom;
            band.floats.resize(std::size_t{4} * kHeight * kStripWidth);
            const int firstRow = std::max(bottom, _region.bottom);
            const int lastRow = std::min(bottom + kHeight, _region.top);
            for (int x = span.x & ~(kWidth - 1); x < span.x + span.count; x += kWidth)
                fillCell(band, {x, firstRow, x + kWidth, lastRow}, span);
        }
        const int begin = span.x - span.anchor();
        float* const planes[] = {out.r, out.g, out.b, out.a};
        for (int c = 0; c < 4; ++c)
            std::copy_n(band.at(c, span.y - bottom) + begin, span.count, planes[c]);
    }

protected:
    static constexpr int kWidth = 128, kHeight = 16; // of a cell

    // The rows that one height of cells has in a strip.
    struct Band {
        int bottom;
        std::vector<float> floats;

        float* at(int channel, int row)
        {
            return floats.data() + (std::ptrdiff_t{channel} * kHeight + row) * kStripWidth;
        }
    };

    // The mean of as many samples in all pixels of the cell.
    virtual void fillShared(Band& band, const IRect& cell, int samples) const = 0;

    // The factors by which so many samples of a ray are nearer to the centre than its pixel.
    const double* factorsOf(int samples) const
    {
        return _factors.data() + samples * (samples - 1) / 2;
    }
    // Where the middle of a row or column reads at a step, from the middle of the first one.
    static double readAt(double center, int place, double factor)
    {
        return center + (place + 0.5 - center) * factor - 0.5;
    }

    PixelBlockRef _block;
    IRect _extent, _region;
    Point _center;
    double _kappa;

private:
    int samplesAt(double x, double y) const
    {
        const double length = std::abs(1 - std::exp(-_kappa)) * std::hypot(x, y);
        return static_cast<int>(std::clamp(std::ceil(length), 1.0, double{kMostSamples}));
    }

    void fillCell(Band& band, const IRect& cell, const Span& span) const
    {
        // The whole cell's nearest and farthest point, whatever part of it is wanted.
        const auto nearest = [](double low, double high) {
            return low > 0 ? low : high < 0 ? -high : 0;
        };
        const double left = cell.left - _center.x, low = band.bottom - _center.y;
        const double right = left + kWidth, high = low + kHeight;
        const int fewest = samplesAt(nearest(left, right), nearest(low, high));
        const int most = samplesAt(std::max(-left, right), std::max(-low, high));
        if (fewest >= _fewest)
            fillShared(band, cell, most);
        else
            detail::withSampler(*_block, _extent, [&](const auto& sampler) {
                fillPlainly(band, cell, span, sampler);
            });
    }

    // Every pixel by itself.
    void fillPlainly(Band& band, const IRect& cell, const Span& span, const auto& sampler) const
    {
        const int first = std::max(cell.left, span.x);
        const int last = std::min(cell.right, span.x + span.count);
        StripBuffer buffer;
        const Strip strip = buffer.strip();
        for (int y = cell.bottom; y < cell.top; ++y) {
            const Span part{first, y, last - first};
            for (int i = 0; i < part.count; i += kLanes)
                storePx(strip, i, _plain(sampler, pixelCenters(part, i)));
            const float* const planes[] = {strip.r, strip.g, strip.b, strip.a};
            for (int c = 0; c < 4; ++c)
                std::copy_n(planes[c], part.count,
                            band.at(c, y - band.bottom) + first - span.anchor());
        }
    }

    int _fewest;
    Zoom _plain;
    std::vector<double> _factors; // of all steps, for each number of them
    ColumnMemory<Band> _memory;
};

// Of opaque bytes.
class ByteZoom : public CellZoom {
public:
    static EvaluatorRef make(PixelBlockRef block, const IRect& extent, const IRect& region,
                             const IRect& needed, const Vector& center, double kappa,
                             const RenderContext& context)
    {
        BytePlanes planes(*block, needed, context);
        if (!planes || context.stopped())
            return nullptr;
        return std::make_shared<ByteZoom>(std::move(block), extent, region, std::move(planes),
                                          center, kappa);
    }

    ByteZoom(PixelBlockRef block, const IRect& extent, const IRect& region, BytePlanes planes,
             const Vector& center, double kappa)
        : CellZoom(std::move(block), extent, region, center, kappa), _planes(std::move(planes))
    {
    }

private:
    void fillShared(Band& band, const IRect& cell, int samples) const override
    {
        constexpr int kGroups = kWidth / kGroup;
        const double* factors = factorsOf(samples);
        const IRect whole{cell.left, band.bottom, cell.right, band.bottom + kHeight};
        const int channels = seesOnlyPixels(whole) ? 3 : 4;
        alignas(32) std::uint16_t sums[kHeight][4][kWidth] = {};
        alignas(32) std::uint32_t totals[kHeight][4][kWidth] = {};
        Columns columns[kGroups];
        const std::uint8_t* rows[kHeight];
        for (int i = 0; i < samples; ++i) {
            const std::int64_t factor = fixed(factors[i]);
            place(fixed(readAt(_center.x, cell.left, factors[i])), factor, i, columns);
            // Half rows are rounded up and down in turns as well, in an order of its own.
            const std::int64_t bottom =
                2 * fixed(readAt(_center.y, band.bottom, factors[i])) + (turns()[i] << 24);
            for (int y = cell.bottom; y < cell.top; ++y) {
                const std::int64_t twice = (bottom + 2 * factor * (y - band.bottom)) >> 32;
                rows[y - cell.bottom] =
                    _planes.row(static_cast<int>(twice) - 2 * _planes.rect().bottom);
            }
            for (int c = 0; c < channels; ++c)
                for (int g = 0; g < kGroups; ++g)
                    addSamples(columns[g], rows, cell.height(), c * _planes.planeSize(),
                               sums[0][c] + g * kGroup, sums[1][c] - sums[0][c]);
            // 16 bits hold the sum of so many steps.
            if ((i + 1) % (65535 / (255 * kParts)) == 0 || i + 1 == samples)
                for (int y = 0; y < cell.height(); ++y)
                    for (int c = 0; c < channels; ++c)
                        for (int x = 0; x < kWidth; ++x) {
                            totals[y][c][x] += sums[y][c][x];
                            sums[y][c][x] = 0;
                        }
        }
        const float scale = 1 / (255.0f * kParts * static_cast<float>(samples));
        const int begin = cell.left & (kStripWidth - 1);
        for (int y = cell.bottom; y < cell.top; ++y)
            for (int c = 0; c < 4; ++c) {
                float* out = band.at(c, y - band.bottom) + begin;
                if (c >= channels) {
                    std::fill_n(out, kWidth, 1.0f);
                    continue;
                }
                for (int x = 0; x < kWidth; ++x)
                    out[x] = static_cast<float>(totals[y - cell.bottom][c][x]) * scale;
            }
    }

    // Whether no sample of the cell reads beyond the picture's border.
    bool seesOnlyPixels(const IRect& cell) const
    {
        const double ends[] = {1, std::exp(-_kappa)};
        for (const double e : ends) {
            const Rect r = Rect::fromEdges(
                _center.x + (cell.left - _center.x) * e, _center.y + (cell.bottom - _center.y) * e,
                _center.x + (cell.right - _center.x) * e, _center.y + (cell.top - _center.y) * e);
            if (!_extent.contains(IRect::around(r).grown(1, 1)))
                return false;
        }
        return true;
    }

    // The numbers below 256 in the order of their bits reversed, halves at a time.
    static const std::array<std::int64_t, kMostSamples>& turns()
    {
        static constexpr auto kTurns = [] {
            std::array<std::int64_t, kMostSamples> all{};
            for (int i = 0; i < kMostSamples; ++i)
                for (int bit = 0; bit < 8; ++bit)
                    all[i] |= (i >> bit & 1) << (7 - bit);
            return all;
        }();
        return kTurns;
    }
    // With 32 binary places.
    static std::int64_t fixed(double v)
    {
        return static_cast<std::int64_t>(std::floor(v * 0x1p32));
    }

    // The columns of a cell's pixels at a step, the first of them, and the distance from one to the
    // next. Rounding them up and down in turns keeps the mean of all steps in place.
    void place(std::int64_t at, std::int64_t distance, int step, Columns* groups) const
    {
        constexpr unsigned kOne = 1 << 16;
        constexpr int kHalf = kGroup / 2;
        const unsigned turn = static_cast<unsigned>(step) * 0x9e3779b1u >> 20; // of kOne / kParts
        const auto increment = static_cast<unsigned>(distance >> 16);
        for (int x = 0; x < kWidth; x += kHalf) {
            Columns& columns = groups[x / kGroup];
            const int half = x / kHalf % 2;
            columns.first[half] = _planes.column(static_cast<int>(at >> 32));
            const unsigned start = static_cast<unsigned>(at >> 16) % kOne;
            for (unsigned k = 0; k < kHalf; ++k) {
                const unsigned position = start + k * increment;
                const unsigned place = position / kOne;
                const unsigned part = (position % kOne + turn) / (kOne / kParts);
                columns.places[half * kHalf + k] = static_cast<std::uint16_t>(place * 257 + 256);
                columns.weights[half * kHalf + k] = static_cast<std::uint16_t>(kParts + part * 255);
            }
            at += distance * kHalf;
        }
    }

    BytePlanes _planes;
};

// Of floats. The two rows of a sample are mixed first, over the stretch that all pixels of the
// cell's row read, and then its columns.
class FloatZoom : public CellZoom {
public:
    using CellZoom::CellZoom;

private:
    using Pixel = float __attribute__((vector_size(16)));

    // The steps of so many rows share the work of finding their columns; their sums and what they
    // read stay in the nearest cache.
    static constexpr int kRows = 8;
    // Of a stretch of a row: 128 columns up to 1.8 apart, and the neighbour of the last.
    static constexpr int kLongest = 256;

    void fillShared(Band& band, const IRect& cell, int samples) const override
    {
        const double* factors = factorsOf(samples);
        for (int bottom = cell.bottom; bottom < cell.top; bottom += kRows) {
            const int rows = std::min(kRows, cell.top - bottom);
            alignas(64) Pixel sums[kRows][kWidth] = {};
            for (int i = 0; i < samples; ++i)
                addStep(sums, {cell.left, bottom, cell.right, bottom + rows}, factors[i]);
            const float scale = 1 / static_cast<float>(samples);
            for (int y = 0; y < rows; ++y)
                for (int c = 0; c < 4; ++c) {
                    float* out =
                        band.at(c, bottom + y - band.bottom) + (cell.left & (kStripWidth - 1));
                    for (int x = 0; x < kWidth; ++x)
                        out[x] = sums[y][x][c] * scale;
                }
        }
    }

    void addStep(Pixel (*sums)[kWidth], const IRect& cell, double factor) const
    {
        const double start = readAt(_center.x, cell.left, factor);
        const double first = std::floor(start);
        // Places with 24 binary places, from the first column on.
        constexpr double kOne = 1 << 24;
        const auto at = static_cast<std::uint32_t>((start - first) * kOne);
        const auto increment = static_cast<std::uint32_t>(factor * kOne);
        std::uint32_t columns[kWidth];
        float weights[kWidth];
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const std::uint32_t place = at + x * increment;
            columns[x] = place >> 24;
            weights[x] = static_cast<float>(static_cast<int>(place & 0xffffff)) * 0x1p-24f;
        }
        const int count = static_cast<int>(columns[kWidth - 1]) + 2;
        for (int y = cell.bottom; y < cell.top; ++y) {
            alignas(64) Pixel mixed[kLongest];
            const double height = readAt(_center.y, y, factor);
            const double low = std::floor(height);
            if (!mixRows(mixed, toPlace(first), count, toPlace(low),
                         static_cast<float>(height - low)))
                continue;
            Pixel* sum = sums[y - cell.bottom];
            for (int x = 0; x < kWidth; ++x) {
                const Pixel left = mixed[columns[x]], right = mixed[columns[x] + 1];
                sum[x] += left + (right - left) * weights[x];
            }
        }
    }

    // Kept off the ends of whole numbers; nothing is seen from there.
    static int toPlace(double v) { return static_cast<int>(std::clamp(v, -1.5e9, 1.5e9)); }

    // Columns from the first on, between the row y and the one above. False when there are none.
    bool mixRows(Pixel* to, int first, int count, int y, float above) const
    {
        const IRect& there = _block->rect;
        const int begin = std::max(first, there.left), end = std::min(first + count, there.right);
        const auto isRow = [&](int row) { return row >= there.bottom && row < there.top; };
        if (begin >= end || !(isRow(y) || isRow(y + 1)))
            return false;
        static constexpr float kNothing[4 * kLongest] = {};
        const auto rowAt = [&](int row) {
            return isRow(row) ? reinterpret_cast<const float*>(_block->pixel(begin, row))
                              : kNothing;
        };
        const float *low = rowAt(y), *high = rowAt(y + 1);
        auto* out = reinterpret_cast<float*>(to);
        std::fill_n(out, 4 * (begin - first), 0.0f);
        std::fill(out + 4 * (end - first), out + 4 * count, 0.0f);
        out += 4 * (begin - first);
        for (int i = 0; i < 4 * (end - begin); ++i)
            out[i] = low[i] + (high[i] - low[i]) * above;
        return true;
    }
};

// A rectangle and what becomes of it when it is scaled about the centre.
Rect swept(const Rect& r, const Vector& center, double scale)
{
    const auto low = [&](double a, double c) { return std::min(a, c + (a - c) * scale); };
    const auto high = [&](double a, double c) { return std::max(a, c + (a - c) * scale); };
    return Rect::fromEdges(low(r.x, center.x), low(r.y, center.y), high(r.right(), center.x),
                           high(r.top(), center.y));
}

class ZoomNode : public Node {
public:
    ZoomNode(Image input, const Vector& center, double kappa, const IRect& extent)
        : Node(extent), _input(std::move(input)), _center(center), _kappa(kappa),
          _plain(warp(_input, extent.rect(),
                      Reach::of([=](const Rect& r) { return swept(r, center, std::exp(-kappa)); }),
                      Zoom(center, kappa)))
    {
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        if (!CellZoom::serves(_center, _kappa))
            return _plain.node()->prepare(region, context);
        const IRect needed =
            IRect::around(swept(region.rect(), _center, std::exp(-_kappa))).grown(1, 1);
        const IRect& extent = _input.node()->extent();
        const PixelBlockRef block = context.pixels(_input, needed);
        if (!block || block->rect.isEmpty())
            return block ? context.evaluator({}, region) : nullptr;
        if (block->format == PixelBlock::Format::OpaqueBytes)
            return ByteZoom::make(block, extent, region, needed, _center, _kappa, context);
        return std::make_shared<FloatZoom>(block, extent, region, _center, _kappa);
    }

private:
    Image _input;
    Vector _center;
    double _kappa;
    Image _plain;
};

} // namespace

void ZoomBlur::initialize(FilterRegistry& registry)
{
    using T = ZoomBlur;
    add<T>(registry, "CIZoomBlur", "Zoom Blur", {"Blur", "StillImage", "Video", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputAmount", &T::inputAmount, "Amount", distance().slider(0, 200).identity(0)},
           });
}

Image ZoomBlur::outputImage() const
{
    const double amount = inputAmount == inputAmount ? inputAmount / 100 : 0;
    const double kappa = std::clamp(amount, -10.0, 10.0);
    if (!inputImage || kappa == 0 || inputImage.extent().isEmpty())
        return inputImage;
    const Rect extent = inputImage.extent().isInfinite()
                            ? Rect::infinite()
                            : swept(inputImage.extent(), inputCenter, std::exp(kappa));
    return Image(std::make_shared<ZoomNode>(inputImage, inputCenter, kappa, IRect::around(extent)));
}

} // namespace builtin
