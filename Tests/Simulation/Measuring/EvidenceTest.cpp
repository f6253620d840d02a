// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Evidence.h"
#include "Simulation/Measuring/Trial.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <cmath>
#include <fstream>
#include <optional>
#include <variant>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct Frame {
    float live = 0.95F;
    std::optional<double> device = std::nullopt;
};

/// A face that holds still, 30 frames a second.
TakeEvidence evidence(const Frame& frame, std::size_t frames) {
    TakeEvidence take{.label = {.purpose = Take::Purpose::attack,
                                .attack = "phone",
                                .person = "ann",
                                .name = "phone-photo 3"},
                      .frames = {}};
    for (std::size_t i = 0; i < frames; ++i) {
        const TimeInterval at(static_cast<double>(i) / 30);
        if (i == 1) {
            take.frames.push_back({.at = at, .findings = {.liveness = {}, .fault = "broken"}});
            continue;
        }
        DetectedFace face{.boundingBox = {100, 80, 90, 110},
                          .normalizedBoundingBox = {0.2, 0.3, 0.1, 0.3},
                          .quality = 0.5F,
                          .yaw = 0.1F,
                          .landmarks = FaceLandmarks{},
                          .imageSize = {640, 360}};
        face.landmarks->regions[LandmarkRegion::leftEye] = {{120, 110}};
        face.landmarks->regions[LandmarkRegion::rightEye] = {{160.25, 110}};
        face.landmarks->regions[LandmarkRegion::nose] = {{140, 135}};
        face.landmarks->leftPupil = {121, 110};
        face.landmarks->rightPupil = {158.5, 110};
        LivenessFrame liveness = livenessFrame(face, Date(at));
        liveness.antiSpoof = AntiSpoofScore{frame.live, frame.live, frame.live};
        liveness.glare = GlareSample{90, 0.1F, 0.2F};
        liveness.moire = MoireSample{3, 128};
        std::optional<devicebezeldetector::Observation> rectangle;
        if (frame.device)
            rectangle = {.rectangle = {60, 30, 170, 250}, .faceOverlapFraction = frame.device};
        FaceRecognition seen{
            .embedding = Embedding(128, std::sqrt(1.0F / 128)),
            .alignedImage = *Bitmap::create(1, 1, 4, rgbx8, std::vector<std::uint8_t>(4)),
            .face = face};
        take.frames.push_back({.at = at,
                               .findings = {.liveness = std::move(liveness),
                                            .fault = std::nullopt,
                                            .recognition = std::move(seen),
                                            .rectangle = rectangle}});
    }
    return take;
}

TEST(Evidence, isJudgedTheSameAfterReadingItBack) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "pack" / "take.cbor";
    const TakeEvidence take = evidence({.live = 0.9F, .device = 0.5}, 30);
    ASSERT_TRUE(writeEvidence(file, take));
    const auto kept = readEvidence(file);
    ASSERT_TRUE(kept) << kept.error();
    EXPECT_EQ(kept->label.name, take.label.name);
    EXPECT_EQ(kept->label.attack, "phone");
    ASSERT_EQ(kept->frames.size(), take.frames.size());
    EXPECT_EQ(kept->frames[1].findings.fault, "broken");
    const auto& [liveness, fault, recognition, rectangle] = kept->frames[2].findings;
    EXPECT_EQ(recognition->face, take.frames[2].findings.recognition->face);
    EXPECT_EQ(rectangle, take.frames[2].findings.rectangle);
    EXPECT_EQ(liveness.interocularDistance, 37.5);
    EXPECT_EQ(liveness.noseOffsetRatio, take.frames[2].findings.liveness.noseOffsetRatio);
    EXPECT_EQ(liveness.glare, take.frames[2].findings.liveness.glare);
    EXPECT_EQ(liveness.moire, take.frames[2].findings.liveness.moire);
    for (const Trial& trial : trials(LivenessMode::standard, std::nullopt)) {
        const TakeResult before = judged(take, trial, {});
        const TakeResult after = judged(*kept, trial, {});
        EXPECT_EQ(before.decision, after.decision) << trial.name;
        EXPECT_EQ(before.timeToOpen, after.timeToOpen) << trial.name;
        EXPECT_EQ(before.levels, after.levels) << trial.name;
        EXPECT_TRUE(after.isOpened) << trial.name;
    }
}

TEST(Evidence, isNotReadFromADamagedFile) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "take.cbor";
    EXPECT_FALSE(readEvidence(file));
    std::ofstream(file) << "no evidence";
    EXPECT_FALSE(readEvidence(file));
    ASSERT_TRUE(writeEvidence(file, evidence({}, 5)));
    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    EXPECT_FALSE(readEvidence(file));
}

TEST(Trial, leavesOneCueOutInTurn) {
    const auto ways = trials(LivenessMode::strict, std::nullopt);
    ASSERT_EQ(ways.size(), 5U);
    EXPECT_TRUE(ways.front().isWhole);
    const TakeEvidence framed = evidence({.live = 0.95F, .device = 1.0}, 30);
    const TakeEvidence printed = evidence({.live = 0.1F, .device = std::nullopt}, 30);
    for (const Trial& trial : trials(LivenessMode::standard, std::nullopt)) {
        EXPECT_EQ(judged(framed, trial, {}).isOpened,
                  trial.name == "standard without deviceDetected")
            << trial.name;
        EXPECT_EQ(judged(printed, trial, {}).isOpened, trial.name == "standard without realFace")
            << trial.name;
    }
}

}  // namespace
}  // namespace marrowby
