// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Training/PictureMaker.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr std::uint64_t somebody = 100'000;
constexpr std::uint64_t somebodyElse = 100'001;

TEST(PictureMakerTest, drawsFacesWithTheirTruthTheSameForTheSameSeed) {
    PictureMaker maker(7);
    PictureMaker again(7);
    for (int i = 0; i < 3; ++i) {
        const records::Face face = maker.face(somebody, 5);
        EXPECT_EQ(face.bytes, again.face(somebody, 5).bytes);
        const auto& numbers = face.numbers;
        EXPECT_EQ(numbers[0], 5);
        // The box lies in the middle and fills two thirds of the longer side; the points lie in it.
        const Rect box{numbers[1], numbers[2], numbers[3], numbers[4]};
        EXPECT_NEAR(std::max(box.width, box.height), records::Face::side / 1.5, 0.1);
        EXPECT_NEAR(box.centre().x, records::Face::side / 2.0, 0.1);
        EXPECT_NEAR(box.centre().y, records::Face::side / 2.0, 0.1);
        for (std::size_t point = 0; point < 98; ++point) {
            EXPECT_NEAR(numbers[8 + 2 * point], box.centre().x, box.width / 2 + 0.1);
            EXPECT_NEAR(numbers[9 + 2 * point], box.centre().y, box.height / 2 + 0.1);
        }
        // A face is there: darker than its surroundings' brightest, brighter than their darkest.
        const auto [darkest, brightest] = std::ranges::minmax(face.bytes);
        EXPECT_GT(brightest - darkest, 60);
    }
}

TEST(PictureMakerTest, cutsCropsOfTheLargestFaceOfAScene) {
    PictureMaker maker(3);
    bool isAttackSeen = false;
    bool isLifeSeen = false;
    for (int i = 0; i < 6; ++i) {
        maker.scene(somebody, somebodyElse, 1, [&](const records::Scene& scene) {
            const float kind = scene.numbers[1];
            const auto crops = std::span(scene.bytes).subspan(records::Scene::pictureBytes);
            const bool hasCrops = std::ranges::any_of(crops, [](auto byte) { return byte != 0; });
            EXPECT_EQ(hasCrops, kind >= 0);
            EXPECT_EQ(scene.numbers[2] >= 0, kind == 0 || kind == 2);
            if (scene.numbers[0] < 1) return;
            EXPECT_EQ(kind >= 0 ? kind : scene.numbers[16 + 14], scene.numbers[16 + 14]);
            isAttackSeen = isAttackSeen || kind == 0 || kind == 2;
            isLifeSeen = isLifeSeen || kind == 1;
        });
    }
    EXPECT_TRUE(isAttackSeen);
    EXPECT_TRUE(isLifeSeen);
}

}  // namespace
}  // namespace marrowby
