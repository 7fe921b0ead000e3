// Parallel bars of random widths and colours across the whole picture, each outlined.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_ColourBars : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

    struct Bars;

protected:
    const AttributeTable& attributeTable() const override;

private:
    Bars drawnBars(int width, int height) const;
    void drawColourBars(Canvas& canvas, int width, int height);

    std::int32_t _nSize = 5;           // mean width of a bar
    float _fAngle = 17;                // degrees, clockwise
    float _difference = 1;             // spread of the widths, as a fraction of the mean
    float _widthLine = 1;              // of the outlines
    std::shared_ptr<const Bars> _bars; // of the drawing that is being made
};
