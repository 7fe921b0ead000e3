// Zoom, selection, events and undo of the picture view. Its drawing is in another file.
#include "editor/CIFImageEditorView.h"

#include "editor/ColorWell.h"
#include "editor/Forms.h"
#include "editor/NamedImages.h"

#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QUndoCommand>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

using foundation::Dictionary;
using foundation::PictureRef;

namespace {

constexpr double kHitMargin = 6; // screen lengths
constexpr int kNotch = 120;      // of a wheel, as the toolkit counts

double finiteOrZero(double v)
{
    return std::isfinite(v) ? v : 0;
}

} // namespace

// Undoing one Generate is the same operation with old and new swapped.
class CIFImageEditorView::GenerateStep : public QUndoCommand {
public:
    struct Run {
        std::string name;
        Dictionary attributes;
    };
    GenerateStep(CIFImageEditorView& view, Run now, Run before)
        : _view(view), _now(std::move(now)), _before(std::move(before))
    {
    }
    void redo() override { _view.generate(_now.name, _now.attributes); }
    void undo() override { _view.generate(_before.name, _before.attributes); }

private:
    CIFImageEditorView& _view;
    Run _now, _before;
};

CIFImageEditorView::CIFImageEditorView(editor::PictureScrollView& scrollView)
    : QWidget(scrollView.viewport()), _scrollView(scrollView)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    // Takes the focus when clicked but is passed over by the Tab key.
    setFocusPolicy(Qt::ClickFocus);
    setContextMenuPolicy(Qt::PreventContextMenu);
    // Colours of the picture's effects may be see-through.
    editor::ColorPanel::sharedColorPanel().setShowsAlpha(true);
    connectPixels();
    // The step counts as done only after its redo, so the buttons follow the stack.
    connect(&_undoManager, &QUndoStack::indexChanged, this, [this] {
        if (editorController)
            editorController->updateUndoRedoButtons();
    });
    describe();
}

CIFImageEditorView::~CIFImageEditorView()
{
    // Clearing the stack tells no one any more.
    _undoManager.disconnect(this);
    disconnectPixels();
}

void CIFImageEditorView::setEditorController(editor::PictureViewController* controller)
{
    editorController = controller;
}

CIFImageEditorView::Size CIFImageEditorView::pictureSize() const
{
    return _picture ? _picture->size() : Size{};
}

void CIFImageEditorView::updateSize()
{
    _frameSize = pictureSize();
    _bounds.width = _frameSize.width / double(_scaleFactor);
    _bounds.height = _frameSize.height / double(_scaleFactor);
    _placing = true;
    _scrollView.setDocumentSize({_frameSize.width, _frameSize.height});
    _placing = false;
    _shownOrigin = deviceOrigin();
    update();
    sightMayHaveChanged();
}

void CIFImageEditorView::setScaleFactor(float scale)
{
    _scaleFactor =
        std::isnan(scale) ? kSmallestScale : std::clamp(scale, kSmallestScale, kLargestScale);
    const double s = double(_scaleFactor);
    const QSize content = _scrollView.contentSize();
    const Size picture = pictureSize();
    _frameSize = {std::max(picture.width * s, double(content.width())),
                  std::max(picture.height * s, double(content.height()))};
    _bounds = {0, 0, content.width() > picture.width * s ? content.width() / s : picture.width,
               content.height() > picture.height * s ? content.height() / s : picture.height};
    _placing = true;
    _scrollView.setDocumentSize({_frameSize.width, _frameSize.height});
    adobtPositionToCenter();
    describe();
}

void CIFImageEditorView::adobtPositionToCenter()
{
    const double s = double(_scaleFactor);
    const Size picture = pictureSize();
    const QSizeF clip = _scrollView.viewport()->size();
    const double shownWidth = std::min(_frameSize.width, picture.width * s);
    const double shownHeight = std::min(_frameSize.height, picture.height * s);
    _bounds.x = -std::max(clip.width() - shownWidth, 0.0) * 0.5 / s;
    _bounds.y = -std::max(clip.height() - shownHeight, 0.0) * 0.5 / s;

    // The lower left corner of what is to be visible, in the frame.
    Point corner;
    if (bSelected) {
        const Rect selection = getSelection();
        const QSizeF content = _scrollView.contentSize();
        corner = {(selection.midX() - _bounds.x) * s - content.width() * 0.5,
                  (selection.midY() - _bounds.y) * s - content.height() * 0.5};
    } else {
        corner = {std::abs(clip.width() - shownWidth) * 0.5,
                  std::abs(clip.height() - shownHeight) * 0.5};
    }
    _placing = true;
    _scrollView.setScrollPosition({corner.x, _frameSize.height - clip.height() - corner.y});
    _placing = false;
    _shownOrigin = deviceOrigin();
    update();
    sightMayHaveChanged();
}

void CIFImageEditorView::resizeEvent(QResizeEvent*)
{
    sightMayHaveChanged();
    // resizeWithOldSuperviewSize: — unless a new frame showed or hid a bar and goes on from there.
    if (!_placing)
        setScaleFactor(_scaleFactor);
}

// The one place where the toolkit's positions, y down, meet the picture's: the picture's upper left
// corner, in device pixels from the widget's. It lies on a whole pixel so that enlarged pixels do.
QPoint CIFImageEditorView::deviceOrigin() const
{
    const double s = double(_scaleFactor);
    const QSizeF clip = _scrollView.viewport()->size();
    const QPoint scrolled = _scrollView.scrollPosition();
    const double hiddenBelow = std::max(_frameSize.height - clip.height(), 0.0) - scrolled.y();
    const double left = (_picOffsetX - _bounds.x) * s - scrolled.x();
    const double bottom = (_picOffsetY - _bounds.y) * s - hiddenBelow;
    const double top = clip.height() - (bottom + pictureSize().height * s);
    // Pictures of absurd sizes begin far away; the way between two such places is a whole number
    // too.
    const auto limited = [](double v) { return std::clamp(v, -1e9, 1e9); };
    const QPointF origin = QPointF(left, top) * devicePixelRatioF();
    return QPointF(limited(origin.x()), limited(origin.y())).toPoint();
}

QPointF CIFImageEditorView::widgetFromPicture(Point position) const
{
    const double s = double(_scaleFactor);
    return QPointF(deviceOrigin()) / devicePixelRatioF() +
           QPointF(position.x * s, (pictureSize().height - position.y) * s);
}

CIFImageEditorView::Point CIFImageEditorView::pictureFromWidget(QPointF position) const
{
    const QPointF p = (position - QPointF(deviceOrigin()) / devicePixelRatioF()) * perScreenPoint();
    return {p.x(), pictureSize().height - p.y()};
}

QRectF CIFImageEditorView::widgetFromPicture(const Rect& rect) const
{
    return {widgetFromPicture(Point{rect.x, rect.y + rect.height}),
            QSizeF(rect.width, rect.height) * double(_scaleFactor)};
}

CIFImageEditorView::Rect CIFImageEditorView::visiblePart() const
{
    const Rect visible = visibleRect();
    const Size picture = pictureSize();
    return Rect::fromEdges(std::clamp(visible.x, 0.0, picture.width),
                           std::clamp(visible.y, 0.0, picture.height),
                           std::clamp(visible.right(), 0.0, picture.width),
                           std::clamp(visible.top(), 0.0, picture.height));
}

double CIFImageEditorView::density() const
{
    return double(_scaleFactor) * devicePixelRatioF();
}

void CIFImageEditorView::sightMayHaveChanged()
{
    // A zoom scrolls too: told when all of it is done.
    if (std::exchange(_tellsSight, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            _tellsSight = false;
            const Rect part = visiblePart();
            if (part == _toldPart && density() == _toldDensity)
                return;
            _toldPart = part;
            _toldDensity = density();
            Q_EMIT sightDidChange();
        },
        Qt::QueuedConnection);
}

CIFImageEditorView::Rect CIFImageEditorView::visibleRect() const
{
    const Point low = pictureFromWidget(QPointF(0, height()));
    const Point high = pictureFromWidget(QPointF(width(), 0));
    return Rect::fromEdges(low.x, low.y, high.x, high.y);
}

void CIFImageEditorView::clipViewDidScroll()
{
    if (_placing)
        return;
    const QPoint moved = deviceOrigin() - _shownOrigin;
    _shownOrigin = deviceOrigin();
    // What is on screen already moves along, when it moves by whole pixels of both kinds.
    const qreal ratio = devicePixelRatioF();
    // Tags and the handle of a split stay where they are.
    const bool moves = ratio == std::floor(ratio) && moved.x() % int(ratio) == 0 &&
                       moved.y() % int(ratio) == 0 && !isSplit() && !_showsOriginal;
    if (moves)
        scroll(moved.x() / int(ratio), moved.y() / int(ratio));
    else
        update();
    // At the border the handle comes and goes as a whole.
    if (_drawnCenter)
        update(handleArea(*_drawnCenter));
    sightMayHaveChanged();
    refreshCursor();
}

void CIFImageEditorView::scrollWheel(double deltaY)
{
    const float step = _scaleFactor <= 1 ? 0.025f : 0.2f;
    setScaleFactor(deltaY > 0 ? _scaleFactor + step : _scaleFactor - step);
    if (editorController)
        editorController->scrollWheelDidChange();
}

void CIFImageEditorView::rightMouseDown()
{
    if (!bSelected)
        return;
    if (bFitSelectionScale) {
        setScaleFactor(_origScaleFactor);
        bFitSelectionScale = false;
    } else {
        _origScaleFactor = _scaleFactor;
        const Rect selection = getSelection();
        const QSize content = _scrollView.contentSize();
        setScaleFactor(static_cast<float>(std::min(content.width() / (selection.width * 1.2),
                                                   content.height() / (selection.height * 1.2))));
        bFitSelectionScale = true;
    }
    if (editorController)
        editorController->scrollWheelDidChange();
}

void CIFImageEditorView::setSelection(const Rect& selection)
{
    const Rect before = getSelection();
    const bool was = bTouched;
    _selectionRect = {finiteOrZero(selection.x), finiteOrZero(selection.y),
                      finiteOrZero(selection.width), finiteOrZero(selection.height)};
    setTouched(true);
    if (was)
        updateAround(before, getSelection());
}

CIFImageEditorView::Rect CIFImageEditorView::getSelection() const
{
    return editor::normalizedSelection(_selectionRect, pictureSize());
}

void CIFImageEditorView::setTouched(bool touched)
{
    if (bTouched != touched)
        update();
    bTouched = touched;
    if (touched) {
        bSelected = true;
    } else {
        bSelected = false;
        bFitSelectionScale = false;
        _origScaleFactor = _scaleFactor;
    }
    if (!bSelected)
        _selectionRect = {};
    describe();
    centerMayHaveMoved();
    refreshCursor();
    if (editorController)
        editorController->selectionDidChange();
}

void CIFImageEditorView::mouseDown(Point at)
{
    if (editorController && editorController->filterName().starts_with("GLIF_"))
        return;
    _bMouseDown = true;
    currSideResizing = 0;
    _pickPoint = at;
    const Size picture = pictureSize();
    const editor::SelectionHit hit =
        editor::hitSelection(at, _selectionRect, picture, kHitMargin * perScreenPoint());
    if (hit.held) {
        bMoved = true;
        _moveRect = _selectionRect;
        currSideResizing = hit.sides;
    } else {
        setTouched(false);
    }
    _pickPoint = {std::clamp(at.x, 0.0, picture.width), std::clamp(at.y, 0.0, picture.height)};
    if (!bTouched && !bSelected) {
        _selectionRect.x = _pickPoint.x;
        _selectionRect.y = _pickPoint.y;
    }
    if (_centerHandle && centerFollowsMouse())
        _centerHandle = _pickPoint;
    centerMayHaveMoved();
    if (editorController && !editorController->filterName().empty()) {
        editorController->applyCurrentFilter();
        bFilterProcess = true;
    }
    refreshCursor();
}

void CIFImageEditorView::mouseDragged(Point at)
{
    if (!selects()) {
        if (!bFilterProcess)
            return;
        moveCenterTo(at);
        return;
    }
    const Rect before = getSelection();
    const bool was = bTouched;
    const Size picture = pictureSize();
    const Point p = {std::clamp(at.x, 0.0, picture.width), std::clamp(at.y, 0.0, picture.height)};
    if (bMoved) {
        _selectionRect = editor::draggedSelection(_moveRect, currSideResizing, p.x - _pickPoint.x,
                                                  p.y - _pickPoint.y);
        bFitSelectionScale = false;
    }
    bTouched = bSelected = true;
    if (!bMoved) {
        _selectionRect.width = p.x - _selectionRect.x;
        _selectionRect.height = p.y - _selectionRect.y;
    }
    if (bFixSelection) {
        _fixSelectionRectScale = _scaleFactor;
        _fixSelectionRect = _selectionRect;
    }
    if (was)
        updateAround(before, getSelection());
    else
        update();
}

void CIFImageEditorView::mouseUp()
{
    const Rect before = getSelection();
    if (bMoved)
        _selectionRect = before;
    bMoved = false;
    bFilterProcess = _bMouseDown = false;
    setTouched(bSelected);
}

void CIFImageEditorView::showEvent(QShowEvent*)
{
    sightMayHaveChanged();
}

void CIFImageEditorView::hideEvent(QHideEvent*)
{
    // The release that ends a drag will not come.
    bMoved = bFilterProcess = _bMouseDown = false;
    _panning.reset();
    _splitDrag.reset();
    _mouse.reset();
}

void CIFImageEditorView::moveSelectionBy(double dx, double dy)
{
    const Rect before = getSelection();
    _selectionRect = {before.x + dx, before.y + dy, before.width, before.height};
    _selectionRect = getSelection();
    bFitSelectionScale = false;
    updateAround(before, _selectionRect);
    setTouched(true);
}

void CIFImageEditorView::generate(const std::string& name, const Dictionary& attributes)
{
    if (!editorController)
        return;
    const foundation::Number* const seed = attributes["GLIFRandomSeed"].number();
    editorController->initRandomSeedWithValue(seed ? seed->unsignedIntValue() : 0);
    editorController->restoreAttributes(name, attributes);
    editorController->applyFilterWithAttributes(name, attributes);
    update();
}

void CIFImageEditorView::setGeneratorWithAttrOldGeneratorWithAttr(const std::string& name,
                                                                  const Dictionary* attributes,
                                                                  const std::string& oldName,
                                                                  const Dictionary* oldAttributes)
{
    if (!name.empty() && attributes && !oldName.empty() && oldAttributes) {
        _undoManager.push(new GenerateStep(*this, {name, *attributes}, {oldName, *oldAttributes}));
        return;
    }
    generate(name, attributes ? *attributes : Dictionary());
    if (editorController)
        editorController->updateUndoRedoButtons();
}

std::vector<editor::CursorRect> CIFImageEditorView::resetCursorRects() const
{
    constexpr int kHorizontal = 0, kBox = 4, kArrow = 7, kOpenHand = 8, kClosedHand = 9,
                  kTarget = 11;
    const Rect visible = visibleRect();
    const auto fromWidget = [this](const QRectF& r) {
        const Point low = pictureFromWidget(r.bottomLeft()), high = pictureFromWidget(r.topRight());
        return Rect::fromEdges(low.x, low.y, high.x, high.y);
    };
    std::vector<editor::CursorRect> cursors;
    if (bSelected)
        cursors = editor::selectionCursors(getSelection(), visible, kHitMargin * perScreenPoint(),
                                           _bMouseDown);
    else if (selects())
        cursors = {{visible, kBox}};
    else
        cursors = {{visible, editorController->pointingMode() == 2 ? kTarget : kArrow}};
    if (const auto center = shownCenter(); center && centerFollowsMouse())
        cursors.push_back({fromWidget(handleArea(*center)), _bMouseDown ? kClosedHand : kOpenHand});
    for (const QRectF& area : splitHitAreas())
        cursors.push_back({fromWidget(area), kHorizontal});
    return cursors;
}

int CIFImageEditorView::cursorTypeAt(Point at) const
{
    return editor::cursorTypeAt(resetCursorRects(), at);
}

void CIFImageEditorView::refreshCursor()
{
    constexpr int kClosedHand = 9;
    if (!_mouse && !_panning)
        return;
    const int type = _panning ? kClosedHand : cursorTypeAt(*_mouse);
    if (type != std::exchange(_cursorType, type))
        setCursor(editor::cursorFromType(type));
}

void CIFImageEditorView::mousePressEvent(QMouseEvent* event)
{
    _mouse = pictureFromWidget(event->position());
    if (event->button() == Qt::LeftButton) {
        if (!beginSplitDrag(event->position()))
            mouseDown(*_mouse);
    } else if (event->button() == Qt::RightButton) {
        rightMouseDown();
    } else if (event->button() == Qt::MiddleButton) {
        _panning = _scrollView.scrollPosition() + event->position().toPoint();
        refreshCursor();
    } else {
        event->ignore();
    }
}

void CIFImageEditorView::mouseMoveEvent(QMouseEvent* event)
{
    if (_panning) {
        _scrollView.setScrollPosition(*_panning - event->position().toPoint());
        return;
    }
    _mouse = pictureFromWidget(event->position());
    if (_splitDrag) {
        const Point line = pictureFromWidget(event->position() + QPointF(*_splitDrag, 0));
        setSplit(line.x / pictureSize().width);
        return;
    }
    if (event->buttons() & Qt::LeftButton)
        mouseDragged(*_mouse);
    // While a side is dragged the pointer may leave it; the cursor stays what it was on it.
    if (!_bMouseDown)
        refreshCursor();
}

void CIFImageEditorView::mouseReleaseEvent(QMouseEvent* event)
{
    _mouse = pictureFromWidget(event->position());
    if (event->button() == Qt::LeftButton && _splitDrag)
        _splitDrag.reset();
    else if (event->button() == Qt::LeftButton)
        mouseUp();
    else if (event->button() == Qt::MiddleButton)
        _panning.reset();
    else if (event->button() != Qt::RightButton)
        event->ignore();
    refreshCursor();
}

void CIFImageEditorView::wheelEvent(QWheelEvent* event)
{
    event->accept();
    const QPoint delta = event->angleDelta();
    // Fingers touching or leaving a pad turn no wheel, and zooming does not coast.
    const Qt::ScrollPhase phase = event->phase();
    if (phase == Qt::ScrollMomentum || (phase != Qt::NoScrollPhase && delta.isNull()))
        return;
    const int size = std::max(std::abs(delta.x()), std::abs(delta.y()));
    if (size == 0 || size >= kNotch) {
        _wheelRest = 0;
        scrollWheel(delta.y());
        return;
    }
    // Finer devices send parts of a notch.
    _wheelRest += delta.y();
    if (std::abs(_wheelRest) >= kNotch) {
        const int turned = std::exchange(_wheelRest, _wheelRest % kNotch);
        scrollWheel(turned);
    }
}

void CIFImageEditorView::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool shifted = modifiers == Qt::ShiftModifier;
    const double step = shifted ? 10 : 1;
    // Keys that are not for the selection are the scroll view's and the window's.
    if (bSelected && !_bMouseDown && (modifiers == Qt::NoModifier || shifted)) {
        const int key = event->key();
        if (key == Qt::Key_Escape && !shifted)
            return setTouched(false);
        if (selects() && key == Qt::Key_Left)
            return moveSelectionBy(-step, 0);
        if (selects() && key == Qt::Key_Right)
            return moveSelectionBy(step, 0);
        if (selects() && key == Qt::Key_Up)
            return moveSelectionBy(0, step);
        if (selects() && key == Qt::Key_Down)
            return moveSelectionBy(0, -step);
    }
    const auto center = shownCenter();
    if (!bSelected && center && centerFollowsMouse() && (modifiers == Qt::NoModifier || shifted)) {
        double dx = 0, dy = 0;
        switch (event->key()) {
        case Qt::Key_Left:
            dx = -step;
            break;
        case Qt::Key_Right:
            dx = step;
            break;
        case Qt::Key_Up:
            dy = step;
            break;
        case Qt::Key_Down:
            dy = -step;
            break;
        default:
            break;
        }
        if (dx != 0 || dy != 0) {
            // Keys do not take it out of the picture, but leave it where a drag took it.
            const auto within = [](double from, double by, double size) {
                return std::clamp(from + by, std::min(from, 0.0), std::max(from, size));
            };
            const Size picture = pictureSize();
            return moveCenterTo(
                {within(center->x, dx, picture.width), within(center->y, dy, picture.height)});
        }
    }
    QWidget::keyPressEvent(event);
}

bool CIFImageEditorView::event(QEvent* event)
{
    if (event->type() == QEvent::NativeGesture) {
        auto* const gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            setScaleFactor(_scaleFactor * static_cast<float>(1 + gesture->value()));
            if (editorController)
                editorController->scrollWheelDidChange();
            return true;
        }
    }
    if (event->type() == QEvent::Leave)
        _mouse.reset();
    if (event->type() == QEvent::ScreenChangeInternal)
        sightMayHaveChanged();
    return QWidget::event(event);
}

void CIFImageEditorView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        describe();
    QWidget::changeEvent(event);
}

void CIFImageEditorView::describe()
{
    const auto number = [](double v) { return QLocale().toString(v, 'g', 6); };
    const Size size = pictureSize();
    QString text = editor::localizedString("%1 by %2 points, zoom %3 percent")
                       .arg(number(size.width), number(size.height),
                            number(std::round(double(_scaleFactor) * 1000) / 10));
    if (bSelected) {
        const Rect r = getSelection();
        text += QStringLiteral("; ") +
                editor::localizedString("selection of %1 by %2 at %3, %4")
                    .arg(number(r.width), number(r.height), number(r.x), number(r.y));
    }
    if (const auto center = shownCenter())
        text +=
            QStringLiteral("; ") +
            editor::localizedString("center at %1, %2").arg(number(center->x), number(center->y));
    if (_original && _showsOriginal)
        text += QStringLiteral("; ") + editor::localizedString("showing the original");
    else if (isSplit())
        text += QStringLiteral("; ") +
                editor::localizedString("original left of %1 percent of the width")
                    .arg(number(std::round(*_split * 1000) / 10));
    setAccessibleName(editor::localizedString("Picture"));
    setAccessibleDescription(text);
}
