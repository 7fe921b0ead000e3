// Small widgets of the editor's form.
#include "editor/FormWidgets.h"

#include "editor/Glyphs.h"
#include "editor/Painting.h"

#include <QEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>
#include <QTextDocument>

#include <algorithm>
#include <cmath>

namespace editor {

// PageStack

PageStack::PageStack(QWidget* parent) : QStackedWidget(parent)
{
    connect(this, &QStackedWidget::currentChanged, this, [this] { updateGeometry(); });
}

QSize PageStack::sizeHint() const
{
    const int width = QStackedWidget::sizeHint().width();
    return {width, currentWidget() ? currentWidget()->sizeHint().height() : 0};
}

QSize PageStack::minimumSizeHint() const
{
    int width = 0;
    for (int i = 0; i < count(); ++i)
        width = std::max(width, widget(i)->minimumSizeHint().width());
    return {width, currentWidget() ? currentWidget()->minimumSizeHint().height() : 0};
}

bool PageStack::hasHeightForWidth() const
{
    return currentWidget() && currentWidget()->hasHeightForWidth();
}

int PageStack::heightForWidth(int width) const
{
    return currentWidget() ? currentWidget()->heightForWidth(width) : -1;
}

// ColumnScrollArea

ColumnScrollArea::ColumnScrollArea(QWidget* parent) : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // It follows the focus of what it holds.
    setFocusPolicy(Qt::NoFocus);
}

bool ColumnScrollArea::eventFilter(QObject* object, QEvent* event)
{
    if (object == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(object, event);
}

QSize ColumnScrollArea::sizeHint() const
{
    const QSize content = widget() ? widget()->sizeHint() : QSize();
    return {std::max(content.width() + verticalScrollBar()->sizeHint().width(),
                     minimumSizeHint().width()),
            content.height()};
}

QSize ColumnScrollArea::minimumSizeHint() const
{
    constexpr int kLowest = 120;
    const int content = widget() ? widget()->minimumSizeHint().width() : 0;
    return {content + verticalScrollBar()->sizeHint().width(), kLowest};
}

// LinkView

LinkView::LinkView(QWidget* parent) : QTextBrowser(parent)
{
    setFrameShape(QFrame::NoFrame);
    setOpenExternalLinks(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(2);
    connect(this, &QTextEdit::textChanged, this, [this] { updateGeometry(); });
}

QSize LinkView::sizeHint() const
{
    return {0, static_cast<int>(std::ceil(document()->size().height()))};
}

void LinkView::resizeEvent(QResizeEvent* event)
{
    QTextBrowser::resizeEvent(event);
    updateGeometry();
}

// GlyphButton

GlyphButton::GlyphButton(QWidget* parent) : QToolButton(parent)
{
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
}

void GlyphButton::setGlyph(const QString& glyph)
{
    _glyph = glyph;
    update();
}

QSize GlyphButton::sizeHint() const
{
    const int side = std::max(fontMetrics().height() + 10, 26);
    return {side, side};
}

void GlyphButton::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = {};
    option.features.setFlag(QStyleOptionToolButton::HasMenu, false);
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
    const double side = fontMetrics().height();
    QRectF place(0, 0, side, side);
    place.moveCenter(QRectF(rect()).center());
    drawGlyph(
        painter, glyphOfState(), place,
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
}

QString GlyphButton::glyphOfState() const
{
    const QString other = _glyph + QLatin1String(isChecked() ? " on" : " off");
    return isCheckable() && isGlyph(other) ? other : _glyph;
}

// SegmentButton

SegmentButton::SegmentButton(QWidget* parent) : QPushButton(parent) {}

void SegmentButton::initStyleOption(QStyleOptionButton* option) const
{
    QPushButton::initStyleOption(option);
    if (!isChecked())
        return;
    option->palette.setColor(QPalette::Button, palette().color(QPalette::Highlight));
    option->palette.setColor(QPalette::ButtonText, palette().color(QPalette::HighlightedText));
}

// FormLabel

FormLabel::FormLabel(QWidget* parent) : QLabel(parent)
{
    alignWithLayout();
}

void FormLabel::alignWithLayout()
{
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    setAlignment((mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute |
                 Qt::AlignVCenter);
}

void FormLabel::changeEvent(QEvent* event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        alignWithLayout();
}

// Separator

Separator::Separator(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Separator::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.2F);
    painter.fillRect(onPixels(painter, QRectF(0, 0, width(), 1)), line);
}

// StatusLabel

void StatusLabel::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    painter.drawItemText(contentsRect(), int(alignment()), palette(), isEnabled(),
                         fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()),
                         foregroundRole());
}

// BusyView

BusyView::BusyView(QWidget* parent) : QWidget(parent)
{
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

} // namespace editor
