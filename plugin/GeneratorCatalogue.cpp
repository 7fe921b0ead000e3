// The generator catalogue: twenty generators in five categories, named in the user's language.
#include "platform/foundation/Bundle.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

namespace plugin {

namespace {

// Tag 1: the generator runs through a colour gradient; 0: it picks from a colour scheme.
constexpr Row generator(const char* name, const char* className, const char* icon, int tag,
                        int bits)
{
    return own(name, className, icon, {0.0f, 0.0f, 0.0f}, 500.0f, tag, 0, bits);
}

constexpr Row kOther[] = {
    generator("Gathering", "GLIF_StarField", "GLIF_StarFieldIcon", 0, 0),
    generator("Brushes", "GLIF_Dabs", "GLIF_BrushesIcon", 0, 0),
    generator("Spinning Polygons", "GLIF_TwistPolygons", "GLIF_TwistedSquaresIcon", 1, 1),
};

constexpr Row kScience[] = {
    generator("Atoms", "GLIF_Foam", "GLIF_TwistedSquaresIcon", 0, 0),
    generator("Plasma", "GLIF_Plasma", "GLIF_Plasma", 1, 2),
    generator("Biology", "GLIF_Biomorph", "GLIF_Biomorph", 1, 1),
    generator("Circle Interference", "GLIF_CircleRipples", "GLIF_CircleRipples", 1, 3),
    generator("Star Dust", "GLIF_Texture", "GLIF_TextureIcon", 0, 2),
};

constexpr Row kLinesAndFields[] = {
    generator("Color Bars", "GLIF_ColourBars", "GLIF_ColourBarsIcon", 0, 4),
    generator("Divide Lines", "GLIF_AbstractLines", "GLIF_TwistedSquaresIcon", 0, 4),
    generator("Triangles", "GLIF_Triangles", "GLIF_TrianglesCurveIcon", 0, 4),
    generator("Shapes", "GLIF_Shapes", "GLIF_ShapesIcon", 0, 0),
    generator("Spinning Squares", "GLIF_TwistedSquares", "GLIF_TwistedSquaresIcon", 1, 1),
    generator("Flying Lines", "GLIF_FlashLines", "GLIF_FlashLinesIcon", 1, 0),
};

constexpr Row kGradient[] = {
    generator("Spiral", "GLIF_Spiral", "GLIF_TwistedSquaresIcon", 1, 0),
    generator("Radial Distortion", "GLIF_RadialPlasma", "GLIF_TwistedSquaresIcon", 1, 0),
    generator("Sand-Glass", "GLIF_SandGlass", "GLIF_TwistedSquaresIcon", 1, 3),
};

constexpr Row kLaying[] = {
    generator("Bricks", "GLIF_Parquet", "GLIF_TwistedSquaresIcon", 0, 3),
    generator("Hilbert Curve", "GLIF_HilbertCurve", "GLIF_HilbertCurveIcon", 0, 0),
    generator("Rags", "GLIF_Cafel", "GLIF_CafelIcon", 0, 2),
};

constexpr Category kCategories[] = {
    {"Other", kOther},       {"Science", kScience}, {"Lines & Fields", kLinesAndFields},
    {"Gradient", kGradient}, {"Laying", kLaying},
};

} // namespace

EnglishNames generatorNamesInEnglish(std::string_view identifier)
{
    for (const Category& category : kCategories)
        for (const Row& row : category.rows)
            if (row.identifier == identifier)
                return {row.name, category.name};
    return {};
}

} // namespace plugin

ICoreImageFilter::ArrayRef CIFMain::initGLIFList()
{
    foundation::Array catalogue;
    for (const plugin::Category& category : plugin::kCategories)
        catalogue.emplace_back(
            plugin::describeCategory(category, true, foundation::localizedString));
    return std::make_shared<const foundation::Array>(std::move(catalogue));
}
