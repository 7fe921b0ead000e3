// The lanes' mathematics against the C library's, in double precision.
#include "platform/imaging/Lanes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

using namespace imaging;

namespace {

float first(F v)
{
    return v.v[0];
}

// The largest error over many numbers of the range, spread evenly or by magnitude.
double worst(double low, double high, const std::function<F(F)>& f,
             const std::function<double(double)>& exact, bool relative)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> spread(low, high);
    double largest = 0;
    for (int i = 0; i < 20000; ++i) {
        const float x = static_cast<float>(spread(random));
        const double e = exact(x), error = std::abs(first(f(x)) - e);
        largest = std::max(largest, relative ? error / std::abs(e) : error);
    }
    return largest;
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();
const float kNaN = std::nanf("");

} // namespace

TEST(Lanes, FunctionsAreAsExactAsTheirCommentsSay)
{
    EXPECT_LT(
        worst(
            0.001, 8, [](F x) { return log2(x); }, [](double x) { return std::log2(x); }, false),
        1e-6);
    EXPECT_LT(
        worst(
            -60, 60, [](F x) { return exp2(x); }, [](double x) { return std::exp2(x); }, true),
        5e-7);
    EXPECT_LT(worst(
                  0, 1, [](F x) { return pow(x, 0.7f); },
                  [](double x) { return std::pow(x, 0.7f); }, false),
              1e-6);
    EXPECT_LT(
        worst(
            -100, 100, [](F x) { return sin(x); }, [](double x) { return std::sin(x); }, false),
        1e-6);
    EXPECT_LT(
        worst(
            -100, 100, [](F x) { return cos(x); }, [](double x) { return std::cos(x); }, false),
        1e-6);
    EXPECT_LT(
        worst(
            -50, 50, [](F x) { return atan(x); }, [](double x) { return std::atan(x); }, false),
        3e-7);
    EXPECT_LT(worst(
                  -1, 1, [](F x) { return asin(x); }, [](double x) { return std::asin(x); }, false),
              1e-6);
    for (const float y : {-2.0f, -0.5f, 0.0f, 0.5f, 2.0f})
        for (const float x : {-1.0f, 0.0f, 1.0f})
            EXPECT_NEAR(first(atan2(F(y), F(x))), std::atan2(y, x), 1e-6) << y << ", " << x;
}

TEST(Lanes, OddNumbersHaveDefinedResults)
{
    EXPECT_EQ(first(clamp01(kNaN)), 0);
    EXPECT_EQ(first(clamp01(kInfinity)), 1);
    EXPECT_EQ(first(pow(0.0f, 0.0f)), 1);
    EXPECT_EQ(first(pow(0.0f, 2.0f)), 0);
    EXPECT_EQ(first(exp2(-200.0f)), 0);
    EXPECT_EQ(first(exp2(128.0f)), kInfinity);
    EXPECT_TRUE(std::isnan(first(exp2(kNaN))));
    EXPECT_NEAR(first(exp2(127.5f)) / std::exp2(127.5), 1, 1e-6);
}

TEST(Lanes, WholeNumbersRoundAsTheirNamesSay)
{
    for (const float x : {-2.5f, -2.0f, -0.1f, 0.0f, 0.5f, 1.5f, 2.49f, 9e6f, -9e6f, 3e9f, -3e9f})
        EXPECT_EQ(first(floor(x)), std::floor(x)) << x;
    EXPECT_EQ(roundToInt(2.5f).v[0], 2);
    EXPECT_EQ(roundToInt(3.5f).v[0], 4);
    EXPECT_EQ(roundToInt(-1.2f).v[0], -1);
    EXPECT_EQ(first(mod(-1.0f, 4.0f)), 3);
}

TEST(Lanes, ZipUndoesUnzip)
{
    I a, b;
    for (int k = 0; k < kLanes; ++k) {
        a.v[k] = k;
        b.v[k] = kLanes + k;
    }
    I even, odd, c, d;
    unzip(a, b, even, odd);
    zip(even, odd, c, d);
    for (int k = 0; k < kLanes; ++k) {
        EXPECT_EQ(even.v[k], 2 * k);
        EXPECT_EQ(odd.v[k], 2 * k + 1);
        EXPECT_EQ(c.v[k], a.v[k]);
        EXPECT_EQ(d.v[k], b.v[k]);
    }
}
