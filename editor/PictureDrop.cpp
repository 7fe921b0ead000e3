#include "editor/PictureDrop.h"

#include "editor/CIFImageEditorController.h"
#include "platform/codecs/Codecs.h"

#include <QComboBox>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace editor {

namespace {

// The one local file whose name is a picture's; empty when there is none, or more.
QString pictureFileIn(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    const QString file = urls.first().toLocalFile();
    const std::string extension = QFileInfo(file).suffix().toLower().toStdString();
    const auto& known = codecs::readableExtensions();
    return std::ranges::find(known, extension) != known.end() ? file : QString();
}

} // namespace

PictureDrop::PictureDrop(CIFImageEditorController& controller, QObject* parent)
    : QObject(parent), _controller(controller)
{
    const EditorOutlets& parts = controller.outlets();
    for (QWidget* target : std::initializer_list<QWidget*>{
             parts._texturePopUpButton10, parts._dabsTypePopUpButton, parts._controlsView}) {
        if (!target)
            continue;
        target->setAcceptDrops(true);
        target->installEventFilter(this);
    }
}

PictureDrop::Use PictureDrop::useOn(const QObject* target) const
{
    const EditorOutlets& parts = _controller.outlets();
    const bool isShown = parts._texturePopUpButton10 && parts._texturePopUpButton10->isVisible();
    if (isShown && target != parts._dabsTypePopUpButton)
        return Use::Texture;
    if (_controller.filterName() == "GLIF_Dabs" && target != parts._texturePopUpButton10)
        return Use::Brush;
    return Use::None;
}

bool PictureDrop::eventFilter(QObject* watched, QEvent* event)
{
    const bool isDrop = event->type() == QEvent::Drop;
    if (!isDrop && event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove)
        return QObject::eventFilter(watched, event);
    auto& drop = static_cast<QDropEvent&>(*event);
    const Use use = useOn(watched);
    const QString file = drop.mimeData() ? pictureFileIn(*drop.mimeData()) : QString();
    if (use == Use::None || file.isEmpty()) {
        drop.ignore();
        return true;
    }
    drop.setDropAction(Qt::CopyAction);
    drop.accept();
    if (isDrop && use == Use::Texture)
        _controller.openTextureImagePanelDidEnd(1, file);
    else if (isDrop)
        _controller.openBrushImagePanelDidEnd(1, file);
    return true;
}

} // namespace editor
