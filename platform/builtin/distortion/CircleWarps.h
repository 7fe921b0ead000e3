// Warps inside a circle: bump, pinch, twirl, vortex and torus lens. Outside it the picture stays.
#pragma once

#include "platform/imaging/Filter.h"

#include <numbers>

namespace builtin {

class BumpDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 300;
    double inputScale = 0.5; // above 0 the middle is magnified, below it shrinks

    imaging::Image outputImage() const override;
};

class PinchDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 300;
    double inputScale = 0.5; // limited to -0.9…5; below 0 the middle bulges

    imaging::Image outputImage() const override;
};

class TwirlDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 300;
    double inputAngle = std::numbers::pi; // radians at the centre, counter-clockwise

    imaging::Image outputImage() const override;
};

class VortexDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 300;
    double inputAngle = 18 * std::numbers::pi; // radians at the centre, counter-clockwise

    imaging::Image outputImage() const override;
};

class TorusLensDistortion : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputRadius = 160; // of the outer rim
    double inputWidth = 80;   // of the glass
    double inputRefraction = 1.7;

    imaging::Image outputImage() const override;
};

} // namespace builtin
