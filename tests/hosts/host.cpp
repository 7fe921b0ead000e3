// A host in miniature: linked to nothing of the library, it opens the bundle by its path, drives it
// through the protocol and prints what it got, one "name value" to a line.
//   host BUNDLE SCRATCH-FOLDER
#include "hosts/CoreImageFilter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

void* bundle = nullptr;

template <class Function>
Function* function(const char* name)
{
    void* symbol = dlsym(bundle, name);
    if (!symbol) {
        std::fprintf(stderr, "host: no %s in the bundle\n", name);
        std::exit(1);
    }
    return reinterpret_cast<Function*>(symbol);
}
#define FROM_BUNDLE(name) const auto name = function<decltype(::name)>(#name)

// The file that the library was loaded from.
std::string loadedLibrary()
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find("/libCoreImageFilter.so") != line.npos)
            return line.substr(line.find('/'));
    return "none";
}

// Of the pixels' bytes (FNV-1a).
std::uint64_t fingerprint(const std::vector<std::uint8_t>& bytes)
{
    std::uint64_t h = 14695981039346656037u;
    for (const std::uint8_t b : bytes)
        h = (h ^ b) * 1099511628211u;
    return h;
}

void logLine(const char* line, void* count)
{
    ++*static_cast<int*>(count);
    std::printf("log %s\n", line);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    bundle = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!bundle) {
        std::fprintf(stderr, "host: %s\n", dlerror());
        return 1;
    }
    std::printf("library %s\n", loadedLibrary().c_str());

    FROM_BUNDLE(CIFCreatePlugIn);
    FROM_BUNDLE(CIFReleasePlugIn);
    FROM_BUNDLE(CIFSetLanguage);
    FROM_BUNDLE(CIFSetLogSink);
    FROM_BUNDLE(CIFSetToolkitVersion);
    FROM_BUNDLE(CIFPictureFromPixels);
    FROM_BUNDLE(CIFPictureFromFile);
    FROM_BUNDLE(CIFPictureFromBytes);
    FROM_BUNDLE(CIFPictureFromImage);
    FROM_BUNDLE(CIFPictureRelease);
    FROM_BUNDLE(CIFPictureGetSize);
    FROM_BUNDLE(CIFPictureIsVector);
    FROM_BUNDLE(CIFPictureCopyPixels);
    FROM_BUNDLE(CIFPictureWriteToFile);
    FROM_BUNDLE(sortShadingMateriaNames);

    int logLines = 0;
    CIFSetLogSink(logLine, &logLines);
    CIFSetLanguage("C");

    std::printf("version-1 %s\n", CIFCreatePlugIn(1) ? "made" : "null");
    std::printf("version-3 %s\n", CIFCreatePlugIn(3) ? "made" : "null");
    CIFSetToolkitVersion(900);
    ICoreImageFilter* older = CIFCreatePlugIn(CIF_PLUGIN_VERSION);
    std::printf("older-count %d\n", older->CIFFilterCount());
    CIFReleasePlugIn(older);
    CIFSetToolkitVersion(1404);
    CIFReleasePlugIn(nullptr);

    ICoreImageFilter* plugIn = CIFCreatePlugIn(CIF_PLUGIN_VERSION);
    if (!plugIn)
        return 1;
    std::printf("version %d.%d\n", plugIn->CIFMajorPlugInVersion(),
                plugIn->CIFMinorPlugInVersion());
    std::printf("count %d %d\n", plugIn->CIFFilterCount(), plugIn->CIFFilterCountBySkipCategory());
    std::printf("flat-3 %s\n", plugIn->CIFFilterNameAtIndexSkipCategories(3, false)->c_str());
    std::printf(
        "sobel-icon %s\n",
        plugIn->CIFDescriptorForFilterName("CIFSobel")->stringValue("CIFFilterIcon").c_str());
    try {
        plugIn->CIFCategoryNameAtIndex(99);
    } catch (const std::out_of_range&) {
        std::printf("category-99 out of range\n");
    }
    plugIn->CIFSetEffectsSet(7);
    std::printf("log-lines %d\n", logLines);

    // A ramp, inverted.
    constexpr int kWidth = 37, kHeight = 21;
    std::vector<std::uint8_t> pixels(4 * kWidth * kHeight);
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const std::uint8_t color[] = {std::uint8_t(i * 7), std::uint8_t(i / kWidth * 12),
                                      std::uint8_t(i % kWidth * 6), 255};
        std::memcpy(&pixels[4 * static_cast<std::size_t>(i)], color, 4);
    }
    char error[256] = "";
    CIFPicture* source =
        CIFPictureFromPixels(pixels.data(), kWidth, kHeight, 4 * kWidth, 8, error, sizeof error);
    const auto read = [&](const foundation::PictureRef& picture) {
        std::vector<std::uint8_t> bytes(pixels.size());
        const CIFPicture result{picture};
        if (!CIFPictureCopyPixels(&result, bytes.data(), kWidth, kHeight, 4 * kWidth, 8))
            bytes.clear();
        return bytes;
    };
    std::printf("copy %s\n", read(source->picture) == pixels ? "same" : "different");
    const auto inverted =
        read(plugIn->CIFApplyFilterAttributesForImage("CIColorInvert", {}, source->picture));
    bool isInverse = inverted.size() == pixels.size();
    for (std::size_t i = 0; isInverse && i < pixels.size(); ++i)
        isInverse = inverted[i] == (i % 4 == 3 ? 255 : 255 - pixels[i]);
    std::printf("invert %s\n", isInverse ? "right" : "wrong");

    // Both instruction sets are to print the same.
    for (const char* filter :
         {"CIFSobel", "CIGaussianBlur", "CIFAffineTransform2Filter", "CIStarShineGenerator"})
        std::printf(
            "%s %016llx\n", filter,
            static_cast<unsigned long long>(
                fingerprint(read(plugIn->CIFApplyFilterAttributesForImage(
                    filter, {{"CIFinputCenter", foundation::Point{18, 10}}}, source->picture)))));
    srand(5);
    const CIFPicture plasma{plugIn->CIFGenerateLayerAttributesSize(
        "GLIF_Plasma", {{"GLIFRandomSeed", 5}}, {kWidth, kHeight})};
    std::printf("plasma %016llx\n",
                static_cast<unsigned long long>(fingerprint(read(plasma.picture))));
    srand(5);
    const CIFPicture curve{
        plugIn->CIFGenerateLayerAttributesSize("GLIF_HilbertCurve", {}, {kWidth, kHeight})};
    std::printf("curve-vector %d plasma-vector %d\n", CIFPictureIsVector(&curve),
                CIFPictureIsVector(&plasma));

    // An unrendered result, rendered by the host's choice of rectangle.
    const imaging::Image output =
        plugIn->CIFOutputImageForFilterAttributesForImage("CIColorInvert", {}, source->picture);
    CIFPicture* part =
        CIFPictureFromImage(&output, -2, 0, kWidth + 4, kHeight, 16, error, sizeof error);
    double width = 0, height = 0;
    std::int32_t pixelsWide = 0;
    if (CIFPictureGetSize(part, &width, &height, &pixelsWide, nullptr))
        std::printf("part %g %g %d\n", width, height, pixelsWide);

    // Through files and memory.
    const std::string file = std::string(argv[2]) + "/ramp.png";
    const bool written = CIFPictureWriteToFile(source, file.c_str(), error, sizeof error) == 1;
    CIFPicture* again = CIFPictureFromFile(file.c_str(), error, sizeof error);
    std::ifstream in(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    CIFPicture* decoded = CIFPictureFromBytes(bytes.data(), bytes.size(), error, sizeof error);
    std::printf("file %s\n", written && again && decoded && read(again->picture) == pixels &&
                                     read(decoded->picture) == pixels
                                 ? "same"
                                 : "different");

    // What cannot be done says why, in the space there is.
    char brief[8] = "";
    const CIFPicture* missing = CIFPictureFromFile("/no/such/file.png", brief, sizeof brief);
    std::printf("missing %s %zu\n", missing ? "made" : "null", std::strlen(brief));
    struct {
        int width, height;
        std::size_t row;
        int bits;
    } const wrong[] = {{0, 1, 4, 8}, {1, -1, 4, 8}, {2, 1, 4, 8}, {1, 1, 4, 12}, {1, 1, 4, 16}};
    for (const auto& w : wrong) {
        error[0] = '\0';
        if (CIFPictureFromPixels(pixels.data(), w.width, w.height, w.row, w.bits, error,
                                 sizeof error) ||
            !error[0])
            std::printf("accepted %d %d\n", w.width, w.height);
    }
    error[0] = '\0';
    const int strange = CIFPictureWriteToFile(source, "/no/such/ramp.xyz", error, sizeof error);
    std::printf("extension %d %s\n", strange, error);
    std::printf("nulls %d %d %d %d\n",
                CIFPictureGetSize(nullptr, &width, &height, nullptr, nullptr),
                CIFPictureIsVector(nullptr), CIFPictureCopyPixels(nullptr, brief, 1, 1, 4, 8),
                CIFPictureFromImage(nullptr, 0, 0, 1, 1, 8, nullptr, 0) ? 1 : 0);
    std::printf("sort %d %d %d\n", sortShadingMateriaNames("Clay", "Sand", nullptr),
                sortShadingMateriaNames("clay", "Clay", nullptr),
                sortShadingMateriaNames("b", "A", nullptr));

    for (CIFPicture* picture : {source, part, again, decoded})
        CIFPictureRelease(picture);
    CIFPictureRelease(nullptr);
    CIFReleasePlugIn(plugIn);
    std::printf("done\n");
    return 0;
}
