// The picture view's drawing, and the pixels it draws as they are made.
#include "editor/CIFImageEditorView.h"

#include "editor/Shared.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Work.h"

#include <QPaintEngine>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

using foundation::PictureRef;

namespace {

constexpr double kSelectionBorder = 1.5, kFrameLine = 1; // screen lengths
constexpr int kCheckerSide = 8;
constexpr std::size_t kMostPartsShown = 12;

// Two, so that pixels that take long hold up no others. The application waits for them when it
// goes.
class Workers : public QThreadPool {
public:
    Workers() { setMaxThreadCount(2); }
    ~Workers() override { stop.request_stop(); }

    std::stop_source stop;
};

// The pixels that the painter itself draws to, where these are a window's in memory: copying a
// picture of a dense screen takes longer than drawing it. Nothing for any other painter.
std::optional<editor::Canvas> paintedPixels(const QPainter& painter, const QRect& part)
{
    const QTransform toDevice = painter.deviceTransform();
    QPaintDevice* const device = painter.paintEngine()->paintDevice();
    // Between device pixels, part covers some that are the neighbour's.
    const auto isWhole = [](qreal v) { return v == std::floor(v); };
    if (device->devType() != QInternal::Image || toDevice.type() > QTransform::TxScale ||
        !isWhole(toDevice.m11()) || toDevice.m11() != toDevice.m22() ||
        toDevice.m11() != device->devicePixelRatioF() || !isWhole(toDevice.dx()) ||
        !isWhole(toDevice.dy()))
        return {};
    const auto& image = *static_cast<const QImage*>(device);
    const QRect there = part.translated(int(toDevice.dx()), int(toDevice.dy()));
    if ((image.format() != QImage::Format_RGB32 &&
         image.format() != QImage::Format_ARGB32_Premultiplied) ||
        !image.rect().contains(there))
        return {};
    // Not bits(), which might give the image other pixels than the painter's.
    uchar* const bits = const_cast<uchar*>(image.constScanLine(there.top()));
    return editor::Canvas{part, bits + there.left() * sizeof(QRgb), image.bytesPerLine()};
}

} // namespace

// How work on another thread reaches the view, and finds out that it is gone.
struct CIFImageEditorView::Relay {
    std::mutex lock;
    CIFImageEditorView* view = nullptr;

    // To be done on the view's thread.
    void post(std::function<void(CIFImageEditorView&)> action)
    {
        const std::lock_guard held(lock);
        if (view)
            QMetaObject::invokeMethod(
                view, [view = view, action = std::move(action)] { action(*view); },
                Qt::QueuedConnection);
    }
};

void CIFImageEditorView::connectPixels()
{
    _relay = std::make_shared<Relay>();
    _relay->view = this;
}

void CIFImageEditorView::disconnectPixels()
{
    const std::lock_guard held(_relay->lock);
    _relay->view = nullptr;
}

// A pyramid that is built once at most, and no longer than a layer shows it.
struct CIFImageEditorView::Pixels {
    std::shared_ptr<editor::PicturePyramid> pyramid;
    bool begun = false;
    std::stop_source stop;

    explicit Pixels(std::shared_ptr<editor::PicturePyramid> p) : pyramid(std::move(p)) {}
    ~Pixels() { stop.request_stop(); }
};

const editor::PicturePyramid& CIFImageEditorView::Layer::pyramid() const
{
    return *pixels->pyramid;
}

CIFImageEditorView::Layer CIFImageEditorView::layerOf(const PictureRef& picture, const Rect& rect)
{
    Layer layer;
    layer.picture = picture;
    layer.rect = rect;
    layer.serial = ++_serial;
    const auto share = [&](const Layer& known) {
        if (known.picture == picture)
            layer.pixels = known.pixels;
    };
    for (const auto* known : {&_coming, &_waiting, &_originalLayer})
        if (*known)
            share(**known);
    if (!_layers.empty())
        share(_layers.front());
    if (!layer.pixels)
        layer.pixels = std::make_shared<Pixels>(std::make_shared<editor::PicturePyramid>(picture));
    return layer;
}

void CIFImageEditorView::setPicture(const PictureRef& picture)
{
    const Rect rect = {0, 0, picture ? picture->size().width : 0,
                       picture ? picture->size().height : 0};
    if (!picture) {
        _picture = nullptr;
        _coming.reset();
        _waiting.reset();
        _layers.clear();
    } else if (picture == _picture) {
        // What was shown over it since then goes, once its own pixels can be shown.
        if (_waiting || _coming)
            (_waiting ? _waiting : _coming)->serial = ++_serial;
        else
            showLayer(layerOf(picture, rect));
    } else {
        const Layer next = layerOf(picture, rect);
        _picture = picture;
        const bool keepsShown = !_layers.empty() && _layers.front().rect == rect;
        if (!keepsShown || isReady(next)) {
            _coming.reset();
            _waiting.reset();
            showLayer(next);
            startBuilding(next);
        } else if (_coming) {
            _waiting = next;
        } else {
            _coming = next;
            startBuilding(next);
        }
    }
    if (_originalLayer)
        _originalLayer->rect = originalRect();
    update();
    describe();
    centerMayHaveMoved();
    sightMayHaveChanged();
}

void CIFImageEditorView::showLayer(const Layer& layer)
{
    // Pixels that came after the picture was set belong to a later one.
    std::erase_if(_layers, [&](const Layer& l) { return l.picture || l.serial < layer.serial; });
    _layers.insert(_layers.begin(), layer);
}

void CIFImageEditorView::showPixelsInRect(const imaging::BitmapRef& pixels, const Rect& rect)
{
    if (!pixels || !_picture || rect.isEmpty())
        return;
    Layer layer;
    layer.pixels = std::make_shared<Pixels>(std::make_shared<editor::PicturePyramid>(pixels));
    if (layer.pyramid().levels() == 0)
        return;
    layer.rect = rect;
    layer.serial = ++_serial;
    const double density = pixels->width() / rect.width;
    layer.smooth = density < 0.75 * _picture->pixelsWide() / pictureSize().width;
    // What lies under it entirely is never seen again, but for the picture's own.
    const auto hidden = [&](const Layer& below) {
        return !below.picture && below.rect.x >= rect.x && below.rect.y >= rect.y &&
               below.rect.right() <= rect.right() && below.rect.top() <= rect.top();
    };
    std::erase_if(_layers, hidden);
    if (_layers.size() > kMostPartsShown)
        _layers.erase(_layers.begin() + 1);
    _layers.push_back(layer);
    update(widgetFromPicture(rect).toAlignedRect().adjusted(-1, -1, 1, 1));
    centerMayHaveMoved();
}

bool CIFImageEditorView::showsFinalPixels() const
{
    return !_coming && _layers.size() == 1 && isReady(_layers.front());
}

double CIFImageEditorView::scaleOf(const Layer& layer) const
{
    const QRectF target = deviceFromPicture(layer.rect);
    return std::max(target.width() / layer.pyramid().width(),
                    target.height() / layer.pyramid().height());
}

bool CIFImageEditorView::isReady(const Layer& layer) const
{
    return layer.pyramid().isComplete() ||
           layer.pyramid().levels() > editor::wantedLevel(scaleOf(layer));
}

void CIFImageEditorView::startBuilding(const Layer& layer)
{
    if (std::exchange(layer.pixels->begun, true))
        return;
    Workers& workers = editor::sharedInstance<Workers>();
    workers.start([pyramid = layer.pixels->pyramid, relay = _relay,
                   stop = layer.pixels->stop.get_token(), end = workers.stop.get_token()] {
        const foundation::WorkScope untilTheEnd(end);
        // The host's sink is not for other threads.
        foundation::setLogSinkOfThread([&relay](std::string_view line) {
            relay->post([line = std::string(line)](auto&) { foundation::log(line); });
        });
        pyramid->build(stop, [&relay] { relay->post(&CIFImageEditorView::pixelsDidArrive); });
        foundation::setLogSinkOfThread({});
    });
}

void CIFImageEditorView::pixelsDidArrive()
{
    while (_coming && isReady(*_coming)) {
        showLayer(*std::exchange(_coming, std::exchange(_waiting, std::nullopt)));
        if (_coming)
            startBuilding(*_coming);
    }
    // Most levels that arrive are not the one that is looked at.
    const auto refresh = [this](const Layer& layer) {
        if (editor::availableLevel(layer.pyramid(), scaleOf(layer)) != layer.drawnLevel)
            update(widgetFromPicture(layer.rect).toAlignedRect().adjusted(-1, -1, 1, 1));
    };
    std::for_each(_layers.begin(), _layers.end(), refresh);
    if (_originalLayer && (_showsOriginal || _split))
        refresh(*_originalLayer);
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
    // Modes and densities change without a word to the view.
    centerMayHaveMoved();
    sightMayHaveChanged();
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
    drawComparison(painter);
    drawCenterHandle(painter);
    refreshCursor();
}

void CIFImageEditorView::drawPicture(QPainter& painter, const QRect& part)
{
    QRect result = part, original;
    if (originalIsThere() && _showsOriginal) {
        std::swap(result, original);
    } else if (originalIsThere() && isSplit()) {
        const int x = std::clamp(splitShape().x, part.left(), part.left() + part.width());
        original.setCoords(part.left(), part.top(), x - 1, part.bottom());
        result.setLeft(x);
    }
    if (!result.isEmpty())
        drawLayers(painter, result, _layers);
    if (!original.isEmpty())
        drawLayers(painter, original, {&*_originalLayer, 1});
}

void CIFImageEditorView::drawLayers(QPainter& painter, const QRect& part, std::span<Layer> layers)
{
    std::optional<editor::Canvas> canvas = paintedPixels(painter, part);
    const bool direct = canvas.has_value();
    if (!direct) {
        // Kept from paint to paint: fresh memory costs more than the pixels in it.
        if (_canvas.width() < part.width() || _canvas.height() < part.height())
            _canvas = QImage(part.size().expandedTo(_canvas.size()), QImage::Format_RGB32);
        if (_canvas.isNull())
            return;
        canvas = editor::Canvas::of(_canvas, part);
    }
    const editor::Checkers checkers = {
        .first = 0xffffffff,
        .second = 0xffdedede,
        .side = std::max(qRound(kCheckerSide * devicePixelRatioF()), 1),
        .origin = deviceOrigin(),
    };
    // Layers replace what is under them: drawn from the last on that covers everything.
    std::size_t covering = layers.size();
    for (std::size_t i = 0; i < layers.size(); ++i) {
        Layer& layer = layers[i];
        layer.drawnLevel = editor::availableLevel(layer.pyramid(), scaleOf(layer));
        if (layer.drawnLevel >= 0 &&
            editor::coveredPixels(deviceFromPicture(layer.rect)).contains(part))
            covering = i;
    }
    // Its own pixels are not there yet, or it is an original of another shape.
    if (covering == layers.size()) {
        editor::drawCheckers(checkers, *canvas);
        covering = 0;
    }
    for (const Layer& layer : layers.subspan(covering)) {
        // Parts that are shown as they are need no smaller copies; a zoom may change that.
        if (!isReady(layer))
            startBuilding(layer);
        editor::drawPixels(layer.pyramid(), deviceFromPicture(layer.rect), layer.smooth, checkers,
                           *canvas);
    }
    if (direct)
        return;
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
