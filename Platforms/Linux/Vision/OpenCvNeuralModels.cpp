// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"

#include "Platforms/Linux/Vision/OnnxFile.h"
#include "Platforms/Linux/Vision/OnnxModel.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

NeuralFeature inputFeature(const OnnxFile::Value& value) {
    NeuralFeature feature{.name = value.name,
                          .kind = NeuralFeature::Kind::other,
                          .imageConstraint = std::nullopt,
                          .shape = {}};
    if (!value.isFloatTensor) return feature;
    const auto& shape = value.shape;
    if (shape.size() == 4 && shape[0] <= 1 && shape[1] == 3) {
        feature.kind = NeuralFeature::Kind::image;
        if (shape[2] > 0 && shape[3] > 0) {
            feature.imageConstraint = NeuralFeature::ImageConstraint{shape[3], shape[2]};
        }
    } else {
        feature.kind = NeuralFeature::Kind::multiArray;
        feature.shape = shape;
    }
    return feature;
}

NeuralFeature outputFeature(const OnnxFile::Value& value) {
    NeuralFeature feature{
        .name = value.name,
        .kind = value.isFloatTensor ? NeuralFeature::Kind::multiArray : NeuralFeature::Kind::other,
        .imageConstraint = std::nullopt,
        .shape = {}};
    // Left out if any dimension is dynamic.
    if (std::ranges::find(value.shape, 0) == value.shape.end()) feature.shape = value.shape;
    return feature;
}

class OpenCvNeuralModel final : public NeuralModel {
  public:
    OpenCvNeuralModel(NeuralModelDescription description, OnnxModel model,
                      NeuralModels::ChannelOrder order)
        : description_(std::move(description)), model_(std::move(model)), order_(order) {}

    [[nodiscard]] const NeuralModelDescription& description() const override {
        return description_;
    }

    [[nodiscard]] std::expected<std::vector<NeuralOutput>, std::string> predict(
        std::span<const NeuralInput> inputs) override {
        planes_.resize(description_.inputs.size());
        for (std::size_t i = 0; i < planes_.size(); ++i) {
            const NeuralFeature& feature = description_.inputs[i];
            const auto input = std::ranges::find(inputs, feature.name, &NeuralInput::name);
            if (input == inputs.end()) {
                return std::unexpected(
                    translated("The model got no “{input}”.", {{"input", feature.name}}));
            }
            const auto& size = feature.imageConstraint;
            if (size &&
                (input->image.width() != size->width || input->image.height() != size->height)) {
                return std::unexpected(translated("The model got a “{input}” of the wrong size.",
                                                  {{"input", feature.name}}));
            }
            planes_[i].name = feature.name;
            if (!fillInput(planes_[i], input->image, order_)) {
                return std::unexpected(
                    translated("The model can’t read its “{input}”.", {{"input", feature.name}}));
            }
        }
        const auto outputs = model_.run(planes_);
        if (!outputs) return std::unexpected(outputs.error());
        return std::vector<NeuralOutput>(outputs->begin(), outputs->end());
    }

    /// Runs once on black if the input sizes are known: the first run takes several times as long.
    void warmUp() {
        planes_.clear();
        for (const NeuralFeature& feature : description_.inputs) {
            const auto& size = feature.imageConstraint;
            if (!size) return;
            planes_.push_back({feature.name, static_cast<int>(size->width),
                               static_cast<int>(size->height),
                               std::vector<float>(static_cast<std::size_t>(size->width) *
                                                  static_cast<std::size_t>(size->height) * 3)});
        }
        // A model that cannot run reports that when it is used.
        [[maybe_unused]] const auto outputs = model_.run(planes_);
    }

  private:
    NeuralModelDescription description_;
    OnnxModel model_;
    NeuralModels::ChannelOrder order_;
    std::vector<OnnxModel::Input> planes_;
};

}  // namespace

std::expected<std::unique_ptr<NeuralModel>, std::string> OpenCvNeuralModels::load(
    const std::filesystem::path& path, const Options& options) {
    const auto file = OnnxFile::read({path, options.sha256});
    if (!file) return std::unexpected(file.error());
    auto loaded = OnnxModel::load(*file);
    if (!loaded) return std::unexpected(loaded.error());

    NeuralModelDescription description;
    for (const OnnxFile::Value& input : file->inputs) {
        description.inputs.push_back(inputFeature(input));
    }
    for (const OnnxFile::Value& output : file->outputs) {
        description.outputs.push_back(outputFeature(output));
    }
    description.metadata = file->metadata;
    auto model = std::make_unique<OpenCvNeuralModel>(std::move(description), *std::move(loaded),
                                                     options.channelOrder);
    model->warmUp();
    return model;
}

}  // namespace marrowby
