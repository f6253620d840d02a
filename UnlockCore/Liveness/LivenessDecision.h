// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Liveness/LivenessCue.h"

#include <optional>
#include <string_view>
#include <variant>

namespace marrowby {

/// What a waiting decision still lacks: a set of bits.
struct LivenessNeeds {
    int rawValue = 0;

    [[nodiscard]] bool contains(LivenessNeeds needs) const {
        return (rawValue & needs.rawValue) == needs.rawValue;
    }
    [[nodiscard]] bool isEmpty() const { return rawValue == 0; }
    [[nodiscard]] LivenessNeeds with(LivenessNeeds needs) const {
        return {rawValue | needs.rawValue};
    }

    /// The real-face model has not agreed firmly enough yet.
    static const LivenessNeeds realFace;
    /// Strict mode has not seen a head turn yet.
    static const LivenessNeeds headTurn;

    friend bool operator==(const LivenessNeeds&, const LivenessNeeds&) = default;
};

inline constexpr LivenessNeeds LivenessNeeds::realFace{1};
inline constexpr LivenessNeeds LivenessNeeds::headTurn{2};

namespace livenessdecision {

struct Waiting {
    LivenessNeeds needs;
    friend bool operator==(const Waiting&, const Waiting&) = default;
};
struct Denied {
    LivenessCue cue = LivenessCue::realFace;
    friend bool operator==(const Denied&, const Denied&) = default;
};
struct Confirmed {
    friend bool operator==(const Confirmed&, const Confirmed&) = default;
};

}  // namespace livenessdecision

/// A scan's verdict so far: no verdict yet, a photo or a screen, or live.
struct LivenessDecision : std::variant<livenessdecision::Waiting, livenessdecision::Denied,
                                       livenessdecision::Confirmed> {
    using Waiting = livenessdecision::Waiting;
    using Denied = livenessdecision::Denied;
    using Confirmed = livenessdecision::Confirmed;
    using variant::variant;
};

/// Only of a denied decision.
[[nodiscard]] std::optional<Phrase> refusalText(const LivenessDecision& decision);

}  // namespace marrowby
