// A hue gradient on which two marks choose a range of hues or, locked together, one.
//
// Besides the mouse, the keyboard moves the marks: the arrow keys by one step and the page keys by
// ten, Home and End to the ends, with Shift both marks; Tab goes from mark to mark. The lower mark
// stays below the upper one then. Left is always the lower end.
#pragma once

#include "editor/CCColorSliderCell.h"

#include <QWidget>

class CCColorSlider : public QWidget {
    Q_OBJECT

public:
    // Of the two marks, whichever is the lower or the upper one.
    enum class Mark { Start, End };

    explicit CCColorSlider(QWidget* parent = nullptr);
    // initWithFrame: — what the cell draws in; the widget is larger by the room for outlines.
    explicit CCColorSlider(const QRect& frame, QWidget* parent = nullptr);

    // getRangeMinValue, getRangeMaxValue — 0 to 1, never min above max.
    double getRangeMinValue() const { return _cell.getRangeMinValue(); }
    double getRangeMaxValue() const { return _cell.getRangeMaxValue(); }
    // setRangeMinValue:, setRangeMaxValue: — send no action.
    void setRangeMinValue(double value);
    void setRangeMaxValue(double value);
    // isKeyColorSelectionMode, setKeyColorSelectionMode:
    bool isKeyColorSelectionMode() const { return _bKeyColorSelectionMode; }
    void setKeyColorSelectionMode(bool on);

    const CCColorSliderCell& cell() const { return _cell; }
    // Between the widget's coordinates and the cell's.
    QPointF toCell(QPointF widgetPoint) const;
    QPointF fromCell(QPointF cellPoint) const;

    double value(Mark mark) const;
    Mark focusedMark() const { return _focusedMark; }
    // As if by the keyboard: not past the other mark, and the action is sent if anything moved.
    void moveMarkTo(Mark mark, double value, bool both = false);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // Sent when the mouse goes down, at every drag and when a key moves a mark.
    void action();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void focusMark(Mark mark);
    void focusMarkNumber(int number);
    void valuesChanged();

    CCColorSliderCell _cell;
    bool _bKeyColorSelectionMode = false;
    Mark _focusedMark = Mark::Start;
    double _announcedMin = 0, _announcedMax = 1;
    bool _tracking = false;
    QPointF _lastPoint;
};
