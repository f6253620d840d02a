#pragma once

#include "Rehearsal/Scenes/Cast.h"
#include "Rehearsal/Scenes/Scene.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Measures the four networks of a pack, through the application's own classes, on people and
/// scenes that no network of ours learned from. One thread.
class PackFigures {
  public:
    /// A folder with a manifest, or one with the published networks under their own names. The
    /// error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<PackFigures>, std::string> load(
        const std::filesystem::path& folder);
    ~PackFigures();

    /// All scenes of the catalogue with this person.
    void measure(std::uint64_t person, Cast& cast);

    struct Line {
        std::string what;
        std::string value;
    };
    [[nodiscard]] std::vector<Line> lines() const;

  private:
    struct Networks;
    /// An embedding of somebody's picture.
    struct Probe {
        std::uint64_t person = 0;
        Embedding embedding;
    };
    struct Counted {
        int of = 0;
        int hits = 0;
        void add(bool isHit) {
            ++of;
            hits += isHit ? 1 : 0;
        }
    };

    explicit PackFigures(std::unique_ptr<Networks> networks);
    void enroll(std::uint64_t person, Cast& cast);
    void film(const Scene& scene, std::uint64_t person, Cast& cast);
    void look(const struct SceneFrame& frame, const Scene& scene, std::uint64_t person);

    std::unique_ptr<Networks> networks_;
    Counted found_;
    Counted pictures_;
    std::vector<double> pointErrors_;
    std::vector<double> yawErrors_;
    std::vector<double> pitchErrors_;
    std::map<std::uint64_t, Embedding> enrolled_;
    std::vector<Probe> probes_;
    /// By what was before the camera.
    std::map<std::string, std::vector<double>> live_;
};

}  // namespace marrowby
