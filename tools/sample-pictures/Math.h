// Small vectors and noise for the sample pictures. Every random number is a hash of what it is for,
// so the pictures are the same on every run.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace samples {

struct V3 {
    float x = 0, y = 0, z = 0;

    friend V3 operator+(V3 a, V3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend V3 operator-(V3 a, V3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend V3 operator*(V3 a, float k) { return {a.x * k, a.y * k, a.z * k}; }
    friend V3 operator*(V3 a, V3 b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
    V3 operator-() const { return {-x, -y, -z}; }
};

inline float dot(V3 a, V3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline V3 cross(V3 a, V3 b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(V3 v)
{
    return std::sqrt(dot(v, v));
}
inline V3 unit(V3 v)
{
    return v * (1 / length(v));
}
inline V3 reflected(V3 d, V3 n)
{
    return d - n * (2 * dot(d, n));
}
inline float mix(float a, float b, float t)
{
    return a + (b - a) * t;
}
inline V3 mix(V3 a, V3 b, float t)
{
    return a + (b - a) * t;
}
inline float smooth(float low, float high, float v)
{
    const float t = std::clamp((v - low) / (high - low), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

inline std::uint32_t hash(std::uint32_t a, std::uint32_t b = 0, std::uint32_t c = 0)
{
    std::uint32_t h = a * 0x9e3779b1u + b * 0x85ebca77u + c * 0xc2b2ae3du;
    h = (h ^ (h >> 16)) * 0x7feb352du;
    h = (h ^ (h >> 15)) * 0x846ca68bu;
    return h ^ (h >> 16);
}

// 0…1.
inline float chance(std::uint32_t a, std::uint32_t b = 0, std::uint32_t c = 0)
{
    return float(hash(a, b, c) >> 8) * (1.0f / 16777216);
}

// Gradient noise, about -1…1.
inline float noise(float x, float y)
{
    const float fx = std::floor(x), fy = std::floor(y);
    const auto i = std::uint32_t(std::int32_t(fx)), j = std::uint32_t(std::int32_t(fy));
    const float u = x - fx, v = y - fy;
    const auto corner = [&](std::uint32_t di, std::uint32_t dj) {
        // A gradient's components, each -1…1.
        const std::uint32_t h = hash(i + di, j + dj, 77);
        const float gx = float(h & 0xffff) / 32768 - 1, gy = float(h >> 16) / 32768 - 1;
        return gx * (u - float(di)) + gy * (v - float(dj));
    };
    const float su = u * u * u * (u * (u * 6 - 15) + 10), sv = v * v * v * (v * (v * 6 - 15) + 10);
    return 1.5f * mix(mix(corner(0, 0), corner(1, 0), su), mix(corner(0, 1), corner(1, 1), su), sv);
}

// Octaves of it, each half as strong as the one before and turned a little.
inline float fractal(float x, float y, int octaves)
{
    float sum = 0, weight = 0.5f;
    for (int i = 0; i < octaves; ++i, weight *= 0.5f) {
        sum += weight * noise(x, y);
        const float turned = 1.62f * x - 1.21f * y + 3.7f;
        y = 1.21f * x + 1.62f * y + 8.3f;
        x = turned;
    }
    return sum;
}

} // namespace samples
