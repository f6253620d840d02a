// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/BitmapMat.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

using Alpha = PixelFormat::Alpha;
using ByteOrder = PixelFormat::ByteOrder;

struct Layout {
    int channels = 4;
    std::array<int, 3> rgb{0, 1, 2};
    /// Only for straight (unpremultiplied) alpha.
    std::optional<int> alpha;
};

std::optional<Layout> layout(const PixelFormat& format) {
    if (format.bitsPerComponent != 8) return std::nullopt;
    const bool hasAlpha = format.alpha != Alpha::none;
    if (format.colorModel == PixelFormat::ColorModel::gray) {
        if (format.bitsPerPixel != 8 || hasAlpha) return std::nullopt;
        return Layout{.channels = 1, .rgb = {0, 0, 0}, .alpha = std::nullopt};
    }
    if (format.colorModel != PixelFormat::ColorModel::rgb || format.alpha == Alpha::only) {
        return std::nullopt;
    }
    if (!hasAlpha && format.bitsPerPixel == 24 && format.byteOrder == ByteOrder::standard) {
        return Layout{.channels = 3, .rgb = {0, 1, 2}, .alpha = std::nullopt};
    }
    const bool isLittle = format.byteOrder == ByteOrder::little32;
    const bool isBig =
        format.byteOrder == ByteOrder::standard || format.byteOrder == ByteOrder::big32;
    if (!hasAlpha || format.bitsPerPixel != 32 || (!isLittle && !isBig)) return std::nullopt;

    const bool alphaFirst = format.alpha == Alpha::first || format.alpha == Alpha::skipFirst ||
                            format.alpha == Alpha::premultipliedFirst;
    Layout result{.channels = 4, .rgb = {0, 1, 2}, .alpha = std::nullopt};
    int alpha = 3;
    if (alphaFirst) {
        result.rgb = {1, 2, 3};
        alpha = 0;
    }
    if (isLittle) {
        for (int& position : result.rgb)
            position = 3 - position;
        alpha = 3 - alpha;
    }
    if (format.alpha == Alpha::first || format.alpha == Alpha::last) result.alpha = alpha;
    return result;
}

/// A view of the bitmap's bytes, only read: OpenCV has no const Mat.
cv::Mat view(const Bitmap& bitmap, int channels) {
    return {bitmap.height(), bitmap.width(), CV_MAKETYPE(CV_8U, channels),
            const_cast<std::uint8_t*>(bitmap.bytes().data()),  // NOLINT
            bitmap.bytesPerRow()};
}

}  // namespace

std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap) {
    return rgbaMat(bitmap, {0, 0, bitmap.width(), bitmap.height()});
}

std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap, const cv::Rect& part) {
    const auto bytes = layout(bitmap.format());
    if (!bytes) return std::nullopt;
    const cv::Mat source = view(bitmap, bytes->channels)(part);
    if (bitmap.format() == rgbx8 || bitmap.format() == rgba8) {
        cv::Mat opaque;
        cv::bitwise_or(source, cv::Scalar(0, 0, 0, 255), opaque);
        return opaque;
    }
    cv::Mat result(source.size(), CV_8UC4, cv::Scalar(0, 0, 0, 255));
    const auto& rgb = bytes->rgb;
    const std::array fromTo{rgb[0], 0, rgb[1], 1, rgb[2], 2};
    cv::mixChannels(&source, 1, &result, 1, fromTo.data(), 3);
    if (bytes->alpha) {
        for (int row = 0; row < result.rows; ++row) {
            const std::uint8_t* from = source.ptr<std::uint8_t>(row);
            std::uint8_t* to = result.ptr<std::uint8_t>(row);
            for (int column = 0; column < result.cols; ++column) {
                const int alpha = from[column * 4 + *bytes->alpha];
                for (int channel = 0; channel < 3; ++channel) {
                    std::uint8_t& value = to[column * 4 + channel];
                    value = static_cast<std::uint8_t>((value * alpha + 127) / 255);
                }
            }
        }
    }
    return result;
}

std::optional<cv::Mat> bgrMat(const Bitmap& bitmap) {
    cv::Mat result;
    if (bitmap.format() == bgrx8) {
        cv::cvtColor(view(bitmap, 4), result, cv::COLOR_BGRA2BGR);
        return result;
    }
    if (bitmap.format() == rgbx8 || bitmap.format() == rgba8) {
        cv::cvtColor(view(bitmap, 4), result, cv::COLOR_RGBA2BGR);
        return result;
    }
    const auto rgba = rgbaMat(bitmap);
    if (!rgba) return std::nullopt;
    cv::cvtColor(*rgba, result, cv::COLOR_RGBA2BGR);
    return result;
}

}  // namespace marrowby
