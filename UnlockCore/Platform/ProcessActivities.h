#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace marrowby {

/// What this process does on the user's behalf though it has no window in front. While there is an
/// activity the system does not put off its timers or its work. Main thread.
class ProcessActivities {
  public:
    /// Destroying it ends the activity.
    class Activity {
      public:
        virtual ~Activity() = default;
    };

    virtual ~ProcessActivities() = default;
    /// `reason` is for those who look at the system's list.
    [[nodiscard]] virtual std::unique_ptr<Activity> begin(const std::string& reason) = 0;
};

/// What a Mac is asked for: user-initiated work, during which the computer may still sleep.
namespace macactivity {

inline constexpr std::uint64_t userInitiatedAllowingIdleSystemSleep = 0x00EFFFFF;

}  // namespace macactivity

}  // namespace marrowby
