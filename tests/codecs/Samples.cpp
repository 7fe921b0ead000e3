#include "tests/codecs/Samples.h"

#include <gtest/gtest.h>
#include <lcms2.h>
#include <png.h>
#include <tiffio.h>
#include <webp/mux.h>

#include <webp/encode.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>

#include <jpeglib.h>
#include <zlib.h>

namespace samples {

using imaging::Bitmap;
using imaging::PixelFormat;

namespace {

std::uint32_t mixed(std::uint32_t v)
{
    v = (v ^ v >> 16) * 0x7feb352du;
    v = (v ^ v >> 15) * 0x846ca68bu;
    return v ^ v >> 16;
}

template <class T>
void fillWithNoise(Bitmap& bitmap, bool opaque)
{
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x)
            for (int c = 0; c < 4; ++c)
                bitmap.rowAs<T>(y)[4 * x + c] =
                    c == 3 && opaque ? T(~T{0})
                    : c == 3         ? T((x % 3) * (T(~T{0}) / 2) + (x % 3) / 2)
                                     : T(mixed(static_cast<std::uint32_t>(x * 4 + y * 4096 + c)));
}

std::string saved(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::string bytes(size, '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

} // namespace

std::shared_ptr<Bitmap> noise(int width, int height, PixelFormat format, bool opaque)
{
    auto bitmap = Bitmap::make(width, height, format);
    if (format == PixelFormat::Rgba8)
        fillWithNoise<std::uint8_t>(*bitmap, opaque);
    else
        fillWithNoise<std::uint16_t>(*bitmap, opaque);
    return bitmap;
}

drawing::PictureRef pictureOf(imaging::BitmapRef bitmap, drawing::PictureMetadata metadata)
{
    return drawing::Picture::fromBitmap(std::move(bitmap), std::move(metadata));
}

Pixel pixelAt(const Bitmap& bitmap, int x, int y)
{
    const auto of = [](const auto* p) { return Pixel{p[0], p[1], p[2], p[3]}; };
    return bitmap.format() == PixelFormat::Rgba8 ? of(bitmap.rowAs<std::uint8_t>(y) + 4 * x)
                                                 : of(bitmap.rowAs<std::uint16_t>(y) + 4 * x);
}

std::vector<Pixel> pixels(const Bitmap& bitmap)
{
    std::vector<Pixel> all;
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x)
            all.push_back(pixelAt(bitmap, x, y));
    return all;
}

imaging::BitmapRef decoded(const std::string& file)
{
    const auto picture = codecs::decodePicture(file, "sample");
    EXPECT_TRUE(picture) << picture.error();
    return picture ? (*picture)->bitmap() : nullptr;
}

std::string errorOf(const std::string& file)
{
    const auto picture = codecs::decodePicture(file, "sample");
    EXPECT_FALSE(picture);
    return picture.error();
}

std::string pngChunk(const std::string& name, const std::string& data)
{
    const auto number = [](std::uint32_t v) {
        return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
    };
    const std::string checked = name + data;
    const auto crc =
        crc32(0, reinterpret_cast<const Bytef*>(checked.data()), static_cast<uInt>(checked.size()));
    return number(static_cast<std::uint32_t>(data.size())) + checked +
           number(static_cast<std::uint32_t>(crc));
}

std::string pngFile(const Png& source)
{
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp p, png_bytep data, std::size_t size) {
            static_cast<std::string*>(png_get_io_ptr(p))
                ->append(reinterpret_cast<char*>(data), size);
        },
        [](png_structp) {});
    png_set_IHDR(png, info, source.width, source.height, source.bits, source.colorType,
                 source.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    std::vector<png_color> palette;
    for (std::size_t i = 0; i + 2 < source.palette.size(); i += 3)
        palette.push_back({source.palette[i], source.palette[i + 1], source.palette[i + 2]});
    if (!palette.empty())
        png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
    if (!source.paletteAlpha.empty())
        png_set_tRNS(png, info, source.paletteAlpha.data(),
                     static_cast<int>(source.paletteAlpha.size()), nullptr);
    if (!source.transparent.empty()) {
        png_color_16 color{};
        color.gray = static_cast<png_uint_16>(source.transparent[0]);
        if (source.transparent.size() == 3) {
            color.red = static_cast<png_uint_16>(source.transparent[0]);
            color.green = static_cast<png_uint_16>(source.transparent[1]);
            color.blue = static_cast<png_uint_16>(source.transparent[2]);
        }
        png_set_tRNS(png, info, nullptr, 1, &color);
    }
    png_write_info(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    Bytes data = source.data;
    std::vector<png_bytep> rows;
    for (int y = 0; y < source.height; ++y)
        rows.push_back(data.data() + y * rowBytes);
    png_write_image(png, rows.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

std::string jpegFile(const Jpeg& source)
{
    jpeg_compress_struct encoder{};
    jpeg_error_mgr errors;
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&encoder, &bytes, &size);
    encoder.image_width = static_cast<JDIMENSION>(source.width);
    encoder.image_height = static_cast<JDIMENSION>(source.height);
    encoder.input_components = source.components;
    encoder.in_color_space = static_cast<J_COLOR_SPACE>(source.inputSpace);
    jpeg_set_defaults(&encoder);
    jpeg_set_colorspace(&encoder, static_cast<J_COLOR_SPACE>(source.storedSpace));
    jpeg_set_quality(&encoder, 100, TRUE);
    for (int i = 0; i < encoder.num_components; ++i)
        encoder.comp_info[i].h_samp_factor = encoder.comp_info[i].v_samp_factor = 1;
    if (source.progressive)
        jpeg_simple_progression(&encoder);
    if (!source.adobe)
        encoder.write_Adobe_marker = FALSE;
    jpeg_start_compress(&encoder, TRUE);
    if (!source.icc.empty())
        jpeg_write_icc_profile(&encoder, reinterpret_cast<const JOCTET*>(source.icc.data()),
                               static_cast<unsigned>(source.icc.size()));
    Bytes data = source.data;
    while (encoder.next_scanline < encoder.image_height) {
        JSAMPROW row = data.data() + encoder.next_scanline * source.width * source.components;
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    std::string file(reinterpret_cast<char*>(bytes), size);
    std::free(bytes);
    return file;
}

namespace {

// Samples of a block packed as the file wants them, rows padded to whole bytes.
Bytes packed(const Tiff& source, int x0, int y0, int width, int height, int firstSample,
             int lastSample)
{
    Bytes out;
    for (int y = y0; y < y0 + height; ++y) {
        std::uint32_t bits = 0;
        int held = 0;
        for (int x = x0; x < x0 + width; ++x)
            for (int c = firstSample; c < lastSample; ++c) {
                const bool inside =
                    x < static_cast<int>(source.width) && y < static_cast<int>(source.height);
                const double value = inside ? source.sample(x, y, c) : 0;
                const auto append = [&](auto number) {
                    const auto* p = reinterpret_cast<const std::uint8_t*>(&number);
                    out.insert(out.end(), p, p + sizeof number);
                };
                if (source.format == SAMPLEFORMAT_IEEEFP && source.bits == 32)
                    append(static_cast<float>(value));
                else if (source.format == SAMPLEFORMAT_IEEEFP && source.bits == 64)
                    append(value);
                else if (source.bits == 32)
                    append(static_cast<std::uint32_t>(value));
                else if (source.bits == 16)
                    append(static_cast<std::uint16_t>(value));
                else {
                    bits = bits << source.bits | static_cast<std::uint32_t>(value);
                    for (held += source.bits; held >= 8; held -= 8)
                        out.push_back(static_cast<std::uint8_t>(bits >> (held - 8)));
                }
            }
        if (held > 0)
            out.push_back(static_cast<std::uint8_t>(bits << (8 - held)));
    }
    return out;
}

} // namespace

std::string tiffFile(const Tiff& source)
{
    std::string name = testing::TempDir() + "sample-" + std::to_string(::getpid()) + ".tif";
    TIFF* tiff = TIFFOpen(name.c_str(), source.mode);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, source.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, source.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, source.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, source.samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, source.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, source.compression);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, source.format);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                 source.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (!source.extra.empty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(source.extra.size()),
                     source.extra.data());
    if (source.orientation)
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, source.orientation);
    if (!source.palette.empty()) {
        const std::size_t n = source.palette.size() / 3;
        TIFFSetField(tiff, TIFFTAG_COLORMAP, source.palette.data(), source.palette.data() + n,
                     source.palette.data() + 2 * n);
    }
    if (!source.icc.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(source.icc.size()),
                     source.icc.data());
    const bool jpeg = source.compression == COMPRESSION_JPEG;
    if (jpeg && source.photometric == PHOTOMETRIC_YCBCR) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, 100);
    }
    const int planes = source.separate ? source.samples : 1;
    const int stripRows = jpeg ? 16 : 2;
    const int step = source.tile ? source.tile : stripRows;
    if (source.tile) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, source.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, source.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, stripRows);
    }
    const int width = static_cast<int>(source.width), height = static_cast<int>(source.height);
    for (int plane = 0; plane < planes; ++plane) {
        const int first = source.separate ? plane : 0;
        const int last = source.separate ? plane + 1 : source.samples;
        for (int y = 0; y < height; y += step)
            for (int x = 0; x < width; x += source.tile ? source.tile : width) {
                const int rows = source.tile ? source.tile : std::min(step, height - y);
                Bytes block =
                    packed(source, x, y, source.tile ? source.tile : width, rows, first, last);
                const auto size = static_cast<tmsize_t>(block.size());
                if (source.tile)
                    TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, plane), block.data(),
                                         size);
                else
                    TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y, plane), block.data(),
                                          size);
            }
    }
    TIFFClose(tiff);
    std::ifstream in(name, std::ios::binary);
    std::string file(std::istreambuf_iterator<char>(in), {});
    ::unlink(name.c_str());
    return file;
}

std::string animatedWebP()
{
    const auto frame = [](int width, int height, std::uint32_t rgb) {
        WebPConfig config;
        WebPConfigInit(&config);
        WebPConfigLosslessPreset(&config, 1);
        WebPPicture picture;
        WebPPictureInit(&picture);
        picture.use_argb = 1;
        picture.width = width;
        picture.height = height;
        WebPPictureAlloc(&picture);
        for (int i = 0; i < width * height; ++i)
            picture.argb[i] = 0xFF000000u | rgb;
        WebPMemoryWriter writer;
        WebPMemoryWriterInit(&writer);
        picture.writer = WebPMemoryWrite;
        picture.custom_ptr = &writer;
        WebPEncode(&config, &picture);
        WebPPictureFree(&picture);
        std::string bytes(reinterpret_cast<char*>(writer.mem), writer.size);
        WebPMemoryWriterClear(&writer);
        return bytes;
    };
    WebPMux* mux = WebPMuxNew();
    const std::pair<std::string, std::pair<int, int>> frames[] = {{frame(4, 2, 0xFF0000), {2, 4}},
                                                                  {frame(6, 6, 0x0000FF), {0, 0}}};
    for (const auto& [bytes, offset] : frames) {
        WebPMuxFrameInfo info{};
        info.bitstream = {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
        info.x_offset = offset.first;
        info.y_offset = offset.second;
        info.duration = 100;
        info.id = WEBP_CHUNK_ANMF;
        info.dispose_method = WEBP_MUX_DISPOSE_NONE;
        info.blend_method = WEBP_MUX_NO_BLEND;
        WebPMuxPushFrame(mux, &info, 1);
    }
    const WebPMuxAnimParams parameters{0, 0};
    WebPMuxSetAnimationParams(mux, &parameters);
    WebPMuxSetCanvasSize(mux, 10, 8);
    WebPData data{};
    WebPMuxAssemble(mux, &data);
    std::string file(reinterpret_cast<const char*>(data.bytes), data.size);
    WebPDataClear(&data);
    WebPMuxDelete(mux);
    return file;
}

std::string greyProfile(double gamma)
{
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return saved(profile);
}

std::string rgbProfile()
{
    return saved(cmsCreate_sRGBProfile());
}

std::string blackOnlyCmykProfile()
{
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 4.3);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 3, 4, 3, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) -> cmsInt32Number {
            out[0] = static_cast<cmsUInt16Number>(65535 - in[3]);
            out[1] = out[2] = 0x8080;
            return 1;
        },
        nullptr, 0);
    // A table may only stand between curves.
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 4, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsWriteTag(profile, cmsSigAToB1Tag, pipeline);
    cmsPipelineFree(pipeline);
    return saved(profile);
}

std::string exifBlock(int orientation, bool big)
{
    std::string block;
    const auto number = [&](std::uint32_t v, int size) {
        for (int i = 0; i < size; ++i)
            block.push_back(static_cast<char>(v >> 8 * (big ? size - 1 - i : i)));
    };
    const auto entry = [&](int tag, int type, std::uint32_t count, std::uint32_t value) {
        number(static_cast<std::uint32_t>(tag), 2);
        number(static_cast<std::uint32_t>(type), 2);
        number(count, 4);
        number(value, type == 3 ? 2 : 4);
        number(0, type == 3 ? 2 : 0);
    };
    block = big ? "MM" : "II";
    number(42, 2);
    number(8, 4);
    number(4, 2);
    entry(271, 2, 12, 62); // maker
    entry(274, 3, 1, static_cast<std::uint32_t>(orientation));
    entry(34665, 4, 1, 74);
    entry(34853, 4, 1, 92);
    number(0, 4); // at 58
    block += std::string("Some Maker.\0", 12);
    number(1, 2);
    entry(33437, 5, 1, 0); // F number; its place is put in below
    number(0, 4);
    const std::size_t gps = block.size();
    number(1, 2);
    entry(1, 2, 2, big ? 0x4E000000u : 0x4Eu); // "N"
    number(0, 4);
    const auto ratio = static_cast<std::uint32_t>(block.size());
    number(28, 4);
    number(10, 4);
    EXPECT_EQ(gps, 92u);
    for (int i = 0; i < 4; ++i)
        block[74 + 2 + 8 + i] = static_cast<char>(ratio >> 8 * (big ? 3 - i : i));
    return block;
}

std::vector<std::pair<std::string, std::string>> smallFiles()
{
    using codecs::FileFormat;
    drawing::PictureMetadata metadata;
    metadata.exif = exifBlock(6, true);
    metadata.xmp = "<x:xmpmeta/>";
    const auto picture = pictureOf(noise(9, 7, PixelFormat::Rgba8, false), metadata);
    const auto encoded = [&](FileFormat format, int quality) {
        codecs::WriteOptions options;
        options.recipe = R"({"id":"GLIF_Plasma"})";
        options.quality = quality;
        return *codecs::encodePicture(*picture, format, options);
    };
    const Bytes ramp = [] {
        Bytes bytes;
        for (int i = 0; i < 16 * 16 * 4; ++i)
            bytes.push_back(static_cast<std::uint8_t>(mixed(static_cast<std::uint32_t>(i))));
        return bytes;
    }();
    const auto value = [](int x, int y, int c) { return (x * 31 + y * 7 + c * 50) % 251; };
    std::vector<std::pair<std::string, std::string>> files = {
        {"rgba.png", encoded(FileFormat::Png, 92)},
        {"palette-interlaced.png", pngFile({.width = 7,
                                            .height = 5,
                                            .bits = 8,
                                            .colorType = PNG_COLOR_TYPE_PALETTE,
                                            .data = Bytes(35, 1),
                                            .interlaced = true,
                                            .palette = {1, 2, 3, 4, 5, 6},
                                            .paletteAlpha = {9}})},
        {"baseline.jpg", encoded(FileFormat::Jpeg, 80)},
        {"progressive.jpg", jpegFile({16, 16, 3, JCS_RGB, JCS_YCbCr, ramp, true})},
        {"cmyk.jpg", jpegFile({16, 16, 4, JCS_CMYK, JCS_YCCK, ramp})},
        {"rgba.tif", encoded(FileFormat::Tiff, 92)},
        {"lossy.webp", encoded(FileFormat::WebP, 80)},
        {"lossless.webp", encoded(FileFormat::WebP, 100)},
        {"animated.webp", animatedWebP()},
    };
    Tiff tiff{9, 7, 8, 4, PHOTOMETRIC_SEPARATED, value};
    tiff.tile = 16;
    tiff.compression = COMPRESSION_LZW;
    tiff.mode = "wb";
    files.emplace_back("cmyk-tiles.tif", tiffFile(tiff));
    tiff = {9, 7, 8, 3, PHOTOMETRIC_YCBCR, value};
    tiff.compression = COMPRESSION_JPEG;
    files.emplace_back("ycbcr-jpeg.tif", tiffFile(tiff));
    tiff = {9, 7, 16, 3, PHOTOMETRIC_RGB, value};
    tiff.separate = true;
    tiff.mode = "w8";
    files.emplace_back("planes-big.tif", tiffFile(tiff));
    tiff = {9, 7, 1, 1, PHOTOMETRIC_MINISWHITE, [](int x, int y, int) { return (x + y) % 2; }};
    tiff.compression = COMPRESSION_CCITTFAX4;
    files.emplace_back("fax.tif", tiffFile(tiff));
    return files;
}

} // namespace samples
