// Brush tips: black, shaped by their alpha alone, as a brush is dipped into a colour before it
// prints. Places are measured from the middle, y up, 1 being the border of the picture.
#include "resources/pictures/Paint.h"

#include <functional>

namespace pictures {

namespace {

constexpr int kSide = 256;
constexpr double kPixel = 2.0 / kSide;
constexpr int kEndless = 4096; // a period of noise that no tip reaches

// How much of a pixel an edge leaves covered; the distance is negative inside.
double inside(double distance)
{
    return limited(0.5 - distance / kPixel);
}

Painting tip(const std::function<double(V2)>& alpha)
{
    constexpr int kFine = 2;
    Painting out(kSide, kSide);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            double sum = 0;
            for (int j = 0; j < kFine; ++j)
                for (int i = 0; i < kFine; ++i)
                    sum += limited(alpha({(x + (i + 0.5) / kFine) * kPixel - 1,
                                          1 - (y + (j + 0.5) / kFine) * kPixel}));
            out.at(x, y) = {0, 0, 0, sum / (kFine * kFine)};
        }
    return out;
}

// Noise over the tip, so many waves from the middle to the border.
double grain(V2 at, double waves, std::uint32_t salt)
{
    return noise(at * waves + V2{kEndless / 2, kEndless / 2}, kEndless, kEndless, salt);
}
double coarse(V2 at, double waves, int octaves, std::uint32_t salt)
{
    return fractal(at * waves + V2{kEndless / 2, kEndless / 2}, kEndless, kEndless, octaves, salt);
}

// How far a place is from a stroke from a to b whose half width goes from ra to rb.
double stroke(V2 p, V2 a, V2 b, double ra, double rb)
{
    const V2 along = b - a;
    const double t = limited(dot(p - a, along) / dot(along, along));
    return length(p - a - along * t) - mix(ra, rb, t);
}

double ellipse(V2 p, V2 middle, double angle, double longHalf, double shortHalf)
{
    const V2 q = turned(p - middle, -angle);
    const V2 scaled{q.x / longHalf, q.y / shortHalf};
    const double k = length(scaled);
    const double slope = length({scaled.x / longHalf, scaled.y / shortHalf});
    return slope > 0 ? (k - 1) * k / slope : -shortHalf;
}

// How far a place is from a closed polygon.
double polygon(V2 p, const std::vector<V2>& corners)
{
    double away = 1e9;
    bool in = false;
    for (std::size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
        const V2 a = corners[i], b = corners[j];
        away = std::min(away, stroke(p, a, b, 0, 0));
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            in = !in;
    }
    return in ? -away : away;
}

Painting softRound()
{
    return tip([](V2 p) {
        const double t = 1 - limited(length(p) / 0.98);
        return t * t * (3 - 2 * t);
    });
}

Painting hardRound()
{
    return tip([](V2 p) { return inside(length(p) - 0.92); });
}

Painting ring()
{
    return tip([](V2 p) {
        const double r = length(p);
        return inside(std::abs(r - 0.86) - 0.06) + 0.35 * smooth(0.2, 0.8, r) * inside(r - 0.82);
    });
}

// A dry flat brush pulled to the right.
Painting bristles()
{
    return tip([](V2 p) {
        const double across = p.y / 0.62;
        if (std::abs(across) > 1)
            return 0.0;
        const double hair =
            0.7 * grain({p.x * 0.8, p.y * 48}, 1, 1) + 0.6 * grain({p.x * 0.6, p.y * 21}, 1, 5);
        const double tuft = grain({p.x * 0.4, p.y * 5}, 1, 2);
        // Every hair lifts off at a place of its own.
        const double end =
            0.62 + 0.25 * grain({3, p.y * 34}, 1, 3) + 0.12 * tuft - 0.15 * across * across;
        const double start = -0.8 + 0.1 * grain({7, p.y * 14}, 1, 4) + 0.1 * across * across;
        const double body =
            smooth(start - 0.03, start + 0.05, p.x) * (1 - smooth(end - 0.25, end, p.x));
        const double dryness = mix(-0.5, 0.25, smooth(-0.8, 0.8, p.x));
        return body * smooth(dryness - 0.2, dryness + 0.3, hair + 0.4 * tuft) *
               (1 - smooth(0.9, 1, std::abs(across)));
    });
}

// The side of a stick of chalk on rough paper.
Painting chalk()
{
    return tip([](V2 p) {
        const double edge =
            std::max(std::abs(p.x) / 0.82, std::abs(p.y) / 0.6) + 0.07 * coarse(p, 6, 3, 10);
        const double tooth =
            0.6 * grain(p, 38, 11) + 0.5 * grain(p, 21, 12) + 0.3 * coarse(p, 5, 3, 13);
        const double pressure = 0.32 - 0.9 * smooth(0.7, 1.02, edge);
        return 0.95 * smooth(-0.1, 0.22, tooth + pressure) * (1 - smooth(0.98, 1.1, edge));
    });
}

// A charcoal smear: dark at one side, dust at the other.
Painting charcoal()
{
    return tip([](V2 p) {
        const V2 q = turned(p, 0.5);
        const double edge = length({q.x / 0.95, q.y / 0.6}) + 0.12 * coarse(p, 4, 3, 20);
        const double tooth = 0.5 * grain(p, 48, 21) + 0.5 * grain(p, 27, 22) +
                             0.35 * grain({q.x * 3, q.y * 20}, 1, 23);
        const double dark = mix(0.95, 0.05, smooth(-0.5, 0.5, q.y)) - 1.2 * smooth(0.5, 1.05, edge);
        return 0.92 * smooth(-0.25, 0.45, tooth + dark) * (1 - smooth(0.92, 1.05, edge));
    });
}

// A wet sponge: a lump full of pores of all sizes.
Painting sponge()
{
    struct Pore {
        V2 middle;
        double radius;
    };
    std::vector<Pore> pores;
    for (int i = 0; i < 300; ++i)
        pores.push_back({polar(std::sqrt(chance(i, 0, 30)), 2 * kPi * chance(i, 1, 30)),
                         0.01 + 0.075 * std::pow(chance(i, 2, 30), 6)});
    return tip([&](V2 p) {
        const double outline = length(p) - 0.78 - 0.16 * coarse(p, 2.6, 4, 31);
        double holes = 1e9;
        for (const Pore& pore : pores)
            holes = std::min(holes, length(p - pore.middle) - pore.radius);
        const double wet = 0.8 + 0.2 * grain(p, 6, 32);
        return wet * inside(outline + 0.06 * grain(p, 14, 33)) * smooth(0, 0.025, holes);
    });
}

Painting spatter()
{
    struct Blot {
        V2 from, to;
        double radius, tail;
    };
    std::vector<Blot> blots;
    for (int i = 0; i < 90; ++i) {
        const double angle = 2 * kPi * chance(i, 0, 40),
                     far = 0.3 + 0.58 * std::sqrt(chance(i, 1, 40));
        const double radius = 0.012 + 0.075 * std::pow(chance(i, 2, 40), 3) * (1.15 - far);
        const double back = between(0.05, 0.28, i, 4, 40);
        // Some have a tail that points back at the blot.
        if (chance(i, 3, 40) < 0.35)
            blots.push_back({polar(std::max(far - back, 0.25), angle), polar(far, angle), radius,
                             radius * 0.15});
        else
            blots.push_back({polar(far - radius, angle), polar(far, angle), radius, radius});
    }
    return tip([&](V2 p) {
        const double angle = std::atan2(p.y, p.x);
        const double lobes = 0.06 * std::sin(5 * angle + 1) + 0.05 * std::sin(9 * angle + 2) +
                             0.03 * std::sin(16 * angle);
        double away = length(p) - 0.29 - lobes;
        for (const Blot& b : blots)
            away = std::min(away, stroke(p, b.from, b.to, b.tail, b.radius));
        return inside(away);
    });
}

// An airbrush: a mist of specks, dense in the middle.
Painting spray()
{
    struct Speck {
        V2 middle;
        double radius;
    };
    std::vector<Speck> specks;
    for (int i = 0; i < 900; ++i) {
        const double far = 0.9 * (0.5 * chance(i, 0, 50) + 0.5 * chance(i, 1, 50)) *
                           std::sqrt(chance(i, 4, 50)) * 1.3;
        if (far < 0.95)
            specks.push_back({polar(far, 2 * kPi * chance(i, 2, 50)),
                              0.006 + 0.013 * std::pow(chance(i, 3, 50), 3)});
    }
    return tip([&](V2 p) {
        double away = 1e9;
        for (const Speck& s : specks)
            away = std::min(away, length(p - s.middle) - s.radius);
        const double r = length(p);
        return std::max(inside(away), 0.35 * std::exp(-r * r / 0.09) * (1 - smooth(0.7, 0.95, r)));
    });
}

// Layers of pen strokes, drawn by hand.
Painting crossHatch()
{
    struct Line {
        V2 a, b;
        double width;
    };
    std::vector<Line> lines;
    for (int layer = 0; layer < 3; ++layer)
        for (int i = -7; i <= 7; ++i) {
            const double angle = (layer == 0 ? 0.85 : layer == 1 ? -0.7 : 0.08);
            const double off = i * 0.115 + 0.02 * (chance(i + 9, layer, 60) - 0.5);
            const double half =
                std::sqrt(std::max(0.0, 0.8 * 0.8 - off * off)) * (layer == 2 ? 0.62 : 0.95) +
                0.08 * (chance(i + 9, layer, 61) - 0.5);
            if (half < 0.1)
                continue;
            const double tilt = angle + 0.05 * (chance(i + 9, layer, 62) - 0.5);
            const V2 middle = turned({0, off}, angle);
            lines.push_back({middle - polar(half, tilt), middle + polar(half, tilt),
                             between(0.012, 0.02, i + 9, layer, 63)});
        }
    return tip([&](V2 p) {
        const V2 shaken = p + V2{grain(p, 5, 64), grain(p, 5, 65)} * 0.012;
        double light = 1;
        for (const Line& l : lines)
            light *= 1 - 0.85 * inside(stroke(shaken, l.a, l.b, l.width, l.width * 0.35));
        return 1 - light;
    });
}

Painting star()
{
    std::vector<V2> corners;
    for (int i = 0; i < 10; ++i)
        corners.push_back(polar(i % 2 ? 0.385 : 0.93, kPi / 2 + i * kPi / 5));
    return tip([&](V2 p) { return inside(polygon(p, corners) - 0.015); });
}

Painting heart()
{
    std::vector<V2> corners;
    for (int i = 0; i < 160; ++i) {
        const double t = 2 * kPi * i / 160, s = std::sin(t);
        corners.push_back({0.056 * 16 * s * s * s, 0.056 * (13 * std::cos(t) - 5 * std::cos(2 * t) -
                                                            2 * std::cos(3 * t) - std::cos(4 * t)) +
                                                       0.13});
    }
    return tip([&](V2 p) { return inside(polygon(p, corners)); });
}

Painting snowflake()
{
    return tip([](V2 p) {
        // One twelfth, mirrored all round.
        double angle = std::atan2(p.y, p.x) + kPi / 6;
        angle = std::abs(wrapped(angle - kPi / 6, kPi / 3));
        const V2 q = polar(length(p), angle);
        double away = stroke(q, {0, 0}, {0.9, 0}, 0.034, 0.026);
        for (const V2 branch : {V2{0.34, 0.17}, V2{0.54, 0.26}, V2{0.72, 0.15}})
            away = std::min(away, stroke(q, {branch.x, 0},
                                         V2{branch.x, 0} + polar(branch.y, kPi / 3), 0.026, 0.018));
        away = std::min(away,
                        std::abs(q.x * std::cos(kPi / 6) + q.y * std::sin(kPi / 6) - 0.17) - 0.022);
        return inside(away);
    });
}

// A beech leaf with its veins left out.
Painting leaf()
{
    return tip([](V2 p) {
        const V2 q = turned(p, -0.35);
        const double t = (q.y + 0.62) / 1.52; // 0 at the stalk, 1 at the tip
        double away = 1;
        if (t > 0 && t < 1) {
            const double half =
                0.52 * std::pow(std::sin(kPi * std::pow(t, 0.85)), 0.9) * (1 - 0.25 * t);
            const double teeth = 0.012 * std::sin(t * 70);
            away = (std::abs(q.x) - half - teeth * smooth(0, 0.2, t) * (1 - t)) * 0.85;
        }
        const double stalk = stroke(q, {0, -0.6}, {0.04, -0.95}, 0.022, 0.03);
        const double rib = std::abs(q.x) - 0.016 * (1.1 - t);
        // Side veins rise at a slant and bow upwards.
        const double rise = q.y - 0.75 * std::abs(q.x) + 0.25 * q.x * q.x;
        const double vein =
            std::abs(wrapped(rise, 0.165)) * 0.8 - 0.008 * (1.2 - std::abs(q.x) * 1.6);
        const double gaps = t > 0.02 && t < 0.97 ? std::max(inside(rib), 0.75 * inside(vein)) : 0;
        return std::max(inside(away) * (1 - gaps), inside(stalk));
    });
}

Painting mapleLeaf()
{
    const V2 half[] = {{0, 0.97},    {0.13, 0.70},  {0.28, 0.77},  {0.21, 0.36},
                       {0.42, 0.57}, {0.48, 0.44},  {0.74, 0.50},  {0.66, 0.26},
                       {0.79, 0.18}, {0.38, -0.16}, {0.43, -0.31}, {0.035, -0.25}};
    std::vector<V2> corners(std::begin(half), std::end(half));
    corners.push_back({0.025, -0.55});
    corners.push_back({0.05, -0.9});
    corners.push_back({-0.01, -0.91});
    corners.push_back({-0.025, -0.55});
    for (int i = 11; i > 0; --i)
        corners.push_back({-half[i].x, half[i].y});
    const V2 veins[] = {{0, 0.72}, {0.5, 0.36}, {-0.5, 0.36}, {0.27, -0.22}, {-0.27, -0.22}};
    return tip([&](V2 p) {
        // Leaves are not drawn with a ruler.
        const V2 q = p + V2{grain(p, 7, 70), grain(p, 7, 71)} * 0.018;
        double gap = 1e9;
        for (const V2& to : veins)
            gap = std::min(gap, stroke(q, {0, -0.24}, to, 0.013, 0.004));
        return inside(polygon(q, corners) - 0.012) * (1 - 0.8 * inside(gap));
    });
}

// A frond with leaflets that grow shorter towards the tip.
Painting fern()
{
    return tip([](V2 p) {
        const auto rib = [](double t) { return V2{0.3 * t * t - 0.18, -0.93 + 1.82 * t}; };
        double away = 1e9;
        for (int i = 0; i < 24; ++i)
            away = std::min(away, stroke(p, rib(i / 24.0), rib((i + 1) / 24.0), 0.02 - 0.0006 * i,
                                         0.0194 - 0.0006 * i));
        for (int i = 0; i < 19; ++i)
            for (const int side : {-1, 1}) {
                const double t = 0.16 + 0.82 * (i + (side > 0 ? 0.4 : 0)) / 19;
                const double reach = 0.72 * std::pow(1 - t, 0.75) * smooth(-0.1, 0.34, t) + 0.03;
                const double angle = kPi / 2 - 0.25 * t - side * (1.25 - 0.45 * t);
                const V2 middle = rib(t) + polar(reach / 2, angle);
                if (length(p - middle) - reach / 2 < away)
                    away = std::min(away,
                                    ellipse(p, middle, angle, reach / 2, 0.012 + 0.034 * (1 - t)));
            }
        return inside(away);
    });
}

Painting feather()
{
    return tip([](V2 p) {
        const V2 q = turned(p, 0.6);
        const double t = (q.y + 0.6) / 1.5;
        const double x = q.x - 0.1 * t * t + 0.05;
        const double quill = stroke({x, q.y}, {0, -0.93}, {0, 0.84}, 0.022, 0.004);
        double vane = 0;
        if (t > 0 && t < 1) {
            const bool left = x < 0;
            const double half =
                (left ? 0.34 : 0.25) * std::pow(std::sin(kPi * std::pow(t, 0.62)), 0.55);
            // Barbs rise from the quill; some stick together, here and there they part.
            const double barb = q.y - 0.95 * std::abs(x) + (left ? 0 : 5);
            const double parting = smooth(0.42, 0.62, grain({barb * 4.5, 0}, 1, 80));
            const double fringe = 0.03 * grain({barb * 40, 1}, 1, 81);
            const double edge = std::abs(x) - half - fringe + 0.12 * parting * half / 0.2;
            const double lines = 0.72 + 0.28 * grain({barb * 34, std::abs(x) * 3}, 1, 82);
            const double split = smooth(0.3, 0.9, std::abs(x) / (half + 0.02));
            vane = inside(edge) * lines * (1 - 0.85 * parting * split);
            vane *= smooth(0.006, 0.016, std::abs(x)); // a light line along the quill
        }
        return std::max(vane, inside(quill));
    });
}

// Five petals with notched tips.
Painting blossom()
{
    return tip([](V2 p) {
        double alpha = 0;
        for (int i = 0; i < 5; ++i) {
            const double angle = kPi / 2 + 2 * kPi * i / 5;
            const V2 q = turned(p, -angle); // the petal points to the right
            const double notch = 0.1 * std::exp(-q.y * q.y / 0.004);
            const double away = std::max(ellipse(q, {0.52, 0}, 0, 0.42, 0.31),
                                         q.x - 0.95 + notch + q.y * q.y * 0.3);
            const double streak = 0.16 * smooth(0.75, 0.25, 1 - q.x) *
                                  (0.5 + 0.5 * std::cos(std::atan2(q.y, q.x) * 22));
            const double seam = smooth(0, 0.035, -away);
            alpha = std::max(alpha, inside(away) * (0.72 + 0.28 * seam) * (1 - streak));
        }
        const double r = length(p);
        alpha *= smooth(0.13, 0.16, r);
        for (int i = 0; i < 12; ++i) {
            const V2 top = polar(0.2 + 0.06 * (i % 2), 2 * kPi * i / 12 + 0.2);
            alpha = std::max(alpha * (1 - inside(length(p - top) - 0.035)),
                             inside(length(p - top) - 0.02));
        }
        return std::max(alpha, inside(r - 0.09));
    });
}

Painting petal()
{
    return tip([](V2 p) {
        const double t = (p.y + 0.92) / 1.8;
        if (t <= 0 || t >= 1)
            return 0.0;
        const double half = 0.62 * std::pow(t, 0.75) * std::sqrt(1 - t) * 1.72;
        const double x = p.x - 0.06 * std::sin(3 * t);
        const double away = (std::abs(x) - half) * 0.8;
        const double vein = 0.14 * (0.5 + 0.5 * std::cos(x / (half + 0.02) * 20)) * (1 - t);
        return inside(away) * (0.62 + 0.38 * t - vein);
    });
}

Painting drop()
{
    return tip([](V2 p) {
        const double t = (0.94 - p.y) / 1.84; // 0 at the tip, 1 at the foot
        if (t <= 0 || t >= 1)
            return 0.0;
        // A round belly that runs out into a point.
        const double half = 0.98 * std::pow(t, 1.25) * std::sqrt(1 - t) * 1.45;
        const double glint = inside(ellipse(p, {-0.24, -0.42}, 1.1, 0.2, 0.07));
        return inside((std::abs(p.x) - half) * 0.8) * (1 - 0.85 * glint);
    });
}

Painting spiral()
{
    return tip([](V2 p) {
        constexpr double kTurns = 3.1, kStep = 0.88 / kTurns; // from one turn to the next
        const double turn = std::atan2(p.y, p.x) / (2 * kPi), r = length(p);
        const double k = std::round(r / kStep - turn);
        double away = 1;
        for (const double n : {k - 1, k, k + 1}) {
            const double s = n + turn; // turns made so far
            if (s > 0.08 && s < kTurns)
                away = std::min(away, std::abs(r - s * kStep) -
                                          0.075 * std::sqrt(s / kTurns) *
                                              (1 - smooth(kTurns - 0.7, kTurns, s)));
        }
        return inside(away);
    });
}

Painting grass()
{
    return tip([](V2 p) {
        double away = 1e9;
        for (int i = 0; i < 13; ++i) {
            const double root = (i - 6) * 0.05,
                         lean = (i - 6) * 0.085 + 0.25 * (chance(i, 0, 90) - 0.5);
            const double high = between(1.1, 1.82, i, 1, 90) * (1 - 0.02 * (i - 6) * (i - 6) / 2.0);
            const double t = (p.y + 0.93) / high;
            if (t < 0 || t > 1)
                continue;
            const double x = root + lean * t * t;
            const double slope = 2 * lean * t / high;
            away = std::min(away, (std::abs(p.x - x) - 0.036 * (1 - t) * (0.5 + t)) /
                                      std::sqrt(1 + slope * slope));
        }
        return inside(away);
    });
}

Painting cloud()
{
    return tip([](V2 p) {
        double puff = -1;
        for (const auto& [x, y, r] : {V3{-0.52, -0.14, 0.3}, V3{-0.22, 0.16, 0.36},
                                      V3{0.2, 0.1, 0.4}, V3{0.54, -0.12, 0.28}, V3{0, -0.16, 0.44},
                                      V3{-0.3, -0.2, 0.3}, V3{0.34, -0.2, 0.3}}) {
            const V2 d{p.x - x, p.y - y};
            puff = std::max(puff, 1 - length(d) / r);
        }
        const double billows = 0.55 * coarse(p, 3.5, 5, 95);
        const double density = smooth(-0.12, 0.3, puff + billows * smooth(-0.5, 0.1, puff));
        const double rim = 1 - smooth(0.82, 0.97, std::max(std::abs(p.x), std::abs(p.y)));
        return rim * density * (0.78 + 0.2 * smooth(-0.2, 0.5, puff + 0.8 * billows));
    });
}

} // namespace

std::vector<Work> brushTips()
{
    return {{"Blossom", blossom},
            {"Bristles", bristles},
            {"Chalk", chalk},
            {"Charcoal", charcoal},
            {"Cloud", cloud},
            {"Cross-Hatch", crossHatch},
            {"Drop", drop},
            {"Feather", feather},
            {"Fern", fern},
            {"Grass", grass},
            {"Hard Round", hardRound},
            {"Heart", heart},
            {"Leaf", leaf},
            {"Maple Leaf", mapleLeaf},
            {"Petal", petal},
            {"Ring", ring},
            {"Snowflake", snowflake},
            {"Soft Round", softRound},
            {"Spatter", spatter},
            {"Spiral", spiral},
            {"Sponge", sponge},
            {"Spray", spray},
            {"Star", star}};
}

} // namespace pictures
