// Water: the picture below a line is the reflection of the picture above it, fading out downward.
#include "filters/Mirror.h"

#include "filters/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>
#include <cmath>

namespace filters {

using namespace imaging;

namespace {

struct MirrorKernel {
    float factorY, imageHeight;

    Px operator()(const auto& image, const Coord& at) const
    {
        const float line = std::abs(factorY);
        const F above = abs((at - Point{0, line}).y);
        Px s = image({{at.anchor.x, line}, {at.offset.x, above}});
        const F y = at.y();
        // Unguarded: a line at height 0 divides by zero, which is as far as it gets from fading.
        s.a = min(y / F(line), F(1.0f)) * step(0.0f, y - F(2 * factorY - imageHeight));
        return s;
    }
};

// The rows that a region and its reflection lie in.
Rect reflected(const Rect& region, double line)
{
    const double low = region.y - line, high = region.top() - line;
    const double nearest = low < 0 && high > 0 ? 0 : std::min(std::abs(low), std::abs(high));
    const double farthest = std::max(std::abs(low), std::abs(high));
    return Rect::fromEdges(region.x, line + nearest, region.right(), line + farthest);
}

} // namespace

void Mirror::initialize(FilterRegistry& registry)
{
    registry.add<Mirror>("CIFMirrorFilter", "Mirror Filter", kCategories,
                         {
                             {"inputImage", &Mirror::inputImage},
                             {"inputCenter", &Mirror::inputCenter, "", {}, Vector(10, 10)},
                         });
}

Image Mirror::outputImage() const
{
    const Rect extent = inputImage.extent();
    const MirrorKernel kernel{static_cast<float>(inputCenter.y), static_cast<float>(extent.height)};
    return warp(inputImage, extent,
                Reach::of([line = std::abs(kernel.factorY)](const Rect& region) {
                    return reflected(region, line);
                }),
                kernel);
}

} // namespace filters
