#include "generators/GLIF_Dabs.h"

#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "generators/StackedShapes.h"
#include "platform/drawing/Scaling.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

using namespace generators;

namespace {

constexpr AttributeTable kAttributes = {
    {"GLIFCountDabs", 1, 40, 15},
    {"GLIFLength", 1, 200, 68},
    {"GLIFAngle", -180, 180, 0},
    {"GLIFType", 0, 360, 0},
    {"GLIFColorScheme", 0, 20, 5},
    {"GLIFSchemeKeyColor", 0.0f, 1.0f, 0.6f},
    {"GLIFUseBackgroundColor", false, true, false},
    {"GLIFBackgroundColor", Color::white()},
};

// Beyond the described range, kept so that a drawing ends: five thousand dabs, stamps a hundred
// times their brush.
constexpr int kLargestCount = 100;
constexpr int kLargestScale = 10'000;
// Points; stamps without an area, and of brushes beyond all bounds, print nothing.
constexpr float kSmallestStamp = 1e-4f, kLargestStamp = 1e9f;
// Pixels; a larger stamp of a vector brush would be no sharper on any picture.
constexpr double kLargestStampSide = 4096;

// The brush at the size of the stamp. Enlarged it stays as it is: the drawing enlarges it by the
// same interpolation.
imaging::BitmapRef stampMask(const drawing::Picture& brush, float width, float height)
{
    const auto pixels = [](double side) {
        return truncToInt(std::clamp(std::ceil(side), 1.0, kLargestStampSide));
    };
    const foundation::ProgressPart unheard(0, 0);
    const bool isSmaller = width < brush.pixelsWide() && height < brush.pixelsHigh();
    return isSmaller || brush.isVector() ? brush.bitmapOfSize(pixels(width), pixels(height))
                                         : brush.bitmap();
}

// The alpha of a stamp, a byte to a pixel, row 0 on top.
struct Mask {
    int width = 0, height = 0;
    std::vector<std::uint8_t> bytes;

    // Between four pixels' centres; the border pixels go on outwards.
    float at(float u, float v) const
    {
        const float x = std::clamp(u - 0.5f, 0.0f, static_cast<float>(width - 1));
        const float y = std::clamp(v - 0.5f, 0.0f, static_cast<float>(height - 1));
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        return mixed(x - static_cast<float>(left), y - static_cast<float>(top),
                     &bytes[static_cast<std::size_t>(top) * width + left], left + 1 < width ? 1 : 0,
                     top + 1 < height ? width : 0);
    }

    // The same at a place that has a pixel on each side, counted from the first pixel's centre; the
    // limits only guard against rounding.
    float between(float x, float y) const
    {
        const int left = std::clamp(static_cast<int>(x), 0, width - 2);
        const int top = std::clamp(static_cast<int>(y), 0, height - 2);
        return mixed(x - static_cast<float>(left), y - static_cast<float>(top),
                     &bytes[static_cast<std::size_t>(top) * width + left], 1, width);
    }

private:
    static float mixed(float fx, float fy, const std::uint8_t* p, int across, int down)
    {
        const auto part = [](int byte) { return static_cast<float>(byte); };
        const float upper = part(p[0]) + fx * part(p[across] - p[0]);
        const float lower = part(p[down]) + fx * part(p[down + across] - p[down]);
        return (upper + fy * (lower - upper)) * (1 / 255.0f);
    }
};

Mask alphaOf(const Bitmap& bitmap)
{
    Mask mask = {bitmap.width(), bitmap.height(), {}};
    mask.bytes.reserve(static_cast<std::size_t>(mask.width) * mask.height);
    for (int y = 0; y < mask.height; ++y)
        for (int x = 3; x < 4 * mask.width; x += 4) {
            const float alpha = bitmap.format() == imaging::PixelFormat::Rgba8
                                    ? bitmap.rowAs<std::uint8_t>(y)[x] / 255.0f
                                : bitmap.format() == imaging::PixelFormat::Rgba16
                                    ? bitmap.rowAs<std::uint16_t>(y)[x] / 65535.0f
                                    : bitmap.rowAs<float>(y)[x];
            // Written so that a not-a-number becomes 0.
            const float limited = alpha > 0 ? std::min(alpha, 1.0f) : 0.0f;
            mask.bytes.push_back(static_cast<std::uint8_t>(limited * 255 + 0.5f));
        }
    return mask;
}

// A dab as its pixels see it.
struct Print {
    Print(const Ink& tint, const AffineTransform& matrix, float width, float height,
          const Bitmap& stamp)
        : ink(tint), scaleX(static_cast<float>(width / stamp.width())),
          scaleY(static_cast<float>(height / stamp.height())),
          bounds(foundation::boundsOf(matrix, {width * -0.5, height * -0.5, width, height})),
          // From the picture to the stamp's pixels, which count down from the top.
          toStamp(matrix.inverse().followedBy({stamp.width() / double(width), 0, 0,
                                               -stamp.height() / double(height),
                                               stamp.width() * 0.5, stamp.height() * 0.5}))
    {
    }

    bool touches(const Block& block) const
    {
        return bounds.x < block.right + 1 && bounds.right() > block.left - 1 &&
               bounds.y < block.top + 1 && bounds.top() > block.bottom - 1;
    }

    Ink ink;
    float scaleX, scaleY; // points to a pixel of the stamp
    Rect bounds;
    AffineTransform toStamp;
};

// The pixels that the dabs leave, from the last one down to where nothing shines through any more.
// Painted one by one they would be rounded to bytes at each dab, and differ by that and by a few
// levels on the slanted edges of stamps.
class DabPixels {
public:
    DabPixels(Bitmap& bitmap, const Mask& mask, const std::vector<Print>& prints,
              const Ink& background)
        : _painter(bitmap), _mask(mask), _prints(prints), _background(background)
    {
    }

    void paint() const
    {
        std::vector<const Print*> all;
        for (auto print = _prints.rbegin(); print != _prints.rend(); ++print)
            all.push_back(&*print);
        _painter.forEachBlock([&](const Block& block) { paintBlock(block, all); });
    }

private:
    static constexpr int kSide = 32;
    // What this little shines through of changes no byte.
    static constexpr float kHidden = 1.0f / 1024;

    using Four = float __attribute__((vector_size(16)));

    struct Pixels {
        Four laid[kSide * kSide];     // of the dabs so far, as in an ink
        float through[kSide * kSide]; // what is still seen below them
    };

    // From the last print to the first.
    void paintBlock(const Block& block, const std::vector<const Print*>& prints) const
    {
        std::vector<const Print*> seen;
        std::ranges::copy_if(prints, std::back_inserter(seen),
                             [&](const Print* print) { return print->touches(block); });
        if (seen.empty()) {
            _painter.fill(block, _background);
        } else if (block.longestSide() > kSide) {
            for (const Block& half : block.halves())
                paintBlock(half, seen);
        } else {
            paintPixels(block, seen);
        }
    }

    void paintPixels(const Block& block, const std::vector<const Print*>& prints) const
    {
        Pixels pixels = {};
        std::ranges::fill(pixels.through, 1.0f);
        float most = 1;
        for (auto print = prints.begin(); print != prints.end() && most > kHidden; ++print)
            most = layBelow(pixels, block, **print);
        for (int y = block.bottom; y < block.top; ++y)
            for (int x = block.left; x < block.right; ++x) {
                const int i = (y - block.bottom) * kSide + x - block.left;
                const Four laid = pixels.laid[i];
                const float rest = pixels.through[i];
                _painter.set(x, y,
                             {laid[0] + rest * _background.red, laid[1] + rest * _background.green,
                              laid[2] + rest * _background.blue,
                              laid[3] + rest * _background.alpha});
            }
    }

    // How much of the unit length about a place lies between 0 and the length.
    static float overlap(float at, float length)
    {
        return std::max(std::min(at + 0.5f, length) - std::max(at - 0.5f, 0.0f), 0.0f);
    }

    // Cuts a range of pixels to those whose coordinate, start + i × step, lies in low … high.
    static void cut(int& first, int& last, float start, float step, float low, float high)
    {
        if (std::abs(step) < 1e-6f) {
            if (start < low || start > high)
                last = first;
            return;
        }
        const float a = (low - start) / step, b = (high - start) / step;
        const auto limited = [&](float i) {
            return static_cast<int>(std::clamp(i, -1.0f, static_cast<float>(kSide)) + 1) - 1;
        };
        first = std::max(first, limited(std::min(a, b)) + 1);
        last = std::max(first, std::min(last, limited(std::max(a, b)) + 1));
    }

    // Answers the most that still shines through anywhere in the block.
    float layBelow(Pixels& pixels, const Block& block, const Print& print) const
    {
        const auto width = static_cast<float>(_mask.width);
        const auto height = static_cast<float>(_mask.height);
        const auto stepU = static_cast<float>(print.toStamp.m11);
        const auto stepV = static_cast<float>(print.toStamp.m12);
        const Four ink = {print.ink.red, print.ink.green, print.ink.blue, print.ink.alpha};
        // Coordinates beyond the edges, in pixels of the stamp, at which nothing is covered.
        const float outU = 0.5f / print.scaleX, outV = 0.5f / print.scaleY;
        // And inside them, where pixels are whole and lie between four of the stamp's.
        const float inU = std::max(outU, 0.5f) + 0.01f, inV = std::max(outV, 0.5f) + 0.01f;
        const int columns = block.right - block.left;
        for (int y = block.bottom; y < block.top; ++y) {
            const Point start = print.toStamp.apply({block.left + 0.5, y + 0.5});
            const auto u0 = static_cast<float>(start.x), v0 = static_cast<float>(start.y);
            int first = 0, last = columns;
            cut(first, last, u0, stepU, -outU, width + outU);
            cut(first, last, v0, stepV, -outV, height + outV);
            int firstWhole = first, lastWhole = last;
            cut(firstWhole, lastWhole, u0, stepU, inU, width - inU);
            cut(firstWhole, lastWhole, v0, stepV, inV, height - inV);
            if (inU > width - inU || inV > height - inV)
                lastWhole = firstWhole = last;
            Four* laid = pixels.laid + (y - block.bottom) * kSide;
            float* through = pixels.through + (y - block.bottom) * kSide;
            const auto lay = [&](int i, float alpha) {
                const float part = through[i] * alpha;
                laid[i] += ink * part;
                through[i] -= part;
            };
            for (int i = first; i < last; ++i) {
                if (i == firstWhole)
                    for (; i < lastWhole; ++i)
                        lay(i, _mask.between(u0 + static_cast<float>(i) * stepU - 0.5f,
                                             v0 + static_cast<float>(i) * stepV - 0.5f));
                if (i == last)
                    break;
                const float u = u0 + static_cast<float>(i) * stepU;
                const float v = v0 + static_cast<float>(i) * stepV;
                lay(i, _mask.at(u, v) * overlap(u * print.scaleX, width * print.scaleX) *
                           overlap(v * print.scaleY, height * print.scaleY));
            }
        }
        float most = 0;
        for (int row = 0; row < block.top - block.bottom; ++row)
            for (int i = 0; i < columns; ++i)
                most = std::max(most, pixels.through[row * kSide + i]);
        return most;
    }

    BlockPainter _painter;
    Mask _mask;
    const std::vector<Print>& _prints;
    Ink _background;
};

} // namespace

const AttributeTable& GLIF_Dabs::attributeTable() const
{
    return kAttributes;
}

PictureRef GLIF_Dabs::GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                           int height, const Dictionary& attributes)
{
    readSharedAttributes(attributes);
    const PixelSize size = pictureSize(reference, width, height);
    // What a host that omits a key gets; the table above is what the editor starts with.
    _countDabs = attributes.intValue("GLIFCountDabs", 10);
    _scale = attributes.intValue("GLIFLength", 20);
    _angle = attributes.intValue("GLIFAngle", 0);
    _dabsType = attributes.intValue("GLIFType", 1);
    _angleAmplitude = 20;
    if (attributes.contains("GLIFBrush"))
        _brush = attributes["GLIFBrush"].picture();
    return dabsGeneratorWidthHeight(size.width, size.height);
}

PictureRef GLIF_Dabs::dabsGeneratorWidthHeight(int width, int height)
{
    const PictureRef brush = _brush.lock();
    if (!brush) {
        foundation::log("Can't loaded resource"); // sic
        return nullptr;
    }
    const PixelSize size = {width, height};
    if (!size.isValid())
        return nullptr;
    const double factor = std::min(_scale, kLargestScale) / 100.0;
    const auto stampWidth = static_cast<float>(brush->size().width * factor);
    const auto stampHeight = static_cast<float>(brush->size().height * factor);
    const bool isVisible = std::min(stampWidth, stampHeight) > kSmallestStamp &&
                           std::max(stampWidth, stampHeight) < kLargestStamp;
    const imaging::BitmapRef stamp =
        isVisible ? stampMask(*brush, stampWidth, stampHeight) : nullptr;
    const std::vector<Dab> dabs =
        stamp ? strewnDabs(width, height, stampWidth, stampHeight) : std::vector<Dab>();

    const auto draw = [&](Canvas& canvas) {
        drawBackgroundInRect(canvas, {0, 0, canvas.size().width, canvas.size().height});
        for (const Dab& dab : dabs) {
            canvas.save();
            canvas.concat(dab.matrix);
            canvas.setColor(dab.color);
            canvas.drawMask(stamp,
                            {stampWidth * -0.5, stampHeight * -0.5, stampWidth, stampHeight});
            canvas.restore();
        }
    };
    const auto paint = [&](Bitmap& bitmap) {
        std::vector<Color> palette = {_useBackColor && _backColor ? *_backColor : Color::clear()};
        for (const Dab& dab : dabs)
            palette.push_back(dab.color);
        const std::vector<Ink> inks = inksOf(palette);
        if (inks.empty())
            return false;
        std::vector<Print> prints;
        for (std::size_t i = 0; i < dabs.size(); ++i)
            prints.emplace_back(inks[i + 1], dabs[i].matrix, stampWidth, stampHeight, *stamp);
        DabPixels(bitmap, stamp ? alphaOf(*stamp) : Mask(), prints, inks[0]).paint();
        return true;
    };
    return renderBitmap(size, draw, paint);
}

std::vector<GLIF_Dabs::Dab> GLIF_Dabs::strewnDabs(int width, int height, float stampWidth,
                                                  float stampHeight) const
{
    // Wider than the fields, so that the sums below do not overflow.
    using Wide = std::int64_t;
    // Scaled twice: margins are the square of the scale times the brush.
    const int scale = std::min(_scale, kLargestScale);
    const Wide marginX = truncToInt(scale * stampWidth / 100.0);
    const Wide marginY = truncToInt(scale * stampHeight / 100.0);
    const int count = std::clamp(_countDabs, -kLargestCount, kLargestCount);
    std::vector<Dab> dabs;
    for (int i = 0; i < count * count / 2; ++i) {
        const int drawnX = randomInt();
        const int drawnY = randomInt();
        const float position = randomUnit();
        const int turn = randomInt() % _angleAmplitude;

        const auto x = static_cast<float>(drawnX % (width + marginX) - marginX / 2);
        const auto y = static_cast<float>(drawnY % (height + marginY) - marginY / 2);
        const auto degrees = static_cast<float>(Wide{_angle} + turn - _angleAmplitude / 2);
        dabs.push_back({computeSchemeColor(position, _schemeKeyColor, _iColorScheme),
                        AffineTransform::rotation(degrees * std::numbers::pi / 180)
                            .followedBy(AffineTransform::translation(x, y))});
    }
    return dabs;
}
