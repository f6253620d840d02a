// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Island/Island.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

PanelDrawing drawing(const OverlayPhase& phase, double since) {
    return Island{.phase = phase, .since = TimeInterval(since), .begin = {}, .notch = {}}.drawing();
}

std::vector<std::string> textsOf(const OverlayPhase& phase) {
    std::vector<std::string> texts;
    for (const PanelShape& shape : drawing(phase, 1)) {
        if (const auto* text = std::get_if<panelshape::Text>(&shape)) texts.push_back(text->text);
    }
    return texts;
}

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
        EXPECT_THAT(textsOf(OverlayPhase::Failure{failure}), ElementsAre(text));
    EXPECT_EQ(drawing(OverlayPhase::Failure{UnlockFailure::NotLive{}}, 0.4),
              drawing(OverlayPhase::Failure{UnlockFailure::NotRecognised{}}, 0.4));
    EXPECT_THAT(textsOf(OverlayPhase::Prompt{}), ElementsAre("Turn your head a little"));
}

}  // namespace
}  // namespace marrowby
