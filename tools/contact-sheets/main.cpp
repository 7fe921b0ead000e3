// contact-sheets SAMPLES FOLDER: one page per family of filters, FOLDER/<family>.html, with every
// filter at its defaults on several pictures, at both ends of each of its sliders, and with its
// centre off the middle. Prints a line for each page: file, tab, title.
#include "filters/Register.h"
#include "platform/builtin/Register.h"
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Bundle.h"
#include "platform/imaging/Filter.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

namespace {

using foundation::AffineTransform;
using foundation::Value;
using foundation::Vector;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::Filter;
using imaging::Image;

struct Family {
    const char *file, *title;
    std::vector<std::string> filters;
};

const std::vector<Family>& families()
{
    static const std::vector<Family> all = {
        {"color",
         "Colour maps",
         {"CIColorControls", "CIExposureAdjust", "CIGammaAdjust", "CIHueAdjust",
          "CIWhitePointAdjust", "CIColorMonochrome", "CIColorPosterize", "CIColorInvert",
          "CIFalseColor", "CIColorMatrix"}},
        {"blur",
         "Blurs and sharpening",
         {"CIGaussianBlur", "CIBoxBlur", "CIDiscBlur", "CIMotionBlur", "CIZoomBlur",
          "CIUnsharpMask", "CISharpenLuminance", "CINoiseReduction", "CIBloom", "CIGloom"}},
        {"sketch",
         "Edges and sketches",
         {"CIEdges", "CIEdgeWork", "CILineOverlay", "CIComicEffect"}},
        {"distortion",
         "Warps",
         {"CIBumpDistortion", "CIBumpDistortionLinear", "CICircleSplashDistortion",
          "CICircularWrap", "CIHoleDistortion", "CIPinchDistortion", "CITwirlDistortion",
          "CIVortexDistortion", "CITorusLensDistortion", "CIGlassDistortion", "CIAffineTransform",
          "CICrop"}},
        {"tile",
         "Tilings",
         {"CIAffineTile", "CIKaleidoscope", "CIOpTile", "CIParallelogramTile", "CITriangleTile",
          "CIFourfoldRotatedTile", "CIFourfoldTranslatedTile", "CIGlideReflectedTile",
          "CIEightfoldReflectedTile", "CIFourfoldReflectedTile", "CISixfoldReflectedTile",
          "CISixfoldRotatedTile"}},
        {"halftone",
         "Halftones",
         {"CICircularScreen", "CIDotScreen", "CIHatchedScreen", "CILineScreen", "CICMYKHalftone"}},
        {"mosaic",
         "Cell mosaics",
         {"CIPixellate", "CIHexagonalPixellate", "CICrystallize", "CIPointillize"}},
        {"light",
         "Lights and patterns",
         {"CIConstantColorGenerator", "CICheckerboardGenerator", "CIStripesGenerator",
          "CIGaussianGradient", "CILenticularHaloGenerator", "CIStarShineGenerator",
          "CISunbeamsGenerator", "CIRandomGenerator"}},
        {"transition",
         "Transitions",
         {"CIDissolveTransition", "CIModTransition", "CIBarsSwipeTransition",
          "CIPageCurlTransition"}},
        {"compositing",
         "Compositing and lighting",
         {"CISourceOverCompositing", "CIAdditionCompositing", "CIHeightFieldFromMask",
          "CIShadedMaterial"}},
        {"own",
         "The plug-in's own",
         {"CIFTransparentColorFilter", "CIFMirrorFilter", "CIFNetDistortion", "CIFSlideFrameFilter",
          "CIFMirrorTileFilter", "CIFSobel", "CIFBlackWhiteFilter", "CIFAffineTile2Filter",
          "CIFAffineTransform2Filter", "CIFShadingFilter", "CIFOffset"}},
    };
    return all;
}

// Pixels as an image at the origin.
struct Sample {
    BitmapRef bitmap;

    explicit operator bool() const { return bitmap != nullptr; }
    Image image() const { return Image::fromBitmap(bitmap); }
    int width() const { return bitmap->width(); }
    int height() const { return bitmap->height(); }
};

Sample detailOf(const BitmapRef& picture, int x, int y, int width, int height)
{
    return {imaging::render(Image::fromBitmap(picture), {x, y, width, height}, picture->format())};
}

// Small and without a single soft edge: bars, checks, a frame, lone pixels.
Sample hardEdges()
{
    constexpr int kWidth = 120, kHeight = 80;
    const auto bitmap = Bitmap::make(kWidth, kHeight, imaging::PixelFormat::Rgba8);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const bool frame = x == 2 || y == 2 || x == kWidth - 3 || y == kHeight - 3;
            const bool checks = x > 66 && x < 110 && y > 10 && y < 42;
            const bool bars = x > 10 && x < 54 && y > 10 && y < 42;
            const bool dots = y > 52 && y < 70 && x % 12 == 6 && y % 6 == 0;
            std::uint8_t rgb[3] = {24, 96, 176};
            const auto paint = [&](int r, int g, int b) {
                rgb[0] = static_cast<std::uint8_t>(r);
                rgb[1] = static_cast<std::uint8_t>(g);
                rgb[2] = static_cast<std::uint8_t>(b);
            };
            if (frame || dots)
                paint(255, 255, 255);
            if (checks)
                (x / 8 + y / 8) % 2 ? paint(255, 255, 255) : paint(0, 0, 0);
            if (bars)
                (x / (1 + y / 14)) % 2 ? paint(240, 64, 32) : paint(255, 224, 64);
            std::byte* p = bitmap->row(y) + 4 * x;
            for (int c = 0; c < 3; ++c)
                p[c] = static_cast<std::byte>(rgb[c]);
            p[3] = std::byte{255};
        }
    return {bitmap};
}

struct Samples {
    Sample landscape, detail, edges, transparent;
};

BitmapRef bitmapOf(const std::filesystem::path& file, int width = 0, int height = 0)
{
    const auto picture = codecs::readPicture(file);
    if (!picture)
        return nullptr;
    return width ? (*picture)->bitmapOfSize(width, height) : (*picture)->bitmap();
}

std::string written(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", v);
    return text;
}

// What a filter needs, and what shows it better than its defaults on small pictures.
void prepare(Filter& filter, const Samples& samples, const Sample& on)
{
    filter.setDefaults();
    const CIFMain library;
    const auto set = [&](const char* key, const Value& value) {
        filter.setValueForKey(value, key);
    };
    const auto named = [](const drawing::PictureRef& picture) {
        const BitmapRef pixels = picture ? picture->bitmap() : nullptr;
        return pixels ? Value(Image::fromBitmap(pixels).node()) : Value();
    };
    const auto first = [](const CIFMain::NameList& names) {
        return names && !names->empty() ? names->front() : std::string();
    };
    set("inputImage", on.image().node());
    set("inputCenter", Vector(on.width() / 2.0, on.height() / 2.0));
    set("inputBackgroundImage", samples.landscape.image().node());
    set("inputTargetImage", samples.transparent.image().node());
    set("inputTime", 0.4);
    set("inputTexture",
        named(library.CIFGlassTextureWithName(first(library.CIFGlassTextureNames()))));
    set("inputShadingImage",
        named(library.CIFShadingMaterialWithName(first(library.CIFShadingMaterialNames()))));
    set("inputTransform", AffineTransform::scaling(0.6, 0.6)
                              .followedBy(AffineTransform::rotation(0.3))
                              .followedBy(AffineTransform::translation(40, 20)));
    const std::string& name = filter.name();
    if (name == "CIPageCurlTransition") {
        set("inputExtent", Vector(0, 0, on.width(), on.height()));
        set("inputAngle", -0.6);
        set("inputRadius", 60.0);
        if (const auto ball = foundation::resourcePath("whiteBall", "tiff"))
            if (const BitmapRef pixels = bitmapOf(*ball))
                set("inputShadingImage", Image::fromBitmap(pixels).node());
    } else if (name == "CICrop") {
        filter.setValueForKey(
            Vector(on.width() / 8, on.height() / 6, on.width() / 2, on.height() / 2),
            "inputRectangle");
    } else if (name == "CICircularWrap" || name == "CIHoleDistortion") {
        set("inputRadius", on.width() / 6.0); // 150 leaves nothing of pictures this small
    } else if (name == "CIColorMatrix") {
        set("inputRVector", Vector(0, 0, 1, 0));
        set("inputBVector", Vector(1, 0, 0, 0));
    } else if (name == "CIFMirrorTileFilter" || name == "CIFAffineTile2Filter") {
        set("inputScale", 0.5);
        set("inputStretch", 1.0);
    }
}

// Writes one page's cells while they are made.
class Page {
public:
    Page(std::filesystem::path folder, const Family& family) : _folder(std::move(folder))
    {
        std::filesystem::create_directories(_folder / family.file);
        _stem = family.file;
        _html.open(_folder / (_stem + ".html"));
        _html
            << "<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n<title>"
            << family.title
            << "</title>\n<style>\n"
               "body { font: 14px/1.4 system-ui, sans-serif; margin: 1.5rem; background: #f6f6f4; "
               "color: #1d2126; }\n"
               "section { display: flex; flex-wrap: wrap; gap: .6rem; }\n"
               "figure { margin: 0; } figcaption { font-size: 12px; color: #555; }\n"
               "img { display: block; height: 180px; image-rendering: auto;\n"
               "      background: repeating-conic-gradient(#aaa 0 25%, #ccc 0 50%) 0 0 / 16px "
               "16px; "
               "}\n"
               "img.small { image-rendering: pixelated; }\n"
               "</style>\n<h1>"
            << family.title << "</h1>\n";
    }
    ~Page() { _html << "</section></html>\n"; }
    Page(const Page&) = delete;

    void begin(const std::string& filter)
    {
        if (_cells++)
            _html << "</section>\n";
        _html << "<h2>" << filter << "</h2>\n<section>\n";
        _filter = filter;
        _number = 0;
    }

    bool add(const std::string& caption, const Image& image, const Sample& on)
    {
        const BitmapRef pixels =
            imaging::render(image, {0, 0, on.width(), on.height()}, imaging::PixelFormat::Rgba8);
        const std::string file = _stem + '/' + _filter + '-' + std::to_string(_number++) + ".webp";
        if (pixels) {
            const auto picture = drawing::Picture::fromBitmap(pixels);
            const auto done =
                codecs::writePicture(*picture, _folder / file, *codecs::formatNamed("webp"),
                                     {.quality = 90, .recipe = {}});
            if (!done) {
                std::fprintf(stderr, "contact-sheets: %s\n", done.error().c_str());
                return false;
            }
            _html << "<figure><img src=\"" << file << "\""
                  << (on.height() < 100 ? " class=\"small\"" : "")
                  << " loading=\"lazy\"><figcaption>" << caption << "</figcaption></figure>\n";
        } else {
            _html << "<figure><figcaption>" << caption << ": no picture</figcaption></figure>\n";
        }
        return true;
    }

private:
    std::filesystem::path _folder;
    std::string _stem, _filter;
    std::ofstream _html;
    int _cells = 0, _number = 0;
};

bool addFilter(Page& page, const std::string& name, const Samples& samples)
{
    const auto make = [&](const Sample& on) {
        auto filter = Filter::filterWithName(name);
        prepare(*filter, samples, on);
        return filter;
    };
    const auto show = [&](const std::string& caption, const Sample& on, const char* key = nullptr,
                          const Value& value = {}) {
        const auto filter = make(on);
        if (key)
            filter->setValueForKey(value, key);
        return page.add(caption, filter->outputImage(), on);
    };
    const auto* described = imaging::FilterRegistry::shared().find(name);
    page.begin(name);
    bool good = show("defaults", samples.landscape);
    if (described->input("inputImage"))
        good = good && show("in detail", samples.detail) && show("hard edges", samples.edges) &&
               show("transparency", samples.transparent);
    for (const auto& input : described->inputs) {
        const std::string key = input.key;
        if (key == "inputCenter") {
            good = good &&
                   show("off the middle", samples.landscape, "inputCenter",
                        Vector(samples.landscape.width() * 0.2, samples.landscape.height() * 0.15));
            continue;
        }
        for (const char* end : {"CIAttributeSliderMin", "CIAttributeSliderMax"})
            if (input.attributes.contains(end)) {
                const double v = input.attributes.doubleValue(end, 0);
                good = good &&
                       show(key.substr(5) + ' ' + written(v), samples.landscape, key.c_str(), v);
            }
    }
    return good;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fprintf(stderr, "usage: contact-sheets SAMPLES FOLDER\n");
        return 2;
    }
    const std::filesystem::path from = arguments[1], folder = arguments[2];
    const BitmapRef whole = bitmapOf(from / "sample.png");
    const Samples samples = {
        {bitmapOf(from / "sample.png", 384, 256)},
        whole ? detailOf(whole, 90, 110, 270, 180) : Sample{},
        hardEdges(),
        {bitmapOf(from / "sample-alpha.png", 320, 240)},
    };
    if (!samples.landscape || !samples.detail || !samples.transparent) {
        std::fprintf(stderr, "contact-sheets: the sample pictures cannot be read\n");
        return 1;
    }
    const CIFMain main; // registers the filters
    std::filesystem::create_directories(folder);
    for (const Family& family : families()) {
        Page page(folder, family);
        for (const std::string& name : family.filters)
            if (imaging::FilterRegistry::shared().find(name) && !addFilter(page, name, samples))
                return 1;
        std::printf("%s.html\t%s\n", family.file, family.title);
    }
}
