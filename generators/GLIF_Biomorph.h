// A biomorph: the orbits of z⁴ + c that leave a tall, narrow box, coloured by how soon they do.
#pragma once

#include "generators/GLIFCoreObject.h"

namespace generators {

// What becomes of the orbit of z⁴ + c that starts at a point: the number of steps (0 to 50) after
// which it stopped, and whether it ended far enough out to be coloured. In single precision.
struct BiomorphOrbit {
    int steps = 0;
    bool isColored = false;
};
BiomorphOrbit biomorphOrbit(float real, float imaginary, float cReal, float cImaginary);

// The orbits of many points with the same real part. `outcomes` takes the steps of those that are
// coloured and kBiomorphUncolored for the others.
constexpr std::uint8_t kBiomorphUncolored = 51;
void biomorphOrbits(std::uint8_t* outcomes, const float* imaginaries, int count, float real,
                    float cReal, float cImaginary);

} // namespace generators

class GLIF_Biomorph : public GLIFCoreObject {
public:
    GLIF_Biomorph();

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;
    PictureRef makeSample(const Sampling& sampling, const Dictionary& attributes) override;

private:
    void readAttributes(const Dictionary& attributes);
    PictureRef drawBiomorph(int width, int height, double cReal, double cImag, int resolution);
    void computeField(const Sampling& sampling, float cReal, float cImag, int resolution);
    void paintStartsOutside(generators::Bitmap& bitmap) const;

    std::int32_t _iResolution = 2; // block size in pixels
    double _dCReal = 1.00003;      // the constant c
    double _dCImag = 1.01828;
};
