// The one controller of the editor window: here its catalogue lists, its menus, cursors and
// toolbar.
#pragma once

#include "editor/CatalogueModel.h"
#include "platform/foundation/Value.h"

#include <QCursor>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <memory>
#include <string>

class CIFMain;
class QAction;
class QMainWindow;
class QMenu;
class QMenuBar;
class QToolBar;

class CIFImageEditorController final : public QObject {
    Q_OBJECT

public:
    // + sharedImageEditor
    static CIFImageEditorController& sharedImageEditor();

    // init
    CIFImageEditorController();
    ~CIFImageEditorController() override;

    // awakeFromNib — makes the plug-in object of its own; nothing on a platform older than version
    // 824, where lists and menus stay empty.
    void awakeFromNib();
    // Null before that.
    CIFMain* plugIn() const { return _CIFPlugInInstance.get(); }

    // window, setWindow: — not owned.
    QMainWindow* window() const;
    void setWindow(QMainWindow* window);

    // filterName — identifier of the current entry; empty when none is chosen.
    std::string filterName() const { return _CIFFilterName; }

    // Both lists show the catalogue of the plug-in object's current effects set.

    // numberOfRowsInTableView: — categories, but for the first, and entries together.
    int numberOfRowsInTableView() const;
    // tableView:objectValueForTableColumn:row: — of the columns "title" and "mark".
    editor::CellValue tableViewObjectValueForTableColumnRow(QStringView column, int row) const;
    // tableView:shouldSelectRow: — categories cannot be selected.
    bool tableViewShouldSelectRow(int row) const;
    // Null for a category.
    QString identifierOfRow(int row) const;
    // The name of the entry's picture; empty when it has none.
    QString iconOfRow(int row) const;

    // createToolbar — fills the window's toolbar, "Properties toolbar", which it makes if there is
    // none. It is hidden until the user switches it on.
    void createToolbar();
    // toolbar:itemForItemIdentifier:willBeInsertedIntoToolbar: — owned by the toolbar.
    QAction* toolbarItemForItemIdentifierWillBeInsertedIntoToolbar(QToolBar* toolbar,
                                                                   const QString& identifier,
                                                                   bool willBeInserted);
    // toolbarAllowedItemIdentifiers:, toolbarDefaultItemIdentifiers:,
    // toolbarSelectableItemIdentifiers: — all entries, with separators between categories.
    QStringList toolbarAllowedItemIdentifiers(const QToolBar* toolbar) const;
    QStringList toolbarDefaultItemIdentifiers(const QToolBar* toolbar) const;
    QStringList toolbarSelectableItemIdentifiers(const QToolBar* toolbar) const;
    QToolBar* toolbar() const;
    // The menu "View", which switches the toolbar on and off. Owned by the menu bar.
    QMenu* createViewMenu(QMenuBar& menuBar) const;

    // propertiesTabChange: — the entry of the toolbar item becomes the current one.
    void propertiesTabChange(QAction* sender);

    // + filtersMenuWithGroupDesc: — an item for each descriptor, which carries its identifier.
    static std::unique_ptr<QMenu> filtersMenuWithGroupDesc(const foundation::ArrayRef& descriptors);
    // validateMenuItem:
    static bool validateMenuItem(const QAction* menuItem);

    // cursorFromType:, imageFromType:, imageWithName:ofType: — see editor/NamedImages.h.
    static const QCursor& cursorFromType(int type);
    static QImage imageFromType(int type);
    static QImage imageWithNameOfType(const QString& name, const QString& type = {});

private:
    void showToolbarMenu(const QPoint& position);

    std::unique_ptr<CIFMain> _CIFPlugInInstance;
    std::string _CIFFilterName;
    QPointer<QMainWindow> _window;
    QPointer<QToolBar> _toolbar;
};
