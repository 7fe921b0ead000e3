// Draws the names of a catalogue list: entries as text with their picture, categories over a line.
#pragma once

#include <QStyledItemDelegate>

class CIFCategoryCell final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // drawInteriorWithFrame:inView:
    void drawInteriorWithFrameInView(QPainter& painter, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
