// effect-icons FOLDER: a thumbnail under every icon name of both catalogues, made by the effect
// itself on a scene of few bold shapes: FOLDER/<name>.tif of 32 pixels, FOLDER/<name>@2x.tif of 64.
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "plugin/StartingValues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace {

using drawing::Picture;
using drawing::PictureRef;
using foundation::Color;
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
        {"CIWhitePointAdjust", {{"inputColor", Color{1, 0.8f, 0.5f, 1}}}},
        {"CIGlassDistortion", {{"inputScale", 300.0}}},
        {"CIFShadingFilter", {{"inputScale", 8.0}, {"inputRadius", 8.0}}},
        {"CIUnsharpMask", {{"inputRadius", 12.0}, {"inputIntensity", 1.0}}},
        {"CIColorPosterize", {{"inputLevels", 3.0}}},
        {"CIGaussianBlur", {{"inputRadius", 9.0}}},
        {"CIBumpDistortion", {{"inputRadius", 90.0}, {"inputScale", 0.8}}},
        {"CIBumpDistortionLinear", {{"inputRadius", 70.0}, {"inputScale", -0.5}}},
        {"CICircleSplashDistortion", {{"inputRadius", 50.0}}},
        {"CIHoleDistortion", {{"inputRadius", 45.0}}},
        {"CIPinchDistortion", {{"inputRadius", 95.0}, {"inputScale", 1.0}}},
        {"CITwirlDistortion", {{"inputRadius", 95.0}, {"inputAngle", 3.5}}},
        {"CIVortexDistortion", {{"inputRadius", 95.0}}},
        {"CITorusLensDistortion",
         {{"inputRadius", 90.0}, {"inputWidth", 70.0}, {"inputRefraction", 3.0}}},
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

// A house with a red roof before mountains, under the sun: a position in a square of side 1, y up,
// to its colour.
Color sceneAt(double x, double y)
{
    const auto mixed = [](Color a, Color b, double t) {
        const auto f = static_cast<float>(t);
        return Color::rgb(a.red + (b.red - a.red) * f, a.green + (b.green - a.green) * f,
                          a.blue + (b.blue - a.blue) * f, 1);
    };
    const auto within = [](double v, double low, double high) { return v >= low && v < high; };
    // The house stands in front of all.
    const double across = std::abs(x - 0.46);
    if (y >= 0.5 && y < 0.74 - 0.75 * across)
        return {0.86f, 0.2f, 0.13f, 1};
    if (within(y, 0.2, 0.5) && across < 0.25) {
        if (within(x, 0.54, 0.64) && within(y, 0.33, 0.44))
            return {0.16f, 0.35f, 0.72f, 1};
        if (within(x, 0.3, 0.41) && y < 0.4)
            return {0.42f, 0.24f, 0.12f, 1};
        return x < 0.5 ? Color{0.99f, 0.95f, 0.84f, 1} : Color{0.93f, 0.87f, 0.74f, 1};
    }
    // The meadow, with flowers.
    const double meadow = 0.3 + 0.06 * std::sin(5 * x + 0.6);
    if (y < meadow) {
        const double row = std::floor(y / 0.07);
        const double u = x / 0.11 + 0.5 * std::fmod(row, 2), v = y / 0.07;
        if (y < 0.17 && std::hypot(u - std::floor(u) - 0.5, 0.64 * (v - row - 0.5)) < 0.17)
            return std::fmod(std::floor(u) + row, 3) == 0 ? Color{0.98f, 0.35f, 0.55f, 1}
                                                          : Color{1, 0.95f, 0.4f, 1};
        return mixed({0.22f, 0.5f, 0.12f, 1}, {0.55f, 0.8f, 0.25f, 1}, y / meadow);
    }
    if (std::hypot(x - 0.83, y - 0.82) < 0.1)
        return {1, 0.84f, 0.15f, 1};
    const double ridge = std::max(0.78 - 1.1 * std::abs(x - 0.1), 0.68 - 0.9 * std::abs(x - 0.85));
    if (y < ridge)
        return y > 0.6 ? Color::white() : Color{0.45f, 0.47f, 0.66f, 1};
    return mixed({0.78f, 0.91f, 1, 1}, {0.2f, 0.5f, 0.93f, 1}, y);
}

PictureRef scene()
{
    constexpr int kSamples = 4; // a side of each pixel
    const auto bitmap = Bitmap::make(kWorking, kWorking, PixelFormat::Rgba8);
    for (int y = 0; y < kWorking; ++y)
        for (int x = 0; x < kWorking; ++x) {
            double sum[3] = {};
            for (int sub = 0; sub < kSamples * kSamples; ++sub) {
                const double u = x + (sub % kSamples + 0.5) / kSamples;
                const double v = kWorking - y - (sub / kSamples + 0.5) / kSamples;
                const Color c = sceneAt(u / kWorking, v / kWorking);
                sum[0] += c.red, sum[1] += c.green, sum[2] += c.blue;
            }
            std::byte* const p = bitmap->row(y) + 4 * x;
            for (int c = 0; c < 3; ++c)
                p[c] = static_cast<std::byte>(std::lround(255 * sum[c] / (kSamples * kSamples)));
            p[3] = std::byte{255};
        }
    return Picture::fromBitmap(bitmap);
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
    if (identifier == "CIGlassDistortion")
        values.set("CIFinputTexture", main.CIFGlassTextureWithName("Lenses"));
    if (identifier == "CIFShadingFilter")
        values.set("CIFinputShadingImage", main.CIFShadingMaterialWithName("Gold"));
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
    if (count != 2) {
        std::fprintf(stderr, "usage: effect-icons FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    const PictureRef source = scene();

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
