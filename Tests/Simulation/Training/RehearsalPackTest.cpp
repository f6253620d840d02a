// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Training/PackFigures.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

// The committed pack on people that it was not trained on, by the application's thresholds: 0.50
// for a match, 0.70 for a real face.
TEST(RehearsalPackTest, recognisesPeopleAndRejectsPictures) {
    const auto pack = PackFigures::load(std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models");
    ASSERT_TRUE(pack) << pack.error();
    Cast cast;
    for (const std::uint64_t person : {3U, 12U}) {
        (*pack)->enroll(person, cast);
        for (const char* name : {"live-normal", "phone-photo"})
            (*pack)->measure(sceneNamed(name, person).value(), person, cast);
    }
    const PackFigures::Figures figures = (*pack)->figures();
    EXPECT_EQ(figures.found.of, 6);
    EXPECT_EQ(figures.found.hits, figures.found.of);
    EXPECT_EQ(figures.falseDetections.hits, 0);
    EXPECT_LT(std::ranges::max(figures.pointErrors), 0.12);
    EXPECT_GT(std::ranges::min(figures.same), 0.58);
    EXPECT_LT(std::ranges::max(figures.different), 0.45);
    EXPECT_GT(std::ranges::min(figures.live.at("living")), 0.7);
    EXPECT_LT(std::ranges::max(figures.live.at("phone")), 0.5);
}

}  // namespace
}  // namespace marrowby
