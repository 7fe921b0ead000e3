#include "editor/CatalogueModel.h"

#include "editor/CIFCategoryCell.h"
#include "editor/CIFImageCategoryCell.h"
#include "editor/CIFImageEditorController.h"
#include "editor/Forms.h"
#include "editor/NamedImages.h"

#include <QApplication>
#include <QFont>
#include <QHeaderView>
#include <QIcon>
#include <QTableView>

#include <algorithm>

namespace editor {

namespace {

// What a mark says, for tips and screen readers.
QString meaningOfMark(int imageType)
{
    switch (imageType) {
    case 11:
        return localizedString("Has a center in the picture");
    case 12:
        return localizedString("Has colors");
    case 13:
        return localizedString("Works on the selection");
    case 14:
        return localizedString("Has a center in the picture and colors");
    default:
        return {};
    }
}

// Small, but no smaller than the user's own text asks for.
QFont categoryFont()
{
    QFont font = QApplication::font();
    font.setPointSizeF(std::max(9.0, 0.8 * font.pointSizeF()));
    return font;
}

} // namespace

CatalogueModel::CatalogueModel(const CIFImageEditorController& controller, QObject* parent)
    : QAbstractTableModel(parent), _controller(controller)
{
    reloadData();
}

void CatalogueModel::reloadData()
{
    beginResetModel();
    _rows.clear();
    for (int i = 0; i < _controller.numberOfRowsInTableView(); ++i) {
        Row row;
        row.title = _controller.tableViewObjectValueForTableColumnRow(u"title", i);
        row.mark = _controller.tableViewObjectValueForTableColumnRow(u"mark", i);
        row.isSelectable = _controller.tableViewShouldSelectRow(i);
        row.identifier = _controller.identifierOfRow(i);
        row.icon = _controller.iconOfRow(i);
        row.searchWords = _controller.searchWordsOfRow(i);
        _rows.push_back(std::move(row));
    }
    endResetModel();
}

int CatalogueModel::rowOfIdentifier(const QString& identifier) const
{
    const auto found = std::find_if(_rows.begin(), _rows.end(), [&](const Row& row) {
        return row.isSelectable && row.identifier == identifier;
    });
    return found == _rows.end() ? -1 : static_cast<int>(found - _rows.begin());
}

int CatalogueModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

int CatalogueModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant CatalogueModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row& row = _rows[static_cast<std::size_t>(index.row())];
    if (role == SeparatorRole)
        return row.title.FTSeparatorCell;
    if (role == IdentifierRole)
        return row.isSelectable ? QVariant(row.identifier) : QVariant();
    if (role == SearchRole)
        return row.isSelectable ? QVariant(row.searchWords) : QVariant();
    if (index.column() == Title) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole: // for names that do not fit
            return row.title.string;
        case Qt::DecorationRole:
            if (const QIcon icon = entryIcon(row.icon); !icon.isNull())
                return icon;
            return {};
        case Qt::FontRole:
            return row.title.FTSeparatorCell ? QVariant(categoryFont()) : QVariant();
        default:
            return {};
        }
    }
    if (!row.mark.imageType)
        return {};
    switch (role) {
    case Qt::DecorationRole:
        return iconFromType(*row.mark.imageType);
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
        return meaningOfMark(*row.mark.imageType);
    default:
        return {};
    }
}

Qt::ItemFlags CatalogueModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || !_rows[static_cast<std::size_t>(index.row())].isSelectable)
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

void showCatalogue(QTableView& list, CatalogueModel& model)
{
    list.setModel(&model);
    list.setItemDelegateForColumn(CatalogueModel::Title, new CIFCategoryCell(&list));
    list.setItemDelegateForColumn(CatalogueModel::MarkColumn, new CIFImageCategoryCell(&list));
    list.setShowGrid(false);
    list.setWordWrap(false);
    list.setTabKeyNavigation(false);
    list.setSelectionBehavior(QAbstractItemView::SelectRows);
    list.setSelectionMode(QAbstractItemView::SingleSelection);
    list.setEditTriggers(QAbstractItemView::NoEditTriggers);
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list.verticalHeader()->hide();
    list.verticalHeader()->setMinimumSectionSize(1);
    list.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list.horizontalHeader()->hide();
    list.horizontalHeader()->setMinimumSectionSize(1);
    list.horizontalHeader()->setSectionResizeMode(CatalogueModel::Title, QHeaderView::Stretch);
    list.horizontalHeader()->setSectionResizeMode(CatalogueModel::MarkColumn,
                                                  QHeaderView::ResizeToContents);
}

void selectRowOfList(QTableView& list, int row)
{
    if (const QAbstractItemModel* model = list.model();
        model && row >= 0 && row < model->rowCount())
        list.selectionModel()->setCurrentIndex(model->index(row, CatalogueModel::Title),
                                               QItemSelectionModel::ClearAndSelect |
                                                   QItemSelectionModel::Rows);
}

} // namespace editor
