// Many small shapes of random size, turn and colour: rings, nested squares, stars or polygons.
#pragma once

#include "generators/GLIFCoreObject.h"

namespace generators {

// Closed paths about the middle of the box with its lower left corner at (x0, y0), first point at
// its lower edge, going counter-clockwise; a box that is not square stretches them sideways. All
// three hand their points over in single precision.

// A star of n spikes, two at least. The inner corners lie k times as far from the middle as the
// outer ones, so that for k above 1 the spikes are what reaches out, k × h / 2 from the middle; 0
// counts as 0.005.
Path PathStar(double x0, double y0, double w, double h, double k, int n);

// A regular polygon of n corners, three at least; k has no part in it.
Path PathPolygon(double x0, double y0, double w, double h, double k, int n);

// The same with each corner 0, 1 / n or 2 / n radians further on than a regular one, which the last
// edge makes up for (or overshoots). Draws one random number for each corner but the first.
Path PathHaosPolygon(double x0, double y0, double w, double h, double k, int n); // sic

} // namespace generators

class GLIF_StarField : public GLIFCoreObject {
public:
    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;
    void drawRect(Canvas& canvas, const Rect& rect) override;

protected:
    const AttributeTable& attributeTable() const override;

private:
    void drawStarField(Canvas& canvas, int width, int height) const;
    generators::Path shapeAt(double x0, double y0, double size) const;

    std::int32_t _density = 350;  // number of shapes; its sign means nothing
    std::int32_t _nSize = 50;     // of the largest shape, and how far outside shapes may begin
    std::int32_t _shapesType = 0; // 0 rings, 1 squares, 2 stars, 3 polygons, 4 irregular polygons
    std::int32_t _iCount = 1;     // depth of rings and squares, points of stars and polygons
};
