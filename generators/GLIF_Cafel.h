// Random tiles: what circles or squares that shrink about random centres leave of each other.
#pragma once

#include "generators/GLIFCoreObject.h"
#include "generators/StackedShapes.h"

#include <span>

namespace generators {

struct Centre {
    int x, y;
};

// The largest, over all pixels of the block, of the squared distance from the pixel's corner to the
// centre nearest to it. Distances squared count as `most` at most.
std::int64_t coverSquared(const Block& block, std::span<const Centre> centres, std::int64_t most);
// The same from every pixel and centre.
std::int64_t coverSquaredPlain(const Block& block, std::span<const Centre> centres,
                               std::int64_t most);

} // namespace generators

class GLIF_Cafel : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

    // cafelGenerator::::::::
    // Quantity and colours are the object's own, as is the quality that spaces the centres; the
    // arguments for them are not used, nor is the size.
    PictureRef cafelGenerator(int width, int height, int quantity, int size, int quality,
                              int figure, double schemeKeyColor, double colorRangeMax);

protected:
    const AttributeTable& attributeTable() const override;

private:
    std::int32_t _quantity = 10; // candidates for a centre
    std::int32_t _size = 200;    // half the side of a square as large as the picture
    std::int32_t _quality = 1;   // radius step between layers; spaces the centres too
    std::int32_t _idFigure = 0;  // 1 squares, else circles
};
