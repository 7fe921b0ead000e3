// JPEG through libjpeg-turbo. Its errors are long jumps: whatever has a destructor lives outside
// the functions that call setjmp.
#include "platform/codecs/Color.h"
#include "platform/codecs/Formats.h"
#include "platform/codecs/Metadata.h"
#include "platform/codecs/Pixels.h"

#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <vector>

#include <jpeglib.h>

#include <jerror.h>

namespace codecs {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kExifMark = "Exif\0\0"sv;
constexpr std::string_view kXmpMark = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kRecipeSegment = "cif-recipe\0"sv;
constexpr int kExifMarker = JPEG_APP0 + 1, kIccMarker = JPEG_APP0 + 2,
              kRecipeMarker = JPEG_APP0 + 9;
constexpr std::size_t kLargestSegment = 65533;
constexpr double kCentimetresPerInch = 2.54;
// Files with more are made to keep decoders busy.
constexpr int kMostScans = 500;

struct ErrorManager {
    jpeg_error_mgr base; // first, so that the library's pointer to it is one to the whole
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];
    bool truncated;       // data was missing within a scan
    bool endMarkerAbsent; // the file ended without saying so
};

ErrorManager& managerOf(j_common_ptr info)
{
    return *reinterpret_cast<ErrorManager*>(info->err);
}

[[noreturn]] void fail(j_common_ptr info)
{
    ErrorManager& manager = managerOf(info);
    manager.base.format_message(info, manager.text);
    std::longjmp(manager.jump, 1);
}

void note(j_common_ptr info, int level)
{
    if (level >= 0)
        return;
    ErrorManager& manager = managerOf(info);
    ++manager.base.num_warnings;
    if (manager.base.msg_code == JWRN_HIT_MARKER)
        manager.truncated = true;
    if (manager.base.msg_code == JWRN_JPEG_EOF)
        manager.endMarkerAbsent = true;
    // No later row could be right.
    if (manager.truncated)
        std::longjmp(manager.jump, 1);
}

void printNothing(j_common_ptr) {}

jpeg_error_mgr* install(ErrorManager& manager)
{
    jpeg_std_error(&manager.base);
    manager.base.error_exit = fail;
    manager.base.emit_message = note;
    manager.base.output_message = printNothing;
    return &manager.base;
}

void limitScans(j_common_ptr info)
{
    auto* decoder = reinterpret_cast<j_decompress_ptr>(info);
    if (decoder->input_scan_number > kMostScans)
        ERREXIT(info, JERR_BAD_PROGRESSION);
}

struct Reader {
    jpeg_decompress_struct decoder{};
    ErrorManager errors{};
    jpeg_progress_mgr progress{};
    std::string_view bytes;
    Bitmap* target = nullptr;
    std::vector<std::uint8_t> ink; // a row of CMYK
    const CmykConverter<std::uint8_t>* converter = nullptr;

    ~Reader() { jpeg_destroy_decompress(&decoder); }
    bool isCmyk() const
    {
        return decoder.jpeg_color_space == JCS_CMYK || decoder.jpeg_color_space == JCS_YCCK;
    }
};

bool readHeader(Reader& reader)
{
    if (setjmp(reader.errors.jump))
        return false;
    jpeg_decompress_struct& decoder = reader.decoder;
    jpeg_create_decompress(&decoder);
    reader.progress.progress_monitor = limitScans;
    decoder.progress = &reader.progress;
    jpeg_mem_src(&decoder, reinterpret_cast<const unsigned char*>(reader.bytes.data()),
                 reader.bytes.size());
    for (const int marker : {kExifMarker, kIccMarker, kRecipeMarker})
        jpeg_save_markers(&decoder, marker, 0xFFFF);
    jpeg_read_header(&decoder, TRUE);
    decoder.out_color_space = reader.isCmyk() ? JCS_CMYK : JCS_EXT_RGBA;
    jpeg_calc_output_dimensions(&decoder);
    return true;
}

// Inks as stored by the programs that write the Adobe marker are light, not ink.
void convertInk(const Reader& reader, std::uint8_t* ink, std::uint8_t* rgba)
{
    const int width = static_cast<int>(reader.decoder.output_width);
    if (reader.decoder.saw_Adobe_marker)
        for (int i = 0; i < 4 * width; ++i)
            ink[i] = static_cast<std::uint8_t>(255 - ink[i]);
    reader.converter->convert(ink, rgba, width);
    for (int x = 0; x < width; ++x)
        rgba[4 * x + 3] = 255;
}

bool readPixels(Reader& reader)
{
    if (setjmp(reader.errors.jump))
        return false;
    jpeg_decompress_struct& decoder = reader.decoder;
    jpeg_start_decompress(&decoder);
    while (decoder.output_scanline < decoder.output_height) {
        auto* row = reader.target->rowAs<std::uint8_t>(static_cast<int>(decoder.output_scanline));
        JSAMPROW into = reader.converter ? reader.ink.data() : row;
        jpeg_read_scanlines(&decoder, &into, 1);
        if (reader.converter)
            convertInk(reader, into, row);
    }
    // Without the end marker, later scans may be missing, or arithmetic codes that read as zeros.
    const bool needsEnd = jpeg_has_multiple_scans(&decoder) || decoder.arith_code;
    jpeg_finish_decompress(&decoder);
    return !(reader.errors.endMarkerAbsent && needsEnd);
}

Error readError(const Reader& reader)
{
    if (reader.errors.truncated || reader.errors.endMarkerAbsent)
        return {"truncated JPEG"};
    return {"damaged JPEG (" + std::string(reader.errors.text) + ")"};
}

// Data that is split over segments, each with its number (from 1) and the number of all behind the
// mark.
std::string joinedSegments(const jpeg_decompress_struct& decoder, int marker, std::string_view mark)
{
    std::map<int, std::string_view> parts;
    int total = 0;
    for (auto* m = decoder.marker_list; m; m = m->next) {
        std::string_view data(reinterpret_cast<const char*>(m->data), m->data_length);
        if (m->marker != marker || !data.starts_with(mark) || data.size() < mark.size() + 2)
            continue;
        data.remove_prefix(mark.size());
        parts.emplace(static_cast<unsigned char>(data[0]), data.substr(2));
        total = static_cast<unsigned char>(data[1]);
    }
    if (parts.empty() || static_cast<int>(parts.size()) != total || parts.begin()->first != 1 ||
        parts.rbegin()->first != total)
        return {};
    std::string whole;
    for (const auto& [number, part] : parts)
        whole += part;
    return whole;
}

std::string firstSegment(const jpeg_decompress_struct& decoder, int marker, std::string_view mark)
{
    for (auto* m = decoder.marker_list; m; m = m->next) {
        const std::string_view data(reinterpret_cast<const char*>(m->data), m->data_length);
        if (m->marker == marker && data.starts_with(mark))
            return std::string(data.substr(mark.size()));
    }
    return {};
}

constexpr std::string_view kIccMark = "ICC_PROFILE\0"sv;

PictureMetadata metadataOf(const jpeg_decompress_struct& decoder)
{
    PictureMetadata metadata;
    metadata.icc = joinedSegments(decoder, kIccMarker, kIccMark);
    metadata.exif = firstSegment(decoder, kExifMarker, kExifMark);
    metadata.xmp = firstSegment(decoder, kExifMarker, kXmpMark);
    metadata.recipe = joinedSegments(decoder, kRecipeMarker, kRecipeSegment);
    if (decoder.saw_JFIF_marker && decoder.density_unit != 0) {
        const double unit = decoder.density_unit == 2 ? kCentimetresPerInch : 1;
        metadata.dpiX = decoder.X_density * unit;
        metadata.dpiY = decoder.Y_density * unit;
    }
    return metadata;
}

// The least a file of these sides can be: every block of the largest component takes at least one
// bit, except in arithmetic coding.
std::uint64_t leastBytes(const jpeg_decompress_struct& decoder)
{
    constexpr std::uint64_t kPixelsPerByte = 8 * 8 * 8;
    return decoder.arith_code
               ? 0
               : std::uint64_t{decoder.image_width} * decoder.image_height / kPixelsPerByte;
}

struct Writer {
    jpeg_compress_struct encoder{};
    ErrorManager errors{};
    unsigned char* bytes = nullptr; // the library's, to be freed
    unsigned long size = 0;
    std::vector<std::uint8_t> row;

    ~Writer()
    {
        jpeg_destroy_compress(&encoder);
        std::free(bytes);
    }
};

struct Segment {
    int marker;
    std::string data;
};

bool writeAll(Writer& writer, const Encoding& source, const std::vector<Segment>& segments)
{
    if (setjmp(writer.errors.jump))
        return false;
    jpeg_compress_struct& encoder = writer.encoder;
    jpeg_create_compress(&encoder);
    jpeg_mem_dest(&encoder, &writer.bytes, &writer.size);
    encoder.image_width = static_cast<JDIMENSION>(source.bitmap->width());
    encoder.image_height = static_cast<JDIMENSION>(source.bitmap->height());
    encoder.input_components = source.opaque ? 4 : 3;
    encoder.in_color_space = source.opaque ? JCS_EXT_RGBX : JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, source.quality, TRUE);
    // Half the colour resolution shows at sharp coloured edges; who asks for quality gets it whole.
    constexpr int kFullColorFrom = 90;
    if (source.quality >= kFullColorFrom)
        encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 1;
    if (source.metadata.dpiX > 0 && source.metadata.dpiY > 0) {
        encoder.density_unit = 1;
        encoder.X_density =
            static_cast<UINT16>(std::min(std::lround(source.metadata.dpiX), 65535L));
        encoder.Y_density =
            static_cast<UINT16>(std::min(std::lround(source.metadata.dpiY), 65535L));
    }
    jpeg_start_compress(&encoder, TRUE);
    for (const Segment& segment : segments)
        jpeg_write_marker(&encoder, segment.marker,
                          reinterpret_cast<const JOCTET*>(segment.data.data()),
                          static_cast<unsigned>(segment.data.size()));
    while (encoder.next_scanline < encoder.image_height) {
        const auto* rgba =
            source.bitmap->rowAs<std::uint8_t>(static_cast<int>(encoder.next_scanline));
        JSAMPROW row = const_cast<JSAMPROW>(rgba);
        if (!source.opaque) {
            flattenOntoWhite(rgba, writer.row.data(), source.bitmap->width());
            row = writer.row.data();
        }
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    return true;
}

// Splits the data over numbered segments; false when even the largest number of them is too few.
bool addSplit(std::vector<Segment>& segments, int marker, std::string_view mark,
              std::string_view data)
{
    constexpr std::size_t kMostSegments = 255;
    const std::size_t room = kLargestSegment - mark.size() - 2;
    const std::size_t total = (data.size() + room - 1) / room;
    if (total > kMostSegments)
        return false;
    for (std::size_t i = 0; i < total; ++i) {
        Segment segment{marker, std::string(mark)};
        segment.data.push_back(static_cast<char>(i + 1));
        segment.data.push_back(static_cast<char>(total));
        segment.data += data.substr(i * room, room);
        segments.push_back(std::move(segment));
    }
    return true;
}

Error doesNotFit(const char* what, std::size_t size)
{
    return {"JPEG has no room for " + std::string(what) + " of " + std::to_string(size) + " bytes"};
}

} // namespace

Result<Decoded> decodeJpeg(std::string_view bytes)
{
    Reader reader;
    reader.bytes = bytes;
    reader.decoder.err = install(reader.errors);
    if (!readHeader(reader))
        return readError(reader);
    const jpeg_decompress_struct& decoder = reader.decoder;
    if (decoder.num_components != 1 && decoder.num_components != 3 && !reader.isCmyk())
        return Error{"a JPEG of " + std::to_string(decoder.num_components) +
                     " components is not supported"};

    Decoded decoded;
    decoded.metadata = metadataOf(decoder);
    decoded.grey = decoder.num_components == 1;
    // A picture of several scans is kept whole as 16-bit coefficients until the last has been read.
    const std::uint64_t pixels = std::uint64_t{decoder.image_width} * decoder.image_height;
    const std::uint64_t coefficients =
        jpeg_has_multiple_scans(&reader.decoder)
            ? pixels * static_cast<std::uint64_t>(decoder.num_components) * sizeof(JCOEF)
            : 0;
    const Result<std::shared_ptr<Bitmap>> bitmap =
        makeBitmap(decoder.image_width, decoder.image_height, PixelFormat::Rgba8, coefficients);
    if (!bitmap)
        return Error{bitmap.error()};
    if (leastBytes(decoder) > bytes.size())
        return Error{"truncated JPEG"};
    decoded.bitmap = *bitmap;
    reader.target = decoded.bitmap.get();
    std::optional<CmykConverter<std::uint8_t>> converter;
    if (reader.isCmyk()) {
        converter.emplace(decoded.metadata.icc);
        reader.converter = &*converter;
        reader.ink.resize(std::size_t{4} * decoder.image_width);
    }
    if (!readPixels(reader))
        return readError(reader);
    return decoded;
}

Result<std::string> encodeJpeg(const Encoding& source)
{
    const PictureMetadata& metadata = source.metadata;
    if (std::max(source.bitmap->width(), source.bitmap->height()) > JPEG_MAX_DIMENSION)
        return Error{"JPEG holds at most " + std::to_string(JPEG_MAX_DIMENSION) + " pixels a side"};
    std::vector<Segment> segments;
    if (!metadata.exif.empty())
        segments.push_back({kExifMarker, std::string(kExifMark) + metadata.exif});
    if (segments.size() == 1 && segments[0].data.size() > kLargestSegment)
        return doesNotFit("an EXIF block", metadata.exif.size());
    if (!metadata.xmp.empty())
        segments.push_back({kExifMarker, std::string(kXmpMark) + metadata.xmp});
    if (!metadata.xmp.empty() && segments.back().data.size() > kLargestSegment)
        return doesNotFit("an XMP packet", metadata.xmp.size());
    if (!addSplit(segments, kIccMarker, kIccMark, metadata.icc))
        return doesNotFit("a colour profile", metadata.icc.size());
    if (!addSplit(segments, kRecipeMarker, kRecipeSegment, metadata.recipe))
        return doesNotFit("a recipe", metadata.recipe.size());

    Writer writer;
    writer.encoder.err = install(writer.errors);
    if (!source.opaque)
        writer.row.resize(std::size_t{3} * source.bitmap->width());
    if (!writeAll(writer, source, segments))
        return Error{writer.errors.text};
    return std::string(reinterpret_cast<const char*>(writer.bytes), writer.size);
}

} // namespace codecs
