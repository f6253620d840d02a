// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Tests/Fakes/EffectText.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"

#include <functional>
#include <string>

namespace marrowby {

/// An island that remembers what it shows.
class FakePresenting final : public UnlockCoordinator::Presenting {
  public:
    /// Told of every call: "overlay closed".
    std::function<void(std::string)> onCall;
    OverlayPhase shown = OverlayPhase::Hidden{};

    void show(const OverlayPhase& phase) override {
        if (onCall) onCall("overlay " + text(phase));
        shown = phase;
    }
};

}  // namespace marrowby
