// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// What one input or output of a model is declared to be.
struct NeuralFeature {
    enum class Kind { image, multiArray, other };
    struct ImageConstraint {
        std::int64_t width = 0;
        std::int64_t height = 0;
    };

    std::string name;
    Kind kind = Kind::other;
    /// Only of images, and only where declared.
    std::optional<ImageConstraint> imageConstraint;
    /// Only of multi-arrays; empty where none is declared.
    std::vector<std::int64_t> shape;
};

struct NeuralModelDescription {
    std::vector<NeuralFeature> inputs;
    std::vector<NeuralFeature> outputs;
    /// The creator-defined texts.
    std::map<std::string, std::string> metadata;
};

/// A named image (bgrx8) for one prediction.
struct NeuralInput {
    std::string name;
    Bitmap image;
};

/// A multi-array's elements in order.
struct NeuralOutput {
    std::string name;
    std::vector<float> values;
};

/// A loaded model. Its owner serialises predictions. Errors are the system's localized texts.
class NeuralModel {
  public:
    virtual ~NeuralModel() = default;
    [[nodiscard]] virtual const NeuralModelDescription& description() const = 0;
    [[nodiscard]] virtual std::expected<std::vector<NeuralOutput>, std::string> predict(
        std::span<const NeuralInput> inputs) = 0;
};

/// Loads models from files. Any thread.
class NeuralModels {
  public:
    enum class ComputeUnits { all, processorOnly };
    /// The channel order of image inputs. Ignored where model files declare it.
    enum class ChannelOrder { rgb, bgr };
    struct Options {
        ComputeUnits computeUnits = ComputeUnits::all;
        ChannelOrder channelOrder = ChannelOrder::rgb;
        /// Of the file; empty accepts any. Exactly the bytes that were summed are loaded. Ignored
        /// where models are folders that the application's signature covers.
        std::string sha256 = {};
    };

    virtual ~NeuralModels() = default;
    /// The error is the system's localized text; the caller looks for a missing file.
    [[nodiscard]] virtual std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) = 0;
};

}  // namespace marrowby
