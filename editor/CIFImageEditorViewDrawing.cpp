// The picture view's drawing, and the pixels it draws as they are made.
#include "editor/CIFImageEditorView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

using foundation::PictureRef;

namespace {

constexpr double kSelectionBorder = 1.5, kFrameLine = 1; // screen lengths
constexpr int kCheckerSide = 8;

// Two, so that pixels that take long hold up no others.
class Workers : public QThreadPool {
public:
    Workers() { setMaxThreadCount(2); }
};
Q_GLOBAL_STATIC(Workers, workers)

} // namespace

// How work on another thread reaches the view, and finds out that it is gone.
struct CIFImageEditorView::Relay {
    std::mutex lock;
    CIFImageEditorView* view = nullptr;

    void pixelsDidArrive()
    {
        const std::lock_guard held(lock);
        if (view)
            QMetaObject::invokeMethod(
                view, [view = view] { view->pixelsDidArrive(); }, Qt::QueuedConnection);
    }
};

void CIFImageEditorView::connectPixels()
{
    _relay = std::make_shared<Relay>();
    _relay->view = this;
}

void CIFImageEditorView::disconnectPixels()
{
    _stop.request_stop();
    const std::lock_guard held(_relay->lock);
    _relay->view = nullptr;
}

void CIFImageEditorView::setPicture(const PictureRef& picture)
{
    if (picture == _picture) {
        update();
        return;
    }
    _picture = picture;
    Layer next;
    next.pixels = std::make_shared<editor::PicturePyramid>(picture);
    next.rect = {0, 0, pictureSize().width, pictureSize().height};
    const bool keepsShown = picture && !_layers.empty() && _layers.front().rect == next.rect;
    if (!picture) {
        stopBuilding();
        _layers.clear();
    } else if (!keepsShown || isReady(next)) {
        stopBuilding();
        _layers = {next};
        startBuilding(next.pixels);
    } else if (_coming) {
        _waiting = next;
    } else {
        _coming = next;
        startBuilding(next.pixels);
    }
    update();
    describe();
}

void CIFImageEditorView::showPixelsInRect(const imaging::BitmapRef& pixels, const Rect& rect)
{
    if (!pixels || !_picture || rect.isEmpty())
        return;
    Layer layer;
    layer.pixels = std::make_shared<editor::PicturePyramid>(pixels);
    layer.rect = rect;
    const double density = pixels->width() / rect.width;
    layer.smooth = density < 0.75 * _picture->pixelsWide() / pictureSize().width;
    // What lies under it entirely is never seen again, but for the picture's own.
    const auto hidden = [&](const Layer& below) {
        return below.rect.x >= rect.x && below.rect.y >= rect.y &&
               below.rect.right() <= rect.right() && below.rect.top() <= rect.top();
    };
    _layers.erase(std::remove_if(_layers.begin() + 1, _layers.end(), hidden), _layers.end());
    _layers.push_back(layer);
    startBuilding(layer.pixels);
    update(widgetFromPicture(rect).toAlignedRect().adjusted(-1, -1, 1, 1));
}

bool CIFImageEditorView::showsFinalPixels() const
{
    return !_coming && _layers.size() == 1 && isReady(_layers.front());
}

double CIFImageEditorView::scaleOf(const Layer& layer) const
{
    const QRectF target = deviceFromPicture(layer.rect);
    return std::max(target.width() / layer.pixels->width(),
                    target.height() / layer.pixels->height());
}

bool CIFImageEditorView::isReady(const Layer& layer) const
{
    return layer.pixels->isComplete() ||
           layer.pixels->levels() > editor::wantedLevel(scaleOf(layer));
}

void CIFImageEditorView::startBuilding(const std::shared_ptr<editor::PicturePyramid>& pixels)
{
    workers->start([pixels, relay = _relay, stop = _stop.get_token()] {
        pixels->build(stop, [&relay] { relay->pixelsDidArrive(); });
    });
}

void CIFImageEditorView::stopBuilding()
{
    _coming.reset();
    _waiting.reset();
    _stop.request_stop();
    _stop = {};
}

void CIFImageEditorView::pixelsDidArrive()
{
    if (_coming && isReady(*_coming)) {
        _layers = {*std::exchange(_coming, std::exchange(_waiting, std::nullopt))};
        if (_coming)
            startBuilding(_coming->pixels);
    }
    // Most levels that arrive are not the one that is looked at.
    for (const Layer& layer : _layers)
        if (editor::availableLevel(*layer.pixels, scaleOf(layer)) != layer.drawnLevel)
            update(widgetFromPicture(layer.rect).toAlignedRect().adjusted(-1, -1, 1, 1));
}

QRectF CIFImageEditorView::deviceFromPicture(const Rect& rect) const
{
    const double scale = double(_scaleFactor) * devicePixelRatioF();
    return {deviceOrigin().x() + rect.x * scale,
            deviceOrigin().y() + (pictureSize().height - rect.top()) * scale, rect.width * scale,
            rect.height * scale};
}

QRect CIFImageEditorView::pictureOnDevice() const
{
    return editor::coveredPixels(
        deviceFromPicture({0, 0, pictureSize().width, pictureSize().height}));
}

void CIFImageEditorView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const qreal ratio = devicePixelRatioF();
    const QRect onDevice = _picture ? pictureOnDevice() : QRect();
    const QColor surroundings = palette().color(QPalette::Mid);
    for (const QRect& exposed : event->region()) {
        const QRect part =
            QRectF(exposed.topLeft() * ratio, exposed.size() * ratio).toAlignedRect();
        if (!onDevice.contains(part))
            painter.fillRect(exposed, surroundings);
        if (const QRect visible = part & onDevice; !visible.isEmpty())
            drawPicture(painter, visible);
    }
    if (!_picture)
        return;
    if (bTouched)
        drawSelection(painter);
    drawFrame(painter);
    refreshCursor();
}

void CIFImageEditorView::drawPicture(QPainter& painter, const QRect& part)
{
    // Kept from paint to paint: fresh memory costs more than the pixels in it.
    if (_canvas.width() < part.width() || _canvas.height() < part.height())
        _canvas = QImage(part.size().expandedTo(_canvas.size()), QImage::Format_RGB32);
    if (_canvas.isNull())
        return;
    const editor::Checkers checkers = {
        .first = 0xffffffff,
        .second = 0xffdedede,
        .side = std::max(qRound(kCheckerSide * devicePixelRatioF()), 1),
        .origin = deviceOrigin(),
    };
    // Smooth layers leave nothing uncovered, and neither does any other that has pixels.
    if (_layers.empty() || _layers.front().pixels->levels() == 0)
        editor::drawCheckers(checkers, part, _canvas);
    for (Layer& layer : _layers) {
        layer.drawnLevel = editor::availableLevel(*layer.pixels, scaleOf(layer));
        editor::drawPixels(*layer.pixels, deviceFromPicture(layer.rect), layer.smooth, checkers,
                           part, _canvas);
    }
    const qreal ratio = devicePixelRatioF();
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    painter.drawImage(part.topLeft(), _canvas, QRect(QPoint(), part.size()));
    painter.restore();
}

void CIFImageEditorView::drawSelection(QPainter& painter)
{
    const qreal ratio = devicePixelRatioF();
    const QRect onDevice = pictureOnDevice();
    // Coordinates far outside the widget are beyond what the toolkit draws exactly.
    const QRectF near = QRectF(rect()).adjusted(-8, -8, 8, 8);
    const QRectF picture =
        QRectF(QPointF(onDevice.topLeft()) / ratio, QSizeF(onDevice.size()) / ratio) & near;
    const QRectF selection = widgetFromPicture(getSelection());
    const QRectF shown(QPointF(std::clamp(selection.left(), near.left(), near.right()),
                               std::clamp(selection.top(), near.top(), near.bottom())),
                       QPointF(std::clamp(selection.right(), near.left(), near.right()),
                               std::clamp(selection.bottom(), near.top(), near.bottom())));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(picture);
    QPainterPath around;
    around.setFillRule(Qt::OddEvenFill);
    around.addRect(picture);
    around.addRect(shown);
    painter.fillPath(around, QColor::fromRgbF(0.3f, 0.3f, 0.3f, 0.5f));
    const QColor white = QColor::fromRgbF(1, 1, 1, 0.9f);
    painter.setPen(QPen(white, kSelectionBorder, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(shown.left() + kSelectionBorder / 2, shown.top() + kSelectionBorder / 2,
                            std::max(shown.width() - kSelectionBorder, 0.0),
                            std::max(shown.height() - kSelectionBorder, 0.0)));
    painter.restore();
}

void CIFImageEditorView::drawFrame(QPainter& painter)
{
    const qreal ratio = devicePixelRatioF();
    const int line = std::max(qRound(kFrameLine * ratio), 1);
    const QRect picture = pictureOnDevice();
    const QRect outside = picture.adjusted(-line, -line, line, line);
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    const QRect visible = QRectF(QPointF(), QSizeF(size()) * ratio).toAlignedRect();
    for (const QRect& strip : QRegion(outside & visible) - QRegion(picture & visible))
        painter.fillRect(strip, Qt::black);
    painter.restore();
}

QRect CIFImageEditorView::screenAround(const Rect& selection) const
{
    // Limited to the widget first: a stored selection may lie anywhere.
    return (widgetFromPicture(selection).adjusted(-3, -3, 3, 3) & QRectF(rect())).toAlignedRect();
}

void CIFImageEditorView::updateAround(const Rect& before, const Rect& after)
{
    // What is dimmed changes only where one of the two lies.
    update(screenAround(before) | screenAround(after));
}
