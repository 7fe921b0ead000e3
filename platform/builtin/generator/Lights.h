// Light sources to be added onto a picture: a halo, a star, the sun. Infinite; where one is
// overexposed its colour turns white.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Color;
using imaging::Image;
using imaging::Vector;

// A ring split into colours, red outside.
class LenticularHaloGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Vector inputCenter{150, 150};
    Color inputColor{1, 0.9f, 0.8f};
    double inputHaloRadius = 70;
    double inputHaloWidth = 87;
    double inputHaloOverlap = 0.77;      // 0: a rainbow, 1: one ring
    double inputStriationStrength = 0.5; // 0: no rays
    double inputStriationContrast = 1;
    double inputTime = 0; // moves the rays

    Image outputImage() const override;
};

// A bright core with a cross through it.
class StarShineGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Vector inputCenter{150, 150};
    Color inputColor{1, 0.8f, 0.6f};
    double inputRadius = 50;
    double inputCrossScale = 15; // 0: no cross
    double inputCrossAngle = 0.6;
    double inputCrossOpacity = -2; // power of ten
    double inputCrossWidth = 2.5;
    double inputEpsilon = -2; // power of ten; near 0 the middle of the cross is flat

    Image outputImage() const override;
};

// A disc with beams around it.
class SunbeamsGenerator : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Vector inputCenter{150, 150};
    Color inputColor{1, 0.5f, 0};
    double inputSunRadius = 40;
    double inputMaxStriationRadius = 2.58; // how far beams reach beyond the sun, in its radii
    double inputStriationStrength = 0.5;
    double inputStriationContrast = 1.375;
    double inputTime = 0;

    Image outputImage() const override;
};

} // namespace builtin
