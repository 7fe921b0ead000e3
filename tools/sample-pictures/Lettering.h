// Letters as strokes on a grid 4 wide and 6 high, for the sign in the picture.
#pragma once

namespace samples {

// How far (x, y) is from the strokes of the text, in units of which a letter is 6 high and, with
// the gap to the next, 5.5 wide; y up, the first letter's lower left corner at the origin.
// Capitals, digits, space, "x"; other characters are left blank. Infinite when nothing is near.
float distanceToText(const char* text, float x, float y);
// Of the whole text, in the same units.
float widthOfText(const char* text);

} // namespace samples
