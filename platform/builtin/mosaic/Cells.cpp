#include "platform/builtin/mosaic/Cells.h"

#include "platform/builtin/Hash.h"
#include "platform/builtin/Inputs.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace builtin {

using namespace imaging;

namespace {

// Centres farther away than any pixel, and cells larger than any picture, count as that far and
// that large: whole numbers of cells fit into 64 bits, and fractions of a pixel into a double.
constexpr double kFarthest = 2147483648.0;
constexpr double kLargest = 1e12;

Point limited(Point center)
{
    const auto axis = [](double v) {
        return std::isnan(v) ? 0 : std::clamp(v, -kFarthest, kFarthest);
    };
    return {axis(center.x), axis(center.y)};
}

double limitedSize(double size)
{
    return std::clamp(positive(size), 1.0, kLargest);
}

std::int64_t down(double v)
{
    return static_cast<std::int64_t>(std::floor(v));
}

// The first pixel of the plane whose middle is at or right of (above) the position.
int firstPixelFrom(double position)
{
    constexpr double kEdge = IRect::kEdge;
    return static_cast<int>(std::ceil(std::clamp(position - 0.5, -kEdge, kEdge)));
}

// Edges that are whole numbers but for rounding are taken as whole.
IRect aroundEdges(double left, double bottom, double right, double top)
{
    constexpr double kRounding = 1e-6;
    return IRect::around(Rect::fromEdges(std::floor(left + kRounding),
                                         std::floor(bottom + kRounding),
                                         std::ceil(right - kRounding), std::ceil(top - kRounding)));
}

IRect grownBy(const IRect& r, double margin)
{
    const int pixels = static_cast<int>(std::min(std::ceil(margin), double(IRect::kEdge)));
    return r.grown(pixels, pixels);
}

} // namespace

SquareCells::SquareCells(Point center, double side)
    : _center(limited(center)), _side(limitedSize(side))
{
}

CellLabel SquareCells::labelAt(int x, int y) const
{
    return {down((x + 0.5 - _center.x) / _side), down((y + 0.5 - _center.y) / _side)};
}

CellRange SquareCells::cellsOf(const IRect& pixels) const
{
    const CellLabel first = labelAt(pixels.left, pixels.bottom);
    const CellLabel last = labelAt(pixels.right - 1, pixels.top - 1);
    return {first.column, first.row, last.column - first.column + 1, last.row - first.row + 1};
}

IRect SquareCells::covered(const IRect& pixels) const
{
    const CellRange c = cellsOf(pixels);
    const auto edge = [this](double center, std::int64_t i) {
        return center + static_cast<double>(i) * _side;
    };
    return aroundEdges(edge(_center.x, c.left), edge(_center.y, c.bottom),
                       edge(_center.x, c.left + c.width), edge(_center.y, c.bottom + c.height));
}

IRect SquareCells::reach(const IRect& region) const
{
    return covered(region).united(region);
}

Point SquareCells::middle(CellLabel cell) const
{
    return {_center.x + (static_cast<double>(cell.column) + 0.5) * _side,
            _center.y + (static_cast<double>(cell.row) + 0.5) * _side};
}

bool SquareCells::isPixelGrid() const
{
    return _side == 1 && _center.x == std::floor(_center.x) && _center.y == std::floor(_center.y);
}

std::unique_ptr<CellCutter> SquareCells::cutter(const IRect& pixels, const CellRange& range) const
{
    // All rows are cut at the same columns.
    struct Cutter : CellCutter {
        CellRow cut(const Span& span, std::vector<CellRun>&) const override
        {
            const auto first = std::upper_bound(runs.begin(), runs.end(), span.x,
                                                [](int x, const CellRun& r) { return x < r.end; });
            const std::int64_t row = down((span.y + 0.5 - center.y) / side);
            return {&*first, (row - range.bottom) * range.width};
        }
        std::vector<CellRun> runs;
        CellRange range;
        Point center;
        double side;
    };
    auto cutter = std::make_unique<Cutter>();
    cutter->range = range;
    cutter->center = _center;
    cutter->side = _side;
    std::vector<CellRun>& runs = cutter->runs;
    for (int x = pixels.left; x < pixels.right;) {
        const std::int64_t column = labelAt(x, pixels.bottom).column;
        const double edge = _center.x + static_cast<double>(column + 1) * _side;
        int end = std::clamp(firstPixelFrom(edge), x + 1, pixels.right);
        // The division decides where the product rounds otherwise.
        while (end > x + 1 && labelAt(end - 1, pixels.bottom).column != column)
            --end;
        while (end < pixels.right && labelAt(end, pixels.bottom).column == column)
            ++end;
        runs.push_back({end, column - range.left});
        x = end;
    }
    return cutter;
}

namespace {

constexpr double kRoot3 = 1.7320508075688772;

std::int64_t halved(std::int64_t row)
{
    return row >> 1;
}

} // namespace

HexagonCells::HexagonCells(Point center, double side)
    : _center(limited(center)), _side(limitedSize(side))
{
}

// In the three slanted coordinates of a hexagonal lattice, which sum to 0: the one that rounding
// moved farthest follows from the other two.
static CellLabel hexagonAt(double x, double y, double side)
{
    double a = (kRoot3 / 3 * x - y / 3) / side, b = 2.0 / 3 * y / side, e = -a - b;
    const double wholeA = std::floor(a + 0.5), wholeB = std::floor(b + 0.5),
                 wholeE = std::floor(e + 0.5);
    const double errorA = std::abs(wholeA - a), errorB = std::abs(wholeB - b),
                 errorE = std::abs(wholeE - e);
    a = wholeA, b = wholeB;
    if (errorA > errorB && errorA > errorE)
        a = -wholeB - wholeE;
    else if (errorB > errorE)
        b = -wholeA - wholeE;
    const auto row = static_cast<std::int64_t>(b);
    return {static_cast<std::int64_t>(a) + halved(row), row};
}

CellLabel HexagonCells::labelAt(int x, int y) const
{
    return hexagonAt(x + 0.5 - _center.x, y + 0.5 - _center.y, _side);
}

CellRange HexagonCells::cellsOf(const IRect& pixels) const
{
    // By the strips of the plane that hold the middles of neighbouring columns and rows.
    const auto column = [this](double x) { return down((x - _center.x) / (kRoot3 * _side)); };
    const auto row = [this](double y) { return down((y - _center.y) / (1.5 * _side)); };
    const std::int64_t left = column(pixels.left) - 1, bottom = row(pixels.bottom) - 1;
    return {left, bottom, column(pixels.right) + 3 - left, row(pixels.top) + 3 - bottom};
}

IRect HexagonCells::reach(const IRect& region) const
{
    return grownBy(region, 2 * _side + 1);
}

IRect HexagonCells::covered(const IRect& pixels) const
{
    // Which cells stick out on the left and right is the same all the way up, but for those that
    // the rectangle cuts off below and above.
    const double ends = 3 * _side + 3;
    constexpr int kMost = 100'000;
    if (pixels.width() > kMost || std::min<double>(pixels.height(), 2 * ends) > kMost)
        return reach(pixels);
    double left = pixels.right, bottom = pixels.top, right = pixels.left, top = pixels.bottom;
    const auto cross = [&](int y, int from, int to) {
        for (int x = from; x < to;) {
            const CellLabel cell = labelAt(x, y);
            const Point m = middle(cell);
            left = std::min(left, m.x - kRoot3 / 2 * _side);
            right = std::max(right, m.x + kRoot3 / 2 * _side);
            bottom = std::min(bottom, m.y - _side);
            top = std::max(top, m.y + _side);
            x = runEnd(cell, x, y);
        }
    };
    cross(pixels.bottom, pixels.left, pixels.right);
    cross(pixels.top - 1, pixels.left, pixels.right);
    // A row of pixels crosses two rows of cells at most, which take turns.
    const int twoCells = static_cast<int>(std::min<double>(4 * _side + 4, pixels.width()));
    for (int y = pixels.bottom; y < pixels.top; ++y) {
        if (y - pixels.bottom > ends && pixels.top - y > ends)
            y = pixels.top - static_cast<int>(ends);
        cross(y, pixels.left, std::min(pixels.right, pixels.left + twoCells));
        cross(y, std::max(pixels.left, pixels.right - twoCells), pixels.right);
    }
    return aroundEdges(left, bottom, right, top);
}

Point HexagonCells::middle(CellLabel cell) const
{
    const double odd = static_cast<double>(cell.row & 1);
    return {_center.x + _side * kRoot3 * (static_cast<double>(cell.column) + odd / 2),
            _center.y + _side * 1.5 * static_cast<double>(cell.row)};
}

// Where the cell's side leaves the row; the label decides for pixels whose middle lies on it.
int HexagonCells::runEnd(CellLabel cell, int x, int y) const
{
    const Point m = middle(cell);
    const double away = std::abs(y + 0.5 - m.y);
    const double side = m.x + kRoot3 * std::min(_side / 2, _side - away);
    int end = std::max(firstPixelFrom(side), x + 1);
    const double doubt = 1e-5 + 1e-12 * _side, beyond = end + 0.5 - side;
    if (!(beyond > doubt && beyond < 1 - doubt)) {
        while (end > x + 1 && labelAt(end - 1, y) != cell)
            --end;
        while (end < IRect::kEdge && labelAt(end, y) == cell)
            ++end;
    }
    return end;
}

std::unique_ptr<CellCutter> HexagonCells::cutter(const IRect&, const CellRange& range) const
{
    struct Cutter : CellCutter {
        Cutter(const HexagonCells& c, const CellRange& r) : cells(c), range(r) {}
        CellRow cut(const Span& span, std::vector<CellRun>& scratch) const override
        {
            scratch.clear();
            for (int x = span.x; x < span.x + span.count; x = scratch.back().end) {
                const CellLabel cell = cells.labelAt(x, span.y);
                scratch.push_back({cells.runEnd(cell, x, span.y), range.indexOf(cell)});
            }
            return {scratch.data(), 0};
        }
        HexagonCells cells;
        CellRange range;
    };
    return std::make_unique<Cutter>(*this, range);
}

JitteredGrid::JitteredGrid(Point center, double pitch, std::uint32_t saltX, std::uint32_t saltY)
    : _center(limited(center)), _pitch(limitedSize(pitch)), _saltX(saltX), _saltY(saltY)
{
}

Point JitteredGrid::site(CellLabel square) const
{
    const auto i = static_cast<std::uint32_t>(square.column),
               j = static_cast<std::uint32_t>(square.row);
    return {_pitch * (static_cast<double>(square.column) + h01(i, j, _saltX)),
            _pitch * (static_cast<double>(square.row) + h01(i, j, _saltY))};
}

void JitteredGrid::jitter(CellLabel first, int count, float* xs, float* ys) const
{
    const auto row = static_cast<std::uint32_t>(first.row);
    for (int k = 0; k < count; k += kLanes) {
        const I columns = I(static_cast<int>(first.column + k)) + iotaInts();
        store(xs + k, h01(columns, row, _saltX));
        store(ys + k, h01(columns, row, _saltY));
    }
}

void JitteredGrid::sites(CellLabel first, int count, std::vector<float>& scratch, double* xs,
                         double* ys) const
{
    const std::size_t room = static_cast<std::size_t>(count) + kLanes;
    scratch.resize(2 * room);
    float *x = scratch.data(), *y = x + room;
    jitter(first, count, x, y);
    for (int k = 0; k < count; ++k) {
        xs[k] = _pitch * (static_cast<double>(first.column + k) + x[k]);
        ys[k] = _pitch * (static_cast<double>(first.row) + y[k]);
    }
}

std::int64_t JitteredGrid::square(double position) const
{
    return down(position / _pitch);
}

CellRange JitteredGrid::squaresOf(const IRect& pixels, int margin) const
{
    const std::int64_t left = square(pixels.left + 0.5 - _center.x) - margin;
    const std::int64_t bottom = square(pixels.bottom + 0.5 - _center.y) - margin;
    return {left, bottom, square(pixels.right - 0.5 - _center.x) + margin + 1 - left,
            square(pixels.top - 0.5 - _center.y) + margin + 1 - bottom};
}

namespace {

constexpr std::uint32_t kCrystalX = 16, kCrystalY = 17;

// How far the middle of a pixel is from a site, squared; both as seen from the centre.
double squaredDistance(Point from, Point site)
{
    const double dx = from.x - site.x, dy = from.y - site.y;
    return dx * dx + dy * dy;
}

} // namespace

CrystalCells::CrystalCells(Point center, double pitch) : _grid(center, pitch, kCrystalX, kCrystalY)
{
}

CellLabel CrystalCells::labelAt(int x, int y) const
{
    const Point at{x + 0.5 - _grid.center().x, y + 0.5 - _grid.center().y};
    const std::int64_t column = _grid.square(at.x), row = _grid.square(at.y);
    CellLabel nearest;
    double least = INFINITY;
    for (std::int64_t j = row - 2; j <= row + 2; ++j)
        for (std::int64_t i = column - 2; i <= column + 2; ++i)
            if (const double d = squaredDistance(at, _grid.site({i, j})); d < least) {
                least = d;
                nearest = {i, j};
            }
    return nearest;
}

IRect CrystalCells::reach(const IRect& region) const
{
    // From a pixel to its site, from there to the site's farthest pixel: √2 pitches each at most.
    return grownBy(region, 3 * _grid.pitch() + 1);
}

Point CrystalCells::middle(CellLabel cell) const
{
    const Point site = _grid.site(cell);
    return {_grid.center().x + site.x, _grid.center().y + site.y};
}

// Along a row, a site's squared distance less x² is a straight line in x: the nearest sites are the
// lower envelope of these lines, which a stack finds in one sweep over the sites from left to
// right.
class CrystalCells::Cutter : public CellCutter {
public:
    Cutter(const JitteredGrid& grid, const CellRange& range)
        : _grid(grid), _range(range), _id(nextId())
    {
    }

    CellRow cut(const Span& span, std::vector<CellRun>& scratch) const override
    {
        const double y = span.y + 0.5 - _grid.center().y;
        Kept& kept = sitesNear(span, _grid.square(y));
        const double farthest = kFarthestSite * _grid.pitch(), hopeless = farthest * farthest;
        Piece* const first = kept.envelope.data();
        Piece* end = first;
        for (const Site& site : kept.sites) {
            const double away = site.at.y - y, height = away * away;
            if (height <= hopeless)
                end = added(first, end, {&site, height, -INFINITY});
        }

        // The pieces that pixels of the span lie in.
        scratch.clear();
        int x = span.x;
        const int last = span.x + span.count;
        for (const Piece* piece = first; x < last; ++piece) {
            const int next = piece + 1 == end ? last : pieceEnd(piece, x, last, y);
            if (next > x)
                scratch.push_back({next, piece->site->cell});
            x = next;
        }
        return {scratch.data(), 0};
    }

private:
    // In pitches: a little more than any pixel is away from the site of its own square.
    static constexpr double kFarthestSite = 1.4142137;

    struct Site {
        Point at; // from the centre
        std::int64_t cell;
    };
    // Of the envelope: the site that is the nearest from `start` on.
    struct Piece {
        const Site* site;
        double height; // of the site above the row, squared
        double start;
    };
    // What one thread remembers: the rows of a tile meet the same sites many times.
    struct Kept {
        std::uint64_t id = 0;
        int x = 0, count = 0;
        std::int64_t row = 0;
        std::vector<Site> sites;     // from left to right, one above the other from below
        std::vector<Piece> envelope; // room for one piece for each site
        std::vector<float> jitter;
        std::vector<double> xs, ys;
    };

    static std::uint64_t nextId()
    {
        static std::atomic<std::uint64_t> last{0};
        return ++last;
    }

    Kept& sitesNear(const Span& span, std::int64_t row) const
    {
        thread_local Kept all;
        Kept& kept = all;
        if (kept.id == _id && kept.x == span.x && kept.count == span.count && kept.row == row)
            return kept;
        kept.id = _id;
        kept.x = span.x;
        kept.count = span.count;
        kept.row = row;
        constexpr int kRows = 5;
        const double left = span.x + 0.5 - _grid.center().x;
        const std::int64_t first = _grid.square(left) - 2,
                           last = _grid.square(left + span.count - 1) + 2;
        const int count = static_cast<int>(last - first + 1), pitch = count + kLanes;
        kept.xs.resize(std::size_t{kRows} * pitch);
        kept.ys.resize(std::size_t{kRows} * pitch);
        for (int j = 0; j < kRows; ++j)
            _grid.sites({first, row - 2 + j}, count, kept.jitter, &kept.xs[j * pitch],
                        &kept.ys[j * pitch]);
        kept.sites.resize(std::size_t{kRows} * count);
        kept.envelope.resize(std::size_t{kRows} * count);
        // Columns follow each other; within one the sites are put in order as they come. Those that
        // are too far from the row of squares to be the nearest are left out.
        const double bottom = _grid.pitch() * (static_cast<double>(row) - kFarthestSite),
                     top = _grid.pitch() * (static_cast<double>(row) + 1 + kFarthestSite);
        Site* end = kept.sites.data();
        for (int i = 0; i < count; ++i) {
            const Site* const column = end;
            for (int j = 0; j < kRows; ++j) {
                const Site site{{kept.xs[j * pitch + i], kept.ys[j * pitch + i]},
                                _range.indexOf({first + i, row - 2 + j})};
                if (site.at.y < bottom || site.at.y > top)
                    continue;
                Site* place = end++;
                for (; place > column && site.at.x < place[-1].at.x; --place)
                    *place = place[-1];
                *place = site;
            }
        }
        kept.sites.resize(static_cast<std::size_t>(end - kept.sites.data()));
        return kept;
    }

    // The end of the envelope with one more piece, right of all sites so far.
    static Piece* added(Piece* first, Piece* end, Piece piece)
    {
        for (; end != first; --end) {
            const Piece& top = end[-1];
            const double apart = piece.site->at.x - top.site->at.x;
            if (apart > 0) {
                piece.start = (piece.site->at.x + top.site->at.x) * 0.5 +
                              (piece.height - top.height) / (2 * apart);
                if (piece.start > top.start)
                    break;
            } else if (top.height <= piece.height) {
                return end;
            }
        }
        if (end == first)
            piece.start = -INFINITY;
        *end = piece;
        return end + 1;
    }

    // The first pixel from x on that the next piece owns, or the end.
    int pieceEnd(const Piece* piece, int x, int end, double y) const
    {
        const double border = piece[1].start + _grid.center().x;
        int first = std::clamp(firstPixelFrom(border), x, end);
        // Pixels whose middle is on the border are decided as the definition decides.
        const double beyond = first + 0.5 - border;
        if (beyond < 1e-5 || beyond > 1 - 1e-5) {
            const Site &a = *piece[0].site, &b = *piece[1].site;
            const auto taken = [&](int pixel) {
                const Point at{pixel + 0.5 - _grid.center().x, y};
                const double here = squaredDistance(at, a.at), there = squaredDistance(at, b.at);
                return there < here || (there == here && b.cell < a.cell);
            };
            while (first > x && taken(first - 1))
                --first;
            while (first < end && !taken(first))
                ++first;
        }
        return first;
    }

    JitteredGrid _grid;
    CellRange _range;
    std::uint64_t _id;
};

// Crystals of a few pixels: the nine sites around a pixel are compared, several pixels side by
// side. The few pixels where that leaves a doubt are looked up.
class CrystalCells::FineCutter : public CellCutter {
public:
    static constexpr double kLargestPitch = 4;

    FineCutter(const CrystalCells& cells, const CellRange& range) : _cells(cells), _range(range) {}

    CellRow cut(const Span& span, std::vector<CellRun>& scratch) const override
    {
        thread_local std::vector<float> memory;
        std::vector<float>& jitter = memory;
        const JitteredGrid& grid = _cells._grid;
        const double perPitch = 1 / grid.pitch();
        const double x = (span.x + 0.5 - grid.center().x) * perPitch;
        const double y = (span.y + 0.5 - grid.center().y) * perPitch;
        const std::int64_t column = down(x) - 2, row = down(y);
        const int count = down(x + (span.count + kLanes) * perPitch) + 2 - column;
        const int pitch = count + kLanes;
        jitter.resize(std::size_t{6} * pitch);
        for (int j = 0; j < 3; ++j)
            grid.jitter({column, row - 1 + j}, count, &jitter[2 * j * pitch],
                        &jitter[(2 * j + 1) * pitch]);

        scratch.clear();
        const F fy = y - static_cast<double>(row);
        std::int64_t cell = -1;
        for (int i = 0; i < span.count; i += kLanes) {
            const F u = F(x - static_cast<double>(column)) + (F(i) + iota()) * F(perPitch);
            const I square = toInt(u);
            const F fx = u - toFloat(square);
            F least = INFINITY, second = INFINITY;
            I nearest = 0;
            for (int dj = 0; dj < 3; ++dj)
                for (int di = -1; di <= 1; ++di) {
                    const float* hx = &jitter[2 * dj * pitch];
                    const F dx = looked(hx, square + I(di)) + F(di) - fx;
                    const F dy = looked(hx + pitch, square + I(di)) + F(dj - 1) - fy;
                    const F d = dx * dx + dy * dy;
                    const M nearer = d < least;
                    second = min(second, select(nearer, least, d));
                    least = select(nearer, d, least);
                    nearest = select(nearer, I(dj * pitch) + square + I(di), nearest);
                }
            // Sites farther away than these nine are a pitch away at least.
            const M doubtful = (least > F(0.999f)) | (second - least < F(kDoubt));
            const int doubts = signs(I(doubtful.v)), last = std::min(kLanes, span.count - i);
            for (int k = 0; k < last; ++k) {
                const int at = nearest.v[k], j = at / pitch;
                const std::int64_t owner = _range.indexOf(
                    (doubts >> k & 1) != 0 ? _cells.labelAt(span.x + i + k, span.y)
                                           : CellLabel{column + at - j * pitch, row - 1 + j});
                if (owner != cell) {
                    scratch.push_back({0, owner});
                    cell = owner;
                }
                scratch.back().end = span.x + i + k + 1;
            }
        }
        return {scratch.data(), 0};
    }

private:
    // More than single precision is off, in squared pitches.
    static constexpr float kDoubt = 0.002f;

    static F looked(const float* p, I index)
    {
        F v;
        for (int k = 0; k < kLanes; ++k)
            v.v[k] = p[index.v[k]];
        return v;
    }

    CrystalCells _cells;
    CellRange _range;
};

std::unique_ptr<CellCutter> CrystalCells::cutter(const IRect&, const CellRange& range) const
{
    if (_grid.pitch() < FineCutter::kLargestPitch)
        return std::make_unique<FineCutter>(*this, range);
    return std::make_unique<Cutter>(_grid, range);
}

} // namespace builtin
