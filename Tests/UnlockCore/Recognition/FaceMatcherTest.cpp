#include "UnlockCore/Recognition/FaceMatcher.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr const char* model = "model";
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
const Embedding probe{1, 0, 0};

/// At this cosine to the probe, leaning up or down.
Embedding at(float cosine, float side = 1) {
    return {cosine, side * std::sqrt(1 - cosine * cosine), 0};
}

FaceIdentity person(const std::string& name, std::vector<Embedding> embeddings) {
    FaceIdentity identity;
    identity.name = name;
    identity.modelIdentifier = model;
    identity.dimension = 3;
    for (Embedding& embedding : embeddings) {
        identity.samples.emplace_back().embedding = std::move(embedding);
    }
    return identity;
}

std::string best(const std::vector<FaceIdentity>& people, float threshold,
                 const Embedding& seen = probe) {
    const auto match = facematcher::bestMatch(seen, people, model, threshold);
    return match ? match->identity.name : "";
}

TEST(FaceMatcher, ScoresTemplateAndBestSample) {
    const auto scores =
        facematcher::score(probe,
                           std::vector{person("ann", {at(0.6F), at(0.6F, -1)}), person("bob", {}),
                                       person("cy", {at(-0.5F), {1, 0}})},
                           model);
    ASSERT_EQ(scores.size(), 3U);
    EXPECT_EQ(scores[0].identity.name, "ann");
    EXPECT_NEAR(scores[0].templateSimilarity, 1, 1e-6);
    EXPECT_NEAR(scores[0].bestSampleSimilarity, 0.6, 1e-6);
    EXPECT_EQ(scores[1].identity.name, "bob");
    EXPECT_EQ(scores[1].templateSimilarity, 0);
    EXPECT_EQ(scores[1].bestSampleSimilarity, 0);
    EXPECT_NEAR(scores[2].templateSimilarity, -0.5, 1e-6);
    EXPECT_EQ(scores[2].bestSampleSimilarity, 0) << "a sample of another length counts 0";
}

TEST(FaceMatcher, EqualScoresKeepTheirOrder) {
    const auto scores = facematcher::score(
        probe, std::vector{person("a", {at(0.5F)}), person("b", {at(0.5F)}), person("c", {probe})},
        model);
    ASSERT_EQ(scores.size(), 3U);
    EXPECT_EQ(scores[0].identity.name, "c");
    EXPECT_EQ(scores[1].identity.name, "a");
}

TEST(FaceMatcher, UnusableProbesAndOtherModelsNeverMatch) {
    FaceIdentity other = person("other", {probe});
    other.modelIdentifier = "older";
    FaceIdentity longer = person("longer", {probe});
    longer.dimension = 4;
    EXPECT_TRUE(facematcher::score(probe, std::vector{other, longer}, model).empty());
    for (const Embedding& bad : {Embedding{}, Embedding{0, 0, 0}, Embedding{nan, 0, 0}}) {
        EXPECT_EQ(best({person("ann", {probe})}, 0.5F, bad), "");
    }
    EXPECT_EQ(best({person("ann", {{nan, 0, 0}}), person("bob", {probe})}, 0.5F), "bob");
}

TEST(FaceMatcher, BothSimilaritiesMustReachTheThreshold) {
    const auto leaning = [](float sample) {
        return std::vector{person("ann", {at(sample), at(sample, -1)})};
    };
    EXPECT_EQ(best(leaning(0.49F), 0.5F), "") << "the template alone is close";
    EXPECT_EQ(best({person("ann", {at(0.5F)})}, 0.5F), "ann") << "exactly";
    EXPECT_EQ(best({person("ann", {probe, {0, 1, 0}, {0, 0, 1}})}, 0.6F), "")
        << "one sample alone is close";
}

TEST(FaceMatcher, OnlyTheFirstIsTried) {
    const std::vector people{person("bob", {at(0.69F)}), person("ann", {at(0.4F), at(0.4F, -1)})};
    EXPECT_EQ(best(people, 0.5F), "") << "ann leads by her template and fails by her samples";
}

TEST(FaceMatcher, DisabledIdentitiesAreSkipped) {
    std::vector people{person("ann", {probe}), person("bob", {at(0.7F)})};
    people[0].isEnabled = false;
    EXPECT_EQ(best(people, 0.5F), "bob");
    EXPECT_EQ(facematcher::score(probe, people, model).size(), 2U);
}

TEST(FaceMatcher, ClampsTheThreshold) {
    EXPECT_EQ(facematcher::clampedThreshold(0.3F), 0.43F);
    EXPECT_EQ(facematcher::clampedThreshold(0.55F), 0.55F);
    EXPECT_EQ(facematcher::clampedThreshold(0.95F), 0.8F);
    EXPECT_EQ(facematcher::clampedThreshold(nan), 0.5F);
    EXPECT_EQ(facematcher::clampedThreshold(-std::numeric_limits<float>::infinity()), 0.5F);
    EXPECT_EQ(best({person("ann", {at(0.42F)})}, 0), "");
    EXPECT_EQ(best({person("ann", {at(0.81F)})}, 1), "ann");
}

}  // namespace
}  // namespace marrowby
