// What the window can be told to do besides its controls: the menus with their shortcuts and the
// buttons that do the same, the seed, favourites and presets.
#pragma once

#include "editor/Presets.h"

#include <QKeySequence>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <vector>

class CIFImageEditorController;
class QAction;
class QLineEdit;
class QMainWindow;
class QMenu;

namespace editor {

class BusyIndicator;

// A line of the list of shortcuts.
struct ShortcutLine {
    QString group, text, keys;
};

class Commands final : public QObject {
    Q_OBJECT

public:
    // Of a window that has its plug-in object.
    Commands(CIFImageEditorController& controller, QMainWindow& window);
    ~Commands() override;

    // By object name; null when there is none.
    QAction* action(const char* name) const;

    // What can be done, and how that is shown, follows the current entry, seed and undo steps.
    void update();
    // After the start of a run: the entry that was in use when the last one was accepted.
    void restoreEntry(bool hasSelection);
    void runDidEnd(bool accepted);

    // All shortcuts of the menus, what keys do in the controls, and what the mouse does in the
    // picture.
    std::vector<ShortcutLine> shortcuts() const;
    void showShortcuts();

    // Each tells the user what came of it.
    void copyRecipe();
    void pasteRecipe();
    void copyCommandLine();
    void savePreset(const QString& name);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeEditMenu();
    void makeViewMenu();
    void makeEffectMenu();
    void makeHelpMenu();
    void connectButtons();
    void connectSeedField();
    QAction* add(QMenu& menu, const char* name, const QString& text,
                 const QList<QKeySequence>& keys, std::function<void()> command);
    void fillPresetsMenu();
    void fillFavouritesMenu();
    void askForPresetName();
    void usePreset(const plugin::RecipeStep& step);
    void showOriginal();
    void zoomBy(double factor);
    void zoomTo(float scale);
    void endTyping();
    void showSeed();
    void takeSeed();
    bool isUndoOfTyping(QEvent& event) const;
    bool compareKey(QEvent& event);
    QString nameOf(const std::string& identifier) const;
    // The identifier under which an entry is a favourite: a group's members are one by one.
    std::string currentEntry() const;

    CIFImageEditorController& _controller;
    QMainWindow& _window;
    Presets _presets;
    BusyIndicator* _busy = nullptr;
    QMenu* _presetsMenu = nullptr;
    QMenu* _favouritesMenu = nullptr;
    bool _comparesByButton = false, _comparesByKey = false;
    bool _watchesKeys = false;
};

} // namespace editor
