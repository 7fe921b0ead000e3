// Hit areas and cursors of the selection rectangle.
#include "editor/Selection.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace editor {

namespace {

bool contains(const Rect& r, Point p)
{
    return p.x >= r.x && p.x < r.x + r.width && p.y >= r.y && p.y < r.y + r.height;
}

bool between(double low, double value, double high)
{
    return low < value && value < high;
}

} // namespace

Rect normalizedSelection(const Rect& stored, Size picture)
{
    Rect r = stored;
    if (r.width < 0)
        r = {r.x + r.width, r.y, -r.width, r.height};
    if (r.height < 0)
        r = {r.x, r.y + r.height, r.width, -r.height};
    // One that is larger than the picture ends at its right and top side.
    r.x = std::max(r.x, 0.0);
    if (r.x + r.width > picture.width)
        r.x = picture.width - r.width;
    r.y = std::max(r.y, 0.0);
    if (r.y + r.height > picture.height)
        r.y = picture.height - r.height;
    return r;
}

SelectionHit hitSelection(Point at, const Rect& stored, Size picture, double margin)
{
    const double m = margin;
    const auto [x, y, w, h] = normalizedSelection(stored, picture);
    // The far sides are held from twice as far inside as the near ones.
    if (between(x + m, at.x, x + w - 2 * m) && between(y + m, at.y, y + h - 2 * m))
        return {true, 0};
    if (!between(x - m, at.x, x + w + m) || !between(y - m, at.y, y + h + m))
        return {false, 0};

    int left = kLeftSide, right = kRightSide, top = kTopSide, bottom = kBottomSide;
    if (stored.width < 0)
        std::swap(left, right);
    if (stored.height < 0)
        std::swap(top, bottom);
    const bool leftOf = between(x - m, at.x, x), rightOf = between(x + w, at.x, x + w + m);
    const bool below = between(y - m, at.y, y), above = between(y + h, at.y, y + h + m);
    if (leftOf && above)
        return {true, left | top};
    if (rightOf && below)
        return {true, right | bottom};
    if (rightOf && above)
        return {true, right | top};
    if (leftOf && below)
        return {true, left | bottom};
    if (between(x - m, at.x, x + m))
        return {true, left};
    if (between(x + w - m, at.x, x + w + m))
        return {true, right};
    if (between(y + h - m, at.y, y + h + m))
        return {true, top};
    if (between(y - m, at.y, y + m))
        return {true, bottom};
    return {true, 0};
}

Rect draggedSelection(const Rect& start, int sides, double dx, double dy)
{
    Rect r = start;
    if (sides == 0)
        return {r.x + dx, r.y + dy, r.width, r.height};
    if (sides & kLeftSide) {
        r.x = start.x + dx;
        r.width = start.width - dx;
    }
    if (sides & kRightSide)
        r.width = start.width + dx;
    if (sides & kTopSide)
        r.height = start.height + dy;
    if (sides & kBottomSide) {
        r.y = start.y + dy;
        r.height = start.height - dy;
    }
    return r;
}

std::vector<CursorRect> selectionCursors(const Rect& selection, const Rect& visible, double margin,
                                         bool mouseDown)
{
    constexpr int kHorizontal = 0, kVertical = 1, kRising = 2, kFalling = 3, kBox = 4,
                  kOpenHand = 8, kClosedHand = 9;
    std::vector<CursorRect> cursors = {{visible, kBox}};
    const Rect shown = Rect::fromEdges(
        std::max(selection.x, visible.x), std::max(selection.y, visible.y),
        std::min(selection.right(), visible.right()), std::min(selection.top(), visible.top()));
    if (shown.width < 0 || shown.height < 0)
        return cursors;
    const double m = margin;
    const auto [x, y, w, h] = shown;
    cursors.push_back({{x + m, y + m, w - 2 * m, h - 2 * m}, mouseDown ? kClosedHand : kOpenHand});
    cursors.push_back({{x - m, y, 2 * m, h}, kHorizontal});
    cursors.push_back({{x + w - m, y, 2 * m, h}, kHorizontal});
    cursors.push_back({{x, y - m, w, 2 * m}, kVertical});
    cursors.push_back({{x, y + h - m, w, 2 * m}, kVertical});
    // A corner's arrow points along the diagonal through it.
    cursors.push_back({{x - m, y - m, 2 * m, 2 * m}, kRising});
    cursors.push_back({{x + w - m, y + h - m, 2 * m, 2 * m}, kRising});
    cursors.push_back({{x - m, y + h - m, 2 * m, 2 * m}, kFalling});
    cursors.push_back({{x + w - m, y - m, 2 * m, 2 * m}, kFalling});
    return cursors;
}

int cursorTypeAt(const std::vector<CursorRect>& cursors, Point at)
{
    const auto found = std::find_if(cursors.rbegin(), cursors.rend(),
                                    [&](const CursorRect& c) { return contains(c.rect, at); });
    return found == cursors.rend() ? 7 : found->type;
}

} // namespace editor
