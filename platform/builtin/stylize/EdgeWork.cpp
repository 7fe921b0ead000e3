// White contours on black, as cut into a wood block: what is lighter than its neighbourhood.
//
// Only the light side of an edge is drawn; with both, every edge would be a double line with a
// dotted black seam.
#include "platform/builtin/stylize/EdgeWork.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

void EdgeWork::initialize(FilterRegistry& registry)
{
    using T = EdgeWork;
    add<T>(registry, "CIEdgeWork", "Edge Work", {"Stylize", "Video", "StillImage", "BuiltIn"},
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius", distance().min(0).slider(0, 20)},
           });
}

Image EdgeWork::outputImage() const
{
    // The luminance of the blurred picture is the blurred luminance.
    const Image blurred = gaussian(inputImage, inputRadius, Border::Clamped);
    return combine(inputImage, blurred, inputImage.extent(), [](Px s, Px b) {
        const F v = smoothstep(0.01f, 0.06f, luminance(s) - luminance(b)) * s.a;
        return Px{v, v, v, s.a};
    });
}

} // namespace builtin
