#pragma once

#include "Platforms/macOS/CoreFoundationOwner.h"
#include "UnlockCore/Foundation/Bitmap.h"

#include <cstdint>
#include <optional>

#include <CoreGraphics/CoreGraphics.h>

namespace marrowby {

/// The system's flags for a layout.
[[nodiscard]] CGBitmapInfo bitmapInfo(const PixelFormat& format);

/// The bitmap as the system's image, which reads the same bytes. Null where the system knows no
/// such layout.
[[nodiscard]] CoreFoundationOwner<CGImageRef> coreGraphicsImage(const Bitmap& bitmap);

/// A copy of an image's bytes; nothing where the image has none or no layout that is known here.
[[nodiscard]] std::optional<Bitmap> bitmap(CGImageRef image);

[[nodiscard]] CoreFoundationOwner<CGColorSpaceRef> sRGBColorSpace();

}  // namespace marrowby
