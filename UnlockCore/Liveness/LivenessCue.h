// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace marrowby {

/// One measured sign of a live face or of a picture, in the order in which the evaluator checks
/// them.
enum class LivenessCue { realFace, planar, moire, glossGlare, deviceDetected, headTurn };

/// What a cue may do to the decision: be the model's judgement, deny, or confirm.
enum class LivenessCueRole { model, deny, confirm };

inline constexpr std::array allLivenessCues{LivenessCue::realFace,       LivenessCue::planar,
                                            LivenessCue::moire,          LivenessCue::glossGlare,
                                            LivenessCue::deviceDetected, LivenessCue::headTurn};

[[nodiscard]] std::optional<LivenessCue> livenessCue(std::string_view rawValue);

[[nodiscard]] std::string_view rawValue(LivenessCue cue);
[[nodiscard]] LivenessCueRole role(LivenessCue cue);
[[nodiscard]] Phrase title(LivenessCue cue);
[[nodiscard]] Phrase description(LivenessCue cue);
[[nodiscard]] Phrase denialMessage(LivenessCue cue);

/// One cue in one frame: how strongly it is present and how far the measurement can be trusted,
/// both 0…1. Two zeros mean that nothing was measured.
struct CueReading {
    float level = 0;
    float confidence = 0;

    friend bool operator==(const CueReading&, const CueReading&) = default;
};

/// A scan's state of one cue. `hasFired` never goes back.
struct LivenessCueState {
    CueReading reading;
    std::int64_t framesCounted = 0;
    bool hasFired = false;

    friend bool operator==(const LivenessCueState&, const LivenessCueState&) = default;
};

}  // namespace marrowby
