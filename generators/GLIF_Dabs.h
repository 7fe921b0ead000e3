// Prints of a brush, strewn over the picture.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_Dabs : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

    // dabsGeneratorWidth:height:
    // Null, with a log line, without a brush.
    PictureRef dabsGeneratorWidthHeight(int width, int height);

protected:
    const AttributeTable& attributeTable() const override;

private:
    // A print of the stamp: its colour, and where the stamp's middle goes and turns.
    struct Dab {
        generators::Color color;
        generators::AffineTransform matrix;
    };
    std::vector<Dab> strewnDabs(int width, int height, float stampWidth, float stampHeight) const;

    std::int32_t _countDabs = 10; // half its square is the number of dabs
    std::int32_t _scale = 20;     // of the brush, in percent
    std::int32_t _angle = 0;      // degrees, counter-clockwise
    std::int32_t _dabsType = 1;   // not used by the drawing
    std::int32_t _angleAmplitude = 20;
    // The caller keeps it alive for the drawing. A call without a brush prints the last one, if it
    // still is.
    std::weak_ptr<const drawing::Picture> _brush;
};
