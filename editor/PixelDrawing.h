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

// Where pixels are drawn: opaque QRgb, the first for the upper left device pixel of `part`.
struct Canvas {
    QRect part;
    uchar* bits = nullptr;
    qsizetype bytesPerRow = 0;

    QRgb* at(int x, int y) const
    {
        return reinterpret_cast<QRgb*>(bits + (y - part.top()) * bytesPerRow) + (x - part.left());
    }
    // In the upper left corner of an image in RGB32, which is large enough.
    static Canvas of(QImage& image, const QRect& part)
    {
        return {part, image.bits(), image.bytesPerLine()};
    }
};

// The device pixels whose centres lie in the rectangle.
QRect coveredPixels(const QRectF& rect);

// Draws the pyramid's pixels stretched over the target rectangle, as far as they lie in the canvas,
// and replaces what was there. All rectangles are in device pixels. What a pixel shows does not
// depend on the canvas.
//
// From twice the size on, every picture pixel is a block of whole device pixels; below that a
// device pixel is the average of what it covers. `smooth` interpolates enlargements instead. While
// the level that a reduction needs is not there, a larger one is read sparsely.
void drawPixels(const PicturePyramid& pyramid, const QRectF& target, bool smooth,
                const Checkers& checkers, const Canvas& canvas);

void drawCheckers(const Checkers& checkers, const Canvas& canvas);

// The level that a scale (device pixels to a picture pixel) is best drawn from.
int wantedLevel(double scale);
// The one it is drawn from while not all are there; -1 while there is none.
int availableLevel(const PicturePyramid& pyramid, double scale);

} // namespace editor
