// What the painters of the shipped pictures share: small vectors, noise, and pixels.
//
// Double precision and a stateless hash throughout: the pictures are the same bytes on every run
// and on every machine.
#pragma once

#include "platform/builtin/Hash.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

namespace pictures {

constexpr double kPi = std::numbers::pi;

struct V2 {
    double x = 0, y = 0;

    friend V2 operator+(V2 a, V2 b) { return {a.x + b.x, a.y + b.y}; }
    friend V2 operator-(V2 a, V2 b) { return {a.x - b.x, a.y - b.y}; }
    friend V2 operator*(V2 a, double k) { return {a.x * k, a.y * k}; }
};
inline double dot(V2 a, V2 b)
{
    return a.x * b.x + a.y * b.y;
}
inline double length(V2 v)
{
    return std::sqrt(dot(v, v));
}
// Counter-clockwise where y points up, in radians.
inline V2 turned(V2 v, double angle)
{
    const double c = std::cos(angle), s = std::sin(angle);
    return {c * v.x - s * v.y, s * v.x + c * v.y};
}
inline V2 polar(double radius, double angle)
{
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

// A direction or a colour.
struct V3 {
    double x = 0, y = 0, z = 0;

    friend V3 operator+(V3 a, V3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend V3 operator-(V3 a, V3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend V3 operator*(V3 a, V3 b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
    friend V3 operator*(V3 a, double k) { return {a.x * k, a.y * k, a.z * k}; }
};
inline double dot(V3 a, V3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline V3 unit(V3 v)
{
    return v * (1 / std::sqrt(dot(v, v)));
}

inline double mix(double a, double b, double t)
{
    return a + (b - a) * t;
}
inline V3 mix(V3 a, V3 b, double t)
{
    return a + (b - a) * t;
}
inline double limited(double v)
{
    return std::clamp(v, 0.0, 1.0);
}
// 0 up to low, 1 from high on, level at both.
inline double smooth(double low, double high, double v)
{
    const double t = limited((v - low) / (high - low));
    return t * t * (3 - 2 * t);
}
// v modulo the period, between minus and plus half of it.
inline double wrapped(double v, double period)
{
    return v - period * std::floor(v / period + 0.5);
}

// 0…1, a number of its own for every place and purpose.
inline double chance(int i, int j, std::uint32_t salt)
{
    return builtin::h01(std::uint32_t(i), std::uint32_t(j), salt);
}
inline double between(double low, double high, int i, int j, std::uint32_t salt)
{
    return mix(low, high, chance(i, j, salt));
}

// Gradient noise, about -1…1, one wave to a unit or so; repeats after whole numbers of units.
double noise(V2 at, int periodX, int periodY, std::uint32_t salt);
// Octaves of it, each twice as fine and half as strong as the one before.
double fractal(V2 at, int periodX, int periodY, int octaves, std::uint32_t salt);

// Unpremultiplied components 0…1, the top row first.
struct Pixel {
    double r = 0, g = 0, b = 0, a = 1;
};
struct Painting {
    Painting(int width, int height)
        : width(width), height(height), pixels(std::size_t(width) * height)
    {
    }
    Pixel& at(int x, int y) { return pixels[std::size_t(y) * width + x]; }
    const Pixel& at(int x, int y) const { return pixels[std::size_t(y) * width + x]; }

    int width, height;
    bool deep = false; // worth 16 bits a component
    std::vector<Pixel> pixels;
};

// A picture of the library: its name there and who paints it.
struct Work {
    const char* name;
    Painting (*paint)();
};

std::vector<Work> glassTextures();
std::vector<Work> shadingMaterials();
std::vector<Work> brushTips();
// A ball of paper, for the shading of a turned page.
Painting whiteBall();

} // namespace pictures
