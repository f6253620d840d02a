// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/TakeMeter.h"

#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Simulation/Scenes/ModelFolder.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <utility>

namespace marrowby {

namespace {

/// As many as an enrolment takes: two for each of nine poses.
constexpr std::size_t mostSamples = 18;

/// The time within a take.
class TakeClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override { return time; }
    Date time;
};

std::optional<CameraFrame> cameraFrame(std::shared_ptr<const PixelBuffer> picture,
                                       std::size_t index, Date at, const Imaging& imaging) {
    const Size size = picture->extent();
    const double scale =
        std::min(CameraFaceScanner::workingLongEdge / std::max(size.width, size.height), 1.0);
    auto image = imaging.render(*picture, {0, 0, size.width, size.height}, scale);
    if (!image) return std::nullopt;
    return CameraFrame{.id = static_cast<std::int64_t>(index) + 1,
                       .image = *std::move(image),
                       .source = std::move(picture),
                       .sourceSize = size,
                       .timestamp = at};
}

}  // namespace

struct TakeMeter::Pipeline {
    OpenCvImaging imaging;
    OpenCvNeuralModels models;
    OpenCvFourierTransform fourier;
    std::unique_ptr<OpenCvFaceVision> vision;
    std::unique_ptr<FaceRecognizer> recognizer;
    std::unique_ptr<MiniFASNet> antiSpoof;
    EnrolledPeople people;
};

TakeMeter::TakeMeter(std::unique_ptr<Pipeline> pipeline) : pipeline_(std::move(pipeline)) {}
TakeMeter::~TakeMeter() = default;

std::expected<std::unique_ptr<TakeMeter>, std::string> TakeMeter::create(
    const std::filesystem::path& models, float threshold) {
    auto pipeline = std::make_unique<Pipeline>();
    const auto pack = modelsIn(models);
    if (!pack) return std::unexpected(pack.error());
    auto vision =
        OpenCvFaceVision::load(pack->folder / pack->finderFile, pack->folder / pack->landmarksFile);
    if (!vision) return std::unexpected(vision.error());
    pipeline->vision = *std::move(vision);
    auto embedder = SFaceEmbedder::load(
        pack->folder, {.fileName = pack->embedderFile, .modelIdentifier = pack->embedderIdentifier},
        pipeline->models, pipeline->imaging);
    if (!embedder) return std::unexpected(description(embedder.error()));
    pipeline->recognizer =
        std::make_unique<FaceRecognizer>(*pipeline->vision, pipeline->imaging, *std::move(embedder),
                                         CameraFaceScanner::minimumFaceWidth);
    pipeline->people.modelIdentifier = pack->embedderIdentifier;
    pipeline->people.threshold = threshold;
    auto antiSpoof =
        MiniFASNet::load(pack->folder, pipeline->models, NeuralModels::ComputeUnits::all,
                         pack->realFaceFile, pack->realFaceIdentifier);
    if (!antiSpoof) return std::unexpected(description(antiSpoof.error()));
    pipeline->antiSpoof = *std::move(antiSpoof);
    return std::unique_ptr<TakeMeter>(new TakeMeter(std::move(pipeline)));
}

std::string TakeMeter::name() const {
    return std::string(pipeline_->antiSpoof->modelIdentifier());
}

const EnrolledPeople& TakeMeter::people() const {
    return pipeline_->people;
}

std::expected<void, std::string> TakeMeter::enroll(const Take& take) {
    FaceIdentity& identity = pipeline_->people.identities[take.label.person];
    identity.name = take.label.person;
    identity.modelIdentifier = pipeline_->people.modelIdentifier;
    identity.dimension = SFaceEmbedder::embeddingLength;
    const std::size_t wanted = std::min(mostSamples, take.pictureCount);
    for (std::size_t i = 0; i < wanted; ++i) {
        const std::size_t index = i * take.pictureCount / wanted;
        auto picture = take.picture(index);
        if (!picture) return std::unexpected(picture.error());
        const auto frame = cameraFrame(*std::move(picture), index, {}, pipeline_->imaging);
        if (!frame) continue;
        if (auto seen = pipeline_->recognizer->recognise(*frame, std::nullopt)) {
            identity.samples.push_back({.embedding = std::move(seen->embedding),
                                        .pose = std::nullopt,
                                        .capturedAt = {},
                                        .quality = seen->face.quality});
        }
    }
    if (identity.samples.empty()) {
        return std::unexpected("The take “" + take.label.name + "” shows no face to enrol.");
    }
    return {};
}

std::expected<FrameEvidence, std::string> TakeMeter::study(
    const FaceScan& scan, const Take& take, std::size_t index,
    std::shared_ptr<const PixelBuffer> picture) {
    const TimeInterval at(static_cast<double>(index) / take.framesPerSecond);
    TakeClock clock;
    clock.time = Date(at);
    const auto frame = cameraFrame(std::move(picture), index, clock.time, pipeline_->imaging);
    if (!frame) return std::unexpected("A picture of “" + take.label.name + "” can’t be drawn.");
    return FrameEvidence{.at = at,
                         .findings = scan.study(*frame, {.recognizer = *pipeline_->recognizer,
                                                         .antiSpoof = *pipeline_->antiSpoof,
                                                         .vision = *pipeline_->vision,
                                                         .imaging = pipeline_->imaging,
                                                         .fourier = pipeline_->fourier,
                                                         .clock = clock})};
}

namespace {

/// One pack's part of recording a take.
struct Recording {
    TakeMeter& meter;
    /// Follows the face from frame to frame.
    FaceScan scan{LivenessMode::standard};
    std::vector<TrialRun> whole = {};
    std::vector<TrialRun> partial = {};
    TakeEvidence evidence = {};

    [[nodiscard]] bool isEnough(TimeInterval at, TimeInterval patience) const {
        const auto haveEnded = [](const std::vector<TrialRun>& runs) {
            return std::ranges::all_of(runs, &TrialRun::hasEnded);
        };
        return haveEnded(whole) && (at >= patience || haveEnded(partial));
    }
};

}  // namespace

std::expected<std::vector<TakeEvidence>, std::string> record(const Take& take,
                                                             std::span<TakeMeter* const> meters,
                                                             std::span<const Trial> trials,
                                                             TimeInterval patience) {
    std::vector<Recording> recordings;
    for (TakeMeter* meter : meters) {
        Recording& recording = recordings.emplace_back(Recording{.meter = *meter});
        recording.evidence.label = take.label;
        for (const Trial& trial : trials) {
            if (trial.mode == LivenessMode::strict && !take.label.turnsWhenAsked) continue;
            auto& runs = trial.isWhole ? recording.whole : recording.partial;
            runs.emplace_back(trial, take.label, meter->people());
        }
    }
    for (std::size_t i = 0; i < take.pictureCount; ++i) {
        std::shared_ptr<const PixelBuffer> picture;
        for (Recording& recording : recordings) {
            auto& frames = recording.evidence.frames;
            if (!frames.empty() && recording.isEnough(frames.back().at, patience)) continue;
            if (!picture) {
                auto made = take.picture(i);
                if (!made) return std::unexpected(made.error());
                picture = *std::move(made);
            }
            auto found = recording.meter.study(recording.scan, take, i, picture);
            if (!found) return std::unexpected(found.error());
            for (auto* runs : {&recording.whole, &recording.partial}) {
                for (TrialRun& run : *runs)
                    run.take(*found);
            }
            recording.scan.judge(found->findings, Date(found->at));
            frames.push_back(*std::move(found));
        }
        if (!picture) break;
    }
    std::vector<TakeEvidence> all;
    all.reserve(recordings.size());
    for (Recording& recording : recordings)
        all.push_back(std::move(recording.evidence));
    return all;
}

}  // namespace marrowby
