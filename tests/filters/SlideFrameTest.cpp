// The rectangle that is kept, and its border drawn out.
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

using namespace support;
using foundation::Vector;

namespace {

// Eight pixels whose red value is their own column.
BitmapRef ramp()
{
    return bitmapFrom(8, 1, [](int x, int) { return Rgba{float(x), 0, 0, 1}; });
}

} // namespace

TEST(SlideFrame, StretchesTheBorderOfTheKeptRectangle)
{
    const BitmapRef out =
        apply("CIFSlideFrameFilter", ramp(),
              {{"inputFactorX", 0.5}, {"inputFactorY", 1.0}, {"inputCenter", Vector(4, 0.5)}});
    // The border lies at x = 2, between the centres of columns 1 and 2.
    EXPECT_EQ(reds(*out), (Floats{1.5f, 1.5f, 2, 3, 4, 5, 5.5f, 5.5f}));
}

TEST(SlideFrame, LeavesAnImageAloneThatIsKeptWhole)
{
    const BitmapRef source = picture("photo-96x64");
    const BitmapRef out =
        apply("CIFSlideFrameFilter", source,
              {{"inputFactorX", 1.0}, {"inputFactorY", 1.0}, {"inputCenter", Vector(48, 32)}});
    EXPECT_EQ(compare(*out, *source).largest, 0);
}

TEST(SlideFrame, ARectangleOutsideThePictureHasNothingToShow)
{
    const BitmapRef out =
        apply("CIFSlideFrameFilter", ramp(),
              {{"inputFactorX", 0.5}, {"inputFactorY", 1.0}, {"inputCenter", Vector(40, 0.5)}});
    EXPECT_EQ(alphas(*out), Floats(8, 0));
}

GOLDEN("CIFSlideFrameFilter", "photo-96x64",
       {{"inputFactorX", 0.4}, {"inputFactorY", 0.6}, {"inputCenter", Vector(40, 30)}},
       {.largest = 1});
