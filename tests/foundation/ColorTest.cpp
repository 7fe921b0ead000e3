// Hue, saturation and brightness to red, green and blue.
#include "platform/foundation/Color.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using foundation::Color;

void expectRgb(const Color& c, float r, float g, float b)
{
    EXPECT_NEAR(c.red, r, 1e-6f);
    EXPECT_NEAR(c.green, g, 1e-6f);
    EXPECT_NEAR(c.blue, b, 1e-6f);
}

TEST(ColorHsb, WalksRoundTheSixCorners)
{
    expectRgb(Color::hsb(0, 1, 1), 1, 0, 0);
    expectRgb(Color::hsb(1 / 6.0f, 1, 1), 1, 1, 0);
    expectRgb(Color::hsb(2 / 6.0f, 1, 1), 0, 1, 0);
    expectRgb(Color::hsb(3 / 6.0f, 1, 1), 0, 1, 1);
    expectRgb(Color::hsb(4 / 6.0f, 1, 1), 0, 0, 1);
    expectRgb(Color::hsb(5 / 6.0f, 1, 1), 1, 0, 1);
    expectRgb(Color::hsb(1, 1, 1), 1, 0, 0);
}

TEST(ColorHsb, KeepsBrightnessSaturationAndHueForEveryHue)
{
    for (int i = 0; i <= 360; ++i) {
        SCOPED_TRACE(i);
        const float hue = static_cast<float>(i) / 360;
        const Color c = Color::hsb(hue, 0.75f, 0.5f, 0.25f);
        const float high = std::max({c.red, c.green, c.blue});
        const float low = std::min({c.red, c.green, c.blue});
        EXPECT_NEAR(high, 0.5f, 1e-6f);
        EXPECT_NEAR((high - low) / high, 0.75f, 1e-5f);
        EXPECT_EQ(c.alpha, 0.25f);
        // The hue back from the components by the angle of the largest one.
        const float span = high - low;
        float back = c.red == high     ? (c.green - c.blue) / span
                     : c.green == high ? 2 + (c.blue - c.red) / span
                                       : 4 + (c.red - c.green) / span;
        back /= 6;
        const float apart = std::abs(back - hue);
        EXPECT_LT(std::min(apart, std::abs(apart - 1)), 1e-5f);
    }
}

TEST(ColorHsb, LimitsEveryComponentFirst)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    expectRgb(Color::hsb(-3, 2, 5), 1, 0, 0);
    expectRgb(Color::hsb(nan, nan, 0.5f), 0.5f, 0.5f, 0.5f);
    EXPECT_EQ(Color::hsb(0, 0, 0, 7).alpha, 1);
    EXPECT_EQ(Color::hsb(0, 0, 0, nan).alpha, 0);
}

TEST(Color, EqualityIsOfComponents)
{
    EXPECT_EQ(Color::rgb(1, 0, 0), Color::deviceRgb(1, 0, 0));
    EXPECT_FALSE(Color::rgb(1, 0, 0) == Color::rgb(1, 0, 0, 0.5f));
    EXPECT_EQ(Color::white().withAlpha(0.5f), Color::rgb(1, 1, 1, 0.5f));
}

} // namespace
