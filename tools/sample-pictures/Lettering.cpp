#include "tools/sample-pictures/Lettering.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace samples {

namespace {

constexpr float kAdvance = 5.5f;

// Strokes as pairs of digits x y, a space lifting the pen.
const char* strokesOf(char letter)
{
    switch (letter) {
    case 'A':
        return "0026 2640 1232";
    case 'B':
        return "0006264544331303 3342413000";
    case 'C':
        return "4536160501103041";
    case 'D':
        return "00063645413000";
    case 'E':
        return "46060040 0333";
    case 'F':
        return "460600 0333";
    case 'G':
        return "453616050110304143 4323";
    case 'H':
        return "0006 4046 0343";
    case 'I':
        return "2026";
    case 'K':
        return "0006 4603 0340";
    case 'L':
        return "060040";
    case 'M':
        return "0006244640";
    case 'N':
        return "00064046";
    case 'O':
        return "100105163645413010";
    case 'P':
        return "0006364544331303";
    case 'R':
        return "0006364544331303 1340";
    case 'S':
        return "453616050413334241301001";
    case 'T':
        return "0646 2026";
    case 'U':
        return "06011030 3041 4146";
    case 'V':
        return "062046";
    case 'W':
        return "0610243046";
    case 'X':
        return "0046 0640";
    case 'Y':
        return "062346 2320";
    case 'x':
        return "1034 1430";
    case '0':
        return "100105163645413010 1136";
    case '1':
        return "152620";
    case '2':
        return "05163645440040";
    case '5':
        return "460603334241301001";
    case '6':
        return "4536160501103041423303";
    case '7':
        return "064620";
    case '8':
        return "13040516364544331302011030414233";
    default:
        return "";
    }
}

float distanceToSegment(float x, float y, float x1, float y1, float x2, float y2)
{
    const float dx = x2 - x1, dy = y2 - y1, squared = dx * dx + dy * dy;
    const float t =
        squared > 0 ? std::clamp(((x - x1) * dx + (y - y1) * dy) / squared, 0.0f, 1.0f) : 0.0f;
    return std::hypot(x - x1 - t * dx, y - y1 - t * dy);
}

float distanceToLetter(char letter, float x, float y)
{
    float nearest = std::numeric_limits<float>::infinity();
    float fromX = 0, fromY = 0;
    bool down = false;
    for (const char* s = strokesOf(letter); s[0];) {
        if (s[0] == ' ') {
            down = false;
            ++s;
            continue;
        }
        if (!s[1])
            break;
        const float toX = float(s[0] - '0'), toY = float(s[1] - '0');
        if (down)
            nearest = std::min(nearest, distanceToSegment(x, y, fromX, fromY, toX, toY));
        fromX = toX;
        fromY = toY;
        down = true;
        s += 2;
    }
    return nearest;
}

} // namespace

float distanceToText(const char* text, float x, float y)
{
    const int count = int(std::strlen(text));
    const int index = int(std::floor((x + 0.75f) / kAdvance));
    if (index < 0 || index >= count)
        return std::numeric_limits<float>::infinity();
    return distanceToLetter(text[index], x - float(index) * kAdvance, y);
}

float widthOfText(const char* text)
{
    return float(std::string_view(text).size()) * kAdvance - 1.5f;
}

} // namespace samples
