// What hosts hold: a picture with a size in points and one or more representations.
#pragma once

#include "platform/drawing/Canvas.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"
#include "platform/imaging/Bitmap.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace drawing {

using foundation::PictureRef;

// A vector source that becomes pixels on demand.
class VectorSource {
public:
    virtual ~VectorSource() = default;
    // In points.
    virtual Size size() const = 0;
    // The whole of it drawn into width × height pixels on transparent.
    virtual foundation::Result<imaging::BitmapRef> rasterize(int width, int height) const = 0;
    // The recorded drawing behind it, if there is one.
    virtual RecordingRef recording() const { return nullptr; }
    // A part of that drawing for looking at; see drawing::rasterizePart().
    virtual foundation::Result<imaging::BitmapRef> rasterizePart(
        const Rect& part, int width, int height, const RasterOptions& options) const;
};

// A picture whose pixels are made when they are asked for.
class DeferredSource {
public:
    virtual ~DeferredSource() = default;
    virtual int pixelsWide() const = 0;
    virtual int pixelsHigh() const = 0;
    // Null when that fails; throws foundation::Stopped when the thread's work is to stop.
    virtual imaging::BitmapRef render() const = 0;
};

// Blocks that travel with a picture file untouched, and what the reader noted about it.
struct PictureMetadata {
    std::string icc;    // an RGB profile, as in the file; empty if none
    std::string exif;   // TIFF-structured block without "Exif\0\0", orientation already set to 1
    std::string xmp;    // packet
    std::string recipe; // what made the picture, as JSON; empty if unknown
    double dpiX = 0, dpiY = 0; // 0 if unknown
};

// Immutable. Compared by identity where caches are concerned. Pixels of deferred and vector
// pictures are made once for each size asked last and kept. Inside a WorkScope the making of pixels
// reports its progress and, when it is to stop, throws foundation::Stopped and keeps nothing.
class Picture {
public:
    // Each answers null when handed null.
    // A bitmap picture measures its pixels unless a size in points is given.
    static PictureRef fromBitmap(imaging::BitmapRef bitmap, PictureMetadata metadata = {});
    static PictureRef fromBitmap(imaging::BitmapRef bitmap, Size size,
                                 PictureMetadata metadata = {});
    static PictureRef fromVector(std::shared_ptr<const VectorSource> source,
                                 PictureMetadata metadata = {});
    static PictureRef fromRecording(RecordingRef recording);
    // A bitmap that keeps the drawing it was made of, for vector output; pixels come from the
    // bitmap.
    static PictureRef fromBitmapAndRecording(imaging::BitmapRef bitmap, RecordingRef recording);
    static PictureRef fromDeferred(std::shared_ptr<const DeferredSource> source, Size size);
    // Transparent.
    static PictureRef blank(Size size);

    Size size() const { return _size; }
    // Whether the best representation is a vector one (PDF, EPS, SVG or a recorded drawing).
    bool isVector() const;
    // Of the best representation; of a vector picture its size in points, rounded up to whole
    // pixels.
    int pixelsWide() const;
    int pixelsHigh() const;

    // The best representation's own pixels (a vector picture at its point size). Null on failure;
    // why a vector picture could not be drawn is then logged.
    imaging::BitmapRef bitmap() const;
    // The same where the pixels are there already; null instead of making them.
    imaging::BitmapRef bitmapIfMade() const;
    // The whole picture drawn into width × height pixels: vectors afresh, bitmaps scaled (linear,
    // averaged when made smaller), the same object when the size is already right. Null on failure.
    imaging::BitmapRef bitmapOfSize(int width, int height) const;

    // A part (in points, y up) of a picture whose pixels come from a recorded drawing, drawn into
    // width × height pixels for looking at: see rasterizePart(). Nothing is kept. Null for other
    // pictures, and on failure, which is logged.
    imaging::BitmapRef part(const Rect& rect, int width, int height,
                            const RasterOptions& options = {}) const;

    // The recorded drawing, if any representation has one.
    RecordingRef recording() const;
    const PictureMetadata& metadata() const { return _metadata; }

    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

private:
    Picture() = default;
    imaging::BitmapRef rendered(int width, int height) const;

    Size _size;
    imaging::BitmapRef _bitmap;
    std::shared_ptr<const VectorSource> _vector;
    std::shared_ptr<const DeferredSource> _deferred;
    RecordingRef _recording;
    PictureMetadata _metadata;
    mutable std::mutex _renderedLock;
    mutable imaging::BitmapRef _rendered; // last pixels made of a vector or deferred source
};

} // namespace drawing
