#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Recognition/CameraFrame.h"
#include "UnlockCore/Recognition/DetectedFace.h"
#include "UnlockCore/Recognition/FaceIdentity.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// The standard pack and one rendered person in front of the camera, for all benchmarks. Exits with
/// a sentence where they are missing.
class Material {
  public:
    [[nodiscard]] static Material& shared();

    std::filesystem::path models;
    OpenCvImaging imaging;
    OpenCvNeuralModels neuralModels;

    [[nodiscard]] std::unique_ptr<OpenCvFaceVision> loadVision(
        std::shared_ptr<WorkQueue> helper = nullptr) const;
    [[nodiscard]] std::unique_ptr<SFaceEmbedder> loadEmbedder();
    [[nodiscard]] std::unique_ptr<MiniFASNet> loadRealFace();

    /// The person at this size.
    [[nodiscard]] std::shared_ptr<const PixelBuffer> picture(int width, int height) const;
    /// At 640 × 480.
    [[nodiscard]] CameraFrame frame() const;
    /// The one face of `frame()`.
    [[nodiscard]] DetectedFace face() const;
    /// That many people of 18 dissimilar samples each.
    [[nodiscard]] std::vector<FaceIdentity> identities(std::size_t count) const;

  private:
    explicit Material(const std::filesystem::path& shared);
    std::shared_ptr<const PixelBuffer> person_;
};

}  // namespace marrowby
