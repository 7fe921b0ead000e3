// Sizes are read when a source is made; the drawing itself is left to the program or library that
// understands the format.
#include "platform/drawing/VectorSources.h"

#include "platform/drawing/Modules.h"
#include "platform/drawing/Process.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <png.h>
#include <string_view>
#include <vector>

namespace drawing {

using foundation::Error;
using foundation::Result;
using foundation::Status;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::PixelFormat;

namespace {

constexpr std::chrono::seconds kRunTime{30};

// An error is the text of one line that begins with the format.
template <class... Parts>
Error formatError(const char* format, Parts&&... parts)
{
    std::string text = format;
    ((text += parts), ...);
    return Error{std::move(text)};
}

Status checkSourceSize(const char* format, Size size)
{
    const auto fits = [](double side) { return side > 0 && side <= Bitmap::kMaximumSide; };
    if (fits(size.width) && fits(size.height))
        return foundation::Done{};
    if (size.width > 0 && size.height > 0)
        return formatError(format, " picture is too large (at most 100000 points a side)");
    return formatError(format, " picture has no usable size");
}

Result<std::shared_ptr<Bitmap>> makeTarget(const char* format, int width, int height)
{
    if (width < 1 || height < 1)
        return formatError(format, " picture cannot be made into no pixels");
    if (width > kMaximumRasterSide || height > kMaximumRasterSide)
        return formatError(format, " picture of ", std::to_string(width), " × ",
                           std::to_string(height), " pixels is too large (at most ",
                           std::to_string(kMaximumRasterSide), " a side)");
    std::shared_ptr<Bitmap> target = Bitmap::make(width, height, PixelFormat::Rgba8);
    if (!target)
        return Error{"not enough memory for a drawing"};
    return target;
}

// The program, or the error that names its package.
Result<std::filesystem::path> neededProgram(const char* format, const char* program,
                                            const char* package)
{
    if (auto found = findProgram(program))
        return *std::move(found);
    return formatError(format, " needs ", program, " (package ", package, ")");
}

// A PNG of the size asked for. Programs work the size out from a resolution and may come out a
// pixel short or long: the difference is cut off, or filled up with what lies at the edge.
Result<BitmapRef> pixelsOfPng(const char* format, const std::string& bytes, int width, int height)
{
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()))
        return formatError(format, " picture could not be drawn");
    png.format = PNG_FORMAT_RGBA;
    const int gotWidth = static_cast<int>(png.width), gotHeight = static_cast<int>(png.height);
    if (std::abs(gotWidth - width) > 1 || std::abs(gotHeight - height) > 1) {
        png_image_free(&png);
        return formatError(format, " picture was drawn at the wrong size");
    }
    std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr))
        return formatError(format, " picture could not be drawn");
    auto target = makeTarget(format, width, height);
    if (!target)
        return Error{target.error()};
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* from =
            &pixels[4 * static_cast<std::size_t>(gotWidth) * std::min(y, gotHeight - 1)];
        std::uint8_t* to = (*target)->rowAs<std::uint8_t>(y);
        std::memcpy(to, from, 4 * static_cast<std::size_t>(std::min(width, gotWidth)));
        if (gotWidth < width)
            std::memcpy(to + 4 * gotWidth, from + 4 * (gotWidth - 1), 4);
        for (int x = 0; x < width; ++x) // gs leaves white there
            if (to[4 * x + 3] == 0)
                std::memset(to + 4 * x, 0, 4);
    }
    return BitmapRef(*std::move(target));
}

std::size_t largestPng(int width, int height)
{
    return (4 * static_cast<std::size_t>(width + 2) + 16) * (height + 2) + 1'000'000;
}

// Numbers in a line of text, up to the first thing that is none.
std::vector<double> numbersIn(std::string_view text)
{
    std::vector<double> out;
    for (;;) {
        const std::size_t start = text.find_first_not_of(" \t");
        if (start == std::string_view::npos)
            return out;
        text.remove_prefix(start + (text[start] == '+' ? 1 : 0));
        double value = 0;
        const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (failed != std::errc() || !std::isfinite(value))
            return out;
        out.push_back(value);
        text.remove_prefix(end - text.data());
    }
}

// A source that keeps the whole file and hands it to a program each time.
class ProgramSource : public VectorSource {
public:
    ProgramSource(std::filesystem::path program, std::string bytes, Size size)
        : _program(std::move(program)), _bytes(std::move(bytes)), _size(size)
    {
    }
    Size size() const override { return _size; }

protected:
    Result<BitmapRef> draw(const char* format, const std::vector<std::string>& arguments, int width,
                           int height) const
    {
        if (auto target = makeTarget(format, width, height); !target)
            return Error{target.error()};
        const auto png =
            runProgram(_program, arguments, _bytes, {kRunTime, largestPng(width, height)});
        if (!png)
            return formatError(format, " picture could not be drawn: ", png.error());
        return pixelsOfPng(format, *png, width, height);
    }

private:
    std::filesystem::path _program;
    std::string _bytes;
    Size _size;
};

// --- PDF

class PdfSource : public ProgramSource {
public:
    using ProgramSource::ProgramSource;
    Result<BitmapRef> rasterize(int width, int height) const override
    {
        return draw("PDF",
                    {"-png", "-singlefile", "-transp", "-cropbox", "-antialias", "best",
                     "-scale-to-x", std::to_string(width), "-scale-to-y", std::to_string(height),
                     "-", "-"},
                    width, height);
    }
};

// What pdfinfo says of the first page.
std::optional<Size> pageSize(std::string_view info)
{
    std::optional<Size> size;
    bool turned = false;
    while (!info.empty()) {
        const std::string_view line = info.substr(0, info.find('\n'));
        info.remove_prefix(std::min(info.size(), line.size() + 1));
        const std::size_t colon = line.find(':');
        if (!line.starts_with("Page ") || colon == std::string_view::npos)
            continue;
        const std::string_view key = line.substr(0, colon);
        std::string value(line.substr(colon + 1));
        std::ranges::replace(value, 'x', ' ');
        const std::vector<double> numbers = numbersIn(value);
        if (key.ends_with(" size") && numbers.size() >= 2)
            size = Size{numbers[0], numbers[1]};
        else if (key.ends_with(" rot") && !numbers.empty())
            turned = std::fmod(std::abs(numbers[0]), 180) == 90;
    }
    if (size && turned)
        std::swap(size->width, size->height);
    return size;
}

// --- EPS

class EpsSource : public ProgramSource {
public:
    EpsSource(std::filesystem::path program, std::string bytes, Point origin, Size size)
        : ProgramSource(std::move(program), std::move(bytes), size), _origin(origin)
    {
    }

    Result<BitmapRef> rasterize(int width, int height) const override
    {
        const std::string resolution =
            decimal(width * 72 / size().width) + "x" + decimal(height * 72 / size().height);
        return draw(
            "EPS",
            {"-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pngalpha", "-dTextAlphaBits=4",
             "-dGraphicsAlphaBits=4", "-sstdout=%stderr", "-sOutputFile=%stdout",
             "-g" + std::to_string(width) + "x" + std::to_string(height), "-r" + resolution, "-c",
             "<</Install {" + decimal(-_origin.x) + " " + decimal(-_origin.y) +
                 " translate}>> setpagedevice userdict /showpage {} put",
             "-", "-c", "systemdict /showpage get exec"},
            width, height);
    }

private:
    static std::string decimal(double value)
    {
        char text[400];
        return {text,
                std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr};
    }

    Point _origin;
};

// The PostScript of a file that has a preview in front of it; any other file as it is.
std::string withoutPreview(std::string bytes)
{
    const auto number = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i)
            value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
        return value;
    };
    if (bytes.size() < 30 || !bytes.starts_with("\xC5\xD0\xD3\xC6"))
        return bytes;
    const std::size_t start = number(4), length = number(8);
    return start <= bytes.size() ? bytes.substr(start, length) : std::string();
}

struct Box {
    Point origin;
    Size size;
};

// The first comment of that name with numbers; one that says they come at the end lets the last one
// count.
std::optional<Box> commentBox(std::string_view text, std::string_view comment)
{
    std::optional<Box> box;
    bool atEnd = false;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (!line.starts_with(comment))
            continue;
        const std::string_view value = line.substr(comment.size());
        const std::vector<double> n = numbersIn(value);
        if (n.size() >= 4) {
            box = Box{{n[0], n[1]}, {n[2] - n[0], n[3] - n[1]}};
            if (!atEnd)
                break;
        } else if (value.find("atend") != std::string_view::npos) {
            atEnd = true;
        }
    }
    return box;
}

// --- SVG

class SvgSource : public VectorSource {
public:
    SvgSource(const SvgTable& table, void* document, Size size)
        : _table(table), _document(document), _size(size)
    {
    }
    SvgSource(const SvgSource&) = delete;
    SvgSource& operator=(const SvgSource&) = delete;
    ~SvgSource() override { _table.close(_document); }

    Size size() const override { return _size; }
    Result<BitmapRef> rasterize(int width, int height) const override
    {
        auto target = makeTarget("SVG", width, height);
        if (!target)
            return Error{target.error()};
        std::string error;
        const std::lock_guard lock(_lock); // a document is for one thread at a time
        if (!_table.draw(_document, _size, **target, error))
            return Error{error};
        return BitmapRef(*std::move(target));
    }

private:
    const SvgTable& _table;
    void* _document;
    Size _size;
    mutable std::mutex _lock;
};

} // namespace

VectorSourceResult pdfSource(std::string bytes)
{
    const auto program = neededProgram("PDF", "pdftocairo", "poppler-utils");
    const auto reader = neededProgram("PDF", "pdfinfo", "poppler-utils");
    if (!program || !reader)
        return Error{program ? reader.error() : program.error()};
    // Readers look for the header in the first kilobyte.
    if (std::string_view(bytes).substr(0, 1024).find("%PDF-") == std::string_view::npos)
        return Error{"not a PDF file"};
    const auto info =
        runProgram(*reader, {"-f", "1", "-l", "1", "-"}, bytes, {kRunTime, 1'000'000});
    const std::optional<Size> size = info ? pageSize(*info) : std::nullopt;
    if (!size)
        return Error{"PDF file is broken, encrypted or without pages"};
    if (const Status fits = checkSourceSize("PDF", *size); !fits)
        return Error{fits.error()};
    return std::shared_ptr<const VectorSource>(
        std::make_shared<PdfSource>(*program, std::move(bytes), *size));
}

VectorSourceResult epsSource(std::string bytes)
{
    const auto program = neededProgram("EPS", "gs", "ghostscript");
    if (!program)
        return Error{program.error()};
    bytes = withoutPreview(std::move(bytes));
    if (!bytes.starts_with("%!"))
        return Error{"not an EPS file"};
    std::optional<Box> box = commentBox(bytes, "%%HiResBoundingBox:");
    if (!box)
        box = commentBox(bytes, "%%BoundingBox:");
    if (!box)
        return Error{"EPS file has no bounding box"};
    if (const Status fits = checkSourceSize("EPS", box->size); !fits)
        return Error{fits.error()};
    return std::shared_ptr<const VectorSource>(
        std::make_shared<EpsSource>(*program, std::move(bytes), box->origin, box->size));
}

VectorSourceResult svgSource(std::string bytes)
{
    const auto& table = svgReader();
    if (!table)
        return Error{table.error()};
    Size size;
    std::string error;
    void* document = (*table)->open(bytes, size, error);
    if (!document)
        return Error{error};
    auto source = std::make_shared<SvgSource>(**table, document, size);
    if (const Status fits = checkSourceSize("SVG", size); !fits)
        return Error{fits.error()};
    return std::shared_ptr<const VectorSource>(std::move(source));
}

} // namespace drawing
