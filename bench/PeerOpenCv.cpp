// The comparison's operations as OpenCV offers them.
#include "bench/Peers.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace bench {

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
    cv::Mat gamma(1, 256, CV_8UC4);
    for (int i = 0; i < 256; ++i) {
        const auto v = cv::saturate_cast<uchar>(255 * std::pow(i / 255.0, 0.7));
        gamma.at<cv::Vec4b>(i) = cv::Vec4b(v, v, v, static_cast<uchar>(i));
    }
    const auto color = [source, controls, gamma, hue] {
        cv::Mat a, b, out;
        cv::transform(source, a, controls);
        cv::LUT(a, gamma, b);
        cv::transform(b, out, hue);
    };
    return {{"sobel", sobel},
            {"gauss 7", blur(7)},
            {"gauss 50", blur(50)},
            {"affine", affine},
            {"colour", color}};
}

} // namespace bench
