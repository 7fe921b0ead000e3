// sample-pictures FOLDER: writes the demo pictures sample.png, sample.jpg and sample-alpha.png.
#include "platform/codecs/Codecs.h"
#include "tools/sample-pictures/Picture.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

drawing::PictureRef pictureOf(const samples::Picture& pixels)
{
    const auto bitmap =
        imaging::Bitmap::make(pixels.width, pixels.height, imaging::PixelFormat::Rgba8);
    const std::size_t row = std::size_t(pixels.width) * 4;
    for (int y = 0; y < pixels.height; ++y)
        std::memcpy(bitmap->row(y), pixels.rgba.data() + row * std::size_t(y), row);
    return drawing::Picture::fromBitmap(bitmap);
}

bool write(const samples::Picture& pixels, const std::filesystem::path& file)
{
    const auto format = codecs::formatNamed(file.extension().string().substr(1));
    const auto done = codecs::writePicture(*pictureOf(pixels), file, *format, {});
    if (!done)
        std::fprintf(stderr, "sample-pictures: %s\n", done.error().c_str());
    return bool(done);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: sample-pictures FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    std::filesystem::create_directories(folder);
    const samples::Picture landscape = samples::landscapePicture(768, 512);
    const bool good = write(landscape, folder / "sample.png") &&
                      write(landscape, folder / "sample.jpg") &&
                      write(samples::transparentPicture(512, 384), folder / "sample-alpha.png");
    return good ? 0 : 1;
}
