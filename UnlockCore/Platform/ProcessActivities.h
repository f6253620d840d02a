// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace marrowby {

/// Work for the user without a window in front. While an activity exists, the system does not defer
/// this process's timers or work. Main thread.
class ProcessActivities {
  public:
    /// Destroying it ends the activity.
    class Activity {
      public:
        virtual ~Activity() = default;
    };

    virtual ~ProcessActivities() = default;
    /// `reason` is shown in the system's list.
    [[nodiscard]] virtual std::unique_ptr<Activity> begin(const std::string& reason) = 0;
};

/// NSActivityOptions of macOS.
namespace macactivity {

inline constexpr std::uint64_t userInitiatedAllowingIdleSystemSleep = 0x00EFFFFF;

}  // namespace macactivity

}  // namespace marrowby
