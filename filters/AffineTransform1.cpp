// Turns, squeezes and skews the picture about its centre.
#include "filters/AffineTransform1.h"

#include "filters/Inputs.h"
#include "platform/imaging/Kernel.h"

#include <cmath>

namespace filters {

using namespace imaging;

namespace {

// Squeezed, then skewed upward, then turned.
AffineTransform matrix(double angle, double xFactor, double yFactor, double skew)
{
    const double s = std::sin(angle), c = std::cos(angle);
    return {(c - s * skew) * xFactor, xFactor * (skew * c + s), -s * yFactor, yFactor * c, 0, 0};
}

} // namespace

// Registered, and shown, with a 2.
void AffineTransform1::initialize(FilterRegistry& registry)
{
    using T = AffineTransform1;
    registry.add<T>("CIFAffineTransform2Filter", "Affine Transform2 Filter", kCategories,
                    {
                        {"inputImage", &T::inputImage},
                        {"inputAngle", &T::inputAngle, "", scalar(-3.14, 3.14, 0.05)},
                        {"inputSqueeze", &T::inputSqueeze, "", scalar(-1, 1, 0.2)},
                        {"inputSkew", &T::inputSkew, "", scalar(-5, 5, 0)},
                    });
}

Image AffineTransform1::outputImage() const
{
    const float angle = static_cast<float>(inputAngle);
    const float squeeze = static_cast<float>(inputSqueeze);
    const float skew = static_cast<float>(inputSkew);
    const double xFactor = squeeze >= 0 ? 1 - squeeze : 1;
    const double yFactor = squeeze >= 0 ? 1 : 1 + squeeze;
    // The middle of a picture that begins at the origin, wherever this one begins.
    const Rect extent = inputImage.extent();
    const double x = 0.5 * extent.width, y = 0.5 * extent.height;
    return transformed(inputImage, AffineTransform::translation(-x, -y)
                                       .followedBy(matrix(angle, xFactor, yFactor, skew))
                                       .followedBy(AffineTransform::translation(x, y)));
}

} // namespace filters
