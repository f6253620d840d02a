#include "Benchmarks/Material.h"

#include "Platforms/Linux/Vision/ImageFiles.h"
#include "UnlockCore/Recognition/FaceDetector.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"

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

Material& Material::shared() {
    const char* folder = std::getenv("MARROWBY_SHARED");
    static Material material(folder ? folder : "../shared");
    return material;
}

Material::Material(const std::filesystem::path& shared)
    : models(shared / "models"),
      person_(orEnd(readPicture(shared / "media" / "owner-look" / "0020.jpg"))) {}

std::unique_ptr<OpenCvFaceVision> Material::loadVision(std::shared_ptr<WorkQueue> helper) const {
    return orEnd(OpenCvFaceVision::load(models / "face_detection_yunet_2023mar.onnx",
                                        models / "Landmarks98.onnx", std::move(helper)));
}

std::unique_ptr<SFaceEmbedder> Material::loadEmbedder() {
    return orEnd(SFaceEmbedder::load(
        models, {.fileName = "Embedder128.onnx", .modelIdentifier = "mobilefacenet-128-test-1"},
        neuralModels, imaging));
}

std::unique_ptr<MiniFASNet> Material::loadRealFace() {
    return orEnd(
        MiniFASNet::load(models, neuralModels, NeuralModels::ComputeUnits::all, "MiniFASNet.onnx"));
}

std::shared_ptr<const PixelBuffer> Material::picture(int width, int height) const {
    const Size size = person_->extent();
    const auto scaled = orEnd(imaging.render(*person_, {0, 0, size.width, size.height},
                                             std::max(width / size.width, height / size.height)),
                              "The person can’t be drawn.");
    // Cut in the middle, where the face is.
    const auto cut = orEnd(imaging.draw(scaled, width, height,
                                        {.tx = (width - scaled.width()) / 2.0,
                                         .ty = (height - scaled.height()) / 2.0}),
                           "The person can’t be drawn.");
    const auto pixels = orEnd(imaging.convert(cut, bgrx8), "The person can’t be drawn.");
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
        identity.modelIdentifier = "mobilefacenet-128-test-1";
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
