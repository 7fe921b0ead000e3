// cif-pictures FOLDER: paints the pictures that the plug-in ships into its resource folder.
#include "platform/codecs/Codecs.h"
#include "resources/pictures/Furniture.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <thread>

namespace {

using pictures::Painting;

template <class T>
imaging::BitmapRef bitmapOf(const Painting& painting, imaging::PixelFormat format)
{
    const auto bitmap = imaging::Bitmap::make(painting.width, painting.height, format);
    // A hair above one half: values that lie half-way by symmetry round alike everywhere.
    const auto whole = [](double v) {
        return T(std::clamp(v, 0.0, 1.0) * std::numeric_limits<T>::max() + (0.5 + 1e-6));
    };
    for (int y = 0; y < painting.height; ++y) {
        T* to = bitmap->rowAs<T>(y);
        for (int x = 0; x < painting.width; ++x)
            for (const pictures::Pixel& p = painting.at(x, y);
                 const double v : {p.r, p.g, p.b, p.a})
                *to++ = whole(v);
    }
    return bitmap;
}

bool write(const Painting& painting, const std::filesystem::path& file)
{
    const auto picture = drawing::Picture::fromBitmap(
        painting.deep ? bitmapOf<std::uint16_t>(painting, imaging::PixelFormat::Rgba16)
                      : bitmapOf<std::uint8_t>(painting, imaging::PixelFormat::Rgba8));
    const auto done = codecs::writePicture(*picture, file, codecs::FileFormat::Tiff, {});
    if (!done)
        std::fprintf(stderr, "cif-pictures: %s\n", done.error().c_str());
    return bool(done);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: cif-pictures FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    struct Job {
        std::filesystem::path file;
        std::function<Painting()> paint;
    };
    std::vector<Job> jobs;
    const auto add = [&](const char* subfolder, const std::vector<pictures::Work>& works) {
        std::filesystem::create_directories(folder / subfolder);
        for (const pictures::Work& work : works)
            jobs.push_back({folder / subfolder / (std::string(work.name) + ".tif"), work.paint});
    };
    add("com.corvanix.CoreImageFilter/Textures/Glass Textures", pictures::glassTextures());
    add("com.corvanix.CoreImageFilter/Textures/Shading Materials", pictures::shadingMaterials());
    add("com.corvanix.CoreImageFilter/Brushes", pictures::brushTips());
    jobs.push_back({folder / "whiteBall.tiff", pictures::whiteBall});
    for (const plugin::EditorPicture& picture : plugin::kEditorPictures)
        for (const int density : {1, 2}) {
            // The gradient is stretched to its place anyway.
            if (density == 2 && std::string_view(picture.name) == "gradient_hue")
                continue;
            jobs.push_back(
                {folder / (picture.name + std::string(density == 2 ? "@2x.tif" : ".tif")),
                 [=] { return pictures::editorPicture(picture, density); }});
        }

    std::atomic<std::size_t> next = 0;
    std::atomic<bool> good = true;
    {
        std::vector<std::jthread> painters;
        for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
            painters.emplace_back([&] {
                for (std::size_t job; (job = next++) < jobs.size();)
                    if (!write(jobs[job].paint(), jobs[job].file))
                        good = false;
            });
    }
    return good ? 0 : 1;
}
