#include "Measuring/LookMeter.h"

#include "Platforms/Linux/OpenCvFaceVision.h"
#include "Platforms/Linux/OpenCvFourierTransform.h"
#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/OpenCvNeuralModels.h"
#include "Rehearsal/Scenes/NetworkFolder.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"
#include "UnlockCore/Recognition/FaceMatcher.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

/// As many as an enrolment takes: two for each of nine poses.
constexpr std::size_t mostSamples = 18;

/// A look's own time.
class LookClock final : public SystemClock {
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

struct LookMeter::Networks {
    OpenCvImaging imaging;
    OpenCvNeuralModels models;
    OpenCvFourierTransform fourier;
    std::unique_ptr<OpenCvFaceVision> vision;
    std::unique_ptr<FaceRecognizer> recognizer;
    std::string embedderIdentifier;
    std::unique_ptr<MiniFASNet> antiSpoof;
    std::map<std::string, FaceIdentity> identities;
};

LookMeter::LookMeter(Settings settings, std::unique_ptr<Networks> networks)
    : settings_(std::move(settings)), networks_(std::move(networks)) {}
LookMeter::~LookMeter() = default;

std::expected<std::unique_ptr<LookMeter>, std::string> LookMeter::create(const Settings& settings) {
    auto networks = std::make_unique<Networks>();
    const auto pack = networksIn(settings.models);
    if (!pack) return std::unexpected(pack.error());
    auto vision =
        OpenCvFaceVision::load(pack->folder / pack->finderFile, pack->folder / pack->landmarksFile);
    if (!vision) return std::unexpected(vision.error());
    networks->vision = *std::move(vision);
    auto embedder = SFaceEmbedder::load(
        pack->folder, {.fileName = pack->embedderFile, .modelIdentifier = pack->embedderIdentifier},
        networks->models, networks->imaging);
    if (!embedder) return std::unexpected(description(embedder.error()));
    networks->recognizer =
        std::make_unique<FaceRecognizer>(*networks->vision, networks->imaging, *std::move(embedder),
                                         CameraFaceScanner::minimumFaceWidth);
    networks->embedderIdentifier = pack->embedderIdentifier;
    auto antiSpoof =
        MiniFASNet::load(pack->folder, networks->models, NeuralModels::ComputeUnits::all,
                         pack->realFaceFile, pack->realFaceIdentifier);
    if (!antiSpoof) return std::unexpected(description(antiSpoof.error()));
    networks->antiSpoof = *std::move(antiSpoof);
    return std::unique_ptr<LookMeter>(new LookMeter(settings, std::move(networks)));
}

std::expected<void, std::string> LookMeter::enroll(const Look& look) {
    FaceIdentity& identity = networks_->identities[look.person];
    identity.name = look.person;
    identity.modelIdentifier = networks_->embedderIdentifier;
    identity.dimension = SFaceEmbedder::embeddingLength;
    const std::size_t wanted = std::min(mostSamples, look.pictureCount);
    for (std::size_t i = 0; i < wanted; ++i) {
        const std::size_t index = i * look.pictureCount / wanted;
        auto picture = look.picture(index);
        if (!picture) return std::unexpected(picture.error());
        const auto frame = cameraFrame(*std::move(picture), index, {}, networks_->imaging);
        if (!frame) continue;
        if (auto seen = networks_->recognizer->recognise(*frame, std::nullopt)) {
            identity.samples.push_back({.embedding = std::move(seen->embedding),
                                        .pose = std::nullopt,
                                        .capturedAt = {},
                                        .quality = seen->face.quality});
        }
    }
    if (identity.samples.empty()) {
        return std::unexpected("The look “" + look.name + "” shows no face to enrol.");
    }
    return {};
}

std::expected<LookResult, std::string> LookMeter::measure(const Look& look) {
    LookResult result{.purpose = look.purpose,
                      .attack = look.attack,
                      .person = look.person,
                      .name = look.name,
                      .frames = 0,
                      .framesWithFace = 0,
                      .decision = {},
                      .isOpened = false,
                      .timeToOpen = std::nullopt,
                      .live = std::nullopt,
                      .levels = {},
                      .likeness = {}};
    FaceScan scan(settings_.mode,
                  settings_.enabledCues.value_or(enabledLivenessCues(settings_.mode)));
    LookClock clock;
    std::optional<Date> firstFace;
    double liveSum = 0;
    std::int64_t scored = 0;
    const bool isEnrolled = networks_->identities.contains(look.person);

    for (std::size_t i = 0; i < look.pictureCount && !result.isOpened; ++i) {
        auto picture = look.picture(i);
        if (!picture) return std::unexpected(picture.error());
        clock.time = Date(TimeInterval(static_cast<double>(i) / look.framesPerSecond));
        const auto frame = cameraFrame(*std::move(picture), i, clock.time, networks_->imaging);
        if (!frame) return std::unexpected("A picture of “" + look.name + "” can’t be drawn.");
        const auto& step = scan.take(*frame, {.recognizer = *networks_->recognizer,
                                              .antiSpoof = *networks_->antiSpoof,
                                              .vision = *networks_->vision,
                                              .imaging = networks_->imaging,
                                              .fourier = networks_->fourier,
                                              .clock = clock});
        ++result.frames;
        result.decision = step.liveness.decision;
        if (!step.recognition) continue;
        ++result.framesWithFace;
        if (!firstFace) firstFace = clock.time;

        bool matches = !isEnrolled;
        for (const auto& [person, identity] : networks_->identities) {
            const auto scores =
                facematcher::score(step.recognition->embedding, std::span(&identity, 1),
                                   networks_->recognizer->embedder().modelIdentifier());
            if (scores.empty()) continue;
            auto& likeness = result.likeness[person];
            likeness.similarity = std::max(likeness.similarity, scores.front().templateSimilarity);
            const bool isMatch = facematcher::isMatch(scores.front(), settings_.threshold);
            likeness.matches = likeness.matches || isMatch;
            if (person == look.person) matches = isMatch;
        }
        if (const auto latest = step.liveness.realFace.latest) {
            liveSum += static_cast<double>(latest->live);
            ++scored;
        }
        for (const auto& [cue, state] : step.liveness.cueStates) {
            if (state.reading.confidence > 0) {
                float& level = result.levels[cue];
                level = std::max(level, state.reading.level);
            }
        }
        if (std::holds_alternative<LivenessDecision::Denied>(result.decision)) break;
        if (matches && std::holds_alternative<LivenessDecision::Confirmed>(result.decision)) {
            result.isOpened = true;
            result.timeToOpen = clock.time - *firstFace;
        }
    }
    if (scored > 0) result.live = liveSum / static_cast<double>(scored);
    return result;
}

}  // namespace marrowby
