// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace marrowby {

/// How a pixel's bytes are laid out, in the terms a drawing system uses.
struct PixelFormat {
    enum class ColorModel { rgb, gray, other };
    enum class Alpha {
        none,
        premultipliedLast,
        premultipliedFirst,
        last,
        first,
        skipLast,
        skipFirst,
        only,
    };
    enum class ByteOrder { standard, little16, little32, big16, big32 };

    std::size_t bitsPerComponent = 8;
    std::size_t bitsPerPixel = 32;
    Alpha alpha = Alpha::premultipliedLast;
    ByteOrder byteOrder = ByteOrder::standard;
    ColorModel colorModel = ColorModel::rgb;

    friend bool operator==(const PixelFormat&, const PixelFormat&) = default;
};

/// Bytes red, green, blue, alpha.
inline constexpr PixelFormat rgba8{};
/// Bytes red, green, blue and one that is ignored.
inline constexpr PixelFormat rgbx8{.alpha = PixelFormat::Alpha::skipLast};
/// Bytes blue, green, red and one that is ignored.
inline constexpr PixelFormat bgrx8{.alpha = PixelFormat::Alpha::skipFirst,
                                   .byteOrder = PixelFormat::ByteOrder::little32};
/// The four-character code “BGRA” of camera and model buffers.
inline constexpr std::uint32_t bgra32Code = 0x42475241;

/// An immutable sRGB picture, rows top to bottom. Copies share the bytes; any thread may read it.
class Bitmap {
  public:
    /// Takes the bytes over. Nothing when a side is not positive, a row is shorter than its pixels
    /// or the bytes do not cover all rows.
    [[nodiscard]] static std::optional<Bitmap> create(int width, int height,
                                                      std::size_t bytesPerRow, PixelFormat format,
                                                      std::vector<std::uint8_t> bytes);
    /// Shares the bytes, which the last copy releases.
    [[nodiscard]] static std::optional<Bitmap> create(
        int width, int height, std::size_t bytesPerRow, PixelFormat format,
        std::shared_ptr<const std::vector<std::uint8_t>> bytes);

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] std::size_t bytesPerRow() const { return bytesPerRow_; }
    [[nodiscard]] const PixelFormat& format() const { return format_; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return *bytes_; }
    /// Keeps the bytes alive beyond this value.
    [[nodiscard]] std::shared_ptr<const std::vector<std::uint8_t>> sharedBytes() const {
        return bytes_;
    }

  private:
    Bitmap() = default;

    int width_ = 0;
    int height_ = 0;
    std::size_t bytesPerRow_ = 0;
    PixelFormat format_;
    std::shared_ptr<const std::vector<std::uint8_t>> bytes_;
};

}  // namespace marrowby
