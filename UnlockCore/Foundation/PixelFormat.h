#pragma once

#include <cstddef>
#include <cstdint>

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
/// What camera and network systems call buffers of blue, green, red and alpha: the code “BGRA”.
inline constexpr std::uint32_t bgra32Code = 0x42475241;

}  // namespace marrowby
