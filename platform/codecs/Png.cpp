// PNG through libpng. Its errors are long jumps: whatever has a destructor lives outside the
// functions that call setjmp.
#include "platform/codecs/Formats.h"
#include "platform/codecs/Metadata.h"

#include <png.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

namespace codecs {

namespace {

constexpr char kXmpKeyword[] = "XML:com.adobe.xmp";
constexpr std::size_t kLargestBlock = std::size_t{64} << 20; // of metadata, unpacked
constexpr double kInchesPerMetre = 1 / 0.0254;
// A deflated stream never shrinks its data more than this.
constexpr std::uint64_t kLargestRatio = 1032;

// What went wrong, kept where a long jump cannot lose it.
struct Failure {
    char text[200] = "";
    bool truncated = false;
    bool outOfMemory = false;
};

void fail(png_structp png, png_const_charp message)
{
    auto* failure = static_cast<Failure*>(png_get_error_ptr(png));
    std::strncpy(failure->text, message, sizeof failure->text - 1);
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

struct Reader {
    png_structp png = nullptr;
    png_infop info = nullptr;
    Failure failure;
    std::string_view bytes;
    std::size_t position = 0;
    std::vector<png_bytep> rows;
    PictureMetadata metadata;

    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

void readBytes(png_structp png, png_bytep to, std::size_t count)
{
    auto* reader = static_cast<Reader*>(png_get_io_ptr(png));
    if (count > reader->bytes.size() - reader->position) {
        reader->failure.truncated = true;
        png_error(png, "ends too early");
    }
    std::memcpy(to, reader->bytes.data() + reader->position, count);
    reader->position += count;
}

// A field that ends with a zero byte; takes both off the front. Null data if there is no zero.
std::string_view takeField(std::string_view& data)
{
    const std::size_t end = data.find('\0');
    if (end == std::string_view::npos)
        return {};
    const std::string_view field = data.substr(0, end);
    data.remove_prefix(end + 1);
    return field;
}

void readProfile(PictureMetadata& metadata, std::string_view data)
{
    takeField(data);
    if (data.empty() || data[0] != 0)
        return;
    if (std::optional<std::string> icc = inflate(data.substr(1), kLargestBlock))
        metadata.icc = std::move(*icc);
}

void readText(PictureMetadata& metadata, std::string_view data)
{
    const std::string_view keyword = takeField(data);
    std::string* const target = keyword == kXmpKeyword   ? &metadata.xmp
                                : keyword == kRecipeMark ? &metadata.recipe
                                                         : nullptr;
    if (!target || data.size() < 2)
        return;
    const bool packed = data[0] == 1;
    data.remove_prefix(2);
    takeField(data); // language
    takeField(data); // translated keyword
    if (!packed)
        *target = data;
    else if (std::optional<std::string> text = inflate(data, kLargestBlock))
        *target = std::move(*text);
}

// libpng would refuse profiles that others accept and would unpack every text.
int readChunk(png_structp png, png_unknown_chunkp chunk)
{
    auto* reader = static_cast<Reader*>(png_get_user_chunk_ptr(png));
    const std::string_view name(reinterpret_cast<const char*>(chunk->name), 4);
    const std::string_view data(reinterpret_cast<const char*>(chunk->data), chunk->size);
    try {
        if (name == "iCCP")
            readProfile(reader->metadata, data);
        else if (name == "iTXt")
            readText(reader->metadata, data);
        else if (name == "eXIf")
            reader->metadata.exif = data;
    } catch (const std::bad_alloc&) {
        return -1;
    }
    return 1;
}

bool readHeader(Reader& reader)
{
    if (setjmp(png_jmpbuf(reader.png)))
        return false;
    png_set_read_fn(reader.png, &reader, readBytes);
    // makeBitmap() sets the limits, for all formats alike.
    png_set_user_limits(reader.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_chunk_malloc_max(reader.png, kLargestBlock);
    png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_AS_DEFAULT,
                                reinterpret_cast<png_const_bytep>("pHYs"), 1);
    png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_ALWAYS,
                                reinterpret_cast<png_const_bytep>("iCCP\0iTXt\0eXIf"), 3);
    png_set_read_user_chunk_fn(reader.png, &reader, readChunk);
    png_read_info(reader.png, reader.info);
    return true;
}

bool readPixels(Reader& reader, bool wide)
{
    if (setjmp(png_jmpbuf(reader.png)))
        return false;
    png_set_expand(reader.png);
    png_set_gray_to_rgb(reader.png);
    png_set_add_alpha(reader.png, 0xFFFF, PNG_FILLER_AFTER);
    if (wide && std::endian::native == std::endian::little)
        png_set_swap(reader.png);
    png_set_interlace_handling(reader.png);
    png_read_update_info(reader.png, reader.info);
    png_read_image(reader.png, reader.rows.data());
    png_read_end(reader.png, nullptr);
    return true;
}

Error readError(const Reader& reader)
{
    if (reader.failure.truncated)
        return {"truncated PNG"};
    return {"damaged PNG (" + std::string(reader.failure.text) + ")"};
}

struct Writer {
    png_structp png = nullptr;
    png_infop info = nullptr;
    Failure failure;
    std::string bytes;

    ~Writer() { png_destroy_write_struct(&png, &info); }
};

void writeBytes(png_structp png, png_bytep from, std::size_t count)
{
    auto* writer = static_cast<Writer*>(png_get_io_ptr(png));
    try {
        writer->bytes.append(reinterpret_cast<const char*>(from), count);
    } catch (const std::bad_alloc&) {
        writer->failure.outOfMemory = true;
    }
    // Not from within the handler: a jump out of it would lose the exception.
    if (writer->failure.outOfMemory)
        png_error(png, "not enough memory");
}

void flushNothing(png_structp) {}

void writeChunk(png_structp png, const char* name, const std::string& data)
{
    if (!data.empty())
        png_write_chunk(png, reinterpret_cast<png_const_bytep>(name),
                        reinterpret_cast<png_const_bytep>(data.data()), data.size());
}

struct Blocks {
    std::string iccp, exif, xmp, recipe; // contents of chunks, empty for none
};

std::string textChunk(const char* keyword, const std::string& text)
{
    using namespace std::string_literals;
    // Not packed; neither language nor translation.
    return text.empty() ? text : keyword + "\0\0\0\0\0"s + text;
}

bool writeAll(Writer& writer, const Encoding& source, const Blocks& blocks)
{
    // Level 4 takes half the time of the usual 6 and gives a few hundredths more bytes.
    constexpr int kCompression = 4;
    const Bitmap& bitmap = *source.bitmap;
    const bool wide = bitmap.format() == PixelFormat::Rgba16;
    if (setjmp(png_jmpbuf(writer.png)))
        return false;
    png_structp png = writer.png;
    png_set_write_fn(png, &writer, writeBytes, flushNothing);
    png_set_user_limits(png, Bitmap::kMaximumSide, Bitmap::kMaximumSide);
    png_set_compression_level(png, kCompression);
    png_set_IHDR(png, writer.info, static_cast<png_uint_32>(bitmap.width()),
                 static_cast<png_uint_32>(bitmap.height()), wide ? 16 : 8,
                 source.opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    if (source.metadata.dpiX > 0 && source.metadata.dpiY > 0)
        png_set_pHYs(png, writer.info,
                     static_cast<png_uint_32>(std::lround(source.metadata.dpiX * kInchesPerMetre)),
                     static_cast<png_uint_32>(std::lround(source.metadata.dpiY * kInchesPerMetre)),
                     PNG_RESOLUTION_METER);
    png_write_info_before_PLTE(png, writer.info);
    writeChunk(png, "iCCP", blocks.iccp);
    png_write_info(png, writer.info);
    writeChunk(png, "eXIf", blocks.exif);
    writeChunk(png, "iTXt", blocks.xmp);
    writeChunk(png, "iTXt", blocks.recipe);
    if (source.opaque)
        png_set_filler(png, 0, PNG_FILLER_AFTER);
    if (wide && std::endian::native == std::endian::little)
        png_set_swap(png);
    for (int y = 0; y < bitmap.height(); ++y)
        png_write_row(png, bitmap.rowAs<png_byte>(y));
    png_write_end(png, writer.info);
    return true;
}

} // namespace

Result<Decoded> decodePng(std::string_view bytes)
{
    Reader reader;
    reader.bytes = bytes;
    reader.png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader.failure, fail, ignoreWarning);
    reader.info = reader.png ? png_create_info_struct(reader.png) : nullptr;
    if (!reader.info)
        return Error{"not enough memory"};
    if (!readHeader(reader))
        return readError(reader);

    const std::uint64_t width = png_get_image_width(reader.png, reader.info);
    const std::uint64_t height = png_get_image_height(reader.png, reader.info);
    const bool wide = png_get_bit_depth(reader.png, reader.info) == 16;
    // Adam7 unpacks each pass into the rows in place; libpng keeps two rows of its own.
    Result<std::shared_ptr<Bitmap>> bitmap =
        makeBitmap(width, height, wide ? PixelFormat::Rgba16 : PixelFormat::Rgba8);
    if (!bitmap)
        return Error{bitmap.error()};
    // Before the memory is touched: can the file hold what its header promises?
    if (png_get_rowbytes(reader.png, reader.info) * height / kLargestRatio > bytes.size())
        return Error{"truncated PNG"};

    Decoded decoded;
    decoded.bitmap = *bitmap;
    decoded.grey = !(png_get_color_type(reader.png, reader.info) & PNG_COLOR_MASK_COLOR);
    reader.rows.resize(height);
    for (std::uint64_t y = 0; y < height; ++y)
        reader.rows[y] = decoded.bitmap->rowAs<png_byte>(static_cast<int>(y));
    if (!readPixels(reader, wide))
        return readError(reader);

    decoded.metadata = std::move(reader.metadata);
    png_uint_32 x = 0, y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(reader.png, reader.info, &x, &y, &unit) && unit == PNG_RESOLUTION_METER) {
        decoded.metadata.dpiX = x / kInchesPerMetre;
        decoded.metadata.dpiY = y / kInchesPerMetre;
    }
    return decoded;
}

Result<std::string> encodePng(const Encoding& source)
{
    Blocks blocks;
    blocks.exif = source.metadata.exif;
    blocks.xmp = textChunk(kXmpKeyword, source.metadata.xmp);
    blocks.recipe = textChunk(kRecipeMark, source.metadata.recipe);
    if (!source.metadata.icc.empty()) {
        using namespace std::string_literals;
        blocks.iccp = "ICC profile\0\0"s + deflate(source.metadata.icc);
    }
    Writer writer;
    writer.png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, &writer.failure, fail, ignoreWarning);
    writer.info = writer.png ? png_create_info_struct(writer.png) : nullptr;
    if (!writer.info)
        return Error{"not enough memory"};
    if (!writeAll(writer, source, blocks))
        return Error{writer.failure.text};
    return std::move(writer.bytes);
}

} // namespace codecs
