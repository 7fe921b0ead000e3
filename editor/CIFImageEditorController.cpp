// The editor window's life: its form, its modal runs, and what they hand back.
#include "editor/CIFImageEditorController.h"

#include "editor/CCColorSlider.h"
#include "editor/CIFImageEditorView.h"
#include "editor/CIFImageInfoController.h"
#include "editor/ColorWell.h"
#include "editor/Commands.h"
#include "editor/DecimalControl.h"
#include "editor/Forms.h"
#include "editor/PictureScrollView.h"
#include "editor/Preferences.h"
#include "editor/Shared.h"
#include "editor/WindowFrame.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Log.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "plugin/Resizing.h"
#include "plugin/StartingValues.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QEvent>
#include <QEventLoop>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QScreen>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <cmath>
#include <utility>

using foundation::PictureRef;

namespace {

constexpr const char* kSplitterKey = "Splitters/CIFImageEditor";

// The parts "PREFIXnSUFFIX" of the form, n from 1; a form that leaves one out has fewer rows.
template <class Part, class Found>
std::vector<Found*> partsOf(const QWidget& window, const char* prefix, int count,
                            const char* suffix)
{
    std::vector<Found*> parts;
    for (int i = 1; i <= count; ++i)
        if (auto* part = window.findChild<Part*>(QLatin1String(prefix) + QString::number(i) +
                                                 QLatin1String(suffix)))
            parts.push_back(part);
    return parts;
}

// Makes the part all that the page shows, unless the form has put it there.
void putIntoPage(QStackedWidget* tabs, const char* page, QWidget* part)
{
    QWidget* place = tabs ? tabs->findChild<QWidget*>(QLatin1String(page)) : nullptr;
    if (!place || !part || place == part || place->isAncestorOf(part))
        return;
    if (!place->layout())
        (new QVBoxLayout(place))->setContentsMargins(0, 0, 0, 0);
    place->layout()->addWidget(part);
}

// All of the window but what is to be kept.
void collectAround(QWidget& widget, const std::vector<QWidget*>& kept,
                   std::vector<QPointer<QObject>>& around)
{
    for (QObject* child : widget.children()) {
        auto* part = qobject_cast<QWidget*>(child);
        if (!part || part->isWindow() || !part->isEnabled() ||
            std::find(kept.begin(), kept.end(), part) != kept.end())
            continue;
        const bool holdsKept = std::any_of(kept.begin(), kept.end(), [&](const QWidget* one) {
            return one && part->isAncestorOf(one);
        });
        if (holdsKept)
            collectAround(*part, kept, around);
        else
            around.emplace_back(part);
    }
}

void setEnabled(QObject& object, bool enabled)
{
    if (auto* widget = qobject_cast<QWidget*>(&object))
        widget->setEnabled(enabled);
    else if (auto* action = qobject_cast<QAction*>(&object))
        action->setEnabled(enabled);
}

} // namespace

CIFImageEditorController& CIFImageEditorController::sharedImageEditor()
{
    return editor::sharedInstance<CIFImageEditorController>();
}

CIFImageEditorController::CIFImageEditorController()
    : _runner(std::make_unique<editor::EffectRunner>())
{
    connect(_runner.get(), &editor::EffectRunner::resultDidArrive, this,
            &CIFImageEditorController::resultDidArrive);
    connect(_runner.get(), &editor::EffectRunner::partDidArrive, this,
            &CIFImageEditorController::partDidArrive);
    // After the result, if there is one, has been delivered.
    connect(
        _runner.get(), &editor::EffectRunner::busyDidChange, this,
        [this](bool busy) {
            if (!busy)
                runnerDidStop();
        },
        Qt::QueuedConnection);
}

CIFImageEditorController::~CIFImageEditorController()
{
    _runner.reset();
    if (CIFImageEditorView* view = pictureView())
        view->setEditorController(nullptr);
    // What the window says while it goes is about parts that are gone.
    _window.clear();
    delete _loadedWindow;
}

bool CIFImageEditorController::loadWindow()
{
    QWidget* form = editor::loadForm(QStringLiteral("ImageEditor"));
    auto* window = qobject_cast<QMainWindow*>(form);
    const auto outlets = window ? editor::EditorOutlets::of(*window) : editor::EditorOutlets();
    if (!outlets._pictureView || !outlets._scrollView) {
        delete form;
        foundation::log("Failed to load ImageEditor.nib");
        QApplication::beep();
        return false;
    }
    _loadedWindow = window;
    setWindow(window);
    _outlets = outlets;
    // Whoever destroys it, the next run loads it again.
    connect(window, &QObject::destroyed, this, [this] {
        _outlets = {};
        _tableModel = _GLIFTableModel = nullptr;
        stopModalWithCode(0);
    });
    // Closing it is no reason for the host's application to end.
    window->setAttribute(Qt::WA_QuitOnClose, false);
    window->setWindowModality(Qt::ApplicationModal);
    window->installEventFilter(this);
    outlets._scrollView->installEventFilter(this);
    if (const QScreen* screen = window->screen())
        window->resize(window->size().boundedTo(screen->availableSize() * 0.95));
    editor::setFrameAutosaveName(*window, QStringLiteral("CIFImageEditor"));
    if (outlets._splitter)
        outlets._splitter->restoreState(
            editor::Preferences().value(QLatin1String(kSplitterKey)).toByteArray());
    pictureView()->setEditorController(this);
    connectControls();
    awakeFromNib();
    createCommands();
    return true;
}

void CIFImageEditorController::awakeFromNib()
{
    if (std::floor(plugin::toolkitVersion()) < 824)
        return;
    _CIFPlugInInstance = std::make_unique<CIFMain>();
    buildControlSets();
    fillMenus();
    updateFilterControlsWithKeysAttrDesc({}, nullptr, nullptr);
    updateGLIFControlsWithKeysAttrDesc({}, nullptr, nullptr);
    putIntoPage(_outlets._filtersTabView, "filters", _outlets._filterControlsView);
    putIntoPage(_outlets._filtersTabView, "generators", _outlets._GLIFControlsView);
    for (QTextBrowser* field : {_outlets.m_URLField, _outlets.m_URLField2})
        if (field)
            field->setHtml(editor::localizedString("Powered by Lumigrove link"));
    if (QStackedWidget* pages = _outlets._GLIFColorControlsTabView)
        if (auto* page = pages->findChild<QWidget*>(QStringLiteral("color scheme")))
            pages->setCurrentWidget(page);
    _useBackColorButton = _outlets._useBackColorButton1;
    _backColorWell = _outlets._backColorWell1;
    if (_outlets._colorSchemeSlider)
        _outlets._colorSchemeSlider->setKeyColorSelectionMode(true);
    // The lists get their cells with their rows, when their tab is first shown.
    connectParameterControls();
}

void CIFImageEditorController::buildControlSets()
{
    if (!_window)
        return;
    const QWidget& form = *_window;
    using editor::DecimalControl;
    const auto fill = [&](int rows, const char* suffix, Controls& sliders, Controls& fields,
                          Controls& steppers, Labels& labels) {
        sliders = partsOf<editor::ParameterSlider, DecimalControl>(form, "_slider", rows, suffix);
        fields = partsOf<editor::NumberField, DecimalControl>(form, "_textField", rows, suffix);
        steppers = partsOf<editor::Stepper, DecimalControl>(form, "_stepper", rows, suffix);
        labels = partsOf<QLabel, QLabel>(form, "_labelTextField", rows, suffix);
    };
    fill(4, "", _controlsDecimalSlider0, _controlsDecimalTextField0, _controlsDecimalStepper0,
         _controlsLabelTextField0);
    fill(1, "in10", _controlsDecimalSlider10, _controlsDecimalTextField10,
         _controlsDecimalStepper10, _controlsLabelTextField10);
    fill(2, "in20", _controlsDecimalSlider20, _controlsDecimalTextField20,
         _controlsDecimalStepper20, _controlsLabelTextField20);
    fill(3, "in30", _controlsDecimalSlider30, _controlsDecimalTextField30,
         _controlsDecimalStepper30, _controlsLabelTextField30);
    _controlsBooleanCheckBox.clear();
    if (_outlets._checkBox1)
        _controlsBooleanCheckBox.push_back(_outlets._checkBox1);
    _controlsColorWell.clear();
    for (editor::ColorWell* well : {_outlets._colorWell1, _outlets._colorWell2})
        if (well)
            _controlsColorWell.push_back(well);
    _colorsRepObjects.assign(_controlsColorWell.size(), "");
}

void CIFImageEditorController::fillMenu(QComboBox* menu, const std::vector<std::string>& names,
                                        bool isLibrary, bool hasOther)
{
    constexpr int kOtherTag = 100;
    constexpr int kRepresentedObject = Qt::UserRole, kTag = Qt::UserRole + 1;
    if (!menu)
        return;
    menu->clear();
    for (const std::string& name : names) {
        if (isLibrary) {
            menu->addItem(editor::localizedString(name));
            menu->setItemData(menu->count() - 1, QString::fromStdString(name), kRepresentedObject);
        } else {
            menu->addItem(QString::fromStdString(name));
        }
    }
    if (!hasOther)
        return;
    if (!names.empty())
        menu->insertSeparator(menu->count());
    menu->addItem(editor::localizedString("Other..."));
    menu->setItemData(menu->count() - 1, kOtherTag, kTag);
}

void CIFImageEditorController::fillMenus()
{
    using enum plugin::ValueKind;
    const CIFMain& plugIn = *_CIFPlugInInstance;
    fillMenu(_outlets._texturePopUpButton10, plugin::libraryNames(plugIn, GlassTexture), true,
             true);
    fillMenu(_outlets._dabsTypePopUpButton, plugin::libraryNames(plugIn, Brush), false, true);
    fillMenu(_outlets._texturePopUpButton20, plugin::libraryNames(plugIn, ShadingMaterial), true,
             false);
}

void CIFImageEditorController::connectControls()
{
    for (QAbstractButton* button : {_outlets._buttonSet, _outlets._buttonCancel})
        if (button)
            connect(button, &QAbstractButton::clicked, this, [=, this] { onCloseEditor(button); });
    using Operation = void (CIFImageEditorController::*)();
    const std::pair<QAbstractButton*, Operation> buttons[] = {
        {_outlets._applyButton, &CIFImageEditorController::applyButton},
        {_outlets._generateButton, &CIFImageEditorController::generateButton},
        {_outlets._undoButton, &CIFImageEditorController::undoButton},
        {_outlets._redoButton, &CIFImageEditorController::redoButton},
        {_outlets._sizeButton, &CIFImageEditorController::changeGeneratorImageSize},
    };
    for (const auto& [button, operation] : buttons)
        if (button)
            connect(button, &QAbstractButton::clicked, this, operation);
    if (_outlets._scaleSlider)
        connect(_outlets._scaleSlider, &QSlider::valueChanged, this,
                [this](int hundredths) { onScaleSlider(hundredths / 100.0); });
    connect(pictureView(), &CIFImageEditorView::sightDidChange, this,
            &CIFImageEditorController::sightDidChange);
    updateUndoRedoButtons();
}

QMainWindow* CIFImageEditorController::window() const
{
    return _window;
}

void CIFImageEditorController::setWindow(QMainWindow* window)
{
    _window = window;
}

bool CIFImageEditorController::startEditorUseSelectionWithRect(const PictureRef& picture,
                                                               bool useSelection, Rect rect)
{
    return startRun(Filters, picture, useSelection ? &rect : nullptr);
}

bool CIFImageEditorController::startGeneratorWithRect(const PictureRef& picture, Rect rect)
{
    if (picture)
        return startRun(Generators, picture, nullptr);
    if (const auto fits = plugin::fitsMemory(rect.width, rect.height); !fits) {
        foundation::log(fits.error());
        QApplication::beep();
        return false;
    }
    const Size size = {rect.width, rect.height};
    return startRun(Generators, drawing::Picture::blank(size), nullptr, size);
}

bool CIFImageEditorController::startRun(EffectsSet set, const PictureRef& picture,
                                        const Rect* selection, Size newSize)
{
    if (_modalLoop) {
        foundation::log("The image editor is open already");
        return false;
    }
    if (!pictureView() && !loadWindow())
        return false;
    CIFImageEditorView& view = *pictureView();
    const bool filters = set == Filters;
    const Size size = picture ? picture->size() : Size();
    const Point middle = {size.width * 0.5, size.height * 0.5};
    _record = {};
    _record.size = newSize;
    _recordOfRun.reset();
    _selectionOfRun.reset();
    if (filters)
        _CIFFilterName.clear();
    setPictureOfRun(picture);
    _outputImage = nullptr;
    view.setPicture(picture);
    view.updateSize();
    // Before anything asks the view for it.
    view.setPickPoint(middle);
    view.setTouched(false);

    if (filters)
        _filtersAttrData.remove("Crop");
    if (_CIFPlugInInstance)
        _CIFPlugInInstance->CIFSetEffectsSet(set);
    if (_outlets._searchField)
        _outlets._searchField->clear();
    selectTab(filters ? QStringLiteral("filters") : QStringLiteral("generators"));
    if (QTableView* list = filters ? _outlets._tableView : _outlets._GLIFTableView) {
        list->clearSelection();
        editor::selectRowOfList(*list, 0);
    }
    if (_outlets._helpTabView)
        _outlets._helpTabView->setCurrentIndex(filters ? 0 : 1);
    setCenterPoint(middle);
    fitScaleToPicture();
    if (selection)
        view.setSelection(*selection);

    showStatus({});
    _isOpening = true;
    _window->show();
    _window->raise();
    _window->activateWindow();
    // A window that was never shown has had no room to fit into.
    fitScaleToPicture();
    if (filters) {
        updateFilterControlsWithKeysAttrDesc({}, nullptr, nullptr);
        updateControls();
    }
    if (_commands)
        _commands->restoreEntry(selection != nullptr);
    return runModally();
}

bool CIFImageEditorController::runModally()
{
    QEventLoop loop;
    _modalLoop = &loop;
    _modalCode = 0;
    // Ends by itself, with the code of a cancelled run, when the application quits.
    loop.exec();
    _modalLoop = nullptr;
    runDidEnd();
    return _modalCode != 0;
}

void CIFImageEditorController::stopModalWithCode(int code)
{
    if (!_modalLoop)
        return;
    _modalCode = code;
    _modalLoop->quit();
}

// Keeps what the host asks for next, and lets go of everything else.
void CIFImageEditorController::runDidEnd()
{
    _wanted.reset();
    _whenResultIsThere.clear();
    _runner->stop();
    holdWindow(false);
    _isOpening = false;
    _recordOfRun = record();
    if (_window) {
        for (QDialog* sheet : _window->findChildren<QDialog*>())
            if (sheet->isVisible())
                sheet->close();
        _window->hide();
    }
    if (CIFImageEditorView* view = pictureView()) {
        if (view->isSelected())
            _selectionOfRun = view->getSelection();
        view->undoManager().clear();
        view->setCenterHandle(std::nullopt);
        view->setPicture(nullptr);
    }
    _CIFOldFilterName.reset();
    _CIFOldAttributes.reset();
    setPictureOfRun(nullptr);
    if (_outlets._splitter)
        editor::Preferences().setValue(QLatin1String(kSplitterKey),
                                       _outlets._splitter->saveState());
    _isPreviewOn = true;
    if (_commands)
        _commands->runDidEnd(_modalCode != 0);
}

void CIFImageEditorController::onCloseEditor(QObject* sender)
{
    if (!sender || sender->property("tag").toInt() == 0) {
        windowShouldClose();
        return;
    }
    if (_isHeld)
        return;
    holdWindow(_wanted || _stopped);
    whenResultIsThere([this] {
        if (_window)
            _window->hide();
        stopModalWithCode(1);
    });
}

bool CIFImageEditorController::windowShouldClose()
{
    _wanted.reset();
    _stopped.reset();
    _whenResultIsThere.clear();
    _runner->stop();
    if (_window)
        _window->hide();
    stopModalWithCode(0);
    return true;
}

// While a result that was accepted or applied is on its way, only waiting, stopping and cancelling
// are left to do: another entry or value would take its place.
void CIFImageEditorController::holdWindow(bool isHeld)
{
    if (_isHeld == isHeld)
        return;
    _isHeld = isHeld;
    if (_outlets._busyView)
        _outlets._busyView->setVisible(isHeld);
    if (isHeld && _window) {
        _focusBeforeHold = _window->focusWidget();
        collectAround(*_window, {_outlets._buttonCancel, _outlets._busyView, _outlets._stopButton},
                      _held);
        // Like the buttons, an action that gives something up has the tag 0.
        for (QAction* action : _window->findChildren<QAction*>())
            if (action->isEnabled() && action->property("tag") != 0)
                _held.emplace_back(action);
    }
    for (const QPointer<QObject>& object : _held)
        if (object)
            setEnabled(*object, !isHeld);
    if (!isHeld) {
        _held.clear();
        if (_focusBeforeHold && _focusBeforeHold->isEnabled())
            _focusBeforeHold->setFocus();
        _focusBeforeHold.clear();
    }
    if (_commands)
        _commands->update();
}

bool CIFImageEditorController::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _window && event->type() == QEvent::Close && !windowShouldClose()) {
        event->ignore();
        return true;
    }
    // The desktop may give the window another size while it opens.
    if (watched == _window && event->type() == QEvent::WindowActivate)
        _isOpening = false;
    if (_isOpening && watched == _outlets._scrollView && event->type() == QEvent::Resize)
        QMetaObject::invokeMethod(
            this, [this] { fitScaleToPicture(); }, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}

bool CIFImageEditorController::isSelected() const
{
    return pictureView() && pictureView()->isSelected();
}

CIFImageEditorController::Rect CIFImageEditorController::getSelectedRect() const
{
    if (_selectionOfRun)
        return *_selectionOfRun;
    return pictureView() ? pictureView()->getSelection() : Rect();
}

void CIFImageEditorController::setSelectedRect(Rect rect)
{
    if (CIFImageEditorView* view = pictureView())
        view->setSelection(rect);
}

plugin::EditRecord CIFImageEditorController::record() const
{
    if (_recordOfRun)
        return *_recordOfRun;
    plugin::EditRecord record = recordWithCurrentStep();
    if (isSelected())
        record.crop = getSelectedRect();
    return record;
}
