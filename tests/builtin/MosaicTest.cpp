// Cell mosaics against means and dots that are computed pixel by pixel.
#include "platform/builtin/Hash.h"
#include "platform/builtin/mosaic/Cells.h"
#include "platform/imaging/Filter.h"
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>
#include <functional>
#include <limits>
#include <map>

using namespace support;
using foundation::Point;
using foundation::Vector;

namespace {

constexpr double kRoot3 = 1.7320508075688772;
using Label = std::pair<long, long>;
using Labels = std::function<Label(Point)>;

Rgba sum(Rgba a, Rgba b)
{
    return {a.r + b.r, a.g + b.g, a.b + b.b, a.a + b.a};
}

Rgba scaled(Rgba a, float k)
{
    return {a.r * k, a.g * k, a.b * k, a.a * k};
}

// Expects every pixel of the result to be the mean of the input's pixels with the same label.
void expectMeans(const Image& input, const Image& output, const Labels& labelOf)
{
    const auto center = [](const Rect& e, const Bitmap& b, int x, int y) {
        return Point{e.x + x + 0.5, e.y + b.height() - y - 0.5};
    };
    const Rect in = input.extent(), out = output.extent();
    const BitmapRef source = renderWhole(input), result = renderWhole(output);
    std::map<Label, std::pair<Rgba, int>> sums;
    for (int y = 0; y < source->height(); ++y)
        for (int x = 0; x < source->width(); ++x) {
            auto& [total, count] =
                sums.try_emplace(labelOf(center(in, *source, x, y)), Rgba{0, 0, 0, 0}, 0)
                    .first->second;
            total = sum(total, pixel(*source, x, y));
            ++count;
        }
    for (int y = 0; y < result->height(); ++y)
        for (int x = 0; x < result->width(); ++x) {
            const auto cell = sums.find(labelOf(center(out, *result, x, y)));
            const Rgba expected =
                cell == sums.end()
                    ? Rgba{0, 0, 0, 0}
                    : scaled(cell->second.first, 1 / static_cast<float>(cell->second.second));
            ASSERT_THAT(pixel(*result, x, y), IsColor(expected, 2e-5f)) << x << ", " << y;
        }
}

// Bytes, floats, and computed pixels, with offset origins and odd sizes.
std::vector<Image> pictures()
{
    const Image opaque = image(picture("photo-96x64")), soft = image(picture("alpha-64x48"));
    return {opaque.translated(-31, 17), soft.translated(5, -9),
            opaque.translated(-7, 5).cropped({-7, 5, 61, 43})};
}

Image mosaic(std::string_view filter, const Image& input, const char* size, double value,
             Point center)
{
    return outputOf(
        filter, nullptr,
        {{"inputImage", input.node()}, {size, value}, {"inputCenter", Vector(center.x, center.y)}});
}

const struct Setting {
    double size;
    Point center;
} kSettings[] = {
    {8, {10, 20}}, {5.3, {0.25, -7.6}}, {1, {0.5, 0.5}}, {70, {-400, 3}}, {1.5, {9, 9}}};

Point site(long i, long j, double pitch, Point center, unsigned saltX, unsigned saltY)
{
    const auto column = static_cast<std::uint32_t>(i), row = static_cast<std::uint32_t>(j);
    return {center.x + pitch * (i + builtin::h01(column, row, saltX)),
            center.y + pitch * (j + builtin::h01(column, row, saltY))};
}

Label square(Point p, double pitch, Point center)
{
    return {std::lround(std::floor((p.x - center.x) / pitch)),
            std::lround(std::floor((p.y - center.y) / pitch))};
}

} // namespace

TEST(Pixellate, SquaresHaveTheMeanOfTheirPixelsAndArePaintedWhole)
{
    for (const Image& input : pictures())
        for (const auto& [size, center] : kSettings) {
            const Image out = mosaic("CIPixellate", input, "inputScale", size, center);
            expectMeans(input, out, [&](Point p) { return square(p, size, center); });
            const Rect in = input.extent(), e = out.extent();
            const auto low = square({in.x + 0.5, in.y + 0.5}, size, center);
            EXPECT_EQ(e.x, std::floor(center.x + size * low.first));
            EXPECT_EQ(e.y, std::floor(center.y + size * low.second));
            EXPECT_GE(e.right(), in.right());
            EXPECT_LT(e.top(), in.top() + size + 1);
        }
}

TEST(Pixellate, ASquareOfOnePixelIsThatPixel)
{
    for (const Image& input : pictures()) {
        const BitmapRef source = renderWhole(input);
        for (const double scale : {1.0, 0.0, -8.0, std::nan("")})
            EXPECT_EQ(compare(*render(mosaic("CIPixellate", input, "inputScale", scale, {7, -3}),
                                      input.extent()),
                              *source)
                          .largest,
                      0);
    }
}

TEST(Pixellate, OneSquareForAll)
{
    // Four squares meet at the centre.
    const BitmapRef quarters = bitmapFrom(20, 10, [](int x, int y) {
        return Rgba{x < 10 ? 1.f : 0.f, y < 5 ? 1.f : 0.f, float(x % 2), 1};
    });
    for (const double scale : {1e6, 1e30, std::numeric_limits<double>::infinity()}) {
        const Image out = mosaic("CIPixellate", image(quarters), "inputScale", scale, {10, 5});
        EXPECT_EQ(at(out, 3, 7), (Rgba{1, 1, 0.5f, 1})) << scale;
        EXPECT_EQ(at(out, 12, 2), (Rgba{0, 0, 0.5f, 1})) << scale;
        EXPECT_EQ(at(out, -500, 300), (Rgba{1, 1, 0.5f, 1})) << scale;
    }
}

TEST(HexagonalPixellate, HexagonsHaveTheMeanOfTheirPixelsAndArePaintedWhole)
{
    for (const Image& input : pictures())
        for (const auto& [size, center] : kSettings) {
            // A hexagon's pixels are those that its middle is the nearest to.
            const auto middle = [&](const Label& c) {
                return Point{center.x + kRoot3 * size * (c.first + (c.second & 1) / 2.0),
                             center.y + 1.5 * size * c.second};
            };
            const auto labelOf = [&](Point p) {
                const long row = std::lround((p.y - center.y) / (1.5 * size)),
                           column = std::lround((p.x - center.x) / (kRoot3 * size));
                Label nearest;
                double least = INFINITY;
                for (long j = row - 1; j <= row + 1; ++j)
                    for (long i = column - 1; i <= column + 1; ++i) {
                        const Point m = middle({i, j});
                        if (const double d = std::hypot(p.x - m.x, p.y - m.y); d < least - 1e-9) {
                            least = d;
                            nearest = {i, j};
                        }
                    }
                return nearest;
            };
            const Image out = mosaic("CIHexagonalPixellate", input, "inputScale", size, center);
            expectMeans(input, out, labelOf);
            const Rect in = input.extent();
            double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY;
            for (double y = in.y + 0.5; y < in.top(); ++y)
                for (double x = in.x + 0.5; x < in.right(); ++x) {
                    const Point m = middle(labelOf({x, y}));
                    left = std::min(left, m.x - kRoot3 / 2 * size);
                    right = std::max(right, m.x + kRoot3 / 2 * size);
                    bottom = std::min(bottom, m.y - size);
                    top = std::max(top, m.y + size);
                }
            EXPECT_EQ(out.extent(), Rect::fromEdges(std::floor(left), std::floor(bottom),
                                                    std::ceil(right), std::ceil(top)))
                << size;
        }
}

TEST(Crystallize, CellsBelongToTheNearestSite)
{
    for (const Image& input : pictures())
        for (const auto& [size, center] : kSettings) {
            const Image out = mosaic("CICrystallize", input, "inputRadius", size, center);
            EXPECT_EQ(out.extent(), input.extent());
            expectMeans(input, out, [&](Point p) {
                const Label own = square(p, size, center);
                Label nearest;
                double least = INFINITY;
                for (long j = own.second - 3; j <= own.second + 3; ++j)
                    for (long i = own.first - 3; i <= own.first + 3; ++i) {
                        const Point s = site(i, j, size, center, 16, 17);
                        if (const double d = std::hypot(p.x - s.x, p.y - s.y); d < least) {
                            least = d;
                            nearest = {i, j};
                        }
                    }
                return nearest;
            });
        }
}

// Rows in runs are the labels pixel by pixel, whatever the size, and however far the centre.
TEST(Cells, RunsAreTheLabels)
{
    using namespace builtin;
    const auto check = [](const CellLayout& cells, imaging::IRect area) {
        const CellRange range = cells.cellsOf(area);
        const auto cutter = cells.cutter(area, range);
        std::vector<CellRun> scratch;
        for (int y = area.bottom; y < area.top; ++y) {
            const CellRow row = cutter->cut({area.left, y, area.width()}, scratch);
            const CellRun* run = row.runs;
            for (int x = area.left; x < area.right; ++x) {
                if (x == run->end)
                    ++run;
                ASSERT_LT(x, run->end);
                ASSERT_EQ(row.base + run->cell, range.indexOf(cells.labelAt(x, y)))
                    << x << ", " << y;
            }
        }
    };
    for (const double size : {1.0, 1.1, 1.37, 2.0, 3.0, 7.7, 20.0, 300.0, 1e6, 1e30})
        for (const Point center : {Point{0, 0}, Point{0.5, 0.5}, Point{-1234.56, 1e6}}) {
            SCOPED_TRACE(testing::Message() << size << " about " << center.x);
            const imaging::IRect area{-37, -20, 219, 21};
            check(SquareCells(center, size), area);
            check(HexagonCells(center, size), area);
            check(CrystalCells(center, size), area);
        }
}

TEST(Mosaic, CellsOfAnInfinitePictureShowItsColorAtTheirMiddle)
{
    const Image gradient = outputOf("CIGaussianGradient", nullptr,
                                    {{"inputCenter", Vector(0, 0)}, {"inputRadius", 1e5}});
    const auto shown = [&](std::string_view filter, const char* size, double value) {
        const Image out = mosaic(filter, gradient, size, value, {0, 0});
        EXPECT_TRUE(out.extent().isInfinite());
        return at(out, 3, 2).a;
    };
    // Whole middles lie between pixels; the gradient is flat enough to compare with the nearest.
    for (const double size : {600.0, 6000.0}) {
        const int half = static_cast<int>(size / 2);
        EXPECT_NEAR(shown("CIPixellate", "inputScale", size), at(gradient, half, half).a, 1e-5);
        EXPECT_NEAR(shown("CIHexagonalPixellate", "inputScale", size), at(gradient, 0, 0).a, 1e-6);
    }
    const Image flat = outputOf("CIConstantColorGenerator", nullptr);
    for (const char* filter : {"CIPixellate", "CIHexagonalPixellate"})
        EXPECT_EQ(at(mosaic(filter, flat, "inputScale", 1e30, {0, 0}), 5, -9), (Rgba{1, 0, 0, 1}));
    EXPECT_EQ(at(mosaic("CICrystallize", flat, "inputRadius", 1e30, {0, 0}), 5, -9),
              (Rgba{1, 0, 0, 1}));
}

TEST(Pointillize, DotsLieOverEachOtherInTheOrderOfTheirHash)
{
    for (const Image& input : pictures())
        for (const auto& [pitch, center] : kSettings) {
            const Rect e = input.extent();
            const Image out = mosaic("CIPointillize", input, "inputRadius", pitch, center);
            ASSERT_EQ(out.extent(), e);
            const BitmapRef result = renderWhole(out);
            // Bilinear samples of the picture, computed from its pixels.
            const BitmapRef pixels = renderWhole(input);
            const auto sample = [&](Point p) {
                const double x = std::clamp(p.x - e.x - 0.5, 0.0, e.width - 1);
                const double y = std::clamp(e.top() - p.y - 0.5, 0.0, e.height - 1);
                const int i = std::min(int(x), pixels->width() - 2),
                          j = std::min(int(y), pixels->height() - 2);
                const float tx = float(x - i), ty = float(y - j);
                const auto row = [&](int k) {
                    return sum(scaled(pixel(*pixels, i, k), 1 - tx),
                               scaled(pixel(*pixels, i + 1, k), tx));
                };
                return sum(scaled(row(j), 1 - ty), scaled(row(j + 1), ty));
            };
            for (int y = 0; y < result->height(); y += 3)
                for (int x = 0; x < result->width(); ++x) {
                    const Point p{e.x + x + 0.5, e.top() - y - 0.5};
                    const Label own = square(p, pitch, center);
                    std::multimap<unsigned, Label> dots;
                    for (long j = own.second - 2; j <= own.second + 2; ++j)
                        for (long i = own.first - 2; i <= own.first + 2; ++i)
                            dots.emplace(builtin::hash(std::uint32_t(i), std::uint32_t(j), 21),
                                         Label{i, j});
                    Rgba expected{0, 0, 0, 0};
                    for (const auto& [order, dot] : dots) {
                        const Point s = site(dot.first, dot.second, pitch, center, 18, 19);
                        const double outside = std::hypot(s.x - std::clamp(s.x, e.x, e.right()),
                                                          s.y - std::clamp(s.y, e.y, e.top()));
                        if (outside > pitch)
                            continue;
                        const double radius =
                            pitch * (0.62 + 0.28 * builtin::h01(std::uint32_t(dot.first),
                                                                std::uint32_t(dot.second), 20));
                        const double distance = std::hypot(p.x - s.x, p.y - s.y);
                        const Rgba color =
                            scaled(sample(s), float(std::clamp(radius - distance + 0.5, 0.0, 1.0)));
                        expected = sum(color, scaled(expected, 1 - color.a));
                    }
                    ASSERT_THAT(pixel(*result, x, y), IsColor(expected, 1e-4f))
                        << x << ", " << y << " at " << pitch;
                }
        }
}

GOLDEN("CIPixellate", "photo-96x64", {{"inputScale", 7}, {"inputCenter", Vector(48, 32)}},
       {.largest = 1});
GOLDEN("CIHexagonalPixellate", "alpha-64x48", {{"inputScale", 4}}, {.largest = 1});
GOLDEN("CICrystallize", "photo-96x64", {{"inputRadius", 8}}, {.largest = 1});
GOLDEN("CIPointillize", "photo-96x64", {{"inputRadius", 6}}, {.largest = 1});
