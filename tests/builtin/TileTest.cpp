// The tilings: their folds, against mirrors and turns done one by one, and how far they reach.
#include "tests/builtin/Positions.h"
#include "tests/support/Golden.h"

#include <cmath>
#include <limits>

using namespace support;

namespace {

constexpr double kPi = 3.14159265358979323846;
const double kRoot3 = std::sqrt(3.0);

const Point kCenter{41.3, 38.6};
constexpr double kWidth = 37, kAngle = 0.3;

Point rotated(Point p, double a)
{
    return {p.x * std::cos(a) - p.y * std::sin(a), p.x * std::sin(a) + p.y * std::cos(a)};
}

double modulo(double x, double m)
{
    return x - m * std::floor(x / m);
}

// Mirrored, side by side, until it lies in the polygon (counter-clockwise): the reflecting folds in
// slow motion.
Point reflectedInto(const std::vector<Point>& cell, Point p)
{
    for (bool moved = true; moved;) {
        moved = false;
        for (std::size_t i = 0; i < cell.size(); ++i) {
            const Point a = cell[i], b = cell[(i + 1) % cell.size()];
            const double length = std::hypot(b.x - a.x, b.y - a.y);
            const Point n{(a.y - b.y) / length, (b.x - a.x) / length}; // inward
            const double beyond = (p.x - a.x) * n.x + (p.y - a.y) * n.y;
            if (beyond < -1e-9) {
                p = {p.x - 2 * beyond * n.x, p.y - 2 * beyond * n.y};
                moved = true;
            }
        }
    }
    return p;
}

std::vector<Point> square(double low, double high)
{
    return {{low, low}, {high, low}, {high, high}, {low, high}};
}
std::vector<Point> triangle(Point corner)
{
    return {corner,
            {corner.x + kWidth, corner.y},
            {corner.x + kWidth / 2, corner.y + kWidth * kRoot3 / 2}};
}

Point rotatedSixth(Point p)
{
    Point best = p;
    for (int i = -9; i <= 9; ++i)
        for (int j = -9; j <= 9; ++j) {
            const Point q{p.x - 1.5 * kWidth * i, p.y - kRoot3 * kWidth * (0.5 * i + j)};
            if (std::hypot(q.x, q.y) < std::hypot(best.x, best.y))
                best = q;
        }
    return rotated(best, -kPi / 3 * std::floor(std::atan2(best.y, best.x) / (kPi / 3)));
}

Point rotatedQuarter(Point p)
{
    p = {modulo(p.x + kWidth, 2 * kWidth) - kWidth, modulo(p.y + kWidth, 2 * kWidth) - kWidth};
    const double quarters = std::floor(modulo(std::atan2(p.y, p.x), 2 * kPi) / (kPi / 2));
    return rotated(p, -kPi / 2 * quarters);
}

// In parts of the oblique cell's sides.
Point oblique(Point p, double acute, const std::function<double(double)>& fold)
{
    const Point e2{kWidth * std::cos(acute), kWidth * std::sin(acute)};
    const double t = fold(p.y / e2.y), s = fold((p.x - p.y / e2.y * e2.x) / kWidth);
    return {s * kWidth + t * e2.x, t * e2.y};
}
double mirrored(double s)
{
    return 1 - std::abs(modulo(s, 2) - 1);
}

// Folds that jump are left out beside their jumps: where a hair's breadth makes a difference.
Mapping tile(std::string filter, Dictionary inputs, const std::function<Point(Point)>& fold)
{
    inputs.set("inputCenter", Vector(kCenter.x, kCenter.y));
    inputs.set("inputAngle", kAngle);
    inputs.set("inputWidth", kWidth);
    return {filter + (inputs.contains("inputAcuteAngle") ? " oblique" : ""), filter, inputs,
            [fold](Point p) {
                const auto source = [&](double dx, double dy) {
                    const Point f =
                        fold(rotated({p.x + dx - kCenter.x, p.y + dy - kCenter.y}, -kAngle));
                    const Point v = rotated(f, kAngle);
                    return Point{kCenter.x + v.x, kCenter.y + v.y};
                };
                const Point s = source(0, 0), a = source(1e-4, 1e-4), b = source(-1e-4, 1e-4);
                const bool jumps = std::hypot(a.x - s.x, a.y - s.y) > 0.01 ||
                                   std::hypot(b.x - s.x, b.y - s.y) > 0.01;
                return jumps ? Sources{} : Sources{s};
            }};
}

std::vector<Mapping> folds()
{
    std::vector<Mapping> all = {
        tile("CIFourfoldRotatedTile", {}, rotatedQuarter),
        tile("CISixfoldRotatedTile", {}, rotatedSixth),
        tile("CIEightfoldReflectedTile", {},
             [](Point p) {
                 return reflectedInto({{0, 0}, {kWidth, 0}, {kWidth, kWidth}}, p);
             }),
        tile("CISixfoldReflectedTile", {},
             [](Point p) {
                 return reflectedInto(triangle({0, 0}), p);
             }),
        tile("CITriangleTile", {},
             [](Point p) {
                 return reflectedInto(triangle({-kWidth / 2, -kWidth / (2 * kRoot3)}), p);
             }),
        tile("CIGlideReflectedTile", {},
             [](Point p) {
                 const double y = modulo(p.y, kWidth);
                 const bool odd = modulo(std::floor(p.x / kWidth), 2) == 1;
                 return Point{modulo(p.x, kWidth), odd ? kWidth - y : y};
             }),
        tile("CIFourfoldReflectedTile", {},
             [](Point p) { return reflectedInto(square(0, kWidth), p); }),
        tile("CIParallelogramTile", {},
             [](Point p) { return reflectedInto(square(-kWidth / 2, kWidth / 2), p); }),
        tile("CIFourfoldTranslatedTile", {},
             [](Point p) {
                 return Point{modulo(p.x, kWidth), modulo(p.y, kWidth)};
             }),
    };
    for (const double acute : {1.0, -2.3}) {
        const Dictionary inputs = {{"inputAcuteAngle", acute}};
        all.push_back(tile("CIFourfoldTranslatedTile", inputs, [=](Point p) {
            return oblique(p, acute, [](double s) { return modulo(s, 1); });
        }));
        all.push_back(tile("CIFourfoldReflectedTile", inputs,
                           [=](Point p) { return oblique(p, acute, mirrored); }));
        all.push_back(tile("CIParallelogramTile", inputs, [=](Point p) {
            return oblique(p, acute, [](double s) { return mirrored(s + 0.5) - 0.5; });
        }));
    }
    return all;
}

Mapping kaleidoscope(double count, double angle, Point center)
{
    const double n = std::max(1.0, std::round(std::abs(count))), w = 2 * kPi / n;
    return {
        "count " + std::to_string(count),
        "CIKaleidoscope",
        {{"inputCount", count}, {"inputAngle", angle}, {"inputCenter", Vector(center.x, center.y)}},
        [=](Point p) {
            const Point v{p.x - center.x, p.y - center.y};
            const double phi = modulo(modulo(std::atan2(v.y, v.x) - angle, 2 * kPi), w);
            const double d = std::hypot(v.x, v.y), a = angle + std::min(phi, w - phi);
            return Sources{{center.x + d * std::cos(a), center.y + d * std::sin(a)}};
        }};
}

Mapping opTile(double scale, double angle, double width)
{
    return {"op tile",
            "CIOpTile",
            {{"inputScale", scale},
             {"inputAngle", angle},
             {"inputWidth", width},
             {"inputCenter", Vector(kCenter.x, kCenter.y)}},
            [=](Point p) {
                const Point q{p.x - kCenter.x, p.y - kCenter.y};
                const Point k{std::floor(q.x / width + 0.5), std::floor(q.y / width + 0.5)};
                const Point o =
                    rotated({(q.x - width * k.x) * scale, (q.y - width * k.y) * scale}, -angle);
                const Point s{kCenter.x + width * k.x + o.x, kCenter.y + width * k.y + o.y};
                const Rect& e = kPositions;
                const Point m{e.x + e.width * mirrored((s.x - e.x) / e.width),
                              e.y + e.height * mirrored((s.y - e.y) / e.height)};
                return Sources{{std::clamp(m.x, e.x + 0.502, e.right() - 0.502),
                                std::clamp(m.y, e.y + 0.502, e.top() - 0.502)}};
            }};
}

Rect kaleidoscopeExtent(double count, double angle, Point center)
{
    return outputOf("CIKaleidoscope", nullptr,
                    with({{"inputCount", count},
                          {"inputAngle", angle},
                          {"inputCenter", Vector(center.x, center.y)}},
                         positions()))
        .extent();
}

} // namespace

TEST(FoldTiles, FoldThePlaneIntoOneCell)
{
    for (const Mapping& m : folds())
        expectMapping(m);
}

TEST(FoldTiles, StayTheSameFarAway)
{
    // By whole cells of every tiling, and whole strips.
    constexpr int kShift = 12'800 * 7'000;
    const Dictionary inputs =
        with({{"inputCenter", Vector(0.25, 10.75)}, {"inputWidth", 50}}, positions());
    for (const Mapping& m : folds()) {
        const bool isHexagonal = m.filter.starts_with("CISix") || m.filter == "CITriangleTile";
        const Image out = outputOf(m.filter, nullptr, inputs);
        EXPECT_TRUE(out.extent().isInfinite());
        const BitmapRef here = render(out, {0, 0, 70, 70});
        // Triangles repeat after 150 pixels to the right.
        const BitmapRef there = render(
            out, {double(kShift * (isHexagonal ? 3 : 1)), isHexagonal ? 0.0 : -kShift, 70, 70});
        EXPECT_LT(compare(*here, *there).largest, 1e-3) << m.label;
    }
}

TEST(FoldTiles, KeepWholePixelsWhole)
{
    // Borders of cells in the middles of pixels, cells of whole pixels: nothing is interpolated.
    for (const char* name : {"CIFourfoldTranslatedTile", "CIFourfoldRotatedTile",
                             "CIGlideReflectedTile", "CIEightfoldReflectedTile"})
        for (const double angle : {0.0, kPi / 2, -kPi}) {
            const Image out = outputOf(name, nullptr,
                                       with({{"inputCenter", Vector(40.5, 50.5)},
                                             {"inputAngle", angle},
                                             {"inputWidth", 30}},
                                            positions()));
            const BitmapRef pixels = render(out, {-1000, -500, 130, 130});
            for (const float r : reds(*pixels))
                ASSERT_EQ(r - std::floor(r), 0.5f) << name << ' ' << angle;
        }
}

TEST(FoldTiles, WithoutAWidthThePictureStays)
{
    for (const Mapping& m : folds())
        for (const double width : {0.0, 0.0009, -40.0, std::nan("")}) {
            Dictionary inputs = with(m.inputs, positions());
            inputs.set("inputWidth", width);
            const Image out = outputOf(m.filter, nullptr, inputs);
            EXPECT_TRUE(out.extent().isInfinite()) << m.label;
            EXPECT_EQ(compare(*render(out, kPositions), *renderWhole(positions())).largest, 0);
            EXPECT_EQ(at(out, 200, 50), (Rgba{0, 0, 0, 0}));
        }
}

// Flat parallelograms are as flat as an angle of 0.001 makes them, on the side of the angle's sine.
TEST(FoldTiles, StandOnAFlatAngle)
{
    const auto fold = [](double acute) {
        return outputOf("CIFourfoldReflectedTile", nullptr,
                        with({{"inputCenter", Vector(40.5, 50.5)},
                              {"inputAcuteAngle", acute},
                              {"inputWidth", 30}},
                             positions()));
    };
    // On the line through the centre nothing is sheared.
    for (const double acute : {0.0, -1e-9, kPi})
        EXPECT_THAT(at(fold(acute), 45, 50), IsColor(Rgba{45.5f, 50.5f, 0, 1}, 1e-3f)) << acute;
}

TEST(Kaleidoscope, RepeatsItsWedge)
{
    for (const Mapping& m : {kaleidoscope(6, 0, {30, 20}), kaleidoscope(3, 2, {50.5, 60.25}),
                             kaleidoscope(12, -1, {20, 110}), kaleidoscope(1, -2.5, {47, 52}),
                             kaleidoscope(-4.5, 0.5, {40, 40}), kaleidoscope(0.2, 1.5, {40, 40}),
                             kaleidoscope(63.7, kPi / 2, {47, -30})})
        expectMapping(m);
}

TEST(Kaleidoscope, IsAsLargeAsItsWedgeIsLong)
{
    // From the lower left corner to the right: to the border at 30 degrees and along the bottom.
    const double longest = std::hypot(120, 120 / kRoot3);
    EXPECT_EQ(kaleidoscopeExtent(6, 0, {-13, 7}),
              Rect::fromEdges(std::floor(-13 - longest), std::floor(7 - longest),
                              std::ceil(-13 + longest), std::ceil(7 + longest)));
    // A half-plane: to the far corner.
    EXPECT_EQ(kaleidoscopeExtent(1, 0, {47, 97}), Rect::fromEdges(-13, 37, 107, 157));
    EXPECT_EQ(kaleidoscopeExtent(1, kPi, {-13, 7 + 80}), Rect::fromEdges(-158, -58, 132, 232));
    // A count of infinity is one of 1, a wedge that misses the picture shows nothing.
    EXPECT_EQ(kaleidoscopeExtent(std::numeric_limits<double>::infinity(), 0, {47, 97}),
              kaleidoscopeExtent(1, 0, {47, 97}));
    EXPECT_TRUE(kaleidoscopeExtent(6, 0, {150, 150}).isEmpty());
    const Image stripes = outputOf("CIStripesGenerator", nullptr, {});
    EXPECT_TRUE(outputOf("CIKaleidoscope", nullptr, with({}, stripes)).extent().isInfinite());
}

TEST(OpTile, ShowsWhatLiesAround)
{
    for (const Mapping& m : {opTile(2.8, 0, 30), opTile(1.5, 0.7, 25), opTile(0.5, -2, 64),
                             opTile(0, 1, 20), opTile(9, 0.2, 40)})
        expectMapping(m);
}

TEST(OpTile, IsTheMirroredPictureAtScaleOne)
{
    const Image out =
        outputOf("CIOpTile", nullptr,
                 with({{"inputCenter", Vector(40.5, 50.5)}, {"inputScale", 1}}, positions()));
    EXPECT_TRUE(out.extent().isInfinite());
    EXPECT_EQ(compare(*render(out, kPositions), *renderWhole(positions())).largest, 0);
    EXPECT_THAT(at(out, -14, 50), IsColor(Rgba{-12.5f, 50.5f, 0, 1}, 1e-4f));
    EXPECT_THAT(at(out, -20, 100), IsColor(Rgba{-6.5f, 93.5f, 0, 1}, 1e-4f));
    // Nothing to mirror: an infinite picture is taken as it is.
    const Image stripes = outputOf("CIStripesGenerator", nullptr,
                                   {{"inputCenter", Vector(0, 0)}, {"inputWidth", 10}});
    const Image same = outputOf("CIOpTile", nullptr, with({{"inputScale", 1}}, stripes));
    EXPECT_EQ(compare(*render(same, {0, 0, 90, 3}), *render(stripes, {0, 0, 90, 3})).largest, 0);
}

TEST(Tiles, ReadWhatTheySayTheyRead)
{
    const Image computed = positions().translated(100, 0).translated(-100, 0).cropped(
        Rect::fromEdges(-13, 7, 107, 96));
    const Image same = Image::fromBitmap(renderWhole(computed), -13, 7);
    std::vector<Mapping> all = folds();
    for (const Mapping& m :
         {kaleidoscope(6, 0, {30, 20}), kaleidoscope(1, -2.5, {47, 52}), opTile(2.8, 0, 30),
          opTile(0.5, -2, 64), opTile(9, 0.2, 40), opTile(1.5, 0.7, 10)})
        all.push_back(m);
    for (const Mapping& m : all) {
        const Image a = outputOf(m.filter, nullptr, with(m.inputs, computed));
        const Image b = outputOf(m.filter, nullptr, with(m.inputs, same));
        for (const Rect& part : {Rect{38, 48, 5, 5}, Rect{90, 20, 40, 10}, Rect{-40, -20, 70, 40}})
            EXPECT_EQ(compare(*render(a, part), *render(b, part)).largest, 0) << m.label;
    }
}

namespace {

Dictionary turned(Dictionary inputs)
{
    inputs.set("inputCenter", Vector(40, 25));
    inputs.set("inputAngle", 0.3);
    return inputs;
}

} // namespace

GOLDEN("CIKaleidoscope", "photo-96x64", {{"inputCenter", Vector(30, 20)}, {"inputAngle", 0.3}},
       {.largest = 1});
GOLDEN("CIOpTile", "photo-96x64", {{"inputCenter", Vector(48, 32)}, {"inputWidth", 24}},
       {.largest = 1});
GOLDEN("CIParallelogramTile", "photo-96x64", turned({{"inputAcuteAngle", 1}, {"inputWidth", 30}}),
       {.largest = 1});
GOLDEN("CITriangleTile", "photo-96x64", turned({{"inputWidth", 40}}), {.largest = 1});
GOLDEN("CIFourfoldRotatedTile", "photo-96x64", turned({{"inputWidth", 30}}), {.largest = 1});
GOLDEN("CIFourfoldTranslatedTile", "photo-96x64",
       turned({{"inputAcuteAngle", 1}, {"inputWidth", 30}}), {.largest = 1});
GOLDEN("CIGlideReflectedTile", "photo-96x64", turned({{"inputWidth", 30}}), {.largest = 1});
GOLDEN("CIEightfoldReflectedTile", "photo-96x64", turned({{"inputWidth", 30}}), {.largest = 1});
GOLDEN("CIFourfoldReflectedTile", "photo-96x64",
       turned({{"inputAcuteAngle", 2}, {"inputWidth", 30}}), {.largest = 1});
GOLDEN("CISixfoldReflectedTile", "photo-96x64", turned({{"inputWidth", 30}}), {.largest = 1});
GOLDEN("CISixfoldRotatedTile", "photo-96x64", turned({{"inputWidth", 30}}), {.largest = 1});
