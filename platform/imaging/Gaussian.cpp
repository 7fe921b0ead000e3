// The Gaussian blur, in the coarsest resolution that does not show.
//
// Level by level the picture is halved with the binomial kernel 1-4-6-4-1 as long as the standard
// deviation stays above 1.6 pixels of the next level; there a short separable sum finishes the
// blur, and a cubic B-spline brings it back. The weights of the sum are those with which the three
// together come closest to the Gaussian. All grids are anchored to the plane, so that a pixel comes
// out the same whatever region is asked for.
#include "platform/imaging/KeptRows.h"
#include "platform/imaging/Kernel.h"
#include "platform/imaging/Words.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace imaging {

namespace {

constexpr double kMaximumSigma = 10'000;
constexpr double kIdentityBelow = 0.1;
// Of the finest level at which the plain sum runs.
constexpr double kCoarsestSigma = 1.6;

int floorDiv(int a, int b)
{
    return a >= 0 ? a / b : -((-a + b - 1) / b);
}

// A grid of interleaved colours; sample (i, j) of level l stands on pixel (i·2^l, j·2^l).
struct Grid {
    IRect rect;
    std::ptrdiff_t floatsPerRow = 0;
    FloatBuffer values;

    static Grid make(const IRect& rect)
    {
        Grid g;
        g.rect = rect;
        // Sums write whole blocks of lanes, so a row has room for them.
        g.floatsPerRow = (std::ptrdiff_t{4} * rect.width() + 63) / 32 * 32;
        g.values = FloatBuffer(static_cast<std::size_t>(g.floatsPerRow) * rect.height());
        return g;
    }
    float* row(int y) { return values.data() + (y - rect.bottom) * floatsPerRow; }
    const float* row(int y) const { return values.data() + (y - rect.bottom) * floatsPerRow; }
};

// Four-channel samples [left, right) of a row that has [sourceLeft, sourceRight): what lies beyond
// is 0 or repeats the row's ends.
template <class T>
void padRow(const T* source, int sourceLeft, int sourceRight, int left, int right, Border border,
            T* out)
{
    const int first = std::clamp(sourceLeft, left, right);
    const int last = std::clamp(sourceRight, first, right);
    const T zero[4] = {};
    const bool clamped = border == Border::Clamped;
    const T* before = clamped ? source : zero;
    const T* after = clamped ? source + std::ptrdiff_t{4} * (sourceRight - 1 - sourceLeft) : zero;
    const auto at = [&](int x) { return out + std::ptrdiff_t{4} * (x - left); };
    for (int x = left; x < first; ++x)
        std::copy_n(before, 4, at(x));
    if (last > first)
        std::copy_n(source + std::ptrdiff_t{4} * (first - sourceLeft), 4 * (last - first),
                    at(first));
    for (int x = last; x < right; ++x)
        std::copy_n(after, 4, at(x));
}

// Reads rows of the level below over any range: what lies beyond it is transparent or repeats the
// border.
class GridReader {
public:
    GridReader(const Grid& grid, Border border) : _grid(grid), _border(border) {}

    // Samples [left, right) of row y: the grid's own where it has them, else a padded copy in
    // scratch. Null for a row of nothing but transparency.
    const float* row(int y, int left, int right, std::vector<float>& scratch) const
    {
        const IRect& r = _grid.rect;
        if (y < r.bottom || y >= r.top) {
            if (_border == Border::Transparent)
                return nullptr;
            y = std::clamp(y, r.bottom, r.top - 1);
        }
        const float* source = _grid.row(y);
        if (left >= r.left && right <= r.right)
            return source + std::ptrdiff_t{4} * (left - r.left);
        scratch.resize(std::size_t{4} * (right - left) + 64);
        padRow(source, r.left, r.right, left, right, _border, scratch.data());
        return scratch.data();
    }

private:
    const Grid& _grid;
    Border _border;
};

// Interleaved floats of part of a block's row.
void toFloats(const PixelBlock& block, int x, int count, int y, float* out)
{
    const std::byte* p = block.pixel(x, y);
    if (block.format == PixelBlock::Format::OpaqueBytes) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(p);
        for (int i = 0; i < 4 * count; ++i)
            out[i] = static_cast<float>(bytes[i]) * (1 / 255.f);
    } else {
        std::memcpy(out, p, std::size_t{16} * count);
    }
}

// The samples of the next level up to the first on each side whose five pixels all lie on or beyond
// the border: all further ones are alike.
IRect halvedBounds(const IRect& r)
{
    return {floorDiv(r.left - 2, 2), floorDiv(r.bottom - 2, 2), floorDiv(r.right + 2, 2) + 1,
            floorDiv(r.top + 2, 2) + 1};
}

// The samples of the level below that a range of samples is made of.
IRect doubledReach(const IRect& r)
{
    return {2 * r.left - 2, 2 * r.bottom - 2, 2 * (r.right - 1) + 3, 2 * (r.top - 1) + 3};
}

// Sums five rows 1-4-6-4-1; a null row is transparent.
void sumRows(const std::array<const float*, 5>& q, int count, float* out)
{
    if (std::any_of(q.begin(), q.end(), [](const float* p) { return !p; })) {
        constexpr float k[5] = {1 / 16.f, 4 / 16.f, 6 / 16.f, 4 / 16.f, 1 / 16.f};
        std::fill_n(out, count, 0.0f);
        for (int j = 0; j < 5; ++j)
            if (q[j])
                for (int i = 0; i < count; ++i)
                    out[i] += k[j] * q[j][i];
        return;
    }
    const float *a = q[0], *b = q[1], *c = q[2], *d = q[3], *e = q[4];
    for (int i = 0; i < count; ++i)
        out[i] = (a[i] + e[i]) * (1 / 16.f) + (b[i] + d[i]) * (4 / 16.f) + c[i] * (6 / 16.f);
}

// Halves one summed row: sample x of the result stands on sample 2x of a row that begins at 2·left
// − 2.
void halveRow(const float* sums, int count, float* out)
{
    for (int x = 0; x < count; ++x) {
        const float* p = sums + std::ptrdiff_t{8} * x;
        float* d = out + std::ptrdiff_t{4} * x;
        for (int c = 0; c < 4; ++c)
            d[c] = (p[c] + p[16 + c]) * (1 / 16.f) + (p[4 + c] + p[12 + c]) * (4 / 16.f) +
                   p[8 + c] * (6 / 16.f);
    }
}

Grid halved(const Grid& fine, const IRect& rect, Border border, const RenderContext& context)
{
    Grid coarse = Grid::make(rect);
    if (!coarse.values)
        return coarse;
    const GridReader reader(fine, border);
    parallelRows(rect.bottom, rect.top, 16, context.threaded(), [&](int first, int last) {
        std::vector<float> padded[5];
        std::vector<float> sums(std::size_t{8} * rect.width() + 16);
        const int left = 2 * rect.left - 2, right = 2 * (rect.right - 1) + 3;
        for (int y = first; y < last; ++y) {
            std::array<const float*, 5> q;
            for (int j = 0; j < 5; ++j)
                q[j] = reader.row(2 * y - 2 + j, left, right, padded[j]);
            sumRows(q, 4 * (right - left), sums.data());
            halveRow(sums.data(), rect.width(), coarse.row(y));
        }
    });
    return coarse;
}

// Even and odd pixels of a row of 16-bit sums to one row of the next level.
void halveSums(const std::uint16_t* even, const std::uint16_t* odd, int count, float* out)
{
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<float>(even[i] + even[i + 8] + 4 * (odd[i] + odd[i + 4]) +
                                    6 * even[i + 4]) *
                 (1 / 65280.f);
}

// The first halving of opaque bytes in whole numbers: the weights sum to 256, so 16 bits hold it
// exactly.
Grid halvedBytes(const PixelBlock& block, const IRect& rect, Border border,
                 const RenderContext& context)
{
    Grid coarse = Grid::make(rect);
    if (!coarse.values)
        return coarse;
    const IRect& r = block.rect;
    parallelRows(rect.bottom, rect.top, 16, context.threaded(), [&](int first, int last) {
        const int left = 2 * rect.left - 2, right = 2 * (rect.right - 1) + 3;
        const int bytes = 4 * (right - left);
        std::vector<std::uint8_t> padded[5], nothing(static_cast<std::size_t>(bytes), 0);
        std::vector<std::uint16_t> sums(static_cast<std::size_t>(bytes) + 64);
        std::vector<std::uint64_t> evens(rect.width() + 8), odds(rect.width() + 8);
        const auto pixelRow = [&](int y,
                                  std::vector<std::uint8_t>& scratch) -> const std::uint8_t* {
            if (y < r.bottom || y >= r.top) {
                if (border == Border::Transparent)
                    return nothing.data();
                y = std::clamp(y, r.bottom, r.top - 1);
            }
            const auto* source = reinterpret_cast<const std::uint8_t*>(block.pixel(r.left, y));
            if (left >= r.left && right <= r.right)
                return source + std::ptrdiff_t{4} * (left - r.left);
            scratch.resize(static_cast<std::size_t>(bytes));
            padRow(source, r.left, r.right, left, right, border, scratch.data());
            return scratch.data();
        };
        for (int y = first; y < last; ++y) {
            const std::uint8_t* q[5];
            for (int j = 0; j < 5; ++j)
                q[j] = pixelRow(2 * y - 2 + j, padded[j]);
            const std::uint8_t *a = q[0], *b = q[1], *c = q[2], *d = q[3], *e = q[4];
            std::uint16_t* s = sums.data();
            for (int i = 0; i < bytes; ++i)
                s[i] = static_cast<std::uint16_t>(a[i] + e[i] + 4 * (b[i] + d[i]) + 6 * c[i]);
            // Even and odd pixels apart, so that the sum along the row runs over neighbours.
            std::uint64_t* even = evens.data();
            std::uint64_t* odd = odds.data();
            for (int x = 0; x < rect.width() + 2; ++x) {
                std::memcpy(even + x, s + std::ptrdiff_t{8} * x, 8);
                std::memcpy(odd + x, s + std::ptrdiff_t{8} * x + 4, 8);
            }
            halveSums(reinterpret_cast<const std::uint16_t*>(even),
                      reinterpret_cast<const std::uint16_t*>(odd), 4 * rect.width(), coarse.row(y));
        }
    });
    return coarse;
}

// Weights exp(−k²/2σ²) for |k| ≤ ceil(3σ), summing to 1: the definition of the blur.
std::vector<double> definition(double sigma)
{
    const int radius = static_cast<int>(std::ceil(3 * sigma));
    std::vector<double> weights(2 * radius + 1);
    double sum = 0;
    for (int k = -radius; k <= radius; ++k)
        sum += weights[k + radius] = std::exp(-0.5 * k * k / (sigma * sigma));
    for (double& w : weights)
        w /= sum;
    return weights;
}

std::vector<float> plainWeights(double sigma)
{
    const std::vector<double> exact = definition(sigma);
    return {exact.begin(), exact.end()};
}

// The cubic B-spline's four values around t in 0…1: of the samples at −1, 0, 1 and 2.
std::array<double, 4> splineWeights(double t)
{
    const double s = 1 - t;
    return {s * s * s / 6, (3 * t * t * t - 6 * t * t + 4) / 6, (3 * s * s * s - 6 * s * s + 4) / 6,
            t * t * t / 6};
}

// Solves the symmetric positive definite system a·x = b in place, by elimination.
void solve(std::vector<std::vector<double>>& a, std::vector<double>& b)
{
    const int n = static_cast<int>(b.size());
    for (int i = 0; i < n; ++i)
        for (int r = i + 1; r < n; ++r) {
            const double f = a[r][i] / a[i][i];
            for (int c = i; c < n; ++c)
                a[r][c] -= f * a[i][c];
            b[r] -= f * b[i];
        }
    for (int i = n - 1; i >= 0; --i) {
        for (int c = i + 1; c < n; ++c)
            b[i] -= a[i][c] * b[c];
        b[i] /= a[i][i];
    }
}

// The weights of the sum at the coarse level with which halving, sum and spline together come
// closest to the definition, by least squares over the positions that a pixel can have between
// samples. None is negative, and they sum to 1.
std::vector<float> coarseWeights(double sigma, int levels)
{
    // From five levels on only the scale changes.
    constexpr int kMostLevels = 5;
    const int shown = std::min(levels, kMostLevels);
    sigma /= std::ldexp(1.0, levels - shown);
    const int d = 1 << shown;

    // What one coarse sample takes of the pixels around it.
    std::vector<double> sample{1};
    for (int l = 0; l < shown; ++l) {
        constexpr double kHalving[] = {1 / 16., 4 / 16., 6 / 16., 4 / 16., 1 / 16.};
        const std::size_t step = std::size_t{1} << l;
        std::vector<double> wider(sample.size() + 4 * step);
        for (std::size_t i = 0; i < sample.size(); ++i)
            for (std::size_t k = 0; k < 5; ++k)
                wider[i + k * step] += sample[i] * kHalving[k];
        sample = std::move(wider);
    }
    const int reach = static_cast<int>(sample.size()) / 2;

    const std::vector<double> exact = definition(sigma);
    const int exactRadius = static_cast<int>(exact.size()) / 2;
    const int radius = std::max(1, static_cast<int>(std::ceil(3 * sigma / d)) - 1);
    std::vector<std::vector<double>> normal(radius + 1, std::vector<double>(radius + 1));
    std::vector<double> weights(radius + 1);
    for (int x = 0; x < d; x += std::max(1, d / 8)) {
        const std::array<double, 4> spline = splineWeights(double(x) / d);
        const int first = std::min(x - exactRadius, -(radius + 1) * d - reach);
        const int last = std::max(x + exactRadius, (radius + 2) * d + reach);
        std::vector<double> row(radius + 1);
        for (int n = first; n <= last; ++n) {
            std::fill(row.begin(), row.end(), 0.0);
            for (int m = floorDiv(n - reach, d); m <= floorDiv(n + reach, d); ++m) {
                const int at = n - m * d + reach;
                if (at < 0 || at >= static_cast<int>(sample.size()))
                    continue;
                for (int k = -1; k <= 2; ++k)
                    if (const int j = std::abs(m - k); j <= radius)
                        row[j] += spline[k + 1] * sample[at];
            }
            const int e = n - x + exactRadius;
            const double target = e >= 0 && e < static_cast<int>(exact.size()) ? exact[e] : 0;
            for (int a = 0; a <= radius; ++a)
                if (row[a] != 0) {
                    weights[a] += row[a] * target;
                    for (int c = 0; c <= radius; ++c)
                        normal[a][c] += row[a] * row[c];
                }
        }
    }
    solve(normal, weights);

    double sum = 0;
    for (int a = -radius; a <= radius; ++a)
        sum += std::max(weights[std::abs(a)], 0.0);
    std::vector<float> all;
    for (int a = -radius; a <= radius; ++a)
        all.push_back(static_cast<float>(std::max(weights[std::abs(a)], 0.0) / sum));
    return all;
}

// out[i] = Σ weights[j]·rows[j][i]. Four registers of sums at a time; up to that many numbers are
// read and written past the count.
constexpr int kSumBlock = 4 * kLanes;
void weightedSum(const float* const* rows, const float* weights, int taps, int count, float* out)
{
    for (int x = 0; x < count; x += kSumBlock) {
        F a = 0.0f, b = 0.0f, c = 0.0f, d = 0.0f;
        for (int j = 0; j < taps; ++j) {
            const float* p = rows[j] + x;
            const F w = weights[j];
            a += w * load(p);
            b += w * load(p + kLanes);
            c += w * load(p + 2 * kLanes);
            d += w * load(p + 3 * kLanes);
        }
        store(out + x, a);
        store(out + x + kLanes, b);
        store(out + x + 2 * kLanes, c);
        store(out + x + 3 * kLanes, d);
    }
}

// The same along one row of interleaved pixels: out[i] = Σ weights[j]·in[i + 4·j].
void weightedSumAlong(const float* in, const std::vector<float>& weights, int count, float* out)
{
    const int taps = static_cast<int>(weights.size());
    const float* w = weights.data();
    for (int x = 0; x < count; x += kSumBlock) {
        F a = 0.0f, b = 0.0f, c = 0.0f, d = 0.0f;
        const float* p = in + x;
        for (int j = 0; j < taps; ++j, p += 4) {
            a += F(w[j]) * load(p);
            b += F(w[j]) * load(p + kLanes);
            c += F(w[j]) * load(p + 2 * kLanes);
            d += F(w[j]) * load(p + 3 * kLanes);
        }
        store(out + x, a);
        store(out + x + kLanes, b);
        store(out + x + 2 * kLanes, c);
        store(out + x + 3 * kLanes, d);
    }
}

// A separable sum over the grid, on the given samples.
Grid summed(const Grid& source, const IRect& rect, const std::vector<float>& weights, Border border,
            const RenderContext& context)
{
    const int radius = static_cast<int>(weights.size()) / 2;
    // Rows first: only those of the source exist, the reader supplies the rest.
    IRect acrossRect{rect.left, std::max(rect.bottom - radius, source.rect.bottom), rect.right,
                     std::min(rect.top + radius, source.rect.top)};
    Grid result = Grid::make(rect);
    if (acrossRect.isEmpty()) {
        // Only a clamped border reaches here, with its nearest row.
        acrossRect.bottom = std::clamp(acrossRect.bottom, source.rect.bottom, source.rect.top - 1);
        acrossRect.top = acrossRect.bottom + 1;
    }
    Grid across = Grid::make(acrossRect);
    if (!result.values || !across.values)
        return Grid{};
    const GridReader reader(source, border);
    parallelRows(
        acrossRect.bottom, acrossRect.top, 8, context.threaded(), [&](int first, int last) {
            std::vector<float> padded;
            for (int y = first; y < last; ++y)
                weightedSumAlong(reader.row(y, rect.left - radius, rect.right + radius, padded),
                                 weights, 4 * rect.width(), across.row(y));
        });
    const GridReader columns(across, border);
    parallelRows(rect.bottom, rect.top, 8, context.threaded(), [&](int first, int last) {
        std::vector<float> unused;
        std::vector<const float*> rows(weights.size());
        std::vector<float> used(weights.size());
        for (int y = first; y < last; ++y) {
            int present = 0;
            for (int j = -radius; j <= radius; ++j)
                if (const float* p = columns.row(y + j, rect.left, rect.right, unused)) {
                    rows[present] = p;
                    used[present++] = weights[j + radius];
                }
            weightedSum(rows.data(), used.data(), present, 4 * rect.width(), result.row(y));
        }
    });
    return result;
}

// Sums at full resolution. Rows summed across are kept for the rows above them.
class PlainRows : public Evaluator {
public:
    PlainRows(PixelBlockRef block, Border border, std::vector<float> weights)
        : _block(std::move(block)), _border(border), _weights(std::move(weights)),
          _kept(static_cast<int>(_weights.size()), std::size_t{4} * kStripWidth + kSumBlock)
    {
    }

    void row(const Span& span, const Strip& out) const override
    {
        const int radius = static_cast<int>(_weights.size()) / 2;
        KeptRows::Column& kept = _kept.column(span);
        std::array<const float*, 2 * kMaximumRadius + 1> rows;
        std::array<float, 2 * kMaximumRadius + 1> weights;
        int present = 0;
        for (int j = -radius; j <= radius; ++j)
            if (const float* p = rowAcross(kept, span, span.y + j)) {
                rows[present] = p;
                weights[present++] = _weights[j + radius];
            }
        alignas(32) float sums[4 * kStripWidth + kSumBlock];
        weightedSum(rows.data(), weights.data(), present, 4 * span.count, sums);
        for (int i = 0; i < span.count; i += kLanes)
            storePx(out, i, loadInterleaved(sums + std::ptrdiff_t{4} * i));
    }

    static constexpr int kMaximumRadius = 12;

private:
    const float* rowAcross(KeptRows::Column& kept, const Span& span, int y) const
    {
        const IRect& r = _block->rect;
        if (y < r.bottom || y >= r.top) {
            if (_border == Border::Transparent)
                return nullptr;
            y = std::clamp(y, r.bottom, r.top - 1);
        }
        return kept.row(y, [&](float* out) {
            const int radius = static_cast<int>(_weights.size()) / 2;
            alignas(32) float pixels[4 * (kStripWidth + 2 * kMaximumRadius) + kSumBlock];
            readPixels(span.x - radius, span.x + span.count + radius, y, pixels);
            weightedSumAlong(pixels, _weights, 4 * span.count, out);
        });
    }

    void readPixels(int left, int right, int y, float* out) const
    {
        const IRect& r = _block->rect;
        const int first = std::clamp(r.left, left, right), last = std::clamp(r.right, first, right);
        float* inside = out + std::ptrdiff_t{4} * (first - left);
        if (last > first)
            toFloats(*_block, first, last - first, y, inside);
        const bool clamped = _border == Border::Clamped;
        float edge[4] = {};
        if (first > left && clamped)
            toFloats(*_block, r.left, 1, y, edge);
        for (int x = left; x < first; ++x)
            std::copy_n(edge, 4, out + std::ptrdiff_t{4} * (x - left));
        if (right > last && clamped)
            toFloats(*_block, r.right - 1, 1, y, edge);
        for (int x = last; x < right; ++x)
            std::copy_n(edge, 4, out + std::ptrdiff_t{4} * (x - left));
    }

    PixelBlockRef _block;
    Border _border;
    std::vector<float> _weights;
    KeptRows _kept;
};

// The same of opaque bytes: three planes, across in whole numbers of 16 bits, two weights at a
// time.
class WordRows : public Evaluator {
public:
    // Weights so large that 16 bits hold them no finer than the sums would have it.
    static bool serves(const std::vector<float>& weights)
    {
        return weights[weights.size() / 2] < 0.9f;
    }

    WordRows(PixelBlockRef block, Border border, const std::vector<float>& weights)
        : _block(std::move(block)), _border(border), _radius(static_cast<int>(weights.size()) / 2),
          _up(weights.begin() + _radius, weights.end()),
          _kept(2 * _radius + 1, std::size_t{4} * kStride)
    {
        // As fine as 16 bits hold the largest weight and 31 the sum of bytes.
        const double scale = std::min(32767.0 / _up[0], double{1 << 23} - weights.size());
        std::vector<int> whole(_radius + 2);
        int sum = 0;
        for (int k = 0; k <= _radius; ++k) {
            whole[k] = static_cast<int>(_up[k] * scale + 0.5);
            sum += k == 0 ? whole[k] : 2 * whole[k];
        }
        for (int k = -_radius; k <= _radius; k += 2)
            _across.push_back(pairOfWeights(whole[std::abs(k)], whole[std::abs(k + 1)]));
        _scale = static_cast<float>(1 / (255.0 * sum));
    }

    void row(const Span& span, const Strip& out) const override
    {
        KeptRows::Column& kept = _kept.column(span);
        const IRect& r = _block->rect;
        const bool clamped = _border == Border::Clamped;
        const bool opaque =
            clamped || r.contains({span.x - _radius, span.y - _radius,
                                   span.x + span.count + _radius, span.y + _radius + 1});
        // Below and above, by their distance from the middle.
        static constexpr float kNothing[4 * kStride] = {};
        const float* rows[PlainRows::kMaximumRadius + 1][2];
        for (int k = 0; k <= _radius; ++k)
            for (const int side : {0, 1}) {
                const float* p = rowAcross(kept, span, side ? span.y + k : span.y - k);
                rows[k][side] = p ? p : kNothing;
            }
        float* const planes[] = {out.r, out.g, out.b, out.a};
        for (int c = 0; c < (opaque ? 3 : 4); ++c)
            sumUp(rows, c * kStride, span.count, planes[c]);
        // Exactly 1 where nothing transparent is near, and not nearly so.
        const bool inside = span.y - _radius >= r.bottom && span.y + _radius < r.top;
        const int first = clamped ? 0 : std::max(0, r.left + _radius - span.x);
        const int last = clamped ? span.count : std::min(span.count, r.right - _radius - span.x);
        if ((clamped || inside) && first < last)
            std::fill(out.a + first, out.a + last, 1.0f);
    }

private:
    // Of a plane; whole lanes are read and written past the end.
    static constexpr int kStride = kStripWidth + 2 * PlainRows::kMaximumRadius + 4 * kLanes;

    // Null for a row of nothing.
    const float* rowAcross(KeptRows::Column& kept, const Span& span, int y) const
    {
        const IRect& r = _block->rect;
        if (y < r.bottom || y >= r.top) {
            if (_border == Border::Transparent)
                return nullptr;
            y = std::clamp(y, r.bottom, r.top - 1);
        }
        return kept.row(y, [&](float* out) {
            alignas(32) std::int16_t words[4 * kStride];
            const int left = span.x - _radius, count = span.count + 2 * _radius;
            if (_border == Border::Clamped)
                readWordsClamped(*_block, left, count, y, words, kStride);
            else
                readWords(*_block, left, count, y, true, words, kStride);
            for (int c = 0; c < (_border == Border::Clamped ? 3 : 4); ++c)
                sumAcross(words + c * kStride, span.count, out + c * kStride);
        });
    }

    void sumAcross(const std::int16_t* words, int count, float* out) const
    {
        const F scale = _scale;
        for (int i = 0; i < count; i += 2 * kLanes) {
            I even = 0, odd = 0;
            const std::int16_t* p = words + i;
            for (const I& w : _across) {
                even = even + sumPairs(p, w);
                odd = odd + sumPairs(p + 1, w);
                p += 2;
            }
            I first, second;
            zip(even, odd, first, second);
            store(out + i, toFloat(first) * scale);
            store(out + i + kLanes, toFloat(second) * scale);
        }
    }

    void sumUp(const float* const (*rows)[2], std::ptrdiff_t plane, int count, float* out) const
    {
        for (int i = 0; i < count; i += 2 * kLanes) {
            const float* p = rows[0][0] + plane + i;
            F first = load(p) * F(_up[0]), second = load(p + kLanes) * F(_up[0]);
            for (int k = 1; k <= _radius; ++k) {
                const float *low = rows[k][0] + plane + i, *high = rows[k][1] + plane + i;
                const F w = _up[k];
                first += (load(low) + load(high)) * w;
                second += (load(low + kLanes) + load(high + kLanes)) * w;
            }
            store(out + i, first);
            if (i + kLanes < count)
                store(out + i + kLanes, second);
        }
    }

    PixelBlockRef _block;
    Border _border;
    int _radius;
    std::vector<float> _up; // from the middle on
    std::vector<I> _across; // pairs of weights
    float _scale;
    KeptRows _kept;
};

// Gives spans of a coarse grid through the cubic B-spline.
class SplineRows : public Evaluator {
public:
    SplineRows(Grid grid, int levels) : _grid(std::move(grid)), _levels(levels)
    {
        const int steps = 1 << levels;
        _weights.resize(steps);
        for (int i = 0; i < steps; ++i) {
            const std::array<double, 4> w = splineWeights(double(i) / steps);
            std::copy(w.begin(), w.end(), _weights[i].begin());
        }
    }

    void row(const Span& span, const Strip& out) const override
    {
        const int steps = 1 << _levels, mask = steps - 1;
        const int y = span.y >> _levels;
        const std::array<float, 4>& wy = _weights[span.y & mask];
        // The coarse samples under the span, mixed down to one row.
        const int first = (span.x >> _levels) - 1,
                  last = ((span.x + span.count - 1) >> _levels) + 2;
        const int samples = last - first + 1;
        alignas(32) float mixed[4 * (kStripWidth / 2 + 8)];
        {
            const std::ptrdiff_t from = std::ptrdiff_t{4} * (first - _grid.rect.left);
            const float *a = _grid.row(y - 1) + from, *b = _grid.row(y) + from,
                        *c = _grid.row(y + 1) + from, *d = _grid.row(y + 2) + from;
            for (int i = 0; i < 4 * samples; ++i)
                mixed[i] = wy[0] * a[i] + wy[1] * b[i] + wy[2] * c[i] + wy[3] * d[i];
        }
        alignas(32) float pixels[4 * (kStripWidth + kLanes)];
        for (int i = 0; i < span.count;) {
            const int phase = (span.x + i) & mask;
            const int end = std::min(span.count, i + steps - phase);
            const float* p = mixed + std::ptrdiff_t{4} * (((span.x + i) >> _levels) - 1 - first);
            Float4 q[4];
            std::memcpy(q, p, sizeof q);
            for (const std::array<float, 4>* w = &_weights[phase]; i < end; ++i, ++w) {
                const Float4 pixel =
                    (*w)[0] * q[0] + (*w)[1] * q[1] + (*w)[2] * q[2] + (*w)[3] * q[3];
                std::memcpy(pixels + std::ptrdiff_t{4} * i, &pixel, sizeof pixel);
            }
        }
        for (int i = 0; i < span.count; i += kLanes)
            storePx(out, i, loadInterleaved(pixels + std::ptrdiff_t{4} * i));
    }

private:
    Grid _grid;
    int _levels;
    std::vector<std::array<float, 4>> _weights;
};

class GaussianNode : public Node {
public:
    GaussianNode(Image input, double sigma, Border border, const IRect& extent)
        : Node(extent), _input(std::move(input)), _border(border)
    {
        while (sigma / (2 << _levels) >= kCoarsestSigma)
            ++_levels;
        _weights = _levels > 0 ? coarseWeights(sigma, _levels) : plainWeights(sigma);
    }

    EvaluatorRef prepare(const IRect& region, RenderContext& context) const override
    {
        const int radius = static_cast<int>(_weights.size()) / 2;
        const IRect& e = _input.node()->extent();
        // Backwards: which samples of each level the region needs …
        std::vector<IRect> needed(_levels + 1), bounds(_levels + 1);
        bounds[0] = e;
        for (int l = 1; l <= _levels; ++l)
            bounds[l] = halvedBounds(bounds[l - 1]);
        IRect blurred = region;
        if (_levels > 0)
            blurred = {(region.left >> _levels) - 1, (region.bottom >> _levels) - 1,
                       ((region.right - 1) >> _levels) + 3, ((region.top - 1) >> _levels) + 3};
        needed[_levels] = withinBounds(blurred.grown(radius, radius), bounds[_levels]);
        for (int l = _levels; l > 0; --l)
            needed[l - 1] = withinBounds(doubledReach(needed[l]), bounds[l - 1]);
        // … then forwards.
        const PixelBlockRef block = context.pixels(_input, needed[0]);
        if (!block)
            return nullptr;
        if (_levels == 0 && block->format == PixelBlock::Format::OpaqueBytes &&
            WordRows::serves(_weights))
            return std::make_shared<WordRows>(block, _border, _weights);
        if (_levels == 0)
            return std::make_shared<PlainRows>(block, _border, _weights);
        Grid grid;
        int level = 0;
        if (block->format == PixelBlock::Format::OpaqueBytes) {
            grid = halvedBytes(*block, needed[1], _border, context);
            level = 1;
        } else {
            grid = gridOf(*block, needed[0], context);
        }
        for (; grid.values && level < _levels; ++level) {
            if (context.stopped())
                return nullptr;
            grid = halved(grid, needed[level + 1], _border, context);
        }
        if (grid.values)
            grid = summed(grid, blurred, _weights, _border, context);
        if (!grid.values || context.stopped())
            return nullptr;
        return std::make_shared<SplineRows>(std::move(grid), _levels);
    }

private:
    // Never empty: a range that misses the bounds still needs the nearest sample of a clamped
    // border.
    static IRect withinBounds(const IRect& r, const IRect& bounds)
    {
        const int left = std::clamp(r.left, bounds.left, bounds.right - 1);
        const int bottom = std::clamp(r.bottom, bounds.bottom, bounds.top - 1);
        return {left, bottom, std::clamp(r.right, left + 1, bounds.right),
                std::clamp(r.top, bottom + 1, bounds.top)};
    }

    static Grid gridOf(const PixelBlock& block, const IRect& rect, const RenderContext& context)
    {
        Grid grid = Grid::make(rect);
        if (!grid.values)
            return grid;
        parallelRows(rect.bottom, rect.top, 16, context.threaded(), [&](int first, int last) {
            for (int y = first; y < last; ++y)
                toFloats(block, rect.left, rect.width(), y, grid.row(y));
        });
        return grid;
    }

    Image _input;
    Border _border;
    int _levels = 0;
    std::vector<float> _weights;
};

} // namespace

Image gaussian(const Image& image, double sigma, Border border)
{
    const double s = sigma > 0 ? std::min(sigma, kMaximumSigma) : 0;
    if (!image || s < kIdentityBelow || image.node()->extent().isEmpty())
        return image;
    IRect extent = image.node()->extent();
    // An infinite picture is blurred where it is looked at.
    if (border == Border::Transparent) {
        const int margin = static_cast<int>(std::ceil(3 * s));
        extent = extent.isPlane() ? extent : extent.grown(margin, margin);
    }
    return Image(std::make_shared<GaussianNode>(image, s, border, extent));
}

} // namespace imaging
