// Every square of a grid shows what lies around it, larger or smaller and turned.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class OpTile : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150}; // the middle of one tile
    double inputScale = 2.8;               // how many tiles' widths a tile shows
    double inputAngle = 0;                 // of the tiles' contents, radians, counter-clockwise
    double inputWidth = 65;

    imaging::Image outputImage() const override;
};

} // namespace builtin
