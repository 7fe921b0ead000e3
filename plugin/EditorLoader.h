// The editor as the plug-in object sees it. It lives in a module of its own beside the library,
// which is opened when a host first asks for a window.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/foundation/Value.h"
#include "plugin/Recipe.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace plugin {

// What was done in a run of the editor: enough to do it again without a window.
struct EditRecord {
    struct Step {
        // The picture was first brought to this size in pixels: stretched or, as a thumbnail,
        // fitted on white.
        std::optional<foundation::Size> resized;
        bool asThumbnail = false;
        // Then an entry was applied. A generator draws a new picture of the size there is.
        std::optional<RecipeStep> applied;
    };
    std::vector<Step> steps;
    std::optional<foundation::Rect> crop; // in points of the result, y up
    foundation::Size size;                // of the last picture that was begun empty, if any was
};

class ImageEditor {
public:
    // startEditor:useSelection:withRect: — modal, on a picture; true when the user accepted.
    virtual bool startEditorUseSelectionWithRect(const foundation::PictureRef& picture,
                                                 bool useSelection, foundation::Rect rect) = 0;
    // startGenerator:withRect: — the same for a new picture; a null one is a blank of the
    // rectangle's size.
    virtual bool startGeneratorWithRect(const foundation::PictureRef& picture,
                                        foundation::Rect rect) = 0;
    // What the last run made, and for which part of the picture.
    virtual foundation::PictureRef outputImage() const = 0;
    virtual bool isSelected() const = 0;
    virtual foundation::Rect getSelectedRect() const = 0;
    virtual EditRecord record() const = 0;

protected:
    ~ImageEditor() = default;
};

// What the module exports: the one editor of the process, which it owns. Null when there can be
// none now (no display, an application of the host's that has no widgets or lives on another
// thread, a window that is up already) or when it was built for another version of this interface.
inline constexpr const char* kSharedImageEditorSymbol = "CIFSharedImageEditor";
inline constexpr std::uint32_t kImageEditorVersion = 2;
using SharedImageEditorFunction = ImageEditor* (*)(std::uint32_t version);

// + sharedImageEditor — null when there is no editor. It is asked for anew each time: a module may
// have been installed, a display may answer.
ImageEditor* sharedImageEditor();

// Why the last call of that answered null, fit to be printed; empty when it did not.
std::string editorFailure();

// Opens this module instead of CoreImageFilterEditor.so beside the library; empty for that one
// again.
void setEditorModule(std::filesystem::path file);

} // namespace plugin
