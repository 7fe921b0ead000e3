// The Gaussian blur; the picture's border fades into transparency.
#include "platform/builtin/blur/GaussianBlur.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

void GaussianBlur::initialize(FilterRegistry& registry)
{
    using T = GaussianBlur;
    add<T>(
        registry, "CIGaussianBlur", "Gaussian Blur", {"Blur", "StillImage", "Video", "BuiltIn"},
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputRadius", &T::inputRadius, "Radius", scalar().min(0).slider(0, 100).identity(0)},
        });
}

Image GaussianBlur::outputImage() const
{
    return gaussian(inputImage, inputRadius, Border::Transparent);
}

} // namespace builtin
