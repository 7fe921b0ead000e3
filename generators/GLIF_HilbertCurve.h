// A Hilbert curve in four colours.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_HilbertCurve : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _curveRange = 7; // order of the curve
    float _cupSize = 5;           // sic; stroke width in pixels
    std::int32_t _typeCaps = 0;   // 0 butt, 1 round, 2 square
};
