#include "Rehearsal/People/PeopleRenderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <set>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr Vector3 place{.x = 0, .y = 0.02F, .z = 0.6F};

struct Drawn {
    Drawn() : image(320, 240, Vector3{.x = 0.2F, .y = 0.2F, .z = 0.2F}) {}

    LinearImage image;
    FaceTruth truth;
};

class PeopleRendererTest : public testing::Test {
  protected:
    // Making somebody is the slow part.
    static const Person& somebody() {
        static const Person person(distinctPeople().front());
        return person;
    }

    Drawn draw(const PersonPose& pose, const Expression& expression = {},
               const Lighting& lighting = {}) {
        Drawn drawn;
        drawn.truth = renderer.draw(drawn.image, PinholeCamera::webcam(320, 240), somebody(), pose,
                                    expression, lighting);
        return drawn;
    }

    PeopleRenderer renderer;
};

/// Mean of a channel around a point.
float mean(const LinearImage& image, const Point& at, int radius, std::size_t channel) {
    float sum = 0;
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            sum += image.pixel(static_cast<int>(at.x) + x, static_cast<int>(at.y) + y)[channel];
        }
    }
    return sum / static_cast<float>((2 * radius + 1) * (2 * radius + 1));
}

double eyeOpening(const FaceTruth& truth) {
    return (truth.points[66].y - truth.points[62].y) / (truth.points[64].x - truth.points[60].x);
}

TEST_F(PeopleRendererTest, drawsTheSameBytesAgain) {
    const PersonPose pose = facingCamera(place, 0.3F, -0.2F, 0.1F);
    const Expression expression{.blink = 0.3F, .gazeYaw = 0.2F, .mouthOpening = 0.4F};
    const Drawn first = draw(pose, expression);
    draw(facingCamera({.x = 0.1F, .y = 0, .z = 0.4F}));
    const Drawn again = draw(pose, expression);
    EXPECT_EQ(first.image.rgb, again.image.rgb);
    EXPECT_EQ(first.image.coverage, again.image.coverage);

    const Person twin(somebody().seed());
    const Person stranger(somebody().seed() + 1);
    Drawn other;
    renderer.draw(other.image, PinholeCamera::webcam(320, 240), twin, pose, expression);
    EXPECT_EQ(first.image.rgb, other.image.rgb);
    renderer.draw(other.image, PinholeCamera::webcam(320, 240), stranger, pose, expression);
    EXPECT_NE(first.image.rgb, other.image.rgb);
}

TEST_F(PeopleRendererTest, coversThePersonAndNothingElse) {
    const Drawn drawn = draw(facingCamera(place));
    const LinearImage untouched(320, 240, {.x = 0.2F, .y = 0.2F, .z = 0.2F});
    std::size_t partly = 0;
    for (std::size_t i = 0; i < drawn.image.coverage.size(); ++i) {
        const float cover = drawn.image.coverage[i];
        ASSERT_TRUE(cover >= 0 && cover <= 1);
        ASSERT_TRUE(cover > 0 || drawn.image.rgb[i * 3] == untouched.rgb[i * 3]);
        if (cover > 0 && cover < 1) ++partly;
        ASSERT_TRUE(std::isfinite(drawn.image.rgb[i * 3]));
    }
    EXPECT_GT(partly, 100U) << "the edges are soft";
    // No holes: every pixel within the face is covered in full.
    const Rect& box = drawn.truth.box;
    for (const Point& point : drawn.truth.points) {
        const auto x = static_cast<int>(std::lerp(point.x, box.centre().x, 0.1));
        const auto y = static_cast<int>(std::lerp(point.y, box.centre().y, 0.1));
        EXPECT_EQ(drawn.image.coverage[drawn.image.index(x, y)], 1) << x << ' ' << y;
    }
    // Somebody behind the camera or beside the picture is not seen.
    for (const Vector3& away : {Vector3{0, 0, -1}, Vector3{5, 0, 1}, Vector3{0, 0, 0}}) {
        EXPECT_TRUE(std::ranges::all_of(draw({.position = away}).image.coverage,
                                        [](float cover) { return cover == 0; }) ||
                    away == Vector3{});
    }
}

TEST_F(PeopleRendererTest, tellsHowTheHeadIsTurned) {
    for (const Vector3& position : {place, Vector3{.x = -0.25F, .y = 0.1F, .z = 0.8F}}) {
        for (const auto& [yaw, pitch, roll] :
             {std::array{0.F, 0.F, 0.F}, std::array{0.4F, -0.2F, 0.F},
              std::array{-0.3F, 0.25F, 0.15F}}) {
            const FaceTruth truth = draw(facingCamera(position, yaw, pitch, roll)).truth;
            // The line goes to the face, the position is that of the unturned head.
            EXPECT_NEAR(truth.yaw, yaw, 0.08);
            EXPECT_NEAR(truth.pitch, pitch, 0.09);
            EXPECT_NEAR(truth.roll, roll, 0.06);
        }
    }
    const auto nose = [&](float yaw, float pitch) {
        const FaceTruth truth = draw(facingCamera(place, yaw, pitch)).truth;
        return Point{truth.points[54].x - (truth.points[0].x + truth.points[32].x) / 2,
                     truth.points[54].y - (truth.points[0].y + truth.points[32].y) / 2};
    };
    EXPECT_GT(nose(0.3F, 0).x, nose(0, 0).x + 5) << "the person's left is the picture's right";
    EXPECT_LT(nose(0, -0.3F).y, nose(0, 0).y - 5) << "negative is up";
    const FaceTruth tilted = draw(facingCamera(place, 0, 0, 0.2F)).truth;
    EXPECT_LT(tilted.pupils[1].y, tilted.pupils[0].y) << "anticlockwise";
}

TEST_F(PeopleRendererTest, pointsLieWhereTheFaceIs) {
    const FaceTruth truth = draw(facingCamera(place)).truth;
    const auto& p = truth.points;
    EXPECT_LT(p[0].x, p[16].x);
    EXPECT_LT(p[16].x, p[32].x);
    EXPECT_GT(p[16].y, p[85].y);
    EXPECT_LT(p[33].x, p[37].x);
    EXPECT_LT(p[42].x, p[46].x);
    EXPECT_LT(p[35].y, p[62].y) << "brows over eyes";
    EXPECT_LT(p[51].y, p[54].y);
    EXPECT_LT(p[76].x, p[82].x);
    EXPECT_LT(p[79].y, p[85].y);
    EXPECT_EQ(p[96], truth.pupils[0]);
    EXPECT_NEAR(p[96].x, (p[60].x + p[64].x) / 2, 3);
    // About 63 mm between the eyes.
    EXPECT_NEAR(p[97].x - p[96].x, 0.063 / 0.6 * 0.74 * 320, 7);
    for (const Point& point : p)
        EXPECT_TRUE(point.x >= truth.box.x && point.y <= truth.box.maxY());
}

TEST_F(PeopleRendererTest, blinksLooksAndSpeaks) {
    const PersonPose pose = facingCamera({.x = 0, .y = 0, .z = 0.4F});
    const Drawn open = draw(pose);
    const Drawn shut = draw(pose, {.blink = 1});
    EXPECT_GT(eyeOpening(open.truth), 0.18);
    EXPECT_LT(eyeOpening(shut.truth), 0.06);
    const Point pupil = open.truth.pupils[0];
    const auto white = [&](const Drawn& drawn) {
        // Blue against red: skin is warm, the white of the eye is not.
        const Point at{std::lerp(pupil.x, open.truth.points[60].x, 0.65), pupil.y};
        return mean(drawn.image, at, 0, 2) / mean(drawn.image, at, 0, 0);
    };
    EXPECT_GT(white(open), 1.25F * white(shut));

    const Drawn aside = draw(pose, {.gazeYaw = 0.4F});
    EXPECT_GT(aside.truth.pupils[0].x, pupil.x + 1.5);
    const Drawn speaking = draw(pose, {.mouthOpening = 1});
    EXPECT_GT(speaking.truth.points[85].y, open.truth.points[85].y + 8);
    const Point mouth{(speaking.truth.points[90].x + speaking.truth.points[94].x) / 2,
                      (speaking.truth.points[90].y + speaking.truth.points[94].y) / 2};
    EXPECT_LT(mean(speaking.image, mouth, 1, 0), 0.4F * mean(open.image, mouth, 1, 0));
}

TEST_F(PeopleRendererTest, isLitFromWhereTheLightIs) {
    const auto sides = [&](float x) {
        const Drawn drawn =
            draw(facingCamera(place), {}, {.keyDirection = {.x = x, .y = -0.2F, .z = -0.5F}});
        const auto& p = drawn.truth.points;
        const auto cheek = [&](std::size_t contour) {
            return mean(
                drawn.image,
                {std::lerp(p[contour].x, p[54].x, 0.35), std::lerp(p[contour].y, p[54].y, 0.35)}, 2,
                1);
        };
        return cheek(6) / cheek(26);
    };
    EXPECT_GT(sides(-1), 1.5F);
    EXPECT_LT(sides(1), 0.67F);
}

TEST(DistinctPeople, areTwoHundred) {
    const auto people = distinctPeople();
    EXPECT_GE(people.size(), 200U);
    EXPECT_EQ(std::set(people.begin(), people.end()).size(), people.size());
}

}  // namespace
}  // namespace marrowby
