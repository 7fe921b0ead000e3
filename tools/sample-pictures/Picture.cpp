#include "tools/sample-pictures/Picture.h"

#include "tools/sample-pictures/Landscape.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace samples {

namespace {

constexpr int kFine = 2; // samples along each side of a pixel

// What the camera sees, finely sampled, with depths, so that plants can be drawn into it.
class View {
public:
    View(const Landscape& land, int width, int height)
        : _land(land), _width(width * kFine), _height(height * kFine),
          _color(std::size_t(_width) * _height), _depth(_color.size())
    {
    }

    void look()
    {
        const unsigned count = std::max(1u, std::thread::hardware_concurrency());
        std::vector<std::jthread> workers;
        for (unsigned w = 0; w < count; ++w)
            workers.emplace_back([this, w, count] {
                for (int y = int(w); y < _height; y += int(count))
                    for (int x = 0; x < _width; ++x) {
                        const Hit hit = _land.trace(rayThrough(float(x) + 0.5f, float(y) + 0.5f));
                        _color[index(x, y)] = hit.color;
                        _depth[index(x, y)] = hit.t;
                    }
            });
    }

    // Where a place is seen, and how many fine pixels a metre is there.
    struct Seen {
        float x, y, depth, scale;
    };
    Seen project(V3 place) const
    {
        const V3 d = place - kEye;
        const float away = d.z * kCos + d.y * kSin, up = d.y * kCos - d.z * kSin;
        const float k = focal() / std::max(away, 0.01f);
        return {float(_width) * 0.5f + d.x * k, float(_height) * 0.5f - up * k, length(d), k};
    }

    // A blade: a curved, tapering stroke from the root to the tip, darker at the root.
    void blade(const Seen& root, float tipX, float tipY, float wide, V3 rootColor, V3 tipColor)
    {
        const int rows = std::max(2, int(std::abs(root.y - tipY)));
        for (int i = 0; i <= rows; ++i) {
            const float t = float(i) / float(rows);
            const float x = mix(root.x, tipX, t * t), y = mix(root.y, tipY, t);
            const float half = std::max(0.5f, wide * (1 - t * 0.9f)) * 0.5f;
            const V3 color = mix(rootColor, tipColor, t);
            for (int px = int(std::ceil(x - half - 0.5f)); px <= int(std::floor(x + half - 0.5f));
                 ++px)
                put(px, int(y), root.depth - 0.05f, color);
        }
    }

    // An ellipse turned by an angle.
    void leaf(const Seen& at, float longHalf, float shortHalf, float angle, V3 color)
    {
        const float c = std::cos(angle), s = std::sin(angle);
        const int reach = int(std::ceil(longHalf));
        for (int dy = -reach; dy <= reach; ++dy)
            for (int dx = -reach; dx <= reach; ++dx) {
                const float u = (c * float(dx) + s * float(dy)) / longHalf;
                const float v = (c * float(dy) - s * float(dx)) / shortHalf;
                if (u * u + v * v <= 1)
                    put(int(at.x) + dx, int(at.y) + dy, at.depth, color * (1 - 0.18f * v));
            }
    }

    Picture developed() const
    {
        Picture out{_width / kFine, _height / kFine, {}};
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x) {
                V3 sum;
                for (int j = 0; j < kFine; ++j)
                    for (int i = 0; i < kFine; ++i) {
                        V3 c = _color[index(x * kFine + i, y * kFine + j)];
                        // A glint must not outweigh its whole pixel.
                        c = {std::min(c.x, 4.0f), std::min(c.y, 4.0f), std::min(c.z, 4.0f)};
                        sum = sum + c;
                    }
                sum = sum * (1.0f / (kFine * kFine));
                for (const float v : {sum.x, sum.y, sum.z})
                    out.rgba.push_back(byteOf(v));
                out.rgba.push_back(255);
            }
        return out;
    }

    static constexpr V3 kEye{0, 2.35f, 0};

private:
    static constexpr float kSin = -0.035f, kCos = 0.99939f; // looking a little down

    float focal() const { return float(_width) * 1.08f; }
    Ray rayThrough(float x, float y) const
    {
        const float u = (x - float(_width) * 0.5f) / focal(),
                    v = (float(_height) * 0.5f - y) / focal();
        return {kEye, unit({u, v * kCos + kSin, kCos - v * kSin})};
    }
    std::size_t index(int x, int y) const { return std::size_t(y) * _width + x; }
    void put(int x, int y, float depth, V3 color)
    {
        if (x < 0 || y < 0 || x >= _width || y >= _height || depth > _depth[index(x, y)] + 0.12f)
            return;
        _color[index(x, y)] = color;
        _depth[index(x, y)] = std::min(depth, _depth[index(x, y)]);
    }

    const Landscape& _land;
    int _width, _height;
    std::vector<V3> _color;
    std::vector<float> _depth;
};

// Blades and flowers, from the shore towards us.
void growMeadow(View& view, const Landscape& land)
{
    std::uint32_t id = 0;
    for (float z = 23; z > 3.2f; z -= 0.018f + 0.0035f * z) {
        const float halfWidth = 0.52f * z + 0.5f;
        const int count = int(halfWidth * (150 / (1 + 0.16f * z)));
        for (int i = 0; i < count; ++i) {
            ++id;
            const float x = (chance(id, 1) * 2 - 1) * halfWidth, bz = z + 0.06f * chance(id, 2);
            if (!land.isMeadow(x, bz))
                continue;
            const V3 root{x, land.ground(x, bz) - 0.01f, bz};
            const float tuft = std::clamp(0.6f + 0.9f * noise(x * 1.7f, bz * 1.7f), 0.15f, 1.4f);
            const float high = (0.05f + 0.10f * chance(id, 3)) * tuft;
            const float lean = (chance(id, 4) - 0.42f) * 1.1f * high;
            const float sun = land.sunlight(root + V3{0, 0.06f, 0});
            const V3 light = land.lightOn(unit({0.1f, 0.8f, -0.35f}), sun);
            V3 color = land.meadowColor(x, bz) * light;
            color = color * (0.75f + 0.6f * chance(id, 5)) *
                    V3{0.85f + 0.4f * chance(id, 6), 1, 0.8f + 0.4f * chance(id, 7)};
            const View::Seen at = view.project(root);
            view.blade(at, at.x + lean * at.scale, at.y - high * at.scale,
                       std::max(1.0f, 0.011f * at.scale), color * 0.45f, color * 1.25f);
            // Now and then a flower.
            const float bed = noise(x * 0.45f + 20, bz * 0.45f);
            if (chance(id, 8) < 0.006f + 0.05f * smooth(0.15f, 0.5f, bed)) {
                static constexpr V3 kPetals[] = {{0.88f, 0.86f, 0.80f},
                                                 {0.90f, 0.66f, 0.05f},
                                                 {0.88f, 0.86f, 0.80f},
                                                 {0.55f, 0.10f, 0.42f}};
                const V3 petals = kPetals[hash(id, 9) % 4] * light;
                View::Seen head = at;
                head.x += lean * at.scale;
                head.y -= (high + 0.03f) * at.scale;
                head.depth -= 0.08f;
                const float size = std::max(1.2f, (0.014f + 0.01f * chance(id, 10)) * at.scale);
                view.leaf(head, size, size * 0.7f, 0, petals * 0.9f);
                view.leaf(head, size * 0.35f, size * 0.3f, 0, V3{0.7f, 0.45f, 0.03f} * light);
            }
        }
    }
}

// Leaves in the outer part of the crown's balls, the far ones first.
void growLeaves(View& view, const Landscape& land)
{
    struct Leaf {
        V3 place, out;
        std::uint32_t id;
        float inner;
    };
    std::vector<Leaf> leaves;
    V3 middle;
    for (const auto& crown : land.crowns())
        middle = middle + crown.center * (1.0f / float(land.crowns().size()));
    std::uint32_t id = 0;
    for (const auto& crown : land.crowns()) {
        const int count = int(3400 * crown.radius * crown.radius);
        for (int i = 0; i < count; ++i) {
            ++id;
            const float y = chance(id, 11) * 2 - 1, turn = chance(id, 12) * 6.2831853f;
            const float r = std::sqrt(1 - y * y);
            const V3 out{r * std::cos(turn), y, r * std::sin(turn)};
            const float shell =
                std::cbrt(0.25f + 0.75f * chance(id, 13)) *
                (1 + 0.22f * noise(out.x * 3 + crown.center.x * 5, out.y * 3 + out.z * 3));
            leaves.push_back({crown.center + out * (crown.radius * shell), out, id, shell});
        }
    }
    std::sort(leaves.begin(), leaves.end(),
              [](const Leaf& a, const Leaf& b) { return a.place.z > b.place.z; });
    for (const Leaf& l : leaves) {
        const V3 outwards = unit(unit(l.place - middle) * 1.2f + l.out);
        const float facing = dot(outwards, Landscape::towardsSun());
        // Light that comes in from the sunny side, weaker the more leaves it has passed.
        const float sun = smooth(-0.55f, 0.75f, facing) *
                          (0.35f + 0.65f * smooth(0.6f, 1.0f, l.inner)) *
                          (0.5f + 0.7f * chance(l.id, 14));
        const V3 own = mix({0.050f, 0.115f, 0.018f}, {0.16f, 0.21f, 0.035f}, chance(l.id, 15));
        const V3 color = own * (V3{2.7f, 2.5f, 1.9f} * sun +
                                V3{0.22f, 0.30f, 0.40f} * (0.45f + 0.4f * outwards.y));
        const View::Seen at = view.project(l.place);
        const float size = (0.026f + 0.02f * chance(l.id, 16)) * at.scale;
        view.leaf(at, size, size * 0.55f, chance(l.id, 17) * 3.14159265f, color);
    }
}

} // namespace

std::uint8_t byteOf(float light)
{
    const float v = std::max(0.0f, light * 0.92f);
    const float rolled = v * (1 + v * 0.16f) / (1 + v * 0.62f);
    const float curved =
        rolled <= 0.0031308f ? 12.92f * rolled : 1.055f * std::pow(rolled, 1 / 2.4f) - 0.055f;
    return std::uint8_t(std::lround(std::clamp(curved, 0.0f, 1.0f) * 255));
}

Picture landscapePicture(int width, int height)
{
    const Landscape land;
    View view(land, width, height);
    view.look();
    growMeadow(view, land);
    growLeaves(view, land);
    return view.developed();
}

} // namespace samples
