// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DesktopNotices.h"
#include "UnlockCore/Platform/PlatformWords.h"

#include <cstdint>
#include <functional>

namespace marrowby {

/// Asks for the owner's check by a notice, after a login until it was passed once. Main thread; the
/// notices outlive it.
class OwnerReminder {
  public:
    struct Facts {
        /// Nothing but the check is missing.
        bool isCheckMissing = false;
        bool isCheckPassed = false;
        bool isScreenLocked = false;
    };

    OwnerReminder(DesktopNotices& notices, const PlatformWords& words,
                  std::function<void()> onConfirm);
    /// Withdraws the notice.
    ~OwnerReminder();
    OwnerReminder(const OwnerReminder&) = delete;
    OwnerReminder& operator=(const OwnerReminder&) = delete;

    void update(const Facts& facts);

  private:
    /// An answered notice comes again after the next lock; one that the user has closed, too.
    enum class Phase : std::uint8_t { waiting, asking, answered, over };

    void press();
    void leave(Phase next);

    DesktopNotices& notices_;
    const PlatformWords& words_;
    const std::function<void()> onConfirm_;
    Phase phase_ = Phase::waiting;
};

}  // namespace marrowby
