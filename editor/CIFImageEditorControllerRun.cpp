// What happens while the window is up: effects applied and shown, the base picture, seed, zoom and
// sizes.
#include "editor/CIFImageEditorController.h"

#include "editor/CIFImageEditorView.h"
#include "editor/CIFImageInfoController.h"
#include "editor/Forms.h"
#include "editor/PictureScrollView.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Log.h"
#include "plugin/CIFMain.h"
#include "plugin/Resizing.h"
#include "plugin/StartingValues.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLocale>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QSlider>
#include <QUndoCommand>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using drawing::Picture;
using foundation::DictionaryRef;
using foundation::PictureRef;
using foundation::Size;

namespace {

// The picture in another size. Its pixels are made where they are first needed, which is not on the
// window's thread.
class ResizedPicture final : public drawing::DeferredSource {
public:
    static PictureRef of(const PictureRef& picture, int width, int height, bool asThumbnail)
    {
        std::shared_ptr<ResizedPicture> resized(new ResizedPicture);
        resized->_picture = picture;
        resized->_width = width;
        resized->_height = height;
        resized->_asThumbnail = asThumbnail;
        return Picture::fromDeferred(resized, {double(width), double(height)});
    }
    int pixelsWide() const override { return _width; }
    int pixelsHigh() const override { return _height; }
    imaging::BitmapRef render() const override
    {
        const auto resized = plugin::resized(_picture, _width, _height, _asThumbnail);
        if (!resized) {
            foundation::log(resized.error());
            return nullptr;
        }
        return (*resized)->bitmap();
    }

private:
    PictureRef _picture;
    int _width = 0, _height = 0;
    bool _asThumbnail = false;
};

// What the window holds of a picture at the least: the picture, an effect's result and the numbers
// between them.
constexpr int kBytesPerPixel = 24;

int wholePixels(double side)
{
    return foundation::truncToInt(std::ceil(side - 1e-6));
}

void addStep(plugin::EditRecord& record, plugin::RecipeStep step, Size size)
{
    if (plugin::isGeneratorName(step.identifier)) {
        // A new picture: of what there was before, only the size is left.
        record.steps.clear();
        record.size = size;
    }
    if (record.steps.empty() || record.steps.back().applied)
        record.steps.emplace_back();
    record.steps.back().applied = std::move(step);
}

} // namespace

// The base picture was replaced: by the effect on it, or by one of another size.
class CIFImageEditorController::BaseStep final : public QUndoCommand {
public:
    struct Base {
        PictureRef picture;
        plugin::EditRecord record;
    };
    enum class Kind { Applied, Resized };

    BaseStep(CIFImageEditorController& controller, Kind kind, Base base)
        : _controller(controller), _kind(kind), _before{controller._picture, controller._record},
          _now(std::move(base)), _applied(controller.parameterState())
    {
        setText(kind == Kind::Applied ? editor::localizedString("Apply")
                                      : editor::localizedString("Image Size"));
    }
    void redo() override { makeBase(_now, _kind == Kind::Applied); }
    void undo() override { makeBase(_before, false); }

private:
    void makeBase(const Base& base, bool isShownAsItIs)
    {
        _controller.keepPointInPlace(_controller._picture->size(), base.picture->size());
        _controller.setPictureOfRun(base.picture);
        _controller._record = base.record;
        if (isShownAsItIs)
            _controller.showResult(base.picture);
        else if (_kind == Kind::Resized)
            _controller.baseDidChangeSize();
        else
            // Another entry may have been chosen since.
            _controller.setParameterState(_applied);
    }

    CIFImageEditorController& _controller;
    Kind _kind;
    Base _before, _now;
    ParameterState _applied;
};

// Everything that belongs to the old base picture goes with it.
void CIFImageEditorController::setPictureOfRun(const PictureRef& picture)
{
    _picture = picture;
    _wanted.reset();
    _stopped.reset();
    _runner->stop();
    if (!picture) {
        _runner->reset();
        _shown.reset();
        _shownResult = nullptr;
    }
    if (CIFImageEditorView* view = pictureView())
        view->setOriginal(picture);
}

// The picked point stays where it is in the picture that is stretched, the middle in the middle.
void CIFImageEditorController::keepPointInPlace(Size before, Size now)
{
    CIFImageEditorView* view = pictureView();
    if (!view || before == now || !(before.width > 0) || !(before.height > 0))
        return;
    const Point picked = view->pickPoint();
    view->setPickPoint(
        {picked.x * (now.width / before.width), picked.y * (now.height / before.height)});
    setCenterPoint(view->pickPoint());
    // Not by the user.
    _knownState.center = _point1;
}

void CIFImageEditorController::setCenterPoint(Point point)
{
    // Kept in single precision.
    _point1 = {double(static_cast<float>(point.x)), double(static_cast<float>(point.y))};
}

void CIFImageEditorController::selectionDidChange()
{
    updateControls();
    CIFImageEditorView* view = pictureView();
    if (!view)
        return;
    if (view->isSelected())
        _filtersAttrData.set("Crop", view->getSelection());
    else if (_CIFFilterName == "Crop")
        _filtersAttrData.remove("Crop");
    setCenterPoint(view->pickPoint());
}

// The one sequence of random numbers belongs to the thread that effects run on: it is seeded there,
// immediately before each generator, so that nothing can draw from it in between.
void CIFImageEditorController::initRandomSeedWithValue(std::uint32_t seed)
{
    _randomSeed = seed;
}

void CIFImageEditorController::applyCurrentFilter()
{
    centerMayHaveMoved();
    applyFilterWithAttributes(_CIFFilterName, _CIFAttributes);
}

void CIFImageEditorController::applyFilterWithAttributes(const std::string& identifier,
                                                         const Dictionary&)
{
    if (_CIFFilterName.empty() || !_CIFPlugInInstance)
        return;
    Q_EMIT effectDidChange();
    const DictionaryRef description = _CIFPlugInInstance->CIFQueryAttributesForFilter(identifier);
    const auto takes = [&](const char* key) { return description && description->contains(key); };
    if (takes("inputCenter"))
        _CIFAttributes.set("CIFinputCenter", _point1);
    const auto lacks = [this](const PictureRef& picture, const char* line) {
        if (picture)
            return false;
        foundation::log(line);
        showStatus(editor::localizedString("The effect lacks a picture that it needs"));
        return true;
    };
    if (takes("inputTexture")) {
        const PictureRef texture = textureImage();
        if (lacks(texture, "can't locate glass texture"))
            return;
        _CIFAttributes.set("CIFinputTexture", texture);
    }
    if (takes("inputShadingImage")) {
        const PictureRef material = shadedMaterialImage();
        if (lacks(material, "can't locate shading material"))
            return;
        _CIFAttributes.set("CIFinputShadingImage", material);
    }
    _CIFAttributes.set("GLIFRandomSeed", _randomSeed);
    if (_CIFFilterName == "GLIF_Dabs")
        _CIFAttributes.set("GLIFBrush", brushImage());
    // Under "Crop" lies the selection.
    if (_CIFFilterName != "Crop")
        _filtersAttrData.set(_CIFFilterName, _CIFAttributes);

    if (CIFImageEditorView* view = pictureView())
        view->setCenterHandle(_editMode == 1 && takes("inputCenter") ? std::optional(_point1)
                                                                     : std::nullopt);
    if (_picture && _editMode == 1) {
        const bool generator = plugin::isGeneratorName(_CIFFilterName);
        wantResult({_CIFFilterName, _CIFAttributes, _picture, generator ? _randomSeed : 0});
    } else {
        _wanted.reset();
        _stopped.reset();
        _runner->stop();
        showResult(_picture);
        if (!_picture)
            return;
    }
    updateControls();
}

void CIFImageEditorController::wantResult(const editor::Effect& effect)
{
    if (_wanted == effect)
        return;
    _stopped.reset();
    if (_shown == effect) {
        if (std::exchange(_wanted, std::nullopt))
            _runner->stop();
        _shownStep = currentStep();
        showResult(_shownResult);
        return;
    }
    if (!_isPreviewOn && _whenResultIsThere.empty()) {
        // Until somebody needs it.
        if (std::exchange(_wanted, std::nullopt))
            _runner->stop();
        _stopped = effect;
        return;
    }
    CIFImageEditorView* view = pictureView();
    const bool showsResultOfBase =
        view && _shown && _shown->picture == effect.picture && view->picture() == _shownResult;
    if (view && !showsResultOfBase &&
        (!view->picture() || view->picture()->size() != effect.picture->size())) {
        // Parts of the result are shown over a picture of its size.
        view->setPicture(effect.picture);
        fitScaleToPicture();
    }
    _wanted = effect;
    sightDidChange();
    _runner->run(effect);
}

void CIFImageEditorController::sightDidChange()
{
    CIFImageEditorView* view = pictureView();
    if (view && view->picture())
        _runner->setSight({view->visiblePart(), view->density()});
}

void CIFImageEditorController::partDidArrive(const imaging::BitmapRef& pixels, const Rect& rect)
{
    // Also of values that newer ones are replacing: the picture follows a control while it moves.
    if (_wanted && pictureView())
        pictureView()->showPixelsInRect(pixels, rect);
}

void CIFImageEditorController::resultDidArrive(const editor::Effect& effect,
                                               const PictureRef& result)
{
    if (_wanted != effect)
        return;
    _wanted.reset();
    _shown = effect;
    _shownResult = result ? result : effect.picture;
    _shownStep = currentStep();
    showResult(_shownResult);
}

void CIFImageEditorController::showResult(const PictureRef& result)
{
    CIFImageEditorView* view = pictureView();
    if (!result) {
        if (view)
            view->update();
    } else {
        const Size before = view && view->picture() ? view->picture()->size() : Size();
        applyPicture(result);
        if (before != result->size())
            fitScaleToPicture();
    }
    performWaiting();
}

void CIFImageEditorController::applyPicture(const PictureRef& picture)
{
    if (CIFImageEditorView* view = pictureView())
        view->setPicture(picture);
    _outputImage = picture;
}

void CIFImageEditorController::whenResultIsThere(std::function<void()> action)
{
    _whenResultIsThere.push_back(std::move(action));
    if (_stopped)
        wantResult(*std::exchange(_stopped, std::nullopt));
    performWaiting();
}

void CIFImageEditorController::performWaiting()
{
    // An action may want another result, which the next ones then wait for.
    while (!_wanted && !_whenResultIsThere.empty()) {
        const std::function<void()> action = std::move(_whenResultIsThere.front());
        _whenResultIsThere.pop_front();
        action();
    }
}

void CIFImageEditorController::stopResult()
{
    _runner->stop();
    runnerDidStop();
}

// The runner rests without the result: the user has stopped it.
void CIFImageEditorController::runnerDidStop()
{
    if (!_wanted || _runner->isBusy())
        return;
    _stopped = std::exchange(_wanted, std::nullopt);
    _whenResultIsThere.clear();
    holdWindow(false);
    // Its parts go; what is shown is what would be handed back.
    if (CIFImageEditorView* view = pictureView(); view && _outputImage) {
        const Size before = view->picture() ? view->picture()->size() : Size();
        view->setPicture(_outputImage);
        if (before != _outputImage->size())
            fitScaleToPicture();
    }
}

plugin::EditRecord CIFImageEditorController::recordWithCurrentStep() const
{
    plugin::EditRecord record = _record;
    if (_outputImage && _outputImage != _picture && _shownStep)
        addStep(record, *_shownStep, _outputImage->size());
    return record;
}

void CIFImageEditorController::applyButton()
{
    if (_isHeld)
        return;
    // What is applied is what was chosen when the button was pressed.
    holdWindow(_wanted || _stopped);
    whenResultIsThere([this] {
        holdWindow(false);
        const PictureRef shown = pictureView() ? pictureView()->picture() : nullptr;
        if (!shown) {
            foundation::log("no image to apply");
            return;
        }
        if (shown == _picture)
            return;
        pictureView()->undoManager().push(
            new BaseStep(*this, BaseStep::Kind::Applied, {shown, recordWithCurrentStep()}));
    });
}

void CIFImageEditorController::generateButton()
{
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    generateWithSeed(static_cast<std::uint32_t>(now % 1'000'000));
}

void CIFImageEditorController::generateWithSeed(std::uint32_t seed)
{
    if (!pictureView() || !plugin::isGeneratorName(_CIFFilterName))
        return;
    // What is seen now, also after values were changed or a Generate undone: that is what undoing
    // this one brings back.
    _CIFOldFilterName = _CIFFilterName;
    _CIFOldAttributes = _CIFAttributes;
    _CIFOldAttributes->set("GLIFRandomSeed", _randomSeed);
    _CIFAttributes.set("GLIFRandomSeed", seed);
    const Dictionary attributes = _CIFAttributes;
    pictureView()->setGeneratorWithAttrOldGeneratorWithAttr(_CIFFilterName, &attributes,
                                                            _CIFFilterName, &*_CIFOldAttributes);
    _CIFOldFilterName = _CIFFilterName;
    _CIFOldAttributes = _CIFAttributes;
}

void CIFImageEditorController::restoreAttributes(const std::string& identifier,
                                                 const Dictionary& attributes)
{
    if (identifier != _CIFFilterName) {
        const bool wasRestoring = std::exchange(_isRestoring, true);
        chooseEntry(identifier);
        _isRestoring = wasRestoring;
    }
    if (identifier == _CIFFilterName)
        _CIFAttributes = attributes;
}

void CIFImageEditorController::undoButton()
{
    if (!pictureView())
        return;
    pictureView()->undoManager().undo();
    updateUndoRedoButtons();
}

void CIFImageEditorController::redoButton()
{
    if (!pictureView())
        return;
    pictureView()->undoManager().redo();
    updateUndoRedoButtons();
}

void CIFImageEditorController::updateUndoRedoButtons()
{
    if (!pictureView())
        return;
    const QUndoStack& steps = pictureView()->undoManager();
    if (_outlets._undoButton)
        _outlets._undoButton->setEnabled(steps.canUndo() && !_isHeld);
    if (_outlets._redoButton)
        _outlets._redoButton->setEnabled(steps.canRedo() && !_isHeld);
}

void CIFImageEditorController::fitScaleToPicture()
{
    CIFImageEditorView* view = pictureView();
    if (!view || !view->picture() || !_outlets._scrollView)
        return;
    const Size picture = view->picture()->size();
    if (!(picture.width > 0) || !(picture.height > 0))
        return;
    const QSize content = _outlets._scrollView->contentSize();
    view->setScaleFactor(static_cast<float>(
        std::min(0.8 * content.width() / picture.width, 0.8 * content.height() / picture.height)));
    showScale((double(view->getScaleFactor()) - 1) * 8);
}

void CIFImageEditorController::showScale(double sliderValue)
{
    if (QSlider* slider = _outlets._scaleSlider) {
        const QSignalBlocker fromUser(slider);
        slider->setValue(foundation::truncToInt(std::round(sliderValue * 100)));
    }
    if (_outlets._scaleLabel && pictureView()) {
        const double percent = double(pictureView()->getScaleFactor()) * 100;
        // Small steps of small scales show.
        const bool isWhole = percent >= 10 || std::abs(percent - std::round(percent)) < 0.05;
        _outlets._scaleLabel->setText(
            editor::localizedString("%1%").arg(QLocale().toString(percent, 'f', isWhole ? 0 : 1)));
    }
}

void CIFImageEditorController::onScaleSlider(double value)
{
    if (!pictureView() || std::isnan(value))
        return;
    pictureView()->setScaleFactor(
        static_cast<float>(value > 0 ? 1 + value / 8 : 1 / (1 + std::abs(value) / 8)));
    showScale(value);
}

void CIFImageEditorController::scrollWheelDidChange()
{
    if (!pictureView())
        return;
    const double scale = double(pictureView()->getScaleFactor());
    showScale(scale >= 1 ? (scale - 1) * 8 : -(1 / scale - 1) * 8);
}

void CIFImageEditorController::changeGeneratorImageSize()
{
    if (!_picture || !_window)
        return;
    const bool generators = selectedTab() == QLatin1String("generators");
    if (!generators && selectedTab() != QLatin1String("filters"))
        return;
    const Size size = generators
                          ? _picture->size()
                          : Size{double(_picture->pixelsWide()), double(_picture->pixelsHigh())};
    CIFImageInfoController::sharedImageInfoTool()
        .sheetChangeSizeConstrainProportionsMakeThumbnailDisableFitToSizeModalDelegateDidEndSelector(
            size, !generators, false, generators, _window,
            [=, this, guard = QPointer(this)](QWidget*, int returnCode, void*) {
                // The sheet is closed after the run that it was opened in.
                if (!guard || !_modalLoop)
                    return;
                if (generators)
                    generatorChangeSizeSheetDidEnd(returnCode);
                else
                    imageChangeSizeSheetDidEnd(returnCode);
            });
}

void CIFImageEditorController::generatorChangeSizeSheetDidEnd(int)
{
    const Size size = CIFImageInfoController::sharedImageInfoTool().imageSize();
    plugin::EditRecord record;
    record.size = size;
    changeBase(_picture && _picture->size() == size ? _picture : Picture::blank(size), record);
}

void CIFImageEditorController::imageChangeSizeSheetDidEnd(int)
{
    const auto& sheet = CIFImageInfoController::sharedImageInfoTool();
    const int width = wholePixels(sheet.imageSize().width);
    const int height = wholePixels(sheet.imageSize().height);
    const bool asThumbnail = sheet.isMakeThumbnail();
    if (!_picture)
        return;
    const bool isSame = _picture->size() == Size{double(width), double(height)} &&
                        _picture->pixelsWide() == width && _picture->pixelsHigh() == height;
    if (isSame) {
        changeBase(_picture, _record);
        return;
    }
    plugin::EditRecord record = _record;
    record.steps.push_back({Size{double(width), double(height)}, asThumbnail, std::nullopt});
    changeBase(ResizedPicture::of(_picture, width, height, asThumbnail), std::move(record));
}

void CIFImageEditorController::changeBase(const PictureRef& picture, plugin::EditRecord record)
{
    if (picture == _picture) {
        baseDidChangeSize();
        return;
    }
    const auto fits =
        plugin::fitsMemory(picture->size().width, picture->size().height, kBytesPerPixel);
    if (!fits) {
        foundation::log(fits.error());
        showStatus(
            editor::localizedString("There is not enough memory for a picture of that size."));
        return;
    }
    showStatus({});
    pictureView()->undoManager().push(
        new BaseStep(*this, BaseStep::Kind::Resized, {picture, std::move(record)}));
}

void CIFImageEditorController::baseDidChangeSize()
{
    CIFImageEditorView* view = pictureView();
    if (view && selectedTab() == QLatin1String("filters"))
        view->adobtPositionToCenter();
    _filtersAttrData.remove("Crop");
    if (view && selectedTab() == QLatin1String("filters"))
        view->setTouched(false);
    applyCurrentFilter();
}
