// Transitions by a mask: the picture gives way to the target as the time runs from 0 to 1.
//
// At time 0 there is the picture alone, at time 1 the target alone. Results cover both, or only the
// picture when the target is infinite or empty: a transparent target erases the picture.
#pragma once

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Image;
using imaging::Vector;

constexpr Details kTransitionTime = Details(InputType::Time).min(0).max(1).slider(0, 1).identity(0);

class DissolveTransition : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Image inputTargetImage;
    double inputTime = 0;

    Image outputImage() const override;
};

// The target shows through growing holes, small near the centre, stretched far from it.
class ModTransition : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Image inputTargetImage;
    Vector inputCenter{150, 150};
    double inputTime = 0;
    double inputAngle = 2;         // radians, of the lattice of holes
    double inputRadius = 150;      // half the distance of neighbouring holes at the centre
    double inputCompression = 300; // how far from the centre holes are twice as large

    Image outputImage() const override;
};

// The target comes in bars that run across the picture, each with a delay of its own.
class BarsSwipeTransition : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Image inputTargetImage;
    double inputAngle = 3.14159265358979323846; // radians, the direction in which the bars run
    double inputWidth = 30;
    double inputBarOffset = 10; // largest delay, in widths
    double inputTime = 0;

    Image outputImage() const override;
};

// `picture` mixed with `target` in equal parts everywhere: none of it at time 0 (and below), only
// the target at time 1 (and above). What every transition does where it cannot do better.
Image dissolved(const Image& picture, const Image& target, double time);

// Time as transitions take it: within 0 … 1, a not-a-number is 0.
double transitionTime(double time);

} // namespace builtin
