// Reading and writing picture files: PNG, JPEG, TIFF and WebP pixels; PDF, EPS and SVG vectors.
//
// Blocks that travel with a picture (PictureMetadata), by format:
//
//          ICC profile  EXIF              XMP                      dpi            recipe
//   PNG    iCCP         eXIf              iTXt XML:com.adobe.xmp   pHYs           iTXt "cif-recipe"
//   JPEG   APP2, split  APP1              APP1                     JFIF density   APP9
//   "cif-recipe", split TIFF   34675        tags and sub-     700                      resolution
//   65101, "cif-recipe:" + JSON
//                       directories
//   WebP   ICCP         EXIF              XMP                      none           chunk "CIFR"
//   PDF    none         none              none                     none           Keywords,
//   "cif-recipe:" + base64 SVG    none         none              none                     none
//   <metadata id="cif-recipe"> EPS    none         none              none                     none
//   %%cif-recipe: base64
//
// ICC, EXIF and XMP keep their bytes, but for the orientation in EXIF, which becomes 1. TIFF has no
// EXIF block: one is made of its describing tags and its EXIF and GPS directories, and taken apart
// again on writing. JPEG holds at most 65,527 bytes of EXIF, 65,504 of XMP and about 16 MB each of
// profile and recipe; more is an error.
#pragma once

#include "platform/drawing/Picture.h"
#include "platform/foundation/Result.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace codecs {

using drawing::PictureRef;
using foundation::Result;
using foundation::Status;

// Lower-case file-name extensions of what can be read as a picture, "jpg", "jpeg", "tif" and "tiff"
// among them.
const std::vector<std::string>& readableExtensions();

// The format is told by the content, not by the name. 8-bit sources give Rgba8, those with more
// bits Rgba16. Orientation is applied. Grey, palette and CMYK become RGB (a CMYK or grey profile is
// converted to sRGB, an RGB profile is carried). Of several pages, frames or sizes the first
// counts. Errors name the file and what is wrong with it: missing, truncated, not a picture, too
// large (beyond 100,000 a side or 4 GiB of pixels), a missing helper program and its package. A
// JPEG that ends early is an error unless only its end marker is missing.
Result<PictureRef> readPicture(const std::filesystem::path& file);
// The same from memory; `name` stands for the file in errors.
Result<PictureRef> decodePicture(std::string_view bytes, std::string_view name);

// The recipe that a file carries, as JSON; empty if it has none. No vector file is drawn for it.
Result<std::string> readRecipe(const std::filesystem::path& file);

enum class FileFormat { Png, Jpeg, Tiff, WebP, Pdf, Svg, Eps };

// By name or extension, any case, with or without a leading dot: "png", "jpg", "jpeg", "tif",
// "tiff", "webp", "pdf", "svg", "eps".
std::optional<FileFormat> formatNamed(std::string_view name);
bool isVectorFormat(FileFormat format);

// Which of the metadata blocks are written. The dpi belong to All.
enum class KeepMetadata { All, Icc, None };

struct WriteOptions {
    KeepMetadata metadata = KeepMetadata::All;
    int quality = 92; // of JPEG and lossy WebP, 1…100; WebP is lossless at 100
    // JSON. Written into the file's own metadata field, whatever `metadata` says of the source's
    // blocks, unless it is None; empty for none.
    std::string recipe;
};

// The whole file in memory. A vector format needs a picture with a recorded drawing; JPEG and EPS
// lose transparency against white. 16-bit pixels stay 16-bit in PNG and TIFF, as do floating-point
// ones. WebP ends at 16,383 pixels a side, JPEG at 65,500.
Result<std::string> encodePicture(const drawing::Picture& picture, FileFormat format,
                                  const WriteOptions& options);

// Writes to a temporary file beside the target and renames it when complete. Nothing is left behind
// on failure; an existing target is then untouched. The permissions of an existing target are kept,
// a symbolic link is followed, and what is not a regular file (a device, a pipe) is written to as
// it stands.
Status writeFileAtomically(const std::filesystem::path& target, std::string_view bytes);
Status writePicture(const drawing::Picture& picture, const std::filesystem::path& target,
                    FileFormat format, const WriteOptions& options);

} // namespace codecs
