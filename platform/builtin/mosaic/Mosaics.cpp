// Pixellate, hexagonal pixellate and crystallize: each cell in the mean colour of its pixels.
#include "platform/builtin/mosaic/Mosaics.h"

#include "platform/builtin/Inputs.h"
#include "platform/builtin/mosaic/CellMosaic.h"

namespace builtin {

using namespace imaging;

namespace {

constexpr Categories kStylize = {"Stylize", "Video", "StillImage", "BuiltIn"};

template <class Cells>
Image painted(const Image& image, std::shared_ptr<const Cells> cells)
{
    if (!image || image.node()->extent().isEmpty())
        return image;
    const IRect& extent = image.node()->extent();
    const IRect covered = extent.isPlane() ? extent : cells->covered(extent);
    return cellMosaic(image, std::move(cells), covered);
}

} // namespace

void Pixellate::initialize(FilterRegistry& registry)
{
    using T = Pixellate;
    add<T>(registry, "CIPixellate", "Pixelate", kStylize,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
               {"inputScale", &T::inputScale, "Scale", distance().min(1).slider(1, 100)},
           });
}

Image Pixellate::outputImage() const
{
    const auto squares = std::make_shared<const SquareCells>(inputCenter.point(), inputScale);
    return squares->isPixelGrid() ? inputImage : painted(inputImage, squares);
}

void HexagonalPixellate::initialize(FilterRegistry& registry)
{
    using T = HexagonalPixellate;
    add<T>(
        registry, "CIHexagonalPixellate", "Hexagonal Pixelate", kStylize,
        {
            {"inputImage", &T::inputImage, "Image", kImage},
            {"inputCenter", &T::inputCenter, "Center", kPosition},
            {"inputScale", &T::inputScale, "Scale", distance().min(1).slider(1, 100).identity(1)},
        });
}

Image HexagonalPixellate::outputImage() const
{
    return painted(inputImage,
                   std::make_shared<const HexagonCells>(inputCenter.point(), inputScale));
}

void Crystallize::initialize(FilterRegistry& registry)
{
    using T = Crystallize;
    add<T>(registry, "CICrystallize", "Crystallize", kStylize,
           {
               {"inputImage", &T::inputImage, "Image", kImage},
               {"inputRadius", &T::inputRadius, "Radius",
                distance().min(1).slider(1, 100).identity(1)},
               {"inputCenter", &T::inputCenter, "Center", kPosition},
           });
}

Image Crystallize::outputImage() const
{
    return painted(inputImage,
                   std::make_shared<const CrystalCells>(inputCenter.point(), inputRadius));
}

} // namespace builtin
