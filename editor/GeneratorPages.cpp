#include "editor/GeneratorPages.h"

#include <algorithm>

namespace editor {

namespace {

// clang-format off
constexpr GeneratorPage kPages[] = {
    {"GLIF_Plasma",
     {{{"_plasmaSmooth", "GLIFSmoothness"}, {"_plasmaResolution", "GLIFResolution"}}},
     "_plasmaShapePopUpButton", "GLIFShapesType"},
    {"GLIF_Biomorph",
     {{{"_biomorphResolution", "GLIFResolution"}, {"_biomorphC1", "GLIFCReal"},
       {"_biomorphC2", "GLIFCImag"}}}},
    {"GLIF_CircleRipples",
     {{{"_circleRipplesResolution", "GLIFResolution"}, {"_circleRipplesSize", "GLIFSize"},
       {"_circleRipplesKoef", "GLIFKoef"}}},
     "_circleRipplesShapePopUpButton", "GLIFShapesType"},
    {"GLIF_TwistedSquares",
     {{{"_twistedSquaresStep", "GLIFStep", "NSTextField"},
       {"_twistedSquaresSize", "GLIFSize", "NSTextField"}}}},
    {"GLIF_HilbertCurve",
     {{{"_hilbertCurveRange", "GLIFCurveRange"}, {"_hilbertCurveSize", "GLIFSize"}}},
     "_hilbertCurveTypeCapsPopUpButton", "GLIFTypeCaps"},
    {"GLIF_FlashLines",
     {{{"_flashLinesRange", "GLIFCurveRange"}, {"_flashLinesWidthLine", "GLIFWidthLine"}}}},
    {"GLIF_ColourBars",
     {{{"_colourBarsSize", "GLIFSize"}, {"_colourBarsAngle", "GLIFAngle"},
       {"_colourBarsDiff", "GLIFDiff"}, {"_colourBarsWidthLine", "GLIFWidthLine"}}}},
    {"GLIF_StarField",
     {{{"_starFieldDensity", "GLIFDensity"}, {"_starFieldSize", "GLIFSize"},
       {"_starFieldCount", "GLIFCount"}}},
     "_starFieldPopUpButton", "GLIFShapesType"},
    {"GLIF_TwistPolygons",
     {{{"_twistPolygonsAngles", "GLIFCountAngle"}, {"_twistPolygonsPolygons", "GLIFCountCircle"},
       {"_twistPolygonsShift", "GLIFDeltaPercent"}, {"_twistPolygonsSize", "GLIFRadius"}}}},
    {"GLIF_Shapes", {}, "_shapesPopUpButton", "GLIFShapesType"},
    {"GLIF_Foam",
     {{{"_foamQuantity", "GLIFQuantity"}, {"_foamSize", "GLIFSize"},
       {"_foamQuality", "GLIFQuality"}}},
     "_foamFigurePopUpButton", "GLIFIdFigure"},
    {"GLIF_Parquet",
     {{{"_parquetWidth", "GLIFCellWidth"}, {"_parquetHeight", "GLIFCellHeight"},
       {"_parquetResolution", "GLIFDencity"}}}, // sic
     "_parquetFigurePopUpButton", "GLIFIdFigure"},
    {"GLIF_AbstractLines",
     {{{"_abstractLinesCountLines", "GLIFCountLines"},
       {"_abstractLinesWidthLine", "GLIFWidthLine"}}},
     "_abstractLinesFigurePopUpButton", "GLIFShapesType"},
    {"GLIF_SandGlass",
     {{{"_sandGlassFactor", "GLIFFactor"}}},
     "_sandGlassShapePopUpButton", "GLIFShapesType"},
    {"GLIF_Spiral",
     {{{"_spiralFactor", "GLIFFactor"}, {"_spiralRandomWind", "GLIFRandomWind"},
       {"_spiralCurvature", "GLIFCurvature"}}}},
    {"GLIF_RadialPlasma",
     {{{"_radialPlasmaFadeOut", "GLIFFadeOut"}, {"_radialPlasmaRoughness", "GLIFRoughness"}}}},
    {"GLIF_Dabs",
     {{{"_dabsCount", "GLIFCountDabs"}, {"_dabsLength", "GLIFLength"},
       {"_dabsAngle", "GLIFAngle"}}},
     "_dabsTypePopUpButton", "GLIFType"},
    {"GLIF_Texture",
     {{{"_textureIter", "GLIFIter"}, {"_textureTile", "GLIFTile"}}},
     "_textureTypePopUpButton", "GLIFShapesType"},
    {"GLIF_Triangles",
     {{{"_trianglesCount", "GLIFCount"}, {"_trianglesWidthLine", "GLIFWidthLine"}}}},
    {"GLIF_Cafel",
     {{{"_cafelQuantity", "GLIFQuantity"}, {"_cafelQuality", "GLIFQuality"}}},
     "_cafelFigurePopUpButton", "GLIFIdFigure"},
};
// clang-format on

} // namespace

std::span<const GeneratorPage> generatorPages()
{
    return kPages;
}

const GeneratorPage* generatorPage(std::string_view generator)
{
    const auto page = std::ranges::find(kPages, generator, &GeneratorPage::generator);
    return page == std::end(kPages) ? nullptr : page;
}

} // namespace editor
