// The engine's lazy picture value: an extent and a function from position to premultiplied colour.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/foundation/Value.h"
#include "platform/imaging/Bitmap.h"

namespace imaging {

using foundation::AffineTransform;
using foundation::Color;
using foundation::Point;
using foundation::Rect;
using foundation::Vector;

class Node;

// An image is a value: copying it is cheap, nothing is computed until pixels are asked for. A
// missing image (the default) has an empty extent, and using it anywhere is safe. Positions are
// pixels, y up; pixel (i, j) covers [i, i + 1) × [j, j + 1). Outside its extent an image is
// transparent.
class Image {
public:
    Image() = default;
    explicit Image(foundation::ImageRef node) : _node(std::move(node)) {}

    // Pixels with their lower left corner at the origin given, in whole pixels.
    static Image fromBitmap(BitmapRef bitmap, int originX = 0, int originY = 0);

    explicit operator bool() const { return _node != nullptr; }
    const foundation::ImageRef& node() const { return _node; }

    // Whole pixels; may be infinite; empty for a missing image.
    Rect extent() const;

    // Only what lies inside the rectangle.
    Image cropped(const Rect& rect) const;
    // Moved by whole pixels, exactly.
    Image translated(int dx, int dy) const;
    // The nearest pixel of the extent for every position outside it. Infinite; an empty or infinite
    // image is answered as it is.
    Image clampedToExtent() const;

    friend bool operator==(const Image&, const Image&) = default;

private:
    foundation::ImageRef _node;
};

} // namespace imaging
