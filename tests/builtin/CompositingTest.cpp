// Source over and addition, of finite and infinite pictures.
#include "tests/builtin/OnePixel.h"

using namespace support;
using foundation::Color;

namespace {

const char* const kBoth[] = {"CISourceOverCompositing", "CIAdditionCompositing"};

BitmapRef flat(int width, int height, Rgba color)
{
    return bitmapFrom(width, height, [&](int, int) { return color; });
}

Image onConstant(std::string_view filter, Rgba front, Color back)
{
    const Image everywhere = outputOf("CIConstantColorGenerator", nullptr, {{"inputColor", back}});
    return outputOf(filter, flat(2, 2, front), {{"inputBackgroundImage", everywhere.node()}});
}

} // namespace

TEST(Compositing, SourceOverLetsTheRestOfTheBackgroundThrough)
{
    const Image out =
        onConstant("CISourceOverCompositing", {0.5f, 0, 0.25f, 0.5f}, Color::rgb(0.5f, 1, 0, 0.5f));
    EXPECT_EQ(at(out, 1, 1), (Rgba{0.625f, 0.25f, 0.25f, 0.75f}));
    // Beside the front picture there is only the background, for ever.
    EXPECT_TRUE(out.extent().isInfinite());
    EXPECT_EQ(at(out, 2, 1), (Rgba{0.25f, 0.5f, 0, 0.5f}));
    EXPECT_EQ(at(out, -5000, 12345), (Rgba{0.25f, 0.5f, 0, 0.5f}));
}

TEST(Compositing, AdditionLimitsOnlyTheAlpha)
{
    const Image out =
        onConstant("CIAdditionCompositing", {0.75f, 0, 0, 0.75f}, Color::rgb(1, 0, 0.5f, 0.5f));
    EXPECT_EQ(at(out, 0, 0), (Rgba{1.25f, 0, 0.25f, 1}));
    EXPECT_EQ(at(out, -1, 0), (Rgba{0.5f, 0, 0.25f, 0.5f}));
}

TEST(Compositing, TheResultCoversBothPictures)
{
    const Image apart = Image::fromBitmap(flat(3, 4, {0, 0, 1, 1}), -10, 20);
    for (const char* name : kBoth) {
        const Image out =
            outputOf(name, flat(2, 2, {1, 0, 0, 1}), {{"inputBackgroundImage", apart.node()}});
        EXPECT_EQ(out.extent(), Rect::fromEdges(-10, 0, 2, 24)) << name;
        EXPECT_EQ(at(out, -8, 23), (Rgba{0, 0, 1, 1})) << name;
        EXPECT_EQ(at(out, 1, 0), (Rgba{1, 0, 0, 1})) << name;
        EXPECT_EQ(at(out, -1, 10), (Rgba{0, 0, 0, 0})) << name;
    }
}

TEST(Compositing, WithoutABackgroundThePictureIsItself)
{
    const BitmapRef front = picture("alpha-64x48");
    for (const char* name : kBoth) {
        EXPECT_EQ(compare(*apply(name, front, {}), *front).largest, 0) << name;
        // A background without a front picture is no picture.
        EXPECT_FALSE(outputOf(name, nullptr, {{"inputBackgroundImage", imageValue(front)}}));
    }
}
