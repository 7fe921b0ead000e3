// A disc of one-pixel circles, each turned a little further than the one inside it.
#pragma once

#include "generators/GLIFCoreObject.h"

#include <vector>

namespace generators {

// One circle of the spiral, about a whole point.
struct SpiralCircle {
    int centerX = 0, centerY = 0;
    int radius = 1;        // pixels, less than either coordinate of the centre
    double startAngle = 0; // radians; anything but infinite or not a number
};

// Writes a circle to a column-major field of that height: values that rise from 0 to 1 and fall
// again along the turn. The quick way leaves the same bytes as the plain one.
void drawSpiralCircle(double* field, int height, const SpiralCircle& circle);
void drawSpiralCircleQuickly(double* field, int height, const SpiralCircle& circle);

} // namespace generators

class GLIF_Spiral : public GLIFCoreObject {
public:
    GLIF_Spiral();

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;
    PictureRef makeSample(const Sampling& sampling, const Dictionary& attributes) override;

private:
    void readAttributes(const Dictionary& attributes);
    std::vector<double> drawStartAngles(int outermost) const;
    PictureRef spiralGeneratorWidthHeight(int width, int height);
    void computeField(PixelSize size);

    float _fFactor = 1;           // mean turn from circle to circle, in hundredths of a radian
    float _fRandomWind = 1.5f;    // random part of the turn, relative to the mean
    std::int32_t _iCurvature = 0; // further turn that grows with the radius
};
