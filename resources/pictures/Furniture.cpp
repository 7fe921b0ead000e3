// The small pictures of the editor window. Places are points from the top left corner, y down, so
// that what lies on whole points is sharp at every density.
#include "resources/pictures/Furniture.h"

#include <initializer_list>
#include <string_view>

namespace pictures {

namespace {

// Colours as seen, laid one over the other.
struct Ink {
    V3 color;
    double alpha = 1;
};
constexpr Ink kBlack{{0, 0, 0}}, kWhite{{1, 1, 1}}, kDark{{0.13, 0.15, 0.18}};
constexpr Ink kBlue{{0.2, 0.47, 0.86}}, kOrange{{0.95, 0.58, 0.16}}, kGreen{{0.3, 0.68, 0.36}};
constexpr Ink kGrey{{0.42, 0.45, 0.49}};

// One place of a drawing, covered layer by layer.
class Spot {
public:
    explicit Spot(V2 place) : p(place) {}

    // Only where the place is inside: the distance is negative there.
    void fill(double distance, const Ink& ink)
    {
        if (distance < 0) {
            _color = _color * (1 - ink.alpha) + ink.color * ink.alpha;
            _alpha = _alpha * (1 - ink.alpha) + ink.alpha;
        }
    }
    // A shape with a light seam, which stands out on anything.
    void outlined(double distance, const Ink& ink, const Ink& seam = kWhite, double width = 1)
    {
        fill(distance - width, seam);
        fill(distance, ink);
    }

    V3 color() const { return _color; } // premultiplied
    double alpha() const { return _alpha; }

    const V2 p;

private:
    V3 _color;
    double _alpha = 0;
};

double box(V2 p, double left, double top, double right, double bottom)
{
    return std::max(std::max(left - p.x, p.x - right), std::max(top - p.y, p.y - bottom));
}
double disc(V2 p, V2 middle, double radius)
{
    return length(p - middle) - radius;
}
// A stroke with round ends.
double bar(V2 p, V2 a, V2 b, double half)
{
    const V2 along = b - a;
    const double t = limited(dot(p - a, along) / std::max(dot(along, along), 1e-9));
    return length(p - a - along * t) - half;
}
// How far from a convex polygon, its corners clockwise as seen on the screen.
double convex(V2 p, std::initializer_list<V2> corners)
{
    double away = -1e9;
    for (auto at = corners.begin(); at != corners.end(); ++at) {
        const V2 a = *at, b = at + 1 == corners.end() ? *corners.begin() : at[1];
        const V2 side = (b - a) * (1 / length(b - a));
        away = std::max(away, (p.x - a.x) * side.y - (p.y - a.y) * side.x);
    }
    return away;
}

// An arrow with two heads through the middle of a cursor.
void arrow(Spot& spot, double angle, double halfShaft)
{
    constexpr double kTip = 6.5;
    const V2 v = turned(spot.p - V2{7.5, 7.5}, angle);
    const V2 q{std::abs(v.x), std::abs(v.y)};
    const double head = convex(q, {{kTip - 4, -4}, {kTip, 0}, {kTip - 4, 4}});
    spot.outlined(std::min(box(q, -1, -1, kTip - 3, halfShaft), head), kBlack);
}

void boxCursor(Spot& spot)
{
    const V2 v = spot.p - V2{5.5, 6.5};
    const double cross = std::min(box(v, -4.5, -0.5, 4.5, 0.5), box(v, -0.5, -4.5, 0.5, 4.5));
    const double frame = std::max(box(spot.p, 9, 10, 15, 15), -box(spot.p, 10, 11, 14, 14));
    spot.fill(std::min(cross, frame) - 1, kWhite);
    spot.fill(std::min(cross, frame), kBlack);
}

void sepCursor(Spot& spot)
{
    const V2 v{std::abs(spot.p.x - 6.5), spot.p.y - 6.5};
    const double bars = box(v, 0.5, -5.5, 1.5, 5.5);
    const double head = convex(v, {{2.5, -2.6}, {5.5, 0}, {2.5, 2.6}});
    spot.outlined(std::min(bars, head), kBlack);
}

// Fingers from the little one on, each a stroke with an outline, and the palm that joins them.
void hand(Spot& spot, std::initializer_list<std::pair<V2, V2>> fingers)
{
    const double palm = std::min(bar(spot.p, {6.4, 10.4}, {9.6, 10.4}, 2.4),
                                 convex(spot.p, {{4, 10}, {12, 10}, {11, 14}, {6, 14}}));
    spot.fill(palm - 1, kBlack);
    for (const auto& [root, end] : fingers) {
        spot.fill(bar(spot.p, root, end, 1.55), kBlack);
        spot.fill(bar(spot.p, root, end, 0.65), kWhite);
    }
    spot.fill(palm, kWhite);
}

void openHand(Spot& spot)
{
    hand(spot, {{{11.2, 9.5}, {12.7, 4.9}},
                {{9.3, 9}, {9.9, 2.4}},
                {{7.2, 9}, {6.9, 1.6}},
                {{5.2, 9.5}, {4.1, 3}},
                {{5.2, 12}, {1.7, 8.4}}});
}

void closedHand(Spot& spot)
{
    hand(spot, {{{11.6, 9.5}, {11.6, 7}},
                {{9.4, 9}, {9.4, 6.2}},
                {{7.2, 9}, {7.2, 6}},
                {{5, 9.5}, {5, 6.6}},
                {{5.2, 12}, {2.8, 9.6}}});
}

void textContinue(Spot& spot)
{
    double lines = box(spot.p, 6, 8, 15, 9);
    lines = std::min(lines, box(spot.p, 6, 11, 15, 12));
    lines = std::min(lines, box(spot.p, 6, 14, 11, 15));
    spot.outlined(lines, kBlack);
    spot.outlined(convex(spot.p, {{1, 1}, {7, 3.6}, {3.6, 7}}), kBlack);
}

V3 hue(double turn)
{
    const auto part = [&](double phase) {
        return limited(std::abs(wrapped(turn + phase, 1)) * 6 - 1);
    };
    return {part(0.5), part(1.0 / 6), part(-1.0 / 6)};
}

const V2 kMark{5.5, 6.5}; // the middle of a list's mark

double crossHairs(V2 v)
{
    const V2 q{std::abs(v.x), std::abs(v.y)};
    return std::min(box(q, 2, -0.5, 5.5, 0.5), box(q, -0.5, 2, 0.5, 5.5));
}

void target(Spot& spot)
{
    const V2 v = spot.p - kMark;
    const double ring = std::abs(length(v) - 3.5) - 0.5;
    const double sight = std::min({ring, crossHairs(v), box(v, -0.5, -0.5, 0.5, 0.5)});
    spot.fill(std::max(sight - 0.8, length(v) - 6.5), {{1, 1, 1}, 0.9});
    spot.fill(sight, kDark);
}

void wheel(Spot& spot)
{
    const V2 v = spot.p - kMark;
    const double pale = limited(length(v) / 4.2);
    spot.fill(length(v) - 5.5, kGrey);
    spot.fill(length(v) - 4.7,
              {mix({1, 1, 1}, hue(std::atan2(-v.y, v.x) / (2 * kPi)), pale * pale)});
}

void colorTarget(Spot& spot)
{
    const V2 v = spot.p - kMark;
    spot.fill(std::max(crossHairs(v), 4 - length(v)) - 0.6, {{1, 1, 1}, 0.9});
    spot.fill(std::abs(length(v) - 3.5) - 1.1, {hue(std::atan2(-v.y, v.x) / (2 * kPi))});
    spot.fill(std::max(crossHairs(v), 4.5 - length(v)), kDark);
    spot.outlined(box(v, -0.5, -0.5, 0.5, 0.5), kDark, {{1, 1, 1}, 0.9}, 0.6);
}

void cropMark(Spot& spot)
{
    const double corners = std::min({box(spot.p, 2, 1, 3, 10), box(spot.p, 2, 9, 11, 10),
                                     box(spot.p, 0, 3, 9, 4), box(spot.p, 8, 3, 9, 12)});
    spot.fill(corners - 0.6, {{1, 1, 1}, 0.9});
    spot.fill(corners, kDark);
}

void selectMark(Spot& spot)
{
    const V2 p = spot.p;
    const double frame = std::max(box(p, 1, 2, 15, 14), -box(p, 2, 3, 14, 13));
    // Dashes that meet at the corners.
    const bool across = p.y < 3 || p.y > 13;
    const double along = across ? p.x - 1 : p.y - 2, length = across ? 14 : 12;
    const double period = across ? 14 / 3.5 : 4;
    const bool gap = std::fmod(along, period) > period / 2 && along < length - period / 2;
    spot.fill(frame - 0.7, {{1, 1, 1}, 0.8});
    spot.fill(frame, gap ? kWhite : kDark);
    spot.fill(box(p, 2, 3, 14, 13), {kBlue.color, 0.18});
}

void shapesMark(Spot& spot)
{
    spot.outlined(convex(spot.p, {{10.5, 0.8}, {15.4, 9}, {5.6, 9}}), kGreen, kWhite, 0.5);
    spot.outlined(box(spot.p, 1, 5, 9, 13), kBlue, kWhite, 0.5);
    spot.outlined(disc(spot.p, {10.5, 11}, 4.2), kOrange, kWhite, 0.5);
}

// Lines of text that run round a picture.
void wrapMark(Spot& spot)
{
    for (const int y : {1, 4, 7, 10, 13}) {
        const bool full = y == 1 || y == 13;
        const double right = y == 13 ? 11 : 15;
        spot.fill(full ? box(spot.p, 1, y, right, y + 1) : box(spot.p, 10, y, 15, y + 1), kGrey);
    }
    spot.fill(box(spot.p, 1, 4, 8, 11), kBlue);
    // A little landscape in it.
    spot.fill(std::max(convex(spot.p, {{5, 6.4}, {8.6, 11}, {1.4, 11}}), box(spot.p, 2, 5, 7, 10)),
              {{0.86, 0.92, 1}});
}

struct Drawing {
    std::string_view name;
    void (*draw)(Spot&);
};
constexpr Drawing kDrawings[] = {
    {"resizeHCursor", [](Spot& spot) { arrow(spot, 0, 0.5); }},
    {"resizeVCursor", [](Spot& spot) { arrow(spot, kPi / 2, 0.5); }},
    {"resizeD1Cursor", [](Spot& spot) { arrow(spot, kPi / 4, 0.8); }},
    {"resizeD2Cursor", [](Spot& spot) { arrow(spot, -kPi / 4, 0.8); }},
    {"boxCursor", boxCursor},
    {"sepCursor", sepCursor},
    {"openhandCursor", openHand},
    {"closedhandCursor", closedHand},
    {"textContinueCursor", textContinue},
    {"select", selectMark},
    {"small_pricel", target},
    {"small_koleso", wheel},
    {"small_crop", cropMark},
    {"small_color_pricel", colorTarget},
    {"shapes", shapesMark},
    {"inspector_wrap", wrapMark},
    {"gradient_hue", [](Spot& spot) { spot.fill(-1, {hue(spot.p.x / 360)}); }},
};

} // namespace

Painting editorPicture(const plugin::EditorPicture& picture, int density)
{
    constexpr int kFine = 8;
    const auto drawing = std::ranges::find(kDrawings, picture.name, &Drawing::name);
    Painting out(picture.width * density, picture.height * density);
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
            V3 color;
            double alpha = 0;
            for (int j = 0; j < kFine; ++j)
                for (int i = 0; i < kFine; ++i) {
                    Spot spot(
                        {(x + (i + 0.5) / kFine) / density, (y + (j + 0.5) / kFine) / density});
                    drawing->draw(spot);
                    color = color + spot.color();
                    alpha += spot.alpha();
                }
            if (alpha > 0)
                color = color * (1 / alpha);
            out.at(x, y) = {color.x, color.y, color.z, alpha / (kFine * kFine)};
        }
    return out;
}

} // namespace pictures
