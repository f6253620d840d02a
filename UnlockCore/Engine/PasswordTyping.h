// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/TypingOutcome.h"

#include <functional>

namespace marrowby {

/// Types the stored password into the lock screen. Called on the main thread; `stillLocked` is
/// asked on another; the completion comes exactly once, on the main thread.
class PasswordTyping {
  public:
    virtual ~PasswordTyping() = default;
    /// A scan has started, so a typing may follow: the lock screen’s field may be woken.
    virtual void expectTyping(std::function<bool()> /*stillLocked*/) {}
    virtual void typeStoredPassword(std::function<bool()> stillLocked,
                                    std::function<void(TypingOutcome)> completion) = 0;
};

}  // namespace marrowby
