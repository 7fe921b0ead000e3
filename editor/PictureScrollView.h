// The scroll view round the picture view: where the border and the scroll bars are, and how far
// they scroll. The viewport is the clip view; the picture view fills it and draws only what is
// visible.
#pragma once

#include <QAbstractScrollArea>

class CIFImageEditorView;

namespace editor {

class PictureScrollView : public QAbstractScrollArea {
    Q_OBJECT

public:
    // Makes the picture view, named "_pictureView".
    explicit PictureScrollView(QWidget* parent = nullptr);

    CIFImageEditorView& pictureView() const { return *_pictureView; }

    // What the border and both scroll bars leave, whether the bars are shown or not.
    QSize contentSize() const;

    // Scrolls over a document of this size; bars appear where it is larger than the viewport.
    void setDocumentSize(QSizeF size);
    // The document's point in the viewport's upper left corner; kept within the document.
    QPoint scrollPosition() const;
    void setScrollPosition(QPointF position);

protected:
    void scrollContentsBy(int dx, int dy) override;
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    QSize barSizes() const;

    CIFImageEditorView* _pictureView;
    QSizeF _documentSize;
};

} // namespace editor
