// The picture with an alpha channel: every kind of transparency once.
#include "tools/sample-pictures/Lettering.h"
#include "tools/sample-pictures/Math.h"
#include "tools/sample-pictures/Picture.h"

namespace samples {

namespace {

// Light and the share of it that covers what is below, premultiplied.
struct Paint {
    V3 color;
    float alpha = 0;

    void cover(V3 over, float a)
    {
        color = color * (1 - a) + over * a;
        alpha = alpha * (1 - a) + a;
    }
};

// A lit ball on nothing, 512 by 384 with y down.
void ball(Paint& p, float x, float y, float cx, float cy, float radius, V3 tint)
{
    const float u = (x - cx) / radius, v = (y - cy) / radius, squared = u * u + v * v;
    if (squared >= 1)
        return;
    const float w = std::sqrt(1 - squared);
    const float facing = -0.50f * u - 0.62f * v + 0.60f * w;
    const float edge = 1 - w;
    V3 color = tint * (0.16f + 0.9f * std::max(0.0f, facing));
    color = color + V3{0.25f, 0.32f, 0.42f} * (edge * edge * edge * 0.8f);
    p.cover(color + V3{1, 1, 1} * smooth(0.965f, 0.998f, facing), 1);
}

Paint paintAt(float x, float y)
{
    Paint p;
    // Shadows that fade out to nothing.
    for (const auto& [cx, cy, r] : {V3{150, 296, 88}, V3{268, 316, 60}, V3{352, 300, 44}}) {
        const float u = (x - cx - 0.35f * r) / (1.25f * r), v = (y - cy) / (0.30f * r);
        const float d = u * u + v * v;
        p.cover({0.01f, 0.02f, 0.04f}, 0.62f * smooth(1, 0.05f, d));
    }
    ball(p, x, y, 150, 214, 88, {0.85f, 0.36f, 0.04f});
    ball(p, x, y, 268, 262, 60, {0.06f, 0.34f, 0.72f});
    ball(p, x, y, 352, 260, 44, {0.42f, 0.07f, 0.42f});

    // A hard-edged ring, cut through.
    const float ring = std::hypot(x - 414, y - 96);
    if (ring > 36 && ring < 62)
        p.cover(mix({0.75f, 0.10f, 0.08f}, {0.90f, 0.62f, 0.05f}, (y - 34) / 124), 1);

    // Letters with a soft glow around them.
    const float k = 6 / 52.0f;
    const float near = distanceToText("ALPHA", (x - 40) * k, (112 - y) * k);
    p.cover({0.95f, 0.80f, 0.25f}, 0.55f * smooth(2.2f, 0.4f, near));
    if (near < 0.55f)
        p.cover({0.03f, 0.07f, 0.20f}, 1);

    // A pane of green glass that thins out from left to right.
    if (x > 226 && x < 472 && y > 176 && y < 356) {
        const float fade = (x - 226) / 246;
        p.cover({0.08f, 0.55f, 0.30f}, mix(0.55f, 0.02f, fade));
        if (x < 229 || y < 179 || x > 469 || y > 353)
            p.cover({0.75f, 1, 0.85f}, 0.6f);
    }
    return p;
}

} // namespace

Picture transparentPicture(int width, int height)
{
    Picture out{width, height, {}};
    const float scale = 512.0f / float(width);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            Paint sum;
            for (int j = 0; j < 4; ++j)
                for (int i = 0; i < 4; ++i) {
                    const Paint p = paintAt((float(x) + (float(i) + 0.5f) / 4) * scale,
                                            (float(y) + (float(j) + 0.5f) / 4) * scale);
                    sum.color = sum.color + p.color * (1.0f / 16);
                    sum.alpha += p.alpha / 16;
                }
            const V3 color = sum.alpha > 0 ? sum.color * (1 / sum.alpha) : V3{};
            for (const float light : {color.x, color.y, color.z})
                out.rgba.push_back(byteOf(light));
            out.rgba.push_back(std::uint8_t(std::lround(sum.alpha * 255)));
        }
    return out;
}

} // namespace samples
