// Pictures of lit balls: what a relief takes its colours from, slope by slope.
//
// The middle of a ball is what flat areas show. Highlights, horizons and other features keep away
// from it, so that faint slopes, such as the grain of a photograph, change the tone only gently.
#include "resources/pictures/Paint.h"

#include <functional>

namespace pictures {

namespace {

constexpr int kSide = 256;

const V3 kViewer{0, 0, 1};
const V3 kKeyLight = unit({-0.52, 0.62, 0.62});  // upper left
const V3 kFillLight = unit({0.75, -0.35, 0.55}); // lower right
const V3 kBackLight = unit({0.5, -0.6, -0.45});  // behind, catches the lower right rim

V3 grey(double v)
{
    return {v, v, v};
}
// Where what is seen in a mirror comes from.
V3 reflected(V3 normal)
{
    return normal * (2 * normal.z) - kViewer;
}
// Light on a dull surface; softness lets it creep round the edge into the shadow.
double lambert(V3 normal, V3 light, double softness = 0)
{
    return std::max(0.0, (dot(normal, light) + softness) / (1 + softness));
}
// A round spot of light in a mirror, a Gaussian over the angle in radians.
double spot(V3 direction, V3 light, double width)
{
    const double angle = std::acos(std::clamp(dot(direction, light), -1.0, 1.0));
    return std::exp(-angle * angle / (2 * width * width));
}
// A softbox, with fading edges: how far inside the direction hits it, 0…1.
double window(V3 direction, V3 middle, double halfWidth, double halfHeight, double edge)
{
    const double ahead = dot(direction, middle);
    if (ahead <= 0)
        return 0;
    const V3 across = unit({middle.z, 0, -middle.x});
    const V3 up{middle.y * across.z - middle.z * across.y,
                middle.z * across.x - middle.x * across.z,
                middle.x * across.y - middle.y * across.x};
    const double x = dot(direction, across) / ahead, y = dot(direction, up) / ahead;
    return (1 - smooth(halfWidth - edge, halfWidth + edge, std::abs(x))) *
           (1 - smooth(halfHeight - edge, halfHeight + edge, std::abs(y)));
}
// How much more a surface mirrors at a glancing angle: 0 in the middle of the ball, 1 at its rim.
double glancing(V3 normal, double power = 5)
{
    return std::pow(1 - normal.z, power);
}
// A colour as it looks on a screen, as light.
V3 rgb(int hex)
{
    const auto light = [](int byte) { return std::pow((byte & 255) / 255.0, 2.2); };
    return {light(hex >> 16), light(hex >> 8), light(hex)};
}
V3 rainbow(double turn)
{
    const auto part = [&](double phase) { return 0.5 + 0.5 * std::cos(2 * kPi * (turn + phase)); };
    return {part(0), part(2.0 / 3), part(1.0 / 3)};
}

// A ball that fills the square; what lies around continues the rim. The surface says what it looks
// like where it faces along the normal.
Painting rendered(const std::function<V3(V3 normal)>& surface)
{
    constexpr int kFine = 3;
    constexpr double kReach = kSide / 2.0 - 1;
    Painting out(kSide, kSide);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            V3 sum;
            for (int j = 0; j < kFine; ++j)
                for (int i = 0; i < kFine; ++i) {
                    V2 v{(x + (i + 0.5) / kFine - kSide / 2.0) / kReach,
                         (kSide / 2.0 - y - (j + 0.5) / kFine) / kReach};
                    if (const double far = length(v); far > 1)
                        v = v * (1 / far);
                    sum = sum + surface({v.x, v.y, std::sqrt(std::max(0.0, 1 - dot(v, v)))});
                }
            sum = sum * (1.0 / (kFine * kFine));
            out.at(x, y) = {sum.x, sum.y, sum.z, 1};
        }
    return out;
}

// The same, of light: developed as a photograph is.
Painting ball(const std::function<V3(V3 normal)>& light)
{
    Painting out = rendered(light);
    for (Pixel& p : out.pixels)
        for (double* v : {&p.r, &p.g, &p.b}) {
            // Bright light rolls off instead of running into white.
            constexpr double kKnee = 0.7;
            if (*v > kKnee)
                *v = kKnee + (1 - kKnee) * std::tanh((*v - kKnee) / (1 - kKnee));
            *v = std::pow(std::max(*v, 0.0), 1 / 2.2);
        }
    return out;
}

// A photographer's room, as a polished ball shows it: even behind the camera, a large softbox at
// the upper left, a bounce at the right, light that comes up from the floor.
double studio(V3 normal, double blur)
{
    const V3 seen = reflected(normal);
    const double key = window(seen, unit({-0.62, 0.66, 0.42}), 0.5, 0.62, 0.12 + blur);
    const double bounce = window(seen, unit({0.9, 0.05, 0.1}), 0.28, 1.1, 0.15 + blur);
    const double below = (normal.y + 0.74) / (0.17 + 0.3 * blur);
    const double dusk = smooth(0.25, 0.62, -normal.y + 0.35 * normal.x);
    return 0.4 + 0.2 * smooth(0.1, 1.0, seen.y) - 0.12 * seen.x - 0.26 * dusk + 1.15 * key +
           0.42 * bounce + 0.42 * std::exp(-below * below);
}

V3 metal(V3 normal, V3 tint, double blur)
{
    const double light = studio(normal, blur) * (0.72 + 0.5 * lambert(normal, kKeyLight, 0.5));
    const V3 color = mix(tint, grey(1), 0.7 * glancing(normal, 4));
    // Light that has been thrown about takes more of the colour: dark parts are deeper.
    const V3 deep = color * color * 0.55 + color * 0.45;
    return mix(deep, color, limited(light * 1.3)) * light * 1.25 +
           grey(0.9) * spot(reflected(normal), unit({-0.62, 0.66, 0.42}), 0.16 + blur);
}

// A dull or glossy body with a coat that mirrors the lamp.
struct Body {
    V3 color;
    double softness = 0.25;  // of the shadow
    double gloss = 0;        // strength of the highlight
    double sharpness = 0.15; // its width in radians
    double rim = 0;          // mirror of the room at glancing angles
    V3 shadow = {0, 0, 0};   // light that shines through the shadow side
};
V3 lit(V3 normal, const Body& body)
{
    const double key = lambert(normal, kKeyLight, body.softness);
    const double fill = lambert(normal, kFillLight, 0.6);
    const V3 seen = reflected(normal);
    return body.color * (1.05 * key + 0.14 * fill + 0.07) + body.shadow * (1 - key) +
           grey(body.gloss) * spot(seen, unit({-0.56, 0.64, 0.52}), body.sharpness) +
           grey(body.rim * glancing(normal, 3) * (0.25 + 0.75 * std::max(0.0, 0.5 + 0.5 * seen.y)));
}

Painting gold()
{
    return ball([](V3 n) { return metal(n, {1.0, 0.62, 0.13}, 0.1); });
}
Painting silver()
{
    return ball([](V3 n) { return metal(n, {0.9, 0.91, 0.93}, 0.12); });
}
Painting copper()
{
    return ball([](V3 n) { return metal(n, {0.98, 0.46, 0.29}, 0.12); });
}
Painting bronze()
{
    return ball([](V3 n) { return metal(n, {0.5, 0.29, 0.11}, 0.25); });
}
Painting steel()
{
    return ball([](V3 n) { return metal(n, {0.42, 0.48, 0.55}, 0.2); });
}

// A mirror out of doors: sky above, a far horizon well below the middle, dark ground.
Painting chrome()
{
    return ball([](V3 n) {
        const V3 seen = reflected(n);
        const double up = n.y + 0.3 - 0.08 * n.x;
        const V3 sky = mix(rgb(0xe8eff5), rgb(0x3a6fb5), smooth(0.05, 1.15, up));
        const V3 ground = mix(rgb(0x1d1714), rgb(0xb59a78), smooth(0.0, 0.62, -up));
        return mix(ground, sky, smooth(-0.05, 0.05, up)) * 0.92 +
               grey(1.4) * spot(seen, unit({-0.6, 0.68, 0.42}), 0.17) +
               grey(0.22) * spot(seen, unit({-0.6, 0.68, 0.42}), 0.5);
    });
}

// Bottle glass: dark where one looks through its thickness, light gathered opposite the lamp.
Painting glassBall()
{
    return ball([](V3 n) {
        const V3 seen = reflected(n);
        const double across = -dot(V3{n.x, n.y, 0}, unit({-0.64, 0.77, 0})); // away from the lamp
        const double gathered = std::exp(-std::pow((std::sqrt(1 - n.z * n.z) - 0.72) / 0.22, 2)) *
                                smooth(0, 0.8, across);
        const V3 body = mix(rgb(0x2f8f7c), rgb(0x0d4a45), smooth(0.2, 1, std::sqrt(1 - n.z * n.z)));
        return body + rgb(0x8ff0cf) * (0.75 * gathered) + grey(0.5) * glancing(n, 3) +
               grey(1.5) * window(seen, unit({-0.6, 0.66, 0.45}), 0.3, 0.36, 0.1);
    });
}

Painting redPlastic()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0xd8141c), .gloss = 1.1, .sharpness = 0.17, .rim = 0.35});
    });
}
Painting bluePlastic()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0x1858d8), .gloss = 1.1, .sharpness = 0.17, .rim = 0.4});
    });
}

Painting porcelain()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0xf0eee9),
                       .softness = 0.25,
                       .gloss = 0.7,
                       .sharpness = 0.12,
                       .rim = 0.2,
                       .shadow = rgb(0x343d4d)});
    });
}

// Mother of pearl: the colour turns with the angle.
Painting pearl()
{
    return ball([](V3 n) {
        const double r = std::sqrt(1 - n.z * n.z);
        const V3 sheen = rainbow(0.15 + 0.9 * r * r + 0.12 * (n.x - n.y)) - grey(0.5);
        return lit(n, {.color = rgb(0xe9e2dc) + sheen * (0.28 * smooth(0.05, 0.8, r)),
                       .softness = 0.35,
                       .gloss = 0.6,
                       .sharpness = 0.3,
                       .rim = 0.35,
                       .shadow = rgb(0x6b5a68)});
    });
}

Painting wax()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0xe9c98d),
                       .softness = 0.75,
                       .gloss = 0.22,
                       .sharpness = 0.34,
                       .rim = 0.12,
                       .shadow = rgb(0x9a4f1c)});
    });
}

Painting skin()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0xdda283),
                       .softness = 0.45,
                       .gloss = 0.16,
                       .sharpness = 0.36,
                       .rim = 0.14,
                       .shadow = rgb(0x6d2219)});
    });
}

Painting clay()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0xb5663f), .softness = 0.12, .gloss = 0.05, .sharpness = 0.5});
    });
}

Painting plaster()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0xe2dfd8), .softness = 0.15, .shadow = rgb(0x2c2f38)});
    });
}

Painting jade()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0x48a86c),
                       .softness = 0.2,
                       .gloss = 0.55,
                       .sharpness = 0.2,
                       .rim = 0.2,
                       .shadow = rgb(0x14543a)}) +
               rgb(0x7fe0a0) * (0.22 * std::pow(lambert(n, kBackLight, 0.3), 2));
    });
}

Painting rubber()
{
    return ball([](V3 n) {
        return lit(
            n,
            {.color = rgb(0x4a4a4d), .softness = 0.2, .gloss = 0.2, .sharpness = 0.42, .rim = 0.1});
    });
}

// Three flat tones with soft steps, an outline and a spot.
Painting toon()
{
    return ball([](V3 n) {
        const double key = dot(n, kKeyLight);
        V3 color = mix(rgb(0x9c3a10), rgb(0xf28c1e), smooth(0.1, 0.22, key));
        color = mix(color, rgb(0xffc24a), smooth(0.88, 0.93, key));
        color = mix(color, rgb(0xfff6dd), smooth(0.95, 0.975, dot(n, unit({-0.48, 0.56, 0.68}))));
        return mix(rgb(0x2a0f06), color, smooth(0.3, 0.42, n.z));
    });
}

// A beach in evening light: grains that show on the slopes, not on the flat.
Painting sand()
{
    return ball([](V3 n) {
        const double r = std::sqrt(1 - n.z * n.z);
        const V2 at{n.x * 22 + 100, n.y * 22 + 100};
        const double grain = 0.6 * noise(at, 4096, 4096, 1) + 0.4 * noise(at * 2.1, 4096, 4096, 2);
        const double key = lambert(n, kKeyLight, 0.2);
        return mix(rgb(0x8a5c38), rgb(0xecca90), limited(key * 1.15)) *
               (0.22 + 0.85 * key + 0.1 * glancing(n, 2)) *
               (1 + 0.2 * grain * smooth(0.06, 0.5, r));
    });
}

// Cloth with a pile: dark where one looks into it, light along the edges.
Painting velvet()
{
    return ball([](V3 n) {
        const double nap = std::pow(1 - n.z, 1.15);
        return rgb(0x6f1030) * (0.32 + 0.55 * lambert(n, kKeyLight, 0.6)) +
               rgb(0xe24a80) * (nap * (0.25 + 0.9 * lambert(n, kKeyLight, 1)));
    });
}

// Black lacquer under a softbox.
Painting lacquer()
{
    return ball([](V3 n) {
        const V3 seen = reflected(n);
        return rgb(0x17171b) + rgb(0x6a7fa8) * (0.25 * glancing(n, 2)) +
               grey(1.2) * window(seen, unit({-0.58, 0.64, 0.5}), 0.34, 0.42, 0.1) +
               rgb(0xa8c0ff) * (0.35 * window(seen, unit({0.85, -0.2, 0.2}), 0.14, 0.9, 0.12));
    });
}

Painting chocolate()
{
    return ball([](V3 n) {
        return lit(n, {.color = rgb(0x6b3b20),
                       .softness = 0.35,
                       .gloss = 0.32,
                       .sharpness = 0.28,
                       .rim = 0.14,
                       .shadow = rgb(0x1c0b05)});
    });
}

// A film of oil: rings of colour on dark.
Painting oil()
{
    return ball([](V3 n) {
        const double turn = 0.55 + 1.9 * std::pow(1 - n.z, 0.9);
        const double light = 0.35 + 0.75 * lambert(n, kKeyLight, 0.5);
        return mix(rgb(0x1c2433), rainbow(turn) * 0.8 + rgb(0x202838), smooth(0, 0.25, 1 - n.z)) *
                   light +
               grey(1.0) * spot(reflected(n), unit({-0.56, 0.64, 0.52}), 0.2);
    });
}

// Light from within, hottest where the surface looks at us.
Painting ember()
{
    return ball([](V3 n) {
        const double heat = 0.62 + 0.38 * dot(n, unit({-0.3, 0.35, 0.88}));
        const V3 glow = mix(rgb(0x2a0402), rgb(0xe03a08), smooth(0.35, 0.78, heat));
        return mix(glow, rgb(0xffc24a), smooth(0.8, 1.02, heat)) +
               rgb(0x5a1a10) * (0.5 * glancing(n, 2));
    });
}

} // namespace

std::vector<Work> shadingMaterials()
{
    return {{"Black Lacquer", lacquer},
            {"Blue Plastic", bluePlastic},
            {"Bronze", bronze},
            {"Chocolate", chocolate},
            {"Chrome", chrome},
            {"Clay", clay},
            {"Copper", copper},
            {"Ember", ember},
            {"Glass", glassBall},
            {"Gold", gold},
            {"Jade", jade},
            {"Oil Film", oil},
            {"Pearl", pearl},
            {"Plaster", plaster},
            {"Porcelain", porcelain},
            {"Red Plastic", redPlastic},
            {"Rubber", rubber},
            {"Sand", sand},
            {"Silver", silver},
            {"Skin", skin},
            {"Steel", steel},
            {"Toon", toon},
            {"Velvet", velvet},
            {"Wax", wax}};
}

Painting whiteBall()
{
    // Fully lit at 0.4 of the radius towards the lamp, 0.9 in the middle; about 0.5 at the outline
    // nearest to the lamp, 0.36 at the far one.
    const V3 brightest = unit({-0.4 * std::sqrt(0.5), 0.4 * std::sqrt(0.5), std::sqrt(0.84)});
    return rendered([&](V3 n) {
        const double c = dot(n, brightest);
        return grey(((0.186 * c + 0.284) * c + 0.145) * c + 0.385);
    });
}

} // namespace pictures
