// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Unlock/Model/EnrollmentCapture.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/Outcome.h"
#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Recognition/CameraManager.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace marrowby {

/// Captures one face at a time and keeps it, complete, until it is dropped. Main thread; the
/// arguments outlive it.
class FaceEnrollment {
  public:
    using Progress = std::function<void(const EnrollmentSession&, const Bitmap& picture)>;

    /// `onProgress` is called after every frame.
    FaceEnrollment(const UnlockPlatform& platform, const ModelPack& models,
                   CameraUseRegistry& cameraUse, Progress onProgress);

    [[nodiscard]] CameraManager& camera() { return camera_; }
    [[nodiscard]] const CameraManager& camera() const { return camera_; }

    /// Guides the person in front of the camera through the poses.
    void capture(const std::optional<std::string>& cameraID, Completion completion);
    [[nodiscard]] bool isCapturing() const { return std::holds_alternative<Capturing>(state_); }
    /// A capture under way ends with this sentence.
    void interrupt(std::string sentence);
    /// Ends a capture, whose completion does not come, and drops what was captured.
    void drop() { state_ = {}; }
    /// Null where there is none.
    [[nodiscard]] const CapturedFace* captured() const {
        return std::get_if<CapturedFace>(&state_);
    }

  private:
    struct Capturing {
        Completion completion;
        std::unique_ptr<EnrollmentCapture> capture;
    };

    void finish(std::expected<CapturedFace, std::string> result);

    const UnlockPlatform& platform_;
    const ModelPack& models_;
    const Progress onProgress_;
    CameraManager camera_;
    std::variant<std::monostate, Capturing, CapturedFace> state_;
    WeakSelf<FaceEnrollment> weakSelf_{this};
};

}  // namespace marrowby
