// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks/Material.h"

#include "Platforms/Linux/Pictures/ImageFiles.h"
#include "Simulation/Scenes/Cast.h"
#include "Simulation/Scenes/ModelFolder.h"
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Scenes/SceneFilm.h"
#include "UnlockCore/Recognition/FaceDetector.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>
#include <utility>

#include <opencv2/core.hpp>

namespace marrowby {

namespace {

template <typename T>
T orEnd(std::optional<T> value, const std::string& sentence) {
    if (value) return *std::move(value);
    std::cerr << sentence << '\n';
    std::exit(EXIT_FAILURE);
}

template <typename T, typename E>
T orEnd(std::expected<T, E> result) {
    if (result) return *std::move(result);
    if constexpr (std::is_same_v<E, std::string>) {
        return orEnd<T>(std::nullopt, result.error());
    } else {
        return orEnd<T>(std::nullopt, description(result.error()));
    }
}

}  // namespace

namespace {

constexpr int filmLength = 30;

using Film = std::vector<std::shared_ptr<const PixelBuffer>>;

Film filmIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        files.push_back(entry.path());
    std::ranges::sort(files);
    Film film;
    for (const auto& file : files) {
        if (film.size() < filmLength) film.push_back(orEnd(readPicture(file)));
    }
    return orEnd(film.empty() ? std::nullopt : std::optional(std::move(film)),
                 "There are no pictures in “" + folder.string() + "”.");
}

/// From the middle of a scene, where the person has settled.
Film drawnFilm() {
    Cast cast;
    SceneFilm scene(orEnd(sceneNamed("live-normal", 1), "The scene is missing."), cast);
    Film film;
    for (int i = 0; i < filmLength; ++i) {
        const TimeInterval running(i / 30.0);
        film.push_back(scene
                           .shoot({.at = TimeInterval(1) + running,
                                   .running = running,
                                   .width = 1280,
                                   .height = 720})
                           .picture);
    }
    return film;
}

std::unique_ptr<Material> opened;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

}  // namespace

void Material::open(const std::filesystem::path& models, const std::filesystem::path& pictures) {
    opened.reset(
        new Material(orEnd(modelsIn(models)), pictures.empty() ? drawnFilm() : filmIn(pictures)));
}

Material& Material::shared() {
    return *opened;
}

Material::Material(ModelPack pack, Film film) : models(std::move(pack)), film_(std::move(film)) {}

std::unique_ptr<OpenCvFaceVision> Material::loadVision(std::shared_ptr<WorkQueue> helper) const {
    return orEnd(OpenCvFaceVision::load(models.folder / models.finderFile,
                                        models.folder / models.landmarksFile, std::move(helper)));
}

std::unique_ptr<SFaceEmbedder> Material::loadEmbedder() {
    return orEnd(SFaceEmbedder::load(
        models.folder,
        {.fileName = models.embedderFile, .modelIdentifier = models.embedderIdentifier},
        neuralModels, imaging));
}

std::unique_ptr<MiniFASNet> Material::loadRealFace() {
    return orEnd(MiniFASNet::load(models.folder, neuralModels, NeuralModels::ComputeUnits::all,
                                  models.realFaceFile, models.realFaceIdentifier));
}

Film Material::film(int width, int height) const {
    Film film;
    for (const auto& picture : film_)
        film.push_back(cut(*picture, width, height));
    return film;
}

std::shared_ptr<const PixelBuffer> Material::picture(int width, int height) const {
    return cut(*film_.front(), width, height);
}

std::shared_ptr<const PixelBuffer> Material::cut(const PixelBuffer& picture, int width,
                                                 int height) const {
    const Size size = picture.extent();
    const auto scaled = orEnd(imaging.render(picture, {0, 0, size.width, size.height},
                                             std::max(width / size.width, height / size.height)),
                              "The person can’t be drawn.");
    // Cut in the middle, where the face is.
    const auto middle = orEnd(imaging.draw(scaled, width, height,
                                           {.tx = (width - scaled.width()) / 2.0,
                                            .ty = (height - scaled.height()) / 2.0}),
                              "The person can’t be drawn.");
    const auto pixels = orEnd(imaging.convert(middle, bgrx8), "The person can’t be drawn.");
    return PixelBuffer::create(width, height, pixels.bytesPerRow(), pixels.sharedBytes());
}

CameraFrame Material::frame() const {
    const auto source = picture(640, 480);
    return {.id = 1,
            .image = orEnd(imaging.render(*source, {0, 0, 640, 480}, 1), "No working image."),
            .source = source,
            .sourceSize = source->extent(),
            .timestamp = {}};
}

DetectedFace Material::face() const {
    const auto vision = loadVision();
    const auto faces = orEnd(FaceDetector(*vision).detect(frame().image));
    return orEnd(faces.empty() ? std::nullopt : std::optional(faces.front()),
                 "There is no face in the picture.");
}

std::vector<FaceIdentity> Material::identities(std::size_t count) const {
    std::mt19937 random(1);  // NOLINT(bugprone-random-generator-seed): the same every time
    std::normal_distribution<float> value;
    std::vector<FaceIdentity> identities(count);
    for (FaceIdentity& identity : identities) {
        identity.name = "Somebody";
        identity.modelIdentifier = models.embedderIdentifier;
        identity.dimension = SFaceEmbedder::embeddingLength;
        for (int i = 0; i < 18; ++i) {
            Embedding embedding(SFaceEmbedder::embeddingLength);
            for (float& element : embedding)
                element = value(random);
            identity.samples.push_back({.embedding = faceembedding::normalized(embedding),
                                        .pose = std::nullopt,
                                        .capturedAt = {},
                                        .quality = std::nullopt});
        }
    }
    return identities;
}

}  // namespace marrowby
