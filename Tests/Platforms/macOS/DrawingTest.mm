// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/CoreFoundationOwner.h"
#import "Platforms/macOS/CoreImageImaging.h"
#import "Platforms/macOS/PixelBufferImage.h"
#import "Platforms/macOS/VDspFourierTransform.h"
#import "Tests/Platforms/FourierContract.h"
#import "Tests/Platforms/ImagingContract.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#import <CoreVideo/CoreVideo.h>
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct CoreImageBackend {
    /// Allows for colour matching.
    static constexpr double tolerance = 2;
    static std::unique_ptr<Imaging> makeImaging() { return std::make_unique<CoreImageImaging>(); }
    static std::shared_ptr<const SourceImage> makeSource(int width, int height,
                                                         const std::vector<std::uint8_t>& bytes) {
        CVPixelBufferRef made = nullptr;
        NSDictionary* attributes =
            @{(__bridge NSString*)kCVPixelBufferIOSurfacePropertiesKey : @{}};
        const auto columns = static_cast<std::size_t>(width);
        const auto rows = static_cast<std::size_t>(height);
        if (CVPixelBufferCreate(nullptr, columns, rows, bgra32Code,
                                (__bridge CFDictionaryRef)attributes, &made) != kCVReturnSuccess) {
            return nullptr;
        }
        const CoreFoundationOwner<CVPixelBufferRef> buffer(made);
        CVBufferSetAttachment(
            made, kCVImageBufferCGColorSpaceKey,
            CoreFoundationOwner<CGColorSpaceRef>(CGColorSpaceCreateWithName(kCGColorSpaceSRGB))
                .get(),
            kCVAttachmentMode_ShouldPropagate);
        CVPixelBufferLockBaseAddress(made, 0);
        auto* to = static_cast<std::uint8_t*>(CVPixelBufferGetBaseAddress(made));
        for (std::size_t row = 0; row < rows; ++row) {
            std::memcpy(to + row * CVPixelBufferGetBytesPerRow(made),
                        bytes.data() + row * columns * 4, columns * 4);
        }
        CVPixelBufferUnlockBaseAddress(made, 0);
        return std::make_shared<const PixelBufferImage>(made);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(CoreImage, ImagingContract, CoreImageBackend);

TEST(VDspFourierTransform, agreesWithTheDefinition) {
    expectTheDefinition(VDspFourierTransform());
}

}  // namespace
}  // namespace marrowby
