#pragma once

#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/NotificationCenter.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace marrowby {

/// Notifications within this process. Who starts to observe after a post does not get it. The main
/// thread outlives it.
class LocalNotificationCenter final : public NotificationCenter {
  public:
    explicit LocalNotificationCenter(MainThread& mainThread);
    ~LocalNotificationCenter() override;

    [[nodiscard]] Token observe(std::string name, std::function<void()> handler) override;
    void remove(Token token) override;
    void post(const std::string& name) override;

  private:
    struct Observers;

    MainThread& mainThread_;
    std::atomic<std::uint64_t> lastToken_ = 0;
    // Only the main thread looks inside.
    const std::shared_ptr<Observers> observers_;
};

}  // namespace marrowby
