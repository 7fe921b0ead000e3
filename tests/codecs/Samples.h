// Small pictures and files for the codec tests; the files are made with the format libraries alone.
#pragma once

#include "platform/codecs/Codecs.h"

#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace samples {

using Bytes = std::vector<std::uint8_t>;
using Pixel = std::tuple<int, int, int, int>; // red, green, blue, alpha as stored

// Every sample different from its neighbours; alpha from 0 to full unless opaque. RGB 0 where alpha
// is 0 in no pixel: stored colours under transparent pixels must survive too.
std::shared_ptr<imaging::Bitmap> noise(int width, int height, imaging::PixelFormat format,
                                       bool opaque);
drawing::PictureRef pictureOf(imaging::BitmapRef bitmap, drawing::PictureMetadata metadata = {});

Pixel pixelAt(const imaging::Bitmap& bitmap, int x, int y);
std::vector<Pixel> pixels(const imaging::Bitmap& bitmap);

// Decodes what must decode; null with a recorded failure otherwise.
imaging::BitmapRef decoded(const std::string& file);
// The error of what must not decode.
std::string errorOf(const std::string& file);

struct Png {
    int width, height, bits, colorType;
    Bytes data = {}; // rows without padding between them, 16-bit numbers big-endian
    bool interlaced = false;
    Bytes palette = {};                // RGB triples
    Bytes paletteAlpha = {};           // one byte an entry
    std::vector<int> transparent = {}; // one grey or three RGB samples
};
std::string pngFile(const Png& png);
std::string pngChunk(const std::string& name, const std::string& data);

struct Jpeg {
    int width, height, components;
    int inputSpace;  // of the data, a J_COLOR_SPACE
    int storedSpace; // in the file
    Bytes data = {};
    bool progressive = false;
    bool adobe = true; // keep the Adobe marker that the library writes for CMYK and RGB
    std::string icc = {};
};
std::string jpegFile(const Jpeg& jpeg);

struct Tiff {
    std::uint32_t width, height;
    int bits, samples, photometric;
    // A sample by its column, row and number, in the range of its bits; a float's bits are its
    // value's.
    std::function<double(int, int, int)> sample;
    std::vector<std::uint16_t> extra = {};
    bool separate = false;
    int tile = 0; // side of a tile, 0 for strips of two rows
    int compression = 1;
    int format = 1; // of samples: 1 unsigned, 3 float
    int orientation = 0;
    std::vector<std::uint16_t> palette = {}; // reds, greens, blues
    const char* mode = "w";
    std::string icc = {};
};
std::string tiffFile(const Tiff& tiff);

// Two frames; the first one red, 4 × 2 at (2, 4) of a canvas of 10 × 8.
std::string animatedWebP();

std::string greyProfile(double gamma);
std::string rgbProfile();
// A profile that makes every ink but black invisible and half black a lightness of 50.
std::string blackOnlyCmykProfile();

// An EXIF block with an orientation, a maker's name, a lens in its sub-directory and a GPS
// latitude.
std::string exifBlock(int orientation, bool bigEndian);

// One small file for each kind of content, to be mangled.
std::vector<std::pair<std::string, std::string>> smallFiles();

} // namespace samples
