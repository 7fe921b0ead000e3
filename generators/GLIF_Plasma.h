// Clouds of colour, by midpoint displacement or from sine tables.
#pragma once

#include "generators/GLIFCoreObject.h"

#include <array>

class GLIF_Plasma : public GLIFCoreObject {
public:
    GLIF_Plasma();

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;
    PictureRef makeSample(const Sampling& sampling, const Dictionary& attributes) override;

private:
    void readAttributes(const Dictionary& attributes);
    PictureRef plasmaGenerator(const PictureRef& reference, int width, int height);
    PictureRef plasmaSineGeneratorWidthHeight(const PictureRef& reference, int width, int height);
    void divideGrid(float x, float y, float w, float h, float c1, float c2, float c3, float c4,
                    float totalWidth, float totalHeight, Canvas* canvas);
    void fillCell(float x, float y, float c1, float c2, float c3, float c4, float totalWidth,
                  float totalHeight, Canvas* canvas);
    float displace(float num, float totalWidth, float totalHeight) const;
    void divideSinePlasmaA2A3A4WidthHeightBitmap(int p1, int p2, int p3, int p4, int width,
                                                 int height, generators::Bitmap& bitmap);
    std::array<int, 3> drawSineWaves();
    void computeSineField(int p1, int p2, int p3, int p4, const Sampling& sampling);

    std::int32_t _dResolution = 1; // block size in pixels
    double _quartersDone = 0;      // of those that are counted
    std::int32_t _iSmoothness = 0; // scale of the displacement, or frequency of the sine tables
    std::int32_t _shapesType = 0;  // 0 and 1 displacement, plain and through a sine; above: tables
    std::array<std::int32_t, 512> SIN = {};
    std::array<std::int32_t, 512> COS = {}; // of sines too, with the second term's sign turned
};
