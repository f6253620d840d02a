// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/NotificationCenter.h"
#include "UnlockCore/Platform/ScreenLock.h"

#include <optional>
#include <vector>

namespace marrowby {

/// Maps the system's lock, screen saver, sleep and wake notifications to lock events. Main thread.
/// The centres outlive it; destroying it stops it.
class LockMonitor final : public LockEventWatching {
  public:
    LockMonitor(NotificationCenter& workspaceCenter, NotificationCenter& distributedCenter);
    LockMonitor(const LockMonitor&) = delete;
    LockMonitor& operator=(const LockMonitor&) = delete;
    ~LockMonitor() override;

    [[nodiscard]] std::optional<LockEvent> lastEvent() const { return lastEvent_; }
    /// True from a sleep notification until the next wake notification.
    [[nodiscard]] bool isSleeping() const override { return isSleeping_; }

    void start() override;
    void stop() override;

  private:
    struct Registration;
    struct Observer {
        NotificationCenter& center;
        NotificationCenter::Token token;
    };

    void handle(const Registration& registration);

    std::optional<LockEvent> lastEvent_;
    bool isSleeping_ = false;
    std::vector<Observer> observers_;
    NotificationCenter& workspaceCenter_;
    NotificationCenter& distributedCenter_;
};

}  // namespace marrowby
