// From a number to a colour: the schemes around a key hue, the hue range, and the fast hue wheel of
// the bitmap generators.
#pragma once

#include "platform/foundation/Color.h"

#include <cstddef>
#include <cstdint>

namespace generators {

// The colour of a position (0 to 1) in a scheme around a key hue (0 to 1). Schemes: 0 the key and
// its complement, 1 three hues, 2 four hues, 3 one hue in four shades, 4 brightness ramp, 5
// saturation ramp, 6 pale ramp; any other number takes the hue from the position.
foundation::Color computeSchemeColor(double position, double keyHue, std::int32_t scheme);

// Steps saturation and brightness by the quarter of the open interval a … b that the value lies in;
// outside it both keep what they hold.
void computeColorQuadSplit(double a, double b, double value, double& saturation,
                           double& brightness);

// Steps saturation and brightness through four shades three times per unit; a negative value leaves
// both. The second number is not used.
void computeColorSBSplit(double value, double unused, double& saturation, double& brightness);

// The fully saturated colour whose hue lies at the position between the two ends.
foundation::Color computeColor(double position, double rangeMin, double rangeMax);

// The same hue on a wheel of 1530 steps, as the bytes red, green, blue, 255 in memory. Positions
// outside the wheel take the low byte of the last ramp.
void computeColorToMem(std::uint32_t& destination, double position, double rangeMin,
                       double rangeMax);

// computeColorToMem of many positions.
void computeColorsToMem(std::uint32_t* destination, const double* positions, std::size_t count,
                        double rangeMin, double rangeMax);

// A shade of one hue from black to full: brightness first, hue second.
foundation::Color computeBWColor(double brightness, double hue);

// Turns the point about the centre, counter-clockwise (y up), by an angle in radians. Does nothing
// when either coordinate is missing.
void rotatePoint(double* x, double* y, double angle, double centerX, double centerY);

} // namespace generators
