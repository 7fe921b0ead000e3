// Chords across the picture, each washing its two sides with a colour.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_AbstractLines : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

    // ComputeColorLocal:
    // A muted colour of that hue, 0 to 1.
    generators::Color ComputeColorLocal(double hue) const;

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _countLines = 6; // at most 30 are drawn
    std::int32_t _shapesType = 0; // 0 free, 1 grid, 2 slanted grid, else empty chords
    float _widthLine = 1;
};
