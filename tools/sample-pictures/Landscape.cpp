#include "tools/sample-pictures/Landscape.h"

#include "tools/sample-pictures/Lettering.h"

#include <array>
#include <optional>
#include <thread>

namespace samples {

namespace {

constexpr V3 kSunColor{2.6f, 2.3f, 1.85f};
constexpr V3 kSkyLight{0.34f, 0.45f, 0.66f};

// The terrain grid.
constexpr float kCell = 0.4f;
constexpr float kGridLeft = -230, kGridNear = -2;
constexpr int kGridWide = 1150, kGridDeep = 1000;
// Squares of cells whose highest point is known.
constexpr int kTile = 24;
constexpr int kTilesWide = (kGridWide + kTile - 1) / kTile,
              kTilesDeep = (kGridDeep + kTile - 1) / kTile;

constexpr float kWater = 0;

// Distance from the viewer at which the near shore and the far shore run.
float nearShore(float x)
{
    return 17 + 2.2f * noise(x * 0.16f, 3.3f) + 5 * smooth(-1, -9, x) - 2.5f * smooth(1, 9, x);
}
float farShore(float x)
{
    return 82 + 16 * noise(x * 0.021f + 4, 9.1f) - 0.12f * x;
}

float terrainHeight(float x, float z)
{
    const float near = nearShore(x) - z;
    if (near > 0)
        return 0.75f * (1 - std::exp(-near / 3.0f)) + 0.12f * fractal(x * 0.35f, z * 0.35f, 3);
    const float far = z - farShore(x);
    if (far < 0)
        return 0.22f * std::max(near, far);
    // Woods on rolling hills, and behind them the mountains.
    const float woods = smooth(2, 14, far);
    const float hills = 5.5f * smooth(0, 70, far) * (1 + 1.3f * noise(x * 0.021f + 1, z * 0.017f));
    const float trees =
        woods * (1.3f + 1.5f * noise(x * 0.9f, z * 0.9f) + 0.9f * noise(x * 2, z * 2));
    float ridges = 0, weight = 0.5f, px = x * 0.0115f + 2.6f, pz = z * 0.0115f;
    for (int i = 0; i < 8; ++i, weight *= 0.5f) {
        const float r = 1 - std::abs(noise(px, pz));
        ridges += weight * r * r;
        const float turned = 1.6f * px - 1.2f * pz + 1.7f;
        pz = 1.2f * px + 1.6f * pz;
        px = turned;
    }
    const float rise = smooth(45, 190, far);
    const float mountains = rise * (74 * std::max(0.0f, ridges - 0.26f) - 3);
    return std::max(0.02f * far, 0.0f) + std::max(hills, 0.0f) +
           trees * (1 - smooth(16, 40, mountains)) + std::max(mountains, 0.0f);
}

// Fills rows of the terrain grid on all cores.
template <class Fn>
void forRows(int rows, Fn fn)
{
    const unsigned count = std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::jthread> workers;
    for (unsigned w = 0; w < count; ++w)
        workers.emplace_back([=] {
            for (int row = int(w); row < rows; row += int(count))
                fn(row);
        });
}

// --- The things on the meadow
// -----------------------------------------------------------------------

enum class Material { BeachBall, Chrome, RedBall, Wall, Roof, Chimney, Sign, Wood, Trunk };

struct Surface {
    float t = kFar;
    V3 normal;
    Material material = Material::Wall;
    float u = 0, v = 0; // position on the surface, metres
};

struct Ball {
    V3 center;
    float radius;
    Material material;
};

std::optional<float> meetBall(const Ray& ray, V3 center, float radius)
{
    const V3 d = ray.from - center;
    const float b = dot(d, ray.along), c = dot(d, d) - radius * radius, root = b * b - c;
    if (root < 0)
        return {};
    const float t = -b - std::sqrt(root);
    return t > 1e-3f ? std::optional(t) : std::nullopt;
}

// A frame that stands on the ground, turned about the vertical.
struct Frame {
    V3 origin;
    float c, s;

    V3 into(V3 v) const { return {c * v.x - s * v.z, v.y, s * v.x + c * v.z}; }
    V3 outOf(V3 v) const { return {c * v.x + s * v.z, v.y, -s * v.x + c * v.z}; }
    Ray into(const Ray& r) const { return {into(r.from - origin), into(r.along)}; }
};

Frame frameAt(V3 origin, float degrees)
{
    const float a = degrees * 3.14159265f / 180;
    return {origin, std::cos(a), std::sin(a)};
}

// An upright box in the ray's own frame.
void meetBox(const Ray& ray, V3 low, V3 high, Material material, Surface& nearest)
{
    float enter = 1e-3f, leave = nearest.t;
    V3 normal;
    const float from[] = {ray.from.x, ray.from.y, ray.from.z};
    const float along[] = {ray.along.x, ray.along.y, ray.along.z};
    const float lows[] = {low.x, low.y, low.z}, highs[] = {high.x, high.y, high.z};
    for (int axis = 0; axis < 3; ++axis) {
        const float k = 1 / along[axis];
        float t1 = (lows[axis] - from[axis]) * k, t2 = (highs[axis] - from[axis]) * k;
        const float side = t1 < t2 ? -1.0f : 1.0f;
        if (t1 > t2)
            std::swap(t1, t2);
        if (t1 > enter) {
            enter = t1;
            normal = {axis == 0 ? side : 0, axis == 1 ? side : 0, axis == 2 ? side : 0};
        }
        leave = std::min(leave, t2);
    }
    if (enter >= leave || dot(normal, normal) == 0)
        return;
    const V3 p = ray.at(enter);
    nearest = {enter, normal, material, normal.x != 0 ? p.z : p.x, normal.y != 0 ? p.z : p.y};
}

// A flat, convex shape in the plane through `corner`, spanned by a and b: inside(u, v) in metres.
template <class Inside>
void meetPlane(const Ray& ray, V3 corner, V3 a, V3 b, Material material, Surface& nearest,
               Inside inside)
{
    V3 normal = unit(cross(a, b));
    const float down = dot(ray.along, normal);
    if (std::abs(down) < 1e-6f)
        return;
    const float t = dot(corner - ray.from, normal) / down;
    if (t < 1e-3f || t >= nearest.t)
        return;
    const V3 p = ray.at(t) - corner;
    const float u = dot(p, unit(a)), v = dot(p, unit(b));
    if (!inside(u, v))
        return;
    nearest = {t, down > 0 ? -normal : normal, material, u, v};
}

constexpr float kHouseWide = 3.4f, kHouseDeep = 2.7f, kWallHigh = 1.75f, kRidge = 2.95f;
constexpr float kSignWide = 1.5f, kSignHigh = 0.98f;

struct Things {
    Frame house, sign;
    std::array<Ball, 3> balls;
    V3 trunk;
};
Things gThings; // placed by the landscape, read only afterwards

Surface meetHouse(const Ray& world)
{
    const Ray ray = gThings.house.into(world);
    Surface nearest;
    const float w = kHouseWide / 2, d = kHouseDeep;
    meetBox(ray, {-w, -0.5f, 0}, {w, kWallHigh, d}, Material::Wall, nearest);
    meetBox(ray, {0.7f, 2, 0.9f}, {1.1f, 3.25f, 1.3f}, Material::Chimney, nearest);
    // Gable ends, then the two slopes with their overhang.
    for (const float side : {-w, w})
        meetPlane(ray, {side, kWallHigh, 0}, {0, 0, 1}, {0, 1, 0}, Material::Wall, nearest,
                  [&](float u, float v) {
                      return v >= 0 && v < (1 - std::abs(u / d * 2 - 1)) * (kRidge - kWallHigh);
                  });
    const float over = 0.28f, rise = (kRidge - kWallHigh) / (d / 2), slope = std::hypot(1.0f, rise);
    for (const float side : {1.0f, -1.0f}) {
        const float z = side > 0 ? -over : d + over;
        meetPlane(ray, {-w - over, kWallHigh - over * rise + 0.06f, z}, {1, 0, 0}, {0, rise, side},
                  Material::Roof, nearest, [&](float u, float v) {
                      return u >= 0 && u <= 2 * (w + over) && v >= 0 && v <= slope * (d / 2 + over);
                  });
    }
    if (nearest.t < kFar)
        nearest.normal = gThings.house.outOf(nearest.normal);
    return nearest;
}

Surface meetSign(const Ray& world)
{
    const Ray ray = gThings.sign.into(world);
    Surface nearest;
    const float w = kSignWide / 2;
    meetBox(ray, {-w, 0.42f, 0}, {w, 0.42f + kSignHigh, 0.04f}, Material::Sign, nearest);
    for (const float x : {-0.8f * w, 0.8f * w})
        meetBox(ray, {x - 0.035f, -0.3f, 0.04f}, {x + 0.035f, 1.47f, 0.1f}, Material::Wood,
                nearest);
    if (nearest.t < kFar)
        nearest.normal = gThings.sign.outOf(nearest.normal);
    return nearest;
}

// The trunk is a cone that ends inside the crown.
Surface meetTrunk(const Ray& ray)
{
    Surface nearest;
    for (int i = 0; i < 14; ++i) {
        const float t = float(i) / 13;
        const V3 center = gThings.trunk + V3{0.16f * t * t, 2.9f * t, 0.1f * t};
        const float radius = mix(0.16f, 0.07f, t) + 0.12f * std::exp(-9 * t);
        // A short upright cylinder of that radius.
        const float dx = ray.from.x - center.x, dz = ray.from.z - center.z;
        const float a = ray.along.x * ray.along.x + ray.along.z * ray.along.z;
        const float b = dx * ray.along.x + dz * ray.along.z,
                    c = dx * dx + dz * dz - radius * radius;
        const float root = b * b - a * c;
        if (root < 0)
            continue;
        const float hit = (-b - std::sqrt(root)) / a;
        if (hit < 1e-3f || hit >= nearest.t)
            continue;
        const V3 p = ray.at(hit);
        if (std::abs(p.y - center.y) > 0.125f)
            continue;
        const V3 n = unit({p.x - center.x, 0, p.z - center.z});
        nearest = {hit, n, Material::Trunk, std::atan2(n.x, n.z), p.y};
    }
    return nearest;
}

Surface meetThings(const Ray& ray)
{
    Surface nearest;
    const auto keep = [&](const Surface& s) {
        if (s.t < nearest.t)
            nearest = s;
    };
    for (const Ball& ball : gThings.balls)
        if (const auto t = meetBall(ray, ball.center, ball.radius))
            keep({*t, unit(ray.at(*t) - ball.center), ball.material, 0, 0});
    if (meetBall(ray, gThings.house.origin + V3{0, 1.2f, 0}, 4.5f) ||
        length(ray.from - gThings.house.origin) < 4.6f)
        keep(meetHouse(ray));
    if (meetBall(ray, gThings.sign.origin + V3{0, 0.8f, 0}, 1.4f) ||
        length(ray.from - gThings.sign.origin) < 1.8f)
        keep(meetSign(ray));
    keep(meetTrunk(ray));
    return nearest;
}

// --- Their colours
// ----------------------------------------------------------------------------------

V3 wallColor(float u, float v, V3 localNormal)
{
    const bool front = std::abs(localNormal.z) > 0.5f;
    const float grain = 1 + 0.07f * fractal(u * 5, v * 5, 4);
    V3 color = V3{0.80f, 0.74f, 0.62f} * grain;
    if (v < 0.28f)
        color = V3{0.32f, 0.30f, 0.28f} * (1 + 0.5f * noise(u * 6, v * 9)); // plinth
    // Timber: posts, a beam under the roof.
    if (v > kWallHigh - 0.12f && v < kWallHigh)
        color = {0.16f, 0.09f, 0.05f};
    const auto window = [&](float left, float bottom, float wide, float high) {
        const float x = u - left, y = v - bottom;
        if (x < -0.07f || y < -0.07f || x > wide + 0.07f || y > high + 0.07f)
            return;
        const bool glass = x > 0 && y > 0 && x < wide && y < high &&
                           std::abs(x - wide / 2) > 0.02f && std::abs(y - high / 2) > 0.02f;
        color = glass ? mix({0.03f, 0.05f, 0.08f}, {0.30f, 0.42f, 0.55f}, y / high)
                      : V3{0.85f, 0.85f, 0.82f};
    };
    if (front) {
        window(-1.3f, 0.75f, 0.55f, 0.62f);
        window(0.85f, 0.75f, 0.55f, 0.62f);
        if (std::abs(u - 0.15f) < 0.37f && v < 1.42f)
            color = {0.55f, 0.52f, 0.45f};
        if (std::abs(u - 0.15f) < 0.30f && v < 1.35f) // a green door of planks
            color = std::fmod(u + 9, 0.15f) < 0.012f ? V3{0.02f, 0.06f, 0.04f}
                                                     : V3{0.05f, 0.20f, 0.13f};
    } else {
        window(1.05f, 0.75f, 0.6f, 0.62f);
        window(1.15f, 2.0f, 0.4f, 0.42f);
    }
    return color;
}

V3 roofColor(float u, float v)
{
    const float row = std::floor(v / 0.17f), across = v / 0.17f - row;
    const float column = std::floor(u / 0.2f + 0.5f * std::fmod(row, 2.0f));
    const float within = u / 0.2f + 0.5f * std::fmod(row, 2.0f) - column;
    const float own = chance(std::uint32_t(row + 50), std::uint32_t(column + 50), 5);
    V3 color = mix({0.34f, 0.09f, 0.05f}, {0.52f, 0.17f, 0.09f}, own);
    color = color * (0.55f + 0.55f * smooth(0, 0.35f, across));
    return color * (0.75f + 0.25f * smooth(0, 0.12f, std::min(within, 1 - within)));
}

// The sign: a title, colour bars, a grey ramp and wedge, checks and a star of spokes.
V3 signColor(float u, float v)
{
    const float x = (u + kSignWide / 2) / kSignWide * 30; // 30 by 19.6, y up from the lower left
    const float y = (v - 0.42f) / kSignWide * 30;
    if (x < 0.4f || y < 0.4f || x > 29.6f || y > 19.2f)
        return {0.02f, 0.05f, 0.09f};
    const V3 paper{0.82f, 0.81f, 0.77f}, ink{0.02f, 0.05f, 0.09f};
    const auto text = [&](const char* words, float middle, float bottom, float high) {
        const float k = 6 / high;
        return distanceToText(words, (x - middle) * k + widthOfText(words) / 2, (y - bottom) * k);
    };
    if (text("LAKE VIEW", 15, 15.4f, 2.5f) < 0.62f || text("768 x 512", 15, 13.2f, 1.2f) < 0.55f)
        return ink;
    static constexpr V3 kBars[] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0},
                                   {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    if (x > 1.5f && x < 17.5f && y > 7.8f && y < 12.2f)
        return kBars[std::min(7, int((x - 1.5f) / 2))] * 0.85f;
    if (x > 1.5f && x < 17.5f && y > 4.8f && y < 7.2f) {
        const float g = (x - 1.5f) / 16;
        return V3{0.85f, 0.85f, 0.85f} * (g * g);
    }
    if (x > 1.5f && x < 17.5f && y > 1.4f && y < 4.2f) { // checks that halve from left to right
        const float side = 1.4f / float(1 << std::min(3, int((x - 1.5f) / 4)));
        return (int((x - 1.5f) / side) + int((y - 1.4f) / side)) % 2 ? paper : ink;
    }
    const float dx = x - 23.6f, dy = y - 6.9f, r = std::hypot(dx, dy);
    if (r < 5.3f)
        return r < 0.35f || std::sin(std::atan2(dy, dx) * 18) > 0 ? ink : paper;
    return paper;
}

V3 beachBallColor(V3 n)
{
    // Tilted, so that a cap shows.
    const V3 axis = unit({0.35f, 0.75f, -0.55f}), side = unit(cross(axis, {0, 0, 1}));
    const float up = dot(n, axis);
    if (up > 0.93f || up < -0.93f)
        return {0.85f, 0.85f, 0.82f};
    const float turn = std::atan2(dot(n, side), dot(n, cross(axis, side))) / 6.2831853f + 0.5f;
    static constexpr V3 kPanels[] = {{0.80f, 0.06f, 0.05f}, {0.85f, 0.85f, 0.82f},
                                     {0.04f, 0.18f, 0.62f}, {0.85f, 0.85f, 0.82f},
                                     {0.88f, 0.58f, 0.03f}, {0.85f, 0.85f, 0.82f}};
    return kPanels[std::min(5, int(turn * 6))];
}

V3 trunkColor(const Surface& s)
{
    const float bark = fractal(s.u * 3 + 2 * noise(s.v * 3, 1), s.v * 2.2f, 4);
    return V3{0.17f, 0.11f, 0.07f} * (1 + 1.1f * bark);
}

V3 colorOf(const Surface& s)
{
    switch (s.material) {
    case Material::BeachBall:
        return beachBallColor(s.normal);
    case Material::Chrome:
        return {0.9f, 0.9f, 0.92f};
    case Material::RedBall:
        return {0.62f, 0.03f, 0.03f};
    case Material::Wall:
        return wallColor(s.u, s.v, gThings.house.into(s.normal));
    case Material::Roof:
        return roofColor(s.u, s.v);
    case Material::Chimney: {
        const float row = std::floor(s.v / 0.09f);
        const float x = s.u / 0.2f + 0.5f * std::fmod(row, 2.0f);
        const bool joint = s.v / 0.09f - row < 0.14f || x - std::floor(x) < 0.07f;
        return joint ? V3{0.4f, 0.38f, 0.35f} : V3{0.34f, 0.13f, 0.09f};
    }
    case Material::Sign:
        return std::abs(gThings.sign.into(s.normal).z) > 0.5f ? signColor(s.u, s.v)
                                                              : V3{0.2f, 0.13f, 0.08f};
    case Material::Wood:
        return V3{0.22f, 0.14f, 0.08f} * (1 + 0.4f * noise(s.u * 60, s.v * 4));
    case Material::Trunk:
        return trunkColor(s);
    }
    return {};
}

} // namespace

V3 Landscape::towardsSun()
{
    static const V3 direction = unit({-0.62f, 0.56f, -0.46f});
    return direction;
}

Landscape::Landscape()
{
    makeTerrain();
    const auto standing = [&](float x, float z, float lift) {
        return V3{x, ground(x, z) + lift, z};
    };
    gThings.house = frameAt(standing(-5.0f, 15.2f, 0), -27);
    gThings.sign = frameAt(standing(-0.95f, 7.3f, 0), 7);
    gThings.balls = {Ball{standing(0.62f, 6.5f, 0.39f), 0.40f, Material::BeachBall},
                     Ball{standing(1.62f, 7.2f, 0.36f), 0.37f, Material::Chrome},
                     Ball{standing(1.55f, 5.8f, 0.21f), 0.22f, Material::RedBall}};
    gThings.trunk = standing(3.55f, 9.9f, -0.15f);
    const V3 top = gThings.trunk + V3{0.1f, 3.05f, 0.1f};
    _crowns = {{top + V3{0, 0.25f, 0}, 1.0f},          {top + V3{-0.85f, -0.1f, 0.1f}, 0.72f},
               {top + V3{0.9f, 0.05f, 0.2f}, 0.75f},   {top + V3{-0.45f, 0.85f, 0.2f}, 0.68f},
               {top + V3{0.5f, 0.95f, 0}, 0.66f},      {top + V3{0.1f, 0.1f, -0.8f}, 0.68f},
               {top + V3{-0.3f, -0.55f, -0.3f}, 0.5f}, {top + V3{0.75f, -0.55f, -0.2f}, 0.48f}};
}

void Landscape::makeTerrain()
{
    _heights.resize(std::size_t(kGridWide) * kGridDeep);
    _shades.resize(_heights.size());
    forRows(kGridDeep, [this](int j) {
        for (int i = 0; i < kGridWide; ++i)
            _heights[std::size_t(j) * kGridWide + i] =
                terrainHeight(kGridLeft + float(i) * kCell, kGridNear + float(j) * kCell);
    });
    _tops.assign(std::size_t(kTilesWide) * kTilesDeep, 0);
    for (int j = 0; j < kGridDeep; ++j)
        for (int i = 0; i < kGridWide; ++i)
            for (const int tj :
                 {j / kTile, std::max(0, j - 1) / kTile}) // corners belong to both sides
                for (const int ti : {i / kTile, std::max(0, i - 1) / kTile}) {
                    float& top = _tops[std::size_t(tj) * kTilesWide + ti];
                    top = std::max(top, _heights[std::size_t(j) * kGridWide + i]);
                }
    // Which of it the mountains keep the sun from, softly.
    forRows(kGridDeep, [this](int j) {
        const V3 sun = towardsSun();
        for (int i = 0; i < kGridWide; ++i) {
            V3 p{kGridLeft + float(i) * kCell, 0, kGridNear + float(j) * kCell};
            p.y = _heights[std::size_t(j) * kGridWide + i];
            float open = 1;
            for (float t = 1.5f; t < 90; t *= 1.13f) {
                const V3 q = p + sun * t;
                open = std::min(open, 0.5f + 6 * (q.y - gridHeight(_heights, q.x, q.z)) / t);
            }
            _shades[std::size_t(j) * kGridWide + i] = std::clamp(open, 0.0f, 1.0f);
        }
    });
}

float Landscape::gridHeight(const std::vector<float>& grid, float x, float z) const
{
    const float u = std::clamp((x - kGridLeft) / kCell, 0.0f, float(kGridWide) - 1.01f);
    const float v = std::clamp((z - kGridNear) / kCell, 0.0f, float(kGridDeep) - 1.01f);
    const int i = int(u), j = int(v);
    const float* p = &grid[std::size_t(j) * kGridWide + i];
    const float fu = u - float(i), fv = v - float(j);
    return mix(mix(p[0], p[1], fu), mix(p[kGridWide], p[kGridWide + 1], fu), fv);
}

float Landscape::ground(float x, float z) const
{
    return gridHeight(_heights, x, z);
}

bool Landscape::isMeadow(float x, float z) const
{
    return nearShore(x) - z > 0.5f;
}

float Landscape::sunlight(V3 place) const
{
    const Ray ray{place + towardsSun() * 0.01f, towardsSun()};
    if (meetThings(ray).t < kFar)
        return 0;
    float through = 1;
    for (const Crown& crown : _crowns) {
        const V3 d = crown.center - ray.from;
        const float t = dot(d, ray.along);
        if (t < 0)
            continue;
        const V3 miss = d - ray.along * t;
        const float depth = 1 - dot(miss, miss) / (crown.radius * crown.radius);
        if (depth > 0) // sun dapples through the leaves
            through *= 1 - 0.85f * smooth(-0.1f, 0.35f,
                                          depth + 0.5f * noise(miss.x * 6 + place.x, miss.z * 6));
    }
    return through * (place.z > 30 ? gridHeight(_shades, place.x, place.z) : 1);
}

V3 Landscape::lightOn(V3 normal, float sun) const
{
    const float facing = std::max(0.0f, dot(normal, towardsSun()));
    const V3 bounce = V3{0.10f, 0.13f, 0.05f} * (0.5f - 0.5f * normal.y);
    return kSunColor * (facing * sun) + kSkyLight * (0.55f + 0.45f * normal.y) + bounce;
}

V3 Landscape::sky(V3 along) const
{
    const float up = std::max(along.y, 0.0f);
    V3 color = mix({0.50f, 0.72f, 0.98f}, {0.055f, 0.20f, 0.66f}, 1 - std::exp(-4.6f * up));
    color = mix(color, {0.90f, 0.92f, 0.92f}, 0.5f * std::exp(-16 * up));
    // Heaps of cloud on a plane overhead, bright where they face the sun, blue-grey below.
    const float reach = 1 / (up + 0.16f);
    const float x = along.x * reach * 1.5f + 2.4f, z = along.z * reach * 1.5f + 5.3f;
    const auto density = [](float u, float v, int octaves) {
        const float bend = 0.35f * noise(u * 0.9f + 5, v * 0.9f);
        return fractal(u + bend, v - bend, octaves) + 0.25f * noise(u * 0.4f + 7, v * 0.4f + 1);
    };
    const float d = density(x, z, 6);
    const float cover = smooth(0.0f, 0.22f, d) * smooth(0.01f, 0.10f, up);
    if (cover <= 0)
        return color;
    const float shade =
        std::clamp(0.1f + 1.4f * (density(x - 0.16f, z - 0.16f, 4) - 0.15f), 0.0f, 1.0f);
    return mix(color, mix({1.06f, 1.04f, 1.0f}, {0.52f, 0.60f, 0.74f}, shade), cover);
}

V3 Landscape::hazed(V3 color, float distance) const
{
    const float thick = 1 - std::exp(-std::max(0.0f, distance - 20) / 520);
    return mix(color, {0.60f, 0.72f, 0.90f}, thick);
}

V3 Landscape::meadowColor(float x, float z) const
{
    const float patch = fractal(x * 0.5f, z * 0.5f, 4);
    V3 color =
        mix({0.075f, 0.15f, 0.028f}, {0.17f, 0.24f, 0.045f}, std::clamp(0.5f + patch, 0.0f, 1.0f));
    const float dry = smooth(0.1f, 0.5f, fractal(x * 0.23f + 7, z * 0.23f, 3));
    return mix(color, {0.27f, 0.25f, 0.09f}, 0.5f * dry);
}

V3 Landscape::terrainNormal(float x, float z) const
{
    const float e = kCell * (z < 40 ? 0.75f : 1.6f);
    return unit({ground(x - e, z) - ground(x + e, z), 2 * e, ground(x, z - e) - ground(x, z + e)});
}

V3 Landscape::terrainColor(V3 p) const
{
    if (p.z < 40) {
        const float near = nearShore(p.x) - p.z;
        const V3 soil = V3{0.26f, 0.21f, 0.14f} * (1 + 0.5f * fractal(p.x * 4, p.z * 4, 4));
        const V3 grass = meadowColor(p.x, p.z) * (0.75f + 0.4f * fractal(p.x * 9, p.z * 9, 3));
        return mix(soil, grass, smooth(0.25f, 1.1f, near + 0.4f * noise(p.x * 3, p.z * 3)));
    }
    const V3 n = terrainNormal(p.x, p.z);
    const float far = p.z - farShore(p.x);
    const V3 wood = mix({0.022f, 0.05f, 0.018f}, {0.07f, 0.11f, 0.03f},
                        std::clamp(0.5f + 0.9f * noise(p.x * 0.7f, p.z * 0.7f), 0.0f, 1.0f));
    const V3 rock =
        mix({0.17f, 0.15f, 0.14f}, {0.33f, 0.29f, 0.26f},
            std::clamp(0.5f + fractal(p.x * 0.15f, p.y * 0.3f + p.z * 0.1f, 5), 0.0f, 1.0f));
    const V3 snow{0.86f, 0.89f, 0.95f};
    const float heightNoise = 5 * fractal(p.x * 0.07f, p.z * 0.07f, 4);
    V3 color = mix({0.30f, 0.27f, 0.17f}, wood, smooth(0.5f, 5, far));
    color = mix(color, rock, smooth(12, 19, p.y + heightNoise));
    return mix(color, snow, smooth(20, 29, p.y + 1.6f * heightNoise) * smooth(0.42f, 0.62f, n.y));
}

float Landscape::marchTerrain(const Ray& ray) const
{
    // Steps grow with the distance and with the room under the ray; a tile that lies below is left
    // in one step. What is under water is never seen.
    float t = 0.5f, before = 0;
    for (int i = 0; i < 420; ++i) {
        const V3 p = ray.at(t);
        if (p.z > kGridNear + kCell * (kGridDeep - 2) || p.z < kGridNear || p.y < kWater)
            return kFar;
        const float room = p.y - ground(p.x, p.z);
        if (room > 1)
            if (const float leave = tileLeft(ray, p); leave > 0) {
                before = t;
                t += leave + 1e-3f * t;
                continue;
            }
        if (room < 0.0004f * t) {
            float low = before, high = t;
            for (int k = 0; k < 8; ++k) {
                const float middle = 0.5f * (low + high);
                const V3 q = ray.at(middle);
                (q.y < ground(q.x, q.z) ? high : low) = middle;
            }
            return high;
        }
        before = t;
        t += std::max({0.32f * room, 0.0022f * t, 0.02f});
    }
    return kFar;
}

float Landscape::tileLeft(const Ray& ray, V3 p) const
{
    const float side = kCell * kTile;
    const float u = (p.x - kGridLeft) / side, v = (p.z - kGridNear) / side;
    const int i = std::clamp(int(u), 0, kTilesWide - 1), j = std::clamp(int(v), 0, kTilesDeep - 1);
    const auto until = [&](float position, int tile, float speed) {
        return speed > 0   ? (float(tile + 1) - position) * side / speed
               : speed < 0 ? (float(tile) - position) * side / speed
                           : kFar;
    };
    const float leave = std::min(until(u, i, ray.along.x), until(v, j, ray.along.z));
    const bool above =
        std::min(p.y, p.y + leave * ray.along.y) > _tops[std::size_t(j) * kTilesWide + i];
    return above ? std::max(leave, 0.0f) : 0;
}

Hit Landscape::traceSolids(const Ray& ray) const
{
    const Surface thing = meetThings(ray);
    const float land = marchTerrain(ray);
    if (land < thing.t) {
        const V3 p = ray.at(land);
        const V3 n = terrainNormal(p.x, p.z);
        const V3 lit = terrainColor(p) * lightOn(n, sunlight(p + n * 0.02f));
        return {land, hazed(lit, land)};
    }
    if (thing.t == kFar)
        return {kFar, sky(ray.along)};
    const V3 p = ray.at(thing.t);
    const float sun = sunlight(p + thing.normal * 0.004f);
    V3 color = colorOf(thing) * lightOn(thing.normal, sun);
    // Things near the ground get less of the sky.
    color = color * (0.55f + 0.45f * smooth(0, 0.45f, p.y - ground(p.x, p.z)));
    return {thing.t, color};
}

Hit Landscape::trace(const Ray& ray) const
{
    Hit hit = traceSolids(ray);
    const Surface thing = meetThings(ray);

    // A gloss on the balls: the chrome one is all mirror, the others by the angle.
    if (thing.t <= hit.t && thing.t < kFar && thing.material <= Material::RedBall) {
        const V3 p = ray.at(thing.t);
        const V3 bounced = reflected(ray.along, thing.normal);
        const float grazing = 1 - std::max(0.0f, -dot(ray.along, thing.normal));
        const float fresnel = 0.04f + 0.96f * grazing * grazing * grazing * grazing * grazing;
        const bool chrome = thing.material == Material::Chrome;
        const V3 seen = traceSolids({p + thing.normal * 0.002f, bounced}).color;
        const float glint =
            std::pow(std::max(0.0f, dot(bounced, towardsSun())), chrome ? 900 : 180);
        const V3 shine =
            kSunColor * (glint * (chrome ? 8.0f : 1.6f) * sunlight(p + thing.normal * 0.004f));
        hit.color = chrome ? seen * V3{0.86f, 0.88f, 0.9f} + shine
                           : hit.color * (1 - fresnel) + seen * fresnel + shine;
        return hit;
    }

    // Water.
    if (ray.along.y < 0) {
        const float t = (kWater - ray.from.y) / ray.along.y;
        const V3 p = ray.at(t);
        if (t < hit.t && p.z < kGridNear + kCell * (kGridDeep - 2)) {
            const float calm = 1 / (1 + 0.012f * t * t * 0.2f);
            const float wind = 0.35f + 0.65f * smooth(-0.2f, 0.4f, noise(p.x * 0.05f, p.z * 0.11f));
            const float nx = 0.030f * wind * calm * fractal(p.x * 1.3f, p.z * 2.6f, 4);
            const float nz = 0.075f * wind * calm * fractal(p.x * 1.1f + 40, p.z * 3.1f, 4);
            const V3 n = unit({nx, 1, nz});
            V3 away = reflected(ray.along, n);
            away.y = std::max(away.y, 0.004f);
            const float facing = std::max(0.0f, -dot(ray.along, n));
            const float fresnel = 0.03f + 0.97f * std::pow(1 - facing, 5.0f);
            const V3 mirrored = traceSolids({p + V3{0, 0.01f, 0}, unit(away)}).color;
            const float depth = kWater - ground(p.x, p.z);
            const V3 deep =
                mix({0.16f, 0.17f, 0.10f}, {0.012f, 0.05f, 0.065f}, 1 - std::exp(-3 * depth));
            hit = {t, hazed(mix(deep, mirrored, std::min(1.0f, fresnel * 1.25f)), t)};
        }
    }
    return hit;
}

} // namespace samples
