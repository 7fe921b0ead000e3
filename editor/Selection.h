// The selection rectangle's geometry: what a press on it takes hold of and which cursor shows that.
// Picture points, y up; a margin is a length on screen expressed in picture points.
#pragma once

#include "platform/foundation/Geometry.h"

#include <vector>

namespace editor {

using foundation::Point;
using foundation::Rect;
using foundation::Size;

// The sides that a drag moves, as bits of one number; 0 moves the whole rectangle.
enum Sides { kLeftSide = 1, kRightSide = 2, kTopSide = 4, kBottomSide = 8 };

// With positive width and height, moved (not shrunk) into the picture.
Rect normalizedSelection(const Rect& stored, Size picture);

struct SelectionHit {
    bool held = false; // on the selection or near its sides; else a press drops it
    int sides = 0;
    friend bool operator==(const SelectionHit&, const SelectionHit&) = default;
};

// What a press takes hold of, given the selection as it is stored: where that is flipped, its left
// side is the one seen at the right, or its top the one seen at the bottom.
SelectionHit hitSelection(Point at, const Rect& stored, Size picture, double margin);

// The stored rectangle after its sides (or all of it, for 0) were dragged by dx and dy.
Rect draggedSelection(const Rect& start, int sides, double dx, double dy);

// Where a cursor is shown; type as in cursorFromType.
struct CursorRect {
    Rect rect;
    int type = 7;
};

// The cursors of a selection within the visible rectangle. Later ones lie above earlier ones.
std::vector<CursorRect> selectionCursors(const Rect& selection, const Rect& visible, double margin,
                                         bool mouseDown);

// The type of the uppermost rectangle at the position; the arrow where there is none.
int cursorTypeAt(const std::vector<CursorRect>& cursors, Point at);

} // namespace editor
