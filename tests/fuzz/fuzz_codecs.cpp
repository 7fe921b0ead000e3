// Any bytes: either they give one line of error, or a picture that every pixel format can write and
// that is then read back in the same size.
#include "platform/codecs/Codecs.h"
#include "platform/codecs/Metadata.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

void require(bool condition, const char* what, const std::string& detail)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
    std::abort();
}

// Vector files would start other programs; only their text is searched here.
bool mayBeVector(std::string_view bytes)
{
    const std::string_view front = bytes.substr(0, 1024);
    const std::size_t first = front.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return front.starts_with("%!") || front.starts_with("\xC5\xD0\xD3\xC6") ||
           front.find("%PDF-") != std::string_view::npos ||
           (first != std::string_view::npos && front[first] == '<');
}

void writeAndReadAgain(const drawing::PictureRef& picture)
{
    using codecs::FileFormat;
    constexpr std::int64_t kMostPixels = 1 << 16;
    constexpr int kMostSide = 16'383; // of WebP
    const std::int64_t width = picture->pixelsWide(), height = picture->pixelsHigh();
    if (width * height > kMostPixels || std::max(width, height) > kMostSide)
        return;
    for (const FileFormat format :
         {FileFormat::Png, FileFormat::Jpeg, FileFormat::Tiff, FileFormat::WebP}) {
        const auto file = codecs::encodePicture(*picture, format, {});
        // Blocks that do not fit into a JPEG are the one reason to refuse.
        require(file || format == FileFormat::Jpeg, "cannot be written", file.error());
        if (!file)
            continue;
        const auto copy = codecs::decodePicture(*file, "copy");
        require(bool(copy), "cannot be read again", copy.error());
        require((*copy)->pixelsWide() == width && (*copy)->pixelsHigh() == height,
                "has another size", std::to_string(static_cast<int>(format)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (mayBeVector(bytes)) {
        codecs::recipeOfPdf(bytes);
        codecs::recipeOfSvg(bytes);
        codecs::recipeOfEps(bytes);
        return 0;
    }
    const auto picture = codecs::decodePicture(bytes, "input");
    if (picture)
        writeAndReadAgain(*picture);
    else
        require(picture.error().find('\n') == std::string::npos, "more than a line",
                picture.error());
    return 0;
}
