// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/AVFoundationCaptureSession.h"
#import "Platforms/macOS/CoreImageImaging.h"
#import "Platforms/macOS/CoreMLNeuralModels.h"
#import "Platforms/macOS/DispatchWorkQueues.h"
#import "Platforms/macOS/VisionFaceVision.h"
#import "UnlockCore/Liveness/MiniFASNet.h"
#import "UnlockCore/Recognition/SFaceEmbedder.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// Dark, with a light rectangle from 1/4 to 1/2 of both sides, from the top-left.
Bitmap picture(int side) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool isLight = x > side / 4 && x < side / 2 && y > side / 4 && y < side / 2;
            bytes.insert(bytes.end(), 4, isLight ? 240 : 20);
        }
    }
    return *Bitmap::create(side, side, static_cast<std::size_t>(side) * 4, rgbx8, std::move(bytes));
}

TEST(VisionFaceVision, findsARectangleInItsPlaceAndNoFace) {
    VisionFaceVision vision;
    const auto faces = vision.faceRectangles(picture(480));
    ASSERT_TRUE(faces) << faces.error();
    EXPECT_TRUE(faces->empty());
    const auto details = vision.faceDetails(picture(480), {});
    ASSERT_TRUE(details);
    EXPECT_TRUE(details->landmarks.empty());

    const auto boxes = vision.rectangles(picture(480), {.minimumConfidence = 0.6,
                                                        .minimumSize = 0.15,
                                                        .maximumObservations = 3,
                                                        .minimumAspectRatio = 0.35,
                                                        .maximumAspectRatio = 1,
                                                        .quadratureToleranceDegrees = 30});
    ASSERT_TRUE(boxes) << boxes.error();
    ASSERT_FALSE(boxes->empty());
    EXPECT_NEAR(boxes->front().x, 0.25, 0.02);
    EXPECT_NEAR(boxes->front().y, 0.25, 0.02) << "counted from the top";
    EXPECT_NEAR(boxes->front().width, 0.25, 0.02);
}

TEST(CoreMLNeuralModels, reportsWhyAModelCannotBeLoaded) {
    const auto model = CoreMLNeuralModels().load("/nowhere/Model.mlmodelc", {});
    ASSERT_FALSE(model);
    EXPECT_FALSE(model.error().empty());
}

TEST(CoreMLNeuralModels, givesTheSameOutputsOnAllComputeUnits) {
    const char* const given = std::getenv("MARROWBY_MAC_MODELS");
    const char* const folder = given ? given : MARROWBY_SOURCE_DIR "/build/macos/models";
    ASSERT_TRUE(std::filesystem::exists(std::filesystem::path(folder) / "SFace.mlmodelc"))
        << "There are no models in " << folder
        << ": make them with Tools/prepare-coreml, or name their folder in MARROWBY_MAC_MODELS.";
    CoreMLNeuralModels models;
    const CoreImageImaging imaging;
    EXPECT_TRUE(MiniFASNet::load(folder, models));
    std::vector<Embedding> embeddings;
    for (const auto units :
         {NeuralModels::ComputeUnits::all, NeuralModels::ComputeUnits::processorOnly}) {
        const SFaceEmbedder::Resource resource;
        const auto embedder = SFaceEmbedder::load(std::filesystem::path(folder) / resource.fileName,
                                                  units, resource.modelIdentifier, models, imaging);
        ASSERT_TRUE(embedder) << description(embedder.error());
        const auto embedding = (*embedder)->embed(picture(112));
        ASSERT_TRUE(embedding) << description(embedding.error());
        embeddings.push_back(*embedding);
    }
    EXPECT_GT(faceembedding::cosine(embeddings[0], embeddings[1]), 0.999F);
}

TEST(AVFoundationCaptureSession, survivesRefusedCalls) {
    AVFoundationCaptureSession session;
    EXPECT_NE(session.authorization(), CaptureAuthorization::unknown);
    EXPECT_FALSE(session.device("no such camera"));
    const auto input = session.makeInput("no such camera");
    ASSERT_FALSE(input);
    EXPECT_FALSE(input.error().empty());

    DispatchWorkQueues queues;
    session.beginConfiguration();
    session.setPreset(CapturePreset::high);
    session.addOutput({}, queues.serial("app.quenby.unlock.test"), [](const SampleBuffer&) {});
    // Throws inside the framework.
    session.start();
    session.commitConfiguration();
    session.stop();
    EXPECT_FALSE(session.isRunning());
}

}  // namespace
}  // namespace marrowby
