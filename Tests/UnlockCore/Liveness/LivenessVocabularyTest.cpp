#include "UnlockCore/Liveness/LivenessDecision.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Liveness/LivenessPrompt.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(LivenessVocabulary, cuesAreReadByTheirRawValuesInTheEvaluatorsOrder) {
    struct Row {
        const char* text;
        LivenessCueRole role;
        const char* title;
        const char* denial;
    };
    const Row rows[] = {
        {"realFace", LivenessCueRole::model, "Real-face model",
         "The real-face model saw a photo or a screen, not a face."},
        {"planar", LivenessCueRole::deny, "Flat motion",
         "The face moved as one flat picture does."},
        {"moire", LivenessCueRole::deny, "Screen pattern",
         "A screen’s pixel pattern showed in the face."},
        {"glossGlare", LivenessCueRole::deny, "Glare",
         "Glare like a screen’s: this looks like a photo on a display."},
        {"deviceDetected", LivenessCueRole::deny, "Device frame",
         "A device’s frame around the face: this looks like a photo or a screen."},
        {"headTurn", LivenessCueRole::confirm, "Head turn", "This didn’t look like a real face."},
    };
    ASSERT_EQ(std::size(rows), allLivenessCues.size());
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].text);
        const auto cue = livenessCue(rows[i].text);
        if (!cue) {
            ADD_FAILURE() << "unknown";
            continue;
        }
        EXPECT_EQ(*cue, allLivenessCues[i]);
        EXPECT_EQ(role(*cue), rows[i].role);
        EXPECT_EQ(title(*cue), rows[i].title);
        EXPECT_FALSE(description(*cue).empty());
        EXPECT_EQ(refusalText(LivenessDecision::Denied{*cue}), rows[i].denial);
    }
    for (const char* unknown : {"", "RealFace", "blink"})
        EXPECT_FALSE(livenessCue(unknown));
    EXPECT_FALSE(refusalText(LivenessDecision::Confirmed{}));
    EXPECT_FALSE(refusalText(LivenessDecision::Waiting{LivenessNeeds::headTurn}));
}

TEST(LivenessVocabulary, storedModesAreReadInAnyLetterCase) {
    for (const char* text : {"strict", "Strict", "heavy", "HeaVY"}) {
        EXPECT_EQ(livenessMode(text), LivenessMode::strict) << text;
    }
    for (const char* text : {"standard", "", "light", "strict ", "stric"}) {
        EXPECT_EQ(livenessMode(text), LivenessMode::standard) << text;
    }
    EXPECT_EQ(livenessMode(std::nullopt), LivenessMode::standard);
    for (const LivenessMode mode : {LivenessMode::standard, LivenessMode::strict}) {
        EXPECT_EQ(livenessMode(rawValue(mode)), mode);
    }
}

TEST(LivenessVocabulary, needsAreASetOfBits) {
    const LivenessNeeds both = LivenessNeeds::realFace.with(LivenessNeeds::headTurn);
    EXPECT_EQ(both, LivenessNeeds{3});
    EXPECT_TRUE(both.contains(LivenessNeeds::realFace) && both.contains(LivenessNeeds::headTurn));
    EXPECT_FALSE(LivenessNeeds::headTurn.contains(both));
    EXPECT_TRUE(LivenessNeeds{}.isEmpty());
    EXPECT_FALSE(both.isEmpty());
}

}  // namespace
}  // namespace marrowby
