#include "generators/GLIFCoreObject.h"

#include "generators/ColorSchemes.h"
#include "generators/FieldTiles.h"
#include "generators/Random.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/BufferPool.h"
#include "platform/imaging/Parallel.h"

#include <algorithm>
#include <fstream>
#include <new>

using namespace generators;

namespace {

// Keys of the shared parameters; none of them changes a field.
constexpr const char* kColorScheme = "GLIFColorScheme";
constexpr const char* kSchemeKeyColor = "GLIFSchemeKeyColor";
constexpr const char* kColorRangeMin = "GLIFColorRangeMin";
constexpr const char* kColorRangeMax = "GLIFColorRangeMax";
constexpr const char* kUseBackgroundColor = "GLIFUseBackgroundColor";
constexpr const char* kBackgroundColor = "GLIFBackgroundColor";
constexpr const char* kWidth = "GLIFWidth";
constexpr const char* kHeight = "GLIFHeight";

// What recording a drawing takes of the time until it is a bitmap; only for reports.
constexpr double kDrawing = 0.2;

// Whether so many pixels, with a field beside them, fit the memory that is free now. The system
// grants more than it has and fails only when the memory is touched, so large pictures are checked
// first.
bool memoryHolds(std::size_t pixels)
{
    const std::size_t kibibytes = pixels / 1024 * (sizeof(std::uint32_t) + sizeof(double));
    if (kibibytes < std::size_t{512} * 1024)
        return true;
    std::ifstream info("/proc/meminfo");
    for (std::string word; info >> word;) {
        std::size_t available = 0;
        if (word == "MemAvailable:" && info >> available)
            return kibibytes < available;
    }
    return true;
}

std::uint32_t byteOf(float component)
{
    return static_cast<std::uint32_t>(truncToInt(std::clamp(component, 0.0f, 1.0f) * 255 + 0.5f));
}

Dictionary withoutColors(Dictionary attributes)
{
    for (const char* key : {kBackgroundColor, kUseBackgroundColor, kColorRangeMin, kColorRangeMax,
                            kColorScheme, kSchemeKeyColor})
        attributes.remove(key);
    return attributes;
}

} // namespace

namespace generators {

bool PixelSize::isValid() const
{
    return width >= 1 && height >= 1 && width <= Bitmap::kMaximumSide &&
           height <= Bitmap::kMaximumSide;
}

void PooledDelete::operator()(double* memory) const
{
    imaging::BufferPool::shared().give(memory, bytes);
}

} // namespace generators

PictureRef GLIFCoreObject::GLIFOutputImageWidthHeightAttributes(const PictureRef& /*reference*/,
                                                                int /*width*/, int /*height*/,
                                                                const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    return nullptr;
}

PictureRef GLIFCoreObject::sampledPicture(const Sampling& sampling, const Dictionary& attributes)
{
    if (!sampling.size.isValid() || !sampling.shown().isValid())
        return nullptr;
    struct Kept {
        explicit Kept(GLIFCoreObject& owner)
            : object(owner), field(std::move(owner._prefetchBuffer)), record(owner._preAttr),
              fieldsComputed(owner._fieldsComputed)
        {
        }
        ~Kept()
        {
            object._prefetchBuffer = std::move(field);
            object._preAttr = std::move(record);
            object._fieldsComputed = fieldsComputed;
        }
        GLIFCoreObject& object;
        decltype(_prefetchBuffer) field;
        Dictionary record;
        int fieldsComputed;
    };
    GLIFIsChangeAttributesNewWidthNewHeight(attributes, sampling.size.width, sampling.size.height);
    const Kept kept(*this);
    readSharedAttributes(attributes);
    return makeSample(sampling, attributes);
}

PictureRef GLIFCoreObject::makeSample(const Sampling& /*sampling*/,
                                      const Dictionary& /*attributes*/)
{
    return nullptr;
}

const AttributeTable& GLIFCoreObject::attributeTable() const
{
    static constexpr AttributeTable kNone;
    return kNone;
}

std::vector<std::string> GLIFCoreObject::GLIFQueryInputKeys() const
{
    return attributeTable().keys();
}

Dictionary GLIFCoreObject::GLIFQueryAttributes() const
{
    return attributeTable().descriptions();
}

std::vector<std::string> GLIFCoreObject::GLIFQueryOutputKeys() const
{
    return {};
}

void GLIFCoreObject::drawRect(Canvas& canvas, const Rect& rect)
{
    drawBackgroundInRect(canvas, rect);
}

void GLIFCoreObject::drawBackgroundInRect(Canvas& canvas, const Rect& rect) const
{
    if (!_useBackColor || !_backColor)
        return;
    canvas.save();
    canvas.setColor(*_backColor);
    canvas.fillRect(rect);
    canvas.restore();
}

bool GLIFCoreObject::GLIFIsChangeAttributesNewWidthNewHeight(const Dictionary& attributes,
                                                             int newWidth, int newHeight)
{
    if (_preAttr.intValue(kWidth, 0) != newWidth || _preAttr.intValue(kHeight, 0) != newHeight) {
        _bNeedUpdateCashe = true;
        return true;
    }
    Dictionary before = _preAttr;
    before.remove(kWidth);
    before.remove(kHeight);
    _bNeedUpdateCashe = !(withoutColors(attributes) == withoutColors(before));
    return _bNeedUpdateCashe;
}

void GLIFCoreObject::GLIFWriteToPreAttrWidthHeight(const Dictionary& attributes, int width,
                                                   int height)
{
    _preAttr = attributes;
    _preAttr.set(kWidth, width);
    _preAttr.set(kHeight, height);
}

void GLIFCoreObject::GLIFUpdateCasheWidthHeight(const Dictionary& attributes, int width, int height)
{
    if (GLIFIsChangeAttributesNewWidthNewHeight(attributes, width, height))
        GLIFWriteToPreAttrWidthHeight(attributes, width, height);
}

std::uint32_t GLIFCoreObject::GLIFQueryPrefetchBufferSizeForSize(foundation::Size size) const
{
    const float bytes = static_cast<float>(size.width) * static_cast<float>(size.height) * 8.0f;
    return foundation::saturateToUInt32(bytes);
}

void GLIFCoreObject::readSharedAttributes(const Dictionary& attributes)
{
    restartRandomDraws();
    _iColorScheme = attributes.intValue(kColorScheme, _iColorScheme);
    _schemeKeyColor = attributes.doubleValue(kSchemeKeyColor, _schemeKeyColor);
    _colorRangeMin = attributes.floatValue(kColorRangeMin, 0.0f);
    _colorRangeMax = attributes.floatValue(kColorRangeMax, 1.0f);
    _useBackColor = attributes.boolValue(kUseBackgroundColor, _useBackColor);
    if (const Color* color = attributes[kBackgroundColor].color())
        _backColor = *color;
}

PixelSize GLIFCoreObject::pictureSize(const PictureRef& reference, int width, int height)
{
    if (!reference)
        return {width, height};
    return {truncToInt(reference->size().width), truncToInt(reference->size().height)};
}

float GLIFCoreObject::penWidth(float width)
{
    // Written so that a not-a-number becomes 0.
    return width > 0 ? std::min(width, static_cast<float>(Bitmap::kMaximumSide)) : 0.0f;
}

PictureRef GLIFCoreObject::renderDrawRect(PixelSize size, std::string_view failure)
{
    if (size.isValid()) {
        try {
            const double width = size.width, height = size.height;
            Canvas canvas({width, height});
            drawRect(canvas, {0, 0, width, height});
            if (PictureRef picture = drawing::Picture::fromRecording(canvas.finish()))
                return picture;
        } catch (const std::bad_alloc&) {
            // More shapes than memory holds; reported below.
        }
    }
    foundation::log(failure);
    return nullptr;
}

PictureRef GLIFCoreObject::renderBitmap(PixelSize size,
                                        const std::function<void(Canvas&)>& draw) const
{
    if (!size.isValid() || !memoryHolds(size.pixels()))
        return nullptr;
    try {
        Canvas canvas({static_cast<double>(size.width), static_cast<double>(size.height)});
        {
            const foundation::ProgressPart part(0, kDrawing);
            draw(canvas);
        }
        const drawing::RecordingRef recording = canvas.finish();
        const foundation::ProgressPart part(kDrawing, 1);
        auto bitmap = drawing::rasterize(*recording, size.width, size.height);
        if (bitmap)
            return drawing::Picture::fromBitmapAndRecording(*bitmap, recording);
    } catch (const std::bad_alloc&) {
        // No picture, as for a bitmap that memory cannot hold.
    }
    return nullptr;
}

PictureRef GLIFCoreObject::renderBitmap(PixelSize size, const std::function<void(Canvas&)>& draw,
                                        const std::function<bool(Bitmap&)>& paint)
{
    const std::shared_ptr<Bitmap> bitmap = makeBitmap(size);
    if (!bitmap)
        return nullptr;
    try {
        Canvas canvas({static_cast<double>(size.width), static_cast<double>(size.height)});
        {
            const foundation::ProgressPart part(0, kDrawing);
            draw(canvas);
        }
        const foundation::ProgressPart part(kDrawing, 1);
        if (paint(*bitmap))
            return drawing::Picture::fromBitmapAndRecording(bitmap, canvas.finish());
    } catch (const std::bad_alloc&) {
        // More shapes than memory holds.
    }
    return nullptr;
}

PictureRef GLIFCoreObject::pictureOverBackground(std::shared_ptr<Bitmap> bitmap) const
{
    if (!bitmap)
        return nullptr;
    if (_useBackColor && _backColor) {
        const std::uint32_t background = byteOf(_backColor->alpha) << 24 |
                                         byteOf(_backColor->blue) << 16 |
                                         byteOf(_backColor->green) << 8 | byteOf(_backColor->red);
        imaging::parallelRows(0, bitmap->height(), 64, [&](int first, int last) {
            for (int y = first; y < last; ++y) {
                auto* row = bitmap->rowAs<std::uint32_t>(y);
                for (int x = 0; x < bitmap->width(); ++x)
                    row[x] = row[x] >> 24 == 0 ? background : row[x];
            }
        });
    }
    return drawing::Picture::fromBitmap(std::move(bitmap));
}

std::shared_ptr<Bitmap> GLIFCoreObject::makeBitmap(PixelSize size)
{
    std::shared_ptr<Bitmap> bitmap;
    if (size.isValid() && memoryHolds(size.pixels()))
        bitmap = Bitmap::makeClear(size.width, size.height, imaging::PixelFormat::Rgba8);
    // Without a picture no field is filled, and the next call must not take it for a valid one.
    if (!bitmap)
        _preAttr.clear();
    return bitmap;
}

bool GLIFCoreObject::renewPrefetchBuffer(std::size_t count)
{
    _prefetchBuffer.reset();
    const std::size_t bytes = count * sizeof(double);
    void* memory = memoryHolds(count) ? imaging::BufferPool::shared().take(bytes) : nullptr;
    if (!memory) {
        _preAttr.clear();
        return false;
    }
    _prefetchBuffer = decltype(_prefetchBuffer)(static_cast<double*>(memory), PooledDelete{bytes});
    ++_fieldsComputed;
    return true;
}

void GLIFCoreObject::paintField(Bitmap& bitmap, double above) const
{
    const auto color = [&](std::uint32_t* words, const double* values, int count) {
        computeColorsToMem(words, values, count, _colorRangeMin, _colorRangeMax);
        for (int y = 0; y < count; ++y)
            words[y] = (values[y] > above) & (values[y] <= 1) ? words[y] : 0;
    };
    const auto put = [&](int x, int y, const std::uint32_t* words, int count) {
        std::copy_n(words, count, bitmap.rowAs<std::uint32_t>(y) + x);
    };
    forFieldTiles(_prefetchBuffer.get(), bitmap.width(), bitmap.height(), color, put);
}
