// Scales a picture's pixels to the pixels of the screen.
#pragma once

#include "editor/PicturePyramid.h"

#include <QImage>
#include <QRect>
#include <QRectF>

namespace editor {

// What is seen through transparent pixels: squares, the first at the origin. Device pixels.
struct Checkers {
    QRgb first = 0xffffffff, second = 0xffffffff;
    int side = 8;
    QPoint origin;
};

// The device pixels whose centres lie in the rectangle.
QRect coveredPixels(const QRectF& rect);

// Draws the pyramid's pixels stretched over the target rectangle, as far as they lie in `part`, and
// replaces what was there. The canvas is Format_RGB32 and its upper left pixel is `part`'s. All
// rectangles are in device pixels. What a pixel shows does not depend on the part.
//
// From twice the size on, every picture pixel is a block of whole device pixels; below that a
// device pixel is the average of what it covers. `smooth` interpolates enlargements instead. While
// the level that a reduction needs is not there, a larger one is read sparsely.
void drawPixels(const PicturePyramid& pyramid, const QRectF& target, bool smooth,
                const Checkers& checkers, const QRect& part, QImage& canvas);

void drawCheckers(const Checkers& checkers, const QRect& part, QImage& canvas);

// The level that a scale (device pixels to a picture pixel) is best drawn from.
int wantedLevel(double scale);
// The one it is drawn from while not all are there; -1 while there is none.
int availableLevel(const PicturePyramid& pyramid, double scale);

} // namespace editor
