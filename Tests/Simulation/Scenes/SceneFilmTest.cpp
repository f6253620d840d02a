// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Scenes/SceneFilm.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

const std::uint64_t somebody = distinctPeople().front();

Cast& cast() {
    static Cast people;
    return people;
}

SceneFilm::Frame shoot(SceneFilm& film, double at) {
    return film.shoot(
        {.at = TimeInterval(at), .running = TimeInterval(at), .width = 320, .height = 240});
}

TEST(SceneFilm, givesTheSamePicturesForTheSameSeedOnly) {
    const Scene scene = sceneNamed("phone-photo", somebody).value();
    Scene other = scene;
    other.seed += 1;
    SceneFilm film(scene, cast());
    SceneFilm again(scene, cast());
    SceneFilm different(other, cast());
    for (const double at : {0.0, 0.1, 0.4}) {
        const auto picture = shoot(film, at).picture;
        const auto same = shoot(again, at).picture;
        const auto another = shoot(different, at).picture;
        EXPECT_TRUE(std::ranges::equal(picture->bytes(), same->bytes())) << at;
        EXPECT_FALSE(std::ranges::equal(picture->bytes(), another->bytes())) << at;
    }
}

TEST(SceneFilm, reportsPeopleAndHeldUpThings) {
    struct Case {
        const char* scene;
        std::size_t people;
        std::size_t heldUp;
    };
    for (const Case& each : {Case{"empty-room", 0, 0}, Case{"two-people", 2, 0},
                             Case{"print-bent", 0, 1}, Case{"cut-out", 1, 1}}) {
        SceneFilm film(sceneNamed(each.scene, somebody).value(), cast());
        const SceneTruth truth = shoot(film, 0.5).truth;
        EXPECT_EQ(truth.people.size(), each.people) << each.scene;
        ASSERT_EQ(truth.heldUp.size(), each.heldUp) << each.scene;
        for (const SceneTruth::HeldUp& held : truth.heldUp) {
            EXPECT_EQ(held.face.person, somebody);
            EXPECT_GT(held.face.box.x, held.corners[0].x) << each.scene;
            EXPECT_LT(held.face.box.maxX(), held.corners[2].x) << each.scene;
            EXPECT_LT(held.face.box.maxY(), held.corners[2].y + 1) << each.scene;
        }
    }
}

TEST(SceneFilm, movesAReplayedHeadButNotAPhotographedOne) {
    for (const auto& [name, moves] :
         {std::pair("tablet-photo", false), std::pair("tablet-replay", true)}) {
        SceneFilm film(sceneNamed(name, somebody).value(), cast());
        const double before = shoot(film, 0).truth.heldUp.at(0).face.yaw;
        const double after = shoot(film, 0.7).truth.heldUp.at(0).face.yaw;
        EXPECT_EQ(std::abs(after - before) > 0.1, moves) << name;
    }
}

}  // namespace
}  // namespace marrowby
