// Undo of parameter changes, and the way back to the values an entry starts with.
#include "editor/CIFImageEditorController.h"

#include "editor/CCColorSlider.h"
#include "editor/CIFImageEditorView.h"
#include "editor/ColorWell.h"
#include "editor/ControlAccess.h"
#include "editor/DecimalControl.h"
#include "editor/Forms.h"
#include "editor/GeneratorPages.h"
#include "platform/drawing/Picture.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTimer>
#include <QUndoStack>

#include <utility>

using foundation::Dictionary;
using foundation::Value;
using plugin::Parameter;

namespace {

QString fromUtf8(const std::string& text)
{
    return QString::fromStdString(text);
}

int itemOf(const QComboBox* menu)
{
    return menu ? menu->currentIndex() : -1;
}

void selectItem(QComboBox* menu, int item)
{
    if (menu && item < menu->count())
        menu->setCurrentIndex(item);
}

// Put in when the values are handed over.
constexpr const char* kHandedKeys[] = {"CIFinputCenter", "CIFinputTexture", "CIFinputShadingImage",
                                       "GLIFRandomSeed", "GLIFBrush"};

} // namespace

// Changes that belong together, drags of a slider for example, have the same number and are one
// step.
class CIFImageEditorController::ParameterStep final : public QUndoCommand {
public:
    ParameterStep(CIFImageEditorController& controller, int number, const QString& text,
                  ParameterState before, ParameterState after)
        : QUndoCommand(text), _controller(controller), _number(number), _before(std::move(before)),
          _after(std::move(after))
    {
    }
    int id() const override { return _number; }
    bool mergeWith(const QUndoCommand* later) override
    {
        _after = static_cast<const ParameterStep*>(later)->_after;
        setObsolete(_before == _after);
        return true;
    }
    void undo() override { _controller.setParameterState(_before); }
    void redo() override
    {
        // The user has done it the first time.
        if (std::exchange(_isDone, true))
            _controller.setParameterState(_after);
    }

private:
    CIFImageEditorController& _controller;
    int _number;
    ParameterState _before, _after;
    bool _isDone = false;
};

QUndoStack* CIFImageEditorController::undoStack() const
{
    return pictureView() ? &pictureView()->undoManager() : nullptr;
}

CIFImageEditorController::ParameterState CIFImageEditorController::parameterState() const
{
    ParameterState state;
    state.identifier = _CIFFilterName;
    state.group = _CIFGroupName;
    state.attributes = _CIFAttributes;
    for (const char* key : kHandedKeys)
        state.attributes.remove(key);
    state.center = _point1;
    state.textureItem = itemOf(_outlets._texturePopUpButton10);
    state.materialItem = itemOf(_outlets._texturePopUpButton20);
    state.customTexture = _customTextureImage;
    state.customTextureFile = _customTextureFile;
    state.customBrush = _customBrushImage;
    state.customBrushFile = _customBrushFile;
    return state;
}

void CIFImageEditorController::setParameterState(const ParameterState& state)
{
    endChange();
    const bool wasRestoring = std::exchange(_isRestoring, true);
    _customTextureImage = state.customTexture;
    _customTextureFile = state.customTextureFile;
    _customBrushImage = state.customBrush;
    _customBrushFile = state.customBrushFile;
    selectItem(_outlets._texturePopUpButton10, state.textureItem);
    selectItem(_outlets._texturePopUpButton20, state.materialItem);
    // Choosing an entry takes the centre from there.
    if (CIFImageEditorView* view = pictureView())
        view->setPickPoint(state.center);
    if (state.identifier != _CIFFilterName) {
        // Under "Crop" lies the selection.
        if (state.identifier != "Crop")
            _filtersAttrData.set(state.identifier, state.attributes);
        chooseEntry(state.identifier);
    }
    _CIFGroupName = state.group;
    _CIFAttributes = state.attributes;
    updateControls();
    applyCurrentFilter();
    _isRestoring = wasRestoring;
    _knownState = parameterState();
}

void CIFImageEditorController::parameterDidChange(const std::string& key, const QString& text)
{
    if (_isRestoring)
        return;
    ParameterState now = parameterState();
    if (now == _knownState)
        return;
    if (key != _changedKey)
        endChange();
    _changedKey = key;
    if (_changePause)
        _changePause->start();
    ParameterState before = std::exchange(_knownState, now);
    // What another entry was left with is no way back for this one.
    if (before.identifier == now.identifier && undoStack())
        undoStack()->push(
            new ParameterStep(*this, _changeNumber, text, std::move(before), std::move(now)));
}

void CIFImageEditorController::endChange()
{
    ++_changeNumber;
    _changedKey.clear();
    if (_changePause)
        _changePause->stop();
}

// The view tells of a centre by applying the entry anew.
void CIFImageEditorController::centerMayHaveMoved()
{
    if (const CIFImageEditorView* view = pictureView())
        setCenterPoint(view->pickPoint());
    if (_point1 != _knownState.center && _CIFFilterName == _knownState.identifier &&
        entryHasInput("inputCenter"))
        parameterDidChange("inputCenter", editor::localizedString("Move Center"));
}

QString CIFImageEditorController::labelOfKey(const std::string& key) const
{
    if (key == "inputCenter")
        return editor::localizedString("Center");
    if (key == "inputTexture")
        return editor::localizedString("Texture");
    if (key == "inputShadingImage")
        return editor::localizedString("Material");
    if (key == "GLIFType")
        return editor::localizedString("Brush");
    if (key == "GLIFColorScheme")
        return editor::localizedString("Color Scheme");
    if (key == "GLIFSchemeKeyColor")
        return editor::localizedString("Key Color");
    if (key == "GLIFColorRangeMin" || key == "GLIFColorRangeMax")
        return editor::localizedString("Color Range");
    if (key == "GLIFUseBackgroundColor" || key == "GLIFBackgroundColor") {
        QString label = _useBackColorButton ? _useBackColorButton->text()
                                            : editor::localizedString("Back Color:");
        return label.remove(QLatin1Char(':')).trimmed();
    }
    if (_shownGenerator) {
        for (std::size_t i = 0; i < _shownGenerator->keys.size(); ++i)
            if (_shownGenerator->keys[i] == key && _shownGenerator->sliders[i])
                return editor::labelOf(_shownGenerator->sliders[i]->widget());
        const editor::GeneratorPage* page = editor::generatorPage(_CIFFilterName);
        if (page && page->popUpKey == key && _shownGenerator->popUp)
            return editor::labelOf(*_shownGenerator->popUp);
    }
    const auto label = _labels.find(key);
    return label == _labels.end() ? fromUtf8(key) : label->second;
}

std::string CIFImageEditorController::keyOfControl(const QWidget* widget) const
{
    if (const auto* control = dynamic_cast<const editor::DecimalControl*>(widget))
        return control->representedObject;
    if (const auto* well = qobject_cast<const editor::ColorWell*>(widget))
        return keyOfWell(*well);
    if (const auto* menu = qobject_cast<const QComboBox*>(widget)) {
        if (menu == _outlets._texturePopUpButton10)
            return "inputTexture";
        if (menu == _outlets._texturePopUpButton20)
            return "inputShadingImage";
        if (menu == _outlets._dabsTypePopUpButton)
            return "GLIFType";
        if (menu == _outlets._filtersGroupPopUpButton30)
            return {};
        return menu->itemData(0).toString().toStdString();
    }
    if (widget && widget == _outlets._colorGradientSlider)
        return "GLIFColorRangeMin";
    if (widget && widget == _outlets._colorSchemeSlider)
        return "GLIFSchemeKeyColor";
    return {};
}

void CIFImageEditorController::setStartingCenter()
{
    if (!_picture)
        return;
    const Size size = _picture->size();
    _point1 = {static_cast<float>(size.width * 0.5), static_cast<float>(size.height * 0.5)};
    if (CIFImageEditorView* view = pictureView())
        view->setPickPoint(_point1);
}

void CIFImageEditorController::resetEntry()
{
    const auto entry = _CIFPlugInInstance ? describedEntry(_CIFFilterName) : std::nullopt;
    if (!entry)
        return;
    endChange();
    _CIFAttributes.clear();
    for (const Parameter& p : entry->parameters) {
        if (!p.startingValue.isNothing())
            _CIFAttributes.set(p.key, p.startingValue);
        if (p.key == "inputCenter")
            setStartingCenter();
        else if (p.key == "inputTexture")
            selectItem(_outlets._texturePopUpButton10, 0);
        else if (p.key == "inputShadingImage")
            selectItem(_outlets._texturePopUpButton20, 0);
    }
    parameterDidChange({}, editor::localizedString("Reset Values"));
    endChange();
    updateControls();
    applyCurrentFilter();
}

void CIFImageEditorController::resetValue(const std::string& key)
{
    const auto entry = _CIFPlugInInstance ? describedEntry(_CIFFilterName) : std::nullopt;
    const Parameter* parameter = entry ? entry->find(key) : nullptr;
    if (!parameter)
        return;
    endChange();
    const auto reset = [&](const Parameter& p) {
        if (p.startingValue.isNothing())
            _CIFAttributes.remove(p.key);
        else
            _CIFAttributes.set(p.key, p.startingValue);
    };
    if (parameter->key == "inputCenter")
        setStartingCenter();
    else if (parameter->key == "inputTexture")
        selectItem(_outlets._texturePopUpButton10, 0);
    else if (parameter->key == "inputShadingImage")
        selectItem(_outlets._texturePopUpButton20, 0);
    else
        reset(*parameter);
    // Both ends of the range are one control.
    if (parameter->key == "GLIFColorRangeMin")
        if (const Parameter* other = entry->find("GLIFColorRangeMax"))
            reset(*other);
    parameterDidChange(key, editor::localizedString("Reset %1").arg(labelOfKey(key)));
    endChange();
    updateControls();
    applyCurrentFilter();
}
