// The zoomable view of the picture in the editor window, with the selection on it.
#pragma once

#include "editor/PictureScrollView.h"
#include "editor/PictureViewController.h"
#include "editor/PixelDrawing.h"
#include "editor/Selection.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Value.h"

#include <QImage>
#include <QUndoStack>
#include <QWidget>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Positions are the picture's: points, y up, (0, 0) at its lower left corner. "Screen" lengths are
// the toolkit's device-independent pixels.
//
// The view has a frame, the size of what is scrolled over in screen lengths, and bounds, the same
// in picture points. The widget itself covers just the visible part of the frame.
class CIFImageEditorView : public QWidget {
    Q_OBJECT

public:
    using PictureRef = foundation::PictureRef;
    using Point = foundation::Point;
    using Rect = foundation::Rect;
    using Size = foundation::Size;

    static constexpr float kSmallestScale = 0.02f, kLargestScale = 80;

    explicit CIFImageEditorView(editor::PictureScrollView& scrollView);
    ~CIFImageEditorView() override;

    // Not owned; may be null, and is to outlive the view otherwise. Without one the view selects.
    void setEditorController(editor::PictureViewController* controller);
    editor::PictureViewController* controller() const { return editorController; }

    // setPicture: — the picture to show; null for none. Never waits: pixels that are not made yet,
    // and smaller copies for small zooms, are made on another thread. Until they are there, a
    // picture of the same size that was shown before stays, and otherwise what there is of the new
    // one is shown.
    void setPicture(const foundation::PictureRef& picture);
    const foundation::PictureRef& picture() const { return _picture; }
    // Shows these pixels over a rectangle of the picture, until the pixels of a picture that is set
    // later (the same one again, perhaps) are shown or later ones cover them. Any density; fewer
    // pixels than the picture has there are interpolated. At once; 8-bit pixels are not copied, and
    // only the latest dozen that do not cover each other are kept.
    void showPixelsInRect(const imaging::BitmapRef& pixels, const Rect& rect);
    // The picture's own pixels are all there and what is shown is final.
    bool showsFinalPixels() const;

    // The frame becomes the picture's size; for a picture of another size, before the zoom is set.
    void updateSize();
    // setScaleFactor: — clamped to 0.02…80; not-a-number is the smallest. Recentres.
    void setScaleFactor(float scale);
    float getScaleFactor() const { return _scaleFactor; }
    // Brings the middle of the selection, or of the picture without one, to the middle of what is
    // visible; a picture that is smaller lies in the middle.
    void adobtPositionToCenter(); // sic

    // setSelection: — as given (width and height may be negative); what is not finite counts as 0.
    void setSelection(const Rect& selection);
    // With positive width and height, moved into the picture.
    Rect getSelection() const;
    bool isSelected() const { return bSelected; }
    bool isSelectionHFlipped() const { return _selectionRect.width < 0; }
    bool isSelectionVFlipped() const { return _selectionRect.height < 0; }
    // setTouched: — true: there is a selection; false: there is none.
    void setTouched(bool touched);
    Point pickPoint() const { return _pickPoint; }
    // Without telling the controller.
    void setPickPoint(Point point);

    // What the effect is applied to, for comparing; null for nothing to compare with. Neither way
    // of comparing applies anything, and pixels made for either picture serve both. It is shown in
    // place of the picture: one of another size as large as fits, in its middle, never distorted.
    void setOriginal(const PictureRef& original);
    const PictureRef& original() const { return _original; }
    // Shows the original instead of the picture, as soon as it has pixels.
    void setShowsOriginal(bool shows);
    bool showsOriginal() const { return _showsOriginal; }
    // Shows the original on the left of a line that the user can drag, whatever the reading
    // direction, at this fraction (0…1) of the picture's width; nothing for no line.
    void setSplit(std::optional<double> fraction);
    std::optional<double> split() const { return _split; }
    // A handle over the centre of the current entry, in picture points. With nothing, a preview of
    // an entry whose pointing mode is 2 has it at the pick point; others have none. It follows the
    // user's drags and arrow keys by itself.
    void setCenterHandle(std::optional<Point> center);
    std::optional<Point> centerHandle() const { return _centerHandle; }
    // Where the handle is now, whichever way; nothing for none.
    std::optional<Point> shownCenter() const;

    // What is visible of the picture, and how many device pixels show one of its points.
    Rect visiblePart() const;
    double density() const;

    // setGenerator:withAttr:oldGenerator:withAttr: — seeds from the attributes' "GLIFRandomSeed"
    // and applies through the controller. One step for undo when all four are there (names not
    // empty, dictionaries not null); otherwise it cannot be undone.
    void setGeneratorWithAttrOldGeneratorWithAttr(const std::string& name,
                                                  const foundation::Dictionary* attributes,
                                                  const std::string& oldName,
                                                  const foundation::Dictionary* oldAttributes);
    QUndoStack& undoManager() { return _undoManager; }

    // The events, in picture coordinates. Presses on the line of the split are not among them.
    void mouseDown(Point at);
    void mouseDragged(Point at);
    void mouseUp();
    void rightMouseDown();
    // One step in or out, whatever the size of the delta; 0 is out.
    void scrollWheel(double deltaY);
    // The cursors as they lie over the view now; later ones above earlier ones.
    std::vector<editor::CursorRect> resetCursorRects() const;
    // The type for cursorFromType at a position; the arrow outside the visible part.
    int cursorTypeAt(Point at) const;

    // Screen lengths, lower left corner at (0, 0).
    Rect frame() const { return {0, 0, _frameSize.width, _frameSize.height}; }
    // Picture points.
    Rect bounds() const { return _bounds; }
    Rect visibleRect() const;
    // Between positions in the widget and in the picture.
    Point pictureFromWidget(QPointF position) const;
    QPointF widgetFromPicture(Point position) const;
    QRectF widgetFromPicture(const Rect& rect) const;

    // By the scroll view, after its bars moved.
    void clipViewDidScroll();

Q_SIGNALS:
    // visiblePart() or density() changed; at most once in each turn of the event loop.
    void sightDidChange();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    class GenerateStep;
    struct Relay;
    struct Pixels;
    // Pixels shown over a rectangle of the picture.
    struct Layer {
        PictureRef picture; // whose own they are, if any's
        std::shared_ptr<Pixels> pixels;
        Rect rect;
        int serial = 0; // later ones are never replaced by earlier ones
        bool smooth = false;
        int drawnLevel = -1;

        const editor::PicturePyramid& pyramid() const;
    };
    // Where the line between original and result is on the widget, and what belongs to it.
    struct SplitShape {
        int x = 0;            // device pixels; the original is on the left of it
        QRectF picture;       // what is visible of it
        QRectF line, handle;  // the line is empty while it is out of sight
        QRectF before, after; // the tags; empty without room for them
    };

    Size pictureSize() const;
    // Picture points to a screen length.
    double perScreenPoint() const { return 1 / double(_scaleFactor); }
    bool selects() const { return !editorController || editorController->editMode() == 0; }
    void generate(const std::string& name, const foundation::Dictionary& attributes);
    void moveSelectionBy(double dx, double dy);

    void moveCenterTo(Point center);
    bool centerFollowsMouse() const;
    void sightMayHaveChanged();

    double scaleOf(const Layer& layer) const;
    bool isReady(const Layer& layer) const;
    void connectPixels();
    void disconnectPixels();
    Layer layerOf(const PictureRef& picture, const Rect& rect);
    void startBuilding(const Layer& layer);
    void showLayer(const Layer& layer);
    void pixelsDidArrive();
    QPoint deviceOrigin() const;
    QRectF deviceFromPicture(const Rect& rect) const;
    QRect pictureOnDevice() const;

    void drawPicture(QPainter& painter, const QRect& part);
    void drawLayers(QPainter& painter, const QRect& part, std::span<Layer> layers);
    void drawSelection(QPainter& painter);
    void drawFrame(QPainter& painter);
    QRect screenAround(const Rect& selection) const;
    void updateAround(const Rect& before, const Rect& after);
    Rect originalRect() const;
    bool originalIsThere() const;
    bool isSplit() const;
    QRectF visiblePicture() const;
    SplitShape splitShape() const;
    QRectF originalTag() const;
    std::vector<QRectF> splitHitAreas() const;
    bool beginSplitDrag(QPointF at);
    void drawComparison(QPainter& painter);
    QRect handleArea(Point center) const;
    void drawCenterHandle(QPainter& painter);
    void centerMayHaveMoved();
    void refreshCursor();
    void describe();

    editor::PictureScrollView& _scrollView;
    editor::PictureViewController* editorController = nullptr;
    foundation::PictureRef _picture;
    bool bTouched = false;           // a selection has been made or is being made
    bool bSelected = false;          // there is a selection
    bool bFilterProcess = false;     // the drag moves the centre point
    bool bFitSelectionScale = false; // the right button fitted the zoom to the selection
    bool bMoved = false;             // the drag moves or resizes the selection
    Rect _moveRect;                  // the selection when that began
    int currSideResizing = 0;        // editor::Sides of the drag
    Rect _selectionRect;             // as dragged: width and height may be negative
    bool bFixSelection = true;       // each drag step notes the selection and the zoom:
    Rect _fixSelectionRect;
    float _fixSelectionRectScale = 1;
    Point _pickPoint;
    PictureRef _original;
    bool _showsOriginal = false;
    std::optional<double> _split;
    std::optional<double> _splitDrag; // from the pointer to the line, screen lengths
    std::optional<Point> _centerHandle, _drawnCenter;
    float _scaleFactor = 1;
    float _origScaleFactor = 1; // to return to after a fit
    int _picOffsetX = 0, _picOffsetY = 0;
    bool _bMouseDown = false;

    Size _frameSize;
    Rect _bounds;
    QUndoStack _undoManager;

    int _serial = 0;
    std::vector<Layer> _layers; // the lowest is a picture's own
    std::optional<Layer> _originalLayer;
    // Pictures that will be shown: the one whose pixels are being made, and the latest after it.
    // Every one that is begun is shown, so that a fast sequence of pictures is seen to move.
    std::optional<Layer> _coming, _waiting;
    std::shared_ptr<Relay> _relay; // outlives the view in running work
    QImage _canvas;

    QPoint _shownOrigin;   // where the last scroll left the picture
    bool _placing = false; // the bars move because the frame changes
    std::optional<Point> _mouse;
    std::optional<QPoint> _panning; // scroll position plus mouse position
    int _cursorType = 7;
    int _wheelRest = 0;
    bool _tellsSight = false;
    Rect _toldPart;
    double _toldDensity = 0;
};
