// Numbers convert without surprises; dictionaries keep their order and compare by content.
#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

namespace {

using namespace foundation;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(Number, TruncatesTowardZero)
{
    EXPECT_EQ(Number(2.99).intValue(), 2);
    EXPECT_EQ(Number(-2.99).intValue(), -2);
    EXPECT_EQ(Number(-0.99).unsignedIntValue(), 0u);
    EXPECT_EQ(Number(7.5f).int64Value(), 7);
}

TEST(Number, SaturatesAtTheEndsOfTheType)
{
    struct Case {
        Number number;
        std::int32_t asInt;
        std::uint32_t asUnsigned;
    };
    constexpr std::int32_t low = -2147483647 - 1, high = 2147483647;
    const Case cases[] = {
        {2147483646.5, 2147483646, 2147483646u},
        {2147483648.0, high, 2147483648u},
        {4294967295.9, high, 4294967295u},
        {4294967296.0, high, 4294967295u},
        {-2147483648.0, low, 0},
        {-1e300, low, 0},
        {1e300, high, 4294967295u},
        {kInfinity, high, 4294967295u},
        {-kInfinity, low, 0},
        {kNan, 0, 0},
        {std::int64_t{1} << 40, high, 4294967295u},
        {-(std::int64_t{1} << 40), low, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.number.doubleValue());
        EXPECT_EQ(c.number.intValue(), c.asInt);
        EXPECT_EQ(c.number.unsignedIntValue(), c.asUnsigned);
    }
    EXPECT_EQ(Number(9.3e18).int64Value(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Number(-9.3e18).int64Value(), std::numeric_limits<std::int64_t>::min());
}

TEST(Number, TakesTheLowByteOfWhatIsTruncated)
{
    EXPECT_EQ(lowByte(255.9), 255);
    EXPECT_EQ(lowByte(256), 0);
    EXPECT_EQ(lowByte(-1), 255);
    EXPECT_EQ(lowByte(-0.5), 0);
    EXPECT_EQ(lowByte(kNan), 0);
    EXPECT_EQ(lowByte(kInfinity), 255); // the largest 64-bit integer ends in ones
}

TEST(Number, GoesThroughSinglePrecisionForAFloat)
{
    EXPECT_EQ(double(Number(0.1).floatValue()), 0.100000001490116119384765625);
    EXPECT_EQ(Number(0.1f).doubleValue(), 0.100000001490116119384765625);
    EXPECT_NE(Number(0.1f), Number(0.1));
}

TEST(Number, ComparesByValueAndRemembersItsKind)
{
    EXPECT_EQ(Number(1), Number(true));
    EXPECT_EQ(Number(1), Number(1.0f));
    EXPECT_EQ(Number(0.5f), Number(0.5));
    EXPECT_NE(Number(kNan), Number(kNan));
    // Beyond 2^53 integers still differ by one.
    EXPECT_NE(Number((std::int64_t{1} << 60) + 1), Number(std::int64_t{1} << 60));
    EXPECT_EQ(Number(true).kind(), Number::Kind::Boolean);
    EXPECT_EQ(Number(7u).kind(), Number::Kind::Integer);
    EXPECT_EQ(Number(1.0f).kind(), Number::Kind::Float);
    EXPECT_TRUE(Number(-0.25).boolValue());
    EXPECT_FALSE(Number(-0.0).boolValue());
}

TEST(Dictionary, KeepsTheOrderInWhichKeysWereFirstSet)
{
    Dictionary d{{"b", 1}, {"a", 2}};
    d.set("c", 3);
    d.set("b", 4);
    std::string keys;
    for (const auto& [key, value] : d)
        keys += key;
    EXPECT_EQ(keys, "bac");
    EXPECT_EQ(d.intValue("b", 0), 4);
    d.remove("b");
    d.set("b", 5);
    EXPECT_EQ((d.begin() + 2)->first, "b");
}

TEST(Dictionary, ComparesByContentWhateverTheOrder)
{
    const Dictionary inner{{"x", Vector{1, 2}}};
    const Dictionary a{{"p", 1}, {"q", inner}, {"r", Array{1, "two"}}};
    const Dictionary b{
        {"r", Array{1.0, "two"}}, {"q", Dictionary{{"x", Vector{1, 2}}}}, {"p", true}};
    EXPECT_EQ(a, b);
    EXPECT_FALSE(a == (Dictionary{{"p", 1}, {"q", inner}}));
    EXPECT_FALSE(a == (Dictionary{{"p", 1}, {"q", inner}, {"s", Array{1, "two"}}}));
    EXPECT_FALSE(Value(Vector{1, 2}) == Value(Point{1, 2}));
    EXPECT_FALSE(Value(Vector{1, 2}) == Value(Vector{1, 2, 0}));
}

TEST(Dictionary, FallsBackWhenAKeyIsAbsentOrHoldsNoNumber)
{
    const Dictionary d{{"text", "3"}, {"real", 2.75}};
    EXPECT_EQ(d.intValue("missing", 9), 9);
    EXPECT_EQ(d.intValue("text", 9), 9);
    EXPECT_EQ(d.intValue("real", 9), 2);
    EXPECT_TRUE(d.boolValue("real", false));
    EXPECT_EQ(d.stringValue("real"), "");
    EXPECT_TRUE(d["missing"].isNothing());
}

TEST(Value, NamesItsKindForMessages)
{
    EXPECT_STREQ(Value().kindName(), "nothing");
    EXPECT_STREQ(Value(1).kindName(), "a number");
    EXPECT_STREQ(Value("x").kindName(), "a text");
    EXPECT_STREQ(Value(Vector{1, 2}).kindName(), "a vector");
    EXPECT_STREQ(Value(Color::black()).kindName(), "a colour");
    EXPECT_STREQ(Value(AffineTransform{}).kindName(), "a transform");
    EXPECT_STREQ(Value(Dictionary{}).kindName(), "a dictionary");
}

} // namespace
