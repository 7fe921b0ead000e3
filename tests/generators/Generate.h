// Asking a generator for a picture the way the plug-in does.
#pragma once

#include "generators/Register.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Log.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace support {

using drawing::PictureRef;
using foundation::Dictionary;
using generators::makeGenerator;

inline PictureRef generate(GLIFCoreObject& generator, int width, int height,
                           const Dictionary& attributes, unsigned seed = 1)
{
    std::srand(seed);
    return generator.GLIFOutputImageWidthHeightAttributes(nullptr, width, height, attributes);
}

inline PictureRef generate(std::string_view className, int width, int height,
                           const Dictionary& attributes, unsigned seed = 1)
{
    return generate(*makeGenerator(className), width, height, attributes, seed);
}

// The bytes of a picture's pixels, row after row; empty without a picture.
inline std::string bytesOf(const PictureRef& picture)
{
    std::string bytes;
    const imaging::BitmapRef bitmap = picture ? picture->bitmap() : nullptr;
    for (int y = 0; bitmap && y < bitmap->height(); ++y)
        bytes.append(reinterpret_cast<const char*>(bitmap->row(y)), 4 * bitmap->width());
    return bytes;
}

// What a vector picture draws of one kind, in order: Recording::Fill, Stroke or Image.
template <class Op>
std::vector<Op> drawn(const PictureRef& picture)
{
    std::vector<Op> found;
    for (const drawing::Recording::Op& op : picture->recording()->ops)
        if (const auto* one = std::get_if<Op>(&op))
            found.push_back(*one);
    return found;
}

// The end points of a path's elements, in order; closing has none.
inline std::vector<foundation::Point> pointsOf(const drawing::Path& path)
{
    using Kind = drawing::Path::Element::Kind;
    std::vector<foundation::Point> points;
    for (const drawing::Path::Element& element : path.elements())
        if (element.kind != Kind::Close)
            points.push_back(element.points[element.kind == Kind::CurveTo ? 2 : 0]);
    return points;
}

// A small brush of stripes, the same one each time; only dabs look at it.
inline const PictureRef& stripedBrush()
{
    static const PictureRef brush = [] {
        auto pixels = imaging::Bitmap::makeClear(12, 8, imaging::PixelFormat::Rgba8);
        for (int y = 0; y < 8; y += 2)
            for (int x = 0; x < 12; ++x)
                pixels->rowAs<std::uint8_t>(y)[4 * x + 3] = static_cast<std::uint8_t>(255 - 20 * x);
        return drawing::Picture::fromBitmap(pixels);
    }();
    return brush;
}

// What an editor starts with: the described defaults, and a brush.
inline Dictionary defaultsOf(const GLIFCoreObject& generator)
{
    Dictionary defaults = {{"GLIFBrush", stripedBrush()}};
    for (const auto& [key, description] : generator.GLIFQueryAttributes())
        if (const auto* value = description.dictionary()->find("GLIFDefValue"))
            defaults.set(key, *value);
    return defaults;
}

// Collects what is logged while it lives.
class LogRecorder {
public:
    LogRecorder()
        : _former(
              foundation::setLogSink([this](std::string_view line) { lines.emplace_back(line); }))
    {
    }
    ~LogRecorder() { foundation::setLogSink(_former); }

    std::vector<std::string> lines;

private:
    foundation::LogSink _former;
};

} // namespace support
