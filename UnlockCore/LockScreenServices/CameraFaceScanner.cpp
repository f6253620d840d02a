// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"
#include "UnlockCore/Recognition/FaceMatcher.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <utility>

namespace marrowby {

/// The loaded models. Any thread.
class CameraFaceScanner::Models {
  public:
    struct Loaded {
        std::shared_ptr<const FaceRecognizer> recognizer;
        std::shared_ptr<AntiSpoofScoring> antiSpoof;
    };

    Models(const Services& services, LoadEmbedder loadEmbedder, LoadAntiSpoof loadAntiSpoof)
        : vision_(services.vision),
          imaging_(services.imaging),
          loadEmbedder_(std::move(loadEmbedder)),
          loadAntiSpoof_(std::move(loadAntiSpoof)) {}

    /// Loads what is missing; the error is for the user. One call at a time.
    std::optional<std::string> load() {
        const Loaded before = loaded();
        if (auto prepared = vision_.prepare(); !prepared) return std::move(prepared.error());
        if (!before.recognizer) {
            auto embedder = loadEmbedder_();
            if (!embedder) return description(embedder.error());
            auto recognizer = std::make_shared<const FaceRecognizer>(
                vision_, imaging_, *std::move(embedder), minimumFaceWidth);
            const MutexLock lock(mutex_);
            loaded_.recognizer = std::move(recognizer);
        }
        if (!before.antiSpoof) {
            auto antiSpoof = loadAntiSpoof_();
            if (!antiSpoof) return description(antiSpoof.error());
            const MutexLock lock(mutex_);
            loaded_.antiSpoof = *std::move(antiSpoof);
        }
        return std::nullopt;
    }

    /// Not beside load().
    void unload() {
        Loaded gone;
        {
            const MutexLock lock(mutex_);
            std::swap(gone, loaded_);
        }
        gone = {};
        vision_.release();
    }

    [[nodiscard]] Loaded loaded() const {
        const MutexLock lock(mutex_);
        return loaded_;
    }

    [[nodiscard]] bool areComplete() const {
        const Loaded now = loaded();
        return now.recognizer && now.antiSpoof;
    }

  private:
    FaceVision& vision_;
    const Imaging& imaging_;
    const LoadEmbedder loadEmbedder_;
    const LoadAntiSpoof loadAntiSpoof_;
    mutable Mutex mutex_;
    Loaded loaded_ GUARDED_BY(mutex_);
};

/// The current scan. Owned and locked on the main thread only.
struct CameraFaceScanner::Scan {
    ScanID id;
    Callbacks callbacks;
    std::shared_ptr<std::atomic<bool>> isOver = std::make_shared<std::atomic<bool>>(false);
};

namespace {

/// Ends a scan after several failed frames in a row over some time. A frame without a face neither
/// counts nor ends the row.
class FaultRow {
  public:
    /// The frame's fault when the scan is to end.
    std::optional<std::string> take(const FaceScan::Step& step, Date at) {
        if (!step.fault) {
            if (step.recognition) count_ = 0;
            return std::nullopt;
        }
        if (count_ == 0 || at < since_) {
            count_ = 0;
            since_ = at;
        }
        ++count_;
        const bool isLasting = count_ >= leastFaults && at - since_ >= shortestRow;
        return isLasting ? step.fault : std::nullopt;
    }

  private:
    static constexpr int leastFaults = 5;
    static constexpr TimeInterval shortestRow{1};

    int count_ = 0;
    Date since_;
};

}  // namespace

/// The current scan's work on the camera's queue.
class CameraFaceScanner::Loop {
  public:
    Loop(const Services& services, ScanConfiguration configuration,
         std::shared_ptr<const Models> models, const std::shared_ptr<Scan>& scan,
         std::function<void(std::string)> onFault)
        : services_(services),
          helper_(services.queues.background()),
          configuration_(std::move(configuration)),
          models_(std::move(models)),
          scan_(scan),
          isOver_(scan->isOver),
          givesInsight_(scan->callbacks.onInsight != nullptr),
          onFault_(std::move(onFault)),
          faceScan_(configuration_.livenessMode) {}

    void process(const CameraFrame& frame) {
        const auto [recognizer, antiSpoof] = models_->loaded();
        if (!recognizer || !antiSpoof || *isOver_) return;
        const FaceScan::Step& step = faceScan_.take(frame, {.recognizer = *recognizer,
                                                            .antiSpoof = *antiSpoof,
                                                            .vision = services_.vision,
                                                            .imaging = services_.imaging,
                                                            .fourier = services_.fourier,
                                                            .clock = services_.clock,
                                                            .helper = helper_.get()});
        if (*isOver_) return;
        if (auto fault = faults_.take(step, frame.timestamp)) {
            services_.mainThread.post(
                [fail = onFault_, fault = *std::move(fault)] { fail(fault); });
            return;
        }
        if (givesInsight_) {
            services_.mainThread.post([weak = scan_, seen = insight(frame, step, *recognizer)] {
                const auto scan = weak.lock();
                if (scan && !*scan->isOver) scan->callbacks.onInsight(seen);
            });
        }
        services_.mainThread.post([weak = scan_, observation = observation(step, *recognizer)] {
            const auto scan = weak.lock();
            if (scan && !*scan->isOver) scan->callbacks.onFrame(scan->id, observation);
        });
    }

  private:
    [[nodiscard]] ScanObservation observation(const FaceScan::Step& step,
                                              const FaceRecognizer& recognizer) const {
        if (!step.recognition) {
            if (std::holds_alternative<FaceRecognitionError::CutOff>(step.recognition.error()))
                return ScanObservation::CutOff{};
            return ScanObservation::NoFace{};
        }
        const auto best = facematcher::bestMatch(
            step.recognition->embedding, *configuration_.identities,
            recognizer.embedder().modelIdentifier(), configuration_.threshold);
        ScanObservation::Face face{.match = std::nullopt, .decision = step.liveness.decision};
        if (best) {
            face.match = MatchedFace{.id = best->identity.id,
                                     .name = best->identity.name,
                                     .similarity = best->templateSimilarity};
        }
        return face;
    }

    [[nodiscard]] ScanInsight insight(const CameraFrame& frame, const FaceScan::Step& step,
                                      const FaceRecognizer& recognizer) const {
        const float limit = facematcher::clampedThreshold(configuration_.threshold);
        ScanInsight insight{.picture = frame.image,
                            .face = std::nullopt,
                            .likenesses = {},
                            .likenessLimit = limit,
                            .cues = cues(step.liveness),
                            .decision = step.liveness.decision};
        if (!step.recognition) return insight;
        insight.face = step.recognition->face.boundingBox;
        for (const ScoredIdentity& scored :
             facematcher::score(step.recognition->embedding, *configuration_.identities,
                                recognizer.embedder().modelIdentifier())) {
            // A match takes both.
            insight.likenesses.push_back(
                {.name = scored.identity.name,
                 .similarity = std::min(scored.templateSimilarity, scored.bestSampleSimilarity),
                 .isEnabled = scored.identity.isEnabled});
        }
        return insight;
    }
    [[nodiscard]] std::vector<ScanInsight::Cue> cues(const LivenessSnapshot& liveness) const {
        const LivenessTuning tuning = faceScan_.tuning();
        const auto heeded = enabledLivenessCues(configuration_.livenessMode);
        std::vector<ScanInsight::Cue> cues;
        for (const auto& [cue, state] : liveness.cueStates) {
            const bool isModel = role(cue) == LivenessCueRole::model;
            cues.push_back({.cue = cue,
                            .level = state.reading.confidence > 0
                                         ? std::optional(state.reading.level)
                                         : std::nullopt,
                            .limit = isModel ? tuning.liveThreshold : cueBar(cue, tuning).level,
                            .isHeeded = heeded.contains(cue),
                            .hasFired = state.hasFired});
        }
        return cues;
    }

    const Services services_;
    const std::shared_ptr<WorkQueue> helper_;
    const ScanConfiguration configuration_;
    const std::shared_ptr<const Models> models_;
    const std::weak_ptr<Scan> scan_;
    const std::shared_ptr<const std::atomic<bool>> isOver_;
    const bool givesInsight_;
    const std::function<void(std::string)> onFault_;
    FaceScan faceScan_;
    FaultRow faults_;
};

CameraFaceScanner::CameraFaceScanner(std::shared_ptr<CaptureSession> session,
                                     const Services& services, LoadEmbedder loadEmbedder,
                                     LoadAntiSpoof loadAntiSpoof)
    : services_(services),
      camera_(std::move(session),
              {.queues = services.queues,
               .mainThread = services.mainThread,
               .clock = services.clock,
               .imaging = services.imaging,
               .registry = services.registry},
              workingLongEdge),
      models_(
          std::make_shared<Models>(services, std::move(loadEmbedder), std::move(loadAntiSpoof))) {}

CameraFaceScanner::~CameraFaceScanner() {
    stop();
}

void CameraFaceScanner::follow(bool isLocked) {
    assert(services_.mainThread.isCurrent());
    isLocked_ = isLocked;
    if (isLocked_) {
        preload();
    } else {
        restLater();
    }
}

void CameraFaceScanner::restLater() {
    constexpr TimeInterval tolerance{60};
    if (isLocked_ || scan_ || !areHeld_) return;
    rest_ = services_.mainThread.at(services_.clock.now() + keptFor, tolerance, [this] {
        rest_.reset();
        if (isLoading_) {
            restLater();
        } else {
            areHeld_ = false;
            models_->unload();
        }
    });
}

void CameraFaceScanner::preload() {
    rest_.reset();
    if (isLoading_ || models_->areComplete()) return;
    isLoading_ = true;
    areHeld_ = true;
    const auto finish = weakSelf_.guarded(&CameraFaceScanner::finishLoading);
    services_.queues.background()->async(
        [finish, models = models_, &mainThread = services_.mainThread] {
            mainThread.post([finish, fault = models->load()] { finish(fault); });
        });
}

void CameraFaceScanner::finishLoading(const std::optional<std::string>& fault) {
    isLoading_ = false;
    if (fault && scan_) fail(*fault);
}

void CameraFaceScanner::start(ScanID scan, const ScanConfiguration& configuration,
                              Callbacks callbacks) {
    assert(services_.mainThread.isCurrent());
    if (scan_) *scan_->isOver = true;
    scan_ = std::make_shared<Scan>(scan, std::move(callbacks));
    auto loop = std::make_shared<Loop>(
        services_, configuration, models_, scan_,
        weakSelf_.guarded([isOver = scan_->isOver](CameraFaceScanner& self, std::string message) {
            if (!*isOver) self.fail(std::move(message));
        }));
    camera_.setOnFrame([loop](const CameraFrame& frame) { loop->process(frame); });
    preload();
    if (const auto started = camera_.start(configuration.cameraID); !started) {
        fail(description(started.error(), services_.words));
        return;
    }
    const auto opened = camera_.opened();
    const auto& onOther = scan_->callbacks.onOtherCamera;
    if (opened && configuration.cameraID && opened->device.id != *configuration.cameraID && onOther)
        onOther(opened->device.name);
}

void CameraFaceScanner::stop() {
    assert(services_.mainThread.isCurrent());
    if (!scan_) return;
    *scan_->isOver = true;
    scan_.reset();
    camera_.setOnFrame({});
    camera_.stop();
    restLater();
}

void CameraFaceScanner::fail(std::string message) {
    const auto callbacks = scan_->callbacks;
    stop();
    callbacks.onCameraFailed(std::move(message));
}

}  // namespace marrowby
