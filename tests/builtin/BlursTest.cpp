// Box, disc, motion and zoom blur against the sums that define them, and the filters that set a
// picture against its Gaussian blur.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include "platform/imaging/Kernel.h"

#include <cmath>
#include <cstring>
#include <optional>

using namespace support;
using foundation::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;

using Color4 = std::array<double, 4>;

Color4& operator+=(Color4& sum, const Color4& c)
{
    for (int i = 0; i < 4; ++i)
        sum[i] += c[i];
    return sum;
}
Color4 operator*(const Color4& c, double k)
{
    return {c[0] * k, c[1] * k, c[2] * k, c[3] * k};
}

// A bitmap in the plane, transparent outside, read in double precision.
class Plane {
public:
    Plane(const BitmapRef& bitmap, int left, int bottom)
        : _bitmap(bitmap), _left(left), _bottom(bottom)
    {
        for (int y = bitmap->height() - 1; y >= 0; --y)
            for (int x = 0; x < bitmap->width(); ++x) {
                const Rgba p = pixel(*bitmap, x, y);
                _pixels.push_back({p.r, p.g, p.b, p.a});
            }
    }

    Image image() const { return Image::fromBitmap(_bitmap, _left, _bottom); }
    Rect extent() const
    {
        return {double(_left), double(_bottom), double(_bitmap->width()),
                double(_bitmap->height())};
    }
    Color4 at(int x, int y) const
    {
        const int u = x - _left, v = y - _bottom;
        return u >= 0 && v >= 0 && u < _bitmap->width() && v < _bitmap->height()
                   ? _pixels[std::size_t(v) * _bitmap->width() + u]
                   : Color4{};
    }
    // The linear sample at a position.
    Color4 sample(double x, double y) const
    {
        const int u = int(std::floor(x - 0.5)), v = int(std::floor(y - 0.5));
        const double tx = x - 0.5 - u, ty = y - 0.5 - v;
        Color4 sum = at(u, v) * ((1 - tx) * (1 - ty));
        sum += at(u + 1, v) * (tx * (1 - ty));
        sum += at(u, v + 1) * ((1 - tx) * ty);
        return sum += at(u + 1, v + 1) * (tx * ty);
    }

private:
    BitmapRef _bitmap;
    int _left, _bottom;
    std::vector<Color4> _pixels; // from the bottom row up
};

// Noise, hard edges and lines; opaque bytes, or floats with holes and values beyond 1.
BitmapRef busy(int width, int height, bool opaqueBytes)
{
    const BitmapRef floats = bitmapFrom(width, height, [&](int x, int y) {
        const float noise = float((x * 7919 + y * 104729 + x * y * 31) % 251) / 250;
        const float check = (x / 9 + y / 7) % 2 ? 1.0f : 0.0f;
        if (opaqueBytes)
            return Rgba{noise, check, x % 16 == 3 ? 1.0f : 0.1f, 1};
        const float a = (x / 23 + y / 19) % 3 == 0 ? 0.0f : noise;
        return Rgba{noise * a, check * a, x % 16 == 3 ? 3.0f * a : 0, a};
    });
    return opaqueBytes ? converted(*floats, PixelFormat::Rgba8) : floats;
}

// The filter's picture against the definition at a scattering of pixels and at the borders, for
// pictures that end away from the ends of tiles and of vectors. Floats may have a tolerance of
// their own.
void expectDefinition(const char* filter, Dictionary inputs, double tolerance,
                      const std::function<Color4(const Plane&, int x, int y)>& definition,
                      std::optional<double> ofFloats = {})
{
    for (const bool opaqueBytes : {true, false})
        for (const auto& [width, height] :
             {std::pair{541, 83}, std::pair{37, 130}, std::pair{1, 3}}) {
            const Plane plane(busy(width, height, opaqueBytes), -283, 41);
            inputs.set("inputImage", plane.image().node());
            const Image out = outputOf(filter, nullptr, inputs);
            // Of a wide blur's extent only what lies near the picture.
            const Rect e = out.extent(), p = plane.extent();
            const int left = int(std::max(e.x, p.x - 30)), bottom = int(std::max(e.y, p.y - 30));
            const int right = int(std::min(e.right(), p.right() + 30));
            const int top = int(std::min(e.top(), p.top() + 30));
            const BitmapRef part = render(out, Rect::fromEdges(left, bottom, right, top));
            double worst = 0;
            int worstX = 0, worstY = 0;
            for (int y = bottom; y < top; ++y)
                for (int x = left; x < right; ++x) {
                    const unsigned scatter =
                        (unsigned(x) * 2654435761u + unsigned(y) * 40503u) >> 16;
                    const bool ends = x == left || x == right - 1 || x % 512 == 0;
                    if (scatter % (ends ? 8 : 256) != 0)
                        continue;
                    const Color4 expected = definition(plane, x, y);
                    const Rgba actual = pixel(*part, x - left, top - 1 - y);
                    const float components[] = {actual.r, actual.g, actual.b, actual.a};
                    for (int c = 0; c < 4; ++c)
                        if (const double error = std::abs(components[c] - expected[c]);
                            !(error <= worst))
                            worst = error, worstX = x, worstY = y;
                }
            EXPECT_LE(worst, opaqueBytes ? tolerance : ofFloats.value_or(tolerance))
                << filter << " of " << width << " x " << height
                << (opaqueBytes ? " bytes" : " floats") << " at " << worstX << ", " << worstY;
        }
}

// The sum over the pixels at most `reach` away, each with its weight.
template <class Weight>
Color4 sumAround(const Plane& plane, int x, int y, int reach, const Weight& weight)
{
    const Rect e = plane.extent();
    Color4 sum{};
    for (int v = std::max(y - reach, int(e.y)); v <= std::min(y + reach, int(e.top()) - 1); ++v)
        for (int u = std::max(x - reach, int(e.x)); u <= std::min(x + reach, int(e.right()) - 1);
             ++u)
            sum += plane.at(u, v) * weight(u - x, v - y);
    return sum;
}

// The picture far from a flat one's borders is as flat.
void expectFlat(const char* filter, const Dictionary& inputs)
{
    for (const PixelFormat format : {PixelFormat::Rgba8, PixelFormat::RgbaF}) {
        const BitmapRef flat = converted(*bitmapFrom(300, 200,
                                                     [](int, int) {
                                                         return Rgba{0.2f, 0.6f, 1, 1};
                                                     }),
                                         format);
        const Image out = outputOf(filter, flat, inputs);
        const Rect middle{140, 90, 20, 20};
        EXPECT_LT(compare(*render(out, middle), *render(image(flat), middle)).largest, 2e-6)
            << filter;
    }
}

} // namespace

TEST(BoxBlur, IsTheMeanOfASquare)
{
    for (const double radius : {0.3, 1.0, 2.5, 10.0, 33.25, 130.0, 300.5, 2100.0}) {
        const int reach = int(radius) + 1;
        SCOPED_TRACE(radius);
        const auto weight = [&](int k) { return std::abs(k) < reach ? 1 : radius - int(radius); };
        expectDefinition(
            "CIBoxBlur", {{"inputRadius", radius}}, 3e-6, [&](const Plane& plane, int x, int y) {
                const Color4 sum = sumAround(plane, x, y, reach,
                                             [&](int u, int v) { return weight(u) * weight(v); });
                return sum * std::pow(2 * radius + 1, -2);
            });
    }
}

TEST(DiscBlur, IsTheMeanOfADisc)
{
    for (const double radius : {0.75, 1.0, 2.6, 8.0, 17.5, 127.0, 140.25}) {
        const int reach = int(std::ceil(radius));
        const auto weight = [&](int u, int v) {
            return std::clamp(radius + 0.5 - std::hypot(u, v), 0.0, 1.0);
        };
        double sum = 0;
        for (int v = -reach; v <= reach; ++v)
            for (int u = -reach; u <= reach; ++u)
                sum += weight(u, v);
        expectDefinition("CIDiscBlur", {{"inputRadius", radius}}, 3e-6,
                         [&](const Plane& plane, int x, int y) {
                             return sumAround(plane, x, y, reach, weight) * (1 / sum);
                         });
    }
}

TEST(MotionBlur, IsTheMeanOfALine)
{
    for (const auto& [radius, angle] : {std::pair{20.0, 0.0},
                                        {7.0, kPi / 2},
                                        {0.4, 0.5},
                                        {9.5, -2.2},
                                        {20.0, 0.5},
                                        {300.0, 1.2}}) {
        const int n = int(std::ceil(radius));
        expectDefinition("CIMotionBlur", {{"inputRadius", radius}, {"inputAngle", angle}},
                         1.0 / 2048, [&](const Plane& plane, int x, int y) {
                             Color4 sum{};
                             for (int k = -n; k <= n; ++k) {
                                 const double t = radius * k / n;
                                 sum += plane.sample(x + 0.5 + t * std::cos(angle),
                                                     y + 0.5 + t * std::sin(angle));
                             }
                             return sum * (1.0 / (2 * n + 1));
                         });
    }
}

TEST(ZoomBlur, IsTheMeanOfARay)
{
    // Centres in the middle, at a distance that makes hundreds of samples, and beside the picture.
    for (const auto& [cx, cy, amount] : {std::tuple{0.0, 80.0, 20.0},
                                         {-1500.0, 300.0, 20.0},
                                         {-250.3, 2000.7, -35.0},
                                         {0.0, 80.0, -20.0},
                                         {10.0, 70.0, 150.0},
                                         {700.0, 90.0, -300.0}}) {
        const double kappa = amount / 100;
        SCOPED_TRACE(testing::Message() << "about " << cx << ", " << cy << " by " << amount);
        const auto mean = [&](const Plane& plane, int x, int y) {
            const double vx = x + 0.5 - cx, vy = y + 0.5 - cy;
            const double length = std::hypot(vx, vy) * std::abs(1 - std::exp(-kappa));
            const int n = int(std::clamp(std::ceil(length), 1.0, 256.0));
            Color4 sum{};
            for (int i = 0; i < n; ++i) {
                const double e = std::exp(-kappa * (i + 0.5) / n);
                sum += plane.sample(cx + vx * e, cy + vy * e);
            }
            return sum * (1.0 / n);
        };
        // Opaque bytes are read at rounded places, which shows most in noise of full contrast.
        // Pixels share their number of samples, of which floats show a quarter of a level.
        expectDefinition("CIZoomBlur", {{"inputCenter", Vector(cx, cy)}, {"inputAmount", amount}},
                         3.5 / 255, mean, 0.25 / 255);
    }
}

TEST(ZoomBlur, OfOpaqueBytesShowsNoDifference)
{
    const Dictionary enlarged = {{"inputTransform", foundation::AffineTransform::scaling(9, 8)}};
    const BitmapRef bytes = renderWhole(
        outputOf("CIAffineTransform", picture("photo-96x64"), enlarged).cropped({5, 4, 850, 500}),
        PixelFormat::Rgba8);
    const BitmapRef floats = converted(*bytes, PixelFormat::RgbaF);
    for (const Vector& center : {Vector(-1200, -40), Vector(430, 250), Vector(150, 2000)}) {
        const Dictionary inputs = {{"inputCenter", center}, {"inputAmount", 30}};
        const support::Difference d =
            compare(*apply("CIZoomBlur", bytes, inputs), *apply("CIZoomBlur", floats, inputs));
        EXPECT_LT(d.largest, 0.8 / 255) << d;
        EXPECT_LT(d.mean, 0.1 / 255) << d;
    }
}

TEST(Blurs, KeepAFlatPictureFlat)
{
    expectFlat("CIBoxBlur", {{"inputRadius", 33.3}});
    expectFlat("CIDiscBlur", {{"inputRadius", 12.7}});
    expectFlat("CIMotionBlur", {{"inputRadius", 21.5}, {"inputAngle", 0.7}});
    expectFlat("CIZoomBlur", {{"inputCenter", Vector(-100, 100)}, {"inputAmount", 60}});
    expectFlat("CIUnsharpMask", {});
    expectFlat("CISharpenLuminance", {});
    expectFlat("CIBloom", {});
    expectFlat("CIGloom", {});
}

TEST(Blurs, OfTilesAreTilesOfTheWhole)
{
    const Image wide = Image::fromBitmap(busy(1100, 90, true), -283, 41);
    const Image soft = Image::fromBitmap(busy(1100, 90, false), -283, 41);
    const std::pair<const char*, Dictionary> cases[] = {
        {"CIBoxBlur", {{"inputRadius", 250.5}}},
        {"CIDiscBlur", {{"inputRadius", 20.25}}},
        {"CIMotionBlur", {{"inputRadius", 30}, {"inputAngle", 0.7}}},
        {"CIZoomBlur", {{"inputCenter", Vector(-900, 200)}, {"inputAmount", 30}}},
        {"CISharpenLuminance", {}},
    };
    for (const Image& picture : {wide, soft})
        for (auto [filter, inputs] : cases) {
            inputs.set("inputImage", picture.node());
            const Image out = outputOf(filter, nullptr, inputs);
            const BitmapRef whole = render(out, {-283, 41, 1100, 90});
            for (const Rect& tile : {Rect{-280, 50, 400, 17}, Rect{100, 99, 650, 32}}) {
                const BitmapRef part = render(out, tile);
                const int dx = int(tile.x) + 283, dy = int(131 - tile.top());
                for (int y = 0; y < part->height(); ++y)
                    ASSERT_EQ(
                        std::memcmp(part->row(y), whole->row(dy + y) + 16 * dx, 16 * part->width()),
                        0)
                        << filter << ", row " << y << " of the tile at " << tile.x;
            }
        }
}

TEST(Blurs, GrowTheExtentAsFarAsTheyReach)
{
    const Image picture = Image::fromBitmap(busy(20, 10, true), 100, -50);
    const auto extent = [&](const char* filter, Dictionary inputs) {
        inputs.set("inputImage", picture.node());
        return outputOf(filter, nullptr, inputs).extent();
    };
    const auto grown = [](int dx, int dy) {
        return Rect::fromEdges(100 - dx, -50 - dy, 120 + dx, -40 + dy);
    };
    EXPECT_EQ(extent("CIBoxBlur", {{"inputRadius", 2.5}}), grown(3, 3));
    EXPECT_EQ(extent("CIDiscBlur", {{"inputRadius", 7}}), grown(7, 7));
    EXPECT_EQ(extent("CIMotionBlur", {{"inputRadius", 10}, {"inputAngle", kPi / 6}}), grown(9, 5));
    EXPECT_EQ(extent("CIMotionBlur", {{"inputRadius", 10}, {"inputAngle", kPi / 2}}), grown(0, 10));
    EXPECT_EQ(extent("CIBloom", {{"inputRadius", 1.5}}), grown(5, 5));
    for (const char* clamped : {"CIGloom", "CIUnsharpMask", "CISharpenLuminance"})
        EXPECT_EQ(extent(clamped, {}), grown(0, 0));
    // A zoom out from below the picture by e.
    EXPECT_EQ(extent("CIZoomBlur", {{"inputCenter", Vector(110, -60)}, {"inputAmount", 100}}),
              Rect::fromEdges(82, -50, 138, -5));
    // Nothing to do.
    for (const char* filter :
         {"CIBoxBlur", "CIDiscBlur", "CIMotionBlur", "CIBloom", "CIGloom", "CIUnsharpMask"})
        EXPECT_EQ(outputOf(filter, nullptr, {{"inputImage", picture.node()}, {"inputRadius", 0}}),
                  picture)
            << filter;
}

TEST(Blurs, TakeInfinitePictures)
{
    const Image stripes =
        outputOf("CIStripesGenerator", nullptr, {{"inputCenter", Vector(0, 0)}, {"inputWidth", 4}});
    for (const char* filter : {"CIBoxBlur", "CIDiscBlur", "CIMotionBlur", "CIZoomBlur",
                               "CIUnsharpMask", "CISharpenLuminance", "CIBloom", "CIGloom"}) {
        const Image out = outputOf(filter, nullptr, {{"inputImage", stripes.node()}});
        EXPECT_TRUE(out.extent().isInfinite()) << filter;
        EXPECT_NEAR(at(out, 1000, 7).a, 1, 1e-6) << filter;
    }
}

TEST(Sharpening, AddsWhatTheBlurTakesAway)
{
    // A step from 0.25 to 0.75 between columns 19 and 20.
    const BitmapRef step = bitmapFrom(40, 9, [](int x, int) {
        const float v = x < 20 ? 0.25f : 0.75f;
        return Rgba{v, v, v, 1};
    });
    const auto redAt = [&](const char* filter, const Dictionary& inputs, int x) {
        return at(outputOf(filter, step, inputs), x, 4).r;
    };
    const auto blurredAt = [&](double sigma, int x) {
        return at(imaging::gaussian(image(step), sigma, imaging::Border::Clamped), x, 4).r;
    };
    for (const int x : {0, 17, 20, 39}) {
        const float s = x < 20 ? 0.25f : 0.75f;
        EXPECT_NEAR(redAt("CIUnsharpMask", {{"inputRadius", 3}, {"inputIntensity", 0.8}}, x),
                    s + 0.8f * (s - blurredAt(3, x)), 1e-5);
        const float detail = 2 * (s - blurredAt(1.69, x));
        EXPECT_NEAR(redAt("CISharpenLuminance", {{"inputSharpness", 2}}, x),
                    s + detail / std::sqrt(1 + 25 * detail * detail), 1e-5);
    }
    // However strong, the halo of an edge stays below a fifth.
    EXPECT_LT(redAt("CISharpenLuminance", {{"inputSharpness", 1000}}, 20), 0.951f);
    // Below 0 is left out, above 1 is not.
    EXPECT_EQ(redAt("CIUnsharpMask", {{"inputIntensity", 50}}, 19), 0);
    EXPECT_GT(redAt("CIUnsharpMask", {{"inputIntensity", 50}}, 20), 1);
}

TEST(Sharpening, GivesAFlatCutoutNoRim)
{
    const BitmapRef cutout = bitmapFrom(40, 30, [](int x, int y) {
        const float a = x > 10 && x < 30 && y > 8 && y < 20 ? 1 : x == 10 ? 0.5f : 0;
        return Rgba{0.8f * a, 0.4f * a, 0.2f * a, a};
    });
    for (const char* filter : {"CIUnsharpMask", "CISharpenLuminance", "CIGloom"})
        EXPECT_LT(compare(*apply(filter, cutout, {}), *cutout).largest, 1e-5) << filter;
}

TEST(Glow, SpreadsLightAndSinksIt)
{
    const BitmapRef spot = bitmapFrom(41, 41, [](int x, int y) {
        const float v = std::hypot(x - 20, y - 20) < 6 ? 1 : 0.2f;
        return Rgba{v, v, v, 1};
    });
    const auto blurred = [&](imaging::Border border, int x) {
        return at(imaging::gaussian(image(spot), 4, border), x, 20);
    };
    for (const int x : {2, 11, 20, 39}) {
        const float s = pixel(*spot, x, 20).r;
        const Rgba wide = blurred(imaging::Border::Transparent, x);
        const Rgba bloom =
            at(outputOf("CIBloom", spot, {{"inputRadius", 4}, {"inputIntensity", 0.7}}), x, 20);
        EXPECT_NEAR(bloom.r, s + 0.7f * std::max(wide.r - s, 0.f), 1e-6);
        EXPECT_EQ(bloom.a, 1);
        const Rgba gloom =
            at(outputOf("CIGloom", spot, {{"inputRadius", 4}, {"inputIntensity", 0.7}}), x, 20);
        const float around = blurred(imaging::Border::Clamped, x).r;
        EXPECT_NEAR(gloom.r, s - 0.7f * std::max(s - around, 0.f), 1e-5);
    }
    // Beyond the border there is light, and alpha with it.
    const Rgba beyond = at(outputOf("CIBloom", spot, {{"inputRadius", 4}}), -1, 20);
    EXPECT_NEAR(beyond.r, 0.2f * beyond.a, 0.01);
    EXPECT_GT(beyond.a, 0.4f);
}

GOLDEN("CIBoxBlur", "edges-64x48", {{"inputRadius", 2.5}}, {.largest = 1});
GOLDEN("CIDiscBlur", "edges-64x48", {{"inputRadius", 3}}, {.largest = 1});
GOLDEN("CIMotionBlur", "photo-96x64", {{"inputRadius", 8}, {"inputAngle", 0.5}}, {.largest = 1});
GOLDEN("CIZoomBlur", "photo-96x64", {{"inputCenter", Vector(30, 40)}, {"inputAmount", 30}},
       {.largest = 1});
GOLDEN("CIUnsharpMask", "photo-96x64", {{"inputIntensity", 1}}, {.largest = 1});
GOLDEN("CISharpenLuminance", "photo-96x64", {{"inputSharpness", 2}}, {.largest = 1});
GOLDEN("CIBloom", "alpha-64x48", {{"inputRadius", 4}}, {.largest = 1});
GOLDEN("CIGloom", "photo-96x64", {{"inputRadius", 4}}, {.largest = 1});
