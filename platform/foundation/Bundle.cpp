// Finds the resource folder from where the library itself was loaded.
#include "platform/foundation/Bundle.h"

#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <system_error>

namespace foundation {

namespace fs = std::filesystem;

namespace {

bool isFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(path, error);
}

// From lib/CoreImageFilter, from the folder of an instruction-set level two below it, and from an
// installed lib/<triplet>/CoreImageFilter alike.
fs::path folderAboveLibrary()
{
    constexpr int kLevels = 6;
    fs::path folder = libraryFolder();
    for (int i = 0; i < kLevels && !folder.empty(); ++i) {
        fs::path candidate = folder / "share" / "CoreImageFilter";
        if (isFolder(candidate))
            return candidate;
        if (folder == folder.root_path())
            break;
        folder = folder.parent_path();
    }
    return {};
}

} // namespace

fs::path libraryFolder()
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&libraryFolder), &info) || !info.dli_fname)
        return {};
    std::error_code error;
    return fs::canonical(info.dli_fname, error).parent_path();
}

fs::path resourceFolder()
{
    if (const char* named = std::getenv("CIF_RESOURCES"); named && *named)
        return isFolder(named) ? fs::path(named) : fs::path();
    static const fs::path found = folderAboveLibrary();
    return found;
}

std::optional<fs::path> resourcePath(std::string_view name, std::string_view type,
                                     std::string_view subfolder)
{
    const fs::path folder = resourceFolder();
    if (folder.empty() || name.empty())
        return {};
    std::string file(name);
    if (!type.empty())
        file.append(".").append(type);
    fs::path path = folder / fs::path(subfolder) / file;
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        return {};
    return path;
}

} // namespace foundation
