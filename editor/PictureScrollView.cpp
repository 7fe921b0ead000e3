// Ranges of the scroll bars, and the picture view kept over the whole viewport.
#include "editor/PictureScrollView.h"

#include "editor/CIFImageEditorView.h"
#include "platform/foundation/Numbers.h"

#include <QEvent>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace editor {

namespace {

int pastEnd(double document, int visible)
{
    return std::max(foundation::truncToInt(std::ceil(document)) - visible, 0);
}

} // namespace

PictureScrollView::PictureScrollView(QWidget* parent)
    : QAbstractScrollArea(parent), _pictureView(new CIFImageEditorView(*this))
{
    _pictureView->setObjectName(QStringLiteral("_pictureView"));
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setLineWidth(1);
    setFocusPolicy(Qt::NoFocus);
    setFocusProxy(_pictureView);
    // A picture has no reading direction.
    horizontalScrollBar()->setLayoutDirection(Qt::LeftToRight);
    horizontalScrollBar()->setSingleStep(20);
    verticalScrollBar()->setSingleStep(20);
}

QSize PictureScrollView::barSizes() const
{
    const int spacing =
        style()->styleHint(QStyle::SH_ScrollView_FrameOnlyAroundContents, nullptr, this)
            ? style()->pixelMetric(QStyle::PM_ScrollView_ScrollBarSpacing, nullptr, this)
            : 0;
    const int overlap = style()->pixelMetric(QStyle::PM_ScrollView_ScrollBarOverlap, nullptr, this);
    const int around = spacing - overlap;
    return {std::max(verticalScrollBar()->sizeHint().width() + around, 0),
            std::max(horizontalScrollBar()->sizeHint().height() + around, 0)};
}

QSize PictureScrollView::contentSize() const
{
    return (contentsRect().size() - barSizes()).expandedTo({1, 1});
}

void PictureScrollView::setDocumentSize(QSizeF size)
{
    _documentSize = size;
    // Not from the viewport's present size: showing a bar changes it.
    QSize visible = contentsRect().size();
    const QSize bars = barSizes();
    bool horizontal = false, vertical = false;
    // A bar takes room, which may make the other one necessary.
    for (int i = 0; i < 2; ++i) {
        if (!horizontal && pastEnd(size.width(), visible.width()) > 0) {
            horizontal = true;
            visible.rheight() -= bars.height();
        }
        if (!vertical && pastEnd(size.height(), visible.height()) > 0) {
            vertical = true;
            visible.rwidth() -= bars.width();
        }
    }
    // Said outright because bars that come as needed come only some time after their range changed.
    setHorizontalScrollBarPolicy(horizontal ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(vertical ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    horizontalScrollBar()->setPageStep(visible.width());
    verticalScrollBar()->setPageStep(visible.height());
    horizontalScrollBar()->setRange(0, horizontal ? pastEnd(size.width(), visible.width()) : 0);
    verticalScrollBar()->setRange(0, vertical ? pastEnd(size.height(), visible.height()) : 0);
}

QPoint PictureScrollView::scrollPosition() const
{
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void PictureScrollView::setScrollPosition(QPointF position)
{
    horizontalScrollBar()->setValue(foundation::truncToInt(std::round(position.x())));
    verticalScrollBar()->setValue(foundation::truncToInt(std::round(position.y())));
}

void PictureScrollView::scrollContentsBy(int, int)
{
    _pictureView->clipViewDidScroll();
}

void PictureScrollView::resizeEvent(QResizeEvent*)
{
    // Also when only the outside changed and the viewport did not.
    setDocumentSize(_documentSize);
    _pictureView->setGeometry(viewport()->rect());
}

bool PictureScrollView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Resize)
        _pictureView->setGeometry(viewport()->rect());
    return QAbstractScrollArea::viewportEvent(event);
}

} // namespace editor
