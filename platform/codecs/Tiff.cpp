// TIFF through libtiff. The usual kinds are unpacked here, because libtiff's own way to RGBA knows
// neither 16 bits nor profiles; it serves for the rest (CIELab, LogLuv, raw YCbCr, …).
#include "platform/codecs/Color.h"
#include "platform/codecs/Formats.h"
#include "platform/codecs/Metadata.h"
#include "platform/codecs/Pixels.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

namespace codecs {

namespace {

constexpr double kCentimetresPerInch = 2.54;

// A file in memory: `out` when it is written, `in` when it is read.
struct MemoryFile {
    std::string_view in;
    std::string out;
    std::uint64_t position = 0;
    bool writing = false;
    bool endReached = false; // something was wanted from behind the end
    std::array<char, 300> error{};

    std::string_view bytes() const { return writing ? std::string_view(out) : in; }
};

MemoryFile& fileOf(thandle_t handle)
{
    return *static_cast<MemoryFile*>(handle);
}

tmsize_t readBytes(thandle_t handle, void* to, tmsize_t count)
{
    MemoryFile& file = fileOf(handle);
    const std::string_view bytes = file.bytes();
    const std::uint64_t left = bytes.size() - std::min<std::uint64_t>(file.position, bytes.size());
    const std::uint64_t n = std::min<std::uint64_t>(left, static_cast<std::uint64_t>(count));
    if (n < static_cast<std::uint64_t>(count))
        file.endReached = true;
    if (n > 0)
        std::memcpy(to, bytes.data() + file.position, n);
    file.position += n;
    return static_cast<tmsize_t>(n);
}

tmsize_t writeBytes(thandle_t handle, void* from, tmsize_t count)
{
    MemoryFile& file = fileOf(handle);
    try {
        if (file.position + count > file.out.size())
            file.out.resize(file.position + count);
    } catch (const std::exception&) {
        return 0;
    }
    std::memcpy(file.out.data() + file.position, from, static_cast<std::size_t>(count));
    file.position += static_cast<std::uint64_t>(count);
    return count;
}

toff_t seekTo(thandle_t handle, toff_t offset, int whence)
{
    MemoryFile& file = fileOf(handle);
    const std::uint64_t base = whence == SEEK_CUR   ? file.position
                               : whence == SEEK_END ? file.bytes().size()
                                                    : 0;
    return file.position = base + offset;
}

int closeNothing(thandle_t)
{
    return 0;
}

toff_t sizeOf(thandle_t handle)
{
    return fileOf(handle).bytes().size();
}

int mapNothing(thandle_t, void**, toff_t*)
{
    return 0;
}

void unmapNothing(thandle_t, void*, toff_t) {}

// Keeps the first message: the others follow from it.
int keepError(TIFF*, void* user, const char*, const char* format, va_list arguments)
{
    auto& error = static_cast<MemoryFile*>(user)->error;
    if (error[0] == '\0')
        std::vsnprintf(error.data(), error.size(), format, arguments);
    return 1;
}

int ignoreWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffRef = std::unique_ptr<TIFF, Close>;

TiffRef open(MemoryFile& file, const char* mode)
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(kMaximumBytes));
    TIFFOpenOptionsSetErrorHandlerExtR(options, keepError, &file);
    TIFFOpenOptionsSetWarningHandlerExtR(options, ignoreWarning, &file);
    TiffRef tiff(TIFFClientOpenExt("TIFF", mode, &file, readBytes, writeBytes, seekTo, closeNothing,
                                   sizeOf, mapNothing, unmapNothing, options));
    TIFFOpenOptionsFree(options);
    return tiff;
}

Error readError(const MemoryFile& file)
{
    if (file.endReached)
        return {"truncated TIFF"};
    return {"damaged TIFF (" + std::string(file.error.data()) + ")"};
}

// How the pixels of a file are stored.
struct Storage {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1;
    std::uint16_t format = SAMPLEFORMAT_UINT;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    bool separate = false; // a plane for each sample
    bool tiled = false;
    std::uint32_t blockWidth = 0, blockHeight = 0; // of a strip or tile
    int alpha = -1;                                // the sample that is alpha, -1 for none
    bool premultiplied = false;

    int colors() const
    {
        return photometric == PHOTOMETRIC_RGB ? 3 : photometric == PHOTOMETRIC_SEPARATED ? 4 : 1;
    }
    bool isFloat() const { return format == SAMPLEFORMAT_IEEEFP; }
    bool isWide() const { return bits > 8; }
};

template <class T>
T field(TIFF* tiff, std::uint32_t tag, T fallback)
{
    T value = fallback;
    return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : fallback;
}

Storage storageOf(TIFF* tiff)
{
    Storage s;
    s.width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    s.height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    s.bits = field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    s.samples = field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    s.format = field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (s.format == SAMPLEFORMAT_VOID)
        s.format = SAMPLEFORMAT_UINT;
    // Some files leave it out; their number of samples tells.
    s.photometric = field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC,
                                         s.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    s.separate =
        s.samples > 1 && field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                             PLANARCONFIG_SEPARATE;
    if (s.photometric == PHOTOMETRIC_YCBCR && !s.separate && s.samples == 3 && s.bits == 8 &&
        field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_JPEG) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        s.photometric = PHOTOMETRIC_RGB;
    }
    s.tiled = TIFFIsTiled(tiff) != 0;
    if (s.tiled) {
        s.blockWidth = field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
        s.blockHeight = field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
    } else {
        s.blockWidth = s.width;
        s.blockHeight =
            std::min(field<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, s.height), s.height);
    }
    std::uint16_t extras = 0;
    const std::uint16_t* kinds = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds) && kinds)
        for (int i = 0; i < extras && s.alpha < 0; ++i)
            if (kinds[i] != EXTRASAMPLE_UNSPECIFIED && s.colors() + i < s.samples) {
                s.alpha = s.colors() + i;
                s.premultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
            }
    return s;
}

// Whether unpack() and RowConverter know this kind.
bool isPlain(TIFF* tiff, const Storage& s)
{
    const bool sampleKnown = s.isFloat() ? s.bits == 16 || s.bits == 32 || s.bits == 64
                                         : s.format == SAMPLEFORMAT_UINT &&
                                               ((s.bits >= 1 && s.bits <= 16) || s.bits == 32);
    if (!sampleKnown || s.samples < s.colors() || s.blockWidth == 0 || s.blockHeight == 0)
        return false;
    switch (s.photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_RGB:
        return true;
    case PHOTOMETRIC_PALETTE:
        return s.bits <= 8 && !s.isFloat();
    case PHOTOMETRIC_SEPARATED:
        return field<std::uint16_t>(tiff, TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK;
    default:
        return false;
    }
}

double halfToDouble(std::uint16_t half)
{
    const int exponent = half >> 10 & 31;
    const int mantissa = half & 1023;
    const double magnitude = exponent == 0    ? std::ldexp(mantissa, -24)
                             : exponent == 31 ? (mantissa ? 0 : HUGE_VAL)
                                              : std::ldexp(1024 + mantissa, exponent - 25);
    return half & 0x8000 ? -magnitude : magnitude;
}

std::uint16_t fromUnit(double v)
{
    // What is not a number is black.
    return v > 0 ? static_cast<std::uint16_t>(std::min(v, 1.0) * 65535 + 0.5) : 0;
}

template <class Number>
Number numberAt(const std::uint8_t* p)
{
    Number n;
    std::memcpy(&n, p, sizeof n);
    return n;
}

// Samples of any kind as numbers of 8 or 16 bits that fill their range; palette indices stay as
// they are. Wider samples than 8 bits need 16-bit numbers.
template <class T>
void unpack(const std::uint8_t* from, const Storage& s, std::size_t count, T* to)
{
    const bool wide = sizeof(T) == 2;
    if (s.isFloat()) {
        for (std::size_t i = 0; i < count; ++i)
            to[i] = static_cast<T>(
                fromUnit(s.bits == 16   ? halfToDouble(numberAt<std::uint16_t>(from + 2 * i))
                         : s.bits == 32 ? numberAt<float>(from + 4 * i)
                                        : numberAt<double>(from + 8 * i)));
    } else if (s.bits == 32) {
        for (std::size_t i = 0; i < count; ++i)
            to[i] = static_cast<T>(numberAt<std::uint32_t>(from + 4 * i) >> 16);
    } else if (s.bits == 8 * sizeof(T)) {
        std::memcpy(to, from, count * sizeof(T));
    } else {
        const std::uint32_t largest = (1u << s.bits) - 1;
        const std::uint32_t full = wide ? 65535 : 255;
        const bool index = s.photometric == PHOTOMETRIC_PALETTE;
        std::uint32_t bits = 0;
        int held = 0;
        for (std::size_t i = 0; i < count; ++i) {
            for (; held < s.bits; held += 8)
                bits = bits << 8 | *from++;
            held -= s.bits;
            const std::uint32_t value = bits >> held & largest;
            to[i] = static_cast<T>(index ? value : (value * full + largest / 2) / largest);
        }
    }
}

struct Palette {
    const std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    bool wide = true;

    std::uint8_t level(std::uint16_t v) const
    {
        return static_cast<std::uint8_t>(wide ? (v + 128u) / 257u : v);
    }
};

std::optional<Palette> paletteOf(TIFF* tiff, int bits)
{
    std::uint16_t *red, *green, *blue;
    if (!TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue))
        return std::nullopt;
    // Some writers put bytes where 16-bit numbers belong.
    const auto isByte = [](std::uint16_t v) { return v < 256; };
    const int n = 1 << bits;
    return Palette{red, green, blue,
                   !(std::all_of(red, red + n, isByte) && std::all_of(green, green + n, isByte) &&
                     std::all_of(blue, blue + n, isByte))};
}

// Turns rows of samples into rows of RGBA.
template <class T>
class RowConverter {
public:
    RowConverter(const Storage& storage, const Palette& palette, std::string_view icc)
        : _s(storage), _palette(palette)
    {
        if (_s.photometric == PHOTOMETRIC_SEPARATED)
            _cmyk.emplace(icc);
        _ink.resize(_cmyk ? std::size_t{4} * _s.blockWidth : 0);
    }

    // `in` has all samples of a pixel side by side.
    void convert(const T* in, T* rgba, int width)
    {
        constexpr T kFull = std::numeric_limits<T>::max();
        const int n = _s.samples;
        switch (_s.photometric) {
        case PHOTOMETRIC_RGB:
            for (int x = 0; x < width; ++x)
                std::copy_n(in + std::size_t(x) * n, 3, rgba + 4 * x);
            break;
        case PHOTOMETRIC_PALETTE:
            for (int x = 0; x < width; ++x) {
                const T index = in[std::size_t(x) * n];
                rgba[4 * x] = _palette.level(_palette.red[index]);
                rgba[4 * x + 1] = _palette.level(_palette.green[index]);
                rgba[4 * x + 2] = _palette.level(_palette.blue[index]);
            }
            break;
        case PHOTOMETRIC_SEPARATED:
            for (int x = 0; x < width; ++x)
                std::copy_n(in + std::size_t(x) * n, 4, _ink.data() + 4 * x);
            _cmyk->convert(_ink.data(), rgba, width);
            break;
        default:
            for (int x = 0; x < width; ++x) {
                const T level = in[std::size_t(x) * n];
                std::fill_n(rgba + 4 * x, 3,
                            _s.photometric == PHOTOMETRIC_MINISWHITE ? T(kFull - level) : level);
            }
        }
        for (int x = 0; x < width; ++x)
            rgba[4 * x + 3] = _s.alpha < 0 ? kFull : in[std::size_t(x) * n + _s.alpha];
        if (_s.premultiplied && _s.photometric != PHOTOMETRIC_SEPARATED)
            unpremultiply(rgba, width);
    }

private:
    const Storage& _s;
    const Palette& _palette;
    std::optional<CmykConverter<T>> _cmyk;
    std::vector<T> _ink;
};

// The sizes of what libtiff gives at once.
struct Block {
    std::uint64_t bytes = 0, rowBytes = 0;
    int planes = 1;

    std::uint64_t allBytes() const { return bytes * planes; }
};

Block blockOf(TIFF* tiff, const Storage& s)
{
    return {s.tiled ? TIFFTileSize64(tiff) : TIFFStripSize64(tiff),
            s.tiled ? TIFFTileRowSize64(tiff) : TIFFScanlineSize64(tiff),
            s.separate ? s.samples : 1};
}

bool readBlock(TIFF* tiff, const Storage& s, const Block& block, std::uint32_t x, std::uint32_t y,
               int plane, std::uint8_t* to)
{
    const auto sample = static_cast<std::uint16_t>(plane);
    const auto size = static_cast<tmsize_t>(block.bytes);
    if (s.tiled)
        return TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, sample), to, size) == size;
    const std::uint64_t rows = std::min(s.blockHeight, s.height - y);
    return TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, y, sample), to, size) >=
           static_cast<tmsize_t>(rows * block.rowBytes);
}

template <class T>
bool readPlain(TIFF* tiff, const Storage& s, const Block& block, const Palette& palette,
               std::string_view icc, Bitmap& bitmap)
{
    RowConverter<T> converter(s, palette, icc);
    const auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(block.allBytes());
    std::vector<T> row(std::size_t{s.blockWidth} * s.samples);
    std::vector<T> plane(s.separate ? s.blockWidth : 0);
    for (std::uint32_t y = 0; y < s.height; y += s.blockHeight)
        for (std::uint32_t x = 0; x < s.width; x += s.blockWidth) {
            for (int p = 0; p < block.planes; ++p)
                if (!readBlock(tiff, s, block, x, y, p, bytes.get() + p * block.bytes))
                    return false;
            const std::uint32_t width = std::min(s.blockWidth, s.width - x);
            const std::uint32_t height = std::min(s.blockHeight, s.height - y);
            for (std::uint32_t j = 0; j < height; ++j) {
                const std::uint8_t* from = bytes.get() + j * block.rowBytes;
                if (!s.separate)
                    unpack(from, s, std::size_t{width} * s.samples, row.data());
                for (int p = 0; s.separate && p < block.planes; ++p) {
                    unpack(from + p * block.bytes, s, width, plane.data());
                    for (std::uint32_t i = 0; i < width; ++i)
                        row[std::size_t{i} * s.samples + p] = plane[i];
                }
                converter.convert(row.data(), bitmap.rowAs<T>(static_cast<int>(y + j)) + 4 * x,
                                  static_cast<int>(width));
            }
        }
    return true;
}

// By libtiff's own conversion to 8-bit RGBA, which premultiplies.
Result<std::shared_ptr<Bitmap>> readOther(TIFF* tiff, const Storage& s, const MemoryFile& file)
{
    const std::uint64_t rasterBytes = std::uint64_t{s.width} * s.height * 4;
    Result<std::shared_ptr<Bitmap>> made =
        makeBitmap(s.width, s.height, PixelFormat::Rgba8, rasterBytes);
    if (!made)
        return made;
    std::array<char, 1024> reason{};
    TIFFRGBAImage image;
    if (!TIFFRGBAImageOK(tiff, reason.data()) ||
        !TIFFRGBAImageBegin(&image, tiff, 1, reason.data()))
        return file.endReached ? readError(file)
                               : Error{"a TIFF of this kind is not supported (" +
                                       std::string(reason.data()) + ")"};
    // As stored: turning comes later, for all formats alike.
    image.req_orientation = image.orientation;
    const auto raster = std::make_unique_for_overwrite<std::uint32_t[]>(rasterBytes / 4);
    const bool done = TIFFRGBAImageGet(&image, raster.get(), s.width, s.height) != 0;
    const bool hasAlpha = image.alpha != 0;
    TIFFRGBAImageEnd(&image);
    if (!done)
        return readError(file);
    Bitmap& bitmap = **made;
    for (std::uint32_t y = 0; y < s.height; ++y) {
        auto* row = bitmap.rowAs<std::uint8_t>(static_cast<int>(y));
        const std::uint32_t* from = raster.get() + std::size_t{y} * s.width;
        for (std::uint32_t x = 0; x < s.width; ++x, row += 4) {
            row[0] = static_cast<std::uint8_t>(TIFFGetR(from[x]));
            row[1] = static_cast<std::uint8_t>(TIFFGetG(from[x]));
            row[2] = static_cast<std::uint8_t>(TIFFGetB(from[x]));
            row[3] = static_cast<std::uint8_t>(TIFFGetA(from[x]));
        }
        if (hasAlpha)
            unpremultiply(bitmap.rowAs<std::uint8_t>(static_cast<int>(y)),
                          static_cast<int>(s.width));
    }
    return made;
}

Result<std::shared_ptr<Bitmap>> readPixels(TIFF* tiff, const Storage& s, const MemoryFile& file,
                                           std::string_view icc)
{
    // Nothing behind the fifth sample shows; a few bytes of header must not ask for 65,535 of them.
    constexpr int kMostSamples = 256;
    if (s.samples > kMostSamples)
        return Error{"a TIFF of " + std::to_string(s.samples) +
                     " samples a pixel is not supported (" + std::to_string(kMostSamples) +
                     " at most)"};
    const std::uint64_t pixels = std::uint64_t{s.width} * s.height;
    if (pixels / 8 * s.bits > kMaximumBytes / std::max<std::uint16_t>(s.samples, 1))
        return makeBitmap(s.width, s.height, PixelFormat::Rgba8, kMaximumBytes);
    if (!isPlain(tiff, s))
        return readOther(tiff, s, file);
    Palette palette;
    if (s.photometric == PHOTOMETRIC_PALETTE) {
        const std::optional<Palette> found = paletteOf(tiff, s.bits);
        if (!found)
            return Error{"damaged TIFF (no palette)"};
        palette = *found;
    }
    const Block block = blockOf(tiff, s);
    // Sizes that do not add up would be read past the end of the block.
    const std::uint64_t samplesInRow = std::uint64_t{s.blockWidth} * (s.separate ? 1 : s.samples);
    if (block.rowBytes < (samplesInRow * s.bits + 7) / 8 ||
        block.bytes / s.blockHeight < block.rowBytes)
        return file.endReached ? readError(file) : Error{"damaged TIFF (impossible block size)"};
    if (block.bytes > kMaximumBytes)
        return makeBitmap(s.width, s.height, PixelFormat::Rgba8, kMaximumBytes);
    Result<std::shared_ptr<Bitmap>> bitmap = makeBitmap(
        s.width, s.height, s.isWide() ? PixelFormat::Rgba16 : PixelFormat::Rgba8, block.allBytes());
    if (!bitmap)
        return bitmap;
    const bool done = s.isWide() ? readPlain<std::uint16_t>(tiff, s, block, palette, icc, **bitmap)
                                 : readPlain<std::uint8_t>(tiff, s, block, palette, icc, **bitmap);
    if (!done)
        return readError(file);
    return bitmap;
}

bool writeAll(TIFF* tiff, const Encoding& source)
{
    // Strips of about this many bytes: enough to pack well, few enough to read in parts.
    constexpr std::size_t kStripBytes = std::size_t{1} << 18;
    constexpr int kCompression = 4;
    const Bitmap& bitmap = *source.bitmap;
    const PictureMetadata& metadata = source.metadata;
    const bool wide = bitmap.format() == PixelFormat::Rgba16;
    const int samples = source.opaque ? 3 : 4;
    const std::size_t sampleBytes = wide ? 2 : 1;
    const std::size_t rowBytes = bitmap.width() * samples * sampleBytes;
    const int rows = static_cast<int>(std::clamp<std::size_t>(
        kStripBytes / rowBytes, 1, static_cast<std::size_t>(bitmap.height())));

    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(bitmap.width()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(bitmap.height()));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, wide ? 16 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows));
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kCompression);
    if (!source.opaque) {
        const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
    if (metadata.dpiX > 0 && metadata.dpiY > 0) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, metadata.dpiX);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, metadata.dpiY);
    }
    if (!metadata.icc.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(metadata.icc.size()),
                     metadata.icc.data());
    if (!metadata.xmp.empty())
        TIFFSetField(tiff, TIFFTAG_XMLPACKET, static_cast<std::uint32_t>(metadata.xmp.size()),
                     metadata.xmp.data());

    const std::size_t pixelBytes = samples * sampleBytes;
    std::vector<std::byte> strip(rowBytes * rows);
    for (int top = 0; top < bitmap.height(); top += rows) {
        const int count = std::min(rows, bitmap.height() - top);
        std::byte* to = strip.data();
        for (int y = top; y < top + count; ++y) {
            const std::byte* from = bitmap.row(y);
            for (int x = 0; x < bitmap.width(); ++x, to += pixelBytes, from += 4 * sampleBytes)
                std::memcpy(to, from, pixelBytes);
        }
        const auto size = static_cast<tmsize_t>(rowBytes * count);
        if (TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, top, 0), strip.data(), size) != size)
            return false;
    }
    return TIFFWriteDirectory(tiff) != 0;
}

const std::string kRecipePrefix = std::string(kRecipeMark) + ":";

} // namespace

Result<Decoded> decodeTiff(std::string_view bytes)
{
    MemoryFile file;
    file.in = bytes;
    // Without memory mapping and without splitting strips: sizes are then the file's own.
    const TiffRef tiff = open(file, "rmc");
    if (!tiff)
        return readError(file);
    const Storage storage = storageOf(tiff.get());

    Decoded decoded;
    PictureMetadata& metadata = decoded.metadata;
    metadata.icc = tiffText(bytes, TIFFTAG_ICCPROFILE);
    metadata.xmp = tiffText(bytes, TIFFTAG_XMLPACKET);
    metadata.exif = exifOfTiff(bytes);
    if (const std::string text = tiffText(bytes, kRecipeTiffTag); text.starts_with(kRecipePrefix))
        metadata.recipe = text.substr(kRecipePrefix.size());
    const auto unit = field<std::uint16_t>(tiff.get(), TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (unit != RESUNIT_NONE) {
        const double factor = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
        metadata.dpiX = factor * field<float>(tiff.get(), TIFFTAG_XRESOLUTION, 0);
        metadata.dpiY = factor * field<float>(tiff.get(), TIFFTAG_YRESOLUTION, 0);
    }
    decoded.orientation = field<std::uint16_t>(tiff.get(), TIFFTAG_ORIENTATION, 1);
    decoded.grey = storage.photometric == PHOTOMETRIC_MINISBLACK ||
                   storage.photometric == PHOTOMETRIC_MINISWHITE;
    const Result<std::shared_ptr<Bitmap>> bitmap =
        readPixels(tiff.get(), storage, file, metadata.icc);
    if (!bitmap)
        return Error{bitmap.error()};
    decoded.bitmap = *bitmap;
    return decoded;
}

Result<std::string> encodeTiff(const Encoding& source)
{
    MemoryFile file;
    file.writing = true;
    // In the byte order of the EXIF block, whose values then need no translation.
    TiffRef tiff = open(file, isBigEndian(source.metadata.exif) ? "wb" : "wl");
    const bool done = tiff && writeAll(tiff.get(), source);
    tiff.reset();
    if (!done)
        return Error{file.error[0] ? file.error.data() : "not enough memory"};
    const std::string& recipe = source.metadata.recipe;
    if (!source.metadata.exif.empty() || !recipe.empty())
        addTiffTags(file.out, source.metadata.exif, kRecipeTiffTag,
                    recipe.empty() ? recipe : kRecipePrefix + recipe);
    return std::move(file.out);
}

} // namespace codecs
