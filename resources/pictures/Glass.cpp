// Height maps of figured glass. Every one repeats without a seam, and is smooth: what is seen
// through the glass is displaced by the slope.
#include "resources/pictures/Paint.h"

#include <functional>

namespace pictures {

namespace {

constexpr int kSide = 512;

// A square of heights that repeats.
class Heights {
public:
    Heights() : _at(std::size_t(kSide) * kSide) {}

    // fn(p): the height at a place in pixels, of any size.
    void fill(const std::function<double(V2)>& fn)
    {
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
                _at[index(x, y)] = fn({x + 0.5, y + 0.5});
    }

    // A Gaussian, in pixels: rounds creases.
    void soften(double sigma)
    {
        const int reach = int(std::ceil(3 * sigma));
        std::vector<double> weights;
        double all = 0;
        for (int i = -reach; i <= reach; ++i)
            all += weights.emplace_back(std::exp(-i * i / (2 * sigma * sigma)));
        for (const bool across : {true, false}) {
            std::vector<double> out(_at.size());
            for (int y = 0; y < kSide; ++y)
                for (int x = 0; x < kSide; ++x) {
                    double sum = 0;
                    for (int i = -reach; i <= reach; ++i)
                        sum += weights[i + reach] * _at[across ? index(x + i, y) : index(x, y + i)];
                    out[index(x, y)] = sum / all;
                }
            _at = std::move(out);
        }
    }

    // Grey, the heights spread about the middle over so much of black to white.
    Painting painted(double range) const
    {
        const auto [low, high] = std::ranges::minmax(_at);
        Painting out(kSide, kSide);
        out.deep = true;
        for (std::size_t i = 0; i < _at.size(); ++i) {
            const double v = 0.5 + range * ((_at[i] - low) / (high - low) - 0.5);
            // 12 bits are as smooth as an eye can follow, and pack twice as well as 16.
            const double grey = std::floor(v * 4095 + 0.5 + 1e-6) / 4095;
            out.pixels[i] = {grey, grey, grey, 1};
        }
        return out;
    }

private:
    static std::size_t index(int x, int y)
    {
        return std::size_t(y & (kSide - 1)) * kSide + std::size_t(x & (kSide - 1));
    }

    std::vector<double> _at;
};

Painting glass(double range, double softness, const std::function<double(V2)>& height)
{
    Heights heights;
    heights.fill(height);
    if (softness > 0)
        heights.soften(softness);
    return heights.painted(range);
}

// A place as a fraction of the square, and in cells of which so many make the square.
V2 cellsOf(V2 p, double across, double down)
{
    return {p.x * across / kSide, p.y * down / kSide};
}
V2 cellsOf(V2 p, double count)
{
    return cellsOf(p, count, count);
}
double wave(double turns)
{
    return std::sin(2 * kPi * turns);
}
V2 nearest(V2 d)
{
    return {wrapped(d.x, kSide), wrapped(d.y, kSide)};
}

// The two nearest of points strewn over a grid of count × count cells, one to a cell.
struct Strewn {
    double first = 1e9, second = 1e9; // distances in pixels
    V2 offset;                        // from the nearest, in pixels
    int i = 0, j = 0;                 // which one that is
};
Strewn strewn(V2 p, int count, double jitter, std::uint32_t salt)
{
    const double cell = double(kSide) / count;
    const int cx = int(std::floor(p.x / cell)), cy = int(std::floor(p.y / cell));
    Strewn out;
    for (int y = cy - 2; y <= cy + 2; ++y)
        for (int x = cx - 2; x <= cx + 2; ++x) {
            const int i = ((x % count) + count) % count, j = ((y % count) + count) % count;
            const V2 place{(x + 0.5 + jitter * (chance(i, j, salt) - 0.5)) * cell,
                           (y + 0.5 + jitter * (chance(i, j, salt + 1) - 0.5)) * cell};
            const V2 d = p - place;
            const double away = length(d);
            if (away < out.first) {
                out.second = out.first;
                out.first = away;
                out.offset = d;
                out.i = i;
                out.j = j;
            } else {
                out.second = std::min(out.second, away);
            }
        }
    return out;
}

// Discs that do not touch, the largest first.
struct Disc {
    V2 center;
    double radius = 0;
};
std::vector<Disc> scattered(int tries, double largest, double smallest, double gap,
                            std::uint32_t salt)
{
    std::vector<Disc> discs;
    for (int n = 0; n < tries; ++n) {
        const double t = double(n) / tries;
        const Disc next{{kSide * chance(n, 0, salt), kSide * chance(n, 1, salt)},
                        mix(largest, smallest, std::sqrt(t)) * between(0.8, 1, n, 2, salt)};
        if (std::ranges::none_of(discs, [&](const Disc& d) {
                return length(nearest(d.center - next.center)) < d.radius + next.radius + gap;
            }))
            discs.push_back(next);
    }
    return discs;
}

// Gently uneven old window glass.
Painting antique()
{
    return glass(1, 0, [](V2 p) {
        return noise(cellsOf(p, 7, 5), 7, 5, 1) + 0.5 * noise(cellsOf(p, 15, 11), 15, 11, 2) +
               0.12 * noise(cellsOf(p, 31, 25), 31, 25, 3);
    });
}

// Tall, knotty furrows.
Painting bark()
{
    return glass(0.75, 1.5, [](V2 p) {
        const V2 bend = V2{fractal(cellsOf(p, 4, 4), 4, 4, 3, 10), 0} * 40;
        const V2 q = cellsOf(p + bend, 14, 4);
        const double ridge = 1 - std::abs(noise(q, 14, 4, 11));
        return ridge * ridge + 0.25 * noise(cellsOf(p + bend, 32, 10), 32, 10, 12);
    });
}

// Glass blocks in running bond, each bulging a little.
Painting bricks()
{
    return glass(0.8, 2, [](V2 p) {
        const double row = std::floor(p.y / 64);
        const double x = wrapped(p.x - 64 * (std::fmod(row, 2) == 0 ? 1 : 0) - 64, 128);
        const double y = wrapped(p.y - 32, 64);
        const double edge = std::min(64 - std::abs(x), 32 - std::abs(y));
        const double bevel = 1 - limited(edge / 15);
        return 1 - bevel * bevel - 0.35 * ((x * x) / (64 * 64) + (y * y) / (32 * 32));
    });
}

// Round bubbles of all sizes in clear glass.
Painting bubbles()
{
    const std::vector<Disc> discs = scattered(900, 38, 7, 4, 20);
    return glass(1, 1.2, [&](V2 p) {
        double h = 0;
        for (const Disc& d : discs) {
            const double t = length(nearest(p - d.center)) / d.radius;
            if (t < 1)
                h = d.radius * (1 - t * t * t);
        }
        return h;
    });
}

// Crown glass roundels: a knob in the middle of each, rings about it, small ones in the corners.
Painting roundels()
{
    const auto roundel = [](double d, double radius, double rings) {
        const double t = d / radius;
        if (t >= 1)
            return 0.0;
        const double fade = 1 - smooth(0.86, 1, t);
        return (0.45 * std::exp(-t * t * 18) + 0.45 * (1 - t * t) +
                0.16 * std::cos(2 * kPi * rings * t) * smooth(0.1, 0.35, t)) *
               fade;
    };
    return glass(1, 1.5, [&](V2 p) {
        const V2 big{wrapped(p.x - 128, 256), wrapped(p.y - 128, 256)};
        const V2 small{wrapped(p.x, 256), wrapped(p.y, 256)};
        const double wobble = 1 + 0.02 * noise(cellsOf(p, 8), 8, 8, 30);
        return std::max(roundel(length(big) * wobble, 126, 5),
                        0.45 * roundel(length(small), 52, 2));
    });
}

// Crackle: splinters that lean every way, with fine cracks between.
Painting crackle()
{
    return glass(0.95, 1.6, [](V2 p) {
        const V2 bend = V2{noise(cellsOf(p, 9), 9, 9, 40), noise(cellsOf(p, 9), 9, 9, 41)} * 10;
        const Strewn s = strewn(p + bend, 12, 0.95, 42);
        const V2 lean = polar(between(0.4, 1, s.i, s.j, 44), 2 * kPi * chance(s.i, s.j, 45));
        return dot(lean, s.offset) - 6 * std::exp(-(s.second - s.first) / 3);
    });
}

// Cut diamonds: pyramids with rounded tops in a lattice that stands on its corner.
Painting diamond()
{
    return glass(0.62, 2.5, [](V2 p) {
        const double a = std::abs(wrapped((p.x + p.y), 64)), b = std::abs(wrapped((p.x - p.y), 64));
        const double pyramid = 1 - std::max(a, b) / 32;
        return std::min(pyramid, 0.75);
    });
}

// Drops on a pane: large ones with small ones between.
Painting drops()
{
    const std::vector<Disc> discs = scattered(3500, 32, 3.5, 2, 50);
    return glass(0.95, 1, [&](V2 p) {
        double h = 0;
        for (std::size_t i = 0; i < discs.size(); ++i) {
            const Disc& d = discs[i];
            const V2 v = nearest(p - d.center);
            if (length(v) > d.radius * 1.2)
                continue;
            // Heavier below, and none quite round.
            const double angle = std::atan2(v.y, v.x);
            const double round = 1 + 0.06 * std::sin(2 * angle + 7 * chance(int(i), 0, 51)) +
                                 0.05 * std::sin(3 * angle + 7 * chance(int(i), 1, 51));
            const double t = length(v) / (0.92 * d.radius * round);
            if (t < 1)
                h = d.radius * (1 - t * t) * (1 + 0.35 * v.y / d.radius);
        }
        return h;
    });
}

// Flat facets, every pane of the net tilted its own way.
Painting facets()
{
    constexpr double kPane = kSide / 20.0;
    return glass(1, 1.6, [](V2 p) {
        const int column = int(p.x / kPane), row = int(p.y / kPane);
        const V2 v{wrapped(p.x - kPane / 2, kPane), wrapped(p.y - kPane / 2, kPane)};
        const V2 lean{between(-1, 1, column, row, 60), between(-1, 1, column, row, 61)};
        const double edge = kPane / 2 - std::max(std::abs(v.x), std::abs(v.y));
        return dot(lean, v) - 3 * std::exp(-edge / 1.5);
    });
}

// Fine, even grain that blurs like breath on the pane.
Painting frosted()
{
    return glass(0.38, 0.8, [](V2 p) {
        return noise(cellsOf(p, 110), 110, 110, 70) + 0.7 * noise(cellsOf(p, 62), 62, 62, 71) +
               0.5 * noise(cellsOf(p, 24), 24, 24, 72);
    });
}

// Shallow round dents, as of a hammer.
Painting hammered()
{
    return glass(1, 1.8, [](V2 p) {
        const Strewn s = strewn(p, 17, 0.6, 80);
        const double t = std::min(s.first / 19, 1.15);
        return t * t * between(0.6, 1, s.i, s.j, 82);
    });
}

// Ribs laid herringbone.
Painting herringbone()
{
    return glass(0.5, 1.6, [](V2 p) {
        const double fold = std::abs(wrapped(p.x, 128));
        const double t = wrapped(p.y + fold, 32) / 16;
        return 1 - t * t;
    });
}

// Round lenses as bees build.
Painting honeycomb()
{
    constexpr double kAcross = kSide / 10.0, kDown = kSide / 12.0;
    return glass(0.95, 1.8, [](V2 p) {
        double first = 1e9, second = 1e9;
        for (int row = int(p.y / kDown) - 1; row <= int(p.y / kDown) + 2; ++row) {
            const double shift = row & 1 ? kAcross / 2 : 0;
            const double y = (p.y - row * kDown) * 1.0392; // a little taller, so that they close up
            const double dx = wrapped(p.x - shift, kAcross);
            for (const double x : {dx, kAcross - std::abs(dx)}) {
                const double d = std::sqrt(x * x + y * y);
                if (d < first) {
                    second = first;
                    first = d;
                } else {
                    second = std::min(second, d);
                }
            }
        }
        const double t = first / 29;
        return 1 - t * t - 0.25 * std::exp(-(second - first) / 3);
    });
}

// Ice flowers: feathery needles that grow in patches, each patch its own way.
Painting ice()
{
    return glass(0.62, 1.1, [](V2 p) {
        constexpr int kPatches = 5;
        const double cell = double(kSide) / kPatches;
        double sum = 0, all = 0;
        for (int i = 0; i < kPatches; ++i)
            for (int j = 0; j < kPatches; ++j) {
                const V2 seed{(i + chance(i, j, 90)) * cell, (j + chance(i, j, 91)) * cell};
                const V2 v = nearest(p - seed);
                const double weight = std::exp(-dot(v, v) / (0.18 * cell * cell));
                if (weight < 1e-4)
                    continue;
                const V2 w = turned(v, 2 * kPi * chance(i, j, 92));
                const double bend = 9 * noise({w.x / 60 + 500, w.y / 60 + 500}, 4096, 4096, 93);
                // Needles lean off a midrib to both sides.
                const double barb = w.y + bend - 0.7 * std::abs(w.x);
                const double needles =
                    1 - std::abs(noise({barb / 9 + 999, std::abs(w.x) / 42 + 999 + 7 * i}, 4096,
                                       4096, 94));
                const double rib = std::exp(-std::abs(w.x) / 5);
                sum += weight * (needles * needles + 0.7 * rib);
                all += weight;
            }
        return sum / (all + 1e-9);
    });
}

// A grid of round lenses.
Painting lenses()
{
    return glass(0.9, 1.2, [](V2 p) {
        const V2 v{wrapped(p.x - 32, 64), wrapped(p.y - 32, 64)};
        const double t = length(v) / 30;
        return t < 1 ? 1 - t * t : 0;
    });
}

// River pebbles side by side.
Painting pebbles()
{
    return glass(0.9, 2, [](V2 p) {
        const V2 bend = V2{noise(cellsOf(p, 12), 12, 12, 100), noise(cellsOf(p, 12), 12, 12, 101)};
        const Strewn s = strewn(p + bend * 7, 11, 0.85, 102);
        const double rim = limited((s.second - s.first) / 30);
        return between(0.75, 1, s.i, s.j, 104) * std::sqrt(rim * (2 - rim)) + 0.15 * rim;
    });
}

// Rain running down: crooked trails with a bead at the foot of each, and drops that stay.
Painting rain()
{
    constexpr int kTrails = 13;
    const std::vector<Disc> discs = scattered(700, 11, 3, 3, 110);
    return glass(0.8, 1.1, [&](V2 p) {
        double h = 0;
        for (const Disc& d : discs) {
            const double t = length(nearest(p - d.center)) / d.radius;
            if (t < 1)
                h = 0.9 * d.radius * (1 - t * t);
        }
        for (int i = 0; i < kTrails; ++i) {
            const double straight = (i + 0.5 + 0.5 * (chance(i, 1, 111) - 0.5)) * kSide / kTrails;
            if (std::abs(wrapped(p.x - straight, kSide)) > 40)
                continue;
            const V2 along{p.y / kSide, i + 0.5};
            const auto crooked = [&](int waves, std::uint32_t salt) {
                return noise({along.x * waves, along.y}, waves, 64, salt);
            };
            const double x =
                wrapped(p.x - straight - 9 * crooked(7, 112) - 3 * crooked(19, 113), kSide);
            const double foot = kSide * chance(i, 0, 111);
            const double below = (p.y - foot) / kSide;
            const double above = kSide * (1 - below + std::floor(below)); // the foot
            const double length = between(170, 420, i, 2, 111);
            const double fade = 1 - smooth(0.55, 1, above / length);
            const double half = (5 + 2 * crooked(24, 114)) * (0.4 + 0.6 * fade);
            if (std::abs(x) < half)
                h = std::max(h, fade * half * (1 - x * x / (half * half)));
            const V2 bead{x, wrapped(p.y - foot + 9, kSide)};
            const double t = std::sqrt(bead.x * bead.x + bead.y * bead.y * 0.6) / 11;
            if (t < 1)
                h = std::max(h, 11 * (1 - t * t));
        }
        return h;
    });
}

// Upright half-round ribs.
Painting reeded()
{
    return glass(0.55, 1.2, [](V2 p) {
        const double t = wrapped(p.x - 16, 32) / 16;
        return 1 - t * t;
    });
}

// Rings that spread where drops fell into water.
Painting ripple()
{
    struct Fall {
        V2 place;
        double reach, length;
    };
    const Fall falls[] = {
        {{150, 165}, 250, 27}, {{392, 118}, 160, 18}, {{345, 372}, 255, 23}, {{82, 420}, 140, 15}};
    return glass(0.85, 0.8, [&](V2 p) {
        double h = 0;
        for (const Fall& f : falls) {
            const double d = length(nearest(p - f.place)), t = d / f.reach;
            if (t < 1)
                h += f.length / 27 * std::cos(2 * kPi * d / f.length) * std::pow(1 - t * t, 2) *
                     (0.35 + 0.65 * smooth(0, 0.5, t));
        }
        return h;
    });
}

// Overlapping round tiles.
Painting scales()
{
    return glass(0.85, 1.5, [](V2 p) {
        // The nearest row above whose scale still covers the place lies on top.
        constexpr double kWide = 64, kRow = 32, kRadius = 36;
        for (int row = int(p.y / kRow) + 1; row >= int(p.y / kRow) - 3; --row) {
            const double x = wrapped(p.x - (row & 1 ? kWide / 2 : 0), kWide);
            const double y = p.y - row * kRow;
            const double d = std::sqrt(x * x + y * y);
            if (y >= -kRadius && d < kRadius) {
                const double t = d / kRadius;
                return 1 - 0.75 * t * t * t + 0.3 * y / kRadius;
            }
        }
        return 0.0;
    });
}

// Marbled swirls.
Painting swirl()
{
    return glass(0.85, 3, [](V2 p) {
        const V2 q = cellsOf(p, 3);
        const V2 bend{noise(q, 3, 3, 120), noise(q, 3, 3, 121)};
        const double a = fractal(q + bend * 1.1, 3, 3, 2, 122);
        return std::sin(2 * kPi * (2.2 * a + 0.4 * bend.x));
    });
}

// Wind on water: long crests that part and meet.
Painting waves()
{
    return glass(0.9, 0, [](V2 p) {
        const V2 f = cellsOf(p, 1);
        const double bend =
            0.35 * noise(cellsOf(p, 5, 4), 5, 4, 130) + 0.12 * noise(cellsOf(p, 11, 9), 11, 9, 131);
        const double swell = wave(9 * f.y + f.x + bend * 1.6);
        const double cross = wave(13 * f.y - 3 * f.x + 0.3 - bend);
        // Sharper at the crests than in the troughs.
        return swell + 0.4 * cross - 0.2 * (1 - swell * swell);
    });
}

// Broad bands woven over and under.
Painting weave()
{
    return glass(0.7, 1.8, [](V2 p) {
        constexpr double kBand = kSide / 12.0;
        const int i = int(std::floor(p.x / kBand)), j = int(std::floor(p.y / kBand));
        const double x = wrapped(p.x - kBand / 2, kBand) / (kBand / 2);
        const double y = wrapped(p.y - kBand / 2, kBand) / (kBand / 2);
        const bool upright = (i + j) & 1;
        const double along = upright ? y : x, across = upright ? x : y;
        return (0.35 + 0.65 * std::cos(kPi / 2 * along)) * std::sqrt(1 - 0.95 * across * across);
    });
}

} // namespace

std::vector<Work> glassTextures()
{
    return {{"Antique", antique},
            {"Bark", bark},
            {"Bricks", bricks},
            {"Bubbles", bubbles},
            {"Crackle", crackle},
            {"Diamond", diamond},
            {"Drops", drops},
            {"Facets", facets},
            {"Frosted", frosted},
            {"Hammered", hammered},
            {"Herringbone", herringbone},
            {"Honeycomb", honeycomb},
            {"Ice", ice},
            {"Lenses", lenses},
            {"Pebbles", pebbles},
            {"Rain", rain},
            {"Reeded", reeded},
            {"Ripple", ripple},
            {"Roundels", roundels},
            {"Scales", scales},
            {"Swirl", swirl},
            {"Waves", waves},
            {"Weave", weave}};
}

} // namespace pictures
