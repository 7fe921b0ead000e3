// The window's commands, and what the controller answers for them.
#include "editor/CIFImageEditorController.h"

#include "editor/Commands.h"
#include "editor/Forms.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"

#include <QAbstractButton>
#include <QLabel>
#include <QMainWindow>
#include <QToolTip>

#include <set>
#include <utility>

void CIFImageEditorController::createCommands()
{
    _bothCatalogues.reset();
    if (_window && pictureView() && _CIFPlugInInstance)
        _commands = new editor::Commands(*this, *_window);
}

editor::Commands* CIFImageEditorController::commands() const
{
    return _commands;
}

QString CIFImageEditorController::nameOfEntry(const std::string& identifier) const
{
    const auto descriptor = descriptorOf(identifier);
    return descriptor ? editor::localizedString(descriptor->stringValue("CIFFilterName"))
                      : QString();
}

std::function<bool(const std::string&)> CIFImageEditorController::favouritesFilter() const
{
    if (!_outlets._favouritesButton || !_outlets._favouritesButton->isChecked())
        return [](const std::string&) { return true; };
    std::set<std::string> shown;
    for (const std::string& identifier : editor::Presets().favourites()) {
        shown.insert(identifier);
        shown.insert(groupOfEntry(identifier));
    }
    return [shown = std::move(shown)](const std::string& identifier) {
        return shown.contains(identifier);
    };
}

void CIFImageEditorController::favouritesDidChange()
{
    searchFieldDidChange();
}

void CIFImageEditorController::showStatus(const QString& text)
{
    QLabel* label = _outlets._statusLabel;
    if (label) {
        label->setText(text);
        label->setToolTip(text);
    }
    Q_EMIT statusDidChange();
    // There is little room for it.
    if (label && label->isVisible() && label->sizeHint().width() > label->width())
        QToolTip::showText(label->mapToGlobal(QPoint(0, -2 * label->height())), text, label);
}

void CIFImageEditorController::setPreviewOn(bool on)
{
    if (_isPreviewOn == on)
        return;
    _isPreviewOn = on;
    if (!on && _wanted) {
        _stopped = std::exchange(_wanted, std::nullopt);
        _runner->stop();
    } else if (on && _stopped) {
        wantResult(*std::exchange(_stopped, std::nullopt));
    }
}
