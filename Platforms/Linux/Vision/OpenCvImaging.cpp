// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OpenCvImaging.h"

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Platforms/Linux/Vision/BitmapMat.h"
#include "UnlockCore/Platform/Imaging.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

struct Canvas {
    std::shared_ptr<std::vector<std::uint8_t>> bytes;
    cv::Mat mat;

    Canvas(int width, int height, const BytePool& pool)
        : bytes(
              borrow(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, pool)),
          mat(height, width, CV_8UC4, bytes->data()) {}

    static std::shared_ptr<std::vector<std::uint8_t>> borrow(std::size_t size,
                                                             const BytePool& pool) {
        // Small blocks are cheap to allocate: only large ones are pooled.
        constexpr std::size_t large = std::size_t{128} << 10U;
        return size < large ? std::make_shared<std::vector<std::uint8_t>>(size) : pool.take(size);
    }

    std::optional<Bitmap> finish(PixelFormat format) && {
        return Bitmap::create(mat.cols, mat.rows, static_cast<std::size_t>(mat.cols) * 4, format,
                              std::move(bytes));
    }
};

AffineTransform flip(double height) {
    return {.d = -1, .ty = height};
}
AffineTransform shift(double x, double y) {
    return {.tx = x, .ty = y};
}

std::optional<AffineTransform> inverse(const AffineTransform& t) {
    const double determinant = t.a * t.d - t.b * t.c;
    if (!(std::abs(determinant) > 1e-12)) return std::nullopt;
    return AffineTransform{.a = t.d / determinant,
                           .b = -t.b / determinant,
                           .c = -t.c / determinant,
                           .d = t.a / determinant,
                           .tx = (t.c * t.ty - t.d * t.tx) / determinant,
                           .ty = (t.b * t.tx - t.a * t.ty) / determinant};
}

/// The part of `image` that is drawn on a canvas of this size, with a small margin.
cv::Rect partNeeded(const cv::Size& image, const AffineTransform& toImage, int width, int height) {
    double left = std::numeric_limits<double>::max();
    double top = left;
    double right = -left;
    double bottom = -left;
    for (const Point corner : {Point{0, 0}, Point{double(width), 0}, Point{0, double(height)},
                               Point{double(width), double(height)}}) {
        const Point p = toImage.apply(corner);
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
    }
    constexpr double margin = 4;
    const auto within = [](double value, int limit) {
        return static_cast<int>(std::clamp(value, 0.0, double(limit)));
    };
    const int x = within(std::floor(left - margin), image.width);
    const int y = within(std::floor(top - margin), image.height);
    return {x, y, within(std::ceil(right + margin), image.width) - x,
            within(std::ceil(bottom + margin), image.height) - y};
}

/// Origins at the top-left. Reduces by area first where interpolation would skip pixels. False for
/// an unreadable format.
bool drawOnto(cv::Mat& canvas, const Bitmap& image, const AffineTransform& transform) {
    const auto toImage = inverse(transform);
    const cv::Rect part =
        toImage ? partNeeded({image.width(), image.height()}, *toImage, canvas.cols, canvas.rows)
                : cv::Rect();
    const auto pixels = rgbaMat(image, part.empty() ? cv::Rect(0, 0, 1, 1) : part);
    if (!pixels) return false;
    if (part.empty()) return true;

    cv::Mat source = *pixels;
    AffineTransform fromSource = shift(part.x, part.y).then(transform);
    const double scale = std::sqrt(std::abs(transform.a * transform.d - transform.b * transform.c));
    if (scale < 0.75) {
        const cv::Size size(std::max(1, static_cast<int>(std::lround(source.cols * scale))),
                            std::max(1, static_cast<int>(std::lround(source.rows * scale))));
        cv::Mat shrunk;
        cv::resize(source, shrunk, size, 0, 0, cv::INTER_AREA);
        fromSource = AffineTransform{.a = double(source.cols) / size.width,
                                     .d = double(source.rows) / size.height}
                         .then(fromSource);
        source = shrunk;
    }
    // OpenCV's coordinates start at the first pixel's centre.
    const AffineTransform t = shift(0.5, 0.5).then(fromSource).then(shift(-0.5, -0.5));
    const cv::Matx23d matrix(t.a, t.c, t.tx, t.b, t.d, t.ty);
    cv::warpAffine(source, canvas, matrix, canvas.size(), cv::INTER_CUBIC, cv::BORDER_CONSTANT,
                   cv::Scalar(0, 0, 0, 255));
    return true;
}

}  // namespace

std::optional<Bitmap> OpenCvImaging::render(const SourceImage& source, const Rect& crop,
                                            double scale) const {
    const auto* buffer = dynamic_cast<const PixelBuffer*>(&source);
    if (!buffer) return std::nullopt;
    const auto plan = RenderPlan::make(buffer->extent(), crop, scale);
    if (!plan) return std::nullopt;
    const int width = plan->width;
    const int height = plan->height;
    const cv::Rect part(static_cast<int>(plan->part.x),
                        buffer->height() - static_cast<int>(plan->part.maxY()),
                        static_cast<int>(plan->part.width), static_cast<int>(plan->part.height));
    try {
        const cv::Mat whole(buffer->height(), buffer->width(), CV_8UC4,
                            const_cast<std::uint8_t*>(buffer->bytes().data()),  // NOLINT
                            buffer->bytesPerRow());
        cv::Mat scaled = whole(part);
        if (scaled.size() != cv::Size(width, height)) {
            const bool shrinks = width < part.width;
            cv::Mat resized;
            cv::resize(scaled, resized, {width, height}, 0, 0,
                       shrinks ? cv::INTER_AREA : cv::INTER_CUBIC);
            scaled = resized;
        }
        Canvas canvas(width, height, pool_);
        cv::cvtColor(scaled, canvas.mat, cv::COLOR_BGRA2RGBA);
        cv::bitwise_or(canvas.mat, cv::Scalar(0, 0, 0, 255), canvas.mat);
        return std::move(canvas).finish(rgba8);
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

std::optional<Bitmap> OpenCvImaging::draw(const Bitmap& image, int width, int height,
                                          const AffineTransform& transform) const {
    if (!isDrawable(width, height) || !isDrawable(transform)) return std::nullopt;
    try {
        Canvas canvas(width, height, pool_);
        canvas.mat = cv::Scalar(0, 0, 0, 255);
        const auto fromTop = flip(image.height()).then(transform).then(flip(height));
        if (!drawOnto(canvas.mat, image, fromTop)) return std::nullopt;
        return std::move(canvas).finish(rgbx8);
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

std::optional<Bitmap> OpenCvImaging::convert(const Bitmap& image, PixelFormat format) const {
    const bool toRGB = format == rgba8 || format == rgbx8;
    if (!toRGB && format != bgrx8) return std::nullopt;
    try {
        const auto pixels = rgbaMat(image);
        if (!pixels) return std::nullopt;
        Canvas canvas(image.width(), image.height(), pool_);
        if (toRGB) {
            pixels->copyTo(canvas.mat);
        } else {
            cv::cvtColor(*pixels, canvas.mat, cv::COLOR_RGBA2BGRA);
        }
        return std::move(canvas).finish(format);
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

}  // namespace marrowby
