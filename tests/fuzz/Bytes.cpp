#include "tests/fuzz/Bytes.h"

#include "platform/imaging/Image.h"

#include <iterator>
#include <limits>
#include <random>

namespace fuzz {

using foundation::Value;

std::uint8_t Bytes::byte()
{
    if (_rest.empty())
        return 0;
    const auto b = std::uint8_t(_rest.front());
    _rest.remove_prefix(1);
    return b;
}

std::uint32_t Bytes::word()
{
    std::uint32_t w = 0;
    for (int i = 0; i < 4; ++i)
        w = w << 8 | byte();
    return w;
}

std::size_t Bytes::pick(std::size_t count)
{
    if (count < 2)
        return 0;
    return (count <= 256 ? byte() : word()) % count;
}

double Bytes::number(double low, double high)
{
    static constexpr double kOdd[] = {0,
                                      -1,
                                      0.5,
                                      1e-30,
                                      1e9,
                                      -1e9,
                                      2147483648.0,
                                      1e38,
                                      -1e300,
                                      std::numeric_limits<double>::infinity(),
                                      -std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::quiet_NaN()};
    const double t = word() / 4294967295.0;
    switch (pick(8)) {
    case 0:
        return low;
    case 1:
        return high;
    case 2:
        return kOdd[pick(std::size(kOdd))];
    case 3:
        return low - (high - low) * 3 * t;
    case 4:
        return high + (high - low) * 30 * t;
    default:
        return low + (high - low) * t;
    }
}

Value Bytes::value(std::string_view attributeClass, double low, double high)
{
    static constexpr std::string_view kClasses[] = {"NSNumber",          "CIVector", "CIColor",
                                                    "NSAffineTransform", "CIImage",  "other"};
    if (oneIn(32))
        attributeClass = kClasses[pick(std::size(kClasses))];
    if (attributeClass == "NSNumber")
        return number(low, high);
    if (attributeClass == "CIVector") {
        const double x = number(low, high), y = number(low, high);
        if (!oneIn(4))
            return foundation::Vector(x, y);
        const double z = number(low, high), w = number(low, high);
        return foundation::Vector(x, y, z, w);
    }
    if (attributeClass == "CIColor") {
        foundation::Color color;
        for (float foundation::Color::*c : {&foundation::Color::red, &foundation::Color::green,
                                            &foundation::Color::blue, &foundation::Color::alpha})
            color.*c = float(number(0, 1));
        return color;
    }
    if (attributeClass == "NSAffineTransform") {
        foundation::AffineTransform t;
        for (double foundation::AffineTransform::*m :
             {&foundation::AffineTransform::m11, &foundation::AffineTransform::m12,
              &foundation::AffineTransform::m21, &foundation::AffineTransform::m22})
            t.*m = number(-2, 2);
        t.tX = number(-50, 50);
        t.tY = number(-50, 50);
        return t;
    }
    if (attributeClass == "CIImage")
        return imaging::Image::fromBitmap(bitmap(), int(pick(200)) - 100, int(pick(200)) - 100)
            .node();
    return "a text";
}

imaging::BitmapRef Bytes::bitmap()
{
    const auto made = imaging::Bitmap::make(1 + int(pick(64)), 1 + int(pick(64)),
                                            oneIn(4) ? imaging::PixelFormat::Rgba16
                                                     : imaging::PixelFormat::Rgba8);
    const bool opaque = !oneIn(3);
    std::minstd_rand random(word());
    for (int y = 0; y < made->height(); ++y) {
        for (int i = 0; i < made->width() * bytesPerPixel(made->format()); ++i)
            made->rowAs<std::uint8_t>(y)[i] = std::uint8_t(random() >> 8);
        for (int x = 0; opaque && x < made->width(); ++x) {
            if (made->format() == imaging::PixelFormat::Rgba8)
                made->rowAs<std::uint8_t>(y)[4 * x + 3] = 255;
            else
                made->rowAs<std::uint16_t>(y)[4 * x + 3] = 65535;
        }
    }
    return made;
}

} // namespace fuzz
