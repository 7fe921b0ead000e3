// JSON text to values and back.
#include "platform/foundation/Json.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

namespace {

using namespace foundation;

Value parsed(std::string_view text)
{
    Result<Value> r = parseJson(text);
    EXPECT_TRUE(r) << text << ": " << r.error();
    return r ? *std::move(r) : Value();
}

std::string errorOf(std::string_view text)
{
    const Result<Value> r = parseJson(text);
    EXPECT_FALSE(r) << text;
    EXPECT_EQ(r.error().find('\n'), std::string::npos);
    return r.error();
}

TEST(Json, TellsIntegersFromReals)
{
    const Value v = parsed("[1, 1.0, 1e2, -7, true, 9007199254740993, 18446744073709551616]");
    const Array& a = *v.array();
    EXPECT_EQ(a[0].number()->kind(), Number::Kind::Integer);
    EXPECT_EQ(a[1].number()->kind(), Number::Kind::Double);
    EXPECT_EQ(a[2].number()->kind(), Number::Kind::Double);
    EXPECT_EQ(a[3].number()->intValue(), -7);
    EXPECT_EQ(a[4].number()->kind(), Number::Kind::Boolean);
    EXPECT_EQ(a[5].number()->int64Value(), 9007199254740993);
    EXPECT_EQ(a[6].number()->doubleValue(), 18446744073709551616.0);
}

TEST(Json, KeepsTheOrderOfMembersAndTheLastOfTwoAlike)
{
    const Value v = parsed(R"({"z": 1, "a": {"y": null}, "m": "text", "z": 2})");
    EXPECT_EQ(toJson(v), R"({"z":2,"a":{"y":null},"m":"text"})");
    EXPECT_EQ(toJson(parsed("[]")), "[]");
    EXPECT_EQ(toJson(Dictionary{{"a", Array{1}}}, 2), "{\n  \"a\": [\n    1\n  ]\n}");
}

TEST(Json, SaysWhereTheTextGoesWrong)
{
    EXPECT_EQ(errorOf("{\"a\": 1,\n  \"b\": ]}"), "line 2, column 8: unexpected ]");
    EXPECT_EQ(errorOf("[1, 2"), "line 1, column 5: the text ends too early");
    EXPECT_EQ(errorOf(""), "line 1, column 1: the text ends too early");
    EXPECT_EQ(errorOf("[1] x"), "line 1, column 5: unexpected x");
    EXPECT_EQ(errorOf("\"\xff\""), "line 1, column 2: unexpected byte 0xff");
    EXPECT_NE(errorOf("[1e999]").find("1e999"), std::string::npos);
}

TEST(Json, RefusesWhatOnlyAnAttackWouldHold)
{
    EXPECT_NE(errorOf(std::string(1'000'000, '[')).find("nested deeper"), std::string::npos);
    std::string wide = "{";
    for (int i = 0; i <= 10'000; ++i)
        wide += "\"k" + std::to_string(i) + "\":0,";
    wide.back() = '}';
    EXPECT_NE(errorOf(wide).find("more than 10000 members"), std::string::npos);
}

TEST(Json, WritesEachKindInItsOwnForm)
{
    EXPECT_EQ(toJson(true), "true");
    EXPECT_EQ(toJson(3u), "3");
    EXPECT_EQ(toJson(3.0), "3.0");
    EXPECT_EQ(toJson(0.1f), "0.1");
    EXPECT_EQ(toJson(0.1), "0.1");
    EXPECT_EQ(toJson(double(0.1f)), "0.10000000149011612");
    EXPECT_EQ(toJson(std::nan("")), "null");
    EXPECT_EQ(toJson(-std::numeric_limits<float>::infinity()), "null");
    EXPECT_EQ(toJson(Value()), "null");
    EXPECT_EQ(toJson(Point{1, 2.5}), "[1.0,2.5]");
    EXPECT_EQ(toJson(Size{3, 4}), "[3.0,4.0]");
    EXPECT_EQ(toJson(Rect{1, 2, 3, 4}), "[1.0,2.0,3.0,4.0]");
    EXPECT_EQ(toJson(Vector{1, 2, 3}), "[1.0,2.0,3.0]");
    EXPECT_EQ(toJson(Color::rgb(1, 0.2f, 0, 0.5f)), "[1.0,0.2,0.0,0.5]");
    EXPECT_EQ(toJson(AffineTransform{}), "[1.0,0.0,0.0,1.0,0.0,0.0]");
    EXPECT_EQ(toJson(PictureRef()), "null");
    EXPECT_EQ(toJson("a\"\n\xff"), "\"a\\\"\\n\xef\xbf\xbd\"");
}

class RandomValues {
public:
    Value make(int depth)
    {
        switch (pick(depth > 0 ? 8 : 6)) {
        case 0:
            return Value();
        case 1:
            return pick(2) == 0;
        case 2:
            return static_cast<std::int64_t>(_engine());
        case 3:
            return real();
        case 4:
            return static_cast<float>(real());
        case 5:
            return text();
        case 6: {
            Array a;
            for (int n = pick(4); n > 0; --n)
                a.push_back(make(depth - 1));
            return a;
        }
        default: {
            Dictionary d;
            for (int n = pick(4); n > 0; --n)
                d.set(text(), make(depth - 1));
            return d;
        }
        }
    }

private:
    int pick(int n) { return static_cast<int>(_engine() % static_cast<unsigned>(n)); }
    double real() { return std::ldexp(static_cast<double>(_engine()) - 9e18, pick(120) - 110); }
    std::string text()
    {
        static constexpr const char* kPieces[] = {"a", "\"", "\\", "\n", "\x01",
                                                  "ä", "界", "/",  " "};
        std::string s;
        for (int n = pick(6); n > 0; --n)
            s += kPieces[pick(9)];
        return s;
    }

    std::mt19937_64 _engine{42};
};

// Floats come back as the double that prints the same, so the comparison is of text after one trip
// and of values after two.
TEST(Json, RoundTripsRandomValues)
{
    RandomValues random;
    for (int i = 0; i < 2000; ++i) {
        const std::string once = toJson(random.make(4), i % 3 - 1);
        const Value back = parsed(once);
        EXPECT_EQ(toJson(back, i % 3 - 1), once);
        EXPECT_EQ(parsed(toJson(back)), back);
    }
}

TEST(Json, FloatsReadBackToTheSameFloat)
{
    std::mt19937 engine{5};
    for (int i = 0; i < 20'000; ++i) {
        const float f = std::bit_cast<float>(static_cast<std::uint32_t>(engine()));
        if (!std::isfinite(f))
            continue;
        EXPECT_EQ(parsed(toJson(f)).number()->floatValue(), f);
    }
}

} // namespace
