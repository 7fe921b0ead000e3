// Cells laid side by side, each filled with shapes that shrink step by step.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_Parquet : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _cellWidth = 50; // points, at least 1
    std::int32_t _cellHeight = 30;
    std::int32_t _dencity = 90; // sic; shapes of a cell in percent of half its longer side
    std::int32_t _idFigure = 0; // 0 nested rectangles, else pairs of triangles
};
