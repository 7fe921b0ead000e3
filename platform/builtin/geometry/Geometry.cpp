// Affine transform and crop.
#include "platform/builtin/geometry/Geometry.h"

#include "platform/builtin/Inputs.h"
#include "platform/imaging/Kernel.h"

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kGeometry = {"GeometryAdjustment", "Video", "StillImage", "BuiltIn"};

} // namespace

void AffineTransformFilter::initialize(FilterRegistry& registry)
{
    using T = AffineTransformFilter;
    add<T>(
        registry, "CIAffineTransform", "Affine Transform", kGeometry,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputTransform", &T::inputTransform, "Transform", kTransform, {}, AffineTransform()},
        });
}

Image AffineTransformFilter::outputImage() const
{
    return transformed(inputImage, inputTransform);
}

void Crop::initialize(FilterRegistry& registry)
{
    using T = Crop;
    add<T>(registry, "CICrop", "Crop", kGeometry,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRectangle",
                &T::inputRectangle,
                "Rectangle",
                Details(InputType::Rectangle),
                {},
                imaging::fields::read(Rect::infinite())},
           });
}

Image Crop::outputImage() const
{
    return inputImage.cropped(inputRectangle);
}

} // namespace builtin
