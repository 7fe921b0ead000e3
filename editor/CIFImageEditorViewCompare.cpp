// What lies over the picture besides the selection: the original for comparing, held up whole or
// beside the result along a line, and the handle of the centre.
#include "editor/CIFImageEditorView.h"

#include "editor/Forms.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

using foundation::PictureRef;

namespace {

// Screen lengths.
constexpr double kLineReach = 6; // to each side of the line that a press takes
constexpr double kKnobRadius = 12, kKnobInset = 2;
constexpr double kTagInset = 8, kTagPadding = 6;
constexpr double kRingRadius = 7, kCrossArm = 3, kRingReach = 11;

const QColor kDark = QColor::fromRgbF(0, 0, 0, 0.65f);

QSizeF tagSize(const QFont& font, const QString& text)
{
    const QFontMetricsF metrics(font);
    return {std::ceil(metrics.horizontalAdvance(text)) + 2 * kTagPadding,
            std::ceil(metrics.height()) + 4};
}

void drawTag(QPainter& painter, const QRectF& rect, const QString& text)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(kDark);
    painter.drawRoundedRect(rect, 4, 4);
    painter.setPen(Qt::white);
    painter.drawText(rect, Qt::AlignCenter, text);
}

} // namespace

void CIFImageEditorView::setOriginal(const PictureRef& original)
{
    if (original == _original)
        return;
    _original = original;
    _originalLayer.reset();
    if (original) {
        _originalLayer = layerOf(original, originalRect());
        startBuilding(*_originalLayer);
    }
    if (_showsOriginal || _split)
        update();
    describe();
}

CIFImageEditorView::Rect CIFImageEditorView::originalRect() const
{
    const Size picture = pictureSize(), size = _original ? _original->size() : Size{};
    const double fit = std::min(picture.width / size.width, picture.height / size.height);
    if (!std::isfinite(fit))
        return {0, 0, picture.width, picture.height};
    const double width = size.width * fit, height = size.height * fit;
    return {(picture.width - width) * 0.5, (picture.height - height) * 0.5, width, height};
}

bool CIFImageEditorView::originalIsThere() const
{
    return _originalLayer && _originalLayer->pyramid().levels() > 0;
}

void CIFImageEditorView::setShowsOriginal(bool shows)
{
    if (std::exchange(_showsOriginal, shows) == shows)
        return;
    update();
    describe();
}

bool CIFImageEditorView::isSplit() const
{
    return _split && _original && _picture && !_showsOriginal;
}

void CIFImageEditorView::setSplit(std::optional<double> fraction)
{
    if (fraction)
        fraction = std::isnan(*fraction) ? 0.5 : std::clamp(*fraction, 0.0, 1.0);
    if (fraction == _split)
        return;
    const bool was = isSplit();
    const SplitShape before = was ? splitShape() : SplitShape();
    _split = fraction;
    if (was && isSplit()) {
        // The rest shows what it showed.
        const SplitShape after = splitShape();
        const qreal ratio = devicePixelRatioF();
        QRectF swept = after.picture;
        swept.setLeft(std::max(swept.left(), std::min(before.x, after.x) / ratio));
        swept.setRight(std::min(swept.right(), std::max(before.x, after.x) / ratio));
        QRegion changed;
        if (swept.isValid())
            changed += swept.toAlignedRect();
        for (const SplitShape& s : {before, after})
            for (const QRectF& part : {s.line, s.handle, s.before, s.after})
                if (!part.isEmpty())
                    changed += part.toAlignedRect().adjusted(-1, -1, 1, 1);
        update(changed);
    } else {
        update();
    }
    describe();
}

QRectF CIFImageEditorView::visiblePicture() const
{
    const qreal ratio = devicePixelRatioF();
    const QRect picture = pictureOnDevice();
    return QRectF(QPointF(picture.topLeft()) / ratio, QSizeF(picture.size()) / ratio) &
           QRectF(rect());
}

CIFImageEditorView::SplitShape CIFImageEditorView::splitShape() const
{
    SplitShape shape;
    const qreal ratio = devicePixelRatioF();
    const QRectF target = deviceFromPicture({0, 0, pictureSize().width, pictureSize().height});
    const double at = target.left() + _split.value_or(0) * target.width();
    shape.x = static_cast<int>(std::round(std::clamp(at, -1e9, 1e9)));
    shape.picture = visiblePicture();
    if (shape.picture.isEmpty())
        return shape;
    const QRectF& seen = shape.picture;
    const double x = std::clamp(shape.x / ratio, seen.left(), seen.right());
    if (x == shape.x / ratio)
        shape.line = {x - 2, seen.top(), 4, seen.height()};
    // Whole and in reach even when the line is not.
    const double room = kKnobRadius + kKnobInset;
    const double knob = seen.width() > 2 * room
                            ? std::clamp(x, seen.left() + room, seen.right() - room)
                            : seen.center().x();
    shape.handle = {knob - kKnobRadius, seen.center().y() - kKnobRadius, 2 * kKnobRadius,
                    2 * kKnobRadius};
    const QSizeF before = tagSize(font(), editor::localizedString("Before"));
    const QSizeF after = tagSize(font(), editor::localizedString("After"));
    const double top = seen.top() + kTagInset;
    if (x - seen.left() >= before.width() + 2 * kTagInset)
        shape.before = {QPointF(x - kTagInset - before.width(), top), before};
    if (seen.right() - x >= after.width() + 2 * kTagInset)
        shape.after = {QPointF(x + kTagInset, top), after};
    return shape;
}

QRectF CIFImageEditorView::originalTag() const
{
    return {visiblePicture().topLeft() + QPointF(kTagInset, kTagInset),
            tagSize(font(), editor::localizedString("Before"))};
}

std::vector<QRectF> CIFImageEditorView::splitHitAreas() const
{
    if (!isSplit())
        return {};
    const SplitShape shape = splitShape();
    std::vector<QRectF> areas;
    if (!shape.line.isEmpty())
        areas.push_back({shape.line.center().x() - kLineReach, shape.line.top(), 2 * kLineReach,
                         shape.line.height()});
    if (!shape.handle.isEmpty())
        areas.push_back(shape.handle.adjusted(-2, -2, 2, 2));
    return areas;
}

bool CIFImageEditorView::beginSplitDrag(QPointF at)
{
    const std::vector<QRectF> areas = splitHitAreas();
    if (std::none_of(areas.begin(), areas.end(), [&](const QRectF& a) { return a.contains(at); }))
        return false;
    const SplitShape shape = splitShape();
    const QRectF& held = shape.line.isEmpty() ? shape.handle : shape.line;
    _splitDrag = held.center().x() - at.x();
    return true;
}

void CIFImageEditorView::drawComparison(QPainter& painter)
{
    if (_showsOriginal && originalIsThere()) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        drawTag(painter, originalTag(), editor::localizedString("Before"));
        painter.restore();
    }
    if (!isSplit())
        return;
    const SplitShape shape = splitShape();
    if (shape.handle.isEmpty())
        return;
    const qreal ratio = devicePixelRatioF();
    painter.save();
    if (!shape.line.isEmpty()) {
        // Whole device pixels: a light line between two dark ones.
        const int width = std::max(qRound(ratio), 1);
        const QRect light(shape.x - width / 2, qRound(shape.line.top() * ratio), width,
                          qRound(shape.line.height() * ratio));
        painter.scale(1 / ratio, 1 / ratio);
        painter.fillRect(light.adjusted(-width, 0, width, 0), kDark);
        painter.fillRect(light, Qt::white);
        painter.scale(ratio, ratio);
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kDark, 1.5));
    painter.setBrush(Qt::white);
    painter.drawEllipse(shape.handle.adjusted(1, 1, -1, -1));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(0.2f, 0.2f, 0.2f));
    const QPointF middle = shape.handle.center();
    for (const double side : {-1.0, 1.0}) {
        const QPointF tip = middle + QPointF(side * 8, 0), foot = middle + QPointF(side * 3, 0);
        painter.drawPolygon(QPolygonF{tip, foot + QPointF(0, -4.5), foot + QPointF(0, 4.5)});
    }
    if (!shape.before.isEmpty())
        drawTag(painter, shape.before, editor::localizedString("Before"));
    if (!shape.after.isEmpty())
        drawTag(painter, shape.after, editor::localizedString("After"));
    painter.restore();
}

void CIFImageEditorView::setPickPoint(Point point)
{
    _pickPoint = point;
    centerMayHaveMoved();
}

void CIFImageEditorView::setCenterHandle(std::optional<Point> center)
{
    if (center && !(std::isfinite(center->x) && std::isfinite(center->y)))
        center.reset();
    _centerHandle = center;
    centerMayHaveMoved();
}

bool CIFImageEditorView::centerFollowsMouse() const
{
    if (selects())
        return false;
    const std::string entry = editorController->filterName();
    return !entry.empty() && !entry.starts_with("GLIF_");
}

std::optional<CIFImageEditorView::Point> CIFImageEditorView::shownCenter() const
{
    if (!_picture)
        return {};
    if (!_centerHandle && centerFollowsMouse() && editorController->pointingMode() == 2)
        return _pickPoint;
    return _centerHandle;
}

void CIFImageEditorView::moveCenterTo(Point center)
{
    _pickPoint = center;
    if (_centerHandle)
        _centerHandle = center;
    centerMayHaveMoved();
    editorController->setCenterPoint(center);
    editorController->applyCurrentFilter();
}

void CIFImageEditorView::centerMayHaveMoved()
{
    const std::optional<Point> now = shownCenter();
    if (now == _drawnCenter)
        return;
    for (const std::optional<Point>& center : {_drawnCenter, now})
        if (center)
            update(handleArea(*center));
    _drawnCenter = now;
    describe();
}

QRect CIFImageEditorView::handleArea(Point center) const
{
    const QPointF at = widgetFromPicture(center);
    const QRectF area(at.x() - kRingReach, at.y() - kRingReach, 2 * kRingReach, 2 * kRingReach);
    // Far from the widget there is nothing, whatever the distance.
    return area.intersects(QRectF(rect()).adjusted(-1, -1, 1, 1)) ? area.toAlignedRect() : QRect();
}

void CIFImageEditorView::drawCenterHandle(QPainter& painter)
{
    if (!_drawnCenter || (_showsOriginal && originalIsThere()))
        return;
    const QPointF at = widgetFromPicture(*_drawnCenter);
    if (!QRectF(rect()).contains(at))
        return;
    const qreal ratio = devicePixelRatioF();
    const int light = std::max(qRound(1.5 * ratio), 1);
    const int dark = light + 2 * std::max(qRound(ratio), 1);
    // Lines of either width begin and end with a device pixel.
    const auto snapped = [&](double v) {
        return light % 2 != 0 ? std::floor(v * ratio) + 0.5 : std::round(v * ratio);
    };
    const QPointF middle(snapped(at.x()), snapped(at.y()));
    const double radius = std::round(kRingRadius * ratio), arm = std::round(kCrossArm * ratio);
    QPainterPath path;
    path.addEllipse(middle, radius, radius);
    for (const QPointF& way : {QPointF(arm, 0), QPointF(0, arm)}) {
        path.moveTo(middle - way);
        path.lineTo(middle + way);
    }
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.strokePath(path, QPen(kDark, dark, Qt::SolidLine, Qt::SquareCap));
    painter.strokePath(path, QPen(Qt::white, light, Qt::SolidLine, Qt::FlatCap));
    painter.restore();
}
