// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/ScreenLock.h"

#include <expected>
#include <memory>
#include <string>

namespace marrowby {

/// Lock state of an X display, from a known locker's windows. Blocks for round trips; unknown on a
/// lost display. Any thread.
class X11LockState final : public LockStateReading {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11LockState>, std::string> create(
        const std::string& displayName);
    ~X11LockState() override;

    [[nodiscard]] LockState state() const override;
    [[nodiscard]] SessionLocker locker() const;

  private:
    struct Display;
    explicit X11LockState(std::unique_ptr<const Display> display);

    std::unique_ptr<const Display> display_;
};

}  // namespace marrowby
