#include "Unlock/Island.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Size notch{.width = 200, .height = 32};
constexpr Size someSize{.width = 180, .height = 48};

Island at(OverlayPhase phase, double since, const Size& ofNotch = {}) {
    return {.phase = std::move(phase),
            .since = TimeInterval(since),
            .begin = someSize,
            .notch = ofNotch};
}

std::vector<std::string> textsOf(const PanelDrawing& drawing) {
    std::vector<std::string> texts;
    for (const PanelShape& shape : drawing) {
        if (const auto* text = std::get_if<panelshape::Text>(&shape)) texts.push_back(text->text);
    }
    return texts;
}

const OverlayPhase phases[] = {OverlayPhase::Closed{}, OverlayPhase::Scanning{},
                               OverlayPhase::Prompt{}, OverlayPhase::Success{},
                               OverlayPhase::Failure{UnlockFailure::PasswordRejected{}}};

TEST(Island, saysWhatFailedAndNoMore) {
    const std::pair<UnlockFailure, const char*> failures[] = {
        {UnlockFailure::CameraUnavailable{"In use by Anna"}, "Camera unavailable"},
        {UnlockFailure::TypingFailed{"No keyboard"}, "Couldn’t type"},
        {UnlockFailure::NotRecognised{}, "Not recognised"},
        {UnlockFailure::NotLive{}, "Not recognised"},
        {UnlockFailure::PasswordRejected{}, "Password not accepted"},
        {UnlockFailure::NeedsAccessibility{}, "Needs permission"},
    };
    for (const auto& [failure, text] : failures)
        EXPECT_THAT(textsOf(at(OverlayPhase::Failure{failure}, 1).drawing()), ElementsAre(text));
    EXPECT_EQ(at(OverlayPhase::Failure{UnlockFailure::NotLive{}}, 0.4).drawing(),
              at(OverlayPhase::Failure{UnlockFailure::NotRecognised{}}, 0.4).drawing());
    EXPECT_THAT(textsOf(at(OverlayPhase::Prompt{}, 1).drawing()),
                ElementsAre("Turn your head a little"));
}

TEST(Island, comesToRestWhereNothingHasToMove) {
    EXPECT_THAT(at(OverlayPhase::Hidden{}, 0).drawing(), IsEmpty());
    EXPECT_FALSE(at(OverlayPhase::Hidden{}, 0).isMoving());

    EXPECT_FALSE(at(OverlayPhase::Leaving{}, 0.1).drawing().empty());
    EXPECT_TRUE(at(OverlayPhase::Leaving{}, 0.1).isMoving());
    for (const Size& ofNotch : {Size{}, notch}) {
        EXPECT_THAT(at(OverlayPhase::Leaving{}, 0.3, ofNotch).drawing(), IsEmpty());
        EXPECT_FALSE(at(OverlayPhase::Leaving{}, 0.3, ofNotch).isMoving());
    }
    for (const OverlayPhase& phase : phases) {
        const bool goesOn = std::holds_alternative<OverlayPhase::Scanning>(phase) ||
                            std::holds_alternative<OverlayPhase::Prompt>(phase);
        EXPECT_TRUE(at(phase, 0.1).isMoving());
        EXPECT_EQ(at(phase, 1).isMoving(), goesOn) << phase.index();
        EXPECT_EQ(at(phase, 1).drawing() != at(phase, 1.3).drawing(), goesOn) << phase.index();
    }
}

TEST(Island, beginsAsLargeAsItWasAndStaysOnItsPanel) {
    for (const Size& ofNotch : {Size{}, notch}) {
        const Rect panel = Island::frame(
            {.frame = {.x = 100, .y = 50, .width = 1000, .height = 600}, .notch = ofNotch});
        EXPECT_EQ(panel.centre().x, 600);
        EXPECT_EQ(panel.y, 50);
        for (const OverlayPhase& phase : phases) {
            EXPECT_EQ(at(phase, 0, ofNotch).size(), someSize);
            for (double since = 0; since < 1; since += 0.02) {
                const PanelDrawing drawing = at(phase, since, ofNotch).drawing();
                const auto& pill = std::get<panelshape::RoundedRectangle>(drawing.front()).frame;
                EXPECT_GE(pill.x, 0);
                EXPECT_LE(pill.maxX(), panel.width);
                EXPECT_LE(pill.maxY(), panel.height);
            }
        }
    }
    // Around the notch, and what it says below that.
    EXPECT_EQ(at(OverlayPhase::Closed{}, 1, notch).size(), notch);
    const PanelDrawing success = at(OverlayPhase::Success{}, 1, notch).drawing();
    EXPECT_GT(std::get<panelshape::Arc>(success.at(1)).centre.y, notch.height + 14);
}

}  // namespace
}  // namespace marrowby
