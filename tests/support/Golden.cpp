// Comparing with golden pictures, and leaving behind what a reviewer wants to see.
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace support {

namespace {

namespace fs = std::filesystem;

const fs::path kGoldens = fs::path(CIF_TEST_DATA) / "golden";
const fs::path kOutput = fs::path(CIF_TEST_OUTPUT) / "golden";

struct Levels {
    double largest = 0, mean = 0;
    int x = 0, y = 0;
    bool sizesDiffer = false;
};

// Differences of two Rgba8 pixels, component by component: 0 exactly when they look the same.
std::array<double, 4> levelsApart(const Bitmap& a, const Bitmap& b, int x, int y)
{
    const auto* p = a.rowAs<std::uint8_t>(y) + 4 * x;
    const auto* q = b.rowAs<std::uint8_t>(y) + 4 * x;
    const double weight = std::max(p[3], q[3]) / 255.0;
    std::array<double, 4> apart;
    for (int c = 0; c < 4; ++c)
        apart[c] = (p[c] - q[c]) * (c == 3 ? 1.0 : weight);
    return apart;
}

Levels levelsBetween(const Bitmap& a, const Bitmap& b)
{
    if (a.width() != b.width() || a.height() != b.height())
        return {.largest = 255, .mean = 255, .sizesDiffer = true};
    Levels result;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            for (const double d : levelsApart(a, b, x, y)) {
                sum += std::abs(d);
                if (std::abs(d) > result.largest)
                    result = {std::abs(d), 0, x, y};
            }
    result.mean = sum / (4.0 * a.width() * a.height());
    return result;
}

// Grey where the two agree; a colour's difference shows in that colour, alpha's in all three.
BitmapRef differenceTimes16(const Bitmap& actual, const Bitmap& expected)
{
    return bitmapFrom(actual.width(), actual.height(), [&](int x, int y) {
        if (x >= expected.width() || y >= expected.height())
            return Rgba{1, 0, 1, 1};
        const auto d = levelsApart(actual, expected, x, y);
        const auto shown = [&](int c) {
            return float(std::clamp(0.5 + (d[c] + d[3]) * 16 / 255, 0.0, 1.0));
        };
        return Rgba{shown(0), shown(1), shown(2), 1};
    });
}

bool isGoodName(std::string_view name)
{
    return !name.empty() && name.front() != '.' &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return std::isalnum(c) ||
                      std::string_view("-_.+").find(char(c)) != std::string::npos;
           });
}

void writeRecord(std::string_view name, const char* state, const Levels& levels, Tolerance allowed)
{
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    fs::create_directories(kOutput);
    std::ofstream record(kOutput / (std::string(name) + ".txt"));
    record << "name\t" << name << "\nstate\t" << state << "\nlargest\t" << levels.largest
           << "\nmean\t" << levels.mean << "\nallowed-largest\t" << allowed.largest
           << "\nallowed-mean\t" << allowed.mean << '\n';
    if (test)
        record << "test\t" << test->test_suite_name() << '.' << test->name() << '\n';
}

class GoldenTest : public testing::Test {
public:
    GoldenTest(std::string filter, std::string pictureName, Dictionary inputs, Tolerance tolerance)
        : _filter(std::move(filter)), _picture(std::move(pictureName)), _inputs(std::move(inputs)),
          _tolerance(tolerance)
    {
    }

    void TestBody() override
    {
        expectGolden(goldenName(_filter, _picture, _inputs),
                     *apply(_filter, picture(_picture), _inputs, PixelFormat::Rgba8), _tolerance);
    }

private:
    std::string _filter, _picture;
    Dictionary _inputs;
    Tolerance _tolerance;
};

std::string numbersText(std::initializer_list<double> numbers)
{
    std::string text;
    for (const double n : numbers) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.6g", n);
        if (!text.empty())
            text += '_';
        text += digits;
    }
    return text;
}

std::string valueText(const Value& value)
{
    if (const auto* n = value.number())
        return numbersText({n->doubleValue()});
    if (const auto* p = value.get<foundation::Point>())
        return numbersText({p->x, p->y});
    if (const auto* v = value.get<foundation::Vector>())
        return v->count == 2   ? numbersText({v->x, v->y})
               : v->count == 3 ? numbersText({v->x, v->y, v->z})
                               : numbersText({v->x, v->y, v->z, v->w});
    if (const auto* c = value.color())
        return numbersText({c->red, c->green, c->blue, c->alpha});
    if (const auto* t = value.get<foundation::AffineTransform>())
        return numbersText({t->m11, t->m12, t->m21, t->m22, t->tX, t->tY});
    if (const auto* r = value.get<Rect>())
        return numbersText({r->x, r->y, r->width, r->height});
    return {};
}

} // namespace

void expectGolden(std::string_view name, const imaging::Bitmap& actual, Tolerance tolerance)
{
    ASSERT_TRUE(isGoodName(name)) << "not a name for a golden: " << name;
    const std::string stem(name);
    const fs::path actualFile = kOutput / (stem + ".actual.png");
    const fs::path differenceFile = kOutput / (stem + ".difference.png");
    const fs::path goldenFile = kGoldens / (stem + ".png");
    fs::remove(actualFile);
    fs::remove(differenceFile);

    const BitmapRef bytes = converted(actual, PixelFormat::Rgba8);
    if (!fs::exists(goldenFile)) {
        writePng(actualFile, *bytes);
        writeRecord(name, "missing", {.largest = 255, .mean = 255}, tolerance);
        ADD_FAILURE() << "there is no golden " << name << "; look at " << actualFile.string()
                      << " and accept it with ./dev golden accept '" << name << "'";
        return;
    }

    const BitmapRef expected = readPng(goldenFile);
    const Levels levels = levelsBetween(*bytes, *expected);
    const bool good =
        !levels.sizesDiffer && levels.largest <= tolerance.largest && levels.mean <= tolerance.mean;
    if (levels.largest > 0) {
        writePng(actualFile, *bytes);
        writePng(differenceFile, *differenceTimes16(*bytes, *expected));
    }
    writeRecord(name, good ? "passed" : "failed", levels, tolerance);
    if (levels.sizesDiffer)
        ADD_FAILURE() << name << " measures " << bytes->width() << " x " << bytes->height()
                      << ", its golden " << expected->width() << " x " << expected->height();
    else
        EXPECT_TRUE(good) << name << " is off by " << levels.largest << " levels at (" << levels.x
                          << ", " << levels.y << "), " << levels.mean
                          << " in the mean; allowed are " << tolerance.largest << " and "
                          << tolerance.mean << ". Shown by " << differenceFile.string();
}

std::string goldenName(std::string_view filter, std::string_view pictureName,
                       const Dictionary& inputs)
{
    std::string name = std::string(filter) + '-' + std::string(pictureName);
    for (const auto& [key, value] : inputs)
        name += '-' + key + '-' + valueText(value);
    return name;
}

bool registerGolden(const char* file, int line, std::string_view filter,
                    std::string_view pictureName, const Dictionary& inputs, Tolerance tolerance)
{
    std::string name = goldenName(filter, pictureName, inputs);
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    testing::RegisterTest(
        "Golden", name.c_str(), nullptr, nullptr, file, line,
        [=, filterName = std::string(filter), picture = std::string(pictureName)]() -> GoldenTest* {
            return new GoldenTest(filterName, picture, inputs, tolerance);
        });
    return true;
}

} // namespace support
