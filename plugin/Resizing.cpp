// Stretching, fitting on white, and cutting out.
#include "plugin/Resizing.h"

#include "platform/drawing/Picture.h"
#include "platform/drawing/Scaling.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <unistd.h>

using drawing::Picture;
using drawing::Recording;
using drawing::RecordingRef;
using foundation::AffineTransform;
using foundation::Error;
using foundation::PictureRef;
using foundation::Rect;
using foundation::Result;
using foundation::Size;
using imaging::Bitmap;
using imaging::BitmapRef;

namespace plugin {

namespace {

constexpr const char* kNoPicture = "there is no picture";
constexpr const char* kNoPixels = "the picture has no pixels that can be read";

std::string sizeText(double width, double height)
{
    return std::to_string(std::llround(width)) + " x " + std::to_string(std::llround(height)) +
           " pixels";
}

// The whole picture in its own proportions, as large as it fits, in the middle.
Rect fittedRect(Size picture, double width, double height)
{
    const double r = picture.width / picture.height;
    const Size drawn = r > width / height ? Size{width, width / r} : Size{r * height, height};
    return {(width - drawn.width) * 0.5, (height - drawn.height) * 0.5, drawn.width, drawn.height};
}

BitmapRef stretchedBitmap(const Picture& picture, int width, int height)
{
    return picture.bitmapOfSize(width, height);
}

BitmapRef thumbnailBitmap(const Picture& picture, int width, int height)
{
    const Rect place = fittedRect(picture.size(), width, height);
    // Drawings are drawn afresh, at the next whole size.
    const BitmapRef source =
        picture.isVector()
            ? picture.bitmapOfSize(std::max(1, static_cast<int>(std::ceil(place.width))),
                                   std::max(1, static_cast<int>(std::ceil(place.height))))
            : picture.bitmap();
    return source ? drawing::bitmapOnWhite(*source, width, height, place) : nullptr;
}

BitmapRef partOf(const Bitmap& bitmap, int left, int top, int width, int height)
{
    const std::shared_ptr<Bitmap> part = Bitmap::make(width, height, bitmap.format());
    if (!part)
        return nullptr;
    const std::size_t pixel = imaging::bytesPerPixel(bitmap.format());
    for (int y = 0; y < height; ++y)
        std::memcpy(part->row(y), bitmap.row(top + y) + left * pixel, width * pixel);
    return part;
}

// The drawing on a smaller page.
RecordingRef partOf(const Recording& recording, const Rect& rect)
{
    const AffineTransform moved = AffineTransform::translation(-rect.x, -rect.y);
    auto part = std::make_shared<Recording>(recording);
    part->size = {rect.width, rect.height};
    for (Recording::Op& op : part->ops) {
        if (auto* fill = std::get_if<Recording::Fill>(&op))
            fill->path.transform(moved);
        else if (auto* stroke = std::get_if<Recording::Stroke>(&op))
            stroke->matrix = stroke->matrix.followedBy(moved);
        else
            std::get<Recording::Image>(op).matrix =
                std::get<Recording::Image>(op).matrix.followedBy(moved);
    }
    return part;
}

// The nearest whole pixels from `start` to `end`, at least one of them and all inside.
struct PixelSpan {
    int first = 0, count = 0;

    static PixelSpan of(double start, double end, int pixels)
    {
        const double low = std::clamp<double>(std::round(start), 0, pixels - 1);
        const double high = std::clamp<double>(std::round(end), low + 1, pixels);
        return {static_cast<int>(low), static_cast<int>(high - low)};
    }
};

} // namespace

foundation::Status fitsMemory(double width, double height, int bytesPerPixel)
{
    const auto isSide = [](double side) { return side >= 1 && side <= Bitmap::kMaximumSide; };
    if (!isSide(width) || !isSide(height))
        return Error{"a picture's sides are from 1 to " + std::to_string(Bitmap::kMaximumSide) +
                     " pixels"};
    const double present =
        static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    if (bytesPerPixel * width * height <= present)
        return foundation::Done{};
    return Error{"a picture of " + sizeText(width, height) +
                 " needs more memory than this machine has; make it smaller"};
}

Result<PictureRef> resized(const PictureRef& picture, int width, int height, bool asThumbnail)
{
    if (!picture)
        return Error{kNoPicture};
    const Size size = picture->size();
    if (!(size.width > 0) || !(size.height > 0))
        return Error{kNoPixels};
    if (const auto fits = fitsMemory(width, height); !fits)
        return Error{fits.error()};
    BitmapRef bitmap = asThumbnail ? thumbnailBitmap(*picture, width, height)
                                   : stretchedBitmap(*picture, width, height);
    if (!bitmap)
        return Error{picture->isVector() || picture->bitmap()
                         ? "a picture of " + sizeText(width, height) + " can't be made here"
                         : kNoPixels};
    return Picture::fromBitmap(std::move(bitmap), picture->metadata());
}

Result<PictureRef> cropped(const PictureRef& picture, const Rect& rect)
{
    if (!picture)
        return Error{kNoPicture};
    const Size size = picture->size();
    const auto overlaps = [](double start, double length, double whole) {
        return length > 0 && start < whole && start + length > 0;
    };
    if (!overlaps(rect.x, rect.width, size.width) || !overlaps(rect.y, rect.height, size.height))
        return Error{"the part lies outside the picture"};
    const BitmapRef bitmap = picture->bitmap();
    if (!bitmap)
        return Error{kNoPixels};

    const double acrossPoint = bitmap->width() / size.width;
    const double alongPoint = bitmap->height() / size.height;
    const auto [x, width] =
        PixelSpan::of(rect.x * acrossPoint, (rect.x + rect.width) * acrossPoint, bitmap->width());
    const auto [y, height] =
        PixelSpan::of(rect.y * alongPoint, (rect.y + rect.height) * alongPoint, bitmap->height());
    BitmapRef part = partOf(*bitmap, x, bitmap->height() - y - height, width, height);
    if (!part)
        return Error{"memory is short"};
    const Rect kept = {x / acrossPoint, y / alongPoint, width / acrossPoint, height / alongPoint};
    if (const RecordingRef recording = picture->recording())
        return Picture::fromBitmapAndRecording(std::move(part), partOf(*recording, kept));
    return Picture::fromBitmap(std::move(part), {kept.width, kept.height}, picture->metadata());
}

} // namespace plugin
