#include "editor/CIFImageCategoryCell.h"

#include "editor/Painting.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QStyle>

#include <utility>

namespace {

constexpr QSize kMarkSize(11, 13);

} // namespace

void CIFImageCategoryCell::drawInteriorWithFrameInView(QPainter& painter,
                                                       const QStyleOptionViewItem& option,
                                                       const QModelIndex& index) const
{
    if (index.data(Qt::DecorationRole).isValid()) {
        // The style would put it where a text's picture goes.
        QStyleOptionViewItem cell = option;
        initStyleOption(&cell, index);
        const QIcon image = std::exchange(cell.icon, {});
        const QStyle* style = cell.widget ? cell.widget->style() : QApplication::style();
        style->drawControl(QStyle::CE_ItemViewItem, &cell, &painter, cell.widget);
        image.paint(&painter,
                    QStyle::alignedRect(cell.direction, Qt::AlignCenter, kMarkSize, cell.rect));
        return;
    }
    const QRect frame = option.rect;
    // The end of the line is away from the names, whichever side that is.
    const double x = option.direction == Qt::LeftToRight ? frame.x() : frame.x() + 2.0;
    const QRectF line(x, frame.y() + frame.height() * 0.5, frame.width() - 2, 0.5);
    painter.fillRect(editor::onPixels(painter, line), editor::quietColor(option.palette));
}

void CIFImageCategoryCell::initStyleOption(QStyleOptionViewItem* option,
                                           const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->features &= ~QStyleOptionViewItem::HasDecoration;
}

void CIFImageCategoryCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const
{
    drawInteriorWithFrameInView(*painter, option, index);
}

QSize CIFImageCategoryCell::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    // The heights of rows are the names'.
    return {kMarkSize.width() + 10, 1};
}
