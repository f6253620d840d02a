#pragma once

#include "Rehearsal/Scenes/Scene.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// What the application's own classes and the networks in a folder make of scenes. One thread.
class SceneScores {
  public:
    struct Score {
        int pictures = 0;
        int withFace = 0;
        /// The real-face network's probability, per picture with a face.
        std::vector<float> live;
        /// The face's likeness to the person, per picture with a face.
        std::vector<float> likeness;
        /// The finder's certainty about its best face, per picture.
        std::vector<float> finder;
        /// What a usual look decides in the end.
        std::string decision;
    };

    [[nodiscard]] static std::expected<std::unique_ptr<SceneScores>, std::string> load(
        const std::filesystem::path& models);
    ~SceneScores();

    /// Later likeness is to the person of this scene.
    void enroll(const Scene& scene);
    [[nodiscard]] Score score(const Scene& scene, int width, int height);

  private:
    struct Networks;
    explicit SceneScores(std::unique_ptr<Networks> networks);

    std::unique_ptr<Networks> networks_;
};

}  // namespace marrowby
