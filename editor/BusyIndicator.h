// Tells that a result is long in coming, and lets the user stop it.
#pragma once

#include "editor/EditorOutlets.h"

#include <QObject>
#include <QTimer>

class CIFImageEditorController;

namespace editor {

class BusyIndicator final : public QObject {
    Q_OBJECT

public:
    // Shown when a result takes longer than this, in milliseconds.
    static constexpr int kPatience = 200;

    BusyIndicator(CIFImageEditorController& controller, QObject* parent);

    // Gives up the result that is being made, and says so.
    void stop();
    // Other values count now: what was said about the former ones goes.
    void effectDidChange();
    // The text of the status, or whether the window waits to close, is another.
    void refresh();

    bool isShown() const { return _isShown; }

Q_SIGNALS:
    void isShownDidChange(bool shown);

private:
    void busyDidChange(bool busy);
    void progressDidChange(double fraction);
    void show(bool shown);

    CIFImageEditorController& _controller;
    EditorOutlets _parts;
    QTimer _patience;
    bool _isShown = false;
};

} // namespace editor
