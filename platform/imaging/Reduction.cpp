// Rows of the image at its own size, each averaged into the columns of the small one.
#include "platform/imaging/Reduction.h"

#include "platform/foundation/Work.h"
#include "platform/imaging/Node.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <vector>

namespace imaging {

namespace {

// Which columns of the image one column of the small one covers.
struct Columns {
    int first, last;       // whole ones at least in part, [first, last]
    float ofFirst, ofLast; // how much of the outermost
};

// None of them from `end` on, where roundings may lead.
std::vector<Columns> columnsOf(const PixelRect& rect, double scale, int end)
{
    std::vector<Columns> columns(static_cast<std::size_t>(rect.width));
    for (int i = 0; i < rect.width; ++i) {
        const double low = (rect.x + i) / scale, high = (rect.x + i + 1.0) / scale;
        const int first = static_cast<int>(std::floor(low));
        const int last = std::max(first, std::min(static_cast<int>(std::ceil(high)), end) - 1);
        const double all = high - low;
        columns[static_cast<std::size_t>(i)] =
            first == last ? Columns{first, last, 1, 0}
                          : Columns{first, last, static_cast<float>((first + 1 - low) / all),
                                    static_cast<float>((high - last) / all)};
    }
    return columns;
}

// The rows that the small row looks at.
void rowsOf(int j, double scale, int count, std::vector<int>& rows)
{
    const double low = j / scale, height = 1 / scale;
    const int first = static_cast<int>(std::floor(low));
    const int past = std::max(first + 1, static_cast<int>(std::floor(low + height)));
    rows.clear();
    if (past - first <= count) {
        for (int y = first; y < past; ++y)
            rows.push_back(y);
        return;
    }
    for (int k = 0; k < count; ++k)
        rows.push_back(static_cast<int>(std::floor(low + height * (k + 0.5) / count)));
}

// To what can be shown: the means are of pixels as a bitmap would hold them. Not-a-number becomes
// 0.
void limit(const Strip& row, int count)
{
    for (int i = 0; i < count; ++i)
        row.a[i] = row.a[i] > 0 ? std::min(row.a[i], 1.0f) : 0;
    for (float* plane : {row.r, row.g, row.b})
        for (int i = 0; i < count; ++i)
            plane[i] = plane[i] > 0 ? std::min(plane[i], row.a[i]) : 0;
}

std::uint8_t byteOf(float v)
{
    return static_cast<std::uint8_t>(std::min(v, 1.0f) * 255 + 0.5f);
}

} // namespace

std::shared_ptr<Bitmap> renderReduced(const Image& image, const PixelRect& rect, double scaleX,
                                      double scaleY, int rowsEach, const RenderOptions& options)
{
    const auto isReduction = [](double s) { return s > 0 && s <= 1; };
    if (rect.width < 1 || rect.height < 1 || !isReduction(scaleX) || !isReduction(scaleY))
        return nullptr;
    const IRect region = IRect::around(
        {rect.x / scaleX, rect.y / scaleY, rect.width / scaleX, rect.height / scaleY});
    std::shared_ptr<Bitmap> bitmap = Bitmap::make(rect.width, rect.height, PixelFormat::Rgba8);
    if (!bitmap || region.width() > Bitmap::kMaximumSide || region.height() > Bitmap::kMaximumSide)
        return nullptr;
    const std::stop_token stop =
        options.stop.stop_possible() ? options.stop : foundation::stopToken();
    RenderContext context(stop, options.threaded);
    const EvaluatorRef evaluator = context.evaluator(image, region);
    if (!evaluator || context.stopped())
        return nullptr;
    const std::vector<Columns> columns = columnsOf(rect, scaleX, region.right);

    std::atomic<bool> isShort = false;
    parallelRows(0, rect.height, 4, options.threaded, [&](int firstRow, int lastRow) {
        const auto width = static_cast<std::size_t>(region.width());
        // One row in planes, with room for the lanes written past its end, and the sums.
        const std::size_t plane = width + 2 * kStripWidth;
        FloatBuffer memory(4 * plane + 4 * columns.size());
        if (!memory) {
            isShort = true;
            return;
        }
        float* const row = memory.data();
        float* const sums = row + 4 * plane;
        std::vector<int> rows;
        for (int j = firstRow; j < lastRow && !context.stopped(); ++j) {
            std::fill_n(sums, 4 * columns.size(), 0.0f);
            rowsOf(rect.y + j, scaleY, std::max(1, rowsEach), rows);
            for (int y : rows) {
                y = std::clamp(y, region.bottom, region.top - 1);
                for (int x = region.left; x < region.right;) {
                    const int next = std::min(region.right, (x & ~(kStripWidth - 1)) + kStripWidth);
                    float* const at = row + (x - region.left);
                    evaluator->row({x, y, next - x},
                                   {at, at + plane, at + 2 * plane, at + 3 * plane});
                    x = next;
                }
                limit({row, row + plane, row + 2 * plane, row + 3 * plane}, region.width());
                for (int c = 0; c < 4; ++c) {
                    const float* const in = row + c * plane - region.left;
                    float* const sum = sums + c * columns.size();
                    for (std::size_t i = 0; i < columns.size(); ++i) {
                        const Columns& k = columns[i];
                        float inner = 0;
                        for (int x = k.first + 1; x < k.last; ++x)
                            inner += in[x];
                        sum[i] += in[k.first] * k.ofFirst + in[k.last] * k.ofLast +
                                  inner * static_cast<float>(scaleX);
                    }
                }
            }
            auto* out = bitmap->rowAs<std::uint8_t>(rect.height - 1 - j);
            const float mean = 1 / static_cast<float>(rows.size());
            for (std::size_t i = 0; i < columns.size(); ++i, out += 4) {
                const auto value = [&](std::size_t c) {
                    return sums[c * columns.size() + i] * mean;
                };
                const float alpha = value(3);
                const float unpremultiply = alpha > 0 ? 1 / alpha : 0;
                for (std::size_t c = 0; c < 3; ++c)
                    out[c] = byteOf(value(c) * unpremultiply);
                out[3] = byteOf(alpha);
            }
        }
    });
    return context.stopped() || isShort ? nullptr : bitmap;
}

} // namespace imaging
