#include "Platforms/Linux/OpenCvFaceVision.h"
#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/OpenCvNeuralModels.h"
#include "Rehearsal/Scenes/SceneCatalogue.h"
#include "Rehearsal/Scenes/SceneFilm.h"
#include "Tests/Fakes/SharedFolder.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr double degrees = 180 / std::numbers::pi;
constexpr TimeInterval step{1.0 / 15};
/// Until the exposure has settled.
constexpr int settling = 10;

/// Radians: up to 25 degrees of turn and 15 of nod, as an enrolment goes through them.
constexpr std::pair<float, float> poses[] = {{0, 0},      {0.22F, 0},   {0.44F, 0},
                                             {-0.22F, 0}, {-0.44F, 0},  {0, 0.26F},
                                             {0, -0.26F}, {0.3F, 0.2F}, {-0.3F, -0.2F}};

/// One made-up person who takes the poses in turn.
Scene posing(std::uint64_t person) {
    Scene scene = sceneNamed("live-normal", person).value();
    scene.actors.front().plays = [](TimeInterval at) {
        const auto index = static_cast<std::size_t>(
            std::max(0L, std::lround(at.count() / step.count()) - settling));
        const auto [yaw, pitch] = poses[std::min(index, std::size(poses) - 1)];
        return Stance{.head = {.position = {.z = 0.55F}, .yaw = yaw, .pitch = pitch}};
    };
    return scene;
}

TEST(RecognisedPeople, areFoundTurnedAsTheyAreAndToldApart) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    const auto models = *shared / "models";
    auto vision = OpenCvFaceVision::load(models / "face_detection_yunet_2023mar.onnx",
                                         models / "Landmarks98.onnx");
    ASSERT_TRUE(vision);
    const OpenCvImaging imaging;
    OpenCvNeuralModels networks;
    auto embedder = SFaceEmbedder::load(
        models, {.fileName = "Embedder128.onnx", .modelIdentifier = "mobilefacenet-128-test-1"},
        networks, imaging);
    ASSERT_TRUE(embedder);
    const FaceRecognizer recognizer(**vision, imaging, *std::move(embedder), 60);

    Cast cast;
    double yawError = 0;
    double pitchError = 0;
    double rollError = 0;
    int found = 0;
    float sameLowest = 1;
    float differentHighest = -1;
    std::vector<Embedding> people;
    constexpr std::size_t personCount = 6;
    for (const auto person : distinctPeople().first(personCount)) {
        SceneFilm film(posing(person), cast);
        std::vector<Embedding> samples;
        for (int picture = 0; picture < settling + int(std::size(poses)); ++picture) {
            const TimeInterval at = picture * step;
            const auto shot = film.shoot({.at = at, .running = at, .frameTime = step});
            if (picture < settling) continue;
            const Size size = shot.picture->extent();
            const auto image = imaging.render(*shot.picture, {0, 0, size.width, size.height}, 1);
            ASSERT_TRUE(image);
            const CameraFrame frame{
                .image = *image, .source = shot.picture, .sourceSize = size, .timestamp = Date(at)};
            auto seen = recognizer.recognise(frame, std::nullopt);
            ASSERT_TRUE(seen) << "person " << person << ", picture " << picture;
            const FaceTruth& truth = shot.truth.people.front();
            yawError += std::abs(*seen->face.yaw - truth.yaw);
            pitchError += std::abs(*seen->face.pitch - truth.pitch);
            rollError += std::abs(*seen->face.roll - truth.roll);
            ++found;
            samples.push_back(std::move(seen->embedding));
        }
        const auto mean = faceembedding::meanTemplate(samples);
        ASSERT_TRUE(mean);
        for (const Embedding& sample : samples)
            sameLowest = std::min(sameLowest, faceembedding::cosine(sample, *mean));
        for (const Embedding& other : people)
            differentHighest = std::max(differentHighest, faceembedding::cosine(other, *mean));
        people.push_back(*mean);
    }
    const double each = degrees / found;
    std::cout << found << " pictures: mean error of yaw " << yawError * each << "°, pitch "
              << pitchError * each << "°, roll " << rollError * each << "°; same person at least "
              << sameLowest << ", different at most " << differentHighest << '\n';
    EXPECT_LT(yawError * each, 5);
    EXPECT_LT(rollError * each, 5);
    EXPECT_LT(pitchError * each, 6);
    EXPECT_GT(sameLowest, 0.7F);
    EXPECT_LT(differentHighest, 0.65F);
}

}  // namespace
}  // namespace marrowby
