#pragma once

#include "UnlockCore/LockWatching/ActivityWatching.h"

#include <functional>
#include <string>

namespace marrowby {

class FakeActivityWatching final : public ActivityWatching {
  public:
    /// Told of every call: "watchActivity on", "watchActivity off".
    std::function<void(std::string)> onCall;
    bool isWatching = false;

    void start() override {
        if (onCall) onCall("watchActivity on");
        isWatching = true;
    }
    void stop() override {
        if (onCall) onCall("watchActivity off");
        isWatching = false;
    }
};

}  // namespace marrowby
