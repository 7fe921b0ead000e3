// What hand-drawn controls share: edges that fall on the screen's pixels, and the grey of quiet
// text.
#pragma once

#include <QRectF>

class QColor;
class QPainter;
class QPalette;

namespace editor {

// The rectangle, in the painter's coordinates, moved to the nearest edges of device pixels; never
// thinner than one. For painters that neither turn nor shear.
QRectF onPixels(const QPainter& painter, const QRectF& rect);

// White 0.4, for text and lines that keep in the background. On a dark background, as light
// instead.
QColor quietColor(const QPalette& palette);

} // namespace editor
