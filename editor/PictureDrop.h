// Picture files dropped on the menus of textures and brushes, or anywhere on the controls, are
// taken as with the item "Other...".
#pragma once

#include <QObject>
#include <QString>

class CIFImageEditorController;
class QDropEvent;
class QMimeData;

namespace editor {

class PictureDrop final : public QObject {
    Q_OBJECT

public:
    PictureDrop(CIFImageEditorController& controller, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Use { None, Texture, Brush };
    Use useOn(const QObject* target) const;

    CIFImageEditorController& _controller;
};

} // namespace editor
