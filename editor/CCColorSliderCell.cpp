#include "editor/CCColorSliderCell.h"

#include "editor/NamedImages.h"
#include "editor/Painting.h"

#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kSide = 5;   // beside the gradient
constexpr double kBelow = 10; // the marks' height, and their width
constexpr double kOffset = 5; // from where a jumping mark is put to where it points
constexpr double kFrame = 2;  // the line round the gradient

} // namespace

void CCColorSliderCell::placeGradient(const QRectF& frame)
{
    // However small the control, a position is a fraction of something.
    _gradientRect = {frame.x() + kSide, frame.y() + kBelow,
                     std::max(1.0, frame.width() - 2 * kSide),
                     std::max(1.0, frame.height() - kBelow)};
}

void CCColorSliderCell::setInitialFrame(const QRectF& frame)
{
    placeGradient(frame);
    _dMark1Pos = 0;
    _dMark2Pos = _positionDelta = _gradientRect.width();
}

void CCColorSliderCell::setFrame(const QRectF& frame)
{
    const double before = _gradientRect.width();
    placeGradient(frame);
    if (const double now = _gradientRect.width(); now != before)
        for (double* length : {&_dMark1Pos, &_dMark2Pos, &_positionDelta})
            *length = *length / before * now;
    validateValues();
}

bool CCColorSliderCell::startTrackingAtInView(QPointF point, QWidget* view)
{
    const double x = point.x();
    const auto isOn = [x](double mark) { return mark < x && x < mark + kBelow; };
    _positionDelta = _dMark2Pos - _dMark1Pos;
    const bool follows = isOn(_dMark1Pos) || isOn(_dMark2Pos);
    if (follows) {
        _trackingMarkNumber = isOn(_dMark1Pos) ? 1 : 2;
    } else {
        const double d1 = std::abs(x - _dMark1Pos);
        const double d2 = std::abs(x - _dMark2Pos);
        if (d2 > d1)
            _dMark1Pos = x; // where the pointer is, not where it points
        else if (d1 > d2)
            _dMark2Pos = x - kOffset;
        else
            _dMark1Pos = x - kOffset;
    }
    validateValues();
    if (view)
        view->update();
    return follows;
}

bool CCColorSliderCell::continueTrackingAtInView(QPointF, QPointF current, bool shift,
                                                 QWidget* view)
{
    const double x = current.x();
    if (_trackingMarkNumber == 1) {
        _dMark1Pos = x;
        if (shift)
            _dMark2Pos = x + _positionDelta;
    } else if (_trackingMarkNumber == 2) {
        _dMark2Pos = x;
        if (shift)
            _dMark1Pos = x - _positionDelta;
    }
    validateValues();
    if (view)
        view->update();
    return true;
}

void CCColorSliderCell::stopTrackingAtInViewMouseIsUp(QPointF, QPointF, QWidget*, bool)
{
    _trackingMarkNumber = -1;
    validateValues();
}

double CCColorSliderCell::getRangeMinValue() const
{
    return std::min(_dMark1Pos, _dMark2Pos) / _gradientRect.width();
}

double CCColorSliderCell::getRangeMaxValue() const
{
    return std::max(_dMark1Pos, _dMark2Pos) / _gradientRect.width();
}

void CCColorSliderCell::setRangeMinValue(double value)
{
    _dMark1Pos = _gradientRect.width() * value;
    validateValues();
}

void CCColorSliderCell::setRangeMaxValue(double value)
{
    _dMark2Pos = _gradientRect.width() * value;
    validateValues();
}

void CCColorSliderCell::setKeyColorSelectionMode(bool on)
{
    _bKeyColorSelectionMode = on;
    validateValues();
}

void CCColorSliderCell::validateValues()
{
    if (_bKeyColorSelectionMode)
        _dMark2Pos = _dMark1Pos;
    for (double* mark : {&_dMark1Pos, &_dMark2Pos})
        // What is no number lies at the left end.
        *mark = *mark > 0 ? std::min(*mark, _gradientRect.width()) : 0;
}

QPolygonF CCColorSliderCell::markShape(double position) const
{
    const double x = _gradientRect.x() - kSide + position;
    const double y = _gradientRect.y() - kBelow;
    const QPointF apex{x + kSide, y + kBelow};
    return QPolygonF({apex, {x, y}, {x + kBelow, y}, apex});
}

void CCColorSliderCell::drawInteriorWithFrameInView(QPainter& painter, const QRectF&,
                                                    const QWidget* view) const
{
    const QRectF gradient = editor::onPixels(painter, _gradientRect);
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    // Its first row is the upper one, and y is up here.
    painter.drawImage(
        gradient, editor::imageWithNameOfType(QStringLiteral("gradient_hue"), QStringLiteral("tif"))
                      .mirrored());

    const bool enabled = !view || view->isEnabled();
    const QColor disabled =
        (view ? view->palette() : QPalette()).color(QPalette::Disabled, QPalette::WindowText);
    const auto drawMark = [&](double m) {
        const double hue = std::clamp(m / _gradientRect.width(), 0.0, 1.0);
        painter.setBrush(enabled ? QColor::fromHsvF(static_cast<float>(hue), 1, 1) : disabled);
        painter.setPen(QPen(enabled ? QColor(Qt::black) : disabled, 1));
        painter.drawPolygon(markShape(m));
    };
    drawMark(_dMark1Pos);
    if (!_bKeyColorSelectionMode)
        drawMark(_dMark2Pos);

    // Even-odd: what lies between the two.
    QPainterPath frame;
    frame.addRect(editor::onPixels(painter, gradient.adjusted(-kFrame, -kFrame, kFrame, kFrame)));
    frame.addRect(gradient);
    painter.fillPath(frame, QColor::fromRgbF(0.5F, 0.5F, 0.5F, 0.8F));
    painter.restore();
}
