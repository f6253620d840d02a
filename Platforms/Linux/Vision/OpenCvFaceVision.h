// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/OnnxFile.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <expected>
#include <memory>
#include <string>

namespace marrowby {

/// Faces by the YuNet detector, a model of 98 landmarks and a generic head; rectangles by their
/// outlines. Left eye, brow and pupil are those on the left of the image. Only the four largest
/// faces get angles, landmarks and a quality.
class OpenCvFaceVision final : public FaceVision {
  public:
    /// Loads nothing yet. `helper` takes half of the landmark work.
    OpenCvFaceVision(OnnxSource detector, OnnxSource landmarks,
                     std::shared_ptr<WorkQueue> helper = nullptr);
    /// Loaded. The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<OpenCvFaceVision>, std::string> load(
        const OnnxSource& detector, const OnnxSource& landmarks,
        std::shared_ptr<WorkQueue> helper = nullptr);
    ~OpenCvFaceVision() override;

    [[nodiscard]] std::expected<void, std::string> prepare() override EXCLUDES(mutex_);
    void release() override EXCLUDES(mutex_);
    [[nodiscard]] std::expected<std::vector<FaceRectangleObservation>, std::string> faceRectangles(
        const Bitmap& image) override EXCLUDES(mutex_);
    [[nodiscard]] std::expected<FaceDetailObservations, std::string> faceDetails(
        const Bitmap& image, std::span<const FaceRectangleObservation> faces) override;
    [[nodiscard]] std::expected<std::vector<Rect>, std::string> rectangles(
        const Bitmap& image, const RectangleRequest& request) override;

  private:
    struct Models;
    /// Loads them where they are missing.
    [[nodiscard]] std::expected<void, std::string> loadModels() REQUIRES(mutex_);

    const OnnxSource detector_;
    const OnnxSource landmarks_;
    const std::shared_ptr<WorkQueue> helper_;
    Mutex mutex_;
    std::unique_ptr<Models> models_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
