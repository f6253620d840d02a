#pragma once

#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/Platform/InputIdle.h"

#include <cstdint>
#include <optional>

namespace marrowby {

/// The idle time of everybody but this process. Main thread. Both outlive it.
class ForeignInputIdle final : public InputIdle {
  public:
    ForeignInputIdle(const InputIdle& idle, const OwnKeystrokes& own) : idle_(idle), own_(own) {}

    [[nodiscard]] TimeInterval secondsSinceLastInput() const override;
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override;
    [[nodiscard]] TimeInterval systemUptime() const override { return idle_.systemUptime(); }

  private:
    /// `idle`, or the time since the input before our own keys.
    [[nodiscard]] TimeInterval withoutOwnKeys(TimeInterval idle) const;

    const InputIdle& idle_;
    const OwnKeystrokes& own_;
    mutable std::optional<TimeInterval> lastForeignInput_;
};

}  // namespace marrowby
