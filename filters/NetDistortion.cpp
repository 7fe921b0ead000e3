// A fine net of ripples, a radian to the pixel, as seen through woven glass.
#include "filters/NetDistortion.h"

#include "filters/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace filters {

using namespace imaging;

namespace {

struct NetKernel {
    float width, height, imageWidth, imageHeight;

    Px operator()(const auto& image, const Coord& at) const
    {
        const F x = at.x(), y = at.y();
        // Unguarded: a picture of less than two pixels has nothing between 1 and its side less 1;
        // the upper limit decides then.
        return image(Point{} + Vec2{min(max(x + F(width) * cos(x), F(1.0f)), F(imageWidth - 1)),
                                    min(max(y + F(height) * sin(y), F(1.0f)), F(imageHeight - 1))});
    }
};

} // namespace

void NetDistortion::initialize(FilterRegistry& registry)
{
    using T = NetDistortion;
    registry.add<T>("CIFNetDistortion", "Net Distortion Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputWidth", &T::inputWidth, "", scalar(0, 20, 7)},
                        {"inputHeight", &T::inputHeight, "", scalar(0, 20, 5)},
                    });
}

Image NetDistortion::outputImage() const
{
    const Rect extent = inputImage.extent();
    return warp(inputImage, extent, Reach::anywhere(),
                NetKernel{static_cast<float>(inputWidth), static_cast<float>(inputHeight),
                          static_cast<float>(extent.width), static_cast<float>(extent.height)});
}

} // namespace filters
