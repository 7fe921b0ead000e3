// The comparison's operations as OpenCV offers them.
#include "bench/Peers.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

// A map of bytes; alpha stays.
cv::Mat curve(double (*of)(double))
{
    cv::Mat values(1, 256, CV_8UC4);
    for (int i = 0; i < 256; ++i) {
        const auto v = cv::saturate_cast<uchar>(255 * of(i / 255.0));
        values.at<cv::Vec4b>(i) = cv::Vec4b(v, v, v, static_cast<uchar>(i));
    }
    return values;
}

} // namespace

Operations openCvOn(const imaging::BitmapRef& picture)
{
    const cv::Mat source(picture->height(), picture->width(), CV_8UC4,
                         const_cast<std::byte*>(picture->row(0)), picture->bytesPerRow());
    const auto blur = [source](double sigma) {
        return [source, sigma] {
            cv::Mat out;
            cv::GaussianBlur(source, out, cv::Size(), sigma, sigma, cv::BORDER_REPLICATE);
        };
    };
    const auto sobel = [source] {
        cv::Mat red, gx, gy, magnitude, grey, out;
        cv::extractChannel(source, red, 0);
        cv::Sobel(red, gx, CV_32F, 1, 0, 3, 1, 0, cv::BORDER_CONSTANT);
        cv::Sobel(red, gy, CV_32F, 0, 1, 3, 1, 0, cv::BORDER_CONSTANT);
        cv::magnitude(gx, gy, magnitude);
        magnitude.convertTo(grey, CV_8U);
        cv::cvtColor(grey, out, cv::COLOR_GRAY2RGBA);
    };
    const auto affine = [source] {
        const cv::Mat turn = cv::getRotationMatrix2D(
            cv::Point2f(source.cols / 2.f, source.rows / 2.f), kAngle * 180 / CV_PI, 1);
        cv::Mat out;
        cv::warpAffine(source, out, turn, source.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    };
    // Saturation and contrast as one matrix, gamma as a table: the quick way for bytes.
    const double s = 1.5, k = 1.2, weights[3] = {0.2125, 0.7154, 0.0721};
    cv::Mat controls = cv::Mat::zeros(4, 5, CV_32F), hue = cv::Mat::zeros(4, 5, CV_32F);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            controls.at<float>(i, j) =
                static_cast<float>(k * ((1 - s) * weights[j] + (i == j ? s : 0)));
            hue.at<float>(i, j) = static_cast<float>(kHue[3 * i + j]);
        }
        controls.at<float>(i, 4) = static_cast<float>(255 * 0.5 * (1 - k));
    }
    controls.at<float>(3, 3) = hue.at<float>(3, 3) = 1;
    const auto color = [source, controls, gamma = curve([](double v) { return std::pow(v, 0.7); }),
                        hue] {
        cv::Mat a, b, out;
        cv::transform(source, a, controls);
        cv::LUT(a, gamma, b);
        cv::transform(b, out, hue);
    };
    const auto table = [source](const cv::Mat& values) {
        return [source, values] {
            cv::Mat out;
            cv::LUT(source, values, out);
        };
    };
    const auto mask = [source](const cv::Mat& weights) {
        return [source, weights = cv::Mat(weights / cv::sum(weights)[0])] {
            cv::Mat out;
            cv::filter2D(source, out, -1, weights, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
        };
    };
    const auto box = [source](int width, int height) {
        return [source, width, height] {
            cv::Mat out;
            cv::blur(source, out, cv::Size(width, height), cv::Point(-1, -1), cv::BORDER_REPLICATE);
        };
    };
    cv::Mat disc(17, 17, CV_32F), line = cv::Mat::zeros(25, 41, CV_32F);
    for (int dy = -8; dy <= 8; ++dy)
        for (int dx = -8; dx <= 8; ++dx)
            disc.at<float>(dy + 8, dx + 8) =
                static_cast<float>(std::clamp(8.5 - std::hypot(dx, dy), 0.0, 1.0));
    for (int k = -20; k <= 20; ++k) {
        const double lx = 20 + k * std::cos(kTurned), ly = 12 - k * std::sin(kTurned);
        const int column = static_cast<int>(lx), row = static_cast<int>(ly);
        for (int dy = 0; dy < 2; ++dy)
            for (int dx = 0; dx < 2; ++dx)
                line.at<float>(row + dy, column + dx) += static_cast<float>(
                    (dx ? lx - column : 1 - lx + column) * (dy ? ly - row : 1 - ly + row));
    }
    const auto unsharp = [source] {
        cv::Mat soft, out;
        cv::GaussianBlur(source, soft, cv::Size(), 2.5, 2.5, cv::BORDER_REPLICATE);
        cv::addWeighted(source, 1.5, soft, -0.5, 0, out);
    };
    cv::Mat opaque;
    cv::cvtColor(source, opaque, cv::COLOR_RGBA2RGB); // all that its bilateral filter takes
    const auto bilateral = [opaque] {
        cv::Mat out;
        cv::bilateralFilter(opaque, out, 5, 8, 1.1);
    };
    const auto median = [source] {
        cv::Mat out;
        cv::medianBlur(source, out, 5);
    };
    const auto edges = [source] {
        cv::Mat gx, gy, magnitude, out;
        cv::Sobel(source, gx, CV_32F, 1, 0, 3, 0.125, 0, cv::BORDER_REPLICATE);
        cv::Sobel(source, gy, CV_32F, 0, 1, 3, 0.125, 0, cv::BORDER_REPLICATE);
        cv::magnitude(gx, gy, magnitude);
        magnitude.convertTo(out, CV_8U);
    };
    const auto pixellate = [source] {
        cv::Mat small, out;
        cv::resize(source, small, cv::Size(source.cols / 8, source.rows / 8), 0, 0, cv::INTER_AREA);
        cv::resize(small, out, source.size(), 0, 0, cv::INTER_NEAREST);
    };
    const auto invert = [source] {
        cv::Mat out;
        cv::bitwise_xor(source, cv::Scalar(255, 255, 255, 0), out);
    };
    const auto random = [source] {
        cv::Mat out(source.size(), CV_8UC4);
        cv::randu(out, 0, 256);
    };
    return {
        {"box 10", box(21, 21)},
        {"disc 8", mask(disc)},
        {"motion 20", box(41, 1)},
        {"motion turned", mask(line)},
        {"unsharp 2.5", unsharp},
        {"noise reduction", bilateral},
        {"noise / median", median},
        {"edges", edges},
        {"pixellate 8", pixellate},
        {"invert", invert},
        {"gamma", table(curve([](double v) { return std::pow(v, 0.7); }))},
        {"posterize", table(curve([](double v) { return std::min(std::floor(v * 6), 5.0) / 5; }))},
        {"random", random},
        {"sobel", sobel},
        {"gauss 7", blur(7)},
        {"gauss 50", blur(50)},
        {"affine", affine},
        {"colour", color}};
}

} // namespace bench
