// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Unlock/Model/ModelPack.h"
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

/// The models, and one person in front of the camera for a second, for all benchmarks. Ends the
/// process with a sentence where they cannot be had.
class Material {
  public:
    /// Before the first benchmark. `pictures`: a folder of them, in the order of their names; where
    /// it is empty, a scene is drawn.
    static void open(const std::filesystem::path& models, const std::filesystem::path& pictures);
    [[nodiscard]] static Material& shared();

    ModelPack models;
    OpenCvImaging imaging;
    OpenCvNeuralModels neuralModels;

    [[nodiscard]] std::unique_ptr<OpenCvFaceVision> loadVision(
        std::shared_ptr<WorkQueue> helper = nullptr) const;
    [[nodiscard]] std::unique_ptr<SFaceEmbedder> loadEmbedder();
    [[nodiscard]] std::unique_ptr<MiniFASNet> loadRealFace();

    /// The person at this size, one picture after another, 30 a second.
    [[nodiscard]] std::vector<std::shared_ptr<const PixelBuffer>> film(int width, int height) const;
    /// The first of them.
    [[nodiscard]] std::shared_ptr<const PixelBuffer> picture(int width, int height) const;
    /// At 640 × 480.
    [[nodiscard]] CameraFrame frame() const;
    /// The one face of `frame()`.
    [[nodiscard]] DetectedFace face() const;
    /// That many people of 18 dissimilar samples each.
    [[nodiscard]] std::vector<FaceIdentity> identities(std::size_t count) const;

  private:
    Material(ModelPack pack, std::vector<std::shared_ptr<const PixelBuffer>> film);
    [[nodiscard]] std::shared_ptr<const PixelBuffer> cut(const PixelBuffer& picture, int width,
                                                         int height) const;

    std::vector<std::shared_ptr<const PixelBuffer>> film_;
};

}  // namespace marrowby
