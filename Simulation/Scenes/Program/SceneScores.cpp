// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Program/SceneScores.h"

#include "Platforms/Linux/Vision/BitmapMat.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Platforms/Linux/Vision/YuNetFaceFinder.h"
#include "Simulation/Scenes/ModelFolder.h"
#include "Simulation/Scenes/SceneFilm.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/LockScreenServices/FaceScan.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <utility>
#include <variant>

#include <opencv2/core/mat.hpp>

namespace marrowby {

namespace {

constexpr TimeInterval lasts{3};
constexpr TimeInterval step{0.1};

/// The time in the scene.
class SceneClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override { return time; }
    Date time;
};

/// Records the model's scores.
class Noting final : public AntiSpoofScoring {
  public:
    explicit Noting(AntiSpoofScoring& real) : real_(real) {}
    [[nodiscard]] std::string_view modelIdentifier() const override {
        return real_.modelIdentifier();
    }
    [[nodiscard]] std::expected<AntiSpoofScore, RealFaceModelError> score(
        const RGBPixels& image, const Rect& faceBox) override {
        auto score = real_.score(image, faceBox);
        if (score) noted.push_back(score->live);
        return score;
    }
    std::vector<float> noted;

  private:
    AntiSpoofScoring& real_;
};

std::string text(const LivenessDecision& decision) {
    if (const auto* denied = std::get_if<LivenessDecision::Denied>(&decision)) {
        return "denied: " + inEnglish(title(denied->cue));
    }
    return std::holds_alternative<LivenessDecision::Waiting>(decision) ? "waiting" : "live";
}

}  // namespace

struct SceneScores::Pipeline {
    OpenCvImaging imaging;
    OpenCvFourierTransform fourier;
    OpenCvNeuralModels models;
    std::unique_ptr<OpenCvFaceVision> vision;
    std::optional<YuNetFaceFinder> finder;
    std::unique_ptr<FaceRecognizer> recognizer;
    std::unique_ptr<MiniFASNet> antiSpoof;
    std::optional<Embedding> person;
    Cast cast;
};

SceneScores::SceneScores(std::unique_ptr<Pipeline> pipeline) : pipeline_(std::move(pipeline)) {}
SceneScores::~SceneScores() = default;

std::expected<std::unique_ptr<SceneScores>, std::string> SceneScores::load(
    const std::filesystem::path& models) {
    const auto pack = modelsIn(models);
    if (!pack) return std::unexpected(pack.error());
    auto pipeline = std::make_unique<Pipeline>();
    auto vision = OpenCvFaceVision::load(models / pack->finderFile, models / pack->landmarksFile);
    if (!vision) return std::unexpected(vision.error());
    pipeline->vision = *std::move(vision);
    auto finder = YuNetFaceFinder::load(models / pack->finderFile);
    if (!finder) return std::unexpected(finder.error());
    pipeline->finder = *std::move(finder);
    auto embedder = SFaceEmbedder::load(
        models, {.fileName = pack->embedderFile, .modelIdentifier = pack->embedderIdentifier},
        pipeline->models, pipeline->imaging);
    if (!embedder) return std::unexpected(description(embedder.error()));
    pipeline->recognizer =
        std::make_unique<FaceRecognizer>(*pipeline->vision, pipeline->imaging, *std::move(embedder),
                                         CameraFaceScanner::minimumFaceWidth);
    auto antiSpoof = MiniFASNet::load(models, pipeline->models, NeuralModels::ComputeUnits::all,
                                      pack->realFaceFile, pack->realFaceIdentifier);
    if (!antiSpoof) return std::unexpected(description(antiSpoof.error()));
    pipeline->antiSpoof = *std::move(antiSpoof);
    return std::unique_ptr<SceneScores>(new SceneScores(std::move(pipeline)));
}

void SceneScores::enroll(const Scene& scene) {
    pipeline_->person.reset();
    SceneFilm film(scene, pipeline_->cast);
    std::vector<Embedding> samples;
    for (TimeInterval at{}; at < lasts - step / 2; at += step) {
        const auto picture = film.shoot({.at = at, .running = at, .frameTime = step}).picture;
        const Size size = picture->extent();
        const auto image = pipeline_->imaging.render(*picture, {0, 0, size.width, size.height}, 1);
        if (!image) continue;
        const CameraFrame frame{
            .image = *image, .source = picture, .sourceSize = size, .timestamp = Date(at)};
        auto seen = pipeline_->recognizer->recognise(frame, std::nullopt);
        if (seen && at > TimeInterval(1)) samples.push_back(seen->embedding);
    }
    pipeline_->person = faceembedding::meanTemplate(samples);
}

SceneScores::Score SceneScores::score(const Scene& scene, int width, int height) {
    SceneFilm film(scene, pipeline_->cast);
    FaceScan scan(LivenessMode::standard);
    Noting antiSpoof(*pipeline_->antiSpoof);
    SceneClock clock;
    Score score;
    // The exposure settles first.
    for (TimeInterval at{-0.6}; at < lasts - step / 2; at += step) {
        const auto picture = film.shoot({.at = at,
                                         .running = at + TimeInterval(0.6),
                                         .frameTime = step,
                                         .width = width,
                                         .height = height})
                                 .picture;
        if (at < -step / 2) continue;
        clock.time = Date(at);
        const Size size = picture->extent();
        const double scale =
            std::min(CameraFaceScanner::workingLongEdge / std::max(size.width, size.height), 1.0);
        const auto image =
            pipeline_->imaging.render(*picture, {0, 0, size.width, size.height}, scale);
        if (!image) continue;
        ++score.pictures;
        const CameraFrame frame{.id = score.pictures,
                                .image = *image,
                                .source = picture,
                                .sourceSize = size,
                                .timestamp = clock.time};
        const FaceScan::Step& seen = scan.take(frame, {.recognizer = *pipeline_->recognizer,
                                                       .antiSpoof = antiSpoof,
                                                       .vision = *pipeline_->vision,
                                                       .imaging = pipeline_->imaging,
                                                       .fourier = pipeline_->fourier,
                                                       .clock = clock});
        score.decision = text(seen.liveness.decision);
        if (seen.recognition) {
            ++score.withFace;
            const auto& person = pipeline_->person;
            if (person) {
                score.likeness.push_back(
                    faceembedding::cosine(seen.recognition->embedding, *person));
            }
        }
        const auto bgr = bgrMat(*image);
        auto& finder = pipeline_->finder;
        const auto faces =
            bgr && finder ? finder->find(*bgr) : std::unexpected<std::string>(std::string());
        float best = 0;
        if (faces) {
            for (const auto& face : *faces)
                best = std::max(best, static_cast<float>(face.score));
        }
        score.finder.push_back(best);
    }
    score.live = std::move(antiSpoof.noted);
    return score;
}

}  // namespace marrowby
