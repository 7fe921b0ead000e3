// The test pictures. Made of additions, multiplications, divisions and square roots alone, so that
// they are the same bytes everywhere: goldens hang on them.
#include "tests/support/Support.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace support {

namespace {

struct Tone {
    double r, g, b;

    friend Tone operator*(Tone t, double k) { return {t.r * k, t.g * k, t.b * k}; }
    friend Tone operator+(Tone s, Tone t) { return {s.r + t.r, s.g + t.g, s.b + t.b}; }
};

Tone mix(Tone s, Tone t, double k)
{
    return s * (1 - k) + t * k;
}

double smooth(double low, double high, double v)
{
    const double t = std::clamp((v - low) / (high - low), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// A number in 0…1 that belongs to a cell of the lattice.
double cellNoise(int x, int y)
{
    std::uint32_t h = std::uint32_t(x) * 0x9e3779b1u ^ std::uint32_t(y) * 0x85ebca77u;
    h = (h ^ (h >> 15)) * 0x2c1b3c6du;
    h = (h ^ (h >> 12)) * 0x297a2d39u;
    return double((h ^ (h >> 15)) >> 8) / 16777216.0;
}

// The same, smooth in between.
double noise(double x, double y)
{
    const int i = int(std::floor(x)), j = int(std::floor(y));
    const double u = smooth(0, 1, x - i), v = smooth(0, 1, y - j);
    const double below = cellNoise(i, j) * (1 - u) + cellNoise(i + 1, j) * u;
    const double above = cellNoise(i, j + 1) * (1 - u) + cellNoise(i + 1, j + 1) * u;
    return below * (1 - v) + above * v;
}

double clouds(double x, double y)
{
    return 0.5 * noise(x, y) + 0.27 * noise(2.1 * x + 7, 2.1 * y) +
           0.15 * noise(4.3 * x, 4.3 * y + 3) + 0.08 * noise(8.7 * x, 8.7 * y);
}

// Colour of the photo at (x, y), 96 by 64 from the top left.
Tone photoAt(double x, double y)
{
    // Sky, with a glow where the sun is, and clouds.
    Tone color = mix({0.24, 0.47, 0.82}, {0.86, 0.91, 0.95}, smooth(0, 36, y));
    const double sun = std::sqrt((x - 80) * (x - 80) + (y - 9) * (y - 9));
    color = mix(color, {1, 0.93, 0.72}, 0.8 * smooth(22, 3, sun));
    color = mix(color, {0.98, 0.98, 1}, 0.9 * smooth(0.5, 0.68, clouds(x / 19, y / 8 + 4)));

    // Two lines of hills, then a meadow with tufts that shrink towards the horizon.
    if (y > 30 - 6 * noise(x / 23 + 3, 0.5))
        color = mix({0.42, 0.52, 0.66}, {0.55, 0.63, 0.7}, smooth(22, 34, y));
    if (y > 34 - 5 * noise(x / 14 + 9, 7.5))
        color = Tone{0.24, 0.4, 0.26} * (0.8 + 0.4 * noise(x / 2, y));
    if (y > 38) {
        const double depth = (y - 34) / 30;
        const double tufts = noise(x / (0.6 + 1.6 * depth), y / (0.5 + 0.9 * depth));
        color = mix({0.36, 0.56, 0.2}, {0.2, 0.38, 0.1}, depth) * (0.75 + 0.5 * tufts);
        // A path that comes towards us.
        if (std::abs(x - 40 - 10 * depth * depth) < 1 + 9 * depth)
            color = Tone{0.74, 0.66, 0.5} * (0.85 + 0.2 * noise(x / 1.3, y));
    }

    // A house: front, shaded side, roof, window and door.
    if (x > 12 && x < 30 && y > 30 && y < 47)
        color = {0.93, 0.87, 0.74};
    if (x >= 30 && x < 37 && y > 30 && y < 47 - (x - 30) * 0.4)
        color = {0.55, 0.48, 0.42};
    if (y <= 30 && y > 22 && x > 10 + (30 - y) * 0.4 && x < 39 - (30 - y) * 0.9)
        color = Tone{0.66, 0.25, 0.18} * (x < 32 ? 1.0 : 0.65);
    if (x > 15 && x < 21 && y > 34 && y < 40)
        color =
            std::abs(x - 18) < 0.4 || std::abs(y - 37) < 0.4 ? Tone{1, 1, 1} : Tone{0.2, 0.3, 0.45};
    if (x > 23 && x < 27 && y > 37 && y < 47)
        color = {0.3, 0.18, 0.1};

    // A tree: trunk, and leaves lit from the right.
    if (x > 58.6 && x < 61 && y > 34 && y < 50)
        color = Tone{0.34, 0.24, 0.15} * (x < 59.6 ? 0.7 : 1.1);
    const double crown = std::sqrt((x - 60) * (x - 60) + (y - 26) * (y - 26));
    if (crown < 9.5 + 4 * noise(x / 2.5, y / 2.5)) {
        const double light = 0.5 + (x - 60) / 30 - (y - 26) / 30;
        color = mix({0.06, 0.2, 0.05}, {0.45, 0.62, 0.16},
                    std::clamp(light * (0.4 + 1.2 * noise(x, y)), 0.0, 1.0));
    }

    // A ball and its shadow.
    const double shadow = (x - 75) * (x - 75) / 90 + (y - 58.5) * (y - 58.5) / 7;
    color = color * (1 - 0.6 * smooth(1.2, 0.5, shadow));
    const double bx = (x - 78) / 8, by = (y - 51) / 8, squared = bx * bx + by * by;
    if (squared < 1) {
        const double bz = std::sqrt(1 - squared);
        const double light = std::max(0.0, 0.45 * bx - 0.6 * by + 0.66 * bz);
        color = Tone{0.86, 0.12, 0.1} * (0.22 + 0.85 * light);
        color = mix(color, {1, 1, 1}, smooth(0.965, 0.995, light));
    }
    return color;
}

// Averages 4 × 4 samples of each pixel.
BitmapRef photo(int width, int height)
{
    return bitmapFrom(width, height, [](int x, int y) {
        Tone sum{0, 0, 0};
        for (int j = 0; j < 4; ++j)
            for (int i = 0; i < 4; ++i)
                sum = sum + photoAt(x + (i + 0.5) / 4, y + (j + 0.5) / 4);
        return Rgba{float(sum.r / 16), float(sum.g / 16), float(sum.b / 16), 1};
    });
}

Rgba gray(float v)
{
    return {v, v, v, 1};
}

Rgba edgesAt(int x, int y)
{
    static constexpr Rgba kBars[] = {{1, 1, 1, 1}, {1, 1, 0, 1}, {0, 1, 1, 1}, {0, 1, 0, 1},
                                     {1, 0, 1, 1}, {1, 0, 0, 1}, {0, 0, 1, 1}, {0, 0, 0, 1}};
    if (y < 16 && x < 32) // checks of 8, 4, 2 and 1 pixels
        return gray(float((x / (8 >> (x / 8)) + y / (8 >> (x / 8))) % 2));
    // One-pixel lines, upright and lying, that grow apart: 0, 2, 5, 9, 14.
    const auto onLine = [](int t) { return t == 0 || t == 2 || t == 5 || t == 9 || t == 14; };
    if (y < 16)
        return gray(float(onLine(x < 48 ? x - 32 : y)));
    if (y < 32 && x < 32) // single pixels on black and on white
        return gray(float((x % 8 == 4 && y % 8 == 4) != (x >= 16)));
    if (y < 32) // a slanted edge between colours
        return 3 * (x - 48) + (y - 24) > 0 ? Rgba{0.9f, 0.3f, 0.1f, 1} : Rgba{0.1f, 0.3f, 0.6f, 1};
    if (y < 40)
        return kBars[x / 8];
    return gray(float(std::clamp(x - 8, 0, 47)) / 47); // a ramp
}

Rgba alphaAt(int x, int y)
{
    const auto covered = [](float r, float g, float b, float a) {
        return Rgba{r * a, g * a, b * a, a};
    };
    if (x < 48) {
        const double d =
            std::sqrt((x + 0.5 - 24) * (x + 0.5 - 24) + (y + 0.5 - 24) * (y + 0.5 - 24));
        const bool frame = std::max(std::abs(x * 2 - 47), std::abs(y * 2 - 47)) / 2 == 22;
        return frame ? Rgba{0.1f, 0.4f, 0.8f, 1}
                     : covered(1, float(y) / 48, 0.2f, float(smooth(20, 8, d)));
    }
    return y % 8 < 4 ? covered(0.2f, 0.7f, 0.3f, float(x - 47) / 17) : Rgba{0, 0, 0, 0};
}

} // namespace

BitmapRef picture(std::string_view name)
{
    BitmapRef made;
    if (name == "photo-96x64")
        made = photo(96, 64);
    else if (name == "edges-64x48")
        made = bitmapFrom(64, 48, edgesAt);
    else if (name == "alpha-64x48")
        made = bitmapFrom(64, 48, alphaAt);
    else
        throw std::runtime_error("no test picture is named " + std::string(name));
    return converted(*made, PixelFormat::Rgba8);
}

} // namespace support
