// The signs on the editor's small buttons, drawn as outlines on a grid of 16 by 16, y down.
#include "editor/Glyphs.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <numbers>

namespace editor {

namespace {

constexpr double kGrid = 16;
constexpr double kPen = 1.5;

void arrowHead(QPainterPath& path, QPointF tip, QPointF a, QPointF b)
{
    path.moveTo(a);
    path.lineTo(tip);
    path.lineTo(b);
}

void drawTurn(QPainter& painter)
{
    // Back to the left, round and out.
    QPainterPath path;
    arrowHead(path, {2.5, 6}, {6, 2.5}, {6, 9.5});
    path.moveTo(2.5, 6);
    path.lineTo(9.5, 6);
    path.arcTo(QRectF(5.75, 6, 7.5, 7.5), 90, -180);
    path.lineTo(6, 13.5);
    painter.drawPath(path);
}

void drawUndo(QPainter& painter)
{
    drawTurn(painter);
}

void drawRedo(QPainter& painter)
{
    painter.translate(kGrid, 0);
    painter.scale(-1, 1);
    drawTurn(painter);
}

// Round to where it began.
void drawReset(QPainter& painter)
{
    QPainterPath path;
    const QRectF circle(2.75, 2.75, 10.5, 10.5);
    path.arcMoveTo(circle, 150);
    path.arcTo(circle, 150, -310);
    painter.drawPath(path);
    QPainterPath head;
    arrowHead(head, {3.4, 5.6}, {3.2, 1.8}, {7.2, 5.6});
    painter.drawPath(head);
}

QPainterPath star()
{
    QPainterPath path;
    for (int i = 0; i < 10; ++i) {
        const double radius = i % 2 == 0 ? 6.6 : 2.9;
        const double angle = std::numbers::pi * (i / 5.0 - 0.5);
        const QPointF corner(8 + radius * std::cos(angle), 8.4 + radius * std::sin(angle));
        i == 0 ? path.moveTo(corner) : path.lineTo(corner);
    }
    path.closeSubpath();
    return path;
}

void drawStar(QPainter& painter)
{
    painter.drawPath(star());
}

void drawStarred(QPainter& painter)
{
    painter.setBrush(painter.pen().color());
    painter.drawPath(star());
}

void drawMenu(QPainter& painter)
{
    for (const double y : {4.0, 8.0, 12.0})
        painter.drawLine(QPointF(2.5, y), QPointF(13.5, y));
}

// A frame with one half filled: the original below.
void drawCompare(QPainter& painter)
{
    painter.drawRoundedRect(QRectF(2, 3, 12, 10), 1.5, 1.5);
    QPainterPath corner;
    corner.moveTo(2, 13);
    corner.lineTo(14, 3);
    corner.lineTo(14, 13);
    corner.closeSubpath();
    painter.fillPath(corner, painter.pen().color());
}

void drawSplit(QPainter& painter)
{
    painter.drawRoundedRect(QRectF(2, 3, 12, 10), 1.5, 1.5);
    painter.drawLine(QPointF(8, 1), QPointF(8, 15));
    painter.fillRect(QRectF(8, 3, 6, 10), painter.pen().color());
}

void drawEye(QPainter& painter)
{
    QPainterPath path;
    path.moveTo(1.5, 8);
    path.quadTo(8, -0.5, 14.5, 8);
    path.quadTo(8, 16.5, 1.5, 8);
    painter.drawPath(path);
    painter.setBrush(painter.pen().color());
    painter.drawEllipse(QPointF(8, 8), 1.6, 1.6);
}

void drawEyeOff(QPainter& painter)
{
    drawEye(painter);
    painter.drawLine(QPointF(3, 13.5), QPointF(13, 2.5));
}

// A small picture and a larger one.
void drawSize(QPainter& painter)
{
    painter.drawRect(QRectF(2, 8, 6, 6));
    QPainterPath path;
    path.moveTo(2, 5);
    path.lineTo(2, 2);
    path.lineTo(14, 2);
    path.lineTo(14, 14);
    path.lineTo(11, 14);
    arrowHead(path, {11.5, 4.5}, {7.8, 4.5}, {11.5, 8.2});
    path.moveTo(11.5, 4.5);
    path.lineTo(8.5, 7.5);
    painter.drawPath(path);
}

void drawFit(QPainter& painter)
{
    QPainterPath corner;
    corner.moveTo(2, 6);
    corner.lineTo(2, 2);
    corner.lineTo(6, 2);
    for (int i = 0; i < 4; ++i) {
        painter.drawPath(corner);
        painter.translate(kGrid, 0);
        painter.rotate(90);
    }
    painter.drawRect(QRectF(5.5, 6, 5, 4));
}

// One to one.
void drawActual(QPainter& painter)
{
    for (const double x : {4.5, 12.5}) {
        QPainterPath one;
        one.moveTo(x - 2, 5);
        one.lineTo(x, 3.2);
        one.lineTo(x, 12.8);
        painter.drawPath(one);
    }
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QPointF(8, 6), 1.1, 1.1);
    painter.drawEllipse(QPointF(8, 11), 1.1, 1.1);
}

void drawStop(QPainter& painter)
{
    painter.drawLine(QPointF(4, 4), QPointF(12, 12));
    painter.drawLine(QPointF(12, 4), QPointF(4, 12));
}

void drawSearch(QPainter& painter)
{
    painter.drawEllipse(QPointF(6.8, 6.8), 4.2, 4.2);
    painter.drawLine(QPointF(10, 10), QPointF(14, 14));
}

struct Glyph {
    const char* name;
    void (*draw)(QPainter&);
};
constexpr Glyph kGlyphs[] = {
    {"actual", drawActual},   {"compare", drawCompare}, {"eye", drawEye},
    {"eye off", drawEyeOff},  {"fit", drawFit},         {"menu", drawMenu},
    {"redo", drawRedo},       {"reset", drawReset},     {"search", drawSearch},
    {"size", drawSize},       {"split", drawSplit},     {"star", drawStar},
    {"star on", drawStarred}, {"starred", drawStarred}, {"stop", drawStop},
    {"undo", drawUndo},
};

const Glyph* glyphNamed(const QString& name)
{
    for (const Glyph& glyph : kGlyphs)
        if (name == QLatin1String(glyph.name))
            return &glyph;
    return nullptr;
}

} // namespace

void drawGlyph(QPainter& painter, const QString& name, const QRectF& rect, const QColor& color)
{
    const Glyph* glyph = glyphNamed(name);
    if (!glyph)
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double side = std::min(rect.width(), rect.height());
    painter.translate(rect.center() - QPointF(side, side) / 2);
    painter.scale(side / kGrid, side / kGrid);
    painter.setPen(QPen(color, kPen, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    glyph->draw(painter);
    painter.restore();
}

bool isGlyph(const QString& name)
{
    return glyphNamed(name) != nullptr;
}

} // namespace editor
