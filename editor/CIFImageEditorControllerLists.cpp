// The catalogue lists, what is chosen in them, and the tabs.
#include "editor/CIFImageEditorController.h"

#include "editor/Forms.h"
#include "plugin/CIFMain.h"

#include <QAction>

using foundation::DictionaryRef;

namespace {

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

void CIFImageEditorController::propertiesTabChange(QAction* sender)
{
    _CIFFilterName = sender->data().toString().toStdString();
}

