// Box, disc, motion and zoom blur against the sums that define them, and the filters that set a
// picture against its Gaussian blur.
#include "tests/builtin/OnePixel.h"
#include "tests/support/Golden.h"

#include <cmath>

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

// The filter's picture, computed whole, against the definition at a scattering of pixels and along
// the borders, for pictures that end away from the ends of tiles and of vectors.
void expectDefinition(const char* filter, const Dictionary& inputs, double tolerance,
                      const std::function<Color4(const Plane&, int x, int y)>& definition)
{
    for (const bool opaqueBytes : {true, false})
        for (const auto& [width, height] : {std::pair{541, 83}, std::pair{37, 130}, std::pair{1, 3}}) {
            const Plane plane(busy(width, height, opaqueBytes), -283, 41);
            const Image out = outputOf(filter, nullptr, [&] {
                Dictionary all = inputs;
                all.set("inputImage", plane.image().node());
                return all;
            }());
            const Rect e = out.extent();
            const BitmapRef whole = renderWhole(out);
            double worst = 0;
            int worstX = 0, worstY = 0;
            for (int y = 0; y < int(e.height); ++y)
                for (int x = 0; x < int(e.width); ++x) {
                    const unsigned scatter = unsigned(x) * 2654435761u + unsigned(y) * 40503u;
                    if (x % 256 > 1 && y % 32 > 1 && scatter % 61 != 0)
                        continue;
                    const int px = int(e.x) + x, py = int(e.y) + y;
                    const Color4 expected = definition(plane, px, py);
                    const Rgba p = pixel(*whole, x, whole->height() - 1 - y);
                    const Color4 actual = {p.r, p.g, p.b, p.a};
                    for (int c = 0; c < 4; ++c)
                        if (const double error = std::abs(actual[c] - expected[c]); error > worst)
                            worst = error, worstX = px, worstY = py;
                }
            EXPECT_LE(worst, tolerance) << filter << " of " << width << " x " << height
                                        << (opaqueBytes ? " bytes" : " floats") << " at " << worstX
                                        << ", " << worstY;
        }
}

} // namespace

TEST(BoxBlur, IsTheMeanOfASquare)
{
    for (const double radius : {0.3, 1.0, 2.5, 10.0, 33.25, 130.0, 300.5, 2100.0}) {
        const int reach = int(radius) + 1;
        const double part = radius - int(radius);
        const auto weight = [&](int k) { return std::abs(k) < reach ? 1 : part; };
        expectDefinition("CIBoxBlur", {{"inputRadius", radius}}, 2e-5,
                         [&](const Plane& plane, int x, int y) {
                             const Rect e = plane.extent();
                             Color4 sum{};
                             for (int v = std::max(y - reach, int(e.y));
                                  v <= std::min(y + reach, int(e.top()) - 1); ++v)
                                 for (int u = std::max(x - reach, int(e.x));
                                      u <= std::min(x + reach, int(e.right()) - 1); ++u)
                                     sum += plane.at(u, v) * (weight(u - x) * weight(v - y));
                             return sum * std::pow(2 * radius + 1, -2);
                         });
    }
}

GOLDEN("CIBoxBlur", "edges-64x48", {{"inputRadius", 2.5}}, {.largest = 1});
