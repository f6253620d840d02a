// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/CoreFoundationOwner.h"
#include "UnlockCore/Foundation/Bitmap.h"

#include <cstdint>
#include <optional>

#include <CoreGraphics/CoreGraphics.h>

namespace marrowby {

[[nodiscard]] CGBitmapInfo bitmapInfo(const PixelFormat& format);

/// An image that shares the bitmap's bytes. Null for a format that Core Graphics does not support.
[[nodiscard]] CoreFoundationOwner<CGImageRef> coreGraphicsImage(const Bitmap& bitmap);

/// Copies an image's bytes; `nullopt` without bytes or for an unknown format.
[[nodiscard]] std::optional<Bitmap> bitmap(CGImageRef image);

[[nodiscard]] CoreFoundationOwner<CGColorSpaceRef> sRGBColorSpace();

}  // namespace marrowby
