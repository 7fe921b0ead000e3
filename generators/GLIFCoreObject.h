// What all generators share: colours, background, the description of their parameters, the record
// of the last computation, and the making of the picture.
#pragma once

#include "generators/AttributeTable.h"
#include "generators/Sampling.h"
#include "platform/drawing/Canvas.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/Work.h"
#include "platform/imaging/Bitmap.h"

#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace generators {

// The words a generator file is written in.
using drawing::Canvas;
using drawing::Path;
using drawing::PictureRef;
using foundation::AffineTransform;
using foundation::Color;
using foundation::Dictionary;
using foundation::Point;
using foundation::Rect;
using foundation::truncToInt;
using imaging::Bitmap;

// Returns pooled memory; `bytes` is what was asked for.
struct PooledDelete {
    std::size_t bytes = 0;
    void operator()(double* memory) const;
};

} // namespace generators

// A generator turns parameters and the random sequence into a picture. One object makes many
// pictures, one at a time: shared parameters that a call leaves out keep the value of the call
// before, and a generator that keeps a field of values (one double per pixel, free of colour)
// computes it again only when something other than the colours has changed.
//
// A generator overrides attributeTable() and GLIFOutputImageWidthHeightAttributes(); one that draws
// shapes overrides drawRect() too.
//
// Inside a WorkScope making a picture reports its progress and can be stopped. The object is then
// ready for the next call: a field that was not finished is forgotten.
class GLIFCoreObject {
public:
    using AttributeTable = generators::AttributeTable;
    using Canvas = drawing::Canvas;
    using Dictionary = foundation::Dictionary;
    using PictureRef = foundation::PictureRef;
    using Rect = foundation::Rect;

    GLIFCoreObject() = default;
    virtual ~GLIFCoreObject() = default;
    GLIFCoreObject(const GLIFCoreObject&) = delete;
    GLIFCoreObject& operator=(const GLIFCoreObject&) = delete;

    // GLIFOutputImage:width:height:attributes:
    // The picture, of the reference picture's size (truncated) if one is given, else of width ×
    // height pixels. Null when a side is not in 1 … Bitmap::kMaximumSide, memory is short, or the
    // generator has nothing to draw. Draws from rand, which the caller seeds immediately before.
    // The base makes no picture.
    virtual PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                            int height,
                                                            const Dictionary& attributes);

    // Those pixels of the picture that the call above would make of sampling.size; only they are
    // computed. Null when there would be none, or when no pixel is known before the others are.
    // Draws from rand like that call; the field, and the record of the last computation, stay.
    PictureRef sampledPicture(const generators::Sampling& sampling, const Dictionary& attributes);

    // The keys of the parameters, in the order in which they are shown.
    virtual std::vector<std::string> GLIFQueryInputKeys() const;
    // For each of them "GLIFMinValue", "GLIFMaxValue", "GLIFDefValue"; the kind of a number is the
    // kind of control. A colour has only a default.
    virtual Dictionary GLIFQueryAttributes() const;
    // Always empty.
    virtual std::vector<std::string> GLIFQueryOutputKeys() const;

    // drawRect:
    // Draws the picture's shapes; the base draws the background.
    virtual void drawRect(Canvas& canvas, const Rect& rect);
    // drawBackgroundInRect:
    // Replaces what is in the rectangle by the background colour, if one is wanted and set.
    void drawBackgroundInRect(Canvas& canvas, const Rect& rect) const;

    // GLIFIsChangeAttributes:newWidth:newHeight:
    // Whether the size, or any parameter other than colours and background, differs from the record
    // of the last computation. The answer is kept in _bNeedUpdateCashe.
    bool GLIFIsChangeAttributesNewWidthNewHeight(const Dictionary& attributes, int newWidth,
                                                 int newHeight);
    // GLIFWriteToPreAttr:width:height:
    // Makes the attributes and the size the record of the last computation.
    void GLIFWriteToPreAttrWidthHeight(const Dictionary& attributes, int width, int height);
    // GLIFUpdateCashe:width:height: (sic)
    // The two together: records the attributes if they have changed.
    void GLIFUpdateCasheWidthHeight(const Dictionary& attributes, int width, int height);

    // GLIFQueryPrefetchBufferSizeForSize:
    // Bytes of one double per pixel, computed in single precision and saturated to 32 bits.
    std::uint32_t GLIFQueryPrefetchBufferSizeForSize(foundation::Size size) const;
    // The field of the last picture, null if there is none. Its layout is the generator's own.
    double* GLIFPrefetchBuffer() const { return _prefetchBuffer.get(); }

    // How often a field has been computed by this object. Recolouring does not count.
    int fieldsComputed() const { return _fieldsComputed; }

protected:
    using PixelSize = generators::PixelSize;
    using Sampling = generators::Sampling;

    // What sampledPicture answers. The field is the sample's own meanwhile, and _bNeedUpdateCashe
    // tells whether the whole picture's would be computed anew. The base answers null.
    virtual PictureRef makeSample(const Sampling& sampling, const Dictionary& attributes);

    // --- Parameters ---

    virtual const AttributeTable& attributeTable() const;

    // Begins a picture: starts the count of random draws and reads the parameters that all
    // generators share. An absent key leaves its field as it is, except the colour range: 0 and 1.
    void readSharedAttributes(const Dictionary& attributes);

    // The reference picture's size, truncated, if there is one, else the numbers given.
    static PixelSize pictureSize(const PictureRef& reference, int width, int height);

    // A line width that can be drawn: negative or not a number gives 0, the thinnest line.
    static float penWidth(float width);

    // --- Making the picture ---

    // A vector picture of what drawRect draws. When there can be none, logs the text and returns
    // null.
    PictureRef renderDrawRect(PixelSize size, std::string_view failure);
    // A bitmap picture of what the function draws; it keeps the drawing for vector output.
    PictureRef renderBitmap(PixelSize size, const std::function<void(Canvas&)>& draw) const;
    // The same with pixels that the second function makes without drawing; they start transparent.
    // Null when it answers false.
    PictureRef renderBitmap(PixelSize size, const std::function<void(Canvas&)>& draw,
                            const std::function<bool(imaging::Bitmap&)>& paint);
    // A bitmap picture of these bytes (RGBA); pixels that are transparent take the background
    // colour, if one is wanted. Every pixel is either opaque or transparent.
    PictureRef pictureOverBackground(std::shared_ptr<imaging::Bitmap> bitmap) const;
    // Transparent RGBA bytes. Null, and the record of the last computation cleared, when the size
    // is not valid or memory is short.
    std::shared_ptr<imaging::Bitmap> makeBitmap(PixelSize size);

    // --- The field ---

    // The value of a pixel that was never set: every byte 0x40. Above 1, so that it takes no
    // colour.
    static constexpr double kUnsetValue = std::bit_cast<double>(std::uint64_t{0x4040404040404040});

    // Computes the field (and, where colouring it again would show something else, the picture).
    // When that is given up by an exception, the record of the last computation is cleared and the
    // field discarded.
    template <class Work>
    auto compute(const Work& work)
    {
        const foundation::ProgressPart part(0, 0.9);
        try {
            return work();
        } catch (...) {
            _preAttr.clear();
            _prefetchBuffer.reset();
            throw;
        }
    }
    // Discards the field and makes room for a new one of that many values, uninitialised. False,
    // and the record of the last computation cleared, when memory is short.
    bool renewPrefetchBuffer(std::size_t count);
    // Colours a column-major field (pixel (x, y) at x × height + y, row 0 on top) of the bitmap's
    // size by the colour range. Pixels whose value is not above `above` and at most 1 become
    // transparent.
    void paintField(imaging::Bitmap& bitmap,
                    double above = -std::numeric_limits<double>::infinity()) const;

    // --- State ---

    // Hues, 0 to 1. Of single precision when read from attributes.
    double _colorRangeMin = 0;
    double _colorRangeMax = 0;
    std::int32_t _iColorScheme = 0;
    double _schemeKeyColor = 0; // a hue, 0 to 1
    bool _useBackColor = false;
    std::optional<foundation::Color> _backColor;
    bool _bNeedUpdateCashe = false; // sic
    std::unique_ptr<double[], generators::PooledDelete> _prefetchBuffer;
    Dictionary _preAttr;

private:
    int _fieldsComputed = 0;
};
