#pragma once

#include "Platforms/macOS/Rules/NotificationCenter.h"
#include "UnlockCore/Platform/MainThread.h"

#include <memory>

namespace marrowby {

/// One of the system's centres. They deliver on whatever thread posts, or on the main thread;
/// handlers here always run on a later turn of the main thread, and not for what was posted before
/// they observed. The main thread outlives it.
class FoundationNotificationCenter final : public NotificationCenter {
  public:
    /// Sleep and wake of the computer and its displays.
    [[nodiscard]] static std::unique_ptr<NotificationCenter> workspace(MainThread& mainThread);
    /// What other processes announce, delivered at once though this application is not active.
    [[nodiscard]] static std::unique_ptr<NotificationCenter> distributed(MainThread& mainThread);
    /// This process's own.
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

    // Only the main thread looks inside.
    const std::shared_ptr<Observers> observers_;
};

}  // namespace marrowby
