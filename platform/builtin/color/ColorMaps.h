// The colour maps: each pixel's colour on its own, whatever lies beside it.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Color;
using imaging::Image;
using imaging::Vector;

class ColorControls : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputSaturation = 1;
    double inputBrightness = 0;
    double inputContrast = 1;

    Image outputImage() const override;
};

class ExposureAdjust : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputEV = 0; // stops

    Image outputImage() const override;
};

class GammaAdjust : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputPower = 1;

    Image outputImage() const override;
};

class HueAdjust : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputAngle = 0; // radians; a third of a turn takes red to green

    Image outputImage() const override;
};

class WhitePointAdjust : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Color inputColor = Color::white(); // its alpha does not count

    Image outputImage() const override;
};

class ColorMonochrome : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Color inputColor{0.6f, 0.45f, 0.3f};
    double inputIntensity = 1;

    Image outputImage() const override;
};

class ColorPosterize : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    double inputLevels = 6;

    Image outputImage() const override;
};

class ColorInvert : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;

    Image outputImage() const override;
};

// Each pixel's luminance on the way from one colour to the other.
Image falseColor(const Image& image, const Color& dark, const Color& light);

class FalseColor : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Color inputColor0{0.3f, 0, 0}; // what black becomes
    Color inputColor1{1, 0.9f, 0.8f};

    Image outputImage() const override;
};

// Each vector holds the weights of red, green, blue and alpha in one component of the result.
class ColorMatrix : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Vector inputRVector{1, 0, 0, 0};
    Vector inputGVector{0, 1, 0, 0};
    Vector inputBVector{0, 0, 1, 0};
    Vector inputAVector{0, 0, 0, 1};
    Vector inputBiasVector{0, 0, 0, 0};

    Image outputImage() const override;
};

} // namespace builtin
