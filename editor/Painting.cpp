#include "editor/Painting.h"

#include <QColor>
#include <QPainter>
#include <QPalette>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace editor {

QRectF onPixels(const QPainter& painter, const QRectF& rect)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF device = toDevice.mapRect(rect);
    const double left = std::round(device.left()), top = std::round(device.top());
    const QRectF snapped{left, top, std::max(1.0, std::round(device.right()) - left),
                         std::max(1.0, std::round(device.bottom()) - top)};
    return toDevice.inverted().mapRect(snapped);
}

QColor quietColor(const QPalette& palette)
{
    const bool dark = palette.color(QPalette::Base).lightnessF() < 0.5F;
    const float white = dark ? 0.6F : 0.4F;
    return QColor::fromRgbF(white, white, white);
}

} // namespace editor
