// A sweeping fan: one segment whose ends bounce off the edges, stroked after every move.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_FlashLines : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    void drawFlashLines(Canvas& canvas, int width, int height) const;

    std::int32_t _curveRange = 1000; // number of lines
    float _widthLine = 1;
};
