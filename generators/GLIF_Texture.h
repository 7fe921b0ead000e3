// A seamless tile of how often a random walk came by, laid over the picture.
#pragma once

#include "generators/GLIFCoreObject.h"

#include <vector>

class GLIF_Texture : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    PictureRef textureGeneratorWidthHeight(int width, int height);
    bool computeField(PixelSize tile, int x, int y);
    std::uint32_t colorWord(double value) const;
    void paintTiles(generators::Bitmap& bitmap, PixelSize tile) const;

    // These keep their values when a call leaves them out.
    std::int32_t _shapesType = 0; // the kind of walk
    std::int32_t _nIter = 0;      // five times the steps for each pixel of the tile
    std::int32_t _iTile = 0;      // tiles across each side
    std::int32_t _most = 0;       // the largest count in the tile, which has the value 1
};
