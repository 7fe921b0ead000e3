// What CoreImageFilterEditor.so exports: the one editor of the process.
#include "editor/Application.h"
#include "editor/CIFImageEditorController.h"
#include "plugin/EditorLoader.h"

#include <QCoreApplication>

#include <exception>

namespace editor {

namespace {

// Outlives every application; the controller goes with the one it was made under, and a later one
// gets another.
class SharedEditor final : public plugin::ImageEditor {
public:
    bool startEditorUseSelectionWithRect(const foundation::PictureRef& picture, bool useSelection,
                                         foundation::Rect rect) override
    {
        const ApplicationUse use;
        return controller().startEditorUseSelectionWithRect(picture, useSelection, rect);
    }
    bool startGeneratorWithRect(const foundation::PictureRef& picture,
                                foundation::Rect rect) override
    {
        const ApplicationUse use;
        return controller().startGeneratorWithRect(picture, rect);
    }
    foundation::PictureRef outputImage() const override
    {
        return isThere() ? controller().outputImage() : nullptr;
    }
    bool isSelected() const override { return isThere() && controller().isSelected(); }
    foundation::Rect getSelectedRect() const override
    {
        return isThere() ? controller().getSelectedRect() : foundation::Rect();
    }
    plugin::EditRecord record() const override
    {
        return isThere() ? controller().record() : plugin::EditRecord();
    }

private:
    static bool isThere() { return QCoreApplication::instance() != nullptr; }
    static CIFImageEditorController& controller()
    {
        return CIFImageEditorController::sharedImageEditor();
    }
};

} // namespace

} // namespace editor

// While the window is up there is no second one.
extern "C" __attribute__((visibility("default"))) plugin::ImageEditor* CIFSharedImageEditor(
    std::uint32_t version)
{
    static editor::SharedEditor shared;
    try {
        // In this order: whether it is used is known to the application's thread alone.
        if (version == plugin::kImageEditorVersion && editor::haveApplication() &&
            !editor::ApplicationUse::isUsed())
            return &shared;
    } catch (const std::exception&) {
        // Too little memory for an application.
    }
    return nullptr;
}
