// A module in the editor's place: it accepts whatever it is given and answers with something
// telling.
#include "platform/drawing/Picture.h"
#include "plugin/EditorLoader.h"

namespace {

class AcceptingEditor final : public plugin::ImageEditor {
public:
    bool startEditorUseSelectionWithRect(const foundation::PictureRef& picture, bool useSelection,
                                         foundation::Rect rect) override
    {
        _picture = picture;
        _isSelected = useSelection;
        _rect = rect;
        return picture != nullptr;
    }
    bool startGeneratorWithRect(const foundation::PictureRef&, foundation::Rect rect) override
    {
        _picture = drawing::Picture::blank({rect.width, rect.height});
        _isSelected = !_isSelected;
        _rect = {9, 9, 9, 9};
        return true;
    }
    foundation::PictureRef outputImage() const override { return _picture; }
    bool isSelected() const override { return _isSelected; }
    foundation::Rect getSelectedRect() const override { return _rect; }
    plugin::EditRecord record() const override { return {}; }

private:
    foundation::PictureRef _picture;
    bool _isSelected = false;
    foundation::Rect _rect;
};

} // namespace

extern "C" plugin::ImageEditor* CIFSharedImageEditor(std::uint32_t version)
{
    static AcceptingEditor editor;
    return version == plugin::kImageEditorVersion ? &editor : nullptr;
}
