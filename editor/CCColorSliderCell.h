// The hue gradient with its two marks: where they are, how they are dragged and how they look.
#pragma once

#include <QPointF>
#include <QPolygonF>
#include <QRectF>

#include <cstdint>

class QPainter;
class QWidget;

// Lengths in points, y up. The marks stand below the gradient, and a mark at m points at the place
// m to the right of the gradient's left edge.
class CCColorSliderCell {
public:
    // setInitialFrame: — the whole range is chosen.
    void setInitialFrame(const QRectF& frame);
    // Another place and size under the same values.
    void setFrame(const QRectF& frame);
    // drawingRectForBounds:
    QRectF drawingRectForBounds(const QRectF& bounds) const { return bounds; }

    // startTrackingAt:inView: — true while a mark is to be dragged; false after a jump.
    bool startTrackingAtInView(QPointF point, QWidget* view);
    // continueTracking:at:inView: — with Shift held the other mark keeps its distance.
    bool continueTrackingAtInView(QPointF last, QPointF current, bool shift, QWidget* view);
    // stopTracking:at:inView:mouseIsUp:
    void stopTrackingAtInViewMouseIsUp(QPointF last, QPointF stop, QWidget* view, bool mouseIsUp);
    // + prefersTrackingUntilMouseUp
    static constexpr bool prefersTrackingUntilMouseUp() { return true; }

    // Fractions of the gradient's width, the smaller one first, whichever mark it is.
    // getRangeMinValue, getRangeMaxValue
    double getRangeMinValue() const;
    double getRangeMaxValue() const;
    // setRangeMinValue:, setRangeMaxValue: — mark 1 and mark 2; values outside 0…1 become the
    // nearer end.
    void setRangeMinValue(double value);
    void setRangeMaxValue(double value);
    // validateValues
    void validateValues();

    // isKeyColorSelectionMode, setKeyColorSelectionMode: — mark 2 goes with mark 1.
    bool isKeyColorSelectionMode() const { return _bKeyColorSelectionMode; }
    void setKeyColorSelectionMode(bool on);

    // drawInteriorWithFrame:inView: — the painter has y up too.
    void drawInteriorWithFrameInView(QPainter& painter, const QRectF& frame,
                                     const QWidget* view) const;

    double mark1() const { return _dMark1Pos; }
    double mark2() const { return _dMark2Pos; }
    int trackingMarkNumber() const { return _trackingMarkNumber; }
    QRectF gradientRect() const { return _gradientRect; }
    // The triangle of a mark.
    QPolygonF markShape(double position) const;

private:
    void placeGradient(const QRectF& frame);

    double _dMark1Pos = 0, _dMark2Pos = 0; // from the gradient's left edge
    double _positionDelta = 0;             // from mark 1 to mark 2 when tracking began
    std::int32_t _trackingMarkNumber = -1; // 1 or 2 while one is dragged
    QRectF _gradientRect{0, 0, 1, 1};
    bool _bKeyColorSelectionMode = false;
};
