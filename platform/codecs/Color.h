// Grey and CMYK samples to sRGB, through the picture's profile if it has a usable one.
#pragma once

#include "platform/imaging/Bitmap.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace codecs {

// The four letters of the profile's colour space ("RGB ", "GRAY", "CMYK"), empty for what is no
// profile.
std::string_view colorSpaceOf(std::string_view icc);

// Rows of ink to rows of RGBA, 8 or 16 bits a sample (T is std::uint8_t or std::uint16_t). Without
// a CMYK profile each of red, green and blue is (1 - its ink) times (1 - black).
template <class T>
class CmykConverter {
public:
    explicit CmykConverter(std::string_view icc);
    CmykConverter(const CmykConverter&) = delete;
    CmykConverter& operator=(const CmykConverter&) = delete;
    ~CmykConverter();

    // Four samples a pixel, the largest number is full ink. Alpha is left alone.
    void convert(const T* ink, T* rgba, int width) const;

private:
    void* _transform = nullptr;
};

// Takes red as the grey level of each pixel. False when the profile cannot be used.
bool convertGreyToSrgb(imaging::Bitmap& bitmap, std::string_view icc);

} // namespace codecs
