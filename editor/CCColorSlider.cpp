#include "editor/CCColorSlider.h"

#include "editor/CCColorSliderAccess.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace {

// Round the cell, for the frame of the gradient, the outlines of the marks and the focus ring.
constexpr int kMargin = 3;
constexpr double kStep = 0.01;

} // namespace

CCColorSlider::CCColorSlider(QWidget* parent) : CCColorSlider(QRect(0, 0, 200, 30), parent) {}

CCColorSlider::CCColorSlider(const QRect& frame, QWidget* parent) : QWidget(parent)
{
    editor::announceColorSliders();
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    _cell.setInitialFrame(QRectF(QPointF(), frame.size()));
    setGeometry(frame.adjusted(-kMargin, -kMargin, kMargin, kMargin));
}

QSize CCColorSlider::sizeHint() const
{
    return QSize(200, 30) + QSize(2 * kMargin, 2 * kMargin);
}

QSize CCColorSlider::minimumSizeHint() const
{
    return QSize(80, 20) + QSize(2 * kMargin, 2 * kMargin);
}

// The only place where the toolkit's y, which goes down, meets the cell's.
QPointF CCColorSlider::toCell(QPointF widgetPoint) const
{
    return {widgetPoint.x() - kMargin, height() - kMargin - widgetPoint.y()};
}

QPointF CCColorSlider::fromCell(QPointF cellPoint) const
{
    return {cellPoint.x() + kMargin, height() - kMargin - cellPoint.y()};
}

double CCColorSlider::value(Mark mark) const
{
    return mark == Mark::Start ? getRangeMinValue() : getRangeMaxValue();
}

void CCColorSlider::setRangeMinValue(double value)
{
    _cell.setRangeMinValue(value);
    valuesChanged();
}

void CCColorSlider::setRangeMaxValue(double value)
{
    _cell.setRangeMaxValue(value);
    valuesChanged();
}

void CCColorSlider::setKeyColorSelectionMode(bool on)
{
    _bKeyColorSelectionMode = on;
    _cell.setKeyColorSelectionMode(on);
    if (on)
        _focusedMark = Mark::Start;
    valuesChanged();
}

void CCColorSlider::valuesChanged()
{
    const double low = getRangeMinValue(), high = getRangeMaxValue();
    if (std::exchange(_announcedMin, low) != low)
        editor::announceValue(*this, Mark::Start);
    if (std::exchange(_announcedMax, high) != high && !_bKeyColorSelectionMode)
        editor::announceValue(*this, Mark::End);
    update();
}

void CCColorSlider::moveMarkTo(Mark mark, double value, bool both)
{
    const double low = getRangeMinValue(), high = getRangeMaxValue();
    double newLow = low, newHigh = high;
    if (_bKeyColorSelectionMode) {
        newLow = newHigh = std::clamp(value, 0.0, 1.0);
    } else if (both) {
        // As far as the one in front can go.
        const double by = std::clamp(value - this->value(mark), -low, 1 - high);
        newLow = low + by;
        newHigh = high + by;
    } else if (mark == Mark::Start) {
        newLow = std::clamp(value, 0.0, high);
    } else {
        newHigh = std::clamp(value, low, 1.0);
    }
    if (newLow == low && newHigh == high)
        return;
    _cell.setRangeMinValue(newLow);
    _cell.setRangeMaxValue(newHigh);
    valuesChanged();
    Q_EMIT action();
}

void CCColorSlider::focusMark(Mark mark)
{
    if (_focusedMark == mark)
        return;
    _focusedMark = mark;
    if (hasFocus())
        editor::announceFocus(*this);
    update();
}

void CCColorSlider::focusMarkNumber(int number)
{
    const double own = number == 1 ? _cell.mark1() : _cell.mark2();
    const double other = number == 1 ? _cell.mark2() : _cell.mark1();
    const bool isStart = own < other || (own == other && number == 1);
    focusMark(isStart || _bKeyColorSelectionMode ? Mark::Start : Mark::End);
}

void CCColorSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const double mark2Before = _cell.mark2();
    _lastPoint = toCell(event->position());
    _tracking = _cell.startTrackingAtInView(_lastPoint, this);
    const bool isMark2 = _tracking ? _cell.trackingMarkNumber() == 2 : _cell.mark2() != mark2Before;
    focusMarkNumber(isMark2 ? 2 : 1);
    valuesChanged();
    Q_EMIT action();
}

void CCColorSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (!_tracking)
        return;
    const QPointF point = toCell(event->position());
    _tracking = _cell.continueTrackingAtInView(
        _lastPoint, point, event->modifiers().testFlag(Qt::ShiftModifier), this);
    _lastPoint = point;
    focusMarkNumber(_cell.trackingMarkNumber());
    valuesChanged();
    Q_EMIT action();
}

void CCColorSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !_tracking)
        return;
    _tracking = false;
    _cell.stopTrackingAtInViewMouseIsUp(_lastPoint, toCell(event->position()), this, true);
    valuesChanged();
}

void CCColorSlider::keyPressEvent(QKeyEvent* event)
{
    const double now = value(_focusedMark);
    const bool both = event->modifiers().testFlag(Qt::ShiftModifier);
    // Hues do not turn round with the direction of the text.
    double to;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        to = now - kStep;
        break;
    case Qt::Key_Right:
    case Qt::Key_Up:
        to = now + kStep;
        break;
    case Qt::Key_PageDown:
        to = now - 10 * kStep;
        break;
    case Qt::Key_PageUp:
        to = now + 10 * kStep;
        break;
    case Qt::Key_Home:
        to = 0;
        break;
    case Qt::Key_End:
        to = 1;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    moveMarkTo(_focusedMark, to, both);
}

void CCColorSlider::focusInEvent(QFocusEvent* event)
{
    if (event->reason() == Qt::TabFocusReason)
        _focusedMark = Mark::Start;
    else if (event->reason() == Qt::BacktabFocusReason && !_bKeyColorSelectionMode)
        _focusedMark = Mark::End;
    QWidget::focusInEvent(event);
    // After the toolkit's own word, which is of the whole slider.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (hasFocus())
                editor::announceFocus(*this);
        },
        Qt::QueuedConnection);
}

bool CCColorSlider::focusNextPrevChild(bool next)
{
    const Mark other = next ? Mark::End : Mark::Start;
    if (hasFocus() && !_bKeyColorSelectionMode && _focusedMark != other) {
        focusMark(other);
        return true;
    }
    return QWidget::focusNextPrevChild(next);
}

void CCColorSlider::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange || event->type() == QEvent::PaletteChange)
        update();
    QWidget::changeEvent(event);
}

void CCColorSlider::resizeEvent(QResizeEvent*)
{
    _cell.setFrame({0, 0, width() - 2.0 * kMargin, height() - 2.0 * kMargin});
}

void CCColorSlider::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setTransform(QTransform(1, 0, 0, -1, kMargin, height() - kMargin), true);
    if (hasFocus()) {
        const bool isMark1 = (_focusedMark == Mark::Start) == (_cell.mark1() <= _cell.mark2());
        QPainterPath mark;
        mark.addPolygon(_cell.markShape(isMark1 ? _cell.mark1() : _cell.mark2()));
        painter.setRenderHint(QPainter::Antialiasing);
        // Half of it lies outside the mark.
        painter.strokePath(mark, QPen(palette().color(QPalette::Highlight), 2 * kMargin,
                                      Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    _cell.drawInteriorWithFrameInView(painter, QRectF(QPointF(), size()), this);
}
