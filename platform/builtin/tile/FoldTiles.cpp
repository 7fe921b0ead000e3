// Tilings by folds: the plane is folded into one cell of the picture, which repeats around its own
// place.
//
// A fold is a struct with
//   lattice()        two translations that it does not tell apart
//   cell()           the corners of the cell
//   operator()(Vec2) the fold itself, near the origin: the identity in the cell
// Translations that do not matter are taken off in double precision first, so that tilings stay as
// they are far away.
#include "platform/builtin/tile/FoldTiles.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/Plane.h"
#include "platform/builtin/Regions.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kTile = {"TileEffect", "Video", "StillImage", "BuiltIn"};

const double kRoot3 = std::sqrt(3.0);

struct Lattice {
    Point e1, e2;

    // The equivalent of a point that lies near the origin.
    Point reduced(Point p) const
    {
        const double k = 1 / (e1.x * e2.y - e1.y * e2.x);
        const double s = std::floor((p.x * e2.y - p.y * e2.x) * k + 0.5);
        const double t = std::floor((p.y * e1.x - p.x * e1.y) * k + 0.5);
        return {p.x - (s * e1.x + t * e2.x), p.y - (s * e1.y + t * e2.y)};
    }
};

template <class Fold>
struct Folded {
    Point center;
    Turn turn;
    Lattice lattice;
    Fold fold;

    Px operator()(const auto& picture, const Coord& at) const
    {
        const Turn back = turn.inverse();
        const Point anchor =
            lattice.reduced(back.apply(Point{at.anchor.x - center.x, at.anchor.y - center.y}));
        const Vec2 q = Vec2{anchor.x, anchor.y} + back.apply(at.offset);
        return picture(center + turn.apply(fold(q)));
    }
};

// make(width) is the fold.
template <class Make>
Image tiled(const FoldTile& filter, const Make& make)
{
    const Image& image = filter.inputImage;
    if (image.extent().isEmpty())
        return image;
    if (!(filter.inputWidth >= 0.001))
        return warp(image, Rect::infinite(), Reach::within(0),
                    [](const auto& picture, const Coord& at) { return picture(at); });
    // A cell beyond the plane is as good as the plane.
    const auto fold = make(std::min(filter.inputWidth, 1e9));
    const Turn turn(filter.inputAngle);
    Polygon cell = fold.cell();
    for (Point& p : cell) {
        const Point q = turn.apply(p);
        p = {filter.inputCenter.x + q.x, filter.inputCenter.y + q.y};
    }
    const auto reach = Reach::of([bounds = boundsOf(cell)](const Rect&) { return bounds; });
    return warp(image, Rect::infinite(), reach,
                Folded{filter.inputCenter.point(), turn, fold.lattice(), fold});
}

// Mirrored at 0 and at w: the nearest multiple of 2w is the origin.
F mirrored(F x, double w)
{
    return abs(x - F(2 * w) * floor(x / F(2 * w) + F(0.5f)));
}

// Parallelograms with the sides e1 = (w, 0) and e2.
struct Oblique {
    double w;
    Point e2;

    Oblique(double width, double acuteAngle) : w(width)
    {
        const Turn turn(acuteAngle);
        // Flatter parallelograms would stretch without bound.
        const double sine =
            std::copysign(std::max(std::abs(turn.sine), 0.001), turn.sine < 0 ? -1.0 : 1.0);
        e2 = {w * turn.cosine, w * sine};
    }

    // How many e1 and e2 a point is away from the origin.
    void parts(Vec2 q, F& s, F& t) const
    {
        t = q.y / F(e2.y);
        s = q.x / F(w) - t * F(e2.x / w);
    }
    Vec2 sum(F s, F t) const { return {s * F(w) + t * F(e2.x), t * F(e2.y)}; }
};

struct TranslatedFold : Oblique {
    using Oblique::Oblique;

    Lattice lattice() const { return {{w, 0}, e2}; }
    Polygon cell() const { return {{0, 0}, {w, 0}, e2, {w + e2.x, e2.y}}; }

    Vec2 operator()(Vec2 q) const
    {
        F s, t;
        parts(q, s, t);
        return q - sum(floor(s), floor(t));
    }
};

// The cell begins at (start, start), in sides.
struct ReflectedFold : Oblique {
    double start;

    ReflectedFold(double width, double acuteAngle, double startOfCell)
        : Oblique(width, acuteAngle), start(startOfCell)
    {
    }

    Lattice lattice() const { return {{2 * w, 0}, {2 * e2.x, 2 * e2.y}}; }
    Polygon cell() const
    {
        const auto corner = [&](double s, double t) { return Point{s * w + t * e2.x, t * e2.y}; };
        const double end = start + 1;
        return {corner(start, start), corner(end, start), corner(start, end), corner(end, end)};
    }

    Vec2 operator()(Vec2 q) const
    {
        F s, t;
        parts(q, s, t);
        // To within a side of the cell's beginning, then mirrored there.
        const auto pairs = [&](F v) { return F(2.0f) * floor((v - F(start)) * F(0.5f) + F(0.5f)); };
        const auto beyond = [&](F v) { return F(2.0f) * min(v - F(start), 0.0f); };
        const F i = pairs(s), j = pairs(t);
        return q - sum(i + beyond(s - i), j + beyond(t - j));
    }
};

struct FourfoldRotatedFold {
    double w;

    Lattice lattice() const { return {{2 * w, 0}, {0, 2 * w}}; }
    Polygon cell() const { return cornersOf({0, 0, w, w}); }

    Vec2 operator()(Vec2 q) const
    {
        const auto near = [&](F v) { return v - F(2 * w) * floor(v / F(2 * w) + F(0.5f)); };
        const F x = near(q.x), y = near(q.y);
        const M left = x < F(0.0f), below = y < F(0.0f);
        const Vec2 upper = select(left, Vec2{y, -x}, Vec2{x, y});
        const Vec2 lower = select(left, Vec2{-x, -y}, Vec2{-y, x});
        return select(below, lower, upper);
    }
};

struct GlideReflectedFold {
    double w;

    Lattice lattice() const { return {{2 * w, 0}, {0, w}}; }
    Polygon cell() const { return cornersOf({0, 0, w, w}); }

    Vec2 operator()(Vec2 q) const
    {
        const F column = floor(q.x / F(w));
        const F y = q.y - F(w) * floor(q.y / F(w));
        const M even = frac(column * F(0.5f)) == F(0.0f);
        return {q.x - F(w) * column, select(even, y, F(w) - y)};
    }
};

struct EightfoldReflectedFold {
    double w;

    Lattice lattice() const { return {{2 * w, 0}, {0, 2 * w}}; }
    Polygon cell() const { return cornersOf({0, 0, w, w}); }

    Vec2 operator()(Vec2 q) const
    {
        const F x = mirrored(q.x, w), y = mirrored(q.y, w);
        return {max(x, y), min(y, x)};
    }
};

// The triangle (0, 0), (w, 0), w·(½, √3/2), moved so that `origin` comes to lie on (0, 0).
struct TriangleFold {
    double w;
    Point origin = {0, 0};

    Point apex() const { return {w / 2, w * kRoot3 / 2}; }
    // Corners of three colours alternate in the lattice of (w, 0) and the apex.
    Lattice lattice() const
    {
        const Point a = apex();
        return {{w + a.x, a.y}, {2 * w - a.x, -a.y}};
    }
    Polygon cell() const
    {
        Polygon p = {{0, 0}, {w, 0}, apex()};
        for (Point& corner : p)
            corner = {corner.x - origin.x, corner.y - origin.y};
        return p;
    }

    Vec2 operator()(Vec2 q) const
    {
        const Vec2 o{origin.x, origin.y};
        const Vec2 p = q + o;
        const F b = p.y / F(w * kRoot3 / 2), a = p.x / F(w) - b * F(0.5f);
        const F i = floor(a), j = floor(b), f = a - i, g = b - j;
        // The weights of the corners with the colours c, c + 1 and c + 2, where c is that of (i,
        // j).
        const M low = f + g < F(1.0f);
        const F first = select(low, F(1.0f) - f - g, f + g - F(1.0f));
        const F second = select(low, f, F(1.0f) - g);
        const F third = select(low, g, F(1.0f) - f);
        const F difference = i - j;
        const F c = difference - F(3.0f) * floor((difference + F(0.5f)) * F(1.0f / 3));
        const M is0 = c < F(0.5f), is1 = c < F(1.5f);
        const F of1 = select(is0, second, select(is1, first, third));
        const F of2 = select(is0, third, select(is1, second, first));
        return Vec2{F(w) * (of1 + F(0.5f) * of2), F(w * kRoot3 / 2) * of2} - o;
    }
};

// Hexagons around the points of a lattice, each of six triangles.
struct SixfoldRotatedFold {
    double w;

    Lattice lattice() const { return {{1.5 * w, w * kRoot3 / 2}, {0, w * kRoot3}}; }
    Polygon cell() const { return {{0, 0}, {w, 0}, {w / 2, w * kRoot3 / 2}}; }

    Vec2 operator()(Vec2 q) const
    {
        const auto toPoint = [&](F i, F j) {
            return q - Vec2{i * F(1.5 * w), i * F(w * kRoot3 / 2) + j * F(w * kRoot3)};
        };
        const F s = q.x / F(1.5 * w);
        const F i = floor(s), j = floor(q.y / F(w * kRoot3) - s * F(0.5f));
        // The nearest of the four corners around.
        Vec2 v = toPoint(i, j);
        F nearest = dot(v, v);
        for (const auto& [di, dj] : {std::pair{1, 0}, {0, 1}, {1, 1}}) {
            const Vec2 other = toPoint(i + F(di), j + F(dj));
            const F d = dot(other, other);
            v = select(d < nearest, other, v);
            nearest = min(d, nearest);
        }
        // Half a turn into the upper half, then one or two sixths into the first triangle.
        v = select((v.y < F(0.0f)) | ((v.y == F(0.0f)) & (v.x < F(0.0f))), -v, v);
        const F sine = -kRoot3 / 2;
        const F slope = F(kRoot3) * v.x;
        const Vec2 turned =
            select(v.y >= -slope, rotate(v, sine, F(0.5f)), rotate(v, sine, F(-0.5f)));
        return select(v.y < slope, v, turned);
    }
};

} // namespace

// Tilings by squares and triangles, and those by parallelograms, take the same.
template <class T>
static void addTile(FilterRegistry& registry, const char* name, const char* displayName,
                    Details width = distance().min(0).slider(1, 200).identity(100))
{
    add<T>(registry, name, displayName, kTile,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputAngle", &T::inputAngle, "Angle", kTurn},
               {"inputWidth", &T::inputWidth, "Width", width},
           });
}
template <class T>
static void addObliqueTile(FilterRegistry& registry, const char* name, const char* displayName)
{
    add<T>(
        registry, name, displayName, kTile,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputAngle", &T::inputAngle, "Angle", kTurn},
            {"inputAcuteAngle", &T::inputAcuteAngle, "Acute Angle",
             angle().slider(-kPi, kPi).identity(kPi / 2)},
            {"inputWidth", &T::inputWidth, "Width", distance().min(0).slider(1, 200).identity(100)},
        });
}

void ParallelogramTile::initialize(FilterRegistry& registry)
{
    addObliqueTile<ParallelogramTile>(registry, "CIParallelogramTile", "Parallelogram Tile");
}

Image ParallelogramTile::outputImage() const
{
    return tiled(*this, [this](double w) { return ReflectedFold(w, inputAcuteAngle, -0.5); });
}

void TriangleTile::initialize(FilterRegistry& registry)
{
    addTile<TriangleTile>(registry, "CITriangleTile", "Triangle Tile",
                          distance().min(0).slider(1, 200));
}

Image TriangleTile::outputImage() const
{
    return tiled(*this, [](double w) {
        return TriangleFold{.w = w, .origin = {w / 2, w / (2 * kRoot3)}};
    });
}

void FourfoldRotatedTile::initialize(FilterRegistry& registry)
{
    addTile<FourfoldRotatedTile>(registry, "CIFourfoldRotatedTile", "Fourfold Rotated Tile");
}

Image FourfoldRotatedTile::outputImage() const
{
    return tiled(*this, [](double w) { return FourfoldRotatedFold{w}; });
}

void FourfoldTranslatedTile::initialize(FilterRegistry& registry)
{
    addObliqueTile<FourfoldTranslatedTile>(registry, "CIFourfoldTranslatedTile",
                                           "Fourfold Translated Tile");
}

Image FourfoldTranslatedTile::outputImage() const
{
    return tiled(*this, [this](double w) { return TranslatedFold(w, inputAcuteAngle); });
}

void GlideReflectedTile::initialize(FilterRegistry& registry)
{
    addTile<GlideReflectedTile>(registry, "CIGlideReflectedTile", "Glide Reflected Tile");
}

Image GlideReflectedTile::outputImage() const
{
    return tiled(*this, [](double w) { return GlideReflectedFold{w}; });
}

void EightfoldReflectedTile::initialize(FilterRegistry& registry)
{
    addTile<EightfoldReflectedTile>(registry, "CIEightfoldReflectedTile",
                                    "Eightfold Reflected Tile");
}

Image EightfoldReflectedTile::outputImage() const
{
    return tiled(*this, [](double w) { return EightfoldReflectedFold{w}; });
}

void FourfoldReflectedTile::initialize(FilterRegistry& registry)
{
    addObliqueTile<FourfoldReflectedTile>(registry, "CIFourfoldReflectedTile",
                                          "Fourfold Reflected Tile");
}

Image FourfoldReflectedTile::outputImage() const
{
    return tiled(*this, [this](double w) { return ReflectedFold(w, inputAcuteAngle, 0); });
}

void SixfoldReflectedTile::initialize(FilterRegistry& registry)
{
    addTile<SixfoldReflectedTile>(registry, "CISixfoldReflectedTile", "Sixfold Reflected Tile");
}

Image SixfoldReflectedTile::outputImage() const
{
    return tiled(*this, [](double w) { return TriangleFold{.w = w}; });
}

void SixfoldRotatedTile::initialize(FilterRegistry& registry)
{
    addTile<SixfoldRotatedTile>(registry, "CISixfoldRotatedTile", "Sixfold Rotated Tile");
}

Image SixfoldRotatedTile::outputImage() const
{
    return tiled(*this, [](double w) { return SixfoldRotatedFold{w}; });
}

} // namespace builtin
