#include "editor/CIFCategoryCell.h"

#include "editor/CatalogueModel.h"
#include "editor/Painting.h"

#include <QFontMetrics>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace {

constexpr QSize kIconSize(24, 24);
constexpr int kGap = 4; // between a category's name and the rest of the line

} // namespace

void CIFCategoryCell::drawInteriorWithFrameInView(QPainter& painter,
                                                  const QStyleOptionViewItem& option,
                                                  const QModelIndex& index) const
{
    const QString string = index.data().toString();
    const bool isCategory = index.data(editor::CatalogueModel::SeparatorRole).toBool();
    if (!isCategory && !string.isEmpty()) {
        QStyledItemDelegate::paint(&painter, option, index);
        return;
    }

    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QRect frame = cell.rect;
    const QColor grey = editor::quietColor(cell.palette);
    // Where the text reads from the right, so do the line and the name.
    const auto directed = [&](const QRectF& rect) {
        if (cell.direction == Qt::LeftToRight)
            return rect;
        return QRectF(frame.left() + (frame.x() + frame.width() - rect.right()), rect.y(),
                      rect.width(), rect.height());
    };
    const QFontMetrics metrics(cell.font);
    const QString name = metrics.elidedText(string, Qt::ElideRight, frame.width() - 2 * kGap);
    const QRectF text = directed(
        QRectF(frame.x() + 2, frame.y() + 1, metrics.horizontalAdvance(name), metrics.height()));
    painter.save();
    if (!name.isEmpty()) {
        painter.setFont(cell.font);
        painter.setPen(grey);
        painter.drawText(text, Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, name);
        // The line makes room for the name.
        painter.setClipRegion(QRegion(frame.adjusted(-4, 0, 4, 0)) -
                                  QRegion(text.toAlignedRect().adjusted(-kGap, 0, kGap, 0)),
                              painter.hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
    }
    const QRectF line(frame.x() + 2, frame.y() + frame.height() * 0.5, frame.width() + 1, 0.5);
    painter.fillRect(editor::onPixels(painter, directed(line)), grey);
    painter.restore();
}

void CIFCategoryCell::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->textElideMode = Qt::ElideRight;
    option->decorationSize = kIconSize;
}

void CIFCategoryCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    drawInteriorWithFrameInView(*painter, option, index);
}

QSize CIFCategoryCell::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QFontMetrics metrics(cell.font);
    if (!index.data(editor::CatalogueModel::SeparatorRole).toBool()) {
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        return {size.width(), std::max(size.height() + 2, metrics.height() + 6)};
    }
    // One point above the name, so that its middle lies on the line.
    return {metrics.horizontalAdvance(cell.text) + 2 * kGap, metrics.height() + 2};
}
