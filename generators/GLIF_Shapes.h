// A poster in one of eight manners: quarter circles, boomerangs, discs, rings, arcs, shards,
// pebbles or hills.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_Shapes : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _shapesType = 0; // the manner, 0 to 7; any other number counts as 0
};
