#pragma once

#include "UnlockCore/Platform/LockStateReading.h"

#include <expected>
#include <memory>
#include <string>

namespace marrowby {

/// The lock of the session behind an X display: a known locker's windows. Each call asks the X
/// server, so that it may wait for it; of a lost display nothing is known. Any thread.
class X11LockState final : public LockStateReading {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11LockState>, std::string> create(
        const std::string& displayName);
    ~X11LockState() override;

    [[nodiscard]] LockState state() const override;

  private:
    struct Display;
    explicit X11LockState(std::unique_ptr<const Display> display);

    std::unique_ptr<const Display> display_;
};

}  // namespace marrowby
