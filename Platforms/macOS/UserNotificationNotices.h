// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DesktopNotices.h"
#include "UnlockCore/Platform/MainThread.h"

#include <memory>

namespace marrowby {

/// Notices through the system's notification centre, which asks the user once whether it may show
/// them. Needs an application bundle from the first show() on. The main thread outlives it.
class UserNotificationNotices final : public DesktopNotices {
  public:
    explicit UserNotificationNotices(MainThread& mainThread);
    ~UserNotificationNotices() override;
    UserNotificationNotices(const UserNotificationNotices&) = delete;
    UserNotificationNotices& operator=(const UserNotificationNotices&) = delete;

    void show(const Notice& notice) override;
    void withdraw() override;

  private:
    struct Center;
    MainThread& mainThread_;
    // Main thread only.
    std::shared_ptr<Center> center_;
};

}  // namespace marrowby
