// The rows of a catalogue list: categories and entries together, as a table view shows them.
#pragma once

#include <QAbstractTableModel>
#include <QString>

#include <optional>
#include <vector>

class CIFImageEditorController;
class QTableView;

namespace editor {

// What a cell of the lists shows.
struct CellValue {
    QString string;               // of the column "title", in the user's language
    bool FTSeparatorCell = false; // a category's name, drawn over a line
    // Of the column "mark": a type of imageFromType:; 0 is an empty image, nothing is no image.
    std::optional<int> imageType;
};

// The rows as the controller answered them when they were last loaded: both lists have the one
// controller, which answers for the effects set of the moment.
class CatalogueModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Title, MarkColumn, ColumnCount };
    enum Role {
        SeparatorRole = Qt::UserRole, // "FTSeparatorCell"
        IdentifierRole,               // of the entry; nothing for a category
        SearchRole,                   // what the search looks in; nothing for a category
    };

    explicit CatalogueModel(const CIFImageEditorController& controller, QObject* parent = nullptr);

    // reloadData
    void reloadData();

    // The row of an entry; −1 when there is none.
    int rowOfIdentifier(const QString& identifier) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Row {
        CellValue title, mark;
        QString identifier; // null for a category
        QString icon;
        QString searchWords;
        bool isSelectable = false;
    };

    const CIFImageEditorController& _controller;
    std::vector<Row> _rows;
};

// Makes a table view one of the catalogue lists: two columns with their cells, one row selected.
void showCatalogue(QTableView& list, CatalogueModel& model);
// Selects a row and makes it the current one, from which the arrow keys go on, in either reading
// direction: the view's own way asks for the column at its left edge and finds none when mirrored.
void selectRowOfList(QTableView& list, int row);

} // namespace editor
