// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Training/PackFigures.h"

#include "Platforms/Linux/Vision/BitmapMat.h"
#include "Platforms/Linux/Vision/HeadPose.h"
#include "Platforms/Linux/Vision/Landmarks98Model.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Platforms/Linux/Vision/YuNetFaceFinder.h"
#include "Simulation/Scenes/ModelFolder.h"
#include "Simulation/Scenes/SceneFilm.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <opencv2/core.hpp>

namespace marrowby {

namespace {

constexpr TimeInterval settling{0.6};
constexpr int momentsPerScene = 3;
constexpr TimeInterval betweenMoments{0.9};

/// The turns that enrolment asks for, in radians.
constexpr float sideYaw = 0.34F;
constexpr float upright = 0.26F;

Scene enrolment(std::uint64_t person) {
    const Performance plays = [](TimeInterval time) {
        const int pose = std::clamp(static_cast<int>(time.count()), 0, 8);
        const int row = pose / 3;
        Stance stance;
        stance.head = {.position = {.x = 0, .y = 0.02F, .z = 0.55F},
                       .yaw = sideYaw * static_cast<float>(pose % 3 - 1),
                       .pitch = upright * static_cast<float>(row - 1)};
        stance.expression = {.gazeYaw = -stance.head.yaw, .gazePitch = -stance.head.pitch};
        return stance;
    };
    return {.name = "enrolment", .actors = {{person, plays}}, .seed = person};
}

double overlap(const Rect& a, const Rect& b) {
    const double common = intersection(a, b).area();
    return common / std::max(a.area() + b.area() - common, 1e-9);
}

/// Whether a finder must find it.
bool isClear(const FaceTruth& face, const Size& size) {
    const double inside = intersection(face.box, {0, 0, size.width, size.height}).area();
    return inside > 0.9 * face.box.area() && std::hypot(face.yaw, face.pitch) < 0.8 &&
           face.box.width >= 40;
}

}  // namespace

/// One moment of a scene.
struct PackFigures::Seen {
    const CameraFrame& camera;
    const SceneTruth& truth;
};

struct PackFigures::Pipeline {
    OpenCvImaging imaging;
    OpenCvNeuralModels models;
    std::unique_ptr<YuNetFaceFinder> finder;
    std::unique_ptr<Landmarks98Model> landmarks;
    std::unique_ptr<OpenCvFaceVision> vision;
    std::unique_ptr<FaceRecognizer> recognizer;
    std::unique_ptr<MiniFASNet> antiSpoof;
};

PackFigures::PackFigures(std::unique_ptr<Pipeline> pipeline) : pipeline_(std::move(pipeline)) {}
PackFigures::~PackFigures() = default;

std::expected<std::unique_ptr<PackFigures>, std::string> PackFigures::load(
    const std::filesystem::path& folder) {
    const auto pack = modelsIn(folder);
    if (!pack) return std::unexpected(pack.error());
    auto pipeline = std::make_unique<Pipeline>();
    auto finder = YuNetFaceFinder::load(folder / pack->finderFile);
    if (!finder) return std::unexpected(finder.error());
    pipeline->finder = std::make_unique<YuNetFaceFinder>(*std::move(finder));
    auto landmarks = Landmarks98Model::load(folder / pack->landmarksFile);
    if (!landmarks) return std::unexpected(landmarks.error());
    pipeline->landmarks = std::make_unique<Landmarks98Model>(*std::move(landmarks));
    auto vision = OpenCvFaceVision::load(folder / pack->finderFile, folder / pack->landmarksFile);
    if (!vision) return std::unexpected(vision.error());
    pipeline->vision = *std::move(vision);
    auto embedder = SFaceEmbedder::load(
        folder, {.fileName = pack->embedderFile, .modelIdentifier = pack->embedderIdentifier},
        pipeline->models, pipeline->imaging);
    if (!embedder) return std::unexpected(description(embedder.error()));
    pipeline->recognizer =
        std::make_unique<FaceRecognizer>(*pipeline->vision, pipeline->imaging, *std::move(embedder),
                                         CameraFaceScanner::minimumFaceWidth);
    auto antiSpoof = MiniFASNet::load(folder, pipeline->models, NeuralModels::ComputeUnits::all,
                                      pack->realFaceFile, pack->realFaceIdentifier);
    if (!antiSpoof) return std::unexpected(description(antiSpoof.error()));
    pipeline->antiSpoof = *std::move(antiSpoof);
    return std::unique_ptr<PackFigures>(new PackFigures(std::move(pipeline)));
}

void PackFigures::enroll(std::uint64_t person, Cast& cast) {
    SceneFilm film(enrolment(person), cast);
    std::vector<Embedding> samples;
    for (int pose = -1; pose < 9; ++pose) {
        const TimeInterval at(pose + 0.5);
        const auto picture = film.shoot({.at = at, .running = at + TimeInterval(0.5)}).picture;
        const Size size = picture->extent();
        const auto image = pipeline_->imaging.render(*picture, {0, 0, size.width, size.height}, 1);
        if (!image || pose < 0) continue;
        const auto seen = pipeline_->recognizer->recognise(
            {.image = *image, .source = picture, .sourceSize = size, .timestamp = Date(at)},
            std::nullopt);
        if (seen) samples.push_back(seen->embedding);
    }
    if (auto mean = faceembedding::meanTemplate(samples)) enrolled_[person] = *std::move(mean);
}

void PackFigures::measure(const Scene& scene, std::uint64_t person, Cast& cast) {
    SceneFilm film(scene, cast);
    for (int moment = -1; moment < momentsPerScene; ++moment) {
        const TimeInterval at = moment < 0 ? -settling : betweenMoments * moment;
        const auto shot = film.shoot({.at = at, .running = at + settling});
        if (moment < 0) continue;
        const Size size = shot.picture->extent();
        const auto image =
            pipeline_->imaging.render(*shot.picture, {0, 0, size.width, size.height}, 1);
        if (!image) continue;
        look({.camera = {.image = *image,
                         .source = shot.picture,
                         .sourceSize = size,
                         .timestamp = Date(at)},
              .truth = shot.truth},
             scene, person);
    }
}

void PackFigures::look(const Seen& frame, const Scene& scene, std::uint64_t person) {
    const Bitmap& image = frame.camera.image;
    const Size& size = frame.camera.sourceSize;
    const auto bgr = bgrMat(image);
    if (!bgr) return;
    const auto faces = pipeline_->finder->find(*bgr);
    if (!faces) return;
    const bool isAttack = !scene.props.empty();
    bool isFalse = false;
    for (const auto& face : *faces) {
        const auto fits = [&](const FaceTruth& truth) {
            return overlap(face.box, truth.box) > 0.25;
        };
        isFalse =
            isFalse || (std::ranges::none_of(frame.truth.people, fits) &&
                        std::ranges::none_of(frame.truth.heldUp, fits, &SceneTruth::HeldUp::face));
    }
    seen_.falseDetections.add(isFalse);
    for (const FaceTruth& truth : frame.truth.people) {
        if (isAttack || !isClear(truth, size)) continue;
        const auto face = std::ranges::max_element(
            *faces, {}, [&](const auto& each) { return overlap(each.box, truth.box); });
        const bool isFound = face != faces->end() && overlap(face->box, truth.box) > 0.4;
        seen_.found.add(isFound);
        if (!isFound) continue;
        const auto points = pipeline_->landmarks->find(*bgr, face->box);
        if (!points) continue;
        const double eyes = distance(truth.points[60], truth.points[72]);
        double sum = 0;
        for (std::size_t i = 0; i < points->size(); ++i)
            sum += distance((*points)[i], truth.points[i]);
        seen_.pointErrors.push_back(sum / 98 / eyes);
        if (const auto pose = headPose(*points, size)) {
            seen_.yawErrors.push_back(std::abs(double{pose->yaw} - truth.yaw));
            seen_.pitchErrors.push_back(std::abs(double{pose->pitch} - truth.pitch));
        }
    }

    const auto seen = pipeline_->recognizer->recognise(frame.camera, std::nullopt);
    if (!seen) return;
    const Rect& box = seen->face.boundingBox;
    const auto isSeen = [&](const FaceTruth& truth) { return overlap(box, truth.box) > 0.4; };
    const auto whom = std::ranges::find_if(frame.truth.people, isSeen);
    if (!isAttack && whom != frame.truth.people.end() && whom->person == person) {
        probes_.push_back({person, seen->embedding});
    }
    if (const auto pixels = RGBPixels::view(image)) {
        if (const auto score = pipeline_->antiSpoof->score(*pixels, box)) {
            seen_.live[isAttack ? std::string(name(scene.props.front().kind)) : "living"].push_back(
                double{score->live});
        }
    }
}

PackFigures::Figures PackFigures::figures() const {
    Figures result = seen_;
    for (const Probe& probe : probes_) {
        for (const auto& [person, mean] : enrolled_) {
            (person == probe.person ? result.same : result.different)
                .push_back(double{faceembedding::cosine(probe.embedding, mean)});
        }
    }
    return result;
}

}  // namespace marrowby
