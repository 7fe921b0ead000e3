// Reading and writing picture files: PNG, JPEG, TIFF and WebP pixels; PDF, EPS and SVG vectors.
#pragma once

#include "platform/drawing/Picture.h"
#include "platform/foundation/Result.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace codecs {

using drawing::PictureRef;
using foundation::Result;
using foundation::Status;

// Lower-case file-name extensions of what can be read as a picture, "jpg", "jpeg", "tif", "tiff"
// among them.
const std::vector<std::string>& readableExtensions();

// The format is told by the content, not by the name. 8-bit sources give Rgba8, 16-bit ones Rgba16.
// Orientation is applied. Grey, palette and CMYK become RGB (a CMYK or grey profile is converted to
// sRGB, an RGB profile is carried). Errors name the file and what is wrong with it: missing,
// truncated, not a picture, too large (beyond 100,000 a side), a missing helper program and its
// package.
Result<PictureRef> readPicture(const std::filesystem::path& file);
// The same from memory; `name` stands for the file in errors.
Result<PictureRef> decodePicture(std::string_view bytes, std::string_view name);

enum class FileFormat { Png, Jpeg, Tiff, WebP, Pdf, Svg, Eps };

// By name or extension, any case: "png", "jpg", "jpeg", "tif", "tiff", "webp", "pdf", "svg", "eps".
std::optional<FileFormat> formatNamed(std::string_view name);
bool isVectorFormat(FileFormat format);

// Which of the metadata blocks are written.
enum class KeepMetadata { All, Icc, None };

struct WriteOptions {
    KeepMetadata metadata = KeepMetadata::All;
    int quality = 92; // of JPEG and lossy WebP, 1…100; WebP is lossless at 100
    // Written into the file's own metadata field, whatever `metadata` says of the source's blocks,
    // unless it is None; empty for none.
    std::string recipe;
};

// The whole file in memory. A vector format needs a picture with a recorded drawing; JPEG and EPS
// lose transparency against white. 16-bit pixels stay 16-bit in PNG and TIFF.
Result<std::string> encodePicture(const drawing::Picture& picture, FileFormat format,
                                  const WriteOptions& options);

// Writes to a temporary file beside the target and renames it when complete. Nothing is left behind
// on failure; an existing target is then untouched.
Status writeFileAtomically(const std::filesystem::path& target, std::string_view bytes);
Status writePicture(const drawing::Picture& picture, const std::filesystem::path& target,
                    FileFormat format, const WriteOptions& options);

} // namespace codecs
