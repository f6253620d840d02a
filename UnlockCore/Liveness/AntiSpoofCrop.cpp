// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/AntiSpoofCrop.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace marrowby {

namespace {

// Bounds the box's coordinates: beyond, shifting it into the picture loses precision.
constexpr double farthest = 1e9;

/// Where one output column (or row) comes from: two neighbours, as byte offsets, and the second's
/// share.
struct Tap {
    std::size_t first;
    std::size_t second;
    double share;
};

using Taps = std::array<Tap, AntiSpoofCrop::side>;

Taps taps(std::int64_t start, std::int64_t length, std::size_t stride) {
    Taps result{};
    const double step = static_cast<double>(length) / AntiSpoofCrop::side;
    for (int i = 0; i < AntiSpoofCrop::side; ++i) {
        const double position = step * (i + 0.5) - 0.5;
        auto first = static_cast<std::int64_t>(std::floor(position));
        double share = position - static_cast<double>(first);
        if (first < 0) {
            first = 0;
            share = 0;
        } else if (first >= length - 1) {
            first = length - 1;
            share = 0;
        }
        const std::int64_t second = std::min(length - 1, first + 1);
        result.at(static_cast<std::size_t>(i)) = {static_cast<std::size_t>(start + first) * stride,
                                                  static_cast<std::size_t>(start + second) * stride,
                                                  share};
    }
    return result;
}

double mixed(std::uint8_t first, std::uint8_t second, double share) {
    return (1 - share) * first + share * second;
}

std::uint8_t rounded(double value) {
    // Never negative; lround() would be a call per byte.
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0) + 0.5);
}

}  // namespace

std::optional<AntiSpoofCrop> AntiSpoofCrop::around(const Rect& faceBox, std::int64_t imageWidth,
                                                   std::int64_t imageHeight, double scale) {
    const bool usable = faceBox.width > 0 && faceBox.height > 0 && faceBox.width <= farthest &&
                        faceBox.height <= farthest && std::abs(faceBox.x) <= farthest &&
                        std::abs(faceBox.y) <= farthest;
    if (!usable || imageWidth < 2 || imageHeight < 2) return std::nullopt;

    const double lastX = static_cast<double>(imageWidth - 1);
    const double lastY = static_cast<double>(imageHeight - 1);
    const double limited = std::min({scale, lastX / faceBox.width, lastY / faceBox.height});
    const Point centre = faceBox.centre();
    const double halfWidth = faceBox.width * limited / 2;
    const double halfHeight = faceBox.height * limited / 2;

    double left = centre.x - halfWidth;
    double right = centre.x + halfWidth;
    double top = centre.y - halfHeight;
    double bottom = centre.y + halfHeight;
    if (left < 0) {
        right -= left;
        left = 0;
    }
    if (top < 0) {
        bottom -= top;
        top = 0;
    }
    if (right > lastX) {
        left -= right - lastX;
        right = lastX;
    }
    if (bottom > lastY) {
        top -= bottom - lastY;
        bottom = lastY;
    }

    const AntiSpoofCrop crop{static_cast<std::int64_t>(left), static_cast<std::int64_t>(top),
                             static_cast<std::int64_t>(right), static_cast<std::int64_t>(bottom)};
    const bool valid = crop.left >= 0 && crop.left < crop.right && crop.right < imageWidth &&
                       crop.top >= 0 && crop.top < crop.bottom && crop.bottom < imageHeight;
    return valid ? std::optional(crop) : std::nullopt;
}

std::vector<std::uint8_t> AntiSpoofCrop::resampled(const RGBPixels& pixels) const {
    if (left < 0 || top < 0 || left > right || top > bottom || right >= pixels.width ||
        bottom >= pixels.height) {
        return {};
    }
    const Taps columns = taps(left, right - left + 1, pixels.bytesPerPixel);
    const Taps rows = taps(top, bottom - top + 1, pixels.bytesPerRow);

    std::vector<std::uint8_t> result(byteCount, 255);
    std::uint8_t* out = result.data();
    for (const Tap& row : rows) {
        const std::uint8_t* upper = pixels.data->data() + row.first;
        const std::uint8_t* lower = pixels.data->data() + row.second;
        const auto channel = [&](const Tap& column, std::size_t offset) {
            const std::size_t first = column.first + offset;
            const std::size_t second = column.second + offset;
            return rounded((1 - row.share) * mixed(upper[first], upper[second], column.share) +
                           row.share * mixed(lower[first], lower[second], column.share));
        };
        for (const Tap& column : columns) {
            out[0] = channel(column, pixels.blue);
            out[1] = channel(column, pixels.green);
            out[2] = channel(column, pixels.red);
            out += 4;
        }
    }
    return result;
}

}  // namespace marrowby
