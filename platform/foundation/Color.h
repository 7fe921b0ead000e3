// A colour: unpremultiplied red, green, blue and alpha as fractions, with the model it was made in.
#pragma once

#include <algorithm>
#include <cmath>

namespace foundation {

struct Color {
    // The space the components were given in. Both are used as they stand: calibrated and device
    // RGB have the same components here, so a conversion to calibrated RGB only changes the label.
    // A pattern has no components and cannot be converted.
    enum class Space { CalibratedRgb, DeviceRgb, Pattern };

    float red = 0, green = 0, blue = 0, alpha = 1;
    Space space = Space::CalibratedRgb;

    static constexpr Color rgb(float r, float g, float b, float a = 1) { return {r, g, b, a}; }
    static constexpr Color deviceRgb(float r, float g, float b, float a = 1)
    {
        return {r, g, b, a, Space::DeviceRgb};
    }
    static constexpr Color black() { return {0, 0, 0, 1}; }
    static constexpr Color white() { return {1, 1, 1, 1}; }
    static constexpr Color clear() { return {0, 0, 0, 0}; }

    // Hue, saturation, brightness and alpha as fractions; each is limited to 0…1 first (a
    // not-a-number counts as 0). Hue 1 is red again. The usual six-sector conversion.
    static Color hsb(float hue, float saturation, float brightness, float alpha = 1)
    {
        const auto limited = [](float v) { return v > 0 ? std::min(v, 1.0f) : 0.0f; };
        const float h = limited(hue), s = limited(saturation), v = limited(brightness);
        const float sector = h >= 1 ? 0.0f : h * 6.0f;
        const int i = static_cast<int>(sector);
        const float f = sector - static_cast<float>(i);
        const float p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
        const float a = limited(alpha);
        switch (i) {
        case 0:
            return {v, t, p, a};
        case 1:
            return {q, v, p, a};
        case 2:
            return {p, v, t, a};
        case 3:
            return {p, q, v, a};
        case 4:
            return {t, p, v, a};
        default:
            return {v, p, q, a};
        }
    }

    Color withAlpha(float a) const
    {
        Color c = *this;
        c.alpha = a;
        return c;
    }

    // Equality is of components: the space is how the colour was written down.
    friend bool operator==(const Color& a, const Color& b)
    {
        return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
    }
};

} // namespace foundation
