// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Recognition/FaceAligner.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

constexpr const char* identifierKey = "marrowby.model.identifier";
constexpr const char* inputName = "image";
constexpr const char* outputName = "embedding";

std::string sizeText(std::int64_t width, std::int64_t height) {
    return std::to_string(width) + " × " + std::to_string(height);
}

std::string valuesText(std::int64_t count) {
    return translated("{found} values, expected {expected}",
                      {{"found", count}, {"expected", SFaceEmbedder::embeddingLength}});
}

const NeuralFeature* find(const std::vector<NeuralFeature>& features, std::string_view name,
                          NeuralFeature::Kind kind) {
    const auto found = std::ranges::find(features, name, &NeuralFeature::name);
    return found != features.end() && found->kind == kind ? &*found : nullptr;
}

/// Saturates.
std::int64_t product(std::span<const std::int64_t> factors) {
    std::int64_t result = 1;
    for (const std::int64_t factor : factors) {
        if (__builtin_mul_overflow(result, factor, &result)) {
            return std::numeric_limits<std::int64_t>::max();
        }
    }
    return result;
}

std::expected<void, FaceModelError> check(const NeuralModelDescription& description,
                                          const std::string& modelIdentifier) {
    const auto identifier = description.metadata.find(identifierKey);
    const std::string found =
        identifier == description.metadata.end() ? translated("missing") : identifier->second;
    if (identifier == description.metadata.end() || found != modelIdentifier) {
        return std::unexpected(FaceModelError::WrongModel{
            translated("identifier {found}, expected {expected}",
                       {{"found", found}, {"expected", modelIdentifier}})});
    }

    const NeuralFeature* input = find(description.inputs, inputName, NeuralFeature::Kind::image);
    if (!input || !input->imageConstraint) {
        return std::unexpected(FaceModelError::UnexpectedInput{
            translated("no image input named {name}", {{"name", std::string(inputName)}})});
    }
    const auto [width, height] = *input->imageConstraint;
    if (width != FaceAligner::side || height != FaceAligner::side) {
        return std::unexpected(FaceModelError::UnexpectedInput{
            translated("{size}, expected 112 × 112", {{"size", sizeText(width, height)}})});
    }

    const NeuralFeature* output =
        find(description.outputs, outputName, NeuralFeature::Kind::multiArray);
    if (!output) {
        return std::unexpected(FaceModelError::UnexpectedOutput{
            translated("no multi-array output named {name}", {{"name", std::string(outputName)}})});
    }
    const std::int64_t count = product(output->shape);
    if (!output->shape.empty() && count != SFaceEmbedder::embeddingLength) {
        return std::unexpected(FaceModelError::UnexpectedOutput{valuesText(count)});
    }
    return {};
}

}  // namespace

std::expected<std::unique_ptr<SFaceEmbedder>, FaceModelError> SFaceEmbedder::load(
    const std::filesystem::path& resources, const Resource& resource, NeuralModels& models,
    const Imaging& imaging) {
    return load(resources / resource.fileName, NeuralModels::ComputeUnits::all,
                resource.modelIdentifier, models, imaging, resource.sha256);
}

std::expected<std::unique_ptr<SFaceEmbedder>, FaceModelError> SFaceEmbedder::load(
    const std::filesystem::path& modelFile, NeuralModels::ComputeUnits computeUnits,
    const std::string& modelIdentifier, NeuralModels& models, const Imaging& imaging,
    const std::string& sha256) {
    std::error_code error;
    if (!std::filesystem::exists(modelFile, error)) {
        return std::unexpected(FaceModelError::NotFound{modelFile.filename().string()});
    }
    auto model = models.load(modelFile, {.computeUnits = computeUnits,
                                         .channelOrder = NeuralModels::ChannelOrder::rgb,
                                         .sha256 = sha256});
    if (!model) return std::unexpected(FaceModelError::LoadFailed{model.error()});
    if (auto checked = check((*model)->description(), modelIdentifier); !checked) {
        return std::unexpected(checked.error());
    }
    return std::unique_ptr<SFaceEmbedder>(
        new SFaceEmbedder(modelIdentifier, *std::move(model), imaging));
}

SFaceEmbedder::SFaceEmbedder(std::string modelIdentifier, std::unique_ptr<NeuralModel> model,
                             const Imaging& imaging)
    : modelIdentifier_(std::move(modelIdentifier)), imaging_(imaging), model_(std::move(model)) {}

std::expected<Embedding, FaceModelError> SFaceEmbedder::embed(const Bitmap& alignedFace) {
    if (alignedFace.width() != FaceAligner::side || alignedFace.height() != FaceAligner::side) {
        return std::unexpected(FaceModelError::UnexpectedInput{
            translated("a {size} face, expected 112 × 112",
                       {{"size", sizeText(alignedFace.width(), alignedFace.height())}})});
    }
    const MutexLock lock(mutex_);
    const auto buffer = imaging_.convert(alignedFace, bgrx8);
    if (!buffer) return std::unexpected(FaceModelError::PixelBuffer{});
    const std::array inputs{NeuralInput{.name = inputName, .image = *buffer}};
    const auto outputs = model_->predict(inputs);
    if (!outputs) return std::unexpected(FaceModelError::PredictionFailed{outputs.error()});

    const auto output = std::ranges::find(*outputs, outputName, &NeuralOutput::name);
    if (output == outputs->end()) {
        return std::unexpected(FaceModelError::UnexpectedOutput{translated("no embedding")});
    }
    const auto count = static_cast<std::int64_t>(output->values.size());
    if (count != embeddingLength) {
        return std::unexpected(FaceModelError::UnexpectedOutput{valuesText(count)});
    }
    if (!faceembedding::isUsable(output->values)) {
        return std::unexpected(FaceModelError::UnexpectedOutput{translated("not a usable vector")});
    }
    return faceembedding::normalized(output->values);
}

}  // namespace marrowby
