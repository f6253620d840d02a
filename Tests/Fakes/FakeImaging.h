// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/Imaging.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace marrowby {

/// A picture of nothing but its size.
class FakeSourceImage final : public SourceImage {
  public:
    FakeSourceImage(double width, double height) : extent_{width, height} {}
    [[nodiscard]] Size extent() const override { return extent_; }

  private:
    Size extent_;
};

/// Draws 4-byte pixels by their nearest neighbour; a source renders as its own coordinates: red and
/// green count the source's pixels from the bottom-left, modulo 256. Remembers what it was asked.
/// One thread.
class FakeImaging final : public Imaging {
  public:
    struct Rendering {
        Rect crop;
        double scale = 0;
        friend bool operator==(const Rendering&, const Rendering&) = default;
    };

    /// The system cannot draw.
    bool renderFails = false;
    bool convertFails = false;
    /// How many of the next calls of draw() fail.
    mutable int drawFailures = 0;
    mutable std::vector<Rendering> renderings;

    [[nodiscard]] std::optional<Bitmap> render(const SourceImage& /*source*/, const Rect& crop,
                                               double scale) const override {
        renderings.push_back({crop, scale});
        if (renderFails) return std::nullopt;
        const int width = static_cast<int>(std::lround(crop.width * scale));
        const int height = static_cast<int>(std::lround(crop.height * scale));
        return paint(width, height, rgba8, [&](double x, double y) {
            return Pixel{byte(crop.x + x / scale), byte(crop.maxY() - y / scale), 0, 255};
        });
    }

    [[nodiscard]] std::optional<Bitmap> draw(const Bitmap& image, int width, int height,
                                             const AffineTransform& t) const override {
        if (drawFailures > 0) {
            --drawFailures;
            return std::nullopt;
        }
        const double determinant = t.a * t.d - t.b * t.c;
        return paint(width, height, rgbx8, [&](double x, double y) {
            const double u = x - t.tx;
            const double v = height - y - t.ty;
            return pixel(image, (t.d * u - t.c * v) / determinant,
                         image.height() - (t.a * v - t.b * u) / determinant);
        });
    }

    [[nodiscard]] std::optional<Bitmap> convert(const Bitmap& image,
                                                PixelFormat format) const override {
        if (convertFails) return std::nullopt;
        const bool swaps = (image.format() == bgrx8) != (format == bgrx8);
        return paint(image.width(), image.height(), format, [&](double x, double y) {
            Pixel result = pixel(image, x, y);
            if (swaps) std::swap(result[0], result[2]);
            return result;
        });
    }

  private:
    using Pixel = std::array<std::uint8_t, 4>;

    [[nodiscard]] static std::uint8_t byte(double value) {
        return static_cast<std::uint8_t>(static_cast<std::int64_t>(std::floor(value)) & 0xff);
    }

    /// Opaque black outside.
    [[nodiscard]] static Pixel pixel(const Bitmap& image, double x, double y) {
        if (!(x >= 0 && y >= 0 && x < image.width() && y < image.height())) return {0, 0, 0, 255};
        const auto offset =
            static_cast<std::size_t>(y) * image.bytesPerRow() + static_cast<std::size_t>(x) * 4;
        Pixel result{};
        std::ranges::copy(image.bytes().subspan(offset, 4), result.begin());
        return result;
    }

    /// `colour` gives the pixel around a point, in pixels from the top-left.
    template <typename Colour>
    [[nodiscard]] static std::optional<Bitmap> paint(int width, int height, PixelFormat format,
                                                     const Colour& colour) {
        std::vector<std::uint8_t> bytes;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const Pixel pixel = colour(x + 0.5, y + 0.5);
                bytes.insert(bytes.end(), pixel.begin(), pixel.end());
            }
        }
        return Bitmap::create(width, height, static_cast<std::size_t>(width) * 4, format,
                              std::move(bytes));
    }
};

}  // namespace marrowby
