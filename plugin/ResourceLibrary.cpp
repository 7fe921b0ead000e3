// Textures, materials and brushes of the shared content library, the library's own pictures, and
// the strings in the user's language.
#include "plugin/ResourceLibrary.h"

#include "platform/codecs/Codecs.h"
#include "platform/foundation/Bundle.h"
#include "plugin/CIFMain.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <map>
#include <mutex>
#include <string_view>
#include <strings.h>
#include <system_error>

namespace fs = std::filesystem;

using foundation::PictureRef;

namespace {

constexpr const char* kContentLibrary = "com.corvanix.CoreImageFilter";

// Plug-in objects of several threads read pictures.
struct NamedImages {
    std::mutex lock;
    std::map<std::string, PictureRef, std::less<>> images;
};
NamedImages& namedImages()
{
    static NamedImages all;
    return all;
}

bool isFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(path, error);
}

bool isFile(const fs::path& path)
{
    std::error_code error;
    return fs::exists(path, error) && !fs::is_directory(path, error);
}

// The names of a folder's items in byte order; none when it cannot be listed.
std::vector<std::string> itemsOf(const fs::path& folder)
{
    std::vector<std::string> items;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        items.push_back(it->path().filename().string());
    if (error)
        items.clear();
    std::ranges::sort(items, [](const std::string& a, const std::string& b) {
        return std::ranges::lexicographical_compare(
            a, b, {}, [](char c) { return std::uint8_t(c); },
            [](char c) { return std::uint8_t(c); });
    });
    return items;
}

bool equalWithoutCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// An item's extension without the dot.
std::string extensionOf(const fs::path& item)
{
    const std::string extension = item.extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

// The first folder of that name in the user's and the system's data folders.
fs::path inDataFolders(const char* name)
{
    std::string home = environment("XDG_DATA_HOME");
    if (home.empty() && !environment("HOME").empty())
        home = environment("HOME") + "/.local/share";
    std::string system = environment("XDG_DATA_DIRS");
    if (system.empty())
        system = "/usr/local/share:/usr/share";
    for (std::string rest = home + ":" + system; !rest.empty();) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const fs::path folder = rest.substr(0, end);
        rest.erase(0, end + 1);
        // Relative entries are to be ignored.
        if (folder.is_absolute() && isFolder(folder / name))
            return folder / name;
    }
    return {};
}

// The picture files of that name in a folder, best type first. File systems tell Ripple.JPG from
// Ripple.jpg, users do not: the exact extension comes before its other spellings.
std::vector<fs::path> pictureFiles(const fs::path& folder, std::string_view name)
{
    std::vector<fs::path> files;
    const std::string stem = std::string(name) + ".";
    const std::vector<std::string> items =
        name.empty() ? std::vector<std::string>() : itemsOf(folder);
    for (const char* extension : {"jpg", "jpeg", "tif", "tiff"})
        for (const bool exact : {true, false})
            for (const std::string& item : items)
                if (item.starts_with(stem) && (item.substr(stem.size()) == extension) == exact &&
                    equalWithoutCase(item.substr(stem.size()), extension) && isFile(folder / item))
                    files.push_back(folder / item);
    return files;
}

// Reads the file and, when that works, puts it into the cache.
PictureRef loadNamed(std::string_view cacheName, const fs::path& file)
{
    const auto picture = codecs::readPicture(file);
    if (!picture || !*picture)
        return nullptr;
    plugin::setNamedImage(cacheName, *picture);
    return *picture;
}

CIFMain::Name joined(const CIFMain::Name& folder, const char* item)
{
    return folder ? CIFMain::Name((fs::path(*folder) / item).string()) : CIFMain::Name();
}

// Character by character, letters of all alphabets folded to lower case; bytes that are no UTF-8
// stand for themselves.
std::wstring folded(std::string_view text)
{
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t former = utf8 ? uselocale(utf8) : nullptr;
    std::wstring out;
    std::mbstate_t state{};
    for (std::size_t i = 0; i < text.size();) {
        wchar_t c = 0;
        const std::size_t length = std::mbrtowc(&c, text.data() + i, text.size() - i, &state);
        if (length == 0 || length > text.size()) {
            state = {};
            c = static_cast<unsigned char>(text[i]);
            ++i;
        } else {
            i += length;
        }
        out.push_back(static_cast<wchar_t>(std::towlower(c)));
    }
    if (utf8)
        uselocale(former);
    return out;
}

} // namespace

extern "C" int sortShadingMateriaNames(const char* a, const char* b, void*) noexcept
{
    // Asymmetric on purpose: whichever name comes first is favoured when "Sand" is involved.
    const std::string_view first = a ? a : "", second = b ? b : "";
    if (first == "Sand" || second == "Sand")
        return -1;
    const int order = folded(first).compare(folded(second));
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

namespace plugin {

PictureRef namedImage(std::string_view name)
{
    NamedImages& all = namedImages();
    const std::lock_guard lock(all.lock);
    const auto found = all.images.find(name);
    return found == all.images.end() ? nullptr : found->second;
}

void setNamedImage(std::string_view name, PictureRef picture)
{
    NamedImages& all = namedImages();
    const std::lock_guard lock(all.lock);
    all.images.insert_or_assign(std::string(name), std::move(picture));
}

std::vector<std::string> sortedShadingMaterialNames(std::vector<std::string> names)
{
    for (std::size_t i = 1; i < names.size(); ++i)
        for (std::size_t j = i;
             j > 0 && sortShadingMateriaNames(names[j - 1].c_str(), names[j].c_str(), nullptr) > 0;
             --j)
            std::swap(names[j - 1], names[j]);
    return names;
}

} // namespace plugin

CIFMain::Name CIFMain::sharedContentLibraryPath()
{
    if (const std::string named = environment("CIF_CONTENT_LIBRARY"); !named.empty())
        return isFolder(named) ? Name(named) : Name();
    fs::path folder = inDataFolders(kContentLibrary);
    if (folder.empty() && isFolder(foundation::resourceFolder() / kContentLibrary))
        folder = foundation::resourceFolder() / kContentLibrary;
    return folder.empty() ? Name() : Name(folder.string());
}

CIFMain::Name CIFMain::sharedGlassTexturesPath()
{
    return joined(sharedContentLibraryPath(), "Textures/Glass Textures");
}

CIFMain::Name CIFMain::sharedShadingMaterialsPath()
{
    return joined(sharedContentLibraryPath(), "Textures/Shading Materials");
}

CIFMain::Name CIFMain::sharedBrushTexturesPath()
{
    return joined(sharedContentLibraryPath(), "Brushes");
}

std::string CIFMain::localizedString(std::string_view key) const
{
    return foundation::localizedString(key);
}

CIFMain::NameList CIFMain::resourceContentDirectoryAtPath(const std::string& folder) const
{
    const std::vector<std::string>& imageFileTypes = codecs::readableExtensions();
    const std::vector<std::string> items = itemsOf(folder);
    if (items.empty())
        return {};
    std::vector<std::string> names;
    for (const std::string& item : items) {
        const std::string extension = extensionOf(item);
        const auto matches = [&](const std::string& type) {
            return equalWithoutCase(type, extension);
        };
        if (isFile(fs::path(folder) / item) && std::ranges::any_of(imageFileTypes, matches))
            names.push_back(fs::path(item).stem().string());
    }
    return names;
}

PictureRef CIFMain::resourceImageWithNamePath(std::string_view name,
                                              const std::string& folder) const
{
    const std::string cacheName = "CIF_RES_" + (fs::path(folder) / name).string();
    if (PictureRef known = plugin::namedImage(cacheName))
        return known;
    for (const fs::path& file : pictureFiles(folder, name))
        if (PictureRef picture = loadNamed(cacheName, file))
            return picture;
    return nullptr;
}

CIFMain::NameList CIFMain::resourceNamesOfKind(std::string_view subfolder) const
{
    const fs::path folder = foundation::resourceFolder();
    if (folder.empty())
        return {};
    std::vector<std::string> names = itemsOf(folder / fs::path(subfolder));
    if (names.empty())
        return {};
    for (std::string& name : names)
        name = fs::path(name).stem().string();
    return names;
}

PictureRef CIFMain::resourceImageWithNameOfKind(std::string_view name,
                                                std::string_view subfolder) const
{
    if (PictureRef known = plugin::namedImage(name))
        return known;
    const fs::path folder = foundation::resourceFolder();
    if (folder.empty())
        return nullptr;
    // Only the best type is tried, readable or not.
    const std::vector<fs::path> files = pictureFiles(folder / subfolder, name);
    return files.empty() ? nullptr : loadNamed(name, files.front());
}

CIFMain::NameList CIFMain::CIFGlassTextureNames() const
{
    const Name folder = sharedGlassTexturesPath();
    return folder ? resourceContentDirectoryAtPath(*folder) : NameList();
}

CIFMain::NameList CIFMain::CIFShadingMaterialNames() const
{
    const Name folder = sharedShadingMaterialsPath();
    return folder ? resourceContentDirectoryAtPath(*folder) : NameList();
}

CIFMain::NameList CIFMain::CIFBrushNames() const
{
    const Name folder = sharedBrushTexturesPath();
    return folder ? resourceContentDirectoryAtPath(*folder) : NameList();
}

PictureRef CIFMain::CIFGlassTextureWithName(std::string_view name) const
{
    const Name folder = sharedGlassTexturesPath();
    return folder ? resourceImageWithNamePath(name, *folder) : nullptr;
}

PictureRef CIFMain::CIFShadingMaterialWithName(std::string_view name) const
{
    const Name folder = sharedShadingMaterialsPath();
    return folder ? resourceImageWithNamePath(name, *folder) : nullptr;
}

PictureRef CIFMain::CIFBrushWithName(std::string_view name) const
{
    const Name folder = sharedBrushTexturesPath();
    return folder ? resourceImageWithNamePath(name, *folder) : nullptr;
}
