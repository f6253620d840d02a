// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/CoreImageImaging.h"

#import "Platforms/macOS/CoreFoundationOwner.h"
#import "Platforms/macOS/CoreGraphicsBitmap.h"
#import "Platforms/macOS/PixelBufferImage.h"
#import "UnlockCore/Platform/Imaging.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#import <CoreImage/CoreImage.h>

namespace marrowby {

namespace {

std::optional<Bitmap> drawn(const Bitmap& bitmap, int width, int height, const PixelFormat& format,
                            const AffineTransform& transform) {
    const auto image = coreGraphicsImage(bitmap);
    if (!image || !isDrawable(width, height) || !isDrawable(transform)) return std::nullopt;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    const std::size_t bytesPerRow = columns * format.bitsPerPixel / 8;
    std::vector<std::uint8_t> bytes(bytesPerRow * rows);
    {
        const CoreFoundationOwner<CGContextRef> canvas(
            CGBitmapContextCreate(bytes.data(), columns, rows, format.bitsPerComponent, bytesPerRow,
                                  sRGBColorSpace().get(), bitmapInfo(format)));
        if (!canvas) return std::nullopt;
        CGContextSetRGBFillColor(canvas.get(), 0, 0, 0, 1);
        CGContextFillRect(canvas.get(), CGRectMake(0, 0, width, height));
        CGContextSetInterpolationQuality(canvas.get(), kCGInterpolationHigh);
        CGContextConcatCTM(canvas.get(),
                           CGAffineTransformMake(transform.a, transform.b, transform.c, transform.d,
                                                 transform.tx, transform.ty));
        CGContextDrawImage(canvas.get(), CGRectMake(0, 0, bitmap.width(), bitmap.height()),
                           image.get());
    }
    return Bitmap::create(width, height, bytesPerRow, format, std::move(bytes));
}

}  // namespace

struct CoreImageImaging::Context {
    CoreFoundationOwner<CGColorSpaceRef> sRGB = sRGBColorSpace();
    /// Computes on encoded sRGB values, as the models and cues expect. Caches nothing: every frame
    /// is different.
    CIContext* context = [CIContext contextWithOptions:@{
        kCIContextWorkingColorSpace : (__bridge id)sRGB.get(),
        kCIContextCacheIntermediates : @NO,
    }];
};

CoreImageImaging::CoreImageImaging() : context_(std::make_unique<const Context>()) {}
CoreImageImaging::~CoreImageImaging() = default;

std::optional<Bitmap> CoreImageImaging::render(const SourceImage& source, const Rect& crop,
                                               double scale) const {
    const auto* picture = dynamic_cast<const PixelBufferImage*>(&source);
    if (!picture) return std::nullopt;
    const auto plan = RenderPlan::make(picture->extent(), crop, scale);
    if (!plan) return std::nullopt;
    const Rect& part = plan->part;
    @autoreleasepool {
        @try {
            // Clamped, so that the part's edges do not blend with transparency.
            CIImage* image = [[[CIImage imageWithCVPixelBuffer:picture->buffer()]
                imageByCroppingToRect:CGRectMake(part.x, part.y, part.width, part.height)]
                imageByClampingToExtent];
            const double across = plan->width / part.width;
            const double up = plan->height / part.height;
            image = [image
                imageByApplyingTransform:CGAffineTransformMake(across, 0, 0, up, -part.x * across,
                                                               -part.y * up)
                   highQualityDownsample:YES];
            const CoreFoundationOwner<CGImageRef> rendered([context_->context
                createCGImage:image
                     fromRect:CGRectMake(0, 0, plan->width, plan->height)
                       format:kCIFormatRGBA8
                   colorSpace:context_->sRGB.get()
                     deferred:NO]);
            return bitmap(rendered.get());
        } @catch (NSException*) {
            return std::nullopt;
        }
    }
}

std::optional<Bitmap> CoreImageImaging::draw(const Bitmap& image, int width, int height,
                                             const AffineTransform& transform) const {
    return drawn(image, width, height, rgbx8, transform);
}

std::optional<Bitmap> CoreImageImaging::convert(const Bitmap& image, PixelFormat format) const {
    return drawn(image, image.width(), image.height(), format, {});
}

}  // namespace marrowby
