#include "editor/BusyIndicator.h"

#include "editor/CIFImageEditorController.h"
#include "editor/Forms.h"

#include <QAbstractButton>
#include <QLabel>
#include <QProgressBar>

#include <utility>

namespace editor {

BusyIndicator::BusyIndicator(CIFImageEditorController& controller, QObject* parent)
    : QObject(parent), _controller(controller), _parts(controller.outlets())
{
    _patience.setSingleShot(true);
    _patience.setInterval(kPatience);
    connect(&_patience, &QTimer::timeout, this, [this] { show(true); });
    connect(&controller.runner(), &EffectRunner::busyDidChange, this,
            &BusyIndicator::busyDidChange);
    connect(&controller.runner(), &EffectRunner::progressDidChange, this,
            &BusyIndicator::progressDidChange);
    if (_parts._stopButton)
        connect(_parts._stopButton, &QAbstractButton::clicked, this, &BusyIndicator::stop);
    show(false);
}

void BusyIndicator::busyDidChange(bool busy)
{
    if (!busy) {
        _patience.stop();
        show(false);
    } else if (!_isShown && !_patience.isActive()) {
        // Newer values do not begin the wait anew.
        progressDidChange(-1);
        _patience.start();
    }
}

void BusyIndicator::progressDidChange(double fraction)
{
    if (!_parts._progressBar)
        return;
    // No range is the sign for "under way, nobody knows how far".
    _parts._progressBar->setRange(0, fraction < 0 ? 0 : 1000);
    if (fraction >= 0)
        _parts._progressBar->setValue(static_cast<int>(fraction * 1000));
}

void BusyIndicator::show(bool shown)
{
    const bool changes = std::exchange(_isShown, shown) != shown;
    refresh();
    if (changes)
        Q_EMIT isShownDidChange(shown);
}

void BusyIndicator::refresh()
{
    // Who waits for the window to close sees at once why it does not.
    const bool isBusy = _isShown || _controller.isHeld();
    for (QWidget* part : std::initializer_list<QWidget*>{_parts._progressBar, _parts._stopButton})
        if (part)
            part->setVisible(isBusy);
    const bool says = _parts._statusLabel && !_parts._statusLabel->text().isEmpty();
    if (_parts._busyView)
        _parts._busyView->setVisible(isBusy || says);
}

void BusyIndicator::stop()
{
    if (!_controller.runner().isBusy())
        return;
    _controller.stopResult();
    _controller.showStatus(localizedString("Stopped: the last change is not shown"));
}

void BusyIndicator::effectDidChange()
{
    if (_parts._statusLabel && !_parts._statusLabel->text().isEmpty())
        _controller.showStatus({});
}

} // namespace editor
