// The pictures that are shipped: that they are there, and that what uses them can rely on them.
#include "Environment.h"
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Bundle.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "plugin/EditorPictures.h"
#include "tests/support/Support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

using support::BitmapRef;
using support::pixel;

class ShippedPictures : public testing::Test {
protected:
    Variable library{"CIF_CONTENT_LIBRARY",
                     (foundation::resourceFolder() / "com.corvanix.CoreImageFilter").string()};
    CIFMain main;
};

// A square of grey heights that repeats.
struct Heights {
    explicit Heights(const BitmapRef& bitmap) : at(support::reds(*bitmap)), side(bitmap->width()) {}

    double operator()(int x, int y) const
    {
        return at[std::size_t((y + side) % side) * side + (x + side) % side];
    }
    // How far the heights bend at a column or a row, on average.
    double bend(int line, bool column) const
    {
        double sum = 0;
        for (int i = 0; i < side; ++i)
            sum +=
                column
                    ? std::abs((*this)(line - 1, i) - 2 * (*this)(line, i) + (*this)(line + 1, i))
                    : std::abs((*this)(i, line - 1) - 2 * (*this)(i, line) + (*this)(i, line + 1));
        return sum / side;
    }

    support::Floats at;
    int side;
};

double luma(const support::Rgba& p)
{
    return 0.2125 * p.r + 0.7154 * p.g + 0.0721 * p.b;
}

} // namespace

TEST_F(ShippedPictures, GlassRepeatsWithoutASeamAndBendsWhatIsSeen)
{
    const auto names = main.CIFGlassTextureNames();
    ASSERT_TRUE(names);
    EXPECT_GE(names->size(), 14u);
    for (const std::string& name : *names) {
        SCOPED_TRACE(name);
        const auto picture = main.CIFGlassTextureWithName(name);
        ASSERT_TRUE(picture);
        const BitmapRef bitmap = picture->bitmap();
        ASSERT_EQ(bitmap->format(), imaging::PixelFormat::Rgba16); // slopes show 8-bit steps
        ASSERT_EQ(bitmap->width(), bitmap->height());
        const Heights heights(bitmap);
        for (const bool column : {true, false}) {
            double inside = 0;
            for (int line = 1; line < heights.side - 1; ++line)
                inside = std::max(inside, heights.bend(line, column));
            EXPECT_LE(heights.bend(0, column), inside * 1.05);
            EXPECT_LE(heights.bend(heights.side - 1, column), inside * 1.05);
        }
        // What is seen through it moves by a few pixels at the filter's default strength.
        double sum = 0;
        for (int y = 0; y < heights.side; ++y)
            for (int x = 0; x < heights.side; ++x)
                sum += std::pow(100 * (heights(x + 1, y) - heights(x - 1, y)), 2) +
                       std::pow(100 * (heights(x, y + 1) - heights(x, y - 1)), 2);
        const double moved = std::sqrt(sum) / heights.side;
        EXPECT_GT(moved, 2);
        EXPECT_LT(moved, 16);
    }
}

TEST_F(ShippedPictures, BallsAreEvenInTheMiddleAndFillTheirSquare)
{
    const auto names = main.CIFShadingMaterialNames();
    ASSERT_TRUE(names);
    EXPECT_GE(names->size(), 14u);
    EXPECT_THAT(*names, testing::Contains("Sand"));
    for (const std::string& name : *names) {
        SCOPED_TRACE(name);
        const auto picture = main.CIFShadingMaterialWithName(name);
        ASSERT_TRUE(picture);
        const BitmapRef ball = picture->bitmap();
        ASSERT_EQ(ball->width(), ball->height());
        const int middle = ball->width() / 2, reach = middle / 10;
        EXPECT_TRUE(ball->computeIsOpaque());
        double low = 1, high = 0, darkest = 1, lightest = 0;
        for (int y = 0; y < ball->height(); ++y)
            for (int x = 0; x < ball->width(); ++x) {
                const double v = luma(pixel(*ball, x, y));
                darkest = std::min(darkest, v);
                lightest = std::max(lightest, v);
                if (std::hypot(x - middle, y - middle) < reach) {
                    low = std::min(low, v);
                    high = std::max(high, v);
                }
            }
        EXPECT_LT(high - low, 0.09);
        EXPECT_GT(lightest - darkest, 2 * (high - low));
        // The corners continue the outline.
        for (const int sx : {-1, 1})
            for (const int sy : {-1, 1}) {
                const double k = middle * std::sqrt(0.5);
                const support::Rgba rim =
                    pixel(*ball, middle + std::lround(sx * k), middle + std::lround(sy * k));
                const support::Rgba corner =
                    pixel(*ball, sx < 0 ? 0 : ball->width() - 1, sy < 0 ? 0 : ball->height() - 1);
                EXPECT_NEAR(luma(rim), luma(corner), 0.03);
            }
    }
}

TEST_F(ShippedPictures, WhiteBallIsPaperUnderALampAtTheUpperLeft)
{
    const auto file = foundation::resourcePath("whiteBall", "tiff");
    ASSERT_TRUE(file);
    const auto picture = codecs::readPicture(*file);
    ASSERT_TRUE(picture);
    const BitmapRef ball = (*picture)->bitmap();
    ASSERT_EQ(ball->width(), ball->height());
    const double half = ball->width() / 2.0;
    // So far from the middle towards the lamp, as parts of the radius.
    const auto tone = [&](double towards, double across = 0) {
        const double x = -towards + across, y = -towards - across, k = std::sqrt(0.5) * half;
        return pixel(*ball, int(half + x * k), int(half + y * k)).g;
    };
    EXPECT_NEAR(tone(0), 0.9, 0.01);
    EXPECT_NEAR(tone(0.4), 1, 0.004);
    EXPECT_GT(tone(0.4), tone(0.2));
    EXPECT_GT(tone(0.4), tone(0.6));
    for (const float outline : {tone(1), tone(-1), tone(0, 1), tone(0, -1)}) {
        EXPECT_GE(outline, 0.35);
        EXPECT_LE(outline, 0.52);
    }
    EXPECT_LT(tone(-1), tone(1) - 0.05);
}

TEST_F(ShippedPictures, BrushesHaveATransparentBorderAndSomethingToPrint)
{
    const auto names = main.CIFBrushNames();
    ASSERT_TRUE(names);
    EXPECT_GE(names->size(), 14u);
    for (const std::string& name : *names) {
        SCOPED_TRACE(name);
        const auto picture = main.CIFBrushWithName(name);
        ASSERT_TRUE(picture);
        const BitmapRef tip = picture->bitmap();
        const int right = tip->width() - 1, bottom = tip->height() - 1;
        double border = 0;
        for (int x = 0; x <= right; ++x)
            border = std::max<double>(border, pixel(*tip, x, 0).a + pixel(*tip, x, bottom).a);
        for (int y = 0; y <= bottom; ++y)
            border = std::max<double>(border, pixel(*tip, 0, y).a + pixel(*tip, right, y).a);
        EXPECT_EQ(border, 0);
        const support::Floats alphas = support::alphas(*tip);
        EXPECT_GT(*std::ranges::max_element(alphas), 0.85);
        EXPECT_GT(std::ranges::count_if(alphas, [](float a) { return a > 0.3; }),
                  std::ssize(alphas) / 40);
    }
}

TEST_F(ShippedPictures, EditorFindsItsPicturesByName)
{
    std::set<std::string> known;
    for (const plugin::EditorPicture& expected : plugin::kEditorPictures) {
        SCOPED_TRACE(expected.name);
        known.insert(expected.name);
        EXPECT_TRUE(foundation::resourcePath(expected.name, "tif"));
        const auto picture = main.resourceImageWithNameOfKind(expected.name, "");
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->pixelsWide(), expected.width);
        EXPECT_EQ(picture->pixelsHigh(), expected.height);
        if (const auto dense =
                main.resourceImageWithNameOfKind(std::string(expected.name) + "@2x", "")) {
            EXPECT_EQ(dense->pixelsWide(), 2 * expected.width);
            EXPECT_EQ(dense->pixelsHigh(), 2 * expected.height);
        } else {
            EXPECT_STREQ(expected.name, "gradient_hue");
        }
    }
    for (const plugin::SmallPicture& small : plugin::kSmallPictures)
        EXPECT_TRUE(known.contains(small.name)) << small.name;
    for (const plugin::CursorPicture& cursor : plugin::kCursorPictures) {
        ASSERT_TRUE(known.contains(cursor.name)) << cursor.name;
        const BitmapRef bitmap = main.resourceImageWithNameOfKind(cursor.name, "")->bitmap();
        // It points with something that is there.
        EXPECT_GT(pixel(*bitmap, cursor.hotX, cursor.hotY).a, 0) << cursor.name;
    }
    // Red, green and blue where their hues are.
    const BitmapRef hues = main.resourceImageWithNameOfKind("gradient_hue", "")->bitmap();
    for (const auto& [x, color] :
         {std::pair(0, support::Rgba{1, 0, 0}), std::pair(120, support::Rgba{0, 1, 0}),
          std::pair(240, support::Rgba{0, 0, 1})}) {
        const support::Rgba p = pixel(*hues, x, 10);
        EXPECT_NEAR(p.r, color.r, 0.02);
        EXPECT_NEAR(p.g, color.g, 0.02);
        EXPECT_NEAR(p.b, color.b, 0.02);
    }
}

// Every icon that an entry names is there in both sizes, shows something, and looks like no other.
TEST_F(ShippedPictures, EveryEntryHasItsIcon)
{
    std::set<std::string> names;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const auto& entry : plugin::allDescriptors(main.CIFAllFilterDescriptors()))
            if (entry->contains("CIFFilterIcon"))
                names.insert(entry->stringValue("CIFFilterIcon"));
    }
    ASSERT_GT(names.size(), 65u);
    std::map<support::Floats, std::string> seen;
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const auto icon = main.resourceImageWithNameOfKind(name, "Icons");
        const auto dense = main.resourceImageWithNameOfKind(name + "@2x", "Icons");
        ASSERT_TRUE(icon && dense);
        EXPECT_EQ(icon->pixelsWide(), 32);
        EXPECT_EQ(icon->pixelsHigh(), 32);
        EXPECT_EQ(dense->pixelsWide(), 64);
        // Colour and shape: some are black lines on nothing.
        support::Floats shown = support::greens(*icon->bitmap());
        const support::Floats alphas = support::alphas(*icon->bitmap());
        shown.insert(shown.end(), alphas.begin(), alphas.end());
        const std::size_t half = shown.size() / 2;
        const auto spread = [&](std::size_t first, std::size_t end) {
            const auto [low, high] =
                std::minmax_element(shown.begin() + first, shown.begin() + end);
            return *high - *low;
        };
        EXPECT_GT(std::max(spread(0, half), spread(half, shown.size())), 0.1f);
        const auto [twin, isNew] = seen.emplace(shown, name);
        EXPECT_TRUE(isNew) << "looks like " << twin->second;
    }
}
