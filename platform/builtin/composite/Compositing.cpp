// Source over and addition.
#include "platform/builtin/composite/Compositing.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kComposite = {
    "CompositeOperation", "Video",  "StillImage", "Interlaced", "NonSquarePixels",
    "HighDynamicRange",   "BuiltIn"};

template <class Kernel>
Image composited(const Image& front, const Image& back, const Kernel& kernel)
{
    if (!front || !back)
        return front;
    const Rect both = front.node()->extent().united(back.node()->extent()).rect();
    return combine(front, back, both, kernel);
}

} // namespace

void SourceOverCompositing::initialize(FilterRegistry& registry)
{
    using T = SourceOverCompositing;
    add<T>(registry, "CISourceOverCompositing", "Source Over", kComposite,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputBackgroundImage", &T::inputBackgroundImage, "Background Image", kImage},
           });
}

Image SourceOverCompositing::outputImage() const
{
    return composited(inputImage, inputBackgroundImage,
                      [](Px front, Px back) { return front + back * (F(1.0f) - front.a); });
}

void AdditionCompositing::initialize(FilterRegistry& registry)
{
    using T = AdditionCompositing;
    add<T>(registry, "CIAdditionCompositing", "Addition", kComposite,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputBackgroundImage", &T::inputBackgroundImage, "Background Image", kImage},
           });
}

Image AdditionCompositing::outputImage() const
{
    return composited(inputImage, inputBackgroundImage, [](Px front, Px back) {
        const Px sum = front + back;
        return Px{sum.r, sum.g, sum.b, min(sum.a, 1.0f)};
    });
}

} // namespace builtin
