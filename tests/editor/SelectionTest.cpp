// Which part of a selection a press takes hold of, and which cursor says so.
#include "editor/Selection.h"

#include <gmock/gmock.h>

#include <ostream>

using namespace editor;

namespace editor {
void PrintTo(const SelectionHit& hit, std::ostream* out)
{
    *out << (hit.held ? "held, sides " : "not held, sides ") << hit.sides;
}
} // namespace editor

namespace {

constexpr Size kPicture = {400, 300};
constexpr double kMargin = 6;
constexpr int kL = kLeftSide, kR = kRightSide, kT = kTopSide, kB = kBottomSide;

// The same area, left 100, bottom 50, right 200, top 130, stored in four ways.
struct Stored {
    const char* name;
    Rect rect;
    bool hFlipped, vFlipped;
};
const Stored kStored[] = {
    {"upright", {100, 50, 100, 80}, false, false},
    {"dragged leftwards", {200, 50, -100, 80}, true, false},
    {"dragged downwards", {100, 130, 100, -80}, false, true},
    {"dragged both ways", {200, 130, -100, -80}, true, true},
};

struct Press {
    const char* what;
    Point at;
    bool held;
    int sides; // of the upright rectangle
};
const Press kPresses[] = {
    {"middle", {150, 90}, true, 0},
    {"just inside the near bands", {106.1, 56.1}, true, 0},
    {"just inside the far bands", {187.9, 117.9}, true, 0},
    // The twice as wide bands along the far sides: a move, but not because it is inside.
    {"far band, right", {190, 90}, true, 0},
    {"far band, top", {150, 120}, true, 0},
    {"far band, both", {190, 120}, true, 0},
    {"far band, right, beside the near bottom", {190, 57}, true, 0},
    {"far band, top, beside the near left", {107, 120}, true, 0},
    {"end of the inside at the far right", {188, 90}, true, 0},
    {"end of the inside at the far top", {150, 118}, true, 0},
    {"end of the far band, right", {194, 90}, true, 0},
    {"end of the far band, top", {150, 124}, true, 0},
    {"far right within the top's band", {190, 126}, true, kT},
    {"far right within the bottom's band", {190, 53}, true, kB},
    {"far top within the left's band", {103, 120}, true, kL},
    {"far top within the right's band", {196, 120}, true, kR},
    {"top left corner", {97, 133}, true, kL | kT},
    {"bottom right corner", {203, 47}, true, kR | kB},
    {"top right corner", {203, 133}, true, kR | kT},
    {"bottom left corner", {97, 47}, true, kL | kB},
    {"left, outside", {95, 90}, true, kL},
    {"left, inside", {105, 90}, true, kL},
    {"left, on the line", {100, 90}, true, kL},
    {"left, at the height of the top", {102, 129}, true, kL},
    {"left, above the top", {102, 133}, true, kL},
    {"left, below the bottom", {103, 47}, true, kL},
    {"left, outside, at the line of the top", {97, 130}, true, kL},
    {"left, outside, at the line of the bottom", {97, 50}, true, kL},
    {"right, inside", {195, 90}, true, kR},
    {"right, on the line", {200, 90}, true, kR},
    {"right, above the top", {198, 133}, true, kR},
    {"right, at the height of the bottom", {198, 53}, true, kR},
    {"right, outside", {205, 90}, true, kR},
    {"right, below the bottom", {198, 47}, true, kR},
    {"top, inside", {150, 125}, true, kT},
    {"top, on the line", {150, 130}, true, kT},
    {"top, outside", {150, 135}, true, kT},
    {"bottom, on the line", {150, 50}, true, kB},
    {"bottom, inside", {150, 55}, true, kB},
    {"bottom, outside", {150, 45}, true, kB},
    // Bands end before their margin: the exact edge belongs to nothing or to a move.
    {"end of the left band outside", {94, 90}, false, 0},
    {"end of the left band inside", {106, 90}, true, 0},
    {"end of the grown top", {150, 136}, false, 0},
    {"end of the bottom band inside", {150, 56}, true, 0},
    {"corner of the grown rectangle", {94, 44}, false, 0},
    {"end of the grown right", {206, 90}, false, 0},
    {"end of the grown bottom", {150, 44}, false, 0},
    {"corner of the grown rectangle, top right", {206, 136}, false, 0},
    {"on the top left corner itself", {100, 130}, true, kL},
    {"on the top right corner itself", {200, 130}, true, kR},
    {"on the bottom left corner itself", {100, 50}, true, kL},
    {"on the bottom right corner itself", {200, 50}, true, kR},
    {"far off", {300, 200}, false, 0},
};

int mirrored(int sides, bool horizontally, bool vertically)
{
    int result = sides;
    if (horizontally && (sides & (kL | kR)))
        result ^= kL | kR;
    if (vertically && (sides & (kT | kB)))
        result ^= kT | kB;
    return result;
}

std::vector<CursorRect> cursorsOf(const Rect& selection, bool down = false)
{
    return selectionCursors(selection, {0, 0, 400, 300}, kMargin, down);
}

} // namespace

TEST(Selection, HitAreas)
{
    for (const Stored& stored : kStored)
        for (const Press& press : kPresses) {
            const SelectionHit wanted = {press.held,
                                         mirrored(press.sides, stored.hFlipped, stored.vFlipped)};
            EXPECT_EQ(hitSelection(press.at, stored.rect, kPicture, kMargin), wanted)
                << stored.name << ", " << press.what;
        }
}

TEST(Selection, FollowsTheMarginAndHasNoInsideWhenSmall)
{
    const Rect rect = {100, 50, 100, 80};
    EXPECT_EQ(hitSelection({92, 90}, rect, kPicture, 6), (SelectionHit{false, 0}));
    EXPECT_EQ(hitSelection({92, 90}, rect, kPicture, 12), (SelectionHit{true, kL}));
    // 8 by 8: every press inside is within a side's band.
    for (double x = 100.5; x < 108; ++x)
        for (double y = 50.5; y < 58; ++y)
            EXPECT_NE(hitSelection({x, y}, {100, 50, 8, 8}, kPicture, 6).sides, 0) << x << " " << y;
    // 15 by 15: no inside is left, but what no side holds moves it.
    EXPECT_EQ(hitSelection({107.5, 57.5}, {100, 50, 15, 15}, kPicture, 6), (SelectionHit{true, 0}));
}

TEST(Selection, IsNormalizedByMovingNotShrinking)
{
    const Size small = {100, 100};
    EXPECT_EQ(normalizedSelection({50, 50, -40, -30}, small), (Rect{10, 20, 40, 30}));
    EXPECT_EQ(normalizedSelection({-10, 5, 30, 20}, small), (Rect{0, 5, 30, 20}));
    EXPECT_EQ(normalizedSelection({90, 0, 30, 20}, small), (Rect{70, 0, 30, 20}));
    EXPECT_EQ(normalizedSelection({5, -10, 30, 20}, small), (Rect{5, 0, 30, 20}));
    EXPECT_EQ(normalizedSelection({5, 130, 30, -20}, small), (Rect{5, 80, 30, 20}));
    EXPECT_EQ(normalizedSelection({20, 0, 150, 20}, small), (Rect{-50, 0, 150, 20}));
}

// Dragging a side moves that side of what is seen and no other, however the rectangle is stored.
TEST(Selection, SidesFollowTheDrag)
{
    const Rect seen = {100, 50, 100, 80};
    for (const Stored& stored : kStored) {
        const auto drag = [&](Point from, double dx, double dy) {
            const SelectionHit hit = hitSelection(from, stored.rect, kPicture, kMargin);
            return normalizedSelection(draggedSelection(stored.rect, hit.sides, dx, dy), kPicture);
        };
        SCOPED_TRACE(stored.name);
        EXPECT_EQ(drag({100, 90}, 10, 7), (Rect{110, 50, 90, 80}));
        EXPECT_EQ(drag({200, 90}, 10, 7), (Rect{100, 50, 110, 80}));
        EXPECT_EQ(drag({150, 130}, 10, 7), (Rect{100, 50, 100, 87}));
        EXPECT_EQ(drag({150, 50}, 10, 7), (Rect{100, 57, 100, 73}));
        EXPECT_EQ(drag({97, 133}, 10, 7), (Rect{110, 50, 90, 87}));
        EXPECT_EQ(drag({203, 47}, 10, 7), (Rect{100, 57, 110, 73}));
        EXPECT_EQ(drag({150, 90}, 10, 7), (Rect{110, 57, 100, 80}));
        // Past the opposite side: flipped.
        EXPECT_EQ(drag({100, 90}, 130, 0), (Rect{200, 50, 30, 80}));
        EXPECT_EQ(drag({150, 90}, 0, 0), seen);
    }
}

TEST(Selection, CursorsCoverSidesAndCornersAboveTheHand)
{
    const Rect rect = {100, 50, 100, 80};
    const struct {
        Point at;
        int type;
    } table[] = {
        {{10, 10}, 4},    {{150, 90}, 8}, // box outside, open hand inside
        {{95, 90}, 0},    {{105, 90}, 0},  {{195, 90}, 0},  {{205, 90}, 0},
        {{150, 45}, 1},   {{150, 55}, 1},  {{150, 125}, 1}, {{150, 135}, 1},
        {{97, 47}, 2},    {{103, 53}, 2},  {{203, 133}, 2}, {{197, 127}, 2}, // rising
        {{97, 133}, 3},   {{103, 127}, 3}, {{203, 47}, 3},  {{197, 53}, 3},  // falling
        {{93.9, 90}, 4},  {{206, 90}, 4},  {{106, 90}, 8},  {{193.9, 90}, 8},
        {{150, 43.9}, 4}, {{150, 136}, 4}, {{401, 90}, 7},
    };
    for (const auto& [at, type] : table)
        EXPECT_EQ(cursorTypeAt(cursorsOf(rect), at), type) << at.x << ", " << at.y;
    EXPECT_EQ(cursorTypeAt(cursorsOf(rect, true), {150, 90}), 9);
    EXPECT_EQ(cursorTypeAt(cursorsOf(rect, true), {100, 90}), 0);
}

TEST(Selection, CursorsAreThoseOfTheVisiblePart)
{
    // Reaches out of the visible rectangle at the right: the band lies along the visible edge.
    EXPECT_EQ(cursorTypeAt(cursorsOf({300, 50, 200, 80}), {396, 90}), 0);
    // Out of sight altogether.
    for (const Point at : {Point{5, 5}, {396, 90}, {0, 0}})
        EXPECT_EQ(cursorTypeAt(cursorsOf({500, 50, 50, 80}), at), 4);
    // Too small for a hand.
    EXPECT_EQ(cursorTypeAt(cursorsOf({100, 50, 8, 8}), {104, 54}), 3);
}
