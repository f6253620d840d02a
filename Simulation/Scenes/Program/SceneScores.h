// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Scene.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// Scores of scenes by the application's classes and the models in a folder. One thread.
class SceneScores {
  public:
    struct Score {
        int pictures = 0;
        int withFace = 0;
        /// The real-face model's probability, per picture with a face.
        std::vector<float> live;
        /// The face's similarity to the person, per picture with a face.
        std::vector<float> likeness;
        /// The finder's certainty about its best face, per picture.
        std::vector<float> finder;
        /// The decision of a standard scan.
        std::string decision;
    };

    [[nodiscard]] static std::expected<std::unique_ptr<SceneScores>, std::string> load(
        const std::filesystem::path& models);
    ~SceneScores();

    /// Later similarities are to the person of this scene.
    void enroll(const Scene& scene);
    [[nodiscard]] Score score(const Scene& scene, int width, int height);

  private:
    struct Pipeline;
    explicit SceneScores(std::unique_ptr<Pipeline> pipeline);

    std::unique_ptr<Pipeline> pipeline_;
};

}  // namespace marrowby
