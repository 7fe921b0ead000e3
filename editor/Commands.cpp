#include "editor/Commands.h"

#include "editor/BusyIndicator.h"
#include "editor/CIFImageEditorController.h"
#include "editor/CIFImageEditorView.h"
#include "editor/DecimalControl.h"
#include "editor/Forms.h"
#include "editor/PictureDrop.h"
#include "editor/Preferences.h"
#include "editor/ShortcutList.h"
#include "plugin/CIFMain.h"
#include "plugin/CommandLineText.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace editor {

namespace {

// Held down, it shows the original.
constexpr Qt::Key kCompareKey = Qt::Key_F8;
// One step of zooming by menu or key.
constexpr double kZoomStep = 1.25;

QString fromUtf8(const std::string& text)
{
    return QString::fromStdString(text);
}

// An ampersand marks a shortcut in the texts of menus.
QString itemText(const QString& name)
{
    return QString(name).replace(QLatin1Char('&'), QLatin1String("&&"));
}

QString withoutMark(const QString& text)
{
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&') && i + 1 < text.size())
            ++i;
        plain += text[i];
    }
    while (plain.endsWith(QLatin1Char('.')) || plain.endsWith(QChar(0x2026)))
        plain.chop(1);
    return plain;
}

QList<QKeySequence> keysOf(QKeySequence::StandardKey key, QList<QKeySequence> besides = {})
{
    QList<QKeySequence> keys = QKeySequence::keyBindings(key);
    for (const QKeySequence& other : besides)
        if (!keys.contains(other))
            keys.append(other);
    return keys;
}

QKeySequence key(QKeyCombination combination)
{
    return {combination};
}

QString tipWithKey(QString tip, const QAction& action)
{
    const QKeySequence first = action.shortcut();
    return first.isEmpty()
               ? tip
               : tip + QStringLiteral(" (%1)").arg(first.toString(QKeySequence::NativeText));
}

QString lastEntryKey(const std::string& identifier)
{
    return plugin::isGeneratorName(identifier) ? QStringLiteral("LastEntry/generators")
                                               : QStringLiteral("LastEntry/filters");
}

} // namespace

Commands::Commands(CIFImageEditorController& controller, QMainWindow& window)
    : QObject(&window), _controller(controller), _window(window),
      _busy(new BusyIndicator(controller, this))
{
    _presetsMenu = new QMenu(localizedString("&Presets"), &_window);
    _presetsMenu->setObjectName(QStringLiteral("presetsMenu"));
    connect(_presetsMenu, &QMenu::aboutToShow, this, &Commands::fillPresetsMenu);
    _favouritesMenu = new QMenu(localizedString("Fa&vorites"), &_window);
    _favouritesMenu->setObjectName(QStringLiteral("favouritesMenu"));
    connect(_favouritesMenu, &QMenu::aboutToShow, this, &Commands::fillFavouritesMenu);
    makeEditMenu();
    makeViewMenu();
    makeEffectMenu();
    makeHelpMenu();
    connectButtons();
    connectSeedField();
    new PictureDrop(controller, this);

    QUndoStack& steps = controller.pictureView()->undoManager();
    connect(&steps, &QUndoStack::indexChanged, this, &Commands::update);
    connect(&steps, &QUndoStack::canUndoChanged, this, &Commands::update);
    connect(&steps, &QUndoStack::canRedoChanged, this, &Commands::update);
    connect(&controller, &CIFImageEditorController::effectDidChange, this, [this] {
        _busy->effectDidChange();
        update();
    });
    connect(&controller, &CIFImageEditorController::statusDidChange, _busy,
            &BusyIndicator::refresh);
    connect(_busy, &BusyIndicator::isShownDidChange, this, &Commands::update);
    connect(&controller.runner(), &EffectRunner::busyDidChange, this, &Commands::update);
    window.installEventFilter(this);
    controller.initRandomSeedWithValue(Preferences().value("Seed", 0).toUInt());
    update();
}

Commands::~Commands()
{
    if (_watchesKeys)
        qApp->removeEventFilter(this);
}

QAction* Commands::action(const char* name) const
{
    return _window.findChild<QAction*>(QLatin1String(name));
}

QAction* Commands::add(QMenu& menu, const char* name, const QString& text,
                       const QList<QKeySequence>& keys, std::function<void()> command)
{
    QAction* item = menu.addAction(text);
    item->setObjectName(QLatin1String(name));
    item->setShortcuts(keys);
    // In one window or another, never in the host's.
    item->setShortcutContext(Qt::WindowShortcut);
    connect(item, &QAction::triggered, this, [this, command = std::move(command)] {
        endTyping();
        command();
    });
    // Also while the menu bar is hidden.
    _window.addAction(item);
    return item;
}

void Commands::makeEditMenu()
{
    QMenu* menu = _window.menuBar()->addMenu(localizedString("&Edit"));
    add(*menu, "undo", localizedString("&Undo"), keysOf(QKeySequence::Undo),
        [this] { _controller.undoButton(); });
    add(*menu, "redo", localizedString("&Redo"),
        keysOf(QKeySequence::Redo, {key(Qt::CTRL | Qt::Key_Y)}),
        [this] { _controller.redoButton(); });
    menu->addSeparator();
    add(*menu, "reset", localizedString("Rese&t All Values"), {key(Qt::CTRL | Qt::Key_R)},
        [this] { _controller.resetEntry(); });
    menu->addSeparator();
    add(*menu, "copyRecipe", localizedString("&Copy Recipe"),
        {key(Qt::CTRL | Qt::SHIFT | Qt::Key_C)}, [this] { copyRecipe(); });
    add(*menu, "pasteRecipe", localizedString("&Paste Recipe"),
        {key(Qt::CTRL | Qt::SHIFT | Qt::Key_V)}, [this] { pasteRecipe(); });
    add(*menu, "copyCommandLine", localizedString("Copy as Command &Line"),
        {key(Qt::CTRL | Qt::SHIFT | Qt::Key_L)}, [this] { copyCommandLine(); });
    menu->addSeparator();
    add(*menu, "search", localizedString("&Search"), keysOf(QKeySequence::Find), [this] {
        if (QLineEdit* field = _controller.outlets()._searchField) {
            field->setFocus(Qt::ShortcutFocusReason);
            field->selectAll();
        }
    });
}

void Commands::makeViewMenu()
{
    _controller.createToolbar();
    QMenu* menu = _controller.createViewMenu(*_window.menuBar());
    const QList<QAction*> own = menu->actions();
    add(*menu, "zoomIn", localizedString("Zoom &In"),
        keysOf(QKeySequence::ZoomIn, {key(Qt::CTRL | Qt::Key_Equal)}),
        [this] { zoomBy(kZoomStep); });
    add(*menu, "zoomOut", localizedString("Zoom &Out"), keysOf(QKeySequence::ZoomOut),
        [this] { zoomBy(1 / kZoomStep); });
    add(*menu, "fit", localizedString("&Fit Picture"), {key(Qt::CTRL | Qt::Key_0)},
        [this] { _controller.fitScaleToPicture(); });
    add(*menu, "actualSize", localizedString("&Actual Size"), {key(Qt::CTRL | Qt::Key_1)},
        [this] { zoomTo(1); });
    menu->addSeparator();
    add(*menu, "preview", localizedString("&Preview"), {key(Qt::CTRL | Qt::Key_P)}, [this] {
        _controller.setPreviewOn(action("preview")->isChecked());
        showOriginal();
    })->setCheckable(true);
    add(*menu, "split", localizedString("&Split Before and After"), {key(Qt::CTRL | Qt::Key_B)},
        [this] {
            const bool on = action("split")->isChecked();
            _controller.pictureView()->setSplit(on ? std::optional(0.5) : std::nullopt);
            update();
        })
        ->setCheckable(true);
    add(*menu, "showOriginal", localizedString("Show Ori&ginal"), {key(kCompareKey)}, [this] {
        showOriginal();
    })->setCheckable(true);
    menu->addSeparator();
    add(*menu, "filters", localizedString("Fi&lters"), {key(Qt::ALT | Qt::Key_1)},
        [this] { _controller.selectTab(QStringLiteral("filters")); });
    add(*menu, "generators", localizedString("G&enerators"), {key(Qt::ALT | Qt::Key_2)},
        [this] { _controller.selectTab(QStringLiteral("generators")); });
    menu->addSeparator();
    for (QAction* item : own) {
        menu->removeAction(item);
        menu->addAction(item);
    }
    action("preview")->setChecked(_controller.isPreviewOn());
}

void Commands::makeEffectMenu()
{
    QMenu* menu = _window.menuBar()->addMenu(localizedString("E&ffect"));
    add(*menu, "apply", localizedString("&Apply"), {key(Qt::CTRL | Qt::Key_Return)},
        [this] { _controller.applyButton(); });
    add(*menu, "generate", localizedString("&Generate"), {key(Qt::CTRL | Qt::Key_G)},
        [this] { _controller.generateButton(); });
    add(*menu, "stop", localizedString("&Stop"), {key(Qt::Key_Escape)}, [this] {
        _busy->stop();
    })->setProperty("tag", 0); // stays while the window waits for a result to close with
    menu->addSeparator();
    add(*menu, "imageSize", localizedString("&Image Size..."),
        {key(Qt::CTRL | Qt::ALT | Qt::Key_I)}, [this] { _controller.changeGeneratorImageSize(); });
    menu->addSeparator();
    add(*menu, "favourite", localizedString("&Favorite"), {key(Qt::CTRL | Qt::Key_D)}, [this] {
        const foundation::Status done =
            _presets.setFavourite(currentEntry(), action("favourite")->isChecked());
        if (!done)
            _controller.showStatus(fromUtf8(done.error()));
        _controller.favouritesDidChange();
        update();
    })->setCheckable(true);
    menu->addMenu(_favouritesMenu);
    add(*menu, "savePreset", localizedString("Sa&ve Preset..."), keysOf(QKeySequence::Save),
        [this] { askForPresetName(); });
    menu->addMenu(_presetsMenu);
}

void Commands::makeHelpMenu()
{
    QMenu* menu = _window.menuBar()->addMenu(localizedString("&Help"));
    add(*menu, "shortcuts", localizedString("&Keyboard Shortcuts"),
        keysOf(QKeySequence::HelpContents), [this] { showShortcuts(); });
}

void Commands::connectButtons()
{
    const EditorOutlets& parts = _controller.outlets();
    const std::pair<QAbstractButton*, const char*> doing[] = {
        {parts._splitButton, "split"},
        {parts._previewButton, "preview"},
        {parts._fitButton, "fit"},
        {parts._actualSizeButton, "actualSize"},
        {parts._favouriteButton, "favourite"},
    };
    for (const auto& [button, name] : doing)
        if (button) {
            connect(button, &QAbstractButton::clicked, action(name), &QAction::trigger);
            button->setToolTip(tipWithKey(button->toolTip(), *action(name)));
        }
    const std::pair<QAbstractButton*, const char*> telling[] = {
        {parts._undoButton, "undo"},      {parts._redoButton, "redo"},
        {parts._applyButton, "apply"},    {parts._generateButton, "generate"},
        {parts._sizeButton, "imageSize"}, {parts._resetButton, "reset"},
        {parts._stopButton, "stop"},      {parts._compareButton, "showOriginal"},
    };
    for (const auto& [button, name] : telling)
        if (button)
            button->setToolTip(tipWithKey(button->toolTip(), *action(name)));
    if (QAbstractButton* button = parts._compareButton) {
        const auto compare = [this](bool compares) {
            _comparesByButton = compares;
            showOriginal();
        };
        connect(button, &QAbstractButton::pressed, this, [=] { compare(true); });
        connect(button, &QAbstractButton::released, this, [=] { compare(false); });
    }
    if (QToolButton* button = parts._presetsButton) {
        button->setMenu(_presetsMenu);
        button->setPopupMode(QToolButton::InstantPopup);
    }
    if (QAbstractButton* button = parts._favouritesButton)
        connect(button, &QAbstractButton::toggled, this,
                [this] { _controller.favouritesDidChange(); });
}

void Commands::connectSeedField()
{
    QLineEdit* field = _controller.outlets()._seedField;
    if (!field)
        return;
    field->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,10}")), field));
    connect(field, &QLineEdit::returnPressed, this, &Commands::takeSeed);
    // What was typed and not confirmed goes.
    connect(field, &QLineEdit::editingFinished, this, &Commands::showSeed);
}

// The keys of a command leave the focus where it is: what was typed there counts as when it leaves.
void Commands::endTyping()
{
    QWidget* focused = QApplication::focusWidget();
    if (auto* field = qobject_cast<NumberField*>(focused))
        field->commit();
    else if (focused && focused == _controller.outlets()._seedField)
        showSeed();
}

void Commands::takeSeed()
{
    QLineEdit* field = _controller.outlets()._seedField;
    bool isNumber = false;
    const qulonglong seed = field->text().toULongLong(&isNumber);
    if (!isNumber || seed > 0xffff'ffff) {
        QApplication::beep();
        _controller.showStatus(localizedString("A seed is a whole number from 0 to 4294967295"));
        return;
    }
    _controller.showStatus({});
    field->setModified(false);
    if (static_cast<std::uint32_t>(seed) != _controller.randomSeed())
        _controller.generateWithSeed(static_cast<std::uint32_t>(seed));
    showSeed();
}

void Commands::showSeed()
{
    QLineEdit* field = _controller.outlets()._seedField;
    const QString seed = QString::number(_controller.randomSeed());
    if (field && field->text() != seed)
        field->setText(seed);
}

std::string Commands::currentEntry() const
{
    return _controller.filterName();
}

void Commands::update()
{
    const EditorOutlets& parts = _controller.outlets();
    const CIFImageEditorView* view = _controller.pictureView();
    if (!view)
        return;
    _busy->refresh();
    const std::string entry = currentEntry();
    const bool isEntry = !entry.empty();
    const bool isApplied = isEntry && _controller.editMode() != 0;
    const bool isGenerator = plugin::isGeneratorName(entry);
    const bool isHeld = _controller.isHeld();
    const auto enable = [&](const char* name, bool on) { action(name)->setEnabled(on && !isHeld); };
    const QUndoStack& steps = _controller.pictureView()->undoManager();
    enable("undo", steps.canUndo());
    enable("redo", steps.canRedo());
    const auto named = [](const QString& text, const QString& step) {
        return step.isEmpty() ? text : text + QLatin1Char(' ') + itemText(step);
    };
    action("undo")->setText(named(localizedString("&Undo"), steps.undoText()));
    action("redo")->setText(named(localizedString("&Redo"), steps.redoText()));
    for (const char* name : {"reset", "savePreset", "apply"})
        enable(name, isApplied);
    enable("copyRecipe", isApplied || !_controller.currentRecipe().empty());
    enable("generate", isGenerator);
    enable("favourite", isEntry);
    // One that waits to close can be stopped, too.
    action("stop")->setEnabled(_controller.runner().isBusy());

    if (parts._entryTitle)
        parts._entryTitle->setText(isEntry ? nameOf(entry) : QString());
    const bool isFavourite = isEntry && _presets.isFavourite(entry);
    action("favourite")->setChecked(isFavourite);
    action("split")->setChecked(view->split().has_value());
    action("preview")->setChecked(_controller.isPreviewOn());
    const std::pair<QAbstractButton*, const char*> shown[] = {
        {parts._favouriteButton, "favourite"},
        {parts._splitButton, "split"},
        {parts._previewButton, "preview"},
    };
    for (const auto& [button, name] : shown)
        if (button)
            button->setChecked(action(name)->isChecked());
    if (parts._favouriteButton) {
        parts._favouriteButton->setProperty("glyph", isFavourite ? QStringLiteral("starred")
                                                                 : QStringLiteral("star"));
        parts._favouriteButton->setEnabled(isEntry && !isHeld);
    }
    if (parts._previewButton)
        parts._previewButton->setProperty(
            "glyph", _controller.isPreviewOn() ? QStringLiteral("eye") : QStringLiteral("eye off"));
    const QLineEdit* field = parts._seedField;
    if (field && !(field->hasFocus() && field->isModified()))
        showSeed();
}

void Commands::showOriginal()
{
    const bool isChosen = action("showOriginal")->isChecked();
    if (CIFImageEditorView* view = _controller.pictureView())
        view->setShowsOriginal(_comparesByButton || _comparesByKey || isChosen ||
                               !_controller.isPreviewOn());
    update();
}

void Commands::zoomBy(double factor)
{
    if (CIFImageEditorView* view = _controller.pictureView())
        zoomTo(static_cast<float>(double(view->getScaleFactor()) * factor));
}

void Commands::zoomTo(float scale)
{
    if (CIFImageEditorView* view = _controller.pictureView()) {
        view->setScaleFactor(scale);
        _controller.scrollWheelDidChange();
    }
}

QString Commands::nameOf(const std::string& identifier) const
{
    return _controller.nameOfEntry(identifier);
}

void Commands::copyRecipe()
{
    const plugin::Recipe recipe = _controller.currentRecipe();
    if (recipe.empty())
        return;
    QGuiApplication::clipboard()->setText(fromUtf8(plugin::recipeText(recipe)));
    _controller.showStatus(localizedString("The recipe is on the clipboard"));
}

void Commands::pasteRecipe()
{
    const std::string text = QGuiApplication::clipboard()->text().toStdString();
    const foundation::Result<plugin::Recipe> recipe = plugin::parseRecipe(text);
    const foundation::Status done =
        recipe ? _controller.takeRecipe(*recipe) : foundation::Error{recipe.error()};
    _controller.showStatus(
        done ? QString()
             : localizedString("This is no recipe for the window: %1").arg(fromUtf8(done.error())));
    if (!done)
        QApplication::beep();
}

void Commands::copyCommandLine()
{
    // A step that gives no picture is none.
    _controller.whenResultIsThere([this] {
        const std::string line =
            plugin::commandLine(_controller.record(), "input.png", "output.png");
        if (line.empty())
            return _controller.showStatus(
                localizedString("No command begins with an empty picture"));
        QGuiApplication::clipboard()->setText(fromUtf8(line));
        _controller.showStatus(localizedString("The command line is on the clipboard"));
    });
}

void Commands::usePreset(const plugin::RecipeStep& step)
{
    const foundation::Status done = _controller.takeStep(step);
    _controller.showStatus(done ? QString() : fromUtf8(done.error()));
}

void Commands::savePreset(const QString& name)
{
    const auto step = _controller.currentStep();
    if (!step)
        return;
    const foundation::Status done = _presets.save(name.trimmed().toStdString(), *step);
    _controller.showStatus(done ? localizedString("Preset saved") : fromUtf8(done.error()));
}

void Commands::askForPresetName()
{
    if (!_controller.currentStep())
        return;
    auto* panel = new QInputDialog(&_window);
    panel->setObjectName(QStringLiteral("presetName"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowTitle(localizedString("Save Preset"));
    panel->setLabelText(localizedString("Name of the preset:"));
    panel->setOkButtonText(localizedString("OK"));
    panel->setCancelButtonText(localizedString("Cancel"));
    connect(panel, &QInputDialog::textValueSelected, this, [this](const QString& typed) {
        const QString name = typed.trimmed();
        if (!_presets.contains(currentEntry(), name.toStdString())) {
            savePreset(name);
            return;
        }
        auto* question = new QMessageBox(QMessageBox::Question, localizedString("Save Preset"),
                                         localizedString("Replace the preset “%1”?").arg(name),
                                         QMessageBox::NoButton, &_window);
        question->setObjectName(QStringLiteral("replacePreset"));
        question->setAttribute(Qt::WA_DeleteOnClose);
        const QAbstractButton* replace =
            question->addButton(localizedString("Replace"), QMessageBox::AcceptRole);
        question->addButton(localizedString("Cancel"), QMessageBox::RejectRole);
        connect(question, &QMessageBox::buttonClicked, this,
                [this, name, replace](const QAbstractButton* button) {
                    if (button == replace)
                        savePreset(name);
                });
        question->open();
    });
    panel->open();
}

void Commands::fillPresetsMenu()
{
    qDeleteAll(_presetsMenu->findChildren<QMenu*>());
    _presetsMenu->clear();
    const std::string entry = currentEntry();
    const std::vector<Preset> presets =
        _controller.currentStep() ? _presets.ofEntry(entry) : std::vector<Preset>();
    for (const Preset& preset : presets)
        connect(_presetsMenu->addAction(itemText(fromUtf8(preset.name))), &QAction::triggered, this,
                [this, step = preset.step] { usePreset(step); });
    if (presets.empty())
        _presetsMenu->addAction(localizedString("No Presets"))->setEnabled(false);
    _presetsMenu->addSeparator();
    _presetsMenu->addAction(action("savePreset"));
    QMenu* removal = _presetsMenu->addMenu(localizedString("&Delete Preset"));
    removal->setEnabled(!presets.empty());
    for (const Preset& preset : presets)
        connect(removal->addAction(itemText(fromUtf8(preset.name))), &QAction::triggered, this,
                [this, entry, name = preset.name] {
                    const foundation::Status done = _presets.remove(entry, name);
                    _controller.showStatus(done ? localizedString("Preset deleted")
                                                : fromUtf8(done.error()));
                });
    _presetsMenu->addSeparator();
    for (const char* name : {"copyRecipe", "pasteRecipe", "copyCommandLine"})
        _presetsMenu->addAction(action(name));
}

void Commands::fillFavouritesMenu()
{
    _favouritesMenu->clear();
    for (const std::string& identifier : _presets.favourites()) {
        const QString name = nameOf(identifier);
        // Of a later version, or mistyped by hand.
        if (name.isEmpty())
            continue;
        connect(_favouritesMenu->addAction(itemText(name)), &QAction::triggered, this,
                [this, identifier] { _controller.chooseEntry(identifier); });
    }
    if (_favouritesMenu->isEmpty())
        _favouritesMenu->addAction(localizedString("No Favorites"))->setEnabled(false);
}

void Commands::restoreEntry(bool hasSelection)
{
    // A new entry would drop the selection that the host has asked for.
    if (hasSelection)
        return;
    const bool generators = _controller.selectedTab() == QLatin1String("generators");
    const std::string last =
        Preferences().value(lastEntryKey(generators ? "GLIF_" : "")).toString().toStdString();
    if (!last.empty() && plugin::isGeneratorName(last) == generators &&
        !_controller.nameOfEntry(last).isEmpty())
        _controller.chooseEntry(last);
}

void Commands::runDidEnd(bool accepted)
{
    _comparesByButton = _comparesByKey = false;
    action("showOriginal")->setChecked(false);
    showOriginal();
    if (QAbstractButton* button = _controller.outlets()._favouritesButton)
        button->setChecked(false);
    Preferences preferences;
    preferences.setValue("Seed", _controller.randomSeed());
    if (const std::string entry = currentEntry(); accepted && !entry.empty())
        preferences.setValue(lastEntryKey(entry), fromUtf8(entry));
}

std::vector<ShortcutLine> Commands::shortcuts() const
{
    std::vector<ShortcutLine> lines;
    for (const QAction* title : _window.menuBar()->actions()) {
        if (!title->menu())
            continue;
        const auto items = title->menu()->actions();
        for (const QAction* item : items) {
            QStringList keys;
            const auto sequences = item->shortcuts();
            for (const QKeySequence& sequence : sequences)
                keys << sequence.toString(QKeySequence::NativeText);
            if (keys.isEmpty())
                continue;
            QString text = withoutMark(item->text());
            if (item->objectName() == QLatin1String("undo"))
                text = withoutMark(localizedString("&Undo"));
            if (item->objectName() == QLatin1String("redo"))
                text = withoutMark(localizedString("&Redo"));
            if (item->objectName() == QLatin1String("showOriginal"))
                text = localizedString("Show the original while the key is held");
            lines.push_back({withoutMark(title->text()), text, keys.join(QStringLiteral(", "))});
        }
    }
    const auto add = [&](const QString& group, const QString& text, const QString& keys) {
        lines.push_back({group, text, keys});
    };
    const QString controls = localizedString("Controls");
    add(controls, localizedString("Change a value by one step"), localizedString("Arrow keys"));
    add(controls, localizedString("Change a value by ten steps"),
        localizedString("Page Up, Page Down"));
    add(controls, localizedString("Back to the value it starts with"),
        localizedString("Double-click the label"));
    add(controls, localizedString("Use the seed that was typed"), localizedString("Return"));
    const QString picture = localizedString("Picture");
    add(picture, localizedString("Move the center, or select"), localizedString("Click or drag"));
    add(picture, localizedString("Zoom"), localizedString("Mouse wheel"));
    add(picture, localizedString("Move the picture"),
        localizedString("Drag with the middle button"));
    add(picture, localizedString("Zoom to the selection and back"), localizedString("Right click"));
    add(picture, localizedString("Move the line between before and after"),
        localizedString("Drag the line"));
    add(picture, localizedString("Use a picture as texture or brush"),
        localizedString("Drop a file on its menu"));
    return lines;
}

void Commands::showShortcuts()
{
    auto* list = _window.findChild<ShortcutList*>();
    if (!list)
        list = new ShortcutList(shortcuts(), &_window);
    list->open();
}

// A field has its own undo for what is being typed. Where there is nothing of that to undo, the
// keys mean the window's.
bool Commands::isUndoOfTyping(QEvent& event) const
{
    auto& pressed = static_cast<QKeyEvent&>(event);
    const bool undo = pressed.matches(QKeySequence::Undo);
    if (!undo && !pressed.matches(QKeySequence::Redo))
        return true;
    QWidget* focused = QApplication::focusWidget();
    auto* field = qobject_cast<QLineEdit*>(focused);
    if (auto* spinBox = qobject_cast<QAbstractSpinBox*>(focused))
        field = spinBox->findChild<QLineEdit*>();
    // What was confirmed is no typing any more.
    return field &&
           (undo ? field->isModified() && field->isUndoAvailable() : field->isRedoAvailable());
}

// True when the event was for comparing.
bool Commands::compareKey(QEvent& event)
{
    auto& pressed = static_cast<QKeyEvent&>(event);
    if (pressed.key() != kCompareKey || pressed.modifiers() != Qt::NoModifier)
        return false;
    if (event.type() == QEvent::ShortcutOverride) {
        // Held, not triggered: the press and the release come as they are.
        event.accept();
        return true;
    }
    if (!pressed.isAutoRepeat()) {
        _comparesByKey = event.type() == QEvent::KeyPress;
        showOriginal();
    }
    return true;
}

bool Commands::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &_window) {
        // Other windows of the host's are none of our business.
        const bool isActive = event->type() == QEvent::WindowActivate;
        if (isActive && !std::exchange(_watchesKeys, true)) {
            qApp->installEventFilter(this);
        } else if (event->type() == QEvent::WindowDeactivate || event->type() == QEvent::Hide) {
            if (std::exchange(_watchesKeys, false))
                qApp->removeEventFilter(this);
            if (std::exchange(_comparesByKey, false))
                showOriginal();
        }
    }
    const bool isKey = event->type() == QEvent::ShortcutOverride ||
                       event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    if (!_watchesKeys || !isKey || QApplication::activeModalWidget() != &_window)
        return QObject::eventFilter(watched, event);
    if (compareKey(*event))
        return true;
    if (event->type() == QEvent::ShortcutOverride && !isUndoOfTyping(*event)) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace editor
