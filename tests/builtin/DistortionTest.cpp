// The warps: their maps, what they leave alone, how far they reach.
#include "tests/builtin/Positions.h"
#include "tests/support/Golden.h"

#include <cmath>
#include <limits>

using namespace support;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

const Point kCenter{40.25, 50.5};

Dictionary around(Dictionary inputs)
{
    inputs.set("inputCenter", Vector(kCenter.x, kCenter.y));
    return inputs;
}

Point rotated(Point p, double a)
{
    return {p.x * std::cos(a) - p.y * std::sin(a), p.x * std::sin(a) + p.y * std::cos(a)};
}

// source(v, d) from the vector to a pixel, both from the centre; the identity from d = radius on.
Mapping inCircle(std::string label, std::string filter, double radius, Dictionary inputs,
                 const std::function<Point(Point, double)>& source)
{
    inputs.set("inputRadius", radius);
    return {std::move(label), std::move(filter), around(std::move(inputs)), [=](Point p) {
                const Point v{p.x - kCenter.x, p.y - kCenter.y};
                const double d = std::hypot(v.x, v.y);
                const Point s = d < radius ? source(v, d) : v;
                return Sources{{kCenter.x + s.x, kCenter.y + s.y}};
            }};
}

// One whose sources stay on the ray from the centre, at another distance.
Mapping radial(std::string label, std::string filter, double radius, Dictionary inputs,
               const std::function<double(double)>& distance)
{
    return inCircle(std::move(label), std::move(filter), radius, std::move(inputs),
                    [=](Point v, double d) {
                        const double k = d > 0 ? distance(d) / d : 0;
                        return Point{v.x * k, v.y * k};
                    });
}

Mapping bump(std::string label, double radius, double scale)
{
    return radial(
        std::move(label), "CIBumpDistortion", radius, {{"inputScale", scale}},
        [=](double d) { return d * (1 - scale * std::pow(1 - std::pow(d / radius, 2), 2)); });
}

Mapping pinch(std::string label, double radius, double scale, double usedScale)
{
    return radial(std::move(label), "CIPinchDistortion", radius, {{"inputScale", scale}},
                  [=](double d) {
                      const double t = d / radius;
                      return radius * (std::pow(t, 1 / (1 + usedScale)) * (1 - t * t) + t * t * t);
                  });
}

Mapping torus(std::string label, double radius, double width, double refraction)
{
    return radial(std::move(label), "CITorusLensDistortion", radius,
                  {{"inputWidth", width}, {"inputRefraction", refraction}}, [=](double d) {
                      const double b = width / 2, q = (d - (radius - b)) / b;
                      if (std::abs(q) >= 1)
                          return d;
                      const double bent = std::asin(std::clamp(q / refraction, -1.0, 1.0));
                      const double delta = std::clamp(std::asin(q) - bent, -1.4, 1.4);
                      return d - b * std::sqrt(1 - q * q) * std::tan(delta);
                  });
}

Mapping linearBump(std::string label, double radius, double angle, double scale)
{
    return {std::move(label), "CIBumpDistortionLinear",
            around({{"inputRadius", radius}, {"inputAngle", angle}, {"inputScale", scale}}),
            [=](Point p) {
                // The band laid flat, so that it runs along x.
                Point v = rotated({p.x - kCenter.x, p.y - kCenter.y}, -angle);
                const double t = std::abs(v.y) / radius;
                if (t < 1)
                    v.y *= 1 - (1 - scale) / 2 * (1 - t * t) * (1 - t * t);
                const Point s = rotated(v, angle);
                return Sources{{kCenter.x + s.x, kCenter.y + s.y}};
            }};
}

Mapping vortex(std::string label, double radius, double turn)
{
    return {std::move(label), "CIVortexDistortion",
            around({{"inputRadius", radius}, {"inputAngle", turn}}), [=](Point p) {
                const Point v{p.x - kCenter.x, p.y - kCenter.y};
                const double d = std::hypot(v.x, v.y);
                const auto angle = [&](double t) {
                    return t < 1 ? turn * (1 - t) * (1 - t) / (1 + 128 * t) : 0;
                };
                // The slope of the angle, by its difference.
                const double t = d / radius, h = 1e-6;
                const double k = t * std::abs(angle(t + h) - angle(t - h)) / (2 * h);
                if (t < 1 && std::abs(k - std::round(k)) < 1e-3)
                    return Sources{}; // one sample more or less
                const int n = t < 1 ? int(std::clamp(std::ceil(k), 1.0, 8.0)) : 1;
                Sources sources;
                for (int i = 0; i < n; ++i) {
                    const double e = (i + 0.5) / n - 0.5, reach = 1 + e / d;
                    const Point s =
                        rotated({v.x * reach, v.y * reach}, -angle(std::abs(d + e) / radius));
                    sources.push_back({kCenter.x + s.x, kCenter.y + s.y});
                }
                return sources;
            }};
}

Mapping splash(std::string label, double radius)
{
    return {std::move(label), "CICircleSplashDistortion", around({{"inputRadius", radius}}),
            [=](Point p) {
                const Point v{p.x - kCenter.x, p.y - kCenter.y};
                const double k = std::min(1.0, radius / std::hypot(v.x, v.y));
                return Sources{{kCenter.x + v.x * k, kCenter.y + v.y * k}};
            }};
}

Mapping hole(std::string label, double radius)
{
    return {std::move(label), "CIHoleDistortion", around({{"inputRadius", radius}}), [=](Point p) {
                const Point v{p.x - kCenter.x, p.y - kCenter.y};
                const double d = std::hypot(v.x, v.y);
                if (d < radius - 0.5)
                    return Sources{{1e6, 1e6}};
                if (d < radius + 0.5)
                    return Sources{}; // the rim fades
                const double k = 1 - radius * radius / (d * d);
                return Sources{{kCenter.x + v.x * k, kCenter.y + v.y * k}};
            }};
}

Mapping wrap(std::string label, double radius, double angle)
{
    return {std::move(label), "CICircularWrap",
            around({{"inputRadius", radius}, {"inputAngle", angle}}), [=](Point p) {
                const Point v{p.x - kCenter.x, p.y - kCenter.y};
                // Clockwise from the seam at the bottom, as part of a turn.
                double w = 0.5 + (kPi / 2 + angle - std::atan2(v.y, v.x)) / (2 * kPi);
                w -= std::floor(w);
                return Sources{{std::clamp(kPositions.x + kPositions.width * w,
                                           kPositions.x + 0.502, kPositions.right() - 0.502),
                                kPositions.y + std::hypot(v.x, v.y) - radius}};
            }};
}

std::vector<Mapping> mappings()
{
    const auto twirl = [](std::string label, double radius, double angle) {
        return inCircle(
            std::move(label), "CITwirlDistortion", radius, {{"inputAngle", angle}},
            [=](Point v, double d) { return rotated(v, -angle * std::pow(1 - d / radius, 2)); });
    };
    return {
        bump("BumpMagnifies", 60, 0.5),
        bump("BumpShrinks", 45, -1),
        bump("BumpTurnsOver", 50, 1.7),
        linearBump("LinearBump", 35, 0, 0.5),
        linearBump("LinearBumpTurned", 30, 1.1, -0.7),
        linearBump("LinearBumpShrinks", 40, 4, 2.5),
        pinch("Pinch", 60, 0.5, 0.5),
        pinch("PinchBeyondItsLimit", 60, 70, 5),
        pinch("PinchBulges", 70, -0.6, -0.6),
        twirl("Twirl", 60, kPi),
        twirl("TwirlClockwise", 90, -9),
        vortex("Vortex", 80, 18 * kPi),
        vortex("VortexClockwise", 50, -30 * kPi),
        torus("TorusLens", 45, 25, 1.7),
        torus("TorusLensInsideOut", 45, 25, 0.6),
        torus("TorusLensOfNegativeGlass", 45, 20, -2),
        torus("TorusLensWithoutItsHole", 40, 60, 2.5),
        splash("Splash", 25),
        splash("SplashOfAPoint", 0),
        hole("Hole", 20),
        hole("HoleTooSmallToSee", 0),
        wrap("Wrap", 20, 0),
        wrap("WrapTurned", 10, 2),
        wrap("WrapAroundAPoint", 0, -40),
    };
}

class DistortionMap : public testing::TestWithParam<Mapping> {};

// The distances that a texture bends a picture by, straight from the definition.
Mapping glass(std::string label, int width, int height, Point origin, Point center, double scale)
{
    const auto height01 = [](int x, int y) { return 0.5 + 0.5 * std::sin(3.0 * x + 5.0 * y * y); };
    const BitmapRef texture = bitmapFrom(width, height, [=](int x, int y) {
        const float h = float(height01(x, height - 1 - y));
        return Rgba{h, h, h, 0.75f};
    });
    const auto texel = [=](int x, int y) {
        return height01((x % width + width) % width, (y % height + height) % height);
    };
    // At a position in the texture, measured from its corner.
    const auto relief = [=](double x, double y) {
        const int i = int(std::floor(x - 0.5)), j = int(std::floor(y - 0.5));
        const double f = x - 0.5 - i, g = y - 0.5 - j;
        return (texel(i, j) * (1 - f) + texel(i + 1, j) * f) * (1 - g) +
               (texel(i, j + 1) * (1 - f) + texel(i + 1, j + 1) * f) * g;
    };
    const Image image = Image::fromBitmap(texture, int(origin.x), int(origin.y));
    return {std::move(label),
            "CIGlassDistortion",
            {{"inputTexture", image.node()},
             {"inputCenter", Vector(center.x, center.y)},
             {"inputScale", scale}},
            [=](Point p) {
                const auto h = [&](int dx, int dy) {
                    return relief(p.x + dx - center.x + width / 2.0,
                                  p.y + dy - center.y + height / 2.0);
                };
                const double gx =
                    (h(1, 1) + 2 * h(1, 0) + h(1, -1) - h(-1, 1) - 2 * h(-1, 0) - h(-1, -1)) / 8;
                const double gy =
                    (h(1, 1) + 2 * h(0, 1) + h(-1, 1) - h(1, -1) - 2 * h(0, -1) - h(-1, -1)) / 8;
                return Sources{
                    {std::clamp(p.x + scale * gx, kPositions.x + 0.502, kPositions.right() - 0.502),
                     std::clamp(p.y + scale * gy, kPositions.y + 0.502, kPositions.top() - 0.502)}};
            }};
}

Rect extentOf(const char* filter, const Dictionary& inputs)
{
    return outputOf(filter, nullptr, with(inputs, positions())).extent();
}

bool sameAsSource(const Image& out)
{
    return compare(*render(out, kPositions), *renderWhole(positions())).largest == 0;
}

} // namespace

TEST_P(DistortionMap, IsTheFormula)
{
    expectMapping(GetParam());
}

INSTANTIATE_TEST_SUITE_P(, DistortionMap, testing::ValuesIn(mappings()),
                         [](const auto& info) { return info.param.label; });

TEST(GlassDistortion, FollowsTheSlopesOfItsRepeatedTexture)
{
    for (const Mapping& m :
         {glass("whole pixels", 16, 10, {0, 0}, {40, 50}, 30),
          glass("between pixels", 15, 11, {0, 0}, {40.3, -51.9}, 30),
          glass("moved and far away", 12, 14, {-70, 1033}, {1e6 + 0.25, -3e7}, 20),
          glass("larger than the picture", 300, 260, {5, -5}, {47, 52}, 10),
          glass("one column", 1, 9, {2, 3}, {40, 50}, 30)})
        expectMapping(m);
}

TEST(GlassDistortion, NeedsAReliefToBendAnything)
{
    const Image texture = image(picture("alpha-64x48"));
    const auto out = [&](const Image& glass, double scale) {
        Dictionary inputs = with({{"inputScale", scale}}, positions());
        if (glass)
            inputs.set("inputTexture", glass.node());
        return outputOf("CIGlassDistortion", nullptr, inputs);
    };
    for (const Image& same : {out({}, 200), out(texture.cropped({}), 200), out(texture, 0),
                              out(texture, -5), out(texture, std::nan(""))})
        EXPECT_TRUE(sameAsSource(same));
    EXPECT_FALSE(sameAsSource(out(texture, 5)));
    // A texture without end lies where it is: a stripe that begins at x = 40.
    const Image stripes = outputOf("CIStripesGenerator", nullptr,
                                   {{"inputCenter", Vector(40, 0)}, {"inputWidth", 1000}});
    const Image bent = out(stripes, 8);
    EXPECT_EQ(bent.extent(), kPositions);
    EXPECT_THAT(at(bent, 38, 50), IsColor(Rgba{38.5f, 50.5f, 0, 1}, 1e-4f));
    EXPECT_THAT(at(bent, 40, 50), IsColor(Rgba{44.5f, 50.5f, 0, 1}, 1e-4f));
}

TEST(Distortion, LeavesThePictureAloneOutsideItsReach)
{
    struct Idle {
        const char* filter;
        Dictionary inputs;
    };
    const double nan = std::nan("");
    for (const Idle& idle : std::vector<Idle>{
             {"CIBumpDistortion", {{"inputScale", 0}}},
             {"CIBumpDistortionLinear", {{"inputScale", 1}}},
             {"CIPinchDistortion", {{"inputScale", 0}}},
             {"CITwirlDistortion", {{"inputAngle", 0}}},
             {"CIVortexDistortion", {{"inputAngle", 0}}},
             {"CITorusLensDistortion", {{"inputRefraction", 1}}},
             {"CITorusLensDistortion", {{"inputWidth", -3}}},
             {"CICircleSplashDistortion", {{"inputRadius", 1e30}}},
         })
        EXPECT_TRUE(
            sameAsSource(outputOf(idle.filter, nullptr, with(around(idle.inputs), positions()))))
            << idle.filter;
    // Neither without a circle nor beside it, pixel for pixel.
    for (const char* name : {"CIBumpDistortion", "CIBumpDistortionLinear", "CIPinchDistortion",
                             "CITwirlDistortion", "CIVortexDistortion", "CITorusLensDistortion"}) {
        for (const double radius : {0.0, -20.0, nan, -kInfinity})
            EXPECT_TRUE(sameAsSource(
                outputOf(name, nullptr, with(around({{"inputRadius", radius}}), positions()))))
                << name << ' ' << radius;
        const Dictionary beside = {{"inputCenter", Vector(-40, -90)}, {"inputRadius", 90}};
        const Image out = outputOf(name, nullptr, with(beside, positions()));
        EXPECT_TRUE(sameAsSource(out)) << name;
        EXPECT_EQ(out.extent(), kPositions) << name;
    }
}

TEST(Distortion, ReachesAsFarAsItsCircle)
{
    for (const char* name : {"CIBumpDistortion", "CIPinchDistortion", "CITwirlDistortion",
                             "CIVortexDistortion", "CITorusLensDistortion"}) {
        const Dictionary right = {{"inputCenter", Vector(100.5, 40)}, {"inputRadius", 20.25}};
        EXPECT_EQ(extentOf(name, right), Rect::fromEdges(-13, 7, 121, 97)) << name;
        EXPECT_TRUE(extentOf(name, {{"inputRadius", kInfinity}}).isInfinite()) << name;
    }
    const Dictionary band = {{"inputCenter", Vector(100.5, 40)}, {"inputRadius", 20.25}};
    EXPECT_EQ(extentOf("CIBumpDistortionLinear", band), Rect::fromEdges(-34, -14, 128, 118));
    EXPECT_EQ(extentOf("CIHoleDistortion", band), Rect::fromEdges(-34, -14, 128, 118));
    EXPECT_EQ(extentOf("CIHoleDistortion", {{"inputRadius", -1}}),
              Rect::fromEdges(-14, 6, 108, 98));
    EXPECT_TRUE(extentOf("CICircleSplashDistortion", band).isInfinite());
    EXPECT_EQ(extentOf("CICircularWrap", {{"inputCenter", Vector(10, 20)}, {"inputRadius", 30}}),
              Rect::fromEdges(-111, -101, 131, 141));
    EXPECT_EQ(extentOf("CIGlassDistortion", {{"inputTexture", positions().node()}}), kPositions);
}

// A kink would show as a jump of the slope.
TEST(Distortion, MeetsThePictureSmoothlyAtTheRim)
{
    for (const auto& [name, inputs] : std::vector<std::pair<const char*, Dictionary>>{
             {"CIBumpDistortion", {{"inputScale", 1}}},
             {"CIBumpDistortionLinear", {{"inputAngle", kPi / 2}, {"inputScale", -1}}},
             {"CIPinchDistortion", {{"inputScale", 5}}},
             {"CITwirlDistortion", {{"inputAngle", 6}}},
             {"CIVortexDistortion", {{"inputAngle", 20}}}}) {
        Dictionary all = with(around(inputs), positions());
        all.set("inputRadius", 50);
        const Floats x = reds(*render(outputOf(name, nullptr, all), {80, 50, 20, 1}));
        // The rim is at 90.25.
        for (int i = 9; i < 13; ++i)
            EXPECT_NEAR(x[i + 1] - x[i], 1, 0.11) << name << ' ' << i;
    }
}

TEST(HoleDistortion, FadesAtTheRim)
{
    const Image out =
        outputOf("CIHoleDistortion", nullptr,
                 with({{"inputCenter", Vector(40, 50.5)}, {"inputRadius", 20.25}}, positions()));
    EXPECT_EQ(at(out, 59, 50).a, 0);
    EXPECT_NEAR(at(out, 60, 50).a, 0.75f, 1e-5f); // half a pixel in all, from 19.75 on
    EXPECT_EQ(at(out, 61, 50).a, 1);
}

TEST(CircularWrap, FadesAtBothRims)
{
    const Image out =
        outputOf("CICircularWrap", nullptr,
                 with({{"inputCenter", Vector(0, 0.5)}, {"inputRadius", 30.5}}, positions()));
    // To the left the picture's first quarter; half of a pixel beyond the lower edge.
    EXPECT_THAT(at(out, -36, 0), IsColor(Rgba{17, 12, 0, 1}, 1e-3f));
    EXPECT_NEAR(at(out, 30, 0).a, 0.5f, 1e-5f);
    EXPECT_EQ(at(out, 29, 0).a, 0);
    EXPECT_NEAR(at(out, 120, 0).a, 0.5f, 1e-5f);
}

// Inputs that have to be computed first are computed where they are read, and nowhere else is read.
TEST(Distortion, ReadsWhatItSaysItReads)
{
    const Image leaf = positions();
    const Image computed =
        leaf.translated(100, 0).translated(-100, 0).cropped(Rect::fromEdges(-13, 7, 107, 96));
    const Image same = Image::fromBitmap(renderWhole(computed), -13, 7);
    std::vector<Mapping> all = mappings();
    all.push_back(glass("Glass", 15, 11, {0, 0}, {40.3, -51.9}, 30));
    // Of opaque bytes it is known how far they bend.
    const Image relief = image(picture("edges-64x48"));
    all.push_back({"GlassOfBytes",
                   "CIGlassDistortion",
                   {{"inputTexture", relief.node()}, {"inputScale", 25}},
                   {}});
    for (const Mapping& m : all) {
        const Image a = outputOf(m.filter, nullptr, with(m.inputs, computed));
        const Image b = outputOf(m.filter, nullptr, with(m.inputs, same));
        for (const Rect& part : {Rect{38, 48, 5, 5}, Rect{60, 20, 9, 30}, Rect{-40, -20, 70, 40}})
            EXPECT_EQ(compare(*render(a, part), *render(b, part)).largest, 0) << m.label;
    }
}

namespace {

Dictionary middle(Dictionary inputs)
{
    inputs.set("inputCenter", Vector(48, 32));
    return inputs;
}

} // namespace

GOLDEN("CIBumpDistortion", "photo-96x64", middle({{"inputRadius", 30}, {"inputScale", 0.5}}),
       {.largest = 1});
GOLDEN("CIBumpDistortionLinear", "photo-96x64",
       middle({{"inputRadius", 30}, {"inputAngle", 0.5}, {"inputScale", 0}}), {.largest = 1});
GOLDEN("CICircleSplashDistortion", "photo-96x64", middle({{"inputRadius", 24}}), {.largest = 1});
GOLDEN("CICircularWrap", "photo-96x64",
       {{"inputCenter", Vector(48, 20)}, {"inputRadius", 10}, {"inputAngle", 0.4}}, {.largest = 1});
GOLDEN("CIHoleDistortion", "photo-96x64", middle({{"inputRadius", 15}}), {.largest = 1});
GOLDEN("CIPinchDistortion", "photo-96x64", middle({{"inputRadius", 40}, {"inputScale", 0.5}}),
       {.largest = 1});
GOLDEN("CITwirlDistortion", "photo-96x64", middle({{"inputRadius", 40}}), {.largest = 1});
GOLDEN("CIVortexDistortion", "edges-64x48", {{"inputCenter", Vector(32, 24)}, {"inputRadius", 40}},
       {.largest = 2});
GOLDEN("CITorusLensDistortion", "photo-96x64", middle({{"inputRadius", 28}, {"inputWidth", 16}}),
       {.largest = 1});

TEST(GlassDistortion, GoldenThroughRoundBumps)
{
    const BitmapRef bumps = bitmapFrom(24, 24, [](int x, int y) {
        const float h =
            0.5f - 0.25f * float(std::cos(kPi / 12 * (x + 0.5)) + std::cos(kPi / 12 * (y + 0.5)));
        return Rgba{h, h, h, 1};
    });
    expectGolden("glass-through-round-bumps",
                 *apply("CIGlassDistortion", picture("photo-96x64"),
                        middle({{"inputTexture", imageValue(bumps)}, {"inputScale", 80}})),
                 {.largest = 1});
}
