// The filter catalogue: nine categories of filters, most of them built in, under the names, icons
// and offered values by which hosts know them. Several icons serve entries that they are not named
// after.
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <cmath>

namespace plugin {

namespace {

// Columns: name, identifier, icon, offered values, [maximum, tag,] style.
// Styles: 1 takes a centre, 2 led by a colour, 3 light or pattern, 255 crop, 0 the rest.
// Tags: 1 crop, 10 takes a glass texture, 20 takes a shading material, 31…33 in a group.
// clang-format off

constexpr Row kCrop[] = {
    limited("Crop", "Crop", "CropIcon", {0, 0, 0}, 0, 1, 255),
    plain("Transform", "CIFAffineTransform2Filter", "CIFAffineTransform2FilterIcon", {0.2f, 0.0f, 0.0f}, 0),
};

constexpr Row kColor[] = {
    plain("Color Controls", "CIColorControls", "ColorControlsIcon", {1.5f, 0.0f, 1.3f}, 0),
    plain("Exposure Adjust", "CIExposureAdjust", "ExposureAdjustIcon", {1.3f, 0.0f, 0.0f}, 0),
    plain("Gamma Adjust", "CIGammaAdjust", "GammaAdjustIcon", {0.7f, 0.0f, 0.0f}, 0),
    plain("Hue Adjust", "CIHueAdjust", "HueAdjustIcon", {-2.15f, 0.0f, 0.0f}, 0),
    plain("White Point Adjust", "CIWhitePointAdjust", "WhitePointAdjustIcon", {0.0f, 0.0f, 0.0f}, 2),
    plain("Color Monochrome", "CIColorMonochrome", "ColorMonochromeIcon", {1.0f, 0.0f, 0.0f}, 2),
    plain("Color Posterize", "CIColorPosterize", "ColorPosterizeIcon", {5.37f, 0.0f, 0.0f}, 0),
    plain("Color Invert", "CIColorInvert", "ColorInvertIcon", {0.0f, 0.0f, 0.0f}, 0),
    plain("Transparent", "CIDissolveTransition", "CICopyMachineTransitionIcon", {0.25f, 0.0f, 70.0f}, 0),
    own("Transparent Color", "CIFTransparentColorFilter", "CIFTransparentColorFilterIcon", {0.9f, 0.0f, 0.0f}, 1.0f, 0, 2),
    plain("False Color", "CIFalseColor", "CIFTransparentColorFilterIcon", {0.9f, 0.0f, 0.0f}, 2),
    own("Bi-Color", "CIFBlackWhiteFilter", "CIFBlackWhiteFilterIcon", {0.5f, 0.0f, 1.0f}, 1.0f, 0, 2),
    newer(plain("Comic Effect", "CIComicEffect", "ColorInvertIcon", {0.0f, 0.0f, 0.0f}, 0)),
};

constexpr Row kBlurFilters[] = {
    limited("Gaussian Blur", "CIGaussianBlur", "GaussianBlurIcon", {7.0f, 0.0f, 0.0f}, 15.0, 33, 0),
    limited("Box Blur", "CIBoxBlur", "CIBoxBlurIcon", {7.0f, 0.0f, 0.0f}, 20.0, 33, 0),
    limited("Disc Blur", "CIDiscBlur", "CIDiscBlurIcon", {6.0f, 0.0f, 0.0f}, 15.0, 33, 0),
};

constexpr Row kFocus[] = {
    plain("Unsharp Mask", "CIUnsharpMask", "UnsharpMaskIcon", {1.0f, 0.25f, 0.0f}, 0),
    plain("Noise Reduction", "CINoiseReduction", "CICopyMachineTransitionTransitionIcon", {0.25f, 0.0f, 70.0f}, 0),
    newer(group("Blur", "BlurFilters", kBlurFilters, 33, 0, 3)),
    older(limited("Gaussian Blur", "CIGaussianBlur", "GaussianBlurIcon", {7.0f, 0.0f, 0.0f}, 15.0, 0, 0)),
    limited("Motion Blur", "CIMotionBlur", "MotionBlurIcon", {42.0f, 0.5f, 0.0f}, 50.0, 0, 0),
    plain("Sharpen Luminance", "CISharpenLuminance", "SharpenLuminanceIcon", {4.0f, 0.0f, 0.0f}, 0),
    limited("Zoom Blur", "CIZoomBlur", "ZoomBlurIcon", {15.0f, 0.0f, 0.0f}, 20.0, 0, 1),
};

constexpr Row kDistortion[] = {
    plain("Bump Distortion", "CIBumpDistortion", "BumpDistortionIcon", {300.0f, 0.6f, 0.0f}, 1),
    newer(limited("Bump Distortion Linear", "CIBumpDistortionLinear", "CIBumpDistortionLinearIcon", {50.0f, 0.0f, 0.0f}, 600.0f, 0.0f, 1)),
    plain("Circular Splash", "CICircleSplashDistortion", "CircularSplashDistortionIcon", {150.0f, 0.0f, 0.0f}, 1),
    own("Rectangular Splash", "CIFSlideFrameFilter", "CIFSlideFrameFilterIcon", {0.8f, 0.8f, 70.0f}, 1.0f, 0, 1),
    plain("Circular Wrap", "CICircularWrap", "CircularWrapIcon", {117.0f, -1.2f, 0.0f}, 1),
    plain("Hole Distortion", "CIHoleDistortion", "HoleDistortionIcon", {140.0f, 0.0f, 0.0f}, 1),
    plain("Pinch Distortion", "CIPinchDistortion", "PinchDistortionIcon", {300.0f, 0.7f, 0.0f}, 1),
    plain("Twirl Distortion", "CITwirlDistortion", "TwirlDistortionIcon", {325.0f, 3.5f, 0.0f}, 1),
    plain("Vortex Distortion", "CIVortexDistortion", "VortexDistortionIcon", {800.0f, 95.0f, 0.0f}, 1),
    limited("Glass Distortion", "CIGlassDistortion", "GlassDistortionIcon", {100.0f, 0.0f, 0.0f}, 500.0f, 10, 1),
    own("Net Distortion", "CIFNetDistortion", "CIFNetDistortionIcon", {8.0f, 5.0f, 20.0f}, 20.0f, 0, 0),
    plain("Torus Lens", "CITorusLensDistortion", "CITorusLensDistortionMachineIcon", {160.0f, 80.0f, 1.7f}, 1),
    own("Page Curl", "CIPageCurlTransition", "PageCurlIcon", {0.26f, 2.22f, 100.0f}, 1.0f, 0, 0),
};

constexpr Row kStyle[] = {
    plain("Bloom", "CIBloom", "BloomIcon", {10.0f, 0.6f, 0.0f}, 0),
    plain("Gloom", "CIGloom", "GloomIcon", {10.0f, 0.6f, 0.0f}, 0),
    plain("Crystallize", "CICrystallize", "CrystallizeIcon", {13.0f, 0.0f, 0.0f}, 1),
    plain("Pointillize", "CIPointillize", "PointillizeIcon", {10.0f, 0.0f, 0.0f}, 1),
    plain("Pixellate", "CIPixellate", "PixellateIcon", {10.0f, 0.0f, 0.0f}, 1),
    newer(plain("Hexagonal Pixellate", "CIHexagonalPixellate", "CIHexagonalPixellateIcon", {8.0f, 0.0f, 0.0f}, 1)),
    plain("Edge Work", "CIEdgeWork", "EdgeWorkIcon", {2.5f, 0.0f, 0.0f}, 0),
    own("Sobel", "CIFSobel", "SobelIcon", {1.0f, 0.0f, 0.0f}, 10.0f, 0, 0),
    limited("Edges", "CIEdges", "EdgesIcon", {10.0f, 0.0f, 0.0f}, 100.0f, 0.0f, 0),
    newer(plain("Line Overlay", "CILineOverlay", "CILineOverlayIcon", {0.07f, 0.71f, 1.5f}, 0)),
    own("Shaded Materials", "CIFShadingFilter", "ShadedMaterialIcon", {5.5f, 3.0f, 0.0f}, 15.0f, 20, 0),
    plain("Random Generator", "CIRandomGenerator", "RandomGeneratorIcon", {1.0f, 1.0f, 1.0f}, 0),
};

constexpr Row kHalftone[] = {
    plain("Circular Screen", "CICircularScreen", "CircularScreenIcon", {12.0f, 0.5f, 0.0f}, 1),
    plain("Dot Screen", "CIDotScreen", "DotScreenIcon", {0.3f, 10.0f, 0.8f}, 1),
    plain("Hatched Screen", "CIHatchedScreen", "HatchedScreenIcon", {0.5f, 10.0f, 0.8f}, 1),
    plain("Line Screen", "CILineScreen", "LineScreenIcon", {0.5f, 10.0f, 0.8f}, 1),
    plain("CMYK Halftone", "CICMYKHalftone", "CICMYKHalftoneIcon", {10.0f, 0.0f, 0.8f}, 1),
};

constexpr Row kTiledTextures[] = {
    limited("Fourfold Rotated", "CIFourfoldRotatedTile", "CIFourfoldRotatedTileIcon", {0.0f, 100.0f, 100.0f}, 3.14f, 31, 1),
    limited("Fourfold Translated", "CIFourfoldTranslatedTile", "CIFourfoldTranslatedTileIcon", {0.0f, 1.57f, 100.0f}, 3.14f, 31, 1),
    limited("Glide Reflected", "CIGlideReflectedTile", "CIGlideReflectedTileIcon", {0.0f, 100.0f, 0.0f}, 3.14f, 31, 1),
};
constexpr Row kReflectedTextures[] = {
    limited("Eightfold Reflected", "CIEightfoldReflectedTile", "CIEightfoldReflectedTileIcon", {0.0f, 100.0f, 0.0f}, 3.14f, 32, 1),
    limited("Fourfold Reflected", "CIFourfoldReflectedTile", "CIFourfoldReflectedTileIcon", {0.0f, 1.57f, 100.0f}, 3.14f, 32, 1),
    limited("Sixfold Reflected", "CISixfoldReflectedTile", "CISixfoldReflectedTileIcon", {0.0f, 100.0f, 0.0f}, 3.14f, 32, 1),
    limited("Sixfold Rotated", "CISixfoldRotatedTile", "CISixfoldRotatedTileIcon", {0.0f, 100.0f, 0.0f}, 3.14f, 32, 1),
};

constexpr Row kTile[] = {
    plain("Kaleidoscope", "CIKaleidoscope", "KaleidoscopeIcon", {17.0f, -1.9f, 0.0f}, 1),
    own("Square Tile", "CIFOffset", "OffsetIcon", {0.0f, 1.0f, 0.0f}, 3.14f, 0, 1),
    plain("Op Tile", "CIOpTile", "OpTileIcon", {2.39f, -0.6f, 45.5f}, 1),
    plain("Parallelogram Tile", "CIParallelogramTile", "ParallelogramTileIcon", {-1.2f, -1.45f, 100.0f}, 1),
    plain("Triangle Tile", "CITriangleTile", "TriangleTileIcon", {-2.0f, 320.0f, 0.0f}, 1),
    newer(group("Tiled Textures", "TiledTextures", kTiledTextures, 31, 1, 1)),
    newer(group("Reflected Textures", "ReflectedTextures", kReflectedTextures, 32, 1, 2)),
};

constexpr Row kLumine[] = {
    plain("Lenticular Halo", "CILenticularHaloGenerator", "LenticularHaloGeneratorIcon", {65.0f, 25.0f, 0.0f}, 3),
    plain("Starshine Generator", "CIStarShineGenerator", "StarshineGeneratorIcon", {37.0f, 25.0f, 3.14f}, 3),
    plain("Sunbeams", "CISunbeamsGenerator", "SunbeamsIcon", {192.0f, 1.0f, 1.68f}, 3),
    plain("Gaussian Gradient", "CIGaussianGradient", "CIGaussianGradientIcon", {150.0f, 0.0f, 0.0f}, 3),
};

constexpr Row kOverlap[] = {
    plain("Mod Transition", "CIModTransition", "ModTransitionIcon", {0.25f, 0.0f, 70.0f}, 1),
    newer(four("Bars Swipe Transition", "CIBarsSwipeTransition", "CIBarsSwipeTransitionIcon", {2.38f, 30.0f, 10.0f, 0.3f}, 6.28f, 0, 0)),
    plain("Checkerboard Generator", "CICheckerboardGenerator", "CheckerboardGeneratorIcon", {32.0f, 1.0f, 0.0f}, 3),
    plain("Stripes", "CIStripesGenerator", "CICopyMachineTransitionIcon", {50.0f, 1.0f, 70.0f}, 3),
};

constexpr Category kCategories[] = {
    {"Crop", kCrop},
    {"Color", kColor},
    {"Focus", kFocus},
    {"Distortion", kDistortion},
    {"Style", kStyle},
    {"Halftone", kHalftone},
    {"Tile", kTile},
    {"Lumine", kLumine},
    {"Overlap", kOverlap},
};
// clang-format on

// Stored in English; whoever shows a name translates it then.
std::string untranslated(std::string_view text)
{
    return std::string(text);
}

} // namespace

} // namespace plugin

ICoreImageFilter::ArrayRef CIFMain::initCIFList()
{
    const bool newer = std::floor(plugin::toolkitVersion()) >= plugin::kNewerToolkitVersion;
    foundation::Array catalogue;
    for (const plugin::Category& category : plugin::kCategories)
        catalogue.emplace_back(plugin::describeCategory(category, newer, plugin::untranslated));
    return std::make_shared<const foundation::Array>(std::move(catalogue));
}
