// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/CoreFoundationOwner.h"
#include "UnlockCore/Platform/Imaging.h"

#include <CoreVideo/CVPixelBuffer.h>

namespace marrowby {

/// A camera frame in the system's buffer. The camera drops frames while all of its few buffers are
/// held.
class PixelBufferImage final : public SourceImage {
  public:
    explicit PixelBufferImage(CVPixelBufferRef buffer) : buffer_(CVPixelBufferRetain(buffer)) {}

    [[nodiscard]] CVPixelBufferRef buffer() const { return buffer_.get(); }

    [[nodiscard]] Size extent() const override {
        return {static_cast<double>(CVPixelBufferGetWidth(buffer())),
                static_cast<double>(CVPixelBufferGetHeight(buffer()))};
    }

  private:
    CoreFoundationOwner<CVPixelBufferRef> buffer_;
};

}  // namespace marrowby
