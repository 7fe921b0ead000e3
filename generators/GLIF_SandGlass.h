// One quarter computed by a formula of its coordinates, mirrored about both centre lines.
#pragma once

#include "generators/GLIFCoreObject.h"

namespace generators {

// The value (0 to 255 for the most part) of a pixel of the quarter, x to the right and y away from
// the centre line. Types: 0 parabolas, 1 hyperbolas of a sine, 2 and 3 quotients of tangents, any
// other a slope roughened by the number that was drawn.
double sandGlassValue(int type, std::int64_t x, std::int64_t y, float factor, int drawn);

} // namespace generators

class GLIF_SandGlass : public GLIFCoreObject {
public:
    GLIF_SandGlass();

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;
    PictureRef makeSample(const Sampling& sampling, const Dictionary& attributes) override;

private:
    void readAttributes(const Dictionary& attributes);
    PictureRef sandGlassGeneratorWidthHeight(int width, int height);
    void computeField(PixelSize quarter);
    // Colours a field of that size, which put(x, y, words, count) takes in pieces of rows.
    template <class Put>
    void paintValues(PixelSize size, const Put& put) const;
    void paintQuarters(generators::Bitmap& bitmap, PixelSize quarter) const;

    float _iFactor = 1;           // sic; frequency
    std::int32_t _shapesType = 0; // the formula
};
