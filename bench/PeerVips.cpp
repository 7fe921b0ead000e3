// The comparison's operations as libvips offers them, each one pipeline rendered into memory.
#include "bench/Peers.h"

#include <vips/vips.h>

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

// Renders the pipeline and lets everything go.
void finish(VipsImage* last, VipsObject* parts)
{
    std::size_t size = 0;
    g_free(vips_image_write_to_memory(last, &size));
    g_object_unref(parts);
}

template <class Build>
std::function<void()> pipeline(const imaging::BitmapRef& picture, const Build& build)
{
    return [picture, build] {
        VipsImage* holder = vips_image_new();
        VipsImage** t =
            reinterpret_cast<VipsImage**>(vips_object_local_array(VIPS_OBJECT(holder), 16));
        t[0] =
            vips_image_new_from_memory(picture->row(0), picture->bytesPerRow() * picture->height(),
                                       picture->width(), picture->height(), 4, VIPS_FORMAT_UCHAR);
        t[0]->Type = VIPS_INTERPRETATION_sRGB;
        finish(build(t), VIPS_OBJECT(holder));
    };
}

} // namespace

Operations vipsOn(const imaging::BitmapRef& picture)
{
    vips_init("bench");
    vips_cache_set_max(0);
    vips_concurrency_set(2);
    const auto blur = [&](double sigma) {
        return pipeline(picture, [sigma](VipsImage** t) {
            vips_gaussblur(t[0], &t[1], sigma, "min_ampl", 0.01, nullptr);
            return t[1];
        });
    };
    Operations all;
    all["gauss 7"] = blur(7);
    all["gauss 50"] = blur(50);
    all["sobel"] = pipeline(picture, [](VipsImage** t) {
        vips_extract_band(t[0], &t[1], 0, nullptr);
        vips_sobel(t[1], &t[2], nullptr);
        vips_bandjoin_const1(t[2], &t[3], 255, nullptr);
        return t[3];
    });
    const auto mask = [&](int width, int height, const std::function<double(int, int)>& weight) {
        return pipeline(picture, [width, height, weight](VipsImage** t) {
            t[1] = vips_image_new_matrix(width, height);
            double sum = 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const double w = std::round(16 * weight(x - width / 2, y - height / 2));
                    *VIPS_MATRIX(t[1], x, y) = w;
                    sum += w;
                }
            vips_image_set_double(t[1], "scale", sum);
            vips_conv(t[0], &t[2], t[1], "precision", VIPS_PRECISION_INTEGER, nullptr);
            return t[2];
        });
    };
    all["box 10"] = pipeline(picture, [](VipsImage** t) {
        t[1] = vips_image_new_matrix(21, 1);
        for (int x = 0; x < 21; ++x)
            *VIPS_MATRIX(t[1], x, 0) = 1;
        vips_image_set_double(t[1], "scale", 21);
        vips_convsep(t[0], &t[2], t[1], "precision", VIPS_PRECISION_INTEGER, nullptr);
        return t[2];
    });
    all["disc 8"] =
        mask(17, 17, [](int dx, int dy) { return std::clamp(8.5 - std::hypot(dx, dy), 0.0, 1.0); });
    all["motion 20"] = mask(41, 1, [](int, int) { return 1.0; });
    all["motion turned"] = mask(37, 21, [](int dx, int dy) {
        // Within half a pixel of the line.
        const double across = dx * std::sin(kTurned) + dy * std::cos(kTurned);
        return std::clamp(1 - std::abs(across), 0.0, 1.0);
    });
    all["unsharp 2.5"] = pipeline(picture, [](VipsImage** t) {
        vips_gaussblur(t[0], &t[1], 2.5, "min_ampl", 0.01, nullptr);
        vips_linear1(t[0], &t[2], 1.5, 0, nullptr);
        vips_linear1(t[1], &t[3], -0.5, 0, nullptr);
        vips_add(t[2], t[3], &t[4], nullptr);
        vips_cast_uchar(t[4], &t[5], nullptr);
        return t[5];
    });
    all["noise / median"] = pipeline(picture, [](VipsImage** t) {
        vips_median(t[0], &t[1], 5, nullptr);
        return t[1];
    });
    all["edges"] = pipeline(picture, [](VipsImage** t) {
        vips_sobel(t[0], &t[1], nullptr);
        return t[1];
    });
    all["pixellate 8"] = pipeline(picture, [](VipsImage** t) {
        vips_shrink(t[0], &t[1], 8, 8, nullptr);
        vips_zoom(t[1], &t[2], 8, 8, nullptr);
        return t[2];
    });
    all["invert"] = pipeline(picture, [](VipsImage** t) {
        vips_invert(t[0], &t[1], nullptr);
        return t[1];
    });
    const auto table = [&](double (*curve)(double)) {
        return pipeline(picture, [curve](VipsImage** t) {
            unsigned char values[256];
            for (int i = 0; i < 256; ++i)
                values[i] = static_cast<unsigned char>(std::lround(255 * curve(i / 255.0)));
            t[1] = vips_image_new_from_memory_copy(values, 256, 256, 1, 1, VIPS_FORMAT_UCHAR);
            vips_maplut(t[0], &t[2], t[1], nullptr);
            return t[2];
        });
    };
    all["gamma"] = table([](double v) { return std::pow(v, 0.7); });
    all["posterize"] = table([](double v) { return std::min(std::floor(v * 6), 5.0) / 5; });
    all["affine"] = pipeline(picture, [](VipsImage** t) {
        const double c = std::cos(kAngle), s = std::sin(kAngle);
        const double w = t[0]->Xsize * 0.5, h = t[0]->Ysize * 0.5;
        VipsInterpolate* linear = vips_interpolate_new("bilinear");
        VipsArrayInt* area = vips_array_int_newv(4, 0, 0, t[0]->Xsize, t[0]->Ysize);
        vips_affine(t[0], &t[1], c, s, -s, c, "interpolate", linear, "oarea", area, "odx",
                    w - c * w - s * h, "ody", h + s * w - c * h, nullptr);
        vips_area_unref(VIPS_AREA(area));
        g_object_unref(linear);
        return t[1];
    });
    all["colour"] = pipeline(picture, [](VipsImage** t) {
        double first[16] = {}, second[16] = {};
        const double s = 1.5, k = 1.2, weights[3] = {0.2125, 0.7154, 0.0721};
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                first[4 * i + j] = k * ((1 - s) * weights[j] + (i == j ? s : 0));
                second[4 * i + j] = kHue[3 * i + j];
            }
        first[15] = second[15] = 1;
        double scale[4] = {1, 1, 1, 1}, offset[4] = {-25.5, -25.5, -25.5, 0};
        t[1] = vips_image_new_matrix_from_array(4, 4, first, 16);
        t[2] = vips_image_new_matrix_from_array(4, 4, second, 16);
        vips_recomb(t[0], &t[3], t[1], nullptr);
        vips_linear(t[3], &t[4], scale, offset, 4, "uchar", TRUE, nullptr);
        vips_gamma(t[4], &t[5], "exponent", 1 / 0.7, nullptr);
        vips_recomb(t[5], &t[6], t[2], nullptr);
        vips_cast_uchar(t[6], &t[7], nullptr);
        return t[7];
    });
    return all;
}

} // namespace bench
