// The editor window's life and its run: the base picture, the preview, seed, zoom and sizes.
#include "editor/CIFImageEditorController.h"

#include "editor/CIFImageEditorView.h"
#include "editor/Shared.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <QMainWindow>

#include <cmath>

CIFImageEditorController& CIFImageEditorController::sharedImageEditor()
{
    return editor::sharedInstance<CIFImageEditorController>();
}

CIFImageEditorController::CIFImageEditorController()
    : _runner(std::make_unique<editor::EffectRunner>())
{
}

CIFImageEditorController::~CIFImageEditorController() = default;

void CIFImageEditorController::awakeFromNib()
{
    if (std::floor(plugin::toolkitVersion()) < 824)
        return;
    _CIFPlugInInstance = std::make_unique<CIFMain>();
}

QMainWindow* CIFImageEditorController::window() const
{
    return _window;
}

void CIFImageEditorController::setWindow(QMainWindow* window)
{
    _window = window;
}

bool CIFImageEditorController::startEditorUseSelectionWithRect(const PictureRef&, bool, Rect)
{
    return false;
}

bool CIFImageEditorController::startGeneratorWithRect(const PictureRef&, Rect)
{
    return false;
}

bool CIFImageEditorController::isSelected() const
{
    return pictureView() && pictureView()->isSelected();
}

CIFImageEditorController::Rect CIFImageEditorController::getSelectedRect() const
{
    return pictureView() ? pictureView()->getSelection() : Rect();
}

plugin::EditRecord CIFImageEditorController::record() const
{
    return _record;
}

void CIFImageEditorController::setCenterPoint(Point point)
{
    _point1 = point;
}

void CIFImageEditorController::selectionDidChange() {}
void CIFImageEditorController::scrollWheelDidChange() {}

void CIFImageEditorController::initRandomSeedWithValue(std::uint32_t seed)
{
    _randomSeed = seed;
}

void CIFImageEditorController::applyFilterWithAttributes(const std::string&, const Dictionary&) {}
void CIFImageEditorController::applyCurrentFilter() {}
void CIFImageEditorController::updateUndoRedoButtons() {}
void CIFImageEditorController::restoreAttributes(const std::string&, const Dictionary&) {}
