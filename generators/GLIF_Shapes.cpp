// Eight manners of filling a sheet with flat shapes, as many at any size.
//
//   0 quarters    a grid of quarter and half circles, leaves and dots on coloured tiles
//   1 boomerangs  with their outlines slipped out of place, dots and starbursts between them
//   2 discs       translucent, the large ones below
//   3 rings       a tile for each set of concentric discs
//   4 arcs        ribbons that wander from tile to tile, each in its own colour
//   5 shards      facets that catch the light
//   6 pebbles     packed, some of them with a core
//   7 hills       striped ranges before a sun
//
// Every manner leaves some ground open, where the background shows. Shapes take their random
// numbers in the order in which they are drawn - tiles from the bottom row upwards, each row from
// the left - and as many whatever the colours: another scheme or key paints the same sheet again.
#include "generators/GLIF_Shapes.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFShapesType", 0, 7, 0},
    {"GLIFColorScheme", 0, 20, 0},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.07f},
    {"GLIFUseBackgroundColor", false, true, true},
    {"GLIFBackgroundColor", Color::rgb(0.97f, 0.94f, 0.87f)},
};

constexpr double kPi = std::numbers::pi;

// What is painted on, and the colours it is painted in. Positions in the scheme run round and
// round: their whole part means nothing.
struct Sheet {
    Canvas& canvas;
    double width, height;
    double keyHue;
    std::int32_t scheme;

    Color color(double position) const
    {
        return computeSchemeColor(position - std::floor(position), keyHue, scheme);
    }

    void fill(const Path& path, double position, float alpha = 1) const
    {
        canvas.setColor(color(position).withAlpha(alpha));
        canvas.fill(path);
    }

    void stroke(const Path& path, double position) const
    {
        canvas.setColor(color(position));
        canvas.stroke(path);
    }

    // The side of a square tile of which so many cover the sheet.
    double tileSide(double tiles) const { return std::sqrt(width * height / tiles); }

    // The position, or the next of those that go round the scheme in sevenths, whose colour can be
    // told from the colour at `other`; if none can, the one that differs most.
    double apartFrom(double other, double position) const
    {
        constexpr float kEnough = 0.45f;
        const Color a = color(other);
        double best = position;
        float most = -1;
        for (int i = 0; i < 7; ++i) {
            const double candidate = position + i / 7.0;
            const Color b = color(candidate);
            const float difference =
                std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
            if (difference > most) {
                best = candidate;
                most = difference;
            }
            if (difference >= kEnough)
                break;
        }
        return best;
    }

    // Of the positions that go round the scheme in sevenths, the one whose colour is strongest,
    // and warm rather than cold.
    double brightestFrom(double position) const
    {
        double best = position;
        float most = -1;
        for (int i = 0; i < 7; ++i) {
            const double candidate = position + i / 7.0;
            const Color c = color(candidate);
            const float strength = std::max({c.red, c.green, c.blue}) -
                                   std::min({c.red, c.green, c.blue}) + (c.red - c.blue) / 2;
            if (strength > most) {
                best = candidate;
                most = strength;
            }
        }
        return best;
    }
};

// Square tiles over the whole sheet, the sheet's middle in the middle of the grid. How many there
// are depends on its proportions alone, so that a preview shows what the full size will.
struct Grid {
    Grid(const Sheet& sheet, double tiles)
        : side(sheet.tileSide(tiles)), columns(tilesAlong(sheet.width)),
          rows(tilesAlong(sheet.height)), left((sheet.width - columns * side) / 2),
          bottom((sheet.height - rows * side) / 2)
    {
    }

    // Corners on whole points, so that neighbours that touch meet without a seam.
    void align()
    {
        const Point middle = corner(columns / 2.0, rows / 2.0);
        side = std::ceil(side - kExact);
        left = std::floor(middle.x - columns * side / 2);
        bottom = std::floor(middle.y - rows * side / 2);
    }

    double side;
    int columns, rows;
    double left, bottom;

    Point corner(double column, double row) const
    {
        return {left + column * side, bottom + row * side};
    }

private:
    // Less than this is rounding, not a tile of its own.
    static constexpr double kExact = 1e-6;

    int tilesAlong(double length) const { return truncToInt(std::ceil(length / side - kExact)); }
};

Rect squareAround(Point center, double half)
{
    return {center.x - half, center.y - half, 2 * half, 2 * half};
}

Path disc(Point center, double radius)
{
    return Path::ovalInRect(squareAround(center, radius));
}

// A sector of a quarter circle.
Path quarterDisc(Point center, double radius, double startDegrees)
{
    Path path;
    path.moveTo(center);
    path.appendArc(center, radius, startDegrees, startDegrees + 90);
    path.close();
    return path;
}

Path halfDisc(Point center, double radius, double startDegrees)
{
    Path path;
    path.appendArc(center, radius, startDegrees, startDegrees + 180);
    path.close();
    return path;
}

// Unit shapes are placed by a transform: their size, turn (degrees) and middle.
class Placed {
public:
    Placed(Canvas& canvas, Point middle, double scaleX, double scaleY, double degrees)
        : _canvas(canvas)
    {
        _canvas.save();
        _canvas.concat(AffineTransform::scaling(scaleX, scaleY)
                           .followedBy(AffineTransform::rotation(degrees * kPi / 180))
                           .followedBy(AffineTransform::translation(middle.x, middle.y)));
    }
    ~Placed() { _canvas.restore(); }
    Placed(const Placed&) = delete;
    Placed& operator=(const Placed&) = delete;

private:
    Canvas& _canvas;
};

// Points all over the sheet that keep away from each other: of eight drawn (x, then y, of each),
// the one farthest from all points before it.
class Scatter {
public:
    explicit Scatter(const Sheet& sheet) : _sheet(sheet) {}

    Point next()
    {
        Point best;
        double farthest = -1;
        for (int i = 0; i < 8; ++i) {
            const double u = randomUnit();
            const double v = randomUnit();
            const Point p{u * _sheet.width, v * _sheet.height};
            double nearest = std::hypot(_sheet.width, _sheet.height);
            for (const Point& other : _points)
                nearest = std::min(nearest, std::hypot(p.x - other.x, p.y - other.y));
            if (nearest > farthest) {
                best = p;
                farthest = nearest;
            }
        }
        _points.push_back(best);
        return best;
    }

private:
    const Sheet& _sheet;
    std::vector<Point> _points;
};

// Each tile draws its figure, its turn, whether its ground stays open, and three colours.
void drawQuarters(const Sheet& sheet)
{
    Grid grid(sheet, 48);
    grid.align();
    Path ground;
    ground.appendRect({-1, -1, 2, 2});
    for (int row = 0; row < grid.rows; ++row)
        for (int column = 0; column < grid.columns; ++column) {
            const int figure = randomInt() % 8;
            const int quarterTurns = randomInt() % 4;
            const bool isOpen = randomInt() % 4 == 0;
            const double below = randomUnit();
            const double first = sheet.apartFrom(below, randomUnit());
            const double second = sheet.apartFrom(first, randomUnit());
            const Placed unit(sheet.canvas, grid.corner(column + 0.5, row + 0.5), grid.side / 2,
                              grid.side / 2, 90.0 * quarterTurns);
            if (!isOpen)
                sheet.fill(ground, below);
            const Point corner{-1, -1};
            switch (figure) {
            case 0:
                sheet.fill(quarterDisc(corner, 2, 0), first);
                break;
            case 1:
                sheet.fill(quarterDisc(corner, 2, 0), first);
                sheet.fill(quarterDisc(corner, 1.25, 0), second);
                sheet.fill(quarterDisc(corner, 0.5, 0), below);
                break;
            case 2:
                sheet.fill(halfDisc({-1, 0}, 1, 270), first);
                sheet.fill(halfDisc({0, 0}, 1, 270), second);
                break;
            case 3: {
                Path leaf;
                leaf.appendArc({1, -1}, 2, 90, 180);
                leaf.appendArc({-1, 1}, 2, 270, 360);
                leaf.close();
                sheet.fill(leaf, first);
                break;
            }
            case 4:
                sheet.fill(disc({0, 0}, 1), first);
                sheet.fill(disc({0, 0}, 0.42), second);
                break;
            case 5:
                sheet.fill(quarterDisc(corner, 1, 0), first);
                sheet.fill(quarterDisc({0, 0}, 1, 0), second);
                sheet.fill(quarterDisc({0, -1}, 1, 0), first);
                sheet.fill(quarterDisc({-1, 0}, 1, 0), second);
                break;
            case 6: {
                Path half;
                half.moveTo({-1, -1});
                half.lineTo({1, -1});
                half.lineTo({1, 1});
                half.close();
                sheet.fill(half, first);
                sheet.fill(quarterDisc({1, -1}, 1, 90), second);
                break;
            }
            default:
                sheet.fill(halfDisc({0, -1}, 1, 0), first);
                sheet.fill(halfDisc({0, 0}, 1, 0), second);
                break;
            }
        }
}

Path boomerang()
{
    Path path;
    path.moveTo({-1.05, 0.42});
    path.curveTo({-0.92, 0.02}, {-0.46, -0.86}, {0, -0.86});
    path.curveTo({0.46, -0.86}, {0.92, 0.02}, {1.05, 0.42});
    path.curveTo({1.12, 0.64}, {0.92, 0.74}, {0.76, 0.56});
    path.curveTo({0.52, 0.28}, {0.30, 0.02}, {0, 0.02});
    path.curveTo({-0.30, 0.02}, {-0.52, 0.28}, {-0.76, 0.56});
    path.curveTo({-0.92, 0.74}, {-1.12, 0.64}, {-1.05, 0.42});
    path.close();
    path.lineWidth = 0.045;
    path.join = drawing::LineJoin::Round;
    return path;
}

Path starburst()
{
    Path path;
    for (int i = 0; i < 4; ++i) {
        const double angle = i * kPi / 4, reach = i % 2 == 0 ? 1 : 0.6;
        path.moveTo({reach * std::cos(angle), reach * std::sin(angle)});
        path.lineTo({-reach * std::cos(angle), -reach * std::sin(angle)});
    }
    path.lineWidth = 0.1;
    path.cap = drawing::LineCap::Round;
    return path;
}

// Boomerangs draw their place, turn, size, how far their outline has slipped, and two colours; what
// lies between them its place, kind, turn, size and colour.
void drawBoomerangs(const Sheet& sheet)
{
    constexpr int kBoomerangs = 24, kBetween = 60;
    const double unit = sheet.tileSide(kBoomerangs);
    const Path shape = boomerang(), star = starburst();
    Scatter scatter(sheet);
    for (int i = 0; i < kBoomerangs; ++i) {
        const Point at = scatter.next();
        const double turn = 360.0 * randomUnit();
        const double size = unit * (0.42 + 0.22 * randomUnit());
        const double slip = 0.3 * randomUnit();
        const double inside = randomUnit();
        const double outline = sheet.apartFrom(inside, randomUnit());
        {
            const Placed placed(sheet.canvas, at, size, size, turn);
            sheet.fill(shape, inside);
        }
        const Point slipped{at.x + (0.1 + slip) * size, at.y + (0.25 - slip) * size};
        const Placed placed(sheet.canvas, slipped, size, size, turn + 40 * slip);
        sheet.stroke(shape, outline);
    }
    for (int i = 0; i < kBetween; ++i) {
        const Point at = scatter.next();
        const int kind = randomInt() % 3;
        const double turn = 360.0 * randomUnit();
        const double size = unit * (0.05 + 0.07 * randomUnit());
        const double position = randomUnit();
        if (kind == 0) {
            const Placed placed(sheet.canvas, at, 1.7 * size, 1.7 * size, turn);
            sheet.stroke(star, position);
        } else if (kind == 1) {
            sheet.fill(disc(at, 0.8 * size), position);
        } else {
            Path ring = disc(at, size);
            ring.lineWidth = 0.3 * size;
            sheet.stroke(ring, position);
        }
    }
}

// Each draws its place, how opaque it is, and its colour.
void drawDiscs(const Sheet& sheet)
{
    constexpr int kDiscs = 84;
    const double unit = sheet.tileSide(kDiscs);
    Scatter scatter(sheet);
    for (int i = 0; i < kDiscs; ++i) {
        const double left = 1 - double(i) / kDiscs;
        const Point at = scatter.next();
        const float alpha = 0.65f + 0.3f * randomUnit();
        const double position = randomUnit();
        sheet.fill(disc(at, unit * (0.13 + 1.5 * left * left * left)), position, alpha);
    }
}

// Each tile draws the colour of its ground; then each disc its colour and its radius.
void drawRings(const Sheet& sheet)
{
    constexpr int kDiscs = 5;
    const Grid grid(sheet, 12);
    for (int row = 0; row < grid.rows; ++row)
        for (int column = 0; column < grid.columns; ++column) {
            const Point middle = grid.corner(column + 0.5, row + 0.5);
            double position = randomUnit();
            Path ground;
            ground.appendRect(squareAround(middle, 0.47 * grid.side));
            sheet.fill(ground, position);
            for (int i = 0; i < kDiscs; ++i) {
                position = sheet.apartFrom(position, randomUnit());
                const double share = (kDiscs - i - 0.45 * randomUnit()) / kDiscs;
                sheet.fill(disc(middle, 0.44 * grid.side * share), position);
            }
        }
}

// Two arcs to a tile join the middles of its sides in pairs, one of two ways; arcs of neighbouring
// tiles meet in the side they share and make ribbons, which end at the grid's edge or close.
class Ribbons {
public:
    // Each tile draws which pairs it joins.
    explicit Ribbons(const Grid& grid)
        : _grid(grid), _flipped(std::size_t(grid.columns) * grid.rows), _walked(2 * _flipped.size())
    {
        for (std::size_t i = 0; i < _flipped.size(); ++i)
            _flipped[i] = randomInt() % 2 != 0;
    }

    // The whole ribbon through this arc (0 the one that meets the tile's lower side, 1 the other);
    // empty if it was followed before.
    Path follow(int column, int row, int arc)
    {
        Path path;
        if (_walked[indexOf(column, row, arc)])
            return path;
        // Back to where it begins, or once around.
        const Step here{column, row, arc == 0 ? kBottom : kTop};
        Step first = here, before = here;
        while (leave(before, first.side)) {
            first = before = {before.column, before.row, otherEnd(before)};
            if (first == here)
                break;
        }
        Step at = first;
        do {
            _walked[indexOf(at.column, at.row, arcAt(at))] = true;
            appendArc(path, at);
            if (!leave(at, otherEnd(at)))
                return path;
        } while (!(at == first));
        path.close();
        return path;
    }

private:
    enum Side { kLeft, kBottom, kRight, kTop };
    // A tile and the side by which it is entered.
    struct Step {
        int column, row;
        Side side;
        friend bool operator==(const Step&, const Step&) = default;
    };

    bool flipped(int column, int row) const
    {
        return _flipped[std::size_t(row) * _grid.columns + column];
    }
    std::size_t indexOf(int column, int row, int arc) const
    {
        return 2 * (std::size_t(row) * _grid.columns + column) + arc;
    }
    // Plain tiles join left with bottom and right with top, flipped ones left with top.
    Side otherEnd(const Step& s) const
    {
        const Side plain[] = {kBottom, kLeft, kTop, kRight};
        const Side turned[] = {kTop, kRight, kBottom, kLeft};
        return (flipped(s.column, s.row) ? turned : plain)[s.side];
    }
    int arcAt(const Step& s) const { return s.side == kBottom || otherEnd(s) == kBottom ? 0 : 1; }
    // Through the side into the next tile; false at the edge of the grid.
    bool leave(Step& s, Side side) const
    {
        s.column += side == kRight ? 1 : side == kLeft ? -1 : 0;
        s.row += side == kTop ? 1 : side == kBottom ? -1 : 0;
        s.side = static_cast<Side>((side + 2) % 4);
        return s.column >= 0 && s.row >= 0 && s.column < _grid.columns && s.row < _grid.rows;
    }
    void appendArc(Path& path, const Step& s) const
    {
        const Side from = s.side, to = otherEnd(s);
        const bool right = from == kRight || to == kRight, top = from == kTop || to == kTop;
        const Point center = _grid.corner(s.column + (right ? 1 : 0), s.row + (top ? 1 : 0));
        const auto angleTo = [&](Side side) {
            const bool upright = side == kLeft || side == kRight;
            return upright ? (top ? 270.0 : 90.0) : (right ? 180.0 : 0.0);
        };
        const double start = angleTo(from), end = angleTo(to);
        path.appendArc(center, _grid.side / 2, start, end, std::fmod(end - start + 360, 360) > 180);
    }

    const Grid& _grid;
    std::vector<bool> _flipped, _walked;
};

// All tiles first draw their turn; then each ribbon draws two colours.
void drawArcs(const Sheet& sheet)
{
    const Grid grid(sheet, 108);
    Ribbons ribbons(grid);
    for (int row = 0; row < grid.rows; ++row)
        for (int column = 0; column < grid.columns; ++column)
            for (int arc = 0; arc < 2; ++arc) {
                Path path = ribbons.follow(column, row, arc);
                if (path.isEmpty())
                    continue;
                const double edge = randomUnit();
                const double core = sheet.apartFrom(edge, randomUnit());
                path.lineWidth = 0.56 * grid.side;
                sheet.stroke(path, edge);
                path.lineWidth = 0.22 * grid.side;
                sheet.stroke(path, core);
            }
}

// Draws four colours, one for each corner of the sheet, between which the facets' colours run; then
// for each corner of a facet two shifts and a height; then for each pair of facets which way they
// divide their tile, and two shifts in colour.
void drawShards(const Sheet& sheet)
{
    struct Corner {
        Point at;
        double height;
    };
    const Grid grid(sheet, 70);
    std::array<double, 4> tones{};
    for (double& tone : tones)
        tone = randomUnit();
    // One more tile all round, so that the outermost corners stay out of sight.
    const int columns = grid.columns + 3, rows = grid.rows + 3;
    std::vector<Corner> corners(std::size_t(columns) * rows);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const double dx = 0.7 * (randomUnit() - 0.5f);
            const double dy = 0.7 * (randomUnit() - 0.5f);
            const double height = randomUnit();
            corners[std::size_t(row) * columns + column] = {
                grid.corner(column - 1 + dx, row - 1 + dy), height};
        }
    const auto facet = [&](const Corner& a, const Corner& b, const Corner& c, double shift) {
        const Point middle{(a.at.x + b.at.x + c.at.x) / 3, (a.at.y + b.at.y + c.at.y) / 3};
        const double u = std::clamp(middle.x / sheet.width, 0.0, 1.0);
        const double v = std::clamp(middle.y / sheet.height, 0.0, 1.0);
        const double tone =
            (tones[0] * (1 - u) + tones[1] * u) * (1 - v) + (tones[2] * (1 - u) + tones[3] * u) * v;
        // Drawn in a little, which leaves the ground open along the edges.
        const auto drawnIn = [&](const Corner& corner) {
            constexpr double kKept = 0.955;
            return Point{middle.x + kKept * (corner.at.x - middle.x),
                         middle.y + kKept * (corner.at.y - middle.y)};
        };
        Path path;
        path.moveTo(drawnIn(a));
        path.lineTo(drawnIn(b));
        path.lineTo(drawnIn(c));
        path.close();
        sheet.fill(path, tone + 0.22 * (shift - 0.5));
        // Light from the upper left: the slope of the facet along the diagonal.
        const double ux = b.at.x - a.at.x, uy = b.at.y - a.at.y, uz = b.height - a.height;
        const double vx = c.at.x - a.at.x, vy = c.at.y - a.at.y, vz = c.height - a.height;
        const double nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
        const double slope = nz != 0 ? std::clamp((ny - nx) / nz * grid.side, -1.0, 1.0) : 0;
        const auto strength = static_cast<float>(0.34 * std::abs(slope));
        sheet.canvas.setColor((slope > 0 ? Color::white() : Color::black()).withAlpha(strength));
        sheet.canvas.fill(path);
    };
    for (int row = 0; row + 1 < rows; ++row)
        for (int column = 0; column + 1 < columns; ++column) {
            const bool rising = randomInt() % 2 != 0;
            const double first = randomUnit();
            const double second = randomUnit();
            const Corner* lower = &corners[std::size_t(row) * columns + column];
            const Corner* upper = lower + columns;
            if (rising) {
                facet(lower[0], lower[1], upper[1], first);
                facet(lower[0], upper[1], upper[0], second);
            } else {
                facet(lower[0], lower[1], upper[0], first);
                facet(lower[1], upper[1], upper[0], second);
            }
        }
}

// Keeps the part of a convex polygon that is nearer to the origin than to the other site, less a
// margin.
void cutBetween(std::vector<Point>& polygon, Point other, double margin)
{
    const double distance = std::hypot(other.x, other.y);
    if (distance <= 0)
        return;
    const auto beyond = [&](Point p) {
        return (p.x * other.x + p.y * other.y) / distance - (distance / 2 - margin);
    };
    std::vector<Point> kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point from = polygon[i], to = polygon[(i + 1) % polygon.size()];
        const double a = beyond(from), b = beyond(to);
        if (a <= 0)
            kept.push_back(from);
        if ((a > 0) != (b > 0)) {
            const double t = a / (a - b);
            kept.push_back({from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)});
        }
    }
    polygon = std::move(kept);
}

// Through the middles of the sides, the corners as handles.
Path roundedPolygon(const std::vector<Point>& corners, Point middle, double scale)
{
    const auto at = [&](double x, double y) {
        return Point{middle.x + scale * x, middle.y + scale * y};
    };
    const auto between = [&](Point a, Point b, double t) {
        return at(a.x + t * (b.x - a.x), a.y + t * (b.y - a.y));
    };
    Path path;
    const std::size_t n = corners.size();
    for (std::size_t i = 0; i < n; ++i) {
        const Point before = corners[(i + n - 1) % n], corner = corners[i],
                    after = corners[(i + 1) % n];
        if (i == 0)
            path.moveTo(between(before, corner, 0.5));
        path.curveTo(between(before, corner, 0.85), between(corner, after, 0.15),
                     between(corner, after, 0.5));
    }
    path.close();
    return path;
}

// All places first, two shifts each; then each pebble draws whether it has a core, and two colours.
void drawPebbles(const Sheet& sheet)
{
    constexpr int kAround = 3;
    const Grid grid(sheet, 150);
    const int columns = grid.columns + 2 * kAround, rows = grid.rows + 2 * kAround;
    std::vector<Point> sites(std::size_t(columns) * rows);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const double u = randomUnit();
            const double v = randomUnit();
            sites[std::size_t(row) * columns + column] =
                grid.corner(column - kAround + 0.1 + 0.8 * u, row - kAround + 0.1 + 0.8 * v);
        }
    for (int row = kAround - 1; row < rows - kAround + 1; ++row)
        for (int column = kAround - 1; column < columns - kAround + 1; ++column) {
            const bool hasCore = randomInt() % 4 == 0;
            const double outer = randomUnit();
            const double inner = sheet.apartFrom(outer, randomUnit());
            const Point site = sites[std::size_t(row) * columns + column];
            const double far = 1.5 * grid.side;
            std::vector<Point> cell = {{-far, -far}, {far, -far}, {far, far}, {-far, far}};
            for (int dy = -2; dy <= 2; ++dy)
                for (int dx = -2; dx <= 2; ++dx) {
                    const Point p = sites[std::size_t(row + dy) * columns + column + dx];
                    cutBetween(cell, {p.x - site.x, p.y - site.y}, 0.035 * grid.side);
                }
            if (cell.size() < 3)
                continue;
            sheet.fill(roundedPolygon(cell, site, 1), outer);
            if (hasCore)
                sheet.fill(roundedPolygon(cell, site, 0.5), inner);
        }
}

// The sun draws its place and colour; then each range, the farthest first, its colour, where its
// wave begins, and the heights along it; then each of its stripes a colour.
void drawHills(const Sheet& sheet)
{
    constexpr int kRanges = 5, kWaves = 5, kStripes = 3;
    const double w = sheet.width, h = sheet.height;
    const double sunX = w * (0.2 + 0.6 * randomUnit());
    const double sun = sheet.brightestFrom(randomUnit());
    const double radius = 0.17 * std::min(w, h);
    for (const double share : {1.6, 1.3, 1.0})
        sheet.fill(disc({sunX, 0.7 * h}, radius * share), sun, share > 1 ? 0.25f : 1);
    double position = sun;
    for (int range = 0; range < kRanges; ++range) {
        position = sheet.apartFrom(position, randomUnit());
        const double base = h * (0.56 - 0.13 * range);
        const double swing = h * (0.09 + 0.012 * range);
        const double step = w / (kWaves - 1.5);
        double x = -step * randomUnit();
        std::array<Point, kWaves + 1> ridge;
        for (int i = 0; i <= kWaves; ++i) {
            const double up = (i + range) % 2 == 0 ? 1 : -1;
            ridge[i] = {x, base + swing * up * (0.25 + 0.75 * randomUnit())};
            x += step;
        }
        double color = position;
        for (int stripe = 0; stripe <= kStripes; ++stripe) {
            if (stripe > 0)
                color = sheet.apartFrom(color, randomUnit());
            const double down = 0.028 * h * stripe;
            Path path;
            path.moveTo({ridge[0].x, -h});
            path.lineTo({ridge[0].x, ridge[0].y - down});
            for (int i = 1; i <= kWaves; ++i)
                path.curveTo({ridge[i - 1].x + step / 2, ridge[i - 1].y - down},
                             {ridge[i].x - step / 2, ridge[i].y - down},
                             {ridge[i].x, ridge[i].y - down});
            path.lineTo({ridge[kWaves].x, -h});
            path.close();
            sheet.fill(path, color);
        }
    }
}

} // namespace

const AttributeTable& GLIF_Shapes::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Shapes::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                             int height,
                                                             const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    _shapesType = attributes.intValue("GLIFShapesType", 0);
    return renderDrawRect(pictureSize(reference, width, height), "GLIF_Shapes: can't generate");
}

void GLIF_Shapes::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
    constexpr void (*kManners[])(const Sheet&) = {drawQuarters, drawBoomerangs, drawDiscs,
                                                  drawRings,    drawArcs,       drawShards,
                                                  drawPebbles,  drawHills};
    const bool known = _shapesType >= 0 && _shapesType < static_cast<int>(std::size(kManners));
    kManners[known ? _shapesType : 0](
        {canvas, rect.width, rect.height, _schemeKeyColor, _iColorScheme});
}
