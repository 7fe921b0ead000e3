// The list of shortcuts, which can be searched.
#pragma once

#include "editor/Commands.h"

#include <QDialog>

class QLineEdit;
class QTreeWidget;

namespace editor {

class ShortcutList final : public QDialog {
    Q_OBJECT

public:
    ShortcutList(const std::vector<ShortcutLine>& lines, QWidget* parent);

    // Shows the lines that have all the words, in any column.
    void search(const QString& words);

private:
    QLineEdit* _field = nullptr;
    QTreeWidget* _list = nullptr;
};

} // namespace editor
