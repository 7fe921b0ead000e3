// The exported functions: the C++ inside meets hosts here, and nothing is thrown past this file.
#include "hosts/CoreImageFilter.h"

#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Log.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

using drawing::Picture;
using foundation::PictureRef;
using foundation::Result;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::PixelFormat;

static_assert(CIF_PLUGIN_VERSION == 2, "the version that CIFMajorPlugInVersion answers");

namespace {

void tell(char* error, std::size_t errorSize, std::string_view text) noexcept
{
    if (!error || errorSize == 0)
        return;
    const std::size_t length = std::min(text.size(), errorSize - 1);
    std::memcpy(error, text.data(), length);
    error[length] = '\0';
}

// Runs the function; whatever it throws becomes the fallback and a line of text.
template <class T, class Function>
T guarded(T fallback, char* error, std::size_t errorSize, Function function) noexcept
{
    try {
        return function();
    } catch (const std::bad_alloc&) {
        tell(error, errorSize, "not enough memory");
    } catch (const std::exception& e) {
        tell(error, errorSize, e.what());
    } catch (...) {
        tell(error, errorSize, "unexpected failure");
    }
    return fallback;
}

CIFPicture* handleFor(const Result<PictureRef>& result, char* error, std::size_t errorSize)
{
    if (result && *result)
        return new CIFPicture{*result};
    tell(error, errorSize, result ? "no picture" : result.error());
    return nullptr;
}

// Whether rows of that many pixels fit what the caller describes.
bool isLayout(std::int32_t width, std::int32_t height, std::size_t bytesPerRow,
              std::int32_t bitsPerComponent)
{
    return width > 0 && height > 0 && width <= Bitmap::kMaximumSide &&
           height <= Bitmap::kMaximumSide && (bitsPerComponent == 8 || bitsPerComponent == 16) &&
           bytesPerRow >= static_cast<std::size_t>(width) * 4 * (bitsPerComponent / 8);
}

PixelFormat formatOf(std::int32_t bitsPerComponent)
{
    return bitsPerComponent == 16 ? PixelFormat::Rgba16 : PixelFormat::Rgba8;
}

// The same pixels in another format, through the engine's own rounding.
BitmapRef inFormat(const BitmapRef& bitmap, PixelFormat format)
{
    if (!bitmap || bitmap->format() == format)
        return bitmap;
    return imaging::render(imaging::Image::fromBitmap(bitmap),
                           {0, 0, bitmap->width(), bitmap->height()}, format);
}

} // namespace

extern "C" {

ICoreImageFilter* CIFCreatePlugIn(std::uint32_t version) noexcept
{
    if (version != CIF_PLUGIN_VERSION)
        return nullptr;
    return guarded<ICoreImageFilter*>(nullptr, nullptr, 0, [] { return new CIFMain; });
}

void CIFReleasePlugIn(ICoreImageFilter* plugIn) noexcept
{
    delete static_cast<CIFMain*>(plugIn);
}

void CIFSetToolkitVersion(double version) noexcept
{
    plugin::setToolkitVersion(version);
}

void CIFSetLanguage(const char* language) noexcept
{
    guarded(0, nullptr, 0, [&] {
        foundation::setLanguage(language ? language : "");
        return 0;
    });
}

void CIFSetLogSink(void (*sink)(const char* line, void* context), void* context) noexcept
{
    guarded(0, nullptr, 0, [&] {
        if (sink)
            foundation::setLogSink(
                [=](std::string_view line) { sink(std::string(line).c_str(), context); });
        else
            foundation::setLogSink({});
        return 0;
    });
}

CIFPicture* CIFPictureFromPixels(const void* pixels, std::int32_t width, std::int32_t height,
                                 std::size_t bytesPerRow, std::int32_t bitsPerComponent,
                                 char* error, std::size_t errorSize) noexcept
{
    return guarded<CIFPicture*>(nullptr, error, errorSize, [&]() -> CIFPicture* {
        if (!pixels || !isLayout(width, height, bytesPerRow, bitsPerComponent)) {
            tell(error, errorSize,
                 "pixels need 1 to 100000 a side, 8 or 16 bits and rows that hold them");
            return nullptr;
        }
        const auto bitmap = Bitmap::make(width, height, formatOf(bitsPerComponent));
        if (!bitmap) {
            tell(error, errorSize, "not enough memory");
            return nullptr;
        }
        const std::size_t length =
            static_cast<std::size_t>(width) * bytesPerPixel(bitmap->format());
        for (int y = 0; y < height; ++y)
            std::memcpy(bitmap->row(y), static_cast<const std::byte*>(pixels) + y * bytesPerRow,
                        length);
        return handleFor(Picture::fromBitmap(bitmap), error, errorSize);
    });
}

CIFPicture* CIFPictureFromFile(const char* path, char* error, std::size_t errorSize) noexcept
{
    return guarded<CIFPicture*>(nullptr, error, errorSize, [&] {
        return handleFor(codecs::readPicture(path ? path : ""), error, errorSize);
    });
}

CIFPicture* CIFPictureFromBytes(const void* bytes, std::size_t length, char* error,
                                std::size_t errorSize) noexcept
{
    return guarded<CIFPicture*>(nullptr, error, errorSize, [&] {
        const std::string_view file(static_cast<const char*>(bytes), bytes ? length : 0);
        return handleFor(codecs::decodePicture(file, "picture"), error, errorSize);
    });
}

CIFPicture* CIFPictureFromImage(const imaging::Image* image, std::int32_t x, std::int32_t y,
                                std::int32_t width, std::int32_t height,
                                std::int32_t bitsPerComponent, char* error,
                                std::size_t errorSize) noexcept
{
    return guarded<CIFPicture*>(nullptr, error, errorSize, [&]() -> CIFPicture* {
        if (!image || !*image || (bitsPerComponent != 8 && bitsPerComponent != 16)) {
            tell(error, errorSize, image && *image ? "8 or 16 bits are possible" : "no image");
            return nullptr;
        }
        const auto bitmap =
            imaging::render(*image, {x, y, width, height}, formatOf(bitsPerComponent));
        if (!bitmap) {
            tell(error, errorSize, "the rectangle is empty or too large");
            return nullptr;
        }
        return handleFor(Picture::fromBitmap(bitmap), error, errorSize);
    });
}

void CIFPictureRelease(CIFPicture* picture) noexcept
{
    delete picture;
}

std::int32_t CIFPictureGetSize(const CIFPicture* picture, double* width, double* height,
                               std::int32_t* pixelsWide, std::int32_t* pixelsHigh) noexcept
{
    return guarded(0, nullptr, 0, [&] {
        if (!picture || !picture->picture)
            return 0;
        const Picture& p = *picture->picture;
        if (width)
            *width = p.size().width;
        if (height)
            *height = p.size().height;
        if (pixelsWide)
            *pixelsWide = p.pixelsWide();
        if (pixelsHigh)
            *pixelsHigh = p.pixelsHigh();
        return 1;
    });
}

std::int32_t CIFPictureIsVector(const CIFPicture* picture) noexcept
{
    return picture && picture->picture && picture->picture->isVector();
}

std::int32_t CIFPictureCopyPixels(const CIFPicture* picture, void* pixels, std::int32_t width,
                                  std::int32_t height, std::size_t bytesPerRow,
                                  std::int32_t bitsPerComponent) noexcept
{
    return guarded(0, nullptr, 0, [&] {
        if (!picture || !picture->picture || !pixels ||
            !isLayout(width, height, bytesPerRow, bitsPerComponent))
            return 0;
        const BitmapRef bitmap =
            inFormat(picture->picture->bitmapOfSize(width, height), formatOf(bitsPerComponent));
        if (!bitmap)
            return 0;
        const std::size_t length =
            static_cast<std::size_t>(width) * bytesPerPixel(bitmap->format());
        for (int y = 0; y < height; ++y)
            std::memcpy(static_cast<std::byte*>(pixels) + y * bytesPerRow, bitmap->row(y), length);
        return 1;
    });
}

std::int32_t CIFPictureWriteToFile(const CIFPicture* picture, const char* path, char* error,
                                   std::size_t errorSize) noexcept
{
    return guarded(0, error, errorSize, [&] {
        if (!picture || !picture->picture || !path) {
            tell(error, errorSize, "no picture or no file name");
            return 0;
        }
        const std::filesystem::path file(path);
        const std::string extension = file.extension().string();
        const auto format = codecs::formatNamed(extension.empty() ? "" : extension.substr(1));
        if (!format) {
            tell(error, errorSize, "no format has the extension of " + file.string());
            return 0;
        }
        const auto done = codecs::writePicture(*picture->picture, file, *format, {});
        if (!done)
            tell(error, errorSize, done.error());
        return done ? 1 : 0;
    });
}

} // extern "C"
