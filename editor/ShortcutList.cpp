#include "editor/ShortcutList.h"

#include "editor/Forms.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace editor {

ShortcutList::ShortcutList(const std::vector<ShortcutLine>& lines, QWidget* parent)
    : QDialog(parent), _field(new QLineEdit(this)), _list(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("shortcutList"));
    setWindowTitle(localizedString("Keyboard Shortcuts"));
    _field->setObjectName(QStringLiteral("shortcutSearch"));
    _field->setPlaceholderText(localizedString("Search"));
    _field->setAccessibleName(localizedString("Search"));
    _field->setClearButtonEnabled(true);
    connect(_field, &QLineEdit::textChanged, this, &ShortcutList::search);

    _list->setAccessibleName(windowTitle());
    _list->setColumnCount(2);
    _list->setHeaderLabels({localizedString("Command"), localizedString("Keys or mouse")});
    _list->setRootIsDecorated(false);
    _list->setItemsExpandable(false);
    _list->setUniformRowHeights(true);
    QTreeWidgetItem* group = nullptr;
    for (const ShortcutLine& line : lines) {
        if (!group || group->text(0) != line.group) {
            group = new QTreeWidgetItem(_list, {line.group});
            group->setFlags(Qt::ItemIsEnabled);
            group->setFirstColumnSpanned(true);
            QFont bold = font();
            bold.setBold(true);
            group->setFont(0, bold);
            group->setExpanded(true);
        }
        new QTreeWidgetItem(group, {line.text, line.keys});
    }
    _list->expandAll();
    _list->resizeColumnToContents(0);
    _list->resizeColumnToContents(1);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(localizedString("Close"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(_field);
    layout->addWidget(_list);
    layout->addWidget(buttons);
    const int width = _list->columnWidth(0) + _list->columnWidth(1) + 80;
    resize(width, fontMetrics().height() * 36);
}

void ShortcutList::search(const QString& words)
{
    const QStringList all = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int i = 0; i < _list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* group = _list->topLevelItem(i);
        bool isAnyShown = false;
        for (int j = 0; j < group->childCount(); ++j) {
            QTreeWidgetItem* line = group->child(j);
            const QString text = group->text(0) + QLatin1Char(' ') + line->text(0) +
                                 QLatin1Char(' ') + line->text(1);
            const bool isShown = std::ranges::all_of(
                all, [&](const QString& word) { return text.contains(word, Qt::CaseInsensitive); });
            line->setHidden(!isShown);
            isAnyShown = isAnyShown || isShown;
        }
        group->setHidden(!isAnyShown);
    }
}

} // namespace editor
