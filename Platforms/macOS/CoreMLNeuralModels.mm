// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/CoreMLNeuralModels.h"

#import "Platforms/macOS/CoreFoundationOwner.h"
#import "Platforms/macOS/FoundationError.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#import <CoreML/CoreML.h>
#import <CoreVideo/CoreVideo.h>

namespace marrowby {

namespace {

static_assert(bgra32Code == kCVPixelFormatType_32BGRA);

MLComputeUnits computeUnits(NeuralModels::ComputeUnits units) {
    switch (units) {
        case NeuralModels::ComputeUnits::all:
            return MLComputeUnitsAll;
        case NeuralModels::ComputeUnits::processorOnly:
            return MLComputeUnitsCPUOnly;
    }
    return MLComputeUnitsAll;
}

NeuralFeature feature(NSString* name, MLFeatureDescription* description) {
    NeuralFeature result{.name = plainText(name), .imageConstraint = std::nullopt, .shape = {}};
    if (description.type == MLFeatureTypeImage) {
        result.kind = NeuralFeature::Kind::image;
        if (MLImageConstraint* constraint = description.imageConstraint) {
            result.imageConstraint = {.width = constraint.pixelsWide,
                                      .height = constraint.pixelsHigh};
        }
    } else if (description.type == MLFeatureTypeMultiArray) {
        result.kind = NeuralFeature::Kind::multiArray;
        for (NSNumber* side in description.multiArrayConstraint.shape)
            result.shape.push_back(side.longLongValue);
    }
    return result;
}

std::vector<NeuralFeature> features(NSDictionary<NSString*, MLFeatureDescription*>* descriptions) {
    std::vector<NeuralFeature> result;
    for (NSString* name in [descriptions.allKeys sortedArrayUsingSelector:@selector(compare:)])
        result.push_back(feature(name, descriptions[name]));
    return result;
}

/// Empty if any value is not a string.
std::map<std::string, std::string> metadata(MLModelDescription* description) {
    std::map<std::string, std::string> result;
    id texts = description.metadata[MLModelCreatorDefinedKey];
    if (![texts isKindOfClass:NSDictionary.class]) return result;
    for (id key in static_cast<NSDictionary*>(texts)) {
        id value = texts[key];
        if (![key isKindOfClass:NSString.class] || ![value isKindOfClass:NSString.class]) return {};
        result.emplace(plainText(key), plainText(value));
    }
    return result;
}

class ImageBuffers {
  public:
    /// Copies the image into a new buffer, or says why not.
    [[nodiscard]] std::expected<CoreFoundationOwner<CVPixelBufferRef>, std::string> fill(
        const Bitmap& image) {
        if (image.format() != bgrx8)
            return std::unexpected(translated("an image of the wrong layout"));
        if (!pool_ || image.width() != width_ || image.height() != height_) {
            if (const CVReturn failed = makePool(image.width(), image.height()); failed) {
                return failure(failed);
            }
        }
        CVPixelBufferRef made = nullptr;
        if (const CVReturn failed = CVPixelBufferPoolCreatePixelBuffer(nullptr, pool_.get(), &made);
            failed != kCVReturnSuccess) {
            return failure(failed);
        }
        CoreFoundationOwner<CVPixelBufferRef> buffer(made);
        if (const CVReturn failed = CVPixelBufferLockBaseAddress(made, 0); failed) {
            return failure(failed);
        }
        auto* to = static_cast<std::uint8_t*>(CVPixelBufferGetBaseAddress(made));
        const std::size_t toStride = CVPixelBufferGetBytesPerRow(made);
        const std::uint8_t* from = image.bytes().data();
        for (int row = 0; to && row < image.height(); ++row) {
            std::memcpy(to, from, static_cast<std::size_t>(image.width()) * 4);
            to += toStride;
            from += image.bytesPerRow();
        }
        CVPixelBufferUnlockBaseAddress(made, 0);
        if (!to) return failure(kCVReturnInvalidArgument);
        return buffer;
    }

  private:
    static std::unexpected<std::string> failure(CVReturn status) {
        return std::unexpected(
            translated("no buffer for an image ({number})", {{"number", status}}));
    }

    CVReturn makePool(int width, int height) {
        NSDictionary* attributes = @{
            name(kCVPixelBufferPixelFormatTypeKey) : @(bgra32Code),
            name(kCVPixelBufferWidthKey) : @(width),
            name(kCVPixelBufferHeightKey) : @(height),
            name(kCVPixelBufferIOSurfacePropertiesKey) : @{},
        };
        CVPixelBufferPoolRef pool = nullptr;
        const CVReturn status =
            CVPixelBufferPoolCreate(nullptr, nullptr, (__bridge CFDictionaryRef)attributes, &pool);
        pool_.reset(pool);
        width_ = width;
        height_ = height;
        return status;
    }

    static NSString* name(CFStringRef key) { return (__bridge NSString*)key; }

    CoreFoundationOwner<CVPixelBufferPoolRef> pool_;
    int width_ = 0;
    int height_ = 0;
};

/// All multi-arrays as floats, whatever their type.
std::vector<NeuralOutput> outputs(id<MLFeatureProvider> prediction) {
    std::vector<NeuralOutput> result;
    for (NSString* name in prediction.featureNames) {
        MLMultiArray* array = [prediction featureValueForName:name].multiArrayValue;
        if (!array) continue;
        NeuralOutput output{.name = plainText(name), .values = {}};
        // Indexed access respects the array's strides.
        for (NSInteger i = 0; i < array.count; ++i)
            output.values.push_back([array objectAtIndexedSubscript:i].floatValue);
        result.push_back(std::move(output));
    }
    return result;
}

class CoreMLNeuralModel final : public NeuralModel {
  public:
    explicit CoreMLNeuralModel(MLModel* model) : model_(model) {
        MLModelDescription* said = model.modelDescription;
        description_ = {.inputs = features(said.inputDescriptionsByName),
                        .outputs = features(said.outputDescriptionsByName),
                        .metadata = metadata(said)};
    }

    [[nodiscard]] const NeuralModelDescription& description() const override {
        return description_;
    }

    [[nodiscard]] std::expected<std::vector<NeuralOutput>, std::string> predict(
        std::span<const NeuralInput> inputs) override {
        @autoreleasepool {
            @try {
                NSMutableDictionary<NSString*, MLFeatureValue*>* values =
                    [NSMutableDictionary dictionary];
                for (const NeuralInput& input : inputs) {
                    const auto buffer = buffers_[input.name].fill(input.image);
                    if (!buffer) return std::unexpected(buffer.error());
                    values[foundationText(input.name)] =
                        [MLFeatureValue featureValueWithPixelBuffer:buffer->get()];
                }
                NSError* error = nil;
                MLDictionaryFeatureProvider* provider =
                    [[MLDictionaryFeatureProvider alloc] initWithDictionary:values error:&error];
                if (!provider) return std::unexpected(sentence(error));
                id<MLFeatureProvider> prediction = [model_ predictionFromFeatures:provider
                                                                            error:&error];
                if (!prediction) return std::unexpected(sentence(error));
                return outputs(prediction);
            } @catch (NSException* exception) {
                return std::unexpected(sentence(exception));
            }
        }
    }

  private:
    MLModel* const model_;
    NeuralModelDescription description_;
    std::map<std::string, ImageBuffers> buffers_;
};

}  // namespace

std::expected<std::unique_ptr<NeuralModel>, std::string> CoreMLNeuralModels::load(
    const std::filesystem::path& file, const Options& options) {
    @autoreleasepool {
        @try {
            MLModelConfiguration* configuration = [[MLModelConfiguration alloc] init];
            configuration.computeUnits = computeUnits(options.computeUnits);
            NSError* error = nil;
            MLModel* model = [MLModel
                modelWithContentsOfURL:[NSURL fileURLWithPath:foundationText(file.string())]
                         configuration:configuration
                                 error:&error];
            if (!model) return std::unexpected(sentence(error));
            return std::make_unique<CoreMLNeuralModel>(model);
        } @catch (NSException* exception) {
            return std::unexpected(sentence(exception));
        }
    }
}

}  // namespace marrowby
