// Grey and CMYK samples to sRGB. Profiles come from strangers: one that does not open is not used.
#include "platform/codecs/Color.h"

#include <lcms2.h>

#include <limits>

namespace codecs {

namespace {

constexpr std::size_t kHeaderLength = 128;

cmsHTRANSFORM transformToSrgb(std::string_view icc, std::string_view space,
                              cmsUInt32Number inputFormat, cmsUInt32Number outputFormat)
{
    if (colorSpaceOf(icc) != space)
        return nullptr;
    cmsHTRANSFORM transform = nullptr;
    const cmsHPROFILE profile =
        cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size()));
    if (profile) {
        if (const cmsHPROFILE srgb = cmsCreate_sRGBProfile()) {
            transform =
                cmsCreateTransform(profile, inputFormat, srgb, outputFormat,
                                   INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION);
            cmsCloseProfile(srgb);
        }
        cmsCloseProfile(profile);
    }
    return transform;
}

template <class T>
constexpr bool isWide = sizeof(T) == 2;

template <class T>
void convertGreyRows(imaging::Bitmap& bitmap, cmsHTRANSFORM transform)
{
    const int width = bitmap.width();
    std::vector<T> grey(width);
    for (int y = 0; y < bitmap.height(); ++y) {
        T* row = bitmap.rowAs<T>(y);
        for (int x = 0; x < width; ++x)
            grey[x] = row[4 * x];
        cmsDoTransform(transform, grey.data(), row, static_cast<cmsUInt32Number>(width));
    }
}

} // namespace

std::string_view colorSpaceOf(std::string_view icc)
{
    if (icc.size() < kHeaderLength || icc.substr(36, 4) != "acsp")
        return {};
    return icc.substr(16, 4);
}

template <class T>
CmykConverter<T>::CmykConverter(std::string_view icc)
    : _transform(transformToSrgb(icc, "CMYK", isWide<T> ? TYPE_CMYK_16 : TYPE_CMYK_8,
                                 isWide<T> ? TYPE_RGBA_16 : TYPE_RGBA_8))
{
}

template <class T>
CmykConverter<T>::~CmykConverter()
{
    if (_transform)
        cmsDeleteTransform(_transform);
}

template <class T>
void CmykConverter<T>::convert(const T* ink, T* rgba, int width) const
{
    if (_transform) {
        cmsDoTransform(_transform, ink, rgba, static_cast<cmsUInt32Number>(width));
        return;
    }
    constexpr std::uint64_t kFull = std::numeric_limits<T>::max();
    for (int x = 0; x < width; ++x, ink += 4, rgba += 4)
        for (int c = 0; c < 3; ++c)
            rgba[c] = static_cast<T>(((kFull - ink[c]) * (kFull - ink[3]) + kFull / 2) / kFull);
}

template class CmykConverter<std::uint8_t>;
template class CmykConverter<std::uint16_t>;

bool convertGreyToSrgb(imaging::Bitmap& bitmap, std::string_view icc)
{
    const bool wide = bitmap.format() == imaging::PixelFormat::Rgba16;
    const cmsHTRANSFORM transform = transformToSrgb(icc, "GRAY", wide ? TYPE_GRAY_16 : TYPE_GRAY_8,
                                                    wide ? TYPE_RGBA_16 : TYPE_RGBA_8);
    if (!transform)
        return false;
    if (wide)
        convertGreyRows<std::uint16_t>(bitmap, transform);
    else
        convertGreyRows<std::uint8_t>(bitmap, transform);
    cmsDeleteTransform(transform);
    return true;
}

} // namespace codecs
