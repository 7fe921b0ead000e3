// Tilings by folds: the plane is folded into one cell of the picture, which repeats around its own
// place. All are infinite. The width is the length of a cell's side; below 0.001 nothing is folded.
#pragma once

#include "platform/imaging/Filter.h"

#include <numbers>

namespace builtin {

// What all of them take.
class FoldTile : public imaging::Filter {
public:
    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputAngle = 0; // of the tiling, radians, counter-clockwise
    double inputWidth = 100;
};

// A tiling by parallelograms.
class ObliqueTile : public FoldTile {
public:
    double inputAcuteAngle = std::numbers::pi / 2; // between the sides
};

// Mirrored at all sides, with the cell's middle in the centre.
class ParallelogramTile : public ObliqueTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Mirrored equilateral triangles, with a triangle's middle in the centre.
class TriangleTile : public FoldTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Four squares around every corner, each a quarter turn from the next.
class FourfoldRotatedTile : public FoldTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// The parallelogram above and to the right of the centre, side by side.
class FourfoldTranslatedTile : public ObliqueTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Squares in columns, every other column upside down.
class GlideReflectedTile : public FoldTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Half a square, mirrored at all sides: eight triangles around the centre.
class EightfoldReflectedTile : public FoldTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Mirrored at all sides, four cells around the centre.
class FourfoldReflectedTile : public ObliqueTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Mirrored equilateral triangles, six around the centre.
class SixfoldReflectedTile : public FoldTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

// Six triangles around the centre, each a sixth of a turn from the next.
class SixfoldRotatedTile : public FoldTile {
public:
    static void initialize(imaging::FilterRegistry& registry);
    imaging::Image outputImage() const override;
};

} // namespace builtin
