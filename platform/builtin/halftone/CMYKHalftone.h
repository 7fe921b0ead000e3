// A picture printed in four inks, each through a dot screen of its own angle.
#pragma once

#include "platform/builtin/halftone/Ink.h"
#include "platform/imaging/Filter.h"

namespace builtin {

// The four screens side by side and the inks that go through them: the pixel (p, q) of the picture
// becomes print(p's colour, spots(q)).
class FourColorPrint {
public:
    // See CMYKHalftone for the numbers.
    struct Settings {
        Point center;
        double width, angle, sharpness, gcr, ucr;
    };
    explicit FourColorPrint(const Settings& s);

    // Spot functions of the cyan, magenta, yellow and black screen in red, green, blue and alpha.
    imaging::Px spots(const Coord& at) const;
    // An unpremultiplied colour as it is printed.
    imaging::Rgb print(imaging::Rgb color, imaging::Px spots) const;

private:
    Lattice _cyan, _magenta, _yellow, _black;
    Ink _ink;
    float _gcr, _ucr;
};

class CMYKHalftone : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;
    imaging::Vector inputCenter{150, 150};
    double inputWidth = 6; // of one period in pixels
    double inputAngle = 0; // radians, counter-clockwise; added to the angle of each ink
    double inputSharpness = 0.7;
    double inputGCR = 1;   // how much black replaces the grey part of the inks
    double inputUCR = 0.5; // how far that reaches into light tones

    imaging::Image outputImage() const override;
};

inline imaging::Px FourColorPrint::spots(const Coord& at) const
{
    // Ink grows from the lattice points.
    const auto spot = [&](const Lattice& lattice) { return F(1.0f) - dotSpot(lattice(at)); };
    return {spot(_cyan), spot(_magenta), spot(_yellow), spot(_black)};
}

inline imaging::Rgb FourColorPrint::print(imaging::Rgb color, imaging::Px spots) const
{
    using namespace imaging;
    const F c = F(1.0f) - clamp01(color.r), m = F(1.0f) - clamp01(color.g),
            y = F(1.0f) - clamp01(color.b);
    const F grey = min(min(c, m), y);
    const F black = F(_gcr) * grey * mix(grey, F(1.0f), F(_ucr));
    // Where black alone is left, the other inks are not needed.
    const F left = F(1.0f) - black;
    const F share = select(left > F(0.0f), F(1.0f) / left, F(0.0f));
    const auto paper = [&](F amount, F spot) {
        return F(1.0f) - _ink((amount - black) * share, spot);
    };
    const F unblackened = F(1.0f) - _ink(black, spots.a);
    return Rgb{paper(c, spots.r), paper(m, spots.g), paper(y, spots.b)} * unblackened;
}

} // namespace builtin
