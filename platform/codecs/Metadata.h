// The blocks that travel with a picture: EXIF directories and recipes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace codecs {

// EXIF blocks are TIFF-structured, without the "Exif\0\0" that JPEG puts in front.

// 1…8; 1 when the block does not say or is broken.
int exifOrientation(std::string_view block);
// Sets the orientation to 1 in place, if there is one.
void resetExifOrientation(std::string& block);
bool isBigEndian(std::string_view tiffOrExif);

// An EXIF block made of a TIFF file's describing tags and its EXIF and GPS directories; empty if it
// has none that can be read.
std::string exifOfTiff(std::string_view file);
// The value of an ASCII or byte tag of the first directory of a TIFF file; empty if it is not
// there.
std::string tiffText(std::string_view file, std::uint16_t tag);
// Adds what exifOfTiff() would find, and the text under a tag of its own unless it is empty, to a
// TIFF file of the classic kind and of the block's byte order. A block that is broken adds nothing.
void addTiffTags(std::string& file, std::string_view exif, std::uint16_t tag,
                 std::string_view text);

inline constexpr char kRecipeMark[] = "cif-recipe";    // what introduces a recipe in any format
inline constexpr std::uint16_t kRecipeTiffTag = 65101; // of the range free for private use

// The recipe in a PDF, SVG or EPS file; empty if there is none.
std::string recipeOfPdf(std::string_view file);
std::string recipeOfSvg(std::string_view file);
std::string recipeOfEps(std::string_view file);

// A zlib stream unpacked, or nothing if it is broken or gives more than the limit.
std::optional<std::string> inflate(std::string_view packed, std::size_t limit);
std::string deflate(std::string_view plain);

} // namespace codecs
