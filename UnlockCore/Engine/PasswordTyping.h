// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/TypingOutcome.h"

#include <functional>

namespace marrowby {

/// Opens the lock screen: types the stored password into it or, where no password is needed, has
/// the desktop open it. Called on the main thread; `stillLocked` may be asked on another; the
/// completion comes exactly once, on the main thread.
class PasswordTyping {
  public:
    virtual ~PasswordTyping() = default;
    /// A scan has started, so a typing may follow: the lock screen’s field may be woken.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): a typer keeps it.
    virtual void expectTyping(std::function<bool()> /*stillLocked*/) {}
    virtual void typeStoredPassword(std::function<bool()> stillLocked,
                                    std::function<void(TypingOutcome)> completion) = 0;
};

}  // namespace marrowby
