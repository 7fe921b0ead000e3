// A whirl of filled polygons: each has its corners part of the way along the sides of the one
// before.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_TwistPolygons : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _countAngle = 8;    // corners
    std::int32_t _countCircle = 150; // polygons
    std::int32_t _deltaPercent = 10; // of a side, that each corner moves along
    float _radius = 0;               // of the first polygon, in percent of half the shorter side
};
