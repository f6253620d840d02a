// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Platforms/Linux/Camera/V4l2Device.h"
#include "Platforms/Linux/Desktop/BytePool.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include <linux/videodev2.h>

namespace marrowby {

/// Converts camera frames to BGRA. One thread at a time; the results may outlive it.
class V4l2Converter {
  public:
    /// Cheapest first.
    static constexpr std::array<std::uint32_t, 3> pixelFormats{V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_NV12,
                                                               V4L2_PIX_FMT_MJPEG};
    [[nodiscard]] static bool canRead(const V4l2Layout& layout);

    V4l2Converter();

    /// Null for a truncated or damaged frame, or one of another size.
    [[nodiscard]] std::shared_ptr<const PixelBuffer> convert(const V4l2Layout& layout,
                                                             std::span<const std::uint8_t> bytes);

  private:
    struct CloseDecoder {
        void operator()(void* decoder) const;
    };
    [[nodiscard]] bool decode(const V4l2Layout& layout, std::span<const std::uint8_t> bytes,
                              std::uint8_t* pixels);

    BytePool pool_;
    /// Created with the first JPEG frame.
    std::unique_ptr<void, CloseDecoder> decoder_;
};

}  // namespace marrowby
