// effect-icons SAMPLES FOLDER: a thumbnail under every icon name of both catalogues, made by the
// effect itself: FOLDER/<name>.tif of 32 pixels and FOLDER/<name>@2x.tif of 64.
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "plugin/StartingValues.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace {

using drawing::Picture;
using drawing::PictureRef;
using foundation::Dictionary;
using foundation::Value;
using foundation::Vector;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::PixelFormat;

constexpr int kSmall = 32, kLarge = 64;
// Effects are made larger and reduced, so that what they do to single pixels is not all there is.
constexpr int kWorking = 192;

// What shows an effect on a picture of that size better than the values it starts with.
const std::map<std::string, Dictionary>& tellingValues()
{
    static const std::map<std::string, Dictionary> all = {
        {"CIColorPosterize", {{"inputLevels", 3.0}}},
        {"CIGaussianBlur", {{"inputRadius", 9.0}}},
        {"CIBumpDistortion", {{"inputRadius", 90.0}, {"inputScale", 0.8}}},
        {"CIBumpDistortionLinear", {{"inputRadius", 70.0}, {"inputScale", -0.5}}},
        {"CICircleSplashDistortion", {{"inputRadius", 50.0}}},
        {"CIHoleDistortion", {{"inputRadius", 45.0}}},
        {"CIPinchDistortion", {{"inputRadius", 95.0}, {"inputScale", 1.0}}},
        {"CITwirlDistortion", {{"inputRadius", 95.0}, {"inputAngle", 3.5}}},
        {"CIVortexDistortion", {{"inputRadius", 95.0}}},
        {"CITorusLensDistortion", {{"inputRadius", 85.0}, {"inputWidth", 55.0}}},
        {"CICircularWrap", {{"inputRadius", 30.0}}},
        {"CIPageCurlTransition",
         {{"inputTime", 0.45}, {"inputAngle", -0.7}, {"inputRadius", 40.0}}},
        {"CICrystallize", {{"inputRadius", 18.0}}},
        {"CIPointillize", {{"inputRadius", 14.0}}},
        {"CIPixellate", {{"inputScale", 24.0}}},
        {"CIHexagonalPixellate", {{"inputScale", 14.0}}},
        {"CICircularScreen", {{"inputWidth", 16.0}}},
        {"CIDotScreen", {{"inputWidth", 16.0}, {"inputAngle", 0.6}}},
        {"CIHatchedScreen", {{"inputWidth", 18.0}, {"inputAngle", 0.6}}},
        {"CILineScreen", {{"inputWidth", 15.0}, {"inputAngle", 0.6}}},
        {"CICMYKHalftone", {{"inputWidth", 18.0}}},
        {"CIStripesGenerator", {{"inputWidth", 24.0}}},
        {"CICheckerboardGenerator", {{"inputWidth", 32.0}}},
        {"CILenticularHaloGenerator", {{"inputHaloRadius", 60.0}, {"inputHaloWidth", 50.0}}},
        {"CISunbeamsGenerator", {{"inputSunRadius", 24.0}}},
        {"CIGaussianGradient", {{"inputRadius", 90.0}}},
        {"CIBarsSwipeTransition", {{"inputTime", 0.5}, {"inputWidth", 24.0}}},
        {"CIModTransition",
         {{"inputTime", 0.5}, {"inputRadius", 36.0}, {"inputCompression", 300.0}}},
        {"CIFAffineTransform2Filter", {{"inputAngle", 0.3}, {"inputSqueeze", 0.2}}},
        {"CIFSobel", {{"inputIntensity", 1.5}}},
        {"CIFOffset", {{"inputScale", 2.5}, {"inputAngle", 0.3}}},
        {"CIFSlideFrameFilter", {{"inputFactorX", 0.5}, {"inputFactorY", 0.5}}},
        {"GLIF_HilbertCurve", {{"GLIFCurveRange", 4}}},
    };
    return all;
}

std::shared_ptr<Bitmap> pixelsOf(const PictureRef& picture, int side)
{
    const BitmapRef found = picture ? picture->bitmapOfSize(side, side) : nullptr;
    if (!found)
        return nullptr;
    // A copy of bytes with alpha, whatever it was.
    return imaging::render(imaging::Image::fromBitmap(found), {0, 0, side, side},
                           PixelFormat::Rgba8);
}

using Pixel = std::uint32_t;

Pixel& at(Bitmap& bitmap, int x, int y)
{
    return reinterpret_cast<Pixel*>(bitmap.row(y))[x];
}

// The corners that a crop tool has, over the picture dimmed outside them.
PictureRef cropMarks(const PictureRef& source)
{
    const auto bitmap = pixelsOf(source, kWorking);
    constexpr int kEdge = kWorking / 6, kArm = kWorking / 4, kThick = kWorking / 24;
    for (int y = 0; y < kWorking; ++y)
        for (int x = 0; x < kWorking; ++x) {
            Pixel& p = at(*bitmap, x, y);
            // By symmetry all four corners are the one at the origin.
            const int u = std::min(x, kWorking - 1 - x) - kEdge,
                      v = std::min(y, kWorking - 1 - y) - kEdge;
            const bool outside = u < 0 || v < 0;
            const auto within = [](int w) { return w >= -kThick && w < 0; };
            if ((within(u) && v >= -kThick && v < kArm) || (within(v) && u >= -kThick && u < kArm))
                p = 0xffffffff;
            else if (outside)
                p = (p >> 1 & 0x7f7f7f7f) | 0xff000000;
        }
    return Picture::fromBitmap(bitmap);
}

PictureRef made(CIFMain& main, const std::string& identifier, const PictureRef& source)
{
    if (identifier == "Crop")
        return cropMarks(source);
    const auto entry = plugin::describeEntry(main, identifier);
    if (!entry)
        return nullptr;
    const foundation::Size size{kWorking, kWorking};
    const auto starting = plugin::startingValues(main, *entry, size);
    if (!starting)
        return nullptr;
    Dictionary values = *starting;
    if (const auto found = tellingValues().find(identifier); found != tellingValues().end())
        for (const auto& [key, value] : found->second)
            values.set(key, value);
    if (!entry->isGenerator)
        return main.CIFApplyFilterAttributesForImage(identifier, values, source);
    values.set("GLIFRandomSeed", 7);
    std::srand(7);
    return main.CIFGenerateLayerAttributesSize(identifier, values, size);
}

// Two effects that share an icon share its square, cut from the lower left to the upper right.
std::shared_ptr<Bitmap> halves(const PictureRef& first, const PictureRef& second, int side)
{
    const auto left = pixelsOf(first, side), right = pixelsOf(second, side);
    for (int y = 0; y < side; ++y)
        for (int x = side - y; x < side; ++x)
            at(*left, x, y) = at(*right, x, y);
    for (int y = 0; y < side; ++y)
        at(*left, side - 1 - y, y) = 0xffffffff;
    return left;
}

bool write(const std::shared_ptr<Bitmap>& pixels, const std::filesystem::path& file)
{
    const auto done =
        codecs::writePicture(*Picture::fromBitmap(pixels), file, *codecs::formatNamed("tif"), {});
    if (!done)
        std::fprintf(stderr, "effect-icons: %s\n", done.error().c_str());
    return bool(done);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fprintf(stderr, "usage: effect-icons SAMPLES FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = arguments[2];
    const auto sample = codecs::readPicture(std::filesystem::path(arguments[1]) / "sample.png");
    if (!sample) {
        std::fprintf(stderr, "effect-icons: %s\n", sample.error().c_str());
        return 1;
    }
    // The part with the house, the chart and the balls, at half size.
    const PictureRef source = Picture::fromBitmap(pixelsOf(
        Picture::fromBitmap(imaging::render(imaging::Image::fromBitmap((*sample)->bitmap()),
                                            {250, 20, 384, 384}, PixelFormat::Rgba8)),
        kWorking));

    CIFMain main;
    std::map<std::string, std::vector<std::string>> sharing; // identifiers by icon name
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const auto& entry : plugin::allDescriptors(main.CIFAllFilterDescriptors()))
            if (entry->contains("CIFFilterIcon"))
                sharing[entry->stringValue("CIFFilterIcon")].push_back(
                    entry->stringValue("CIFFilterIdentifier"));
    }

    std::filesystem::create_directories(folder);
    for (const auto& [name, identifiers] : sharing) {
        // Of many, the one that the icon is named after.
        std::vector<std::string> shown = identifiers;
        if (shown.size() > 2) {
            const auto namesake = std::ranges::find_if(
                shown, [&](const std::string& id) { return name.starts_with(id); });
            shown = {namesake != shown.end() ? *namesake : shown.front()};
        }
        std::vector<PictureRef> pictures;
        for (const std::string& identifier : shown) {
            pictures.push_back(made(main, identifier, source));
            if (!pictures.back()) {
                std::fprintf(stderr, "effect-icons: %s makes no picture\n", identifier.c_str());
                return 1;
            }
        }
        for (const int side : {kSmall, kLarge}) {
            const auto pixels = pictures.size() == 2 ? halves(pictures[0], pictures[1], side)
                                                     : pixelsOf(pictures[0], side);
            const std::string file = name + (side == kLarge ? "@2x" : "") + ".tif";
            if (!pixels || !write(pixels, folder / file))
                return 1;
        }
    }
}
