// Tells the formats apart by their first bytes and joins the steps that all of them share.
#include "platform/codecs/Codecs.h"

#include "platform/codecs/Color.h"
#include "platform/codecs/Formats.h"
#include "platform/codecs/Metadata.h"
#include "platform/codecs/Pixels.h"
#include "platform/drawing/VectorSources.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace codecs {

namespace fs = std::filesystem;
using namespace std::string_view_literals;
using drawing::Picture;
using foundation::Done;
using foundation::Error;
using imaging::BitmapRef;

namespace {

constexpr char kNoMemory[] = "not enough memory";

std::optional<FileFormat> sniffed(std::string_view bytes)
{
    static constexpr std::pair<std::string_view, FileFormat> kSignatures[] = {
        {"\x89PNG\r\n\x1A\n"sv, FileFormat::Png},
        {"\xFF\xD8\xFF"sv, FileFormat::Jpeg},
        {"II*\0"sv, FileFormat::Tiff},
        {"MM\0*"sv, FileFormat::Tiff},
        {"II+\0"sv, FileFormat::Tiff},
        {"MM\0+"sv, FileFormat::Tiff},
        {"%!PS"sv, FileFormat::Eps},
        {"\xC5\xD0\xD3\xC6"sv, FileFormat::Eps}};
    for (const auto& [signature, format] : kSignatures)
        if (bytes.starts_with(signature))
            return format;
    if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP"))
        return FileFormat::WebP;

    // A PDF may have something in front, an SVG a declaration and comments.
    constexpr std::size_t kPdfWithin = 1024;
    constexpr std::size_t kSvgWithin = std::size_t{1} << 16;
    if (bytes.substr(0, kPdfWithin).find("%PDF-") != std::string_view::npos)
        return FileFormat::Pdf;
    std::string_view text = bytes.substr(0, kSvgWithin);
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && text[first] == '<' &&
        (text.find("<svg") != std::string_view::npos ||
         text.find(":svg") != std::string_view::npos))
        return FileFormat::Svg;
    return std::nullopt;
}

// One printable line.
std::string oneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 127; }, '?');
    return text;
}

Error about(std::string_view name, const std::string& what)
{
    return {oneLine(std::string(name) + ": " + what)};
}

// Chooses what becomes of the profile: carried with RGB pixels, used up by grey ones, or dropped
// when it describes something else. CMYK pixels have been converted by their decoders.
void settleProfile(Decoded& decoded)
{
    std::string& icc = decoded.metadata.icc;
    const std::string_view space = colorSpaceOf(icc);
    if (space == "GRAY" && decoded.grey)
        convertGreyToSrgb(*decoded.bitmap, icc);
    if (space != "RGB ")
        icc.clear();
}

// Numbers that no device has, and what is no number, count as unknown.
void settleResolution(PictureMetadata& metadata)
{
    constexpr double kMost = 1e6;
    const auto isSound = [](double dpi) { return dpi > 0 && dpi <= kMost; };
    if (!isSound(metadata.dpiX) || !isSound(metadata.dpiY))
        metadata.dpiX = metadata.dpiY = 0;
}

bool settleOrientation(Decoded& decoded)
{
    std::string& exif = decoded.metadata.exif;
    if (exif.starts_with("Exif\0\0"sv)) // some writers put it in front in all formats
        exif.erase(0, 6);
    const int orientation = decoded.orientation ? decoded.orientation : exifOrientation(exif);
    resetExifOrientation(exif);
    if (orientation < 2 || orientation > 8)
        return true;
    decoded.bitmap = oriented(*decoded.bitmap, orientation);
    return decoded.bitmap != nullptr;
}

Result<PictureRef> decodeBitmap(std::string_view bytes, FileFormat format)
{
    Result<Decoded> decoded = format == FileFormat::Png    ? decodePng(bytes)
                              : format == FileFormat::Jpeg ? decodeJpeg(bytes)
                              : format == FileFormat::Tiff ? decodeTiff(bytes)
                                                           : decodeWebP(bytes);
    if (!decoded)
        return Error{decoded.error()};
    Decoded picture = *std::move(decoded);
    settleProfile(picture);
    settleResolution(picture.metadata);
    if (!settleOrientation(picture))
        return Error{kNoMemory};
    return Picture::fromBitmap(std::move(picture.bitmap), std::move(picture.metadata));
}

std::string vectorRecipe(std::string_view bytes, FileFormat format)
{
    return format == FileFormat::Pdf   ? recipeOfPdf(bytes)
           : format == FileFormat::Svg ? recipeOfSvg(bytes)
                                       : recipeOfEps(bytes);
}

Result<PictureRef> decodeVector(std::string_view bytes, FileFormat format)
{
    std::string file(bytes);
    const drawing::VectorSourceResult source =
        format == FileFormat::Pdf   ? drawing::pdfSource(std::move(file))
        : format == FileFormat::Svg ? drawing::svgSource(std::move(file))
                                    : drawing::epsSource(std::move(file));
    if (!source)
        return Error{source.error()};
    PictureMetadata metadata;
    metadata.recipe = vectorRecipe(bytes, format);
    return Picture::fromVector(*source, std::move(metadata));
}

class Descriptor {
public:
    explicit Descriptor(int descriptor) : _descriptor(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (_descriptor >= 0)
            ::close(_descriptor);
    }
    operator int() const { return _descriptor; }

private:
    int _descriptor;
};

Result<std::string> readFile(const fs::path& path)
{
    const std::string name = path.string();
    const auto failed = [&]() -> Error {
        if (errno == ENOENT || errno == ENOTDIR)
            return {oneLine("no such file: " + name)};
        return about(name, errno == EACCES ? "permission denied" : std::strerror(errno));
    };
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (file < 0 || ::fstat(file, &status) != 0)
        return failed();
    if (S_ISDIR(status.st_mode))
        return about(name, "a folder, not a picture");
    // A pipe ends; a device may not.
    if (!S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode))
        return about(name, "not a file");
    if (static_cast<std::uint64_t>(status.st_size) > kMaximumBytes)
        return about(name, "too large a file");

    constexpr std::size_t kChunk = std::size_t{1} << 20;
    std::string bytes;
    for (;;) {
        const std::size_t used = bytes.size();
        const std::size_t known = static_cast<std::size_t>(status.st_size);
        // One byte more than is known to be there shows the end without another round.
        const std::size_t want = used < known ? known - used + 1 : kChunk;
        ssize_t got = 0;
        bytes.resize_and_overwrite(used + want, [&](char* data, std::size_t) {
            do
                got = ::read(file, data + used, want);
            while (got < 0 && errno == EINTR);
            return used + static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        });
        if (got < 0)
            return failed();
        if (got == 0)
            break;
        if (bytes.size() > kMaximumBytes)
            return about(name, "too large a file");
    }
    return bytes;
}

const char* nameOf(FileFormat format)
{
    static constexpr const char* kNames[] = {"PNG", "JPEG", "TIFF", "WebP", "PDF", "SVG", "EPS"};
    return kNames[static_cast<int>(format)];
}

Result<std::string> encodeDrawing(const Picture& picture, FileFormat format,
                                  const WriteOptions& options)
{
    const drawing::RecordingRef recording = picture.recording();
    if (!recording)
        return Error{std::string(nameOf(format)) +
                     " needs a picture that was drawn as a vector; this one is made of pixels"};
    const drawing::VectorFormat vector = format == FileFormat::Pdf   ? drawing::VectorFormat::Pdf
                                         : format == FileFormat::Svg ? drawing::VectorFormat::Svg
                                                                     : drawing::VectorFormat::Eps;
    return drawing::encodeVector(*recording, vector,
                                 options.metadata == KeepMetadata::None ? "" : options.recipe);
}

PictureMetadata keptMetadata(const PictureMetadata& all, const WriteOptions& options)
{
    PictureMetadata kept;
    if (options.metadata == KeepMetadata::All)
        kept = all;
    else if (options.metadata == KeepMetadata::Icc)
        kept.icc = all.icc;
    settleResolution(kept);
    kept.recipe = options.metadata == KeepMetadata::None ? std::string() : options.recipe;
    return kept;
}

Result<std::string> encodePixels(const Picture& picture, FileFormat format,
                                 const WriteOptions& options)
{
    BitmapRef bitmap = picture.bitmap();
    if (!bitmap)
        return Error{"the picture cannot be drawn"};
    const bool holds16 = format == FileFormat::Png || format == FileFormat::Tiff;
    const PixelFormat wanted = holds16 && bitmap->format() != PixelFormat::Rgba8
                                   ? PixelFormat::Rgba16
                                   : PixelFormat::Rgba8;
    if (bitmap->format() != wanted)
        bitmap = converted(*bitmap, wanted);
    if (!bitmap)
        return Error{kNoMemory};
    const Encoding source{bitmap.get(), bitmap->computeIsOpaque(),
                          keptMetadata(picture.metadata(), options),
                          std::clamp(options.quality, 1, 100)};
    switch (format) {
    case FileFormat::Png:
        return encodePng(source);
    case FileFormat::Jpeg:
        return encodeJpeg(source);
    case FileFormat::Tiff:
        return encodeTiff(source);
    default:
        return encodeWebP(source);
    }
}

} // namespace

Result<std::shared_ptr<Bitmap>> makeBitmap(std::uint64_t width, std::uint64_t height,
                                           PixelFormat format, std::uint64_t workingBytes)
{
    const std::string sides = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width == 0 || height == 0)
        return Error{"an empty picture (" + sides + ")"};
    if (std::max(width, height) > Bitmap::kMaximumSide)
        return Error{"too large: " + sides + " (" + std::to_string(Bitmap::kMaximumSide) +
                     " a side at most)"};
    if (workingBytes >= kMaximumBytes ||
        width * height * bytesPerPixel(format) > kMaximumBytes - workingBytes)
        return Error{"too large: " + sides + " (they need more than 4 GiB)"};
    std::shared_ptr<Bitmap> bitmap =
        Bitmap::make(static_cast<int>(width), static_cast<int>(height), format);
    if (!bitmap)
        return Error{kNoMemory};
    return bitmap;
}

const std::vector<std::string>& readableExtensions()
{
    static const std::vector<std::string> extensions = {"png",  "jpg", "jpeg", "tif", "tiff",
                                                        "webp", "pdf", "eps",  "svg"};
    return extensions;
}

Result<PictureRef> decodePicture(std::string_view bytes, std::string_view name)
{
    if (bytes.empty())
        return about(name, "an empty file");
    const std::optional<FileFormat> format = sniffed(bytes);
    if (!format)
        return about(name, "not a picture (PNG, JPEG, TIFF, WebP, PDF, EPS or SVG expected)");
    try {
        Result<PictureRef> picture =
            isVectorFormat(*format) ? decodeVector(bytes, *format) : decodeBitmap(bytes, *format);
        if (!picture)
            return about(name, picture.error());
        return picture;
    } catch (const std::bad_alloc&) {
        return about(name, kNoMemory);
    }
}

Result<PictureRef> readPicture(const fs::path& file)
{
    const Result<std::string> bytes = readFile(file);
    if (!bytes)
        return Error{bytes.error()};
    return decodePicture(*bytes, file.string());
}

Result<std::string> readRecipe(const fs::path& file)
{
    const Result<std::string> bytes = readFile(file);
    if (!bytes)
        return bytes;
    const std::optional<FileFormat> format = sniffed(*bytes);
    if (format && isVectorFormat(*format))
        return vectorRecipe(*bytes, *format);
    const Result<PictureRef> picture = decodePicture(*bytes, file.string());
    if (!picture)
        return Error{picture.error()};
    return (*picture)->metadata().recipe;
}

std::optional<FileFormat> formatNamed(std::string_view name)
{
    static constexpr std::pair<std::string_view, FileFormat> kNames[] = {
        {"png", FileFormat::Png},  {"jpg", FileFormat::Jpeg},  {"jpeg", FileFormat::Jpeg},
        {"tif", FileFormat::Tiff}, {"tiff", FileFormat::Tiff}, {"webp", FileFormat::WebP},
        {"pdf", FileFormat::Pdf},  {"svg", FileFormat::Svg},   {"eps", FileFormat::Eps}};
    if (name.starts_with('.'))
        name.remove_prefix(1);
    std::string lower(name);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    for (const auto& [known, format] : kNames)
        if (lower == known)
            return format;
    return std::nullopt;
}

bool isVectorFormat(FileFormat format)
{
    return format == FileFormat::Pdf || format == FileFormat::Svg || format == FileFormat::Eps;
}

Result<std::string> encodePicture(const Picture& picture, FileFormat format,
                                  const WriteOptions& options)
{
    try {
        return isVectorFormat(format) ? encodeDrawing(picture, format, options)
                                      : encodePixels(picture, format, options);
    } catch (const std::bad_alloc&) {
        return Error{kNoMemory};
    }
}

Status writePicture(const Picture& picture, const fs::path& target, FileFormat format,
                    const WriteOptions& options)
{
    const Result<std::string> bytes = encodePicture(picture, format, options);
    if (!bytes)
        return about("cannot write " + target.string(), bytes.error());
    return writeFileAtomically(target, *bytes);
}

} // namespace codecs
