// Random balls, each a stack of shrinking circles or squares.
#pragma once

#include "generators/GLIFCoreObject.h"
#include "generators/StackedShapes.h"

class GLIF_Foam : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

    // foamGenerator::::::::
    // Quantity, largest radius and colours are the object's own; the arguments for them are not
    // used.
    PictureRef foamGenerator(int width, int height, int quantity, int size, int quality, int figure,
                             double schemeKeyColor, double colorRangeMax);

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _quantity = 300; // spheres
    std::int32_t _size = 62;      // largest radius
    std::int32_t _quality = 2;    // radius step between layers
    std::int32_t _idFigure = 0;   // 1 squares, else circles
};
