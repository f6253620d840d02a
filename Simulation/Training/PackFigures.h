// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Cast.h"
#include "Simulation/Scenes/Scene.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Measures the four models of a pack, through the application's own classes, on people and scenes
/// that were not trained on. One thread.
class PackFigures {
  public:
    /// A folder with a manifest, or one with the published models under their own names. The error
    /// is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<PackFigures>, std::string> load(
        const std::filesystem::path& folder);
    ~PackFigures();

    /// Films the person's nine poses: later similarities are to these too.
    void enroll(std::uint64_t person, Cast& cast);
    /// Films a scene that has this person in its main part.
    void measure(const Scene& scene, std::uint64_t person, Cast& cast);

    struct Counted {
        int of = 0;
        int hits = 0;
        void add(bool isHit) {
            ++of;
            hits += isHit ? 1 : 0;
        }
    };
    struct Figures {
        /// Of faces that are whole, near enough and not turned far away.
        Counted found;
        /// Pictures with a face found where none is.
        Counted falseDetections;
        /// Mean over the 98 points, in parts of the distance of the eyes' outer corners.
        std::vector<double> pointErrors;
        /// Radians.
        std::vector<double> yawErrors;
        std::vector<double> pitchErrors;
        /// Cosines of a picture to the mean of somebody's nine.
        std::vector<double> same;
        std::vector<double> different;
        /// The real-face model's probability, by what is in front of the camera: "living" or the
        /// attack's name.
        std::map<std::string, std::vector<double>> live;
    };
    [[nodiscard]] Figures figures() const;

  private:
    struct Pipeline;
    struct Seen;
    /// An embedding of somebody's picture.
    struct Probe {
        std::uint64_t person = 0;
        Embedding embedding;
    };

    explicit PackFigures(std::unique_ptr<Pipeline> pipeline);
    void look(const Seen& seen, const Scene& scene, std::uint64_t person);

    std::unique_ptr<Pipeline> pipeline_;
    Figures seen_;
    std::map<std::uint64_t, Embedding> enrolled_;
    std::vector<Probe> probes_;
};

}  // namespace marrowby
