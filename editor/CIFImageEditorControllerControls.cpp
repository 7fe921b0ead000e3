// The parameter controls: bound to the keys of the current entry, and what follows when the user
// changes them.
#include "editor/CIFImageEditorController.h"

#include "editor/CCColorSlider.h"
#include "editor/CIFImageEditorView.h"
#include "editor/ColorWell.h"
#include "editor/DecimalControl.h"
#include "editor/EventWatcher.h"
#include "editor/Forms.h"
#include "editor/GeneratorPages.h"
#include "editor/Pages.h"
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QTimer>
#include <QUndoStack>

#include <algorithm>
#include <utility>

using editor::ColorWell;
using editor::DecimalControl;
using foundation::Color;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Number;
using foundation::PictureRef;
using foundation::Value;
using plugin::Parameter;
using plugin::ValueKind;

namespace {

constexpr const char* kUseBackground = "GLIFUseBackgroundColor";
constexpr const char* kBackground = "GLIFBackgroundColor";
constexpr const char* kRangeMin = "GLIFColorRangeMin";
constexpr const char* kRangeMax = "GLIFColorRangeMax";
constexpr const char* kScheme = "GLIFColorScheme";
constexpr const char* kKeyColor = "GLIFSchemeKeyColor";
constexpr const char* kBrushType = "GLIFType";

// The item that asks for a file, in the menus of textures and brushes.
constexpr int kOtherTag = 100;

QString fromUtf8(const std::string& text)
{
    return QString::fromStdString(text);
}

constexpr int kTagRole = Qt::UserRole + 1;

bool isOtherSelected(const QComboBox* menu)
{
    return menu && menu->currentData(kTagRole).toInt() == kOtherTag;
}

int otherItemOf(const QComboBox& menu)
{
    return menu.findData(kOtherTag, kTagRole);
}

std::string representedObject(const QComboBox& menu)
{
    return menu.currentData().toString().toStdString();
}

void selectItem(QComboBox* menu, int item)
{
    if (menu)
        menu->setCurrentIndex(item >= 0 && item < menu->count() ? item : -1);
}

bool isWhole(const Value& value)
{
    return value.number() && value.number()->kind() == Number::Kind::Integer;
}

// The name of an input that is described without one: "inputFactorX" is "Factor X", and
// "inputColor0" is "Color 1".
QString nameOfKey(const std::string& key)
{
    QString name = fromUtf8(key.starts_with("input") ? key.substr(5) : key);
    for (qsizetype i = name.size() - 1; i > 0; --i)
        if ((name[i].isUpper() && name[i - 1].isLower()) ||
            (name[i].isDigit() && !name[i - 1].isDigit()))
            name.insert(i, QLatin1Char(' '));
    if (name.endsWith(QLatin1String(" 0")) || name.endsWith(QLatin1String(" 1")))
        name.back() = QChar(name.back().unicode() + 1);
    return name;
}

QString labelOf(const Parameter& parameter)
{
    return parameter.label.empty() ? editor::localizedString(nameOfKey(parameter.key).toStdString())
                                   : editor::localizedString(parameter.label);
}

// Generators that stroke with the background colour.
bool drawsLinesInBackgroundColor(const std::string& generator)
{
    return generator == "GLIF_AbstractLines" || generator == "GLIF_Triangles" ||
           generator == "GLIF_ColourBars";
}

// A side that the description leaves open begins at 0 or ends at 1; the value always fits in.
void setRangeAround(DecimalControl& control, std::optional<double> minimum,
                    std::optional<double> maximum, double value, bool wholeNumbers)
{
    const double low = std::min(minimum.value_or(0), value);
    const double high = std::max({maximum.value_or(1), value, low});
    control.setRange(low, high, editor::incrementForRange(low, high, wholeNumbers), wholeNumbers);
}

void setValue(DecimalControl& control, double value)
{
    // A stored number may lie outside what a control spans: it came from a recipe.
    if (value < control.minValue() || value > control.maxValue())
        control.setRange(std::min(control.minValue(), value), std::max(control.maxValue(), value),
                         control.increment(), control.takesWholeNumbers());
    // Equal in single precision is the value that the user sees, typed or dragged.
    if (static_cast<float>(control.doubleValue()) != static_cast<float>(value))
        control.setDoubleValue(value);
}

void clearControl(DecimalControl& control)
{
    control.representedObject.clear();
    control.widget().setEnabled(false);
    control.widget().hide();
}

} // namespace

void CIFImageEditorController::connectParameterControls()
{
    const auto connectControl = [this](DecimalControl* control) {
        if (!control)
            return;
        control->action = [this](DecimalControl& sender) { changeFilterDecimalControl(sender); };
        control->resetAction = [this](DecimalControl& sender) {
            resetValue(sender.representedObject);
        };
        // Letting go ends a change; the next one is another step of undo.
        new editor::EventWatcher(control->widget(), [this](QEvent& event) {
            if (event.type() == QEvent::MouseButtonRelease || event.type() == QEvent::FocusOut)
                endChange();
            return false;
        });
    };
    for (const Controls* controls :
         {&_controlsDecimalSlider0, &_controlsDecimalSlider10, &_controlsDecimalSlider20,
          &_controlsDecimalSlider30, &_controlsDecimalTextField0, &_controlsDecimalTextField10,
          &_controlsDecimalTextField20, &_controlsDecimalTextField30, &_controlsDecimalStepper0,
          &_controlsDecimalStepper10, &_controlsDecimalStepper20, &_controlsDecimalStepper30})
        std::ranges::for_each(*controls, connectControl);
    findGeneratorControls();
    for (const auto& [generator, controls] : _generatorControls)
        for (const Controls* set : {&controls.sliders, &controls.textFields, &controls.steppers})
            std::ranges::for_each(*set, connectControl);
    if (_window)
        for (auto* label : _window->findChildren<editor::ParameterLabel*>())
            connect(label, &editor::ParameterLabel::doubleClicked, this,
                    [this, label] { resetValue(keyOfControl(label->buddy())); });

    const auto connectMenu = [this](QComboBox* menu,
                                    void (CIFImageEditorController::*changed)(QComboBox&)) {
        if (menu)
            connect(menu, &QComboBox::activated, this, [=, this] { (this->*changed)(*menu); });
    };
    connectMenu(_outlets._texturePopUpButton10, &CIFImageEditorController::texturePopUpButton);
    connectMenu(_outlets._texturePopUpButton20,
                &CIFImageEditorController::shadedMaterialsPopUpButton);
    connectMenu(_outlets._dabsTypePopUpButton, &CIFImageEditorController::brushPopup);
    connectMenu(_outlets._filtersGroupPopUpButton30,
                &CIFImageEditorController::changeFilterFromPopUpControl);
    connectMenu(_outlets._colorSchemePopUpButton,
                &CIFImageEditorController::changeFilterColorSchemeControl);
    for (const auto& [generator, controls] : _generatorControls)
        if (controls.popUp != _outlets._dabsTypePopUpButton)
            connectMenu(controls.popUp, &CIFImageEditorController::changeFilterPopUpControl);
    bindGeneratorMenus();

    for (CCColorSlider* slider : {_outlets._colorGradientSlider, _outlets._colorSchemeSlider})
        if (slider) {
            connect(slider, &CCColorSlider::action, this,
                    [this, slider] { changeFilterColorSliderControl(*slider); });
            new editor::EventWatcher(*slider, [this](QEvent& event) {
                if (event.type() == QEvent::MouseButtonRelease)
                    endChange();
                return false;
            });
        }
    for (QCheckBox* box : {_outlets._useBackColorButton1, _outlets._useBackColorButton2})
        if (box)
            connect(box, &QCheckBox::clicked, this, &CIFImageEditorController::useBackColorButton);
    for (QCheckBox* box : _controlsBooleanCheckBox)
        if (box)
            connect(box, &QCheckBox::clicked, this,
                    &CIFImageEditorController::changeFilterBooleanControl);
    std::vector<ColorWell*> wells = _controlsColorWell;
    wells.insert(wells.end(), {_outlets._backColorWell1, _outlets._backColorWell2});
    for (ColorWell* well : wells)
        if (well) {
            connect(well, &ColorWell::colorDropped, this,
                    [this, well](const Color& color) { changeColorOfWell(*well, color); });
            connect(well, &ColorWell::resetAction, this,
                    [this, well] { resetValue(keyOfWell(*well)); });
        }
    connect(&editor::ColorPanel::sharedColorPanel(), &editor::ColorPanel::colorDidChange, this,
            &CIFImageEditorController::changeColor, Qt::UniqueConnection);
    if (_outlets._resetButton)
        connect(_outlets._resetButton, &QAbstractButton::clicked, this,
                &CIFImageEditorController::resetEntry);
    if (CIFImageEditorView* view = pictureView()) {
        new editor::EventWatcher(*view, [this](QEvent& event) {
            if (event.type() == QEvent::MouseButtonRelease)
                endChange();
            return false;
        });
        // Undone or done by others.
        connect(&view->undoManager(), &QUndoStack::indexChanged, this, [this] {
            if (!_isRestoring)
                _knownState = parameterState();
        });
    }
    if (!_changePause) {
        _changePause = new QTimer(this);
        _changePause->setObjectName(QStringLiteral("changePause"));
        _changePause->setSingleShot(true);
        _changePause->setInterval(1000);
        connect(_changePause, &QTimer::timeout, this, [this] {
            if (QGuiApplication::mouseButtons() == Qt::NoButton)
                endChange();
            else
                _changePause->start(); // the hand rests, but holds
        });
    }
    if (_window)
        connect(_window, &QObject::destroyed, this, &CIFImageEditorController::forgetControls);
    connectLists();
}

void CIFImageEditorController::forgetControls()
{
    for (Controls* set :
         {&_controlsDecimalSlider, &_controlsDecimalTextField, &_controlsDecimalStepper,
          &_controlsDecimalSlider0, &_controlsDecimalTextField0, &_controlsDecimalStepper0,
          &_controlsDecimalSlider10, &_controlsDecimalTextField10, &_controlsDecimalStepper10,
          &_controlsDecimalSlider20, &_controlsDecimalTextField20, &_controlsDecimalStepper20,
          &_controlsDecimalSlider30, &_controlsDecimalTextField30, &_controlsDecimalStepper30})
        set->clear();
    for (Labels* set :
         {&_controlsLabelTextField, &_controlsLabelTextField0, &_controlsLabelTextField10,
          &_controlsLabelTextField20, &_controlsLabelTextField30})
        set->clear();
    _controlsBooleanCheckBox.clear();
    _controlsColorWell.clear();
    _colorsRepObjects.clear();
    _generatorControls.clear();
    _shownGenerator = nullptr;
    _useBackColorButton = nullptr;
    _backColorWell = nullptr;
    _acceptShortcut = nullptr;
}

void CIFImageEditorController::findGeneratorControls()
{
    const auto control = [this](const QString& name) {
        QWidget* widget = _window ? _window->findChild<QWidget*>(name) : nullptr;
        return dynamic_cast<DecimalControl*>(widget);
    };
    for (const editor::GeneratorPage& page : editor::generatorPages()) {
        GeneratorControls& controls = _generatorControls[std::string(page.generator)];
        for (const editor::GeneratorRow& row : page.rows) {
            if (!row.stem)
                continue;
            const QString stem = QLatin1String(row.stem);
            controls.keys.emplace_back(row.key);
            controls.sliders.push_back(control(stem + QLatin1String("Slider")));
            controls.textFields.push_back(control(stem + QLatin1String(row.textField)));
            controls.steppers.push_back(control(stem + QLatin1String("Stepper")));
        }
        if (page.popUp && _window)
            controls.popUp = _window->findChild<QComboBox*>(QLatin1String(page.popUp));
    }
}

// Their items stand in the order of the values; each carries the key.
void CIFImageEditorController::bindGeneratorMenus()
{
    const auto bind = [](QComboBox* menu, const char* key) {
        for (int i = 0; menu && i < menu->count(); ++i)
            menu->setItemData(i, QLatin1String(key));
    };
    for (const editor::GeneratorPage& page : editor::generatorPages())
        if (QComboBox* menu = _generatorControls[std::string(page.generator)].popUp;
            menu != _outlets._dabsTypePopUpButton)
            bind(menu, page.popUpKey);
    bind(_outlets._colorSchemePopUpButton, kScheme);
}

bool CIFImageEditorController::entryHasInput(const std::string& key) const
{
    return std::ranges::find(_inputKeys, key) != _inputKeys.end();
}

void CIFImageEditorController::setFilterDefaultsAttrForKeysWithAttr(
    const std::string& identifier, const Keys& keys, const DictionaryRef& description)
{
    const DictionaryRef saved = _filtersAttrData[identifier].dictionary();
    for (const std::string& key : keys) {
        if (const Value* value = saved ? saved->find(key) : nullptr) {
            _CIFAttributes.set(key, *value);
            continue;
        }
        const DictionaryRef described = description ? (*description)[key].dictionary() : nullptr;
        if (const Value* value = described ? described->find("GLIFDefValue") : nullptr)
            _CIFAttributes.set(key, *value);
    }
}

void CIFImageEditorController::updateFilterControlsWithKeysAttrDesc(
    const std::string& identifier, const Keys* keys, const DictionaryRef& description)
{
    _inputKeys = keys ? *keys : Keys();
    if (keys) {
        _CIFAttributes.clear();
        setFilterDefaultsAttrForKeysWithAttr(identifier, *keys, description);
    }

    const DictionaryRef descriptor =
        _CIFPlugInInstance && !identifier.empty()
            ? _CIFPlugInInstance->CIFDescriptorForFilterNameWithGroups(identifier)
            : nullptr;
    _shownGenerator = nullptr;
    _labels.clear();
    if (!descriptor) {
        _editMode = 0;
        _pointingMode = 0;
        useFilterPage(QStringLiteral("0"));
    } else {
        const int tag = descriptor->intValue("CIFTag", 0);
        _editMode = tag == 1 ? 0 : 1;
        if (tag != 1) {
            if (CIFImageEditorView* view = pictureView())
                view->setTouched(false);
            selectFilterControlsWithTag(tag);
        }
        if (const Number* style = (*descriptor)["CIFFilterStyle"].number())
            _pointingMode = style->intValue() == 1 ? 2 : style->intValue() == 255 ? 0 : 1;
    }
    if (const auto* crop = _filtersAttrData["Crop"].get<Rect>())
        setSelectedRect(*crop);

    std::size_t rows = 0, wells = 0;
    QCheckBox* checkBox = nullptr;
    const auto entry = keys ? describedEntry(identifier) : std::nullopt;
    for (const Parameter& p : entry ? entry->parameters : std::vector<Parameter>()) {
        if (p.row > 0) {
            bindFilterRow(rows++, p);
        } else if (p.kind == ValueKind::Color && wells < _controlsColorWell.size()) {
            bindColorWell(wells++, p);
        } else if (p.kind == ValueKind::Boolean && !checkBox && !_controlsBooleanCheckBox.empty()) {
            checkBox = _controlsBooleanCheckBox.front();
            bindCheckBox(*checkBox, p);
        }
    }
    clearFilterControls(rows, wells, checkBox != nullptr);
    updateControls();
}

std::optional<plugin::Entry> CIFImageEditorController::describedEntry(
    const std::string& identifier) const
{
    return plugin::describeEntry(bothCatalogues(), identifier);
}

void CIFImageEditorController::bindFilterRow(std::size_t row, const Parameter& p)
{
    if (!_CIFAttributes.contains(p.key) && !p.startingValue.isNothing())
        _CIFAttributes.set(p.key, p.startingValue);
    if (row >= _controlsDecimalSlider.size())
        return;
    const double value = _CIFAttributes.doubleValue(p.key, 0);
    const QString label = _labels[p.key] = labelOf(p);
    if (row < _controlsLabelTextField.size())
        if (QLabel* text = _controlsLabelTextField[row]) {
            text->setText(label + QLatin1Char(':'));
            text->setToolTip(fromUtf8(p.key));
            text->setEnabled(true);
            text->show();
        }
    for (const Controls* set :
         {&_controlsDecimalSlider, &_controlsDecimalTextField, &_controlsDecimalStepper}) {
        DecimalControl* control = row < set->size() ? (*set)[row] : nullptr;
        if (!control)
            continue;
        control->representedObject = p.key;
        setRangeAround(*control, p.slider.minimum, p.slider.maximum, value, false);
        control->setDoubleValue(value);
        control->widget().setToolTip(fromUtf8(p.key));
        control->widget().setAccessibleName(label);
        control->widget().setEnabled(true);
        control->widget().show();
    }
}

void CIFImageEditorController::bindColorWell(std::size_t index, const Parameter& p)
{
    if (!_CIFAttributes.contains(p.key) && !p.startingValue.isNothing())
        _CIFAttributes.set(p.key, p.startingValue);
    ColorWell* well = _controlsColorWell[index];
    if (!well)
        return;
    well->tag = static_cast<int>(index);
    _colorsRepObjects[index] = p.key;
    _labels[p.key] = labelOf(p);
    well->setToolTip(fromUtf8(p.key));
    well->setAccessibleName(labelOf(p));
    if (const Color* color = _CIFAttributes[p.key].color())
        well->setColor(*color);
    well->setEnabled(true);
    well->show();
    if (QLabel* label = index == 0 ? _outlets._labelColorWell1 : _outlets._labelColorWell2) {
        label->setText(index == 0 ? editor::localizedString("Color:")
                                  : labelOf(p) + QLatin1Char(':'));
        label->setToolTip(fromUtf8(p.key));
        label->show();
    }
}

void CIFImageEditorController::bindCheckBox(QCheckBox& box, const Parameter& p)
{
    if (!_CIFAttributes.contains(p.key) && !p.startingValue.isNothing())
        _CIFAttributes.set(p.key, p.startingValue);
    box.setProperty("representedObject", fromUtf8(p.key));
    box.setText(_labels[p.key] = labelOf(p));
    box.setToolTip(fromUtf8(p.key));
    box.setChecked(_CIFAttributes.boolValue(p.key, false));
    box.setEnabled(true);
    box.show();
}

void CIFImageEditorController::clearFilterControls(std::size_t firstRow, std::size_t firstWell,
                                                   bool keepsCheckBox)
{
    for (std::size_t row = firstRow; row < _controlsLabelTextField.size(); ++row)
        if (QLabel* label = _controlsLabelTextField[row]) {
            label->clear();
            label->setToolTip({});
            label->setEnabled(false);
            label->hide();
        }
    for (const Controls* set :
         {&_controlsDecimalSlider, &_controlsDecimalTextField, &_controlsDecimalStepper})
        for (std::size_t row = firstRow; row < set->size(); ++row)
            if ((*set)[row])
                clearControl(*(*set)[row]);
    for (std::size_t i = firstWell; i < _controlsColorWell.size(); ++i) {
        _colorsRepObjects[i].clear();
        if (ColorWell* well = _controlsColorWell[i]) {
            well->deactivate();
            well->setColor(std::nullopt);
            well->setEnabled(false);
            well->hide();
        }
        if (QLabel* label = i == 0 ? _outlets._labelColorWell1 : _outlets._labelColorWell2) {
            label->clear();
            label->hide();
        }
    }
    if (!keepsCheckBox)
        for (QCheckBox* box : _controlsBooleanCheckBox)
            if (box) {
                box->setProperty("representedObject", {});
                box->setText({});
                box->setEnabled(false);
                box->hide();
            }
}

void CIFImageEditorController::useFilterPage(const QString& identifier)
{
    if (QStackedWidget* pages = _outlets._filterControlsTabView)
        if (QWidget* page = editor::pageOf(*pages, identifier))
            pages->setCurrentWidget(page);
    const auto use = [this](const Controls& sliders, const Controls& fields,
                            const Controls& steppers, const Labels& labels) {
        _controlsDecimalSlider = sliders;
        _controlsDecimalTextField = fields;
        _controlsDecimalStepper = steppers;
        _controlsLabelTextField = labels;
    };
    if (identifier == QLatin1String("10"))
        use(_controlsDecimalSlider10, _controlsDecimalTextField10, _controlsDecimalStepper10,
            _controlsLabelTextField10);
    else if (identifier == QLatin1String("20"))
        use(_controlsDecimalSlider20, _controlsDecimalTextField20, _controlsDecimalStepper20,
            _controlsLabelTextField20);
    else if (identifier == QLatin1String("30"))
        use(_controlsDecimalSlider30, _controlsDecimalTextField30, _controlsDecimalStepper30,
            _controlsLabelTextField30);
    else
        use(_controlsDecimalSlider0, _controlsDecimalTextField0, _controlsDecimalStepper0,
            _controlsLabelTextField0);
}

void CIFImageEditorController::selectFilterControlsWithTag(int tag)
{
    if (tag == 10 || tag == 20) {
        useFilterPage(QString::number(tag));
        return;
    }
    if (tag < 31 || tag > 33) {
        useFilterPage(QStringLiteral("0"));
        return;
    }
    // An entry that was not chosen through its row has its group all the same.
    if (const std::string group = groupOfEntry(_CIFFilterName); !group.empty()) {
        _CIFGroupName = group;
        _entryOfGroup[group] = _CIFFilterName;
    }
    if (QComboBox* menu = _outlets._filtersGroupPopUpButton30) {
        menu->clear();
        const auto items = filtersMenuWithGroupDesc(
            _CIFPlugInInstance->CIFFiltersDescriptorForGroup(_CIFGroupName));
        for (const QAction* item : items->actions())
            menu->addItem(item->text().replace(QLatin1String("&&"), QLatin1String("&")),
                          item->data());
        menu->setCurrentIndex(std::max(menu->findData(fromUtf8(_CIFFilterName)), 0));
    }
    useFilterPage(QStringLiteral("30"));
}

void CIFImageEditorController::updateGLIFControlsWithKeysAttrDesc(const std::string& identifier,
                                                                  const Keys* keys,
                                                                  const DictionaryRef& description)
{
    for (QWidget* pages : {static_cast<QWidget*>(_outlets._GLIFControlsTabView),
                           static_cast<QWidget*>(_outlets._GLIFColorControlsTabView)})
        if (pages)
            pages->setVisible(keys != nullptr);
    if (!keys) {
        _shownGenerator = nullptr;
        return;
    }
    _inputKeys = *keys;
    _editMode = 1;
    _CIFAttributes.clear();
    setFilterDefaultsAttrForKeysWithAttr(identifier, *keys, description);

    const auto page = _generatorControls.find(identifier);
    _shownGenerator = page == _generatorControls.end() ? nullptr : &page->second;
    if (_shownGenerator && description)
        for (const Controls* set :
             {&_shownGenerator->sliders, &_shownGenerator->textFields, &_shownGenerator->steppers})
            updateControlsWithKeysForAttributes(*set, _shownGenerator->keys, *description);
    updateControls();
}

void CIFImageEditorController::updateControlsWithKeysForAttributes(
    const std::vector<DecimalControl*>& controls, const Keys& keys, const Dictionary& description)
{
    for (std::size_t i = 0; i < std::min(keys.size(), controls.size()); ++i) {
        DecimalControl* control = controls[i];
        if (!control)
            continue;
        control->representedObject = keys[i];
        const DictionaryRef described = description[keys[i]].dictionary();
        const Number* minimum = described ? (*described)["GLIFMinValue"].number() : nullptr;
        const Number* maximum = described ? (*described)["GLIFMaxValue"].number() : nullptr;
        const Number* value = _CIFAttributes[keys[i]].number();
        if (minimum && maximum)
            setRangeAround(*control, minimum->doubleValue(), maximum->doubleValue(),
                           value ? value->doubleValue() : minimum->doubleValue(),
                           isWhole((*described)["GLIFDefValue"]));
        if (value)
            setValue(*control, value->doubleValue());
    }
}

void CIFImageEditorController::updateControlsWithValuesForKeysForAttributes(
    const std::vector<DecimalControl*>& controls, const Keys& keys, const Dictionary& values)
{
    for (std::size_t i = 0; i < std::min(keys.size(), controls.size()); ++i)
        if (const Number* value = values[keys[i]].number(); value && controls[i])
            setValue(*controls[i], value->doubleValue());
}

void CIFImageEditorController::updateControls()
{
    for (const Controls* set :
         {&_controlsDecimalSlider, &_controlsDecimalTextField, &_controlsDecimalStepper})
        for (DecimalControl* control : *set)
            if (control && !control->representedObject.empty())
                if (const Number* value = _CIFAttributes[control->representedObject].number())
                    setValue(*control, value->doubleValue());
    for (std::size_t i = 0; i < _controlsColorWell.size(); ++i)
        if (ColorWell* well = _controlsColorWell[i]; well && !_colorsRepObjects[i].empty())
            if (const Color* color = _CIFAttributes[_colorsRepObjects[i]].color())
                well->setColor(*color);
    for (QCheckBox* box : _controlsBooleanCheckBox)
        if (const std::string key =
                box ? box->property("representedObject").toString().toStdString() : std::string();
            !key.empty())
            box->setChecked(_CIFAttributes.boolValue(key, false));

    if (_shownGenerator) {
        for (const Controls* set :
             {&_shownGenerator->sliders, &_shownGenerator->textFields, &_shownGenerator->steppers})
            updateControlsWithValuesForKeysForAttributes(*set, _shownGenerator->keys,
                                                         _CIFAttributes);
        const editor::GeneratorPage* page = editor::generatorPage(_CIFFilterName);
        if (page && page->popUpKey)
            selectItem(_shownGenerator->popUp, _CIFAttributes.intValue(page->popUpKey, 0));
        updateColorControls();
    }
}

void CIFImageEditorController::updateColorControls()
{
    const double keyColor = _CIFAttributes.doubleValue(kKeyColor, 0);
    if (CCColorSlider* slider = _outlets._colorGradientSlider) {
        slider->setRangeMinValue(_CIFAttributes.doubleValue(kRangeMin, 0));
        slider->setRangeMaxValue(_CIFAttributes.doubleValue(kRangeMax, 1));
    }
    if (CCColorSlider* slider = _outlets._colorSchemeSlider) {
        slider->setRangeMinValue(keyColor);
        slider->setRangeMaxValue(keyColor);
    }
    selectItem(_outlets._colorSchemePopUpButton, _CIFAttributes.intValue(kScheme, 0));

    const bool hasBackground = entryHasInput(kUseBackground);
    if (_useBackColorButton) {
        _useBackColorButton->setChecked(_CIFAttributes.boolValue(kUseBackground, false));
        _useBackColorButton->setText(drawsLinesInBackgroundColor(_CIFFilterName)
                                         ? editor::localizedString("Line Color:")
                                         : editor::localizedString("Back Color:"));
        _useBackColorButton->setEnabled(hasBackground);
        _useBackColorButton->setVisible(hasBackground);
    }
    if (_backColorWell) {
        const Color* color = _CIFAttributes[kBackground].color();
        _backColorWell->setColor(color ? std::optional(*color) : std::nullopt);
        if (!hasBackground)
            _backColorWell->deactivate();
        _backColorWell->setEnabled(hasBackground);
        _backColorWell->setVisible(hasBackground);
    }
}

void CIFImageEditorController::changed(const std::string& key)
{
    parameterDidChange(key, editor::localizedString("Change %1").arg(labelOfKey(key)));
    applyCurrentFilter();
}

void CIFImageEditorController::changeFilterDecimalControl(DecimalControl& sender)
{
    const std::string key = sender.representedObject;
    if (key.empty())
        return;
    _CIFAttributes.set(key, static_cast<float>(sender.doubleValue()));
    // The other two of the row.
    const auto follow = [&](const Controls& controls) {
        for (DecimalControl* control : controls)
            if (control && control != &sender && control->representedObject == key)
                control->setDoubleValue(sender.doubleValue());
    };
    for (const Controls* set :
         {&_controlsDecimalSlider, &_controlsDecimalTextField, &_controlsDecimalStepper})
        follow(*set);
    if (_shownGenerator)
        for (const Controls* set :
             {&_shownGenerator->sliders, &_shownGenerator->textFields, &_shownGenerator->steppers})
            follow(*set);
    changed(key);
}

void CIFImageEditorController::changeFilterBooleanControl(bool on)
{
    for (const QCheckBox* box : _controlsBooleanCheckBox) {
        const std::string key =
            box ? box->property("representedObject").toString().toStdString() : std::string();
        if (key.empty())
            continue;
        _CIFAttributes.set(key, on);
        changed(key);
        return;
    }
}

void CIFImageEditorController::changeFilterPopUpControl(QComboBox& sender)
{
    const std::string key = representedObject(sender);
    if (key.empty())
        return;
    _CIFAttributes.set(key, sender.currentIndex());
    changed(key);
}

void CIFImageEditorController::changeFilterFromPopUpControl(QComboBox& sender)
{
    if (const std::string identifier = representedObject(sender); !identifier.empty())
        selectFilterWithIdentifier(identifier);
}

std::string CIFImageEditorController::keyOfWell(const ColorWell& well) const
{
    if (&well == _outlets._backColorWell1 || &well == _outlets._backColorWell2)
        return kBackground;
    const auto index = static_cast<std::size_t>(well.tag);
    return well.tag >= 0 && index < _colorsRepObjects.size() ? _colorsRepObjects[index]
                                                             : std::string();
}

void CIFImageEditorController::changeColorOfWell(ColorWell& well, const Color& color)
{
    const std::string key = keyOfWell(well);
    if (key.empty() || !well.isEnabled())
        return;
    well.setColor(color);
    _CIFAttributes.set(key, color);
    changed(key);
}

void CIFImageEditorController::changeColor(const Color& color)
{
    const auto active = std::ranges::find_if(
        _controlsColorWell, [](const ColorWell* well) { return well && well->isActive(); });
    if (active != _controlsColorWell.end())
        changeColorOfWell(**active, color);
    if (selectedTab() == QLatin1String("generators") && _backColorWell &&
        _backColorWell->isActive())
        changeColorOfWell(*_backColorWell, color);
}

void CIFImageEditorController::changeFilterColorSliderControl(CCColorSlider& sender)
{
    if (&sender == _outlets._colorGradientSlider) {
        _CIFAttributes.set(kRangeMin, sender.getRangeMinValue());
        _CIFAttributes.set(kRangeMax, sender.getRangeMaxValue());
        changed(kRangeMin);
    } else if (&sender == _outlets._colorSchemeSlider) {
        _CIFAttributes.set(kKeyColor, sender.getRangeMinValue());
        changed(kKeyColor);
    }
}

void CIFImageEditorController::changeFilterColorSchemeControl(QComboBox& sender)
{
    if (&sender != _outlets._colorSchemePopUpButton)
        return;
    _CIFAttributes.set(kScheme, sender.currentIndex());
    changed(kScheme);
}

void CIFImageEditorController::useBackColorButton(bool on)
{
    _CIFAttributes.set(kUseBackground, on);
    if (on && _backColorWell && _backColorWell->color())
        _CIFAttributes.set(kBackground, *_backColorWell->color());
    changed(kUseBackground);
}

void CIFImageEditorController::texturePopUpButton(QComboBox& sender)
{
    if (isOtherSelected(&sender))
        openPicture(editor::localizedString("Choose a Texture"),
                    &CIFImageEditorController::openTextureImagePanelDidEnd);
    else
        changed("inputTexture");
}

void CIFImageEditorController::brushPopup(QComboBox& sender)
{
    if (isOtherSelected(&sender)) {
        openPicture(editor::localizedString("Choose a Brush"),
                    &CIFImageEditorController::openBrushImagePanelDidEnd);
        return;
    }
    _CIFAttributes.set(kBrushType, sender.currentIndex());
    changed(kBrushType);
}

void CIFImageEditorController::shadedMaterialsPopUpButton(QComboBox&)
{
    changed("inputShadingImage");
}

void CIFImageEditorController::openPicture(const QString& title,
                                           void (CIFImageEditorController::*didEnd)(int,
                                                                                    const QString&))
{
    QStringList patterns;
    for (const std::string& extension : codecs::readableExtensions())
        patterns << QStringLiteral("*.") + fromUtf8(extension);
    auto* panel = new QFileDialog(_window, title);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilter(editor::localizedString("Pictures") + QStringLiteral(" (") +
                         patterns.join(QLatin1Char(' ')) + QLatin1Char(')'));
    connect(panel, &QDialog::finished, this, [=, this](int code) {
        const QStringList files = panel->selectedFiles();
        const bool isChosen = code == QDialog::Accepted && !files.isEmpty();
        (this->*didEnd)(isChosen ? 1 : 0, isChosen ? files.first() : QString());
    });
    panel->open();
}

// Null, with a line for the user, when it cannot be read.
PictureRef CIFImageEditorController::readPictureOfUser(const QString& file)
{
    const auto picture = codecs::readPicture(file.toStdString());
    showStatus(picture ? QString()
                       : editor::localizedString("The picture cannot be read: %1")
                             .arg(fromUtf8(picture.error())));
    return picture ? *picture : nullptr;
}

void CIFImageEditorController::openTextureImagePanelDidEnd(int returnCode, const QString& file)
{
    if (returnCode != 1)
        return;
    const PictureRef picture = readPictureOfUser(file);
    if (!picture)
        return;
    _customTextureImage = picture;
    _customTextureFile = file;
    if (QComboBox* menu = _outlets._texturePopUpButton10)
        selectItem(menu, otherItemOf(*menu));
    changed("inputTexture");
}

void CIFImageEditorController::openBrushImagePanelDidEnd(int returnCode, const QString& file)
{
    QComboBox* menu = _outlets._dabsTypePopUpButton;
    if (returnCode == 1) {
        const PictureRef picture = readPictureOfUser(file);
        if (!picture)
            return;
        _customBrushImage = plugin::convertMaskImage(picture);
        _customBrushFile = file;
        if (menu)
            selectItem(menu, otherItemOf(*menu));
    } else {
        _customBrushImage = nullptr;
        _customBrushFile.clear();
        selectItem(menu, 0);
    }
    if (menu)
        _CIFAttributes.set(kBrushType, menu->currentIndex());
    changed(kBrushType);
}

PictureRef CIFImageEditorController::textureImage()
{
    const QComboBox* menu = _outlets._texturePopUpButton10;
    if (isOtherSelected(menu)) {
        _textureName.clear();
        return _textureImage = _customTextureImage;
    }
    const std::string name = menu ? representedObject(*menu) : std::string();
    // The same picture stays the same object, so that nothing is made of it twice.
    if (!name.empty() && name != _textureName) {
        _textureImage = _CIFPlugInInstance->CIFGlassTextureWithName(name);
        _textureName = _textureImage ? name : std::string();
    }
    return _textureImage;
}

PictureRef CIFImageEditorController::brushImage()
{
    const QComboBox* menu = _outlets._dabsTypePopUpButton;
    if (isOtherSelected(menu))
        return _customBrushImage;
    const std::string name = menu ? menu->currentText().toStdString() : std::string();
    if (name != _brushName || !_brushImage) {
        _brushImage = _CIFPlugInInstance->CIFBrushWithName(name);
        _brushName = name;
    }
    return _brushImage;
}

PictureRef CIFImageEditorController::shadedMaterialImage()
{
    const QComboBox* menu = _outlets._texturePopUpButton20;
    const std::string name =
        menu && !isOtherSelected(menu) ? representedObject(*menu) : std::string();
    if (!name.empty() && name != _materialName) {
        _shadedMaterialImage = _CIFPlugInInstance->CIFShadingMaterialWithName(name);
        _materialName = _shadedMaterialImage ? name : std::string();
    }
    return _shadedMaterialImage;
}
