// A spiral of outlined squares, each turned a little further inside the one before.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_TwistedSquares : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    // Outlines the square about (cx, cy) whose first corner lies at `angle` (radians) and an eighth
    // of a turn, `radius` from the centre.
    void rectangle(Canvas& canvas, float radius, float angle, int cx, int cy) const;

    float _angleStep = 20; // steps to a half turn
    float _squareSize = 1; // half diagonal of the smallest square, less 1
};
