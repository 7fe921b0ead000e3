// Pictures from cells of one colour: squares, hexagons, crystals, and dots that overlap.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Image;
using imaging::Vector;

// Squares, painted whole.
class Pixellate : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Vector inputCenter{150, 150}; // a corner of a square
    double inputScale = 8;        // side, 1 at least

    Image outputImage() const override;
};

// Hexagons with a corner pointing up, painted whole.
class HexagonalPixellate : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Vector inputCenter{150, 150}; // the middle of a hexagon
    double inputScale = 8;        // side, 1 at least

    Image outputImage() const override;
};

// Irregular cells, which end at the picture's border.
class Crystallize : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputRadius = 20; // mean distance of neighbouring cells, 1 at least
    Vector inputCenter{150, 150};

    Image outputImage() const override;
};

// Dots of the picture's colours, scattered irregularly; a little of what lies behind shows through.
class Pointillize : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputRadius = 20; // mean distance of neighbouring dots, 1 at least
    Vector inputCenter{150, 150};

    Image outputImage() const override;
};

} // namespace builtin
