// The one controller of the editor window. While the window is up it owns the editing run: the base
// picture, the current entry and its parameter values, the preview and the random seed.
//
// Its operations lie in files of their own by subject: the run (CIFImageEditorController.cpp), the
// lists (…Lists.cpp), the parameter controls (…Controls.cpp), toolbar, menus and cursors
// (…Toolbar.cpp), recipes, favourites and presets (…Recipes.cpp), and the window's own commands
// (…Commands.cpp).
//
// Effects are applied on a thread of their own (editor::EffectRunner), the newest values winning:
// applyCurrentFilter returns at once, and the view and outputImage follow when the result is there.
#pragma once

#include "editor/CatalogueModel.h"
#include "editor/EditorOutlets.h"
#include "editor/EffectRunner.h"
#include "editor/PictureViewController.h"
#include "platform/foundation/Value.h"
#include "plugin/EditorLoader.h"

#include <QCursor>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CIFMain;
class QAction;
class QComboBox;
class QEventLoop;
class QMainWindow;
class QMenu;
class QMenuBar;
class QShortcut;
class QTableView;
class QTimer;
class QToolBar;
class QUndoStack;

class CCColorSlider;

namespace plugin {
struct Entry;
struct Parameter;
} // namespace plugin

namespace editor {
class ColorWell;
class Commands;
class DecimalControl;
} // namespace editor

class CIFImageEditorController final : public QObject,
                                       public editor::PictureViewController,
                                       public plugin::ImageEditor {
    Q_OBJECT

public:
    using Dictionary = foundation::Dictionary;
    using DictionaryRef = foundation::DictionaryRef;
    using PictureRef = foundation::PictureRef;
    using Point = foundation::Point;
    using Rect = foundation::Rect;
    using Size = foundation::Size;
    using Keys = std::vector<std::string>;
    enum EffectsSet : std::uint32_t { Filters = 0, Generators = 1 };

    // --- Life ---

    // + sharedImageEditor
    static CIFImageEditorController& sharedImageEditor();

    // init
    CIFImageEditorController();
    ~CIFImageEditorController() override;

    // awakeFromNib — makes the plug-in object of its own, fills the menus and connects the
    // controls; nothing on a platform older than version 824, where lists and menus stay empty.
    void awakeFromNib();
    // Null before that.
    CIFMain* plugIn() const { return _CIFPlugInInstance.get(); }

    // window, setWindow: — not owned.
    QMainWindow* window() const;
    void setWindow(QMainWindow* window);

    // --- The run ---

    // startEditor:useSelection:withRect: — filter mode, on the host's picture. Modal; true when the
    // user accepted. Without its form: a line in the log, a beep, false.
    bool startEditorUseSelectionWithRect(const PictureRef& picture, bool useSelection,
                                         Rect rect) override;
    // startGenerator:withRect: — generator mode; a null picture is a blank of the rectangle's size.
    bool startGeneratorWithRect(const PictureRef& picture, Rect rect) override;
    // onCloseEditor: — of the sender's tag: 0 cancels. Accepting waits, with the window responding,
    // for a result that is not there yet.
    void onCloseEditor(QObject* sender);
    // windowShouldClose:
    bool windowShouldClose();

    PictureRef outputImage() const override { return _outputImage; }
    CIFImageEditorView* pictureView() const { return _outlets._pictureView; }
    bool isSelected() const override;
    Rect getSelectedRect() const override;
    void setSelectedRect(Rect rect);
    // The base picture.
    const PictureRef& picture() const { return _picture; }
    const Dictionary& attributes() const { return _CIFAttributes; }
    std::uint32_t randomSeed() const { return _randomSeed; }

    // filterName — identifier of the current entry; empty when none is chosen.
    std::string filterName() const override { return _CIFFilterName; }
    int editMode() const override { return _editMode; }
    int pointingMode() const override { return _pointingMode; }

    void setCenterPoint(Point point) override;
    void selectionDidChange() override;
    void scrollWheelDidChange() override;
    // Seeds the numbers that the next picture is drawn from.
    void initRandomSeedWithValue(std::uint32_t seed) override;
    void applyFilterWithAttributes(const std::string& identifier,
                                   const Dictionary& attributes) override;
    void applyCurrentFilter() override;
    void updateUndoRedoButtons() override;
    void restoreAttributes(const std::string& identifier, const Dictionary& attributes) override;

    // applyPicture: — shown, and the result of the run so far.
    void applyPicture(const PictureRef& picture);
    // applyButton:
    void applyButton();
    // generateButton: — a new random picture. Can be undone.
    void generateButton();
    // The same with a seed of the user's own.
    void generateWithSeed(std::uint32_t seed);
    void undoButton();
    void redoButton();
    // onScaleSlider: — of a slider value v: 1 + v/8 above 0, else 1 / (1 + |v|/8).
    void onScaleSlider(double value);
    // Fits the zoom to the picture, at 0.8 of the visible area.
    void fitScaleToPicture();
    // changeGeneratorImageSize: — the size sheet of the mode.
    void changeGeneratorImageSize();
    void generatorChangeSizeSheetDidEnd(int returnCode);
    void imageChangeSizeSheetDidEnd(int returnCode);
    // Does something as soon as no result is being waited for: at once, or when it has arrived. One
    // that was stopped is begun again; what still waits when a result is stopped is not done.
    void whenResultIsThere(std::function<void()> action);
    // Gives the result up that is on its way. What is shown stays, and can be accepted.
    void stopResult();
    // Off, the original is shown and nothing is rendered until a result is needed.
    void setPreviewOn(bool on);
    bool isPreviewOn() const { return _isPreviewOn; }
    // Accepted or applied, and waits for the result.
    bool isHeld() const { return _isHeld; }
    // What the user is told; empty for nothing.
    void showStatus(const QString& text);
    // A result is being waited for.
    bool isWaiting() const { return _wanted.has_value(); }
    editor::EffectRunner& runner() { return *_runner; }

    // --- The lists: both show the catalogue of the plug-in object's current effects set ---

    // numberOfRowsInTableView: — categories, but for the first, and entries together.
    int numberOfRowsInTableView() const;
    // tableView:objectValueForTableColumn:row: — of the columns "title" and "mark".
    editor::CellValue tableViewObjectValueForTableColumnRow(QStringView column, int row) const;
    // tableView:shouldSelectRow: — categories cannot be selected.
    bool tableViewShouldSelectRow(int row) const;
    // Null for a category.
    QString identifierOfRow(int row) const;
    // The name of the entry's picture; empty when it has none.
    QString iconOfRow(int row) const;
    // What the search looks in, folded: the entry's name, those of a group's entries and the
    // category, in the user's language and in English.
    QString searchWordsOfRow(int row) const;

    // tableViewSelectionDidChange:
    void tableViewSelectionDidChange(QTableView& list);
    // selectFilterWithIdentifier:, selectFilterWithIdentifier:groupIdentifier: — empty for none.
    void selectFilterWithIdentifier(const std::string& identifier);
    void selectFilterWithIdentifierGroupIdentifier(const std::string& identifier,
                                                   const std::string& group);
    // As if the user chose the entry in its list: switches the tab and selects the row.
    void chooseEntry(const std::string& identifier);
    // "filters" or "generators".
    QString selectedTab() const;
    void selectTab(const QString& identifier);
    // tabView:willSelectTabViewItem:, tabView:didSelectTabViewItem: — of the main tab view and the
    // colour tab view.
    void tabViewWillSelectTabViewItem(QStackedWidget& tabView, const QString& identifier);
    void tabViewDidSelectTabViewItem(QStackedWidget& tabView, const QString& identifier);
    // propertiesTabChange: — the entry of the toolbar item becomes the current one.
    void propertiesTabChange(QAction* sender);

    // Shows the rows that have all the words of the search field, in the user's language or in
    // English, in any order. Row numbers stay those of the catalogue.
    void searchFieldDidChange();
    // Chooses the first entry that the search has left.
    void chooseFirstHit();

    // --- Parameter controls ---

    void updateControls();
    void updateFilterControlsWithKeysAttrDesc(const std::string& identifier, const Keys* keys,
                                              const DictionaryRef& description);
    void updateGLIFControlsWithKeysAttrDesc(const std::string& identifier, const Keys* keys,
                                            const DictionaryRef& description);
    void updateControlsWithKeysForAttributes(const std::vector<editor::DecimalControl*>& controls,
                                             const Keys& keys, const Dictionary& description);
    void updateControlsWithValuesForKeysForAttributes(
        const std::vector<editor::DecimalControl*>& controls, const Keys& keys,
        const Dictionary& values);
    void setFilterDefaultsAttrForKeysWithAttr(const std::string& identifier, const Keys& keys,
                                              const DictionaryRef& description);
    void selectFilterControlsWithTag(int tag);

    void changeFilterDecimalControl(editor::DecimalControl& sender);
    void changeFilterBooleanControl(bool on);
    void changeFilterPopUpControl(QComboBox& sender);
    void changeFilterFromPopUpControl(QComboBox& sender);
    void changeColor(const foundation::Color& color);
    void changeFilterColorSliderControl(CCColorSlider& sender);
    void changeFilterColorSchemeControl(QComboBox& sender);
    void useBackColorButton(bool on);
    void texturePopUpButton(QComboBox& sender);
    void brushPopup(QComboBox& sender);
    void shadedMaterialsPopUpButton(QComboBox& sender);
    // What the open panels end with: 1 and a file, or 0.
    void openTextureImagePanelDidEnd(int returnCode, const QString& file);
    void openBrushImagePanelDidEnd(int returnCode, const QString& file);
    PictureRef textureImage();
    PictureRef brushImage();
    PictureRef shadedMaterialImage();

    // Reset: every value of the current entry, or one, becomes what it starts with when the entry
    // is chosen for the first time.
    void resetEntry();
    void resetValue(const std::string& key);

    // --- Undo of parameter changes: on the stack of the picture view ---

    // What the user can set of an entry.
    struct ParameterState {
        std::string identifier, group;
        Dictionary attributes; // without what is only put in when they are handed over
        Point center;
        int textureItem = -1, materialItem = -1;
        PictureRef customTexture, customBrush;
        QString customTextureFile, customBrushFile;

        friend bool operator==(const ParameterState&, const ParameterState&) = default;
    };
    ParameterState parameterState() const;
    // Chooses the entry if it is another one, and applies it.
    void setParameterState(const ParameterState& state);
    // After the user changed something: a step that leads back to how things were at the last one.
    // Changes of the same key are one step until the mouse is released, or for a second.
    void parameterDidChange(const std::string& key, const QString& text);
    // The next change is a step of its own.
    void endChange();
    // What a key is called in the user's language.
    QString labelOfKey(const std::string& key) const;

    // --- Recipes, favourites, presets ---

    // The current entry with its values, as it would be written down. Nothing without an entry that
    // is applied. A centre that the user did not move is left out, so that a repeat takes the
    // centre of its own picture.
    std::optional<plugin::RecipeStep> currentStep() const;
    // Chooses the step's entry and takes its values and seed, what it does not set being as at the
    // start: one step of undo. Nothing changes when it is not valid; the error is for the user.
    foundation::Status takeStep(const plugin::RecipeStep& step);
    // What was applied since the last generator, and the current step on top of it.
    plugin::Recipe currentRecipe() const;
    // Takes the steps one after another, each applied to what the one before has made. Nothing
    // changes when one of them is not valid.
    foundation::Status takeRecipe(const plugin::Recipe& recipe);
    // In the user's language; empty when neither catalogue has the entry.
    QString nameOfEntry(const std::string& identifier) const;
    // Whether the lists are to show a row, by its identifier: favourites, and groups that have
    // some, while only these are shown.
    std::function<bool(const std::string& identifier)> favouritesFilter() const;
    // After the favourites changed, or whether only they are shown.
    void favouritesDidChange();
    // Menus, shortcuts and what goes with them; null before the window is loaded.
    editor::Commands* commands() const;
    plugin::EditRecord record() const override;

    // --- Toolbar, menus, cursors ---

    // createToolbar — fills the window's toolbar, "Properties toolbar", which it makes if there is
    // none. It is hidden until the user switches it on.
    void createToolbar();
    // toolbar:itemForItemIdentifier:willBeInsertedIntoToolbar: — owned by the toolbar.
    QAction* toolbarItemForItemIdentifierWillBeInsertedIntoToolbar(QToolBar* toolbar,
                                                                   const QString& identifier,
                                                                   bool willBeInserted);
    // toolbarAllowedItemIdentifiers:, toolbarDefaultItemIdentifiers:,
    // toolbarSelectableItemIdentifiers: — all entries, with separators between categories.
    QStringList toolbarAllowedItemIdentifiers(const QToolBar* toolbar) const;
    QStringList toolbarDefaultItemIdentifiers(const QToolBar* toolbar) const;
    QStringList toolbarSelectableItemIdentifiers(const QToolBar* toolbar) const;
    QToolBar* toolbar() const;
    // The menu "View", which switches the toolbar on and off. Owned by the menu bar.
    QMenu* createViewMenu(QMenuBar& menuBar) const;

    // + filtersMenuWithGroupDesc: — an item for each descriptor, which carries its identifier.
    static std::unique_ptr<QMenu> filtersMenuWithGroupDesc(const foundation::ArrayRef& descriptors);
    // validateMenuItem:
    static bool validateMenuItem(const QAction* menuItem);

    // cursorFromType:, imageFromType:, imageWithName:ofType: — see editor/NamedImages.h.
    static const QCursor& cursorFromType(int type);
    static QImage imageFromType(int type);
    static QImage imageWithNameOfType(const QString& name, const QString& type = {});

    const editor::EditorOutlets& outlets() const { return _outlets; }

Q_SIGNALS:
    // The entry, its values or the seed: the current effect is about to be applied anew.
    void effectDidChange();
    void statusDidChange();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class BaseStep;

    void showToolbarMenu(const QPoint& position);

    // The run.
    // The new size is that of a picture that begins empty.
    bool startRun(EffectsSet set, const PictureRef& picture, const Rect* selection,
                  Size newSize = {});
    bool loadWindow();
    void buildControlSets();
    void fillMenus();
    void connectControls(); // of the run; the parameter controls have their own
    void connectParameterControls();
    void createCommands(); // menus, shortcuts, and the buttons that are neither
    bool runModally();
    void stopModalWithCode(int code);

    // Recipes.
    class TakenStep;
    std::string pictureNameOf(plugin::ValueKind kind) const;
    foundation::Result<plugin::PreparedStep> checkedStep(const plugin::RecipeStep& step) const;
    // To look entries of either catalogue up in: the effects set of the other is that of the lists.
    CIFMain& bothCatalogues() const;
    foundation::DictionaryRef descriptorOf(const std::string& identifier) const;
    void takeStepsFrom(const plugin::Recipe& recipe, std::size_t first);

    void runDidEnd();
    void fillMenu(QComboBox* menu, const std::vector<std::string>& names, bool isLibrary,
                  bool hasOther);
    void showScale(double sliderValue);
    void sightDidChange();
    void wantResult(const editor::Effect& effect);
    void resultDidArrive(const editor::Effect& effect, const PictureRef& result);
    void partDidArrive(const imaging::BitmapRef& pixels, const Rect& rect);
    void runnerDidStop();
    void showResult(const PictureRef& result);
    void performWaiting();
    void holdWindow(bool isHeld);
    void setPictureOfRun(const PictureRef& picture);
    // A base picture of another size, which can be undone; the old one stays when memory is short.
    void changeBase(const PictureRef& picture, plugin::EditRecord record);
    void baseDidChangeSize();
    void keepPointInPlace(Size before, Size now);
    plugin::EditRecord recordWithCurrentStep() const;

    // The lists.
    void connectLists();
    void showListOfTab(const QString& identifier);
    QTableView* listOfTab(const QString& identifier) const;
    const editor::CatalogueModel* modelOfList(const QTableView* list) const;
    void filterRows(QTableView& list, const editor::CatalogueModel& model);
    std::string categoryOfRow(int row) const;
    int firstHit() const; // -1 for none
    bool searchKey(QEvent& event);
    // The group that an entry is a member of; empty for none.
    std::string groupOfEntry(const std::string& identifier) const;
    void selectRow(QTableView& list, int row);
    void updateReturnKey();
    void showGeneratorPage(const std::string& identifier);
    void selectColorPage(const QString& identifier);

    // The parameter controls.
    struct GeneratorControls {
        Keys keys; // of the rows
        std::vector<editor::DecimalControl*> sliders, textFields, steppers;
        QComboBox* popUp = nullptr;
    };
    class ParameterStep;
    void findGeneratorControls();
    void bindGeneratorMenus();
    void forgetControls();
    void useFilterPage(const QString& identifier);
    std::optional<plugin::Entry> describedEntry(const std::string& identifier) const;
    void bindFilterRow(std::size_t row, const plugin::Parameter& parameter);
    void bindColorWell(std::size_t index, const plugin::Parameter& parameter);
    void bindCheckBox(QCheckBox& box, const plugin::Parameter& parameter);
    void clearFilterControls(std::size_t firstRow, std::size_t firstWell, bool keepsCheckBox);
    void updateColorControls();
    std::string keyOfWell(const editor::ColorWell& well) const;
    std::string keyOfControl(const QWidget* widget) const; // empty for none
    void changeColorOfWell(editor::ColorWell& well, const foundation::Color& color);
    // By the user: undoable, and applied.
    void changed(const std::string& key);
    void centerMayHaveMoved();
    void setStartingCenter();
    void openPicture(const QString& title,
                     void (CIFImageEditorController::*didEnd)(int, const QString&));
    PictureRef readPictureOfUser(const QString& file);
    bool entryHasInput(const std::string& key) const;
    QUndoStack* undoStack() const;

    editor::EditorOutlets _outlets;
    QPointer<editor::Commands> _commands; // the window's
    bool _isPreviewOn = true;
    QPointer<QMainWindow> _window;
    QPointer<QToolBar> _toolbar;
    std::unique_ptr<CIFMain> _CIFPlugInInstance;
    mutable std::unique_ptr<CIFMain> _bothCatalogues;
    std::unique_ptr<editor::EffectRunner> _runner;
    editor::CatalogueModel* _tableModel = nullptr;
    editor::CatalogueModel* _GLIFTableModel = nullptr;

    PictureRef _picture;
    PictureRef _outputImage;
    PictureRef _textureImage, _customTextureImage, _customBrushImage, _shadedMaterialImage;
    QString _customTextureFile, _customBrushFile; // where they came from
    std::int32_t _editMode = 0;
    std::int32_t _pointingMode = 0;
    Point _point1;

    using Controls = std::vector<editor::DecimalControl*>;
    using Labels = std::vector<QLabel*>;
    Controls _controlsDecimalSlider, _controlsDecimalTextField, _controlsDecimalStepper;
    Labels _controlsLabelTextField;
    Controls _controlsDecimalSlider0, _controlsDecimalTextField0, _controlsDecimalStepper0;
    Labels _controlsLabelTextField0;
    Controls _controlsDecimalSlider10, _controlsDecimalTextField10, _controlsDecimalStepper10;
    Labels _controlsLabelTextField10;
    Controls _controlsDecimalSlider20, _controlsDecimalTextField20, _controlsDecimalStepper20;
    Labels _controlsLabelTextField20;
    Controls _controlsDecimalSlider30, _controlsDecimalTextField30, _controlsDecimalStepper30;
    Labels _controlsLabelTextField30;
    std::vector<QCheckBox*> _controlsBooleanCheckBox;
    std::vector<editor::ColorWell*> _controlsColorWell;
    std::vector<std::string> _colorsRepObjects;

    Dictionary _CIFAttributes;
    std::optional<Dictionary> _CIFOldAttributes;
    std::string _CIFFilterName;
    std::optional<std::string> _CIFOldFilterName;
    std::string _CIFGroupName; // empty for none
    Dictionary _filtersAttrData;
    std::uint32_t _randomSeed = 0;

    std::map<std::string, GeneratorControls, std::less<>> _generatorControls;
    GeneratorControls* _shownGenerator = nullptr;        // whose page is bound
    Keys _inputKeys;                                     // of the current entry
    std::map<std::string, QString> _labels;              // of the keys of the current filter
    std::map<std::string, std::string> _entryOfGroup;    // the last one chosen
    std::string _textureName, _materialName, _brushName; // of the pictures that are remembered
    PictureRef _brushImage;
    QShortcut* _acceptShortcut = nullptr;
    bool _isChoosingRow = false; // the selection of a list follows, and chooses nothing

    ParameterState _knownState; // where the next step leads back to
    bool _isRestoring = false;
    int _changeNumber = 0; // changes of one number are one step
    std::string _changedKey;
    QTimer* _changePause = nullptr;

    // The background pair of the colour page that is shown.
    QCheckBox* _useBackColorButton = nullptr;
    editor::ColorWell* _backColorWell = nullptr;

    plugin::EditRecord _record;          // of the steps before the current entry
    QPointer<QMainWindow> _loadedWindow; // the form's, owned
    QEventLoop* _modalLoop = nullptr;    // while a run is on
    int _modalCode = 0;
    std::optional<editor::Effect> _wanted;  // is waited for
    std::optional<editor::Effect> _stopped; // was waited for until it was stopped
    std::optional<editor::Effect> _shown;   // the last whose result arrived, which is
    PictureRef _shownResult;
    std::optional<plugin::RecipeStep> _shownStep; // that makes it
    std::deque<std::function<void()>> _whenResultIsThere;
    bool _isHeld = false;
    std::vector<QPointer<QObject>> _held; // what is enabled again after it
    QPointer<QWidget> _focusBeforeHold;
    bool _isOpening = false; // the window may not have its size yet
    // What the last run handed back, from when its window let go of the picture.
    std::optional<plugin::EditRecord> _recordOfRun;
    std::optional<Rect> _selectionOfRun;
};
