// Random points, each splitting the triangle that it falls into.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_Triangles : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _nTriangle = 7; // one more than the number of points
    float _widthLine = 3;        // of the outlines, in points
};
