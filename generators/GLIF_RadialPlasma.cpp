#include "generators/GLIF_RadialPlasma.h"

#include "generators/Random.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numbers>
#include <string>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFFadeOut", -1.0f, 1.0f, 0.0f},
    {"GLIFRoughness", 1.0f, 20.0f, 3.35f},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.52f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.89f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

constexpr double kPi = std::numbers::pi;
// The quarters of a ring, in the order in which they are divided.
constexpr double kQuarters[][2] = {
    {0, kPi / 2}, {kPi / 2, kPi}, {kPi, kPi * 3.0 * 0.5}, {kPi * 3.0 * 0.5, 2 * kPi}};
// Angles closer than this are not divided, however long the arc between them is.
constexpr double kFinestAngle = 0.002;
constexpr double kRingDistance = 0.7;

std::uint8_t mean(std::uint8_t a, std::uint8_t b)
{
    return static_cast<std::uint8_t>((a + b) / 2);
}

// All rings are divided at the same angles, so their sines are computed once.
struct RingPlan {
    struct Middle {
        std::uint16_t from, at, to; // indices of angles
    };

    RingPlan()
    {
        for (const auto& [angle1, angle2] : kQuarters) {
            const std::uint16_t from = add(angle1);
            divide(angle1, angle2, from, add(angle2));
        }
    }

    std::vector<double> cosines, sines; // by angle
    std::vector<Middle> middles;        // in the order of the random draws

private:
    std::uint16_t add(double angle)
    {
        cosines.push_back(std::cos(angle));
        sines.push_back(std::sin(angle));
        return static_cast<std::uint16_t>(cosines.size() - 1);
    }

    void divide(double angle1, double angle2, std::uint16_t from, std::uint16_t to)
    {
        if (std::abs(angle1 - angle2) <= kFinestAngle)
            return;
        const double middle = 0.5 * (angle1 + angle2);
        const std::uint16_t at = add(middle);
        middles.push_back({from, at, to});
        divide(angle1, middle, from, at);
        divide(middle, angle2, at, to);
    }
};

} // namespace

GLIF_RadialPlasma::GLIF_RadialPlasma()
{
    _bNeedUpdateCashe = true;
}

const AttributeTable& GLIF_RadialPlasma::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_RadialPlasma::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference,
                                                                   int width, int height,
                                                                   const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _fadeOut = attributes.floatValue("GLIFFadeOut", 0.0f);
    _roughness = attributes.floatValue("GLIFRoughness", 10.0f);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    return radialPlasmaGeneratorWidthHeight(size.width, size.height);
}

PictureRef GLIF_RadialPlasma::radialPlasmaGeneratorWidthHeight(int width, int height)
{
    const PixelSize size = {width, height};
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    if (!bitmap || (_bNeedUpdateCashe && !(beginDisc(size) && renewPrefetchBuffer(size.pixels()))))
        return nullptr;
    if (!_bNeedUpdateCashe) {
        // A seed that wrapped around to 0 shows only in the picture that it was drawn for.
        paintField(*bitmap, 0);
        return pictureOverBackground(bitmap);
    }
    return compute([&] {
        growDisc();
        storeField();
        paintField(*bitmap);
        return pictureOverBackground(bitmap);
    });
}

bool GLIF_RadialPlasma::beginDisc(PixelSize size)
{
    _iWeight = size.width;
    _iHeight = size.height;
    _sizeOfBuffer = static_cast<std::int64_t>(size.pixels());
    _setToZero.clear();
    screen.reset(new (std::nothrow) std::uint8_t[size.pixels() + 1]());
    if (!screen)
        _preAttr.clear();
    return screen != nullptr;
}

double GLIF_RadialPlasma::Distance(int x1, int y1, int x2, int y2)
{
    const std::int64_t dx = std::int64_t{x1} - x2, dy = std::int64_t{y1} - y2;
    return std::sqrt(static_cast<double>(dx * dx + dy * dy));
}

int GLIF_RadialPlasma::FindX(double angle, double radius)
{
    return truncToInt(std::cos(angle) * radius);
}

int GLIF_RadialPlasma::FindY(double angle, double radius)
{
    return truncToInt(std::sin(angle) * radius);
}

std::uint8_t GLIF_RadialPlasma::RandOf(std::uint8_t mean, double distance) const
{
    const int drawn = randomInt();
    const int span = truncToInt(distance * _roughness);
    // Of a roughness below 1 nothing may be left to divide by: then there is no offset.
    const std::int64_t offset = span == 0 ? 0 : drawn % span;
    const std::int64_t value =
        offset + mean - truncToInt(distance * _roughness * 0.5) - truncToInt(distance * _fadeOut);
    return static_cast<std::uint8_t>(std::clamp<std::int64_t>(value, 1, 255));
}

std::uint8_t GLIF_RadialPlasma::GetPixelAtXAtY(int x, int y) const
{
    return screen[static_cast<std::int64_t>(x) * _iHeight + y];
}

void GLIF_RadialPlasma::PutPixelAtXAtYColor(int x, int y, std::uint8_t color)
{
    const std::int64_t index = static_cast<std::int64_t>(x) * _iHeight + y;
    if (index < 0 || index > _sizeOfBuffer)
        return foundation::log("Buffer out of range (x = " + std::to_string(x) +
                               ", y = " + std::to_string(y) + ")");
    screen[index] = color;
    if (color == 0)
        _setToZero.push_back(index);
}

void GLIF_RadialPlasma::LineOut(int x1, int y1, int x2, int y2)
{
    const int mx = (x1 + x2) / 2, my = (y1 + y2) / 2;
    if ((mx == x2 || mx == x1) && (my == y2 || my == y1))
        return;
    const std::uint8_t between = mean(GetPixelAtXAtY(x1, y1), GetPixelAtXAtY(x2, y2));
    PutPixelAtXAtYColor(mx, my, RandOf(between, Distance(x1, y1, mx, my)));
    LineOut(x1, y1, mx, my);
    LineOut(mx, my, x2, y2);
}

void GLIF_RadialPlasma::RoundOutAng1Ang2Radius(double angle1, double angle2, double radius)
{
    if (std::abs(angle1 - angle2) <= kFinestAngle)
        return;
    const int cx = _iWeight / 2, cy = _iHeight / 2;
    const double middle = 0.5 * (angle1 + angle2);
    const int mx = FindX(middle, radius), my = FindY(middle, radius);
    if (GetPixelAtXAtY(cx + mx, cy + my) == 0) {
        const int x1 = FindX(angle1, radius), y1 = FindY(angle1, radius);
        const int x2 = FindX(angle2, radius), y2 = FindY(angle2, radius);
        const std::uint8_t between =
            mean(GetPixelAtXAtY(cx + x1, cy + y1), GetPixelAtXAtY(cx + x2, cy + y2));
        const auto distance = static_cast<float>(Distance(x1, y1, mx, my));
        PutPixelAtXAtYColor(cx + mx, cy + my, RandOf(between, distance));
    }
    RoundOutAng1Ang2Radius(angle1, middle, radius);
    RoundOutAng1Ang2Radius(middle, angle2, radius);
}

std::uint8_t GLIF_RadialPlasma::NearIn(double angle, double radius) const
{
    const int cx = _iWeight / 2, cy = _iHeight / 2;
    const auto valueAt = [&](double at) {
        return GetPixelAtXAtY(cx + FindX(angle, at), cy + FindY(angle, at));
    };
    // At the centre the search ends, whatever it has found.
    double inner = std::min(cx, cy);
    while (inner > 0 && valueAt(inner) != 0)
        inner = std::max(inner - std::numbers::sqrt2, 0.0);
    const double distance = Distance(FindX(angle, radius), FindY(angle, radius),
                                     FindX(angle, inner), FindY(angle, inner));
    const int span = truncToInt(distance * _roughness);
    std::int64_t value = 0;
    // No number of draws may be enough when the span is small; some are, and the nearest value.
    for (int attempt = 0; attempt < 1000 && (value < 1 || value > 255); ++attempt) {
        const int drawn = randomInt();
        value = (span == 0 ? 0 : drawn % span) + std::int64_t{valueAt(inner)} -
                truncToInt(distance * _roughness * 0.5);
    }
    return static_cast<std::uint8_t>(std::clamp<std::int64_t>(value, 1, 255));
}

void GLIF_RadialPlasma::growDisc()
{
    const int cx = _iWeight / 2, cy = _iHeight / 2;
    const int outermost = std::min(cx, cy);
    const int left = std::max(cx - outermost, 0), right = std::min(cx + outermost, _iWeight - 1);
    const int top = std::max(cy - outermost, 0), bottom = std::min(cy + outermost, _iHeight - 1);
    const auto seed = [&](int x, int y) {
        const int drawn = randomInt();
        const int faded = truncToInt(outermost * _fadeOut);
        PutPixelAtXAtYColor(x, y, foundation::lowByte(drawn % 255 + 1.0 - faded));
    };
    PutPixelAtXAtYColor(cx, cy, 255);
    seed(cx, cy);
    seed(left, cy);
    seed(right, cy);
    seed(cx, top);
    seed(cx, bottom);

    LineOut(cx, cy, right, cy);
    LineOut(cx, cy, left, cy);
    LineOut(cx, cy, cx, bottom);
    LineOut(cx, cy, cx, top);

    growRings(outermost);
}

// RoundOut of all quarters of all rings. One thread does it: whether a number is drawn for a pixel
// depends on what was drawn before.
void GLIF_RadialPlasma::growRings(int outermost)
{
    const RingPlan plan;
    const std::size_t angles = plan.cosines.size();
    std::vector<int> xs(angles), ys(angles);
    std::vector<std::ptrdiff_t> offsets(angles); // from the centre's entry
    std::uint8_t* center =
        screen.get() + (static_cast<std::ptrdiff_t>(_iWeight / 2) * _iHeight + _iHeight / 2);
    for (double radius = 1; outermost > radius; radius += kRingDistance) {
        foundation::checkpoint();
        foundation::reportProgress(radius / outermost);
        for (std::size_t i = 0; i < angles; ++i) {
            xs[i] = static_cast<int>(plan.cosines[i] * radius);
            ys[i] = static_cast<int>(plan.sines[i] * radius);
            offsets[i] = static_cast<std::ptrdiff_t>(xs[i]) * _iHeight + ys[i];
        }
        for (const auto& [from, at, to] : plan.middles) {
            std::uint8_t& pixel = center[offsets[at]];
            if (pixel != 0)
                continue;
            const auto distance = static_cast<float>(Distance(xs[from], ys[from], xs[at], ys[at]));
            pixel = RandOf(mean(center[offsets[from]], center[offsets[to]]), distance);
        }
    }
}

void GLIF_RadialPlasma::storeField()
{
    std::array<double, 256> values;
    for (int value = 1; value < 256; ++value)
        values[value] = static_cast<float>(value / 255.0);
    values[0] = kUnsetValue;
    double* field = _prefetchBuffer.get();
    const auto height = static_cast<std::size_t>(_iHeight);
    imaging::parallelRows(0, _iWeight, 16, [&](int first, int last) {
        for (std::size_t i = first * height; i < last * height; ++i)
            field[i] = values[screen[i]];
    });
    for (const std::int64_t index : _setToZero)
        if (index < _sizeOfBuffer && screen[index] == 0)
            field[index] = 0;
    screen.reset();
}
