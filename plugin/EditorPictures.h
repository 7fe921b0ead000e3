// The small pictures of the editor window: their names among the library's own resources, their
// sizes, and where the cursors point.
//
// Each is NAME.tif in the resource folder, and all but the gradient also NAME@2x.tif, with twice
// the pixels, for screens of twice the density.
#pragma once

namespace plugin {

struct EditorPicture {
    const char* name;
    int width, height; // in points, which are the pixels of NAME.tif
};
inline constexpr EditorPicture kEditorPictures[] = {
    {"resizeHCursor", 16, 16},
    {"resizeVCursor", 16, 16},
    {"resizeD1Cursor", 16, 16},
    {"resizeD2Cursor", 16, 16},
    {"boxCursor", 16, 16},
    {"sepCursor", 16, 16},
    {"openhandCursor", 16, 16},
    {"closedhandCursor", 16, 16},
    {"textContinueCursor", 16, 16},
    {"select", 16, 16},
    // The marks of the lists. The first is a cursor too: its hot spot is its middle pixel.
    {"small_pricel", 11, 13}, // a target: the entry has a centre
    {"small_koleso", 11, 13}, // a wheel: it has colours
    {"small_crop", 11, 13},
    {"small_color_pricel", 11, 13}, // both
    // The toolbar.
    {"shapes", 16, 16},
    {"inspector_wrap", 16, 16},
    // Hue 0 at the left end to 1 at the right.
    {"gradient_hue", 360, 20},
};

// The pictures of cursorFromType:. Types that are not listed are cursors of the system.
struct CursorPicture {
    int type;
    const char* name;
    int hotX, hotY; // in points from the top left corner
};
inline constexpr CursorPicture kCursorPictures[] = {
    {0, "resizeHCursor", 7, 7},       {1, "resizeVCursor", 7, 7},
    {2, "resizeD1Cursor", 7, 7}, // from the bottom left to the top right
    {3, "resizeD2Cursor", 7, 7}, // from the top left to the bottom right
    {4, "boxCursor", 5, 6},           {5, "sepCursor", 6, 6},
    {8, "openhandCursor", 5, 6},      {9, "closedhandCursor", 5, 6},
    {10, "textContinueCursor", 0, 0}, {11, "small_pricel", 5, 6},
};

// The pictures of imageFromType:.
struct SmallPicture {
    int type;
    const char* name;
};
inline constexpr SmallPicture kSmallPictures[] = {
    {7, "select"},      {11, "small_pricel"},       {12, "small_koleso"},
    {13, "small_crop"}, {14, "small_color_pricel"},
};

} // namespace plugin
