// The list of the built-in filters: a class without a line here does not exist.
#include "platform/builtin/Register.h"

#include "platform/builtin/blur/BoxBlur.h"
#include "platform/builtin/blur/DiscBlur.h"
#include "platform/builtin/blur/GaussianBlur.h"
#include "platform/builtin/blur/NoiseReduction.h"
#include "platform/builtin/blur/Glow.h"
#include "platform/builtin/blur/MotionBlur.h"
#include "platform/builtin/blur/Sharpen.h"
#include "platform/builtin/blur/ZoomBlur.h"
#include "platform/builtin/color/ColorMaps.h"
#include "platform/builtin/composite/Compositing.h"
#include "platform/builtin/distortion/BumpDistortionLinear.h"
#include "platform/builtin/distortion/CircleSplashDistortion.h"
#include "platform/builtin/distortion/CircleWarps.h"
#include "platform/builtin/distortion/CircularWrap.h"
#include "platform/builtin/distortion/GlassDistortion.h"
#include "platform/builtin/distortion/HoleDistortion.h"
#include "platform/builtin/generator/Lights.h"
#include "platform/builtin/generator/Patterns.h"
#include "platform/builtin/geometry/Geometry.h"
#include "platform/builtin/halftone/CMYKHalftone.h"
#include "platform/builtin/halftone/Screens.h"
#include "platform/builtin/lighting/HeightField.h"
#include "platform/builtin/lighting/ShadedMaterial.h"
#include "platform/builtin/mosaic/Mosaics.h"
#include "platform/builtin/stylize/ComicEffect.h"
#include "platform/builtin/stylize/EdgeWork.h"
#include "platform/builtin/stylize/Edges.h"
#include "platform/builtin/stylize/LineOverlay.h"
#include "platform/builtin/tile/AffineTile.h"
#include "platform/builtin/tile/FoldTiles.h"
#include "platform/builtin/tile/Kaleidoscope.h"
#include "platform/builtin/tile/OpTile.h"
#include "platform/builtin/transition/PageCurl.h"
#include "platform/builtin/transition/Transitions.h"

namespace builtin {

void registerBuiltinFilters(imaging::FilterRegistry& registry)
{
    ColorControls::initialize(registry);
    ExposureAdjust::initialize(registry);
    GammaAdjust::initialize(registry);
    HueAdjust::initialize(registry);
    WhitePointAdjust::initialize(registry);
    ColorMonochrome::initialize(registry);
    ColorPosterize::initialize(registry);
    ColorInvert::initialize(registry);
    FalseColor::initialize(registry);
    ColorMatrix::initialize(registry);

    GaussianBlur::initialize(registry);
    NoiseReduction::initialize(registry);
    BoxBlur::initialize(registry);
    DiscBlur::initialize(registry);
    MotionBlur::initialize(registry);
    ZoomBlur::initialize(registry);
    UnsharpMask::initialize(registry);
    SharpenLuminance::initialize(registry);
    Bloom::initialize(registry);
    Gloom::initialize(registry);

    Edges::initialize(registry);
    EdgeWork::initialize(registry);
    LineOverlay::initialize(registry);
    ComicEffect::initialize(registry);

    CircularScreen::initialize(registry);
    DotScreen::initialize(registry);
    HatchedScreen::initialize(registry);
    LineScreen::initialize(registry);
    CMYKHalftone::initialize(registry);

    BumpDistortion::initialize(registry);
    BumpDistortionLinear::initialize(registry);
    CircleSplashDistortion::initialize(registry);
    CircularWrap::initialize(registry);
    HoleDistortion::initialize(registry);
    PinchDistortion::initialize(registry);
    TwirlDistortion::initialize(registry);
    VortexDistortion::initialize(registry);
    TorusLensDistortion::initialize(registry);
    GlassDistortion::initialize(registry);
    AffineTransformFilter::initialize(registry);
    Crop::initialize(registry);

    AffineTile::initialize(registry);
    Kaleidoscope::initialize(registry);
    OpTile::initialize(registry);
    ParallelogramTile::initialize(registry);
    TriangleTile::initialize(registry);
    FourfoldRotatedTile::initialize(registry);
    FourfoldTranslatedTile::initialize(registry);
    GlideReflectedTile::initialize(registry);
    EightfoldReflectedTile::initialize(registry);
    FourfoldReflectedTile::initialize(registry);
    SixfoldReflectedTile::initialize(registry);
    SixfoldRotatedTile::initialize(registry);

    Pixellate::initialize(registry);
    HexagonalPixellate::initialize(registry);
    Crystallize::initialize(registry);
    Pointillize::initialize(registry);

    ConstantColorGenerator::initialize(registry);
    CheckerboardGenerator::initialize(registry);
    StripesGenerator::initialize(registry);
    GaussianGradient::initialize(registry);
    LenticularHaloGenerator::initialize(registry);
    StarShineGenerator::initialize(registry);
    SunbeamsGenerator::initialize(registry);
    RandomGenerator::initialize(registry);

    DissolveTransition::initialize(registry);
    ModTransition::initialize(registry);
    BarsSwipeTransition::initialize(registry);
    PageCurlTransition::initialize(registry);

    SourceOverCompositing::initialize(registry);
    AdditionCompositing::initialize(registry);
    HeightFieldFromMask::initialize(registry);
    ShadedMaterial::initialize(registry);
}

} // namespace builtin
