#include "editor/CIFImageEditorController.h"

#include "editor/Forms.h"
#include "editor/NamedImages.h"
#include "editor/Shared.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <QAction>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include <libintl.h>

#include <cmath>

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

// Which mark tells how an entry uses the mouse.
int imageTypeOfStyle(int style)
{
    switch (style) {
    case 1:
        return 11;
    case 2:
        return 12;
    case 3:
        return 14;
    case 255:
        return 13;
    default:
        return 0;
    }
}

} // namespace

CIFImageEditorController& CIFImageEditorController::sharedImageEditor()
{
    return editor::sharedInstance<CIFImageEditorController>();
}

CIFImageEditorController::CIFImageEditorController() = default;
CIFImageEditorController::~CIFImageEditorController() = default;

void CIFImageEditorController::awakeFromNib()
{
    if (std::floor(plugin::toolkitVersion()) < 824)
        return;
    _CIFPlugInInstance = std::make_unique<CIFMain>();
}

QMainWindow* CIFImageEditorController::window() const
{
    return _window;
}

void CIFImageEditorController::setWindow(QMainWindow* window)
{
    _window = window;
}

int CIFImageEditorController::numberOfRowsInTableView() const
{
    return _CIFPlugInInstance ? _CIFPlugInInstance->CIFFilterCountBySkipCategory() : 0;
}

QString CIFImageEditorController::identifierOfRow(int row) const
{
    if (!_CIFPlugInInstance || row < 0)
        return {};
    const auto identifier = _CIFPlugInInstance->CIFFilterIdentifierAtIndexSkipCategories(
        static_cast<std::uint32_t>(row), false);
    return identifier ? fromUtf8(*identifier) : QString();
}

bool CIFImageEditorController::tableViewShouldSelectRow(int row) const
{
    return !identifierOfRow(row).isNull();
}

QString CIFImageEditorController::iconOfRow(int row) const
{
    const QString identifier = identifierOfRow(row);
    if (identifier.isNull())
        return {};
    const DictionaryRef entry =
        _CIFPlugInInstance->CIFDescriptorForFilterName(identifier.toStdString());
    return entry ? fromUtf8(entry->stringValue("CIFFilterIcon")) : QString();
}

editor::CellValue CIFImageEditorController::tableViewObjectValueForTableColumnRow(
    QStringView column, int row) const
{
    editor::CellValue value;
    if (row < 0 || row >= numberOfRowsInTableView())
        return value;
    const QString identifier = identifierOfRow(row);
    if (column == u"title") {
        const auto name = _CIFPlugInInstance->CIFFilterNameAtIndexSkipCategories(
            static_cast<std::uint32_t>(row), false);
        value.FTSeparatorCell = identifier.isNull();
        value.string = editor::localizedString(
            name ? *name : _CIFPlugInInstance->CIFCategoryNameWithinFilterNameAtIndex(row));
    } else if (column == u"mark" && !identifier.isNull()) {
        const DictionaryRef entry =
            _CIFPlugInInstance->CIFDescriptorForFilterName(identifier.toStdString());
        value.imageType = imageTypeOfStyle(entry ? entry->intValue("CIFFilterStyle", 0) : 0);
    }
    return value;
}

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

void CIFImageEditorController::propertiesTabChange(QAction* sender)
{
    _CIFFilterName = sender->data().toString().toStdString();
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
