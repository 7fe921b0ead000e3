// WebP through libwebp; chunks beside the pixels through its container libraries.
#include "platform/codecs/Formats.h"

#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <cstring>
#include <memory>

namespace codecs {

namespace {

constexpr char kRecipeChunk[] = "CIFR";

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
struct DeleteMux {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

// Frees what an iterator holds when a function is left.
struct Frame : WebPIterator {
    Frame() : WebPIterator{} {}
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
    ~Frame() { WebPDemuxReleaseIterator(this); }
};

struct OwnedPicture : WebPPicture {
    OwnedPicture() { valid = WebPPictureInit(this); }
    OwnedPicture(const OwnedPicture&) = delete;
    OwnedPicture& operator=(const OwnedPicture&) = delete;
    ~OwnedPicture() { WebPPictureFree(this); }
    int valid;
};

struct Memory : WebPMemoryWriter {
    Memory() { WebPMemoryWriterInit(this); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    ~Memory() { WebPMemoryWriterClear(this); }
};

std::string chunk(const WebPDemuxer* demuxer, const char* name)
{
    WebPChunkIterator found{};
    std::string data;
    if (WebPDemuxGetChunk(demuxer, name, 1, &found))
        data.assign(reinterpret_cast<const char*>(found.chunk.bytes), found.chunk.size);
    WebPDemuxReleaseChunkIterator(&found);
    return data;
}

// The size that the header states, its own eight bytes included.
std::uint64_t statedSize(std::string_view bytes)
{
    constexpr std::size_t kSizeAt = 4;
    std::uint64_t size = 0;
    for (int i = 3; i >= 0; --i)
        size = size << 8 | static_cast<unsigned char>(bytes[kSizeAt + i]);
    return size + 8;
}

Error encodingError(const WebPPicture& picture)
{
    if (picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
        picture.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY)
        return {"not enough memory"};
    return {"the WebP encoder failed (error " + std::to_string(picture.error_code) + ")"};
}

Result<std::string> withChunks(const Memory& image, const PictureMetadata& metadata)
{
    const std::pair<const char*, const std::string*> blocks[] = {{"ICCP", &metadata.icc},
                                                                 {"EXIF", &metadata.exif},
                                                                 {"XMP ", &metadata.xmp},
                                                                 {kRecipeChunk, &metadata.recipe}};
    const WebPData data{image.mem, image.size};
    const std::unique_ptr<WebPMux, DeleteMux> mux(WebPMuxCreate(&data, 0));
    bool done = mux != nullptr;
    for (const auto& [name, block] : blocks)
        if (done && !block->empty()) {
            const WebPData content{reinterpret_cast<const std::uint8_t*>(block->data()),
                                   block->size()};
            done = WebPMuxSetChunk(mux.get(), name, &content, 0) == WEBP_MUX_OK;
        }
    WebPData whole{};
    done = done && WebPMuxAssemble(mux.get(), &whole) == WEBP_MUX_OK;
    std::string file(reinterpret_cast<const char*>(whole.bytes), done ? whole.size : 0);
    WebPDataClear(&whole);
    if (!done)
        return Error{"the WebP container cannot be put together"};
    return file;
}

} // namespace

Result<Decoded> decodeWebP(std::string_view bytes)
{
    if (statedSize(bytes) > bytes.size())
        return Error{"truncated WebP"};
    const WebPData data{reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    const std::unique_ptr<WebPDemuxer, DeleteDemuxer> demuxer(WebPDemux(&data));
    Frame frame;
    if (!demuxer || !WebPDemuxGetFrame(demuxer.get(), 1, &frame))
        return Error{"damaged WebP"};
    const int width = static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH));
    const int height = static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT));

    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config) ||
        WebPGetFeatures(frame.fragment.bytes, frame.fragment.size, &config.input) != VP8_STATUS_OK)
        return Error{"damaged WebP"};
    // The library holds the pixels of a lossless picture a second time.
    const std::uint64_t working =
        std::uint64_t{4} * static_cast<unsigned>(width) * static_cast<unsigned>(height);
    const Result<std::shared_ptr<Bitmap>> bitmap = makeBitmap(
        static_cast<unsigned>(width), static_cast<unsigned>(height), PixelFormat::Rgba8, working);
    if (!bitmap)
        return Error{bitmap.error()};
    Bitmap& target = **bitmap;
    const bool fills = frame.width == width && frame.height == height;
    if (frame.width > width - frame.x_offset || frame.height > height - frame.y_offset ||
        config.input.width != frame.width || config.input.height != frame.height)
        return Error{"damaged WebP"};
    // A frame may be smaller than the picture; the rest is then transparent.
    for (int y = 0; !fills && y < height; ++y)
        std::memset(target.row(y), 0, std::size_t{4} * static_cast<unsigned>(width));
    config.output.colorspace = MODE_RGBA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = target.rowAs<std::uint8_t>(frame.y_offset) + 4 * frame.x_offset;
    config.output.u.RGBA.stride = static_cast<int>(target.bytesPerRow());
    config.output.u.RGBA.size =
        static_cast<std::size_t>(target.bytesPerRow()) * (frame.height - 1) + 4 * frame.width;
    config.options.use_threads = 1;
    const VP8StatusCode status = WebPDecode(frame.fragment.bytes, frame.fragment.size, &config);
    WebPFreeDecBuffer(&config.output);
    if (status == VP8_STATUS_OUT_OF_MEMORY)
        return Error{"not enough memory"};
    if (status != VP8_STATUS_OK)
        return Error{status == VP8_STATUS_NOT_ENOUGH_DATA || status == VP8_STATUS_SUSPENDED
                         ? "truncated WebP"
                         : "damaged WebP"};

    Decoded decoded;
    decoded.bitmap = *bitmap;
    decoded.metadata.icc = chunk(demuxer.get(), "ICCP");
    decoded.metadata.exif = chunk(demuxer.get(), "EXIF");
    decoded.metadata.xmp = chunk(demuxer.get(), "XMP ");
    decoded.metadata.recipe = chunk(demuxer.get(), kRecipeChunk);
    return decoded;
}

Result<std::string> encodeWebP(const Encoding& source)
{
    const Bitmap& bitmap = *source.bitmap;
    if (std::max(bitmap.width(), bitmap.height()) > WEBP_MAX_DIMENSION)
        return Error{"WebP holds at most " + std::to_string(WEBP_MAX_DIMENSION) + " pixels a side"};
    constexpr int kLossless = 100;
    constexpr int kLosslessEffort = 3; // of 0…9; more takes much longer for a few hundredths
    WebPConfig config;
    if (!WebPConfigInit(&config))
        return Error{"not enough memory"};
    if (source.quality >= kLossless) {
        WebPConfigLosslessPreset(&config, kLosslessEffort);
        config.exact = 1; // colours under transparent pixels too
    } else {
        config.quality = static_cast<float>(source.quality);
    }
    config.thread_level = 1;
    OwnedPicture picture;
    Memory memory;
    if (!picture.valid)
        return Error{"not enough memory"};
    picture.use_argb = source.quality >= kLossless;
    picture.width = bitmap.width();
    picture.height = bitmap.height();
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &memory;
    const auto* pixels = bitmap.rowAs<std::uint8_t>(0);
    const int stride = static_cast<int>(bitmap.bytesPerRow());
    const int imported = source.opaque ? WebPPictureImportRGBX(&picture, pixels, stride)
                                       : WebPPictureImportRGBA(&picture, pixels, stride);
    if (!imported || !WebPEncode(&config, &picture))
        return encodingError(picture);
    const PictureMetadata& m = source.metadata;
    if (m.icc.empty() && m.exif.empty() && m.xmp.empty() && m.recipe.empty())
        return std::string(reinterpret_cast<const char*>(memory.mem), memory.size);
    return withChunks(memory, m);
}

} // namespace codecs
