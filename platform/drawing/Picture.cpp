// Pictures: which representation answers, and pixels made on demand.
#include "platform/drawing/Picture.h"

#include "platform/drawing/Scaling.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"

#include <cmath>

namespace drawing {

using imaging::BitmapRef;

namespace {

// Up to whole pixels; what rounding in a file or a unit conversion added is no pixel.
int wholePixels(double points)
{
    return foundation::truncToInt(std::ceil(points - 1e-6));
}

class RecordingSource : public VectorSource {
public:
    explicit RecordingSource(RecordingRef recording) : _recording(std::move(recording)) {}

    Size size() const override { return _recording->size; }
    foundation::Result<BitmapRef> rasterize(int width, int height) const override
    {
        auto bitmap = drawing::rasterize(*_recording, width, height);
        if (!bitmap)
            return foundation::Error{bitmap.error()};
        return BitmapRef(*std::move(bitmap));
    }
    RecordingRef recording() const override { return _recording; }

private:
    RecordingRef _recording;
};

} // namespace

foundation::Result<BitmapRef> VectorSource::rasterizePart(const Rect& part, int width, int height,
                                                          const RasterOptions& options) const
{
    const RecordingRef drawing = recording();
    if (!drawing)
        return foundation::Error{"only a recorded drawing can be drawn in part"};
    auto bitmap = drawing::rasterizePart(*drawing, part, width, height, options);
    if (!bitmap)
        return foundation::Error{bitmap.error()};
    return BitmapRef(*std::move(bitmap));
}

PictureRef Picture::fromBitmap(BitmapRef bitmap, PictureMetadata metadata)
{
    const Size size = bitmap ? Size{double(bitmap->width()), double(bitmap->height())} : Size{};
    return fromBitmap(std::move(bitmap), size, std::move(metadata));
}

PictureRef Picture::fromBitmap(BitmapRef bitmap, Size size, PictureMetadata metadata)
{
    if (!bitmap)
        return nullptr;
    std::shared_ptr<Picture> picture(new Picture);
    picture->_size = size;
    picture->_bitmap = std::move(bitmap);
    picture->_metadata = std::move(metadata);
    return picture;
}

PictureRef Picture::fromVector(std::shared_ptr<const VectorSource> source, PictureMetadata metadata)
{
    if (!source)
        return nullptr;
    std::shared_ptr<Picture> picture(new Picture);
    picture->_size = source->size();
    picture->_recording = source->recording();
    picture->_vector = std::move(source);
    picture->_metadata = std::move(metadata);
    return picture;
}

PictureRef Picture::fromRecording(RecordingRef recording)
{
    return recording ? fromVector(std::make_shared<RecordingSource>(std::move(recording)))
                     : nullptr;
}

PictureRef Picture::fromBitmapAndRecording(BitmapRef bitmap, RecordingRef recording)
{
    if (!bitmap)
        return fromRecording(std::move(recording));
    std::shared_ptr<Picture> picture(new Picture);
    picture->_size =
        recording ? recording->size : Size{double(bitmap->width()), double(bitmap->height())};
    picture->_bitmap = std::move(bitmap);
    picture->_recording = std::move(recording);
    return picture;
}

PictureRef Picture::fromDeferred(std::shared_ptr<const DeferredSource> source, Size size)
{
    if (!source)
        return nullptr;
    std::shared_ptr<Picture> picture(new Picture);
    picture->_size = size;
    picture->_deferred = std::move(source);
    return picture;
}

PictureRef Picture::blank(Size size)
{
    // A drawing of nothing would do as well, but would count as a vector picture.
    class Blank : public DeferredSource {
    public:
        explicit Blank(Size size)
            : _width(wholePixels(size.width)), _height(wholePixels(size.height))
        {
        }
        int pixelsWide() const override { return _width; }
        int pixelsHigh() const override { return _height; }
        BitmapRef render() const override
        {
            return imaging::Bitmap::makeClear(_width, _height, imaging::PixelFormat::Rgba8);
        }

    private:
        int _width, _height;
    };
    return fromDeferred(std::make_shared<Blank>(size), size);
}

bool Picture::isVector() const
{
    return _vector != nullptr;
}

int Picture::pixelsWide() const
{
    return _bitmap     ? _bitmap->width()
           : _deferred ? _deferred->pixelsWide()
                       : wholePixels(_size.width);
}

int Picture::pixelsHigh() const
{
    return _bitmap     ? _bitmap->height()
           : _deferred ? _deferred->pixelsHigh()
                       : wholePixels(_size.height);
}

BitmapRef Picture::rendered(int width, int height) const
{
    {
        const std::lock_guard lock(_renderedLock);
        const bool fits = _deferred || (_rendered && _rendered->width() == width &&
                                        _rendered->height() == height);
        if (_rendered && fits)
            return _rendered;
    }
    // Outside the lock: two callers at once may both draw, neither waits for the other's size.
    BitmapRef fresh;
    if (_deferred) {
        fresh = _deferred->render();
    } else if (auto drawn = _vector->rasterize(width, height)) {
        fresh = *std::move(drawn);
    } else {
        foundation::log(drawn.error());
    }
    if (fresh) {
        const std::lock_guard lock(_renderedLock);
        _rendered = fresh;
    }
    return fresh;
}

BitmapRef Picture::bitmap() const
{
    return _bitmap ? _bitmap : rendered(pixelsWide(), pixelsHigh());
}

BitmapRef Picture::bitmapIfMade() const
{
    if (_bitmap)
        return _bitmap;
    const std::lock_guard lock(_renderedLock);
    const bool fits = _deferred || (_rendered && _rendered->width() == pixelsWide() &&
                                    _rendered->height() == pixelsHigh());
    return fits ? _rendered : nullptr;
}

BitmapRef Picture::bitmapOfSize(int width, int height) const
{
    if (_vector)
        return rendered(width, height);
    BitmapRef whole = bitmap();
    if (!whole || (whole->width() == width && whole->height() == height))
        return whole;
    return scaledBitmap(*whole, width, height);
}

BitmapRef Picture::part(const Rect& rect, int width, int height, const RasterOptions& options) const
{
    if (!_vector || !_recording)
        return nullptr;
    auto drawn = _vector->rasterizePart(rect, width, height, options);
    if (drawn)
        return *std::move(drawn);
    if (!options.stop.stop_requested())
        foundation::log(drawn.error());
    return nullptr;
}

RecordingRef Picture::recording() const
{
    return _recording;
}

} // namespace drawing
