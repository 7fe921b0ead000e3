// The catalogue lists, what is chosen in them, and the tabs.
#include "editor/CIFImageEditorController.h"

#include "editor/CIFImageEditorView.h"
#include "editor/CatalogueSearch.h"
#include "editor/EventWatcher.h"
#include "editor/Forms.h"
#include "editor/Pages.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "plugin/StartingValues.h"

#include <QAction>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTableView>
#include <QUndoStack>

#include <utility>

using editor::CatalogueModel;
using foundation::DictionaryRef;

namespace {

const QString kFilters = QStringLiteral("filters");
const QString kGenerators = QStringLiteral("generators");

std::uint32_t effectsSetOfTab(const QString& identifier)
{
    return identifier == kGenerators ? CIFImageEditorController::Generators
                                     : CIFImageEditorController::Filters;
}

// -1 when there is none.
int selectedRow(const QTableView& list)
{
    const QItemSelectionModel* selection = list.selectionModel();
    const QModelIndexList rows = selection ? selection->selectedRows() : QModelIndexList();
    return rows.isEmpty() ? -1 : rows.first().row();
}

// Empty when it is no group.
std::string firstEntryOfGroup(const CIFMain& plugIn, const std::string& identifier)
{
    const auto members = plugIn.CIFFiltersDescriptorForGroup(identifier);
    const DictionaryRef first =
        members && !members->empty() ? members->front().dictionary() : nullptr;
    return first ? first->stringValue("CIFFilterIdentifier") : std::string();
}

QString fromUtf8(const std::string& text)
{
    return QString::fromStdString(text);
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
    DictionaryRef entry = _CIFPlugInInstance->CIFDescriptorForFilterName(identifier.toStdString());
    // A group shows the picture of its first entry.
    if (const auto group =
            _CIFPlugInInstance->CIFFiltersDescriptorForGroup(identifier.toStdString());
        group && !group->empty())
        entry = group->front().dictionary();
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

QString CIFImageEditorController::searchWordsOfRow(int row) const
{
    const QString identifier = identifierOfRow(row);
    if (identifier.isNull())
        return {};
    const std::string id = identifier.toStdString();
    QStringList words;
    // As they stand, and in the user's language.
    const auto add = [&](std::string_view text) {
        words << QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
              << editor::localizedString(text);
    };
    if (const DictionaryRef entry = _CIFPlugInInstance->CIFDescriptorForFilterName(id))
        add(entry->stringValue("CIFFilterName"));
    if (const auto members = _CIFPlugInInstance->CIFFiltersDescriptorForGroup(id))
        for (const foundation::Value& member : *members)
            if (const DictionaryRef descriptor = member.dictionary())
                add(descriptor->stringValue("CIFFilterName"));
    add(categoryOfRow(row));
    // The generators' catalogue has only translated names.
    const plugin::EnglishNames names = plugin::generatorNamesInEnglish(id);
    add(names.entry);
    add(names.category);
    return editor::folded(words.join(QLatin1Char(' ')));
}

std::string CIFImageEditorController::categoryOfRow(int row) const
{
    for (; row >= 0; --row)
        if (identifierOfRow(row).isNull())
            return _CIFPlugInInstance->CIFCategoryNameWithinFilterNameAtIndex(row);
    return _CIFPlugInInstance->CIFCategoryNameAtIndex(0);
}

void CIFImageEditorController::connectLists()
{
    if (_outlets._windowTabSegmentButton)
        connect(_outlets._windowTabSegmentButton, &QAbstractButton::clicked, this,
                [this] { selectTab(kFilters); });
    if (_outlets._windowTabSegmentButton2)
        connect(_outlets._windowTabSegmentButton2, &QAbstractButton::clicked, this,
                [this] { selectTab(kGenerators); });
    if (_window) {
        _acceptShortcut = new QShortcut(_window);
        _acceptShortcut->setKeys({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
        connect(_acceptShortcut, &QShortcut::activated, this, [this] {
            if (_outlets._buttonSet)
                _outlets._buttonSet->click();
        });
    }
    updateReturnKey();
    if (QLineEdit* field = _outlets._searchField) {
        connect(field, &QLineEdit::textChanged, this,
                &CIFImageEditorController::searchFieldDidChange);
        new editor::EventWatcher(*field, [this](QEvent& event) { return searchKey(event); });
    }
    if (_CIFPlugInInstance && _outlets._filtersTabView) {
        _CIFPlugInInstance->CIFSetEffectsSet(effectsSetOfTab(selectedTab()));
        showListOfTab(selectedTab());
    }
}

QTableView* CIFImageEditorController::listOfTab(const QString& identifier) const
{
    return identifier == kFilters      ? _outlets._tableView
           : identifier == kGenerators ? _outlets._GLIFTableView
                                       : nullptr;
}

const CatalogueModel* CIFImageEditorController::modelOfList(const QTableView* list) const
{
    return list == _outlets._tableView ? _tableModel : _GLIFTableModel;
}

// A list takes its rows from the effects set of the moment, so it is filled when its tab is shown.
void CIFImageEditorController::showListOfTab(const QString& identifier)
{
    QTableView* list = listOfTab(identifier);
    if (_outlets._listsTabView)
        if (QWidget* page =
                editor::pageOf(*_outlets._listsTabView, identifier + QStringLiteral(" list")))
            _outlets._listsTabView->setCurrentWidget(page);
    const bool isFilters = identifier == kFilters;
    if (_outlets._windowTabSegmentButton)
        _outlets._windowTabSegmentButton->setChecked(isFilters);
    if (_outlets._windowTabSegmentButton2)
        _outlets._windowTabSegmentButton2->setChecked(!isFilters);
    CatalogueModel*& model = isFilters ? _tableModel : _GLIFTableModel;
    if (!list || model || !_CIFPlugInInstance)
        return;
    model = new CatalogueModel(*this, list);
    editor::showCatalogue(*list, *model);
    filterRows(*list, *model);
    connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this, list] { tableViewSelectionDidChange(*list); });
}

void CIFImageEditorController::selectRow(QTableView& list, int row)
{
    editor::selectRowOfList(list, row);
    if (const QAbstractItemModel* rows = list.model(); rows && !list.isRowHidden(row))
        list.scrollTo(rows->index(row, CatalogueModel::Title));
}

void CIFImageEditorController::tableViewSelectionDidChange(QTableView& list)
{
    const int row = selectedRow(list);
    if (row < 0 || _isChoosingRow || !_CIFPlugInInstance)
        return;
    const std::string identifier = list.model()
                                       ->index(row, CatalogueModel::Title)
                                       .data(CatalogueModel::IdentifierRole)
                                       .toString()
                                       .toStdString();
    const std::string first = firstEntryOfGroup(*_CIFPlugInInstance, identifier);
    _CIFGroupName = first.empty() ? std::string() : identifier;
    if (first.empty())
        selectFilterWithIdentifier(identifier);
    else
        selectFilterWithIdentifierGroupIdentifier(first, identifier);
}

void CIFImageEditorController::selectFilterWithIdentifier(const std::string& identifier)
{
    selectFilterWithIdentifierGroupIdentifier(identifier, {});
}

void CIFImageEditorController::selectFilterWithIdentifierGroupIdentifier(
    const std::string& identifier, const std::string& group)
{
    if (!group.empty())
        _CIFGroupName = group;
    if (identifier.empty() || !_CIFPlugInInstance) {
        updateFilterControlsWithKeysAttrDesc({}, nullptr, nullptr);
        updateGLIFControlsWithKeysAttrDesc({}, nullptr, nullptr);
    } else {
        endChange();
        const auto keys = _CIFPlugInInstance->CIFQueryInputKeysForFilter(identifier);
        const DictionaryRef description =
            _CIFPlugInInstance->CIFQueryAttributesForFilter(identifier);
        _CIFFilterName = identifier;
        const QString tab = selectedTab();
        if (tab == kFilters) {
            updateFilterControlsWithKeysAttrDesc(identifier, keys ? &*keys : nullptr, description);
        } else if (tab == kGenerators) {
            // While a step is being undone the stack is in use, and the step may lead back here.
            if (undoStack() && !_isRestoring)
                undoStack()->clear();
            _CIFOldFilterName.reset();
            _CIFOldAttributes.reset();
            updateUndoRedoButtons();
            showGeneratorPage(identifier);
            updateGLIFControlsWithKeysAttrDesc(identifier, keys ? &*keys : nullptr, description);
        } else {
            updateFilterControlsWithKeysAttrDesc({}, nullptr, nullptr);
            updateGLIFControlsWithKeysAttrDesc({}, nullptr, nullptr);
        }
        _knownState = parameterState();
        applyCurrentFilter();
        updateReturnKey();
    }
    if (_window && _window->isVisible() && !_window->isActiveWindow())
        _window->activateWindow();
}

void CIFImageEditorController::chooseEntry(const std::string& identifier)
{
    const QString tab = plugin::isGeneratorName(identifier) ? kGenerators : kFilters;
    selectTab(tab);
    QTableView* list = listOfTab(tab);
    if (!list || !modelOfList(list))
        return;
    const auto rowOf = [&](const std::string& id) {
        return modelOfList(list)->rowOfIdentifier(fromUtf8(id));
    };
    if (const int row = rowOf(identifier); row >= 0) {
        if (selectedRow(*list) != row)
            selectRow(*list, row);
        else if (_CIFFilterName != identifier)
            tableViewSelectionDidChange(*list);
        return;
    }
    const std::string group = groupOfEntry(identifier);
    const int row = group.empty() ? -1 : rowOf(group);
    if (row < 0)
        return;
    _isChoosingRow = true;
    selectRow(*list, row);
    _isChoosingRow = false;
    if (_CIFFilterName != identifier)
        selectFilterWithIdentifierGroupIdentifier(identifier, group);
}

std::string CIFImageEditorController::groupOfEntry(const std::string& identifier) const
{
    // Of its own catalogue, whichever list is shown.
    if (!descriptorOf(identifier))
        return {};
    for (const DictionaryRef& group :
         plugin::allDescriptors(_bothCatalogues->currCategoriesListDesc()))
        if (const auto members = (*group)["DESC_LIST"].array())
            for (const foundation::Value& member : *members)
                if (const DictionaryRef entry = member.dictionary();
                    entry && entry->stringValue("CIFFilterIdentifier") == identifier)
                    return group->stringValue("CIFFilterIdentifier");
    return {};
}

QString CIFImageEditorController::selectedTab() const
{
    const QStackedWidget* tabs = _outlets._filtersTabView;
    return tabs && tabs->currentWidget() ? tabs->currentWidget()->objectName() : QString();
}

void CIFImageEditorController::selectTab(const QString& identifier)
{
    QStackedWidget* tabs = _outlets._filtersTabView;
    QWidget* page = tabs ? editor::pageOf(*tabs, identifier) : nullptr;
    // The tab that is shown already has only its segment to keep.
    if (!page || page == tabs->currentWidget()) {
        if (page)
            showListOfTab(identifier);
        return;
    }
    tabViewWillSelectTabViewItem(*tabs, identifier);
    tabs->setCurrentWidget(page);
    tabViewDidSelectTabViewItem(*tabs, identifier);
}

void CIFImageEditorController::tabViewWillSelectTabViewItem(QStackedWidget& tabView,
                                                            const QString& identifier)
{
    if (&tabView == _outlets._GLIFColorControlsTabView) {
        const bool isScheme = identifier == QLatin1String("color scheme");
        _useBackColorButton =
            isScheme ? _outlets._useBackColorButton1 : _outlets._useBackColorButton2;
        _backColorWell = isScheme ? _outlets._backColorWell1 : _outlets._backColorWell2;
        return;
    }
    if (&tabView != _outlets._filtersTabView)
        return;
    endChange();
    if (_CIFPlugInInstance)
        _CIFPlugInInstance->CIFSetEffectsSet(effectsSetOfTab(identifier));
    showListOfTab(identifier);
    updateControls();
    applyCurrentFilter();
}

void CIFImageEditorController::tabViewDidSelectTabViewItem(QStackedWidget& tabView,
                                                           const QString& identifier)
{
    QTableView* list = listOfTab(identifier);
    if (&tabView != _outlets._filtersTabView || !list || !_CIFPlugInInstance)
        return;
    const bool isGenerators = identifier == kGenerators;
    if (isGenerators && selectedRow(*list) < 1)
        selectRow(*list, 0);
    _editMode = 1;
    if (const int row = selectedRow(*list); row >= 0) {
        std::string entry = identifierOfRow(row).toStdString();
        _CIFGroupName.clear();
        // A group stands for the entry that was last chosen in it.
        if (const std::string first = firstEntryOfGroup(*_CIFPlugInInstance, entry);
            !first.empty()) {
            _CIFGroupName = std::exchange(entry, first);
            if (const auto last = _entryOfGroup.find(_CIFGroupName); last != _entryOfGroup.end())
                entry = last->second;
        }
        _CIFFilterName = entry;
        const auto keys = _CIFPlugInInstance->CIFQueryInputKeysForFilter(entry);
        const DictionaryRef description = _CIFPlugInInstance->CIFQueryAttributesForFilter(entry);
        if (isGenerators)
            updateGLIFControlsWithKeysAttrDesc(entry, keys ? &*keys : nullptr, description);
        else
            updateFilterControlsWithKeysAttrDesc(entry, keys ? &*keys : nullptr, description);
    }
    _knownState = parameterState();
    updateReturnKey();
    applyCurrentFilter();
    if (CIFImageEditorView* view = pictureView())
        view->adobtPositionToCenter();
}

void CIFImageEditorController::showGeneratorPage(const std::string& identifier)
{
    if (QStackedWidget* pages = _outlets._GLIFControlsTabView) {
        QWidget* page = editor::pageOf(*pages, fromUtf8(identifier));
        if (!page)
            page = editor::pageOf(*pages, QStringLiteral("dump"));
        if (page)
            pages->setCurrentWidget(page);
    }
    const DictionaryRef descriptor = _CIFPlugInInstance->CIFDescriptorForFilterName(identifier);
    const bool isGradient = descriptor && descriptor->intValue("CIFTag", 0) == 1;
    selectColorPage(isGradient ? QStringLiteral("color gradient") : QStringLiteral("color scheme"));
}

void CIFImageEditorController::selectColorPage(const QString& identifier)
{
    QStackedWidget* pages = _outlets._GLIFColorControlsTabView;
    QWidget* page = pages ? editor::pageOf(*pages, identifier) : nullptr;
    if (!page)
        return;
    tabViewWillSelectTabViewItem(*pages, identifier);
    pages->setCurrentWidget(page);
    tabViewDidSelectTabViewItem(*pages, identifier);
}

void CIFImageEditorController::propertiesTabChange(QAction* sender)
{
    const std::string identifier = sender->data().toString().toStdString();
    if (const CatalogueModel* model = _tableModel; // its items are filters
        model &&
        (model->rowOfIdentifier(fromUtf8(identifier)) >= 0 || !groupOfEntry(identifier).empty())) {
        chooseEntry(identifier);
        return;
    }
    _CIFFilterName = identifier;
    if (!_CIFPlugInInstance)
        return;
    const auto keys = _CIFPlugInInstance->CIFQueryInputKeysForFilter(identifier);
    updateFilterControlsWithKeysAttrDesc(
        identifier, keys ? &*keys : nullptr,
        _CIFPlugInInstance->CIFQueryAttributesForFilter(identifier));
}

// Return accepts while the user only selects; otherwise it belongs to the controls.
void CIFImageEditorController::updateReturnKey()
{
    const bool accepts = _editMode == 0;
    if (_acceptShortcut)
        _acceptShortcut->setEnabled(accepts);
    if (auto* button = qobject_cast<QPushButton*>(_outlets._buttonSet))
        button->setDefault(accepts);
}

void CIFImageEditorController::filterRows(QTableView& list, const CatalogueModel& model)
{
    const QStringList words =
        editor::searchWords(_outlets._searchField ? _outlets._searchField->text() : QString());
    const auto isWanted = favouritesFilter();
    int category = -1;
    bool categoryHasHits = false;
    const auto finishCategory = [&] {
        if (category >= 0)
            list.setRowHidden(category, !categoryHasHits);
    };
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row, CatalogueModel::Title);
        if (index.data(CatalogueModel::SeparatorRole).toBool()) {
            finishCategory();
            category = row;
            categoryHasHits = false;
            continue;
        }
        const bool isHit =
            editor::hasWords(index.data(CatalogueModel::SearchRole).toString(), words) &&
            isWanted(index.data(CatalogueModel::IdentifierRole).toString().toStdString());
        list.setRowHidden(row, !isHit);
        categoryHasHits |= isHit;
    }
    finishCategory();
}

void CIFImageEditorController::searchFieldDidChange()
{
    if (_outlets._tableView && _tableModel)
        filterRows(*_outlets._tableView, *_tableModel);
    if (_outlets._GLIFTableView && _GLIFTableModel)
        filterRows(*_outlets._GLIFTableView, *_GLIFTableModel);
    if (QTableView* list = listOfTab(selectedTab()))
        if (const int row = selectedRow(*list); row >= 0 && !list->isRowHidden(row))
            list->scrollTo(list->model()->index(row, CatalogueModel::Title));
}

int CIFImageEditorController::firstHit() const
{
    const QTableView* list = listOfTab(selectedTab());
    const CatalogueModel* model = list ? modelOfList(list) : nullptr;
    for (int row = 0; model && row < model->rowCount(); ++row)
        if (!list->isRowHidden(row) &&
            model->flags(model->index(row, 0)).testFlag(Qt::ItemIsSelectable))
            return row;
    return -1;
}

void CIFImageEditorController::chooseFirstHit()
{
    const int row = firstHit();
    if (row < 0)
        return;
    const std::string identifier = identifierOfRow(row).toStdString();
    const QStringList words =
        editor::searchWords(_outlets._searchField ? _outlets._searchField->text() : QString());
    // In a group it is the entry that was asked for.
    if (const auto members = _CIFPlugInInstance->CIFFiltersDescriptorForGroup(identifier))
        for (const foundation::Value& member : *members)
            if (const DictionaryRef entry = member.dictionary()) {
                const std::string name = entry->stringValue("CIFFilterName");
                const QString both = fromUtf8(name) + u' ' + editor::localizedString(name);
                if (editor::hasWords(editor::folded(both), words)) {
                    chooseEntry(entry->stringValue("CIFFilterIdentifier"));
                    return;
                }
            }
    chooseEntry(identifier);
}

bool CIFImageEditorController::searchKey(QEvent& event)
{
    if (event.type() != QEvent::KeyPress && event.type() != QEvent::ShortcutOverride)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(event);
    QLineEdit& field = *_outlets._searchField;
    const bool isReturn = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
    const bool isEscape = key.key() == Qt::Key_Escape && !field.text().isEmpty();
    if (!isReturn && !isEscape && key.key() != Qt::Key_Down)
        return false;
    // Before the window's shortcuts.
    event.accept();
    if (event.type() == QEvent::ShortcutOverride)
        return true;
    if (isEscape) {
        field.clear();
    } else if (isReturn) {
        chooseFirstHit();
    } else if (QTableView* list = listOfTab(selectedTab())) {
        list->setFocus(Qt::TabFocusReason);
        const int row = selectedRow(*list);
        if (row < 0 || list->isRowHidden(row))
            chooseFirstHit();
    }
    return true;
}
