// Toolbar, menus, cursors and small pictures of the editor window.
#include "editor/CIFImageEditorController.h"

#include "editor/Forms.h"
#include "editor/NamedImages.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <QAction>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include <libintl.h>

namespace {

using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Value;

QString fromUtf8(const std::string& text)
{
    return QString::fromStdString(text);
}

// Item texts take an ampersand for the mark of a shortcut.
QString itemTitle(const QString& name)
{
    return QString(name).replace(QLatin1Char('&'), QLatin1String("&&"));
}

// From the host's string table: its message catalogue or, in a host of this toolkit, its
// translators.
QString hostsString(const char* key)
{
    const QString text = QString::fromLocal8Bit(gettext(key));
    return text == QLatin1String(key) ? QCoreApplication::translate("CIFImageEditorController", key)
                                      : text;
}

} // namespace

void CIFImageEditorController::createToolbar()
{
    if (!_window)
        return;
    const QString name = QStringLiteral("Properties toolbar");
    _toolbar = _window->findChild<QToolBar*>(name);
    if (!_toolbar) {
        _toolbar = new QToolBar(_window);
        _toolbar->setObjectName(name);
        _window->addToolBar(_toolbar);
    }
    _toolbar->setWindowTitle(editor::localizedString("Properties Toolbar"));
    _toolbar->setIconSize({16, 16});
    // The pictures are all the same.
    _toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    _toolbar->clear();
    const QStringList identifiers = toolbarDefaultItemIdentifiers(_toolbar);
    for (const QString& identifier : identifiers)
        if (identifier == QLatin1String(plugin::kToolbarSeparatorItemIdentifier))
            _toolbar->addSeparator();
        else
            _toolbar->addAction(
                toolbarItemForItemIdentifierWillBeInsertedIntoToolbar(_toolbar, identifier, true));
    _toolbar->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(_toolbar, &QWidget::customContextMenuRequested, this,
            &CIFImageEditorController::showToolbarMenu, Qt::UniqueConnection);
    _toolbar->hide();
}

QToolBar* CIFImageEditorController::toolbar() const
{
    return _toolbar;
}

// Which items the toolbar has is the user's choice, category by category.
void CIFImageEditorController::showToolbarMenu(const QPoint& position)
{
    QMenu menu;
    QMenu* category = nullptr;
    const QList<QAction*> items = _toolbar->actions();
    for (QAction* item : items) {
        if (item->isSeparator()) {
            category = nullptr;
            continue;
        }
        if (!category)
            category = menu.addMenu(itemTitle(item->property("category").toString()));
        QAction* choice = category->addAction(itemTitle(item->toolTip()));
        choice->setCheckable(true);
        choice->setChecked(item->isVisible());
        connect(choice, &QAction::toggled, item, &QAction::setVisible);
    }
    menu.addSeparator();
    menu.addAction(_toolbar->toggleViewAction());
    menu.exec(_toolbar->mapToGlobal(position));
}

QAction* CIFImageEditorController::toolbarItemForItemIdentifierWillBeInsertedIntoToolbar(
    QToolBar* toolbar, const QString& identifier, bool)
{
    auto* item = new QAction(toolbar);
    item->setObjectName(identifier);
    item->setData(identifier);
    item->setProperty("tag", 0);
    const auto furnish = [&](const QString& label, const char* image) {
        item->setText(itemTitle(label));
        item->setToolTip(label);
        item->setIcon(editor::iconWithName(QLatin1String(image)));
        connect(item, &QAction::triggered, this, [=, this] { propertiesTabChange(item); });
    };
    if (identifier == QLatin1String("id")) {
        furnish(hostsString("Wrap"), "inspector_wrap");
        return item;
    }
    const CIFMain* plugIn = _CIFPlugInInstance.get();
    for (int i = 0; plugIn && i < plugIn->CIFFilterCategoriesCount(); ++i)
        for (int j = 0; j < plugIn->CIFFilterCountForCategoryAtIndex(i); ++j)
            if (fromUtf8(plugIn->CIFFilterIdentifierAtIndexForCategoryIndex(j, i)) == identifier) {
                furnish(editor::localizedString(plugIn->CIFFilterNameAtIndexForCategoryIndex(j, i)),
                        "shapes");
                item->setProperty("category",
                                  editor::localizedString(plugIn->CIFCategoryNameAtIndex(i)));
                return item;
            }
    return item;
}

QStringList CIFImageEditorController::toolbarAllowedItemIdentifiers(const QToolBar*) const
{
    QStringList identifiers;
    if (_CIFPlugInInstance)
        for (const std::string& identifier : _CIFPlugInInstance->CIFAllFilterIdentifiers())
            identifiers.append(fromUtf8(identifier));
    return identifiers;
}

QStringList CIFImageEditorController::toolbarDefaultItemIdentifiers(const QToolBar* toolbar) const
{
    return toolbarAllowedItemIdentifiers(toolbar);
}

QStringList CIFImageEditorController::toolbarSelectableItemIdentifiers(
    const QToolBar* toolbar) const
{
    return toolbarAllowedItemIdentifiers(toolbar);
}

QMenu* CIFImageEditorController::createViewMenu(QMenuBar& menuBar) const
{
    QMenu* menu = menuBar.addMenu(editor::localizedString("&View"));
    if (_toolbar)
        menu->addAction(_toolbar->toggleViewAction());
    return menu;
}

std::unique_ptr<QMenu> CIFImageEditorController::filtersMenuWithGroupDesc(
    const foundation::ArrayRef& descriptors)
{
    auto menu = std::make_unique<QMenu>();
    if (!descriptors)
        return menu;
    for (const Value& value : *descriptors) {
        const DictionaryRef descriptor = value.dictionary();
        if (!descriptor)
            continue;
        QAction* item = menu->addAction(
            itemTitle(editor::localizedString(descriptor->stringValue("CIFFilterName"))));
        item->setData(fromUtf8(descriptor->stringValue("CIFFilterIdentifier")));
    }
    return menu;
}

bool CIFImageEditorController::validateMenuItem(const QAction*)
{
    return true;
}

const QCursor& CIFImageEditorController::cursorFromType(int type)
{
    return editor::cursorFromType(type);
}

QImage CIFImageEditorController::imageFromType(int type)
{
    return editor::imageFromType(type);
}

QImage CIFImageEditorController::imageWithNameOfType(const QString& name, const QString& type)
{
    return editor::imageWithNameOfType(name, type);
}
