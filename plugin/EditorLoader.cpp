// Opens the editor's module, and the entry points through which a host runs it.
#include "plugin/EditorLoader.h"

#include "platform/drawing/Picture.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Log.h"
#include "plugin/CIFMain.h"

#include <dlfcn.h>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

using foundation::PictureRef;
using foundation::Rect;

namespace plugin {

namespace {

constexpr const char* kModule = "CoreImageFilterEditor.so";

struct Loaded {
    fs::path chosen; // by setEditorModule
    SharedImageEditorFunction function = nullptr;
    std::string failure;
};

Loaded& loaded()
{
    static Loaded state;
    return state;
}

// Beside the library, whose variants for other processors lie two folders further down.
fs::path moduleBesideLibrary()
{
    const fs::path folder = foundation::libraryFolder();
    std::error_code error;
    for (const fs::path& place : {folder, folder / "../.."})
        if (fs::path file = place / kModule; fs::exists(file, error))
            return file;
    return {};
}

} // namespace

ImageEditor* sharedImageEditor()
{
    Loaded& state = loaded();
    if (!state.function) {
        const fs::path file = state.chosen.empty() ? moduleBesideLibrary() : state.chosen;
        if (file.empty()) {
            state.failure = std::string("there is no ") + kModule + " beside the library";
            return nullptr;
        }
        // Never closed: the editor belongs to the process.
        void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        void* symbol = module ? dlsym(module, kSharedImageEditorSymbol) : nullptr;
        if (!symbol) {
            const char* why = dlerror();
            state.failure = why ? why : file.string() + " is not the editor";
            return nullptr;
        }
        state.function = reinterpret_cast<SharedImageEditorFunction>(symbol);
    }
    ImageEditor* editor = state.function(kImageEditorVersion);
    state.failure = editor ? "" : "there is no display where its window could be shown";
    return editor;
}

std::string editorFailure()
{
    return loaded().failure;
}

void setEditorModule(fs::path file)
{
    loaded() = {std::move(file), nullptr, {}};
}

} // namespace plugin

namespace {

Rect inSinglePrecision(const Rect& rect)
{
    const auto single = [](double v) { return static_cast<double>(static_cast<float>(v)); };
    return {single(rect.x), single(rect.y), single(rect.width), single(rect.height)};
}

} // namespace

bool CIFMain::CIFShowDialogUseSelectionWithRectSourceSize(const PictureRef& picture,
                                                          bool useSelection, Rect rect, Size)
{
    plugin::ImageEditor* editor = plugin::sharedImageEditor();
    if (!editor) {
        foundation::log("Can't load image editor");
        return false;
    }
    const bool accepted = editor->startEditorUseSelectionWithRect(picture, useSelection, rect);
    _outputImage = editor->outputImage();
    _isSelected = editor->isSelected();
    _selectionRect = inSinglePrecision(editor->getSelectedRect());
    return accepted;
}

bool CIFMain::CIFShowDialogUseSelectionWithRect(const PictureRef& picture, bool useSelection,
                                                Rect rect)
{
    return CIFShowDialogUseSelectionWithRectSourceSize(picture, useSelection, rect,
                                                       picture ? picture->size() : Size());
}

bool CIFMain::GLIFShowDialogWithRect(const PictureRef& picture, Rect rect)
{
    plugin::ImageEditor* editor = plugin::sharedImageEditor();
    if (!editor)
        return false;
    const bool accepted = editor->startGeneratorWithRect(picture, rect);
    _outputImage = editor->outputImage();
    return accepted;
}
