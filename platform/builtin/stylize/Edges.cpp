// The strength of the picture's edges, component by component, on black.
#include "platform/builtin/stylize/Edges.h"

#include "platform/builtin/Gradient.h"
#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <algorithm>

namespace builtin {

using namespace imaging;

namespace {

struct EdgesKernel {
    float intensity;

    Px operator()(const auto& window) const
    {
        const F a = window(0, 0).a;
        const auto edge = [&](F Px::*component) {
            const Vec2 slope = gradient([&](int dx, int dy) { return window(dx, dy).*component; });
            return min(F(intensity) * length(slope), a);
        };
        return {edge(&Px::r), edge(&Px::g), edge(&Px::b), a};
    }
};

} // namespace

void Edges::initialize(FilterRegistry& registry)
{
    using T = Edges;
    add<T>(registry, "CIEdges", "Edges", {"Stylize", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputIntensity", &T::inputIntensity, "Intensity",
                scalar().min(0).slider(0, 10).identity(0)},
           });
}

Image Edges::outputImage() const
{
    // Beyond a million the faintest edge is white; flat areas must not become 0 times infinity.
    const double intensity = std::min(positive(inputIntensity), 1e6);
    return neighborhood(inputImage, 1, Border::Clamped, EdgesKernel{static_cast<float>(intensity)});
}

} // namespace builtin
