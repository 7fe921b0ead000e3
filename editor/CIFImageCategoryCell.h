// Draws the marks of a catalogue list, and beside categories the rest of their line.
#pragma once

#include <QStyledItemDelegate>

class CIFImageCategoryCell final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // drawInteriorWithFrame:inView: — no decoration at all is no image; an empty icon is an empty
    // image, which leaves the cell as it is.
    void drawInteriorWithFrameInView(QPainter& painter, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
