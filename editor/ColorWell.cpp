// Colour wells and the panel that they share.
#include "editor/ColorWell.h"

#include "editor/ControlAccess.h"
#include "editor/Forms.h"
#include "editor/Painting.h"
#include "editor/Shared.h"

#include <QApplication>
#include <QColorDialog>
#include <QDrag>
#include <QDragEnterEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

#include <utility>

namespace editor {

namespace {

using foundation::Color;

// Colours beyond the screen's are shown, not kept, as the nearest one.
QColor shown(const Color& color)
{
    const auto part = [](float v) { return v > 0 ? std::min(v, 1.0F) : 0.0F; };
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue),
                            part(color.alpha));
}

Color picked(const QColor& color)
{
    const QColor rgb = color.toRgb();
    return Color::rgb(rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF());
}

// The colour over squares of light and grey where it can be seen through.
void drawSwatch(QPainter& painter, const QRectF& rect, const Color& color)
{
    const QColor full = shown(color);
    if (full.alphaF() < 1) {
        constexpr double kSquare = 5;
        painter.fillRect(rect, Qt::white);
        for (int y = 0; y * kSquare < rect.height(); ++y)
            for (int x = y % 2; x * kSquare < rect.width(); x += 2)
                painter.fillRect(
                    QRectF(rect.left() + x * kSquare, rect.top() + y * kSquare, kSquare, kSquare) &
                        rect,
                    QColor(190, 190, 190));
    }
    painter.fillRect(rect, full);
}

} // namespace

ColorWell::ColorWell(QWidget* parent) : QAbstractButton(parent)
{
    announceControls();
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAcceptDrops(true);
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (isActive()) {
            deactivate();
            ColorPanel::sharedColorPanel().close();
        } else {
            activate();
        }
    });
}

void ColorWell::setColor(const std::optional<Color>& color)
{
    if (_color == color)
        return;
    _color = color;
    if (isActive() && color)
        ColorPanel::sharedColorPanel().setColor(*color);
    announceValue(*this);
    update();
}

QString ColorWell::colorText() const
{
    if (!_color)
        return {};
    const QColor color = shown(*_color);
    const QString name = color.name().toUpper();
    return color.alpha() == 255
               ? name
               : localizedString("%1, opacity %2 %").arg(name).arg(qRound(color.alphaF() * 100));
}

bool ColorWell::isActive() const
{
    return ColorPanel::sharedColorPanel().activeWell() == this;
}

void ColorWell::activate()
{
    if (!isEnabled())
        return;
    ColorPanel& panel = ColorPanel::sharedColorPanel();
    panel.setActiveWell(this);
    if (_color)
        panel.setColor(*_color);
    panel.orderFront(this);
}

void ColorWell::deactivate()
{
    if (isActive())
        ColorPanel::sharedColorPanel().setActiveWell(nullptr);
}

QSize ColorWell::sizeHint() const
{
    const int height = std::max(fontMetrics().height() + 8, 22);
    return {2 * height, height};
}

bool ColorWell::event(QEvent* event)
{
    // What it shows, when there is no tip of its own.
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && _color) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), colorText(), this);
        return true;
    }
    return QAbstractButton::event(event);
}

void ColorWell::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    const bool marked = isActive() || _isDropTarget;
    const QRectF outside = QRectF(rect()).adjusted(1, 1, -1, -1);
    QColor line = palette().color(group, QPalette::WindowText);
    line.setAlphaF(isEnabled() ? 0.35F : 0.2F);

    // A frame with room round the swatch, which is the mark of the active well.
    QPainterPath frame;
    frame.addRoundedRect(outside, 4, 4);
    painter.fillPath(frame,
                     palette().color(group, marked ? QPalette::Highlight : QPalette::Button));
    painter.strokePath(
        frame, QPen(hasFocus() ? palette().color(QPalette::Highlight) : line, hasFocus() ? 2 : 1));

    const QRectF swatch = onPixels(painter, outside.adjusted(4, 4, -4, -4));
    painter.setRenderHint(QPainter::Antialiasing, false);
    if (!_color || !isEnabled())
        painter.setOpacity(0.3);
    if (_color) {
        drawSwatch(painter, swatch, *_color);
    } else {
        painter.setPen(QPen(line, 0));
        painter.drawLine(swatch.bottomLeft(), swatch.topRight());
    }
    painter.setPen(QPen(line, 0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(swatch.adjusted(0, 0, -1 / devicePixelRatioF(), -1 / devicePixelRatioF()));
}

void ColorWell::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        Q_EMIT resetAction();
        break;
    default:
        QAbstractButton::keyPressEvent(event);
    }
}

void ColorWell::mousePressEvent(QMouseEvent* event)
{
    _pressedAt = event->position().toPoint();
    QAbstractButton::mousePressEvent(event);
}

void ColorWell::mouseMoveEvent(QMouseEvent* event)
{
    const bool far = (event->position().toPoint() - _pressedAt).manhattanLength() >=
                     QApplication::startDragDistance();
    if (!event->buttons().testFlag(Qt::LeftButton) || !far || !_color) {
        QAbstractButton::mouseMoveEvent(event);
        return;
    }
    setDown(false);
    QPixmap swatch(QSize(24, 24) * devicePixelRatioF());
    swatch.setDevicePixelRatio(devicePixelRatioF());
    swatch.fill(Qt::transparent);
    {
        QPainter painter(&swatch);
        drawSwatch(painter, QRectF(0, 0, 24, 24), *_color);
    }
    auto* colors = new QMimeData;
    colors->setColorData(shown(*_color));
    colors->setText(shown(*_color).name(QColor::HexRgb));
    auto* drag = new QDrag(this);
    drag->setMimeData(colors);
    drag->setPixmap(swatch);
    drag->setHotSpot({12, 12});
    drag->exec(Qt::CopyAction);
}

void ColorWell::dragEnterEvent(QDragEnterEvent* event)
{
    if (!event->mimeData()->hasColor() || event->source() == this)
        return;
    event->acceptProposedAction();
    _isDropTarget = true;
    update();
}

void ColorWell::dragLeaveEvent(QDragLeaveEvent*)
{
    _isDropTarget = false;
    update();
}

void ColorWell::dropEvent(QDropEvent* event)
{
    _isDropTarget = false;
    update();
    const auto dropped = event->mimeData()->colorData().value<QColor>();
    if (!dropped.isValid())
        return;
    event->acceptProposedAction();
    setColor(picked(dropped));
    Q_EMIT colorDropped(*_color);
}

void ColorWell::hideEvent(QHideEvent* event)
{
    QAbstractButton::hideEvent(event);
    if (isActive())
        ColorPanel::sharedColorPanel().close();
}

void ColorWell::changeEvent(QEvent* event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::EnabledChange && !isEnabled() && isActive())
        ColorPanel::sharedColorPanel().close();
    update();
}

// ColorPanel

ColorPanel& ColorPanel::sharedColorPanel()
{
    return sharedInstance<ColorPanel>();
}

ColorPanel::ColorPanel() = default;

ColorPanel::~ColorPanel()
{
    delete _dialog;
}

QColorDialog& ColorPanel::dialog()
{
    if (!_dialog) {
        _dialog = new QColorDialog;
        // The desktop's own would bring buttons and end with the modal run.
        _dialog->setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog);
        _dialog->setOption(QColorDialog::ShowAlphaChannel, _showsAlpha);
        _dialog->setWindowTitle(localizedString("Color"));
        localizeTexts(*_dialog);
        _dialog->setCurrentColor(shown(_color));
        connect(_dialog, &QColorDialog::currentColorChanged, this, [this](const QColor& color) {
            _color = picked(color);
            if (_activeWell)
                _activeWell->setColor(_color);
            Q_EMIT colorDidChange(_color);
        });
        // By its close button, by Escape or with its window.
        connect(_dialog, &QDialog::finished, this, [this] { setActiveWell(nullptr); });
    }
    return *_dialog;
}

void ColorPanel::setColor(const Color& color)
{
    if (_color == color)
        return;
    _color = color;
    if (_dialog && _dialog->currentColor() != shown(color)) {
        const QSignalBlocker quiet(*_dialog);
        _dialog->setCurrentColor(shown(color));
    }
}

void ColorPanel::setShowsAlpha(bool shows)
{
    _showsAlpha = shows;
    if (_dialog)
        _dialog->setOption(QColorDialog::ShowAlphaChannel, shows);
}

void ColorPanel::orderFront(QWidget* owner)
{
    QColorDialog& panel = dialog();
    QWidget* window = owner ? owner->window() : nullptr;
    if (panel.parentWidget() != window) {
        panel.setParent(window, Qt::Dialog | Qt::Tool);
        panel.setWindowModality(Qt::NonModal);
    }
    panel.show();
    panel.raise();
}

bool ColorPanel::isVisible() const
{
    return _dialog && _dialog->isVisible();
}

void ColorPanel::close()
{
    if (_dialog)
        _dialog->close();
    setActiveWell(nullptr);
}

void ColorPanel::setActiveWell(ColorWell* well)
{
    if (_activeWell == well)
        return;
    const QPointer<ColorWell> before = std::exchange(_activeWell, well);
    if (before)
        before->update();
    if (well)
        well->update();
}

} // namespace editor
