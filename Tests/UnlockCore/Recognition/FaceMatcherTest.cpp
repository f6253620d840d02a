// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/FaceMatcher.h"

#include <cmath>
#include <limits>
#include <optional>
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

TEST(FaceMatcher, ScoresTemplateAndBestSampleBestFirst) {
    const auto scores =
        facematcher::score(probe,
                           std::vector{person("cy", {at(-0.5F), {1, 0}}), person("bob", {}),
                                       person("bo", {}), person("ann", {at(0.6F), at(0.6F, -1)})},
                           model);
    ASSERT_EQ(scores.size(), 4U);
    EXPECT_EQ(scores[0].identity.name, "ann");
    EXPECT_NEAR(scores[0].templateSimilarity, 1, 1e-6);
    EXPECT_NEAR(scores[0].bestSampleSimilarity, 0.6, 1e-6);
    EXPECT_EQ(scores[1].identity.name, "bob") << "equal ones keep their order";
    EXPECT_EQ(scores[1].templateSimilarity, 0);
    EXPECT_NEAR(scores[3].templateSimilarity, -0.5, 1e-6);
    EXPECT_EQ(scores[3].bestSampleSimilarity, 0) << "a sample of another length counts 0";
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
    std::vector people{person("bob", {at(0.69F)}), person("ann", {at(0.4F), at(0.4F, -1)})};
    EXPECT_EQ(best(people, 0.5F), "") << "ann leads by her template and fails by her samples";
    people[1].isEnabled = false;
    EXPECT_EQ(best(people, 0.5F), "bob");
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

TEST(FaceEmbedding, TheTemplateIsTheMeanDirection) {
    const std::vector<Embedding> samples{{10, 0}, {1, 2, 3}, {0, 0.5F}};
    const auto mean = faceembedding::meanTemplate(samples);
    ASSERT_TRUE(mean);
    EXPECT_FLOAT_EQ((*mean)[0], std::sqrt(0.5F));
    EXPECT_FLOAT_EQ((*mean)[1], std::sqrt(0.5F));
    EXPECT_EQ(faceembedding::meanTemplate(std::vector<Embedding>{{1, 0}, {-1, 0}}),
              (Embedding{0, 0}));
    EXPECT_EQ(faceembedding::meanTemplate(std::vector<Embedding>{{}, {1}}), std::nullopt);
}

TEST(FaceEmbedding, CosineIgnoresLength) {
    using faceembedding::cosine;
    constexpr float huge = std::numeric_limits<float>::max();
    Embedding a(130);
    Embedding b(130);
    a[3] = 2;
    b[3] = 5;
    a[129] = 2;
    b[129] = -5;
    EXPECT_FLOAT_EQ(cosine(a, b), 0);
    b[129] = 5;
    EXPECT_FLOAT_EQ(cosine(a, b), 1);
    EXPECT_EQ(cosine(Embedding{1, 0}, Embedding{1}), 0);
    EXPECT_EQ(cosine(Embedding{0, 0}, Embedding{1, 0}), 0);
    EXPECT_EQ(cosine(Embedding{huge, huge}, Embedding{huge, huge}), 0);
    EXPECT_EQ(cosine(Embedding{nan, 1}, Embedding{1, 1}), 0);
}

}  // namespace
}  // namespace marrowby
