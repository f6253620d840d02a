// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/NotificationCenter.h"
#include "UnlockCore/Platform/MainThread.h"

#include <memory>

namespace marrowby {

/// A system notification centre. Notifications arrive on the posting thread or the main thread;
/// handlers always run on a later turn of the main thread, and only for posts after observe(). The
/// main thread outlives it.
class FoundationNotificationCenter final : public NotificationCenter {
  public:
    [[nodiscard]] static std::unique_ptr<NotificationCenter> workspace(MainThread& mainThread);
    /// Notifications of other processes, delivered at once even while this application is inactive.
    [[nodiscard]] static std::unique_ptr<NotificationCenter> distributed(MainThread& mainThread);
    [[nodiscard]] static std::unique_ptr<NotificationCenter> local(MainThread& mainThread);

    ~FoundationNotificationCenter() override;
    FoundationNotificationCenter(const FoundationNotificationCenter&) = delete;
    FoundationNotificationCenter& operator=(const FoundationNotificationCenter&) = delete;

    [[nodiscard]] Token observe(std::string name, std::function<void()> handler) override;
    void remove(Token token) override;
    void post(const std::string& name) override;

  private:
    struct Observers;
    explicit FoundationNotificationCenter(std::shared_ptr<Observers> observers);

    // Main thread only.
    const std::shared_ptr<Observers> observers_;
};

}  // namespace marrowby
