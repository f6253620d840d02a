// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessDecision.h"

namespace marrowby {

std::optional<Phrase> refusalText(const LivenessDecision& decision) {
    const auto* denied = std::get_if<LivenessDecision::Denied>(&decision);
    return denied ? std::optional(denialMessage(denied->cue)) : std::nullopt;
}

}  // namespace marrowby
