#pragma once

#include "UnlockCore/LockWatching/SpaceKeyListening.h"

#include <functional>
#include <string>

namespace marrowby {

class FakeSpaceKeyListening final : public SpaceKeyListening {
  public:
    bool denied = false;
    /// Told of every call: "listenForSpace on", "listenForSpace off".
    std::function<void(std::string)> onCall;
    bool isListening = false;

    [[nodiscard]] bool hasAccess() const override { return !denied; }
    void start() override {
        if (onCall) onCall("listenForSpace on");
        isListening = true;
    }
    void stop() override {
        if (onCall) onCall("listenForSpace off");
        isListening = false;
    }
};

}  // namespace marrowby
