#include "generators/ColorSchemes.h"

#include "platform/foundation/Numbers.h"

#include <bit>
#include <cmath>

namespace generators {

using foundation::Color;
using foundation::truncToInt;

namespace {

static_assert(std::endian::native == std::endian::little, "pixel words are written low byte first");

Color hsb(double hue, double saturation, double brightness)
{
    return Color::hsb(static_cast<float>(hue), static_cast<float>(saturation),
                      static_cast<float>(brightness));
}

// Percent of the hue circle, with the sign of the fraction.
int percent(double fraction)
{
    return truncToInt(fraction * 100) % 100;
}

constexpr std::uint32_t rgbaWord(std::uint32_t red, std::uint32_t green, std::uint32_t blue)
{
    return 0xFF000000 | (blue & 255) << 16 | (green & 255) << 8 | (red & 255);
}

// Schemes 1 and 2: the wheel in equal parts, the shade stepping inside each.
double dividedHue(double position, double keyHue, int parts)
{
    const int key = percent(keyHue);
    const int distance = (percent(position) - key) % 100;
    const int wrapped = distance < 0 ? (distance + 100) % 100 : distance;
    const double part = std::floor(wrapped / 100.0 * parts);
    const double hue = (parts == 4 ? part * 0.25 : part / parts) + key / 100.0;
    // Only a position below the key wraps: past the end of the wheel the others stay at its last
    // hue.
    return distance < 0 ? percent(hue) / 100.0 : hue;
}

double distanceFromKey(double position, double keyHue)
{
    const int distance = (percent(position) - percent(keyHue)) % 100;
    return (distance < 0 ? (distance + 100) % 100 : distance) / 100.0;
}

double complementaryHue(double position, double keyHue, double& saturation, double& brightness)
{
    const int at = percent(position);
    const int key = percent(keyHue);
    const double keyFraction = key / 100.0;
    const double complement = (key + 50) % 100 / 100.0;
    const int low = (key + 25) % 100;
    const int high = (key + 75) % 100;
    if (low < high) {
        const int shift = at < low ? 25 : at > high ? -25 : 0;
        computeColorQuadSplit(low / 100.0, high / 100.0, (at + shift) / 100.0, saturation,
                              brightness);
        return shift == 0 ? complement : keyFraction;
    }
    // The key's half lies in one piece. The value is shifted inside it as well as outside.
    const int keyLow = (key - 25) % 100;
    computeColorQuadSplit(keyLow / 100.0, low / 100.0, (at + 25) / 100.0, saturation, brightness);
    return keyLow <= at && at <= low ? keyFraction : complement;
}

} // namespace

Color computeSchemeColor(double position, double keyHue, std::int32_t scheme)
{
    double saturation = 1, brightness = 1;
    double hue = keyHue;
    switch (scheme) {
    case 0:
        hue = complementaryHue(position, keyHue, saturation, brightness);
        break;
    case 1:
    case 2:
        hue = dividedHue(position, keyHue, scheme + 2);
        computeColorSBSplit(distanceFromKey(position, keyHue), keyHue, saturation, brightness);
        break;
    case 3: {
        const int shade = truncToInt(position * 4.0);
        saturation = shade == 1 || shade == 3 ? 0.5 : 1.0;
        brightness = shade == 2 || shade == 3 ? 0.5 : 1.0;
        break;
    }
    case 4:
        brightness = position;
        break;
    case 5:
        saturation = position;
        break;
    case 6:
        saturation = brightness = position / 5 + 0.8;
        break;
    default:
        hue = position;
        break;
    }
    return hsb(hue, saturation, brightness);
}

void computeColorQuadSplit(double a, double b, double value, double& saturation, double& brightness)
{
    if (!(value > a) || !(b > value))
        return;
    const double inside = value - a;
    const double width = b - a;
    const auto shade = [&](double s, double v) {
        saturation = s;
        brightness = v;
    };
    if (inside < width * 0.25)
        shade(0.5, 0.5);
    else if (inside < (width + width) * 0.25)
        shade(0.5, 1.0);
    else if (inside < width * 3.0 * 0.25)
        shade(1.0, 0.5);
    else if (inside < width * 4.0 * 0.25)
        shade(1.0, 1.0);
}

void computeColorSBSplit(double value, double /*unused*/, double& saturation, double& brightness)
{
    const int shade = truncToInt(value * 3.0 * 4.0) % 4;
    if (shade < 0)
        return;
    saturation = shade < 2 ? 0.5 : 1.0;
    brightness = shade % 2 == 0 ? 0.5 : 1.0;
}

Color computeColor(double position, double rangeMin, double rangeMax)
{
    return hsb(rangeMin + (rangeMax - rangeMin) * position, 1, 1);
}

void computeColorToMem(std::uint32_t& destination, double position, double rangeMin,
                       double rangeMax)
{
    const double hue = (rangeMax - rangeMin) * position + rangeMin;
    // Unsigned, so that a position far outside the wheel wraps instead of overflowing.
    const auto x = static_cast<std::uint32_t>(truncToInt(hue * 1530.0));
    switch (truncToInt(hue * 6.0)) {
    case 0:
        destination = rgbaWord(255, x, 0);
        break;
    case 1:
        destination = rgbaWord(510 - x, 255, 0);
        break;
    case 2:
        destination = rgbaWord(0, 255, x - 510);
        break;
    case 3:
        destination = rgbaWord(0, 1020 - x, 255);
        break;
    case 4:
        destination = rgbaWord(x - 1020, 0, 255);
        break;
    default:
        destination = rgbaWord(255, 0, 1530 - x);
        break;
    }
}

namespace {

// truncToInt without branches.
inline std::int32_t truncLane(double value)
{
    value = value == value ? value : 0.0;
    value = value > -2147483648.0 ? value : -2147483648.0;
    value = value < 2147483647.0 ? value : 2147483647.0;
    return static_cast<std::int32_t>(value);
}

constexpr std::size_t kBlock = 64;

// Two straight loops, each of which the compiler turns into vector code: sectors and steps from
// doubles, then words from integers.
void sectorsAndSteps(std::int32_t* __restrict sectors, std::int32_t* __restrict steps,
                     const double* __restrict positions, std::size_t count, double rangeMin,
                     double rangeMax)
{
    for (std::size_t i = 0; i < count; ++i) {
        const double hue = (rangeMax - rangeMin) * positions[i] + rangeMin;
        sectors[i] = truncLane(hue * 6.0);
        steps[i] = truncLane(hue * 1530.0);
    }
}

void wheelWords(std::uint32_t* __restrict words, const std::int32_t* __restrict sectors,
                const std::int32_t* __restrict steps, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const auto x = static_cast<std::uint32_t>(steps[i]);
        // All ones in the sector, else 0. Selecting by these keeps branches out of the loop.
        const auto in = [&](std::int32_t sector) {
            return -static_cast<std::uint32_t>(sectors[i] == sector);
        };
        const std::uint32_t in0 = in(0), in1 = in(1), in2 = in(2), in3 = in(3), in4 = in(4);
        const std::uint32_t last = ~(in0 | in1 | in2 | in3 | in4);
        const std::uint32_t red = (255 & (in0 | last)) | ((510 - x) & in1) | ((x - 1020) & in4);
        const std::uint32_t green = (255 & (in1 | in2)) | (x & in0) | ((1020 - x) & in3);
        const std::uint32_t blue = (255 & (in3 | in4)) | ((x - 510) & in2) | ((1530 - x) & last);
        words[i] = rgbaWord(red, green, blue);
    }
}

} // namespace

void computeColorsToMem(std::uint32_t* destination, const double* positions, std::size_t count,
                        double rangeMin, double rangeMax)
{
    std::int32_t sectors[kBlock];
    std::int32_t steps[kBlock];
    while (count > 0) {
        const std::size_t n = count < kBlock ? count : kBlock;
        sectorsAndSteps(sectors, steps, positions, n, rangeMin, rangeMax);
        wheelWords(destination, sectors, steps, n);
        destination += n;
        positions += n;
        count -= n;
    }
}

Color computeBWColor(double brightness, double hue)
{
    return hsb(hue, 1, brightness);
}

void rotatePoint(double* x, double* y, double angle, double centerX, double centerY)
{
    if (!x || !y)
        return;
    const double dx = *x - centerX;
    const double dy = *y - centerY;
    *x = std::cos(angle) * dx - std::sin(angle) * dy + centerX;
    *y = std::sin(angle) * dx + std::cos(angle) * dy + centerY;
}

} // namespace generators
