// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/NeuralModel.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Models that answer what the test says. Used by one thread at a time; the fake outlives its
/// models.
class FakeNeuralModels final : public NeuralModels {
  public:
    using Outputs = std::expected<std::vector<NeuralOutput>, std::string>;

    /// The description of every loaded model.
    NeuralModelDescription description;
    /// Makes load() fail with this text.
    std::optional<std::string> loadFault;
    /// Answers every prediction, also of models loaded before it was set.
    std::function<Outputs(std::span<const NeuralInput>)> answer;

    struct Loaded {
        std::filesystem::path file;
        Options options;
    };
    /// Every load() so far, failed ones included.
    std::vector<Loaded> loads;
    /// The inputs of every prediction so far.
    std::vector<std::vector<NeuralInput>> predictions;

    [[nodiscard]] std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) override {
        loads.push_back({file, options});
        if (loadFault) return std::unexpected(*loadFault);
        return std::make_unique<Model>(*this);
    }

  private:
    class Model final : public NeuralModel {
      public:
        explicit Model(FakeNeuralModels& owner) : owner_(owner), description_(owner.description) {}

        [[nodiscard]] const NeuralModelDescription& description() const override {
            return description_;
        }
        [[nodiscard]] Outputs predict(std::span<const NeuralInput> inputs) override {
            owner_.predictions.emplace_back(inputs.begin(), inputs.end());
            return owner_.answer ? owner_.answer(inputs) : Outputs();
        }

      private:
        FakeNeuralModels& owner_;
        const NeuralModelDescription description_;
    };
};

}  // namespace marrowby
