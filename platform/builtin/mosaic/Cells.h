// Ways to cut the plane into cells: squares, hexagons, and the Voronoi cells of a jittered grid.
//
// A cell's label is a column and a row. Labels are defined by labelAt(), pixel by pixel; rows of
// pixels are cut into runs of one label each, which costs a fraction of that.
#pragma once

#include "platform/imaging/Node.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace builtin {

using imaging::IRect;
using imaging::Point;

struct CellLabel {
    std::int64_t column = 0, row = 0;
    friend bool operator==(const CellLabel&, const CellLabel&) = default;
};

// A rectangle of labels, stored row by row.
struct CellRange {
    std::int64_t left = 0, bottom = 0, width = 0, height = 0;

    std::int64_t count() const { return width * height; }
    std::int64_t indexOf(CellLabel c) const { return (c.row - bottom) * width + (c.column - left); }
};

// Pixels of a row that share a cell, up to the pixel before `end`.
struct CellRun {
    int end;
    std::int64_t cell; // index within the range, less the base that all runs of the row share
};

// A row of pixels cut into runs, from left to right; the last one may go on beyond the span.
struct CellRow {
    const CellRun* runs;
    std::int64_t base;
};

// Cuts the rows of one rectangle, for cells numbered within a range. Called from several threads.
class CellCutter {
public:
    virtual ~CellCutter() = default;
    // `scratch` holds the runs, unless they are kept here; it may be used again afterwards.
    virtual CellRow cut(const imaging::Span& span, std::vector<CellRun>& scratch) const = 0;
};

class CellLayout {
public:
    virtual ~CellLayout() = default;

    // The cell that the middle of a pixel lies in.
    virtual CellLabel labelAt(int x, int y) const = 0;
    // Labels that pixels of the rectangle can have, and perhaps a few more.
    virtual CellRange cellsOf(const IRect& pixels) const = 0;
    // Every pixel that shares a cell with a pixel of the region, and perhaps a few more.
    virtual IRect reach(const IRect& region) const = 0;
    // The pixels that the cells with a pixel in the rectangle cover, rounded outward.
    virtual IRect covered(const IRect& pixels) const = 0;
    // Where a cell takes its colour when it cannot be averaged.
    virtual Point middle(CellLabel cell) const = 0;
    // No cell has more rows of pixels than that.
    virtual double tallest() const = 0;
    virtual std::unique_ptr<CellCutter> cutter(const IRect& pixels,
                                               const CellRange& range) const = 0;
};

// Upright squares of a side of at least 1, a corner of one of them on the centre.
class SquareCells : public CellLayout {
public:
    SquareCells(Point center, double side);

    CellLabel labelAt(int x, int y) const override;
    CellRange cellsOf(const IRect& pixels) const override;
    IRect reach(const IRect& region) const override;
    IRect covered(const IRect& pixels) const override;
    Point middle(CellLabel cell) const override;
    double tallest() const override { return _side + 1; }
    std::unique_ptr<CellCutter> cutter(const IRect& pixels, const CellRange& range) const override;

    // Each square is exactly one pixel.
    bool isPixelGrid() const;

private:
    Point _center;
    double _side;
};

// Regular hexagons of a side of at least 1 with a corner pointing up, one of them centred on the
// centre. Columns run to the right, the odd rows half a hexagon farther.
class HexagonCells : public CellLayout {
public:
    HexagonCells(Point center, double side);

    CellLabel labelAt(int x, int y) const override;
    CellRange cellsOf(const IRect& pixels) const override;
    IRect reach(const IRect& region) const override;
    IRect covered(const IRect& pixels) const override;
    Point middle(CellLabel cell) const override;
    double tallest() const override { return 2 * _side + 1; }
    std::unique_ptr<CellCutter> cutter(const IRect& pixels, const CellRange& range) const override;

private:
    // One past the last pixel of the cell in row y, when it holds pixel x there.
    int runEnd(CellLabel cell, int x, int y) const;

    Point _center;
    double _side;
};

// One random point, the site, in every square of a grid.
class JitteredGrid {
public:
    // A grid with a corner on the centre and a pitch of at least 1. The salts make the random
    // numbers.
    JitteredGrid(Point center, double pitch, std::uint32_t saltX, std::uint32_t saltY);

    Point center() const { return _center; }
    double pitch() const { return _pitch; }
    // From the centre.
    Point site(CellLabel square) const;
    // The same for `count` squares of a row.
    void sites(CellLabel first, int count, std::vector<float>& scratch, double* xs,
               double* ys) const;
    // Where in their squares they lie, 0 … 1; room for whole lanes is needed.
    void jitter(CellLabel first, int count, float* xs, float* ys) const;
    // The square that a position (from the centre) lies in.
    std::int64_t square(double position) const;
    // The squares up to `margin` squares away from the pixels' own.
    CellRange squaresOf(const IRect& pixels, int margin) const;

private:
    Point _center;
    double _pitch;
    std::uint32_t _saltX, _saltY;
};

// Each pixel belongs to the nearest site; ties go to the smaller row, then the smaller column.
class CrystalCells : public CellLayout {
public:
    CrystalCells(Point center, double pitch);

    // The nearest of the sites in the 5 × 5 squares around the pixel's own. None can be nearer
    // outside: the pixel's own square has a site within √2 pitches.
    CellLabel labelAt(int x, int y) const override;
    CellRange cellsOf(const IRect& pixels) const override { return _grid.squaresOf(pixels, 2); }
    IRect reach(const IRect& region) const override;
    IRect covered(const IRect& pixels) const override { return pixels; }
    Point middle(CellLabel cell) const override;
    double tallest() const override { return 3 * _grid.pitch() + 1; }
    std::unique_ptr<CellCutter> cutter(const IRect& pixels, const CellRange& range) const override;

private:
    class Cutter;
    class FineCutter;

    JitteredGrid _grid;
};

} // namespace builtin
