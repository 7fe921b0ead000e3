// The current entry with its values as a step that can be written down, and back again.
#include "editor/CIFImageEditorController.h"

#include "editor/CIFImageEditorView.h"
#include "editor/Forms.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"

#include <QComboBox>
#include <QUndoCommand>
#include <QUndoStack>

#include <utility>

using foundation::Dictionary;
using foundation::Error;
using foundation::Number;
using foundation::Point;
using foundation::Status;
using foundation::Value;
using plugin::Parameter;
using plugin::RecipeStep;
using plugin::ValueKind;

namespace {

constexpr int kOtherTag = 100;
constexpr int kTagRole = Qt::UserRole + 1;

QString fromUtf8(const std::string& text)
{
    return QString::fromStdString(text);
}

// A control's number as the parameter takes it: sliders hand over real numbers for whole ones, too.
std::optional<std::string> writtenAs(const Parameter& parameter, const Value& value)
{
    if (const Number* n = value.number()) {
        if (parameter.kind == ValueKind::Integer)
            return plugin::writtenForm(n->int64Value());
        if (parameter.kind == ValueKind::Boolean)
            return plugin::writtenForm(n->boolValue());
    }
    return plugin::writtenForm(value, parameter.kind);
}

// What is chosen in a menu of library pictures: a name, or the file behind the item "Other...".
// Empty when there is neither.
std::string chosenIn(const QComboBox* menu, const QString& customFile)
{
    if (!menu || menu->currentIndex() < 0)
        return {};
    if (menu->currentData(kTagRole).toInt() == kOtherTag)
        return customFile.toStdString();
    const QString name = menu->currentData().toString();
    return (name.isEmpty() ? menu->currentText() : name).toStdString();
}

// The item of a library name; −1 when the menu has none.
int itemNamed(const QComboBox* menu, const std::string& name)
{
    for (int i = 0; menu && i < menu->count(); ++i) {
        if (menu->itemData(i, kTagRole).toInt() == kOtherTag)
            continue;
        const QString item = menu->itemData(i).toString();
        if ((item.isEmpty() ? menu->itemText(i) : item) == fromUtf8(name))
            return i;
    }
    return -1;
}

int otherItemOf(const QComboBox* menu)
{
    return menu ? menu->findData(kOtherTag, kTagRole) : -1;
}

QString absoluteFile(const std::string& file)
{
    std::error_code error;
    const auto path = std::filesystem::absolute(file, error);
    return fromUtf8(error ? file : path.string());
}

} // namespace

// A step taken as a whole: entry, values and seed.
class CIFImageEditorController::TakenStep final : public QUndoCommand {
public:
    struct State {
        ParameterState parameters;
        std::uint32_t seed = 0;
    };
    TakenStep(CIFImageEditorController& controller, State before, State now)
        : QUndoCommand(editor::localizedString("Use Recipe")), _controller(controller),
          _before(std::move(before)), _now(std::move(now))
    {
    }
    void undo() override { bring(_before); }
    void redo() override
    {
        // Choosing an entry may clear the stack, so that the step is taken before it is pushed.
        if (std::exchange(_isTaken, true))
            bring(_now);
    }

private:
    void bring(const State& state)
    {
        _controller.initRandomSeedWithValue(state.seed);
        _controller.setParameterState(state.parameters);
    }

    CIFImageEditorController& _controller;
    State _before, _now;
    bool _isTaken = false;
};

std::string CIFImageEditorController::pictureNameOf(ValueKind kind) const
{
    switch (kind) {
    case ValueKind::GlassTexture:
        return chosenIn(_outlets._texturePopUpButton10, _customTextureFile);
    case ValueKind::ShadingMaterial:
        return chosenIn(_outlets._texturePopUpButton20, {});
    case ValueKind::Brush:
        return chosenIn(_outlets._dabsTypePopUpButton, _customBrushFile);
    default:
        return {};
    }
}

std::optional<RecipeStep> CIFImageEditorController::currentStep() const
{
    if (!_CIFPlugInInstance || _CIFFilterName.empty() || _editMode == 0)
        return std::nullopt;
    const auto entry = describedEntry(_CIFFilterName);
    if (!entry)
        return std::nullopt;
    RecipeStep step;
    step.identifier = _CIFFilterName;
    for (const Parameter& p : entry->parameters) {
        if (p.kind == ValueKind::Point) {
            // A centre that nobody moved is that of any picture.
            const auto middle =
                plugin::startingValue(*_CIFPlugInInstance, p, _picture ? _picture->size() : Size());
            if (!middle || *middle != Value(_point1))
                step.setValue(p.key, plugin::writtenForm(Value(_point1)).value_or(""));
        } else if (plugin::isPicture(p.kind)) {
            if (const std::string name = pictureNameOf(p.kind); !name.empty())
                step.setValue(p.key, name);
        } else if (const Value* value = _CIFAttributes.find(p.key)) {
            if (const auto text = writtenAs(p, *value))
                step.setValue(p.key, *text);
        }
    }
    if (entry->isGenerator)
        step.seed = _randomSeed;
    return step;
}

foundation::Result<plugin::PreparedStep> CIFImageEditorController::checkedStep(
    const RecipeStep& step) const
{
    if (!_CIFPlugInInstance)
        return Error{editor::localizedString("There are no effects.").toStdString()};
    const auto entry = describedEntry(step.identifier);
    if (!entry || !descriptorOf(step.identifier))
        return Error{editor::localizedString("There is no effect named “%1”.")
                         .arg(fromUtf8(step.identifier))
                         .toStdString()};
    if (!step.withStartingValues)
        return Error{editor::localizedString("A recipe with “defaults=false” is for the command "
                                             "line: the window shows every value.")
                         .toStdString()};
    auto prepared =
        plugin::prepareStep(*_CIFPlugInInstance, *entry, step, _picture ? _picture->size() : Size(),
                            plugin::Checking::Strict);
    if (!prepared)
        return Error{prepared.error().text};
    for (const Parameter& p : entry->parameters)
        if (const std::string* name = prepared->asRun.find(p.key);
            name && p.kind == ValueKind::ShadingMaterial &&
            itemNamed(_outlets._texturePopUpButton20, *name) < 0)
            return Error{editor::localizedString("“%1” is no shading material of the library.")
                             .arg(fromUtf8(*name))
                             .toStdString()};
    return *std::move(prepared);
}

CIFMain& CIFImageEditorController::bothCatalogues() const
{
    if (!_bothCatalogues)
        _bothCatalogues = std::make_unique<CIFMain>();
    return *_bothCatalogues;
}

foundation::DictionaryRef CIFImageEditorController::descriptorOf(
    const std::string& identifier) const
{
    if (!_CIFPlugInInstance)
        return nullptr;
    CIFMain& plugIn = bothCatalogues();
    plugIn.CIFSetEffectsSet(plugin::isGeneratorName(identifier) ? Generators : Filters);
    return plugIn.CIFDescriptorForFilterNameWithGroups(identifier);
}

Status CIFImageEditorController::takeStep(const RecipeStep& step)
{
    const auto prepared = checkedStep(step);
    if (!prepared)
        return Error{prepared.error()};
    const auto entry = describedEntry(step.identifier);

    endChange();
    const TakenStep::State before{parameterState(), _randomSeed};
    if (prepared->asRun.seed)
        initRandomSeedWithValue(*prepared->asRun.seed);

    TakenStep::State now{before.parameters, _randomSeed};
    ParameterState& state = now.parameters;
    state.identifier = step.identifier;
    state.group = groupOfEntry(step.identifier);
    state.attributes.clear();
    for (const Parameter& p : entry->parameters) {
        const Value* value = prepared->attributes.find(p.handedKey);
        if (!value)
            continue;
        const std::string* name = prepared->asRun.find(p.key);
        if (p.kind == ValueKind::Point) {
            state.center = *value->get<Point>();
        } else if (p.kind == ValueKind::GlassTexture) {
            state.textureItem = itemNamed(_outlets._texturePopUpButton10, *name);
            if (state.textureItem < 0) {
                state.textureItem = otherItemOf(_outlets._texturePopUpButton10);
                state.customTexture = value->picture();
                state.customTextureFile = absoluteFile(*name);
            }
        } else if (p.kind == ValueKind::ShadingMaterial) {
            state.materialItem = itemNamed(_outlets._texturePopUpButton20, *name);
        } else if (p.kind == ValueKind::Brush) {
            int item = itemNamed(_outlets._dabsTypePopUpButton, *name);
            if (item < 0) {
                item = otherItemOf(_outlets._dabsTypePopUpButton);
                state.customBrush = value->picture();
                state.customBrushFile = absoluteFile(*name);
            }
            state.attributes.set("GLIFType", item);
        } else if (p.handedKey == p.key) {
            state.attributes.set(p.key, *value);
        }
    }
    setParameterState(state);
    if (QUndoStack* steps = undoStack())
        steps->push(new TakenStep(*this, before, {parameterState(), _randomSeed}));
    updateUndoRedoButtons();
    return foundation::Done{};
}

Status CIFImageEditorController::takeRecipe(const plugin::Recipe& recipe)
{
    for (const RecipeStep& step : recipe)
        if (const auto checked = checkedStep(step); !checked)
            return Error{checked.error()};
    takeStepsFrom(recipe, 0);
    return foundation::Done{};
}

// Each step works on what the one before it has made.
void CIFImageEditorController::takeStepsFrom(const plugin::Recipe& recipe, std::size_t first)
{
    if (first >= recipe.size() || !takeStep(recipe[first]) || first + 1 == recipe.size())
        return;
    applyButton();
    whenResultIsThere([=, this] { takeStepsFrom(recipe, first + 1); });
}

plugin::Recipe CIFImageEditorController::currentRecipe() const
{
    plugin::Recipe recipe;
    const auto add = [&](const RecipeStep& step) {
        // Nothing is left of what was there before.
        if (plugin::isGeneratorName(step.identifier))
            recipe.clear();
        recipe.push_back(step);
    };
    for (const plugin::EditRecord::Step& step : _record.steps)
        if (step.applied)
            add(*step.applied);
    // Right after it was applied, the picture has nothing more on it.
    if (_wanted || _stopped || _outputImage != _picture)
        if (const auto step = currentStep())
            add(*step);
    return recipe;
}
