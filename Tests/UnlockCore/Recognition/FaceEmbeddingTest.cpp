#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using namespace faceembedding;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float huge = std::numeric_limits<float>::max();

TEST(FaceEmbedding, UsableIsFiniteAndNotZero) {
    EXPECT_TRUE(isUsable(Embedding{0, -1e-20F}));
    for (const Embedding& bad : {Embedding{}, Embedding{0, 0}, Embedding{1, nan},
                                 Embedding{1, std::numeric_limits<float>::infinity()}}) {
        EXPECT_FALSE(isUsable(bad));
    }
}

TEST(FaceEmbedding, NormalizedHasUnitLengthWherePossible) {
    EXPECT_EQ(normalized(Embedding{3, 0, 4, 0, 0}), (Embedding{0.6F, 0, 0.8F, 0, 0}));
    EXPECT_EQ(normalized(Embedding{0, 0}), (Embedding{0, 0}));
    EXPECT_EQ(normalized(Embedding{huge, huge}), (Embedding{huge, huge}));
    EXPECT_TRUE(std::isnan(normalized(Embedding{nan, 1})[0]));
}

TEST(FaceEmbedding, TheTemplateIsTheMeanDirection) {
    const std::vector<Embedding> samples{{10, 0}, {1, 2, 3}, {0, 0.5F}};
    const auto mean = meanTemplate(samples);
    ASSERT_TRUE(mean);
    EXPECT_FLOAT_EQ((*mean)[0], std::sqrt(0.5F));
    EXPECT_FLOAT_EQ((*mean)[1], std::sqrt(0.5F));
    EXPECT_EQ(meanTemplate(std::vector<Embedding>{{1, 0}, {-1, 0}}), (Embedding{0, 0}));
    EXPECT_EQ(meanTemplate({}), std::nullopt);
    EXPECT_EQ(meanTemplate(std::vector<Embedding>{{}, {1}}), std::nullopt);
}

TEST(FaceEmbedding, CosineIsTheAngleAlone) {
    Embedding a(130);
    Embedding b(130);
    a[3] = 2;
    b[3] = 5;
    a[129] = 2;
    b[129] = -5;
    EXPECT_FLOAT_EQ(cosine(a, a), 1);
    EXPECT_FLOAT_EQ(cosine(a, b), 0);
    b[129] = 5;
    EXPECT_FLOAT_EQ(cosine(a, b), 1);
    EXPECT_EQ(cosine(Embedding{1, 0}, Embedding{1}), 0);
    EXPECT_EQ(cosine(Embedding{}, Embedding{}), 0);
    EXPECT_EQ(cosine(Embedding{0, 0}, Embedding{1, 0}), 0);
    EXPECT_EQ(cosine(Embedding{huge, huge}, Embedding{huge, huge}), 0);
    EXPECT_EQ(cosine(Embedding{nan, 1}, Embedding{1, 1}), 0);
}

}  // namespace
}  // namespace marrowby
