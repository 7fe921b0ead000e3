#include "generators/GLIF_Spiral.h"

#include "generators/Random.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFFactor", -20.0f, 20.0f, 1.41f},
    {"GLIFRandomWind", -50.0f, 50.0f, 11.76f},
    {"GLIFCurvature", 0, 10, 0},
    {"GLIFColorRangeMin", 0.0f, 1.0f, 0.02f},
    {"GLIFColorRangeMax", 0.0f, 1.0f, 0.59f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

constexpr double kTurn = 2 * std::numbers::pi;

// Neighbouring points of a circle are about 0.4 pixels apart.
double stepAlong(const SpiralCircle& circle)
{
    return 1.3 / (circle.radius * std::numbers::pi);
}

double valueAt(double t)
{
    return 1.0 - std::abs(2 * t / kTurn - 1.0);
}

double* pixelAt(double* field, int height, const SpiralCircle& circle, double cosine, double sine)
{
    // No coordinate is negative, nor beyond the picture.
    const auto x = static_cast<int>(circle.centerX + cosine * circle.radius + 0.5);
    const auto y = static_cast<int>(circle.centerY + sine * circle.radius + 0.5);
    return field + (y + static_cast<std::size_t>(x) * height);
}

double* pixelAtAngle(double* field, int height, const SpiralCircle& circle, double angle)
{
    return pixelAt(field, height, circle, std::cos(angle), std::sin(angle));
}

} // namespace

namespace generators {

void drawSpiralCircle(double* field, int height, const SpiralCircle& circle)
{
    const double step = stepAlong(circle);
    for (double t = 0; t < kTurn; t += step)
        *pixelAtAngle(field, height, circle, circle.startAngle + t) = valueAt(t);
}

// Turns a few points along the circle in place of computing their sines. The little that this errs
// by matters only close to the edge of a pixel, and there the plain way decides. A pixel keeps the
// value of its last point; the others are not computed.
void drawSpiralCircleQuickly(double* field, int height, const SpiralCircle& circle)
{
    const double step = stepAlong(circle);
    const double radius = circle.radius, start = circle.startAngle;
    // The sums t, which the points do not quite follow, and the start, which the angles are rounded
    // to.
    const double error = radius * (1e-13 * radius + 1e-15 * std::abs(start)) + 1e-9;
    if (!(error < 0.05))
        return drawSpiralCircle(field, height, circle);

    constexpr int kPoints = 4;
    double cosines[kPoints], sines[kPoints];
    for (int k = 0; k < kPoints; ++k) {
        cosines[k] = std::cos(start + k * step) * radius;
        sines[k] = std::sin(start + k * step) * radius;
    }
    const double turnCosine = std::cos(kPoints * step), turnSine = std::sin(kPoints * step);
    const double x0 = circle.centerX + 0.5, y0 = circle.centerY + 0.5;

    double* last = nullptr;
    double lastT = 0;
    for (double t = 0; t < kTurn;) {
        double xs[kPoints], ys[kPoints];
        for (int k = 0; k < kPoints; ++k) {
            xs[k] = x0 + cosines[k];
            ys[k] = y0 + sines[k];
            const double cosine = cosines[k] * turnCosine - sines[k] * turnSine;
            sines[k] = sines[k] * turnCosine + cosines[k] * turnSine;
            cosines[k] = cosine;
        }
        for (int k = 0; k < kPoints && t < kTurn; ++k, t += step) {
            const auto x = static_cast<int>(xs[k]), y = static_cast<int>(ys[k]);
            const double inX = xs[k] - x, inY = ys[k] - y;
            const bool isClear =
                (inX > error) & (inX < 1 - error) & (inY > error) & (inY < 1 - error);
            double* pixel = isClear ? field + (y + static_cast<std::size_t>(x) * height)
                                    : pixelAtAngle(field, height, circle, start + t);
            if (pixel != last && last)
                *last = valueAt(lastT);
            last = pixel;
            lastT = t;
        }
    }
    *last = valueAt(lastT);
}

} // namespace generators

GLIF_Spiral::GLIF_Spiral()
{
    _bNeedUpdateCashe = true;
}

const AttributeTable& GLIF_Spiral::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Spiral::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                             int height,
                                                             const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    readAttributes(attributes);
    GLIFUpdateCasheWidthHeight(attributes, size.width, size.height);
    return spiralGeneratorWidthHeight(size.width, size.height);
}

// Where circles cross a pixel, the outermost of them is seen. That none of its points falls into
// the pixel is as rare as it is hard to tell without drawing the circle.
PictureRef GLIF_Spiral::makeSample(const Sampling& sampling, const Dictionary& attributes)
{
    readAttributes(attributes);
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(sampling.shown());
    if (!bitmap || !renewPrefetchBuffer(sampling.shown().pixels()))
        return nullptr;
    const int centerX = sampling.size.width / 2, centerY = sampling.size.height / 2;
    const int outermost = std::min(centerX, centerY);
    const std::vector<double> starts = drawStartAngles(outermost);
    const auto valueOf = [&](double dx, double dy) {
        const double farthest = std::hypot(std::abs(dx) + 0.5, std::abs(dy) + 0.5);
        const double nearest =
            std::hypot(std::max(std::abs(dx) - 0.5, 0.0), std::max(std::abs(dy) - 0.5, 0.0));
        const int radius = static_cast<int>(std::min(farthest, outermost - 1.0));
        if (radius < std::max(nearest, 1.0))
            return kUnsetValue;
        const double turns = (std::atan2(dy, dx) - starts[radius - 1]) / kTurn;
        return valueAt((turns - std::floor(turns)) * kTurn);
    };
    const std::size_t height = sampling.rows.size();
    imaging::parallelRows(0, sampling.shown().width, 8, [&](int first, int last) {
        for (int x = first; x < last; ++x)
            for (std::size_t y = 0; y < height; ++y)
                // Row 0 of the field is at the bottom of the picture.
                _prefetchBuffer[x * height + y] =
                    valueOf(sampling.columns[x] - centerX,
                            sampling.size.height - 1 - sampling.rows[y] - centerY);
    });
    paintField(*bitmap);
    return pictureOverBackground(bitmap);
}

void GLIF_Spiral::readAttributes(const Dictionary& attributes)
{
    // What a host that omits a key gets; the table above is what the editor starts with.
    _fFactor = attributes.floatValue("GLIFFactor", 1.0f);
    _fRandomWind = attributes.floatValue("GLIFRandomWind", 1.5f);
    _iCurvature = attributes.intValue("GLIFCurvature", 0);
}

PictureRef GLIF_Spiral::spiralGeneratorWidthHeight(int width, int height)
{
    const PixelSize size = {width, height};
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    if (!bitmap || (_bNeedUpdateCashe && !renewPrefetchBuffer(size.pixels())))
        return nullptr;
    if (_bNeedUpdateCashe)
        compute([&] { computeField(size); });
    paintField(*bitmap);
    // The bitmap is laid out upside down: row 0 of the field is at the bottom of the picture.
    imaging::parallelRows(0, height / 2, 64, [&](int first, int last) {
        for (int y = first; y < last; ++y) {
            auto* row = bitmap->rowAs<std::uint32_t>(y);
            std::swap_ranges(row, row + width, bitmap->rowAs<std::uint32_t>(height - 1 - y));
        }
    });
    return pictureOverBackground(bitmap);
}

void GLIF_Spiral::computeField(PixelSize size)
{
    double* field = _prefetchBuffer.get();
    const auto height = static_cast<std::size_t>(size.height);
    imaging::parallelRows(0, size.width, 16, [&](int first, int last) {
        std::fill(field + first * height, field + last * height, kUnsetValue);
    });

    const int centerX = size.width / 2, centerY = size.height / 2;
    const int outermost = std::min(centerX, centerY);
    const std::vector<double> starts = drawStartAngles(outermost);
    for (int radius = 1; radius < outermost; ++radius) {
        foundation::checkpoint();
        const double share = static_cast<double>(radius) / outermost;
        foundation::reportProgress(share * share);
        drawSpiralCircleQuickly(field, size.height, {centerX, centerY, radius, starts[radius - 1]});
    }
}

// Of the circles from radius 1 on, each inside the outermost.
std::vector<double> GLIF_Spiral::drawStartAngles(int outermost) const
{
    const double curvature = (_fFactor > 0 ? 1.0 : -1.0) * _iCurvature * -0.01;
    const double turn = _fFactor / 100.0;
    const double wind = _fRandomWind * turn;
    std::vector<double> angles;
    double angle = 0;
    for (int radius = 1; radius < outermost;) {
        // Factors out of bounds add up to no angle at all: those circles start on the right.
        angles.push_back(std::isfinite(angle) ? angle : 0);
        ++radius;
        const int drawn = randomInt();
        angle = angle + turn + wind * (drawn % 100 - 50) / -100.0 + radius * curvature / outermost;
    }
    return angles;
}
