// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/MiniFASNet.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Liveness/AntiSpoofCrop.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

constexpr std::string_view identifierKey = "marrowby.model.identifier";

struct CropInput {
    const char* name;
    double scale;
};
constexpr std::array cropInputs{CropInput{"crop27", 2.7}, CropInput{"crop40", 4.0}};
constexpr std::array<const char*, 3> outputNames{"probabilities", "probabilities27",
                                                 "probabilities40"};
constexpr std::size_t classCount = 3;
constexpr std::size_t liveClass = 1;
// Tolerates rounding.
constexpr float lowestProbability = -0.001F;
constexpr float highestProbability = 1.001F;

std::unexpected<RealFaceModelError> failure(RealFaceModelError error) {
    return std::unexpected(std::move(error));
}

const NeuralFeature* find(std::span<const NeuralFeature> features, std::string_view name,
                          NeuralFeature::Kind kind) {
    const auto found = std::ranges::find_if(features, [&](const NeuralFeature& feature) {
        return feature.name == name && feature.kind == kind;
    });
    return found == features.end() ? nullptr : &*found;
}

std::optional<RealFaceModelError> fault(const NeuralModelDescription& model,
                                        std::string_view expected) {
    const auto found = model.metadata.find(std::string(identifierKey));
    const std::string identifier =
        found == model.metadata.end() ? translated("missing") : found->second;
    if (found == model.metadata.end() || identifier != expected) {
        return RealFaceModelError::WrongModel{
            translated("identifier {found}, expected {expected}",
                       {{"found", identifier}, {"expected", std::string(expected)}})};
    }
    for (const CropInput& crop : cropInputs) {
        const auto* input = find(model.inputs, crop.name, NeuralFeature::Kind::image);
        if (input == nullptr || !input->imageConstraint) {
            return RealFaceModelError::UnexpectedInput{
                translated("no image input named {name}", {{"name", std::string(crop.name)}})};
        }
        const auto [width, height] = *input->imageConstraint;
        if (width != AntiSpoofCrop::side || height != AntiSpoofCrop::side) {
            return RealFaceModelError::UnexpectedInput{translated(
                "{name} is {width} × {height}, expected 80 × 80",
                {{"name", std::string(crop.name)}, {"width", width}, {"height", height}})};
        }
    }
    for (const char* name : outputNames) {
        if (find(model.outputs, name, NeuralFeature::Kind::multiArray) == nullptr) {
            return RealFaceModelError::UnexpectedOutput{
                translated("no multi-array output named {name}", {{"name", std::string(name)}})};
        }
    }
    return std::nullopt;
}

std::expected<std::vector<NeuralInput>, RealFaceModelError> inputs(const RGBPixels& image,
                                                                   const Rect& faceBox) {
    std::vector<NeuralInput> result;
    for (const auto& [name, scale] : cropInputs) {
        const auto crop = AntiSpoofCrop::around(faceBox, image.width, image.height, scale);
        if (!crop) {
            return failure(RealFaceModelError::UnexpectedInput{
                translated("the face's box doesn't fit the frame")});
        }
        auto bytes = crop->resampled(image);
        if (bytes.size() != AntiSpoofCrop::byteCount) {
            return failure(
                RealFaceModelError::UnexpectedInput{translated("crops of the wrong size")});
        }
        auto bitmap = Bitmap::create(AntiSpoofCrop::side, AntiSpoofCrop::side,
                                     AntiSpoofCrop::bytesPerRow, bgrx8, std::move(bytes));
        if (!bitmap) return failure(RealFaceModelError::PixelBuffer{});
        result.push_back({name, *std::move(bitmap)});
    }
    return result;
}

/// The probability of "live" in the output of that name.
std::expected<float, RealFaceModelError> live(std::span<const NeuralOutput> outputs,
                                              const char* name) {
    const auto found = std::ranges::find(outputs, name, &NeuralOutput::name);
    if (found == outputs.end() || found->values.size() != classCount) {
        return failure(RealFaceModelError::UnexpectedOutput{
            translated("{name} isn’t 3 values", {{"name", std::string(name)}})});
    }
    const bool areProbabilities = std::ranges::all_of(found->values, [](float value) {
        return value >= lowestProbability && value <= highestProbability;
    });
    if (!areProbabilities) {
        return failure(RealFaceModelError::UnexpectedOutput{
            translated("{name} isn’t probabilities", {{"name", std::string(name)}})});
    }
    return found->values[liveClass];
}

}  // namespace

std::expected<std::unique_ptr<MiniFASNet>, RealFaceModelError> MiniFASNet::load(
    const std::filesystem::path& resources, NeuralModels& models,
    NeuralModels::ComputeUnits computeUnits, std::string_view fileName,
    std::string_view modelIdentifier, const std::string& sha256) {
    const std::filesystem::path file = resources / fileName;
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        return failure(RealFaceModelError::NotFound{file.filename().string()});
    }
    auto model = models.load(file, {.computeUnits = computeUnits,
                                    .channelOrder = NeuralModels::ChannelOrder::bgr,
                                    .sha256 = sha256});
    if (!model) {
        return failure(RealFaceModelError::LoadFailed{model.error()});
    }
    if (auto found = fault((*model)->description(), modelIdentifier))
        return std::unexpected(*std::move(found));
    return std::unique_ptr<MiniFASNet>(
        new MiniFASNet(std::string(modelIdentifier), *std::move(model)));
}

std::expected<AntiSpoofScore, RealFaceModelError> MiniFASNet::score(const RGBPixels& image,
                                                                    const Rect& faceBox) {
    const auto crops = inputs(image, faceBox);
    if (!crops) return std::unexpected(crops.error());

    const MutexLock lock(mutex_);
    const auto outputs = model_->predict(*crops);
    if (!outputs) {
        return failure(RealFaceModelError::PredictionFailed{outputs.error()});
    }
    std::array<float, outputNames.size()> values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto value = live(*outputs, outputNames.at(i));
        if (!value) return std::unexpected(value.error());
        values.at(i) = *value;
    }
    return AntiSpoofScore{.live = values[0], .live27 = values[1], .live40 = values[2]};
}

}  // namespace marrowby
