// The signs on the editor's small buttons.
#pragma once

#include <QString>

class QColor;
class QPainter;
class QRectF;

namespace editor {

// Draws a sign as large as the rectangle allows. Names: "undo", "redo", "reset", "star" (outlined),
// "starred" and "star on" (filled), "menu", "compare", "split", "eye", "eye off", "size", "fit",
// "actual", "stop", "search". Nothing for another name.
void drawGlyph(QPainter& painter, const QString& name, const QRectF& rect, const QColor& color);
bool isGlyph(const QString& name);

} // namespace editor
