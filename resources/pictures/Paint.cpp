#include "resources/pictures/Paint.h"

namespace pictures {

double noise(V2 at, int periodX, int periodY, std::uint32_t salt)
{
    const double fx = std::floor(at.x), fy = std::floor(at.y);
    const double u = at.x - fx, v = at.y - fy;
    const auto column = [&](int d) { return ((int(fx) + d) % periodX + periodX) % periodX; };
    const auto row = [&](int d) { return ((int(fy) + d) % periodY + periodY) % periodY; };
    static const std::vector<V2> directions = [] {
        std::vector<V2> out;
        for (int i = 0; i < 256; ++i)
            out.push_back(polar(1, 2 * kPi * i / 256));
        return out;
    }();
    const auto corner = [&](int dx, int dy) {
        const double drawn = chance(column(dx), row(dy), salt);
        return dot(directions[std::size_t(drawn * 256)], {u - dx, v - dy});
    };
    const auto ease = [](double t) { return t * t * t * (t * (t * 6 - 15) + 10); };
    return 1.4 * mix(mix(corner(0, 0), corner(1, 0), ease(u)),
                     mix(corner(0, 1), corner(1, 1), ease(u)), ease(v));
}

double fractal(V2 at, int periodX, int periodY, int octaves, std::uint32_t salt)
{
    double sum = 0, weight = 1, all = 0;
    for (int i = 0; i < octaves; ++i, weight *= 0.5) {
        sum += weight * noise(at, periodX << i, periodY << i, salt + std::uint32_t(i));
        all += weight;
        at = at * 2;
    }
    return sum / all;
}

} // namespace pictures
