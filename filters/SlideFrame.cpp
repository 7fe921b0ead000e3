// Keeps a rectangle around the centre and stretches its border out to the edges of the picture.
#include "filters/SlideFrame.h"

#include "filters/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace filters {

using namespace imaging;

namespace {

struct FrameKernel {
    Point center;
    float halfWidth, halfHeight;

    Px operator()(const auto& image, const Coord& at) const
    {
        const Vec2 v = at - center;
        const Vec2 kept{min(max(v.x, F(-halfWidth)), F(halfWidth)),
                        min(max(v.y, F(-halfHeight)), F(halfHeight))};
        // By the way that a position is moved: inside the rectangle that is exactly nothing.
        return image(at + Vec2{kept.x - v.x, kept.y - v.y});
    }
};

} // namespace

void SlideFrame::initialize(FilterRegistry& registry)
{
    using T = SlideFrame;
    registry.add<T>("CIFSlideFrameFilter", "Slide Frame Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputFactorX", &T::inputFactorX, "", scalar(0.01, 1, 0.8)},
                        {"inputFactorY", &T::inputFactorY, "", scalar(0.01, 1, 0.8)},
                        {"inputCenter", &T::inputCenter, "", {}, Vector(10, 10)},
                    });
}

Image SlideFrame::outputImage() const
{
    const Rect extent = inputImage.extent();
    return warp(inputImage, extent, Reach::anywhere(),
                FrameKernel{{inputCenter.x, inputCenter.y},
                            static_cast<float>(inputFactorX * extent.width * 0.5),
                            static_cast<float>(inputFactorY * extent.height * 0.5)});
}

} // namespace filters
