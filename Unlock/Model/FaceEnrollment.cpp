// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/FaceEnrollment.h"

#include "Unlock/Model/ModelLoaders.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <utility>

namespace marrowby {

FaceEnrollment::FaceEnrollment(const UnlockPlatform& platform, const ModelPack& models,
                               CameraUseRegistry& cameraUse, Progress onProgress)
    : platform_(platform),
      models_(models),
      onProgress_(std::move(onProgress)),
      camera_(platform.enrollmentCamera,
              {.queues = platform.queues,
               .mainThread = platform.mainThread,
               .clock = platform.clock,
               .imaging = platform.imaging,
               .registry = cameraUse},
              CameraFaceScanner::workingLongEdge) {}

void FaceEnrollment::capture(const std::optional<std::string>& cameraID, Completion completion) {
    if (std::holds_alternative<Capturing>(state_)) {
        completion(std::unexpected(translated("Your face is being captured already.")));
        return;
    }
    drop();
    auto embedder = embedderLoader(models_, platform_.models, platform_.imaging, platform_.words)();
    if (!embedder) {
        completion(std::unexpected(description(embedder.error())));
        return;
    }
    Capturing& capturing = state_.emplace<Capturing>(std::move(completion), nullptr);
    capturing.capture = std::make_unique<EnrollmentCapture>(
        EnrollmentCapture::Services{.camera = camera_,
                                    .vision = platform_.enrollmentVision,
                                    .imaging = platform_.imaging,
                                    .mainThread = platform_.mainThread,
                                    .embedder = *embedder},
        EnrollmentCapture::Callbacks{
            .onProgress = onProgress_,
            .onDone = [this](CapturedFace face) { finish(std::move(face)); },
            .onFailed = [this](std::string text) { finish(std::unexpected(std::move(text))); }});
    if (auto started = capturing.capture->start(cameraID); !started)
        finish(std::unexpected(description(started.error(), platform_.words)));
}

void FaceEnrollment::interrupt(std::string sentence) {
    if (std::holds_alternative<Capturing>(state_)) finish(std::unexpected(std::move(sentence)));
}

void FaceEnrollment::finish(std::expected<CapturedFace, std::string> result) {
    // May be called by the capture, which is destroyed on the next turn of the loop.
    const auto ended = std::make_shared<Capturing>(std::get<Capturing>(std::move(state_)));
    Outcome outcome;
    if (result) {
        state_ = *std::move(result);
    } else {
        drop();
        outcome = std::unexpected(std::move(result.error()));
    }
    platform_.mainThread.post(weakSelf_.guarded(
        [ended, outcome](const FaceEnrollment& /*self*/) { ended->completion(outcome); }));
}

}  // namespace marrowby
