#include "platform/drawing/Modules.h"

#include "platform/foundation/Bundle.h"

#include <dlfcn.h>

#include <filesystem>
#include <vector>

namespace drawing {

namespace {

namespace fs = std::filesystem;
using foundation::Error;
using foundation::Result;

// Where the modules may be: beside the library; two folders up from its variant for newer
// processors (glibc-hwcaps/…); or, for a program that holds the code itself, in the library folder
// beside its own.
std::vector<fs::path> moduleFolders()
{
    const fs::path folder = foundation::libraryFolder();
    if (folder.empty())
        return {};
    return {folder, folder / "../..", folder / "../lib/CoreImageFilter"};
}

template <class Table>
Result<const Table*> load(const char* file, const char* entry, const std::string& need)
{
    std::error_code ignored;
    for (const fs::path& folder : moduleFolders()) {
        const fs::path path = folder / file;
        if (!fs::exists(path, ignored))
            continue;
        // Never closed: its libraries register things that must stay.
        void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!module) {
            const char* reason = dlerror();
            return Error{need + (reason ? std::string(": ") + reason : std::string())};
        }
        const auto answer = reinterpret_cast<const Table* (*)()>(dlsym(module, entry));
        const Table* table = answer ? answer() : nullptr;
        if (!table || table->layout != kModuleLayout)
            return Error{path.lexically_normal().string() + " does not belong to this library"};
        return table;
    }
    return Error{need + ": " + file + " is missing beside the library"};
}

} // namespace

const Result<const PainterTable*>& painter()
{
    static const auto result = load<PainterTable>(kPainterModule, kPainterEntry,
                                                  "drawing needs Cairo (package libcairo2)");
    return result;
}

const Result<const SvgTable*>& svgReader()
{
    static const auto result =
        load<SvgTable>(kSvgModule, kSvgEntry, "SVG needs librsvg (package librsvg2-2)");
    return result;
}

} // namespace drawing
