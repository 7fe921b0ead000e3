// Edges of the red channel, as grey: the length of its gradient by the Sobel weights.
#include "filters/Sobel.h"

#include "filters/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace filters {

using namespace imaging;

namespace {

struct SobelKernel {
    float intensity;

    Px operator()(const auto& window) const
    {
        const auto red = [&](int dx, int dy) { return window.red(dx, dy); };
        const F lowLeft = red(-1, -1), lowRight = red(1, -1);
        const F highLeft = red(-1, 1), highRight = red(1, 1);
        const F vertical = (highLeft + F(2.0f) * red(0, 1) + highRight) -
                           (lowLeft + F(2.0f) * red(0, -1) + lowRight);
        const F horizontal = (lowRight + F(2.0f) * red(1, 0) + highRight) -
                             (lowLeft + F(2.0f) * red(-1, 0) + highLeft);
        const F edge = F(intensity) * sqrt(horizontal * horizontal + vertical * vertical);
        return {edge, edge, edge, window(0, 0).a};
    }
};

} // namespace

void Sobel::initialize(FilterRegistry& registry)
{
    registry.add<Sobel>("CIFSobel", "Sobel Filter", kCategories,
                        {
                            {"inputImage", &Sobel::inputImage},
                            {"inputIntensity", &Sobel::inputIntensity, "", scalar(0, 20, 7)},
                        });
}

Image Sobel::outputImage() const
{
    return neighborhood(inputImage, 1, SobelKernel{static_cast<float>(inputIntensity)});
}

} // namespace filters
