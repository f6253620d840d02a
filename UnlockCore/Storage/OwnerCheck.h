#pragma once

#include "UnlockCore/Storage/StorageError.h"

#include <expected>
#include <functional>
#include <string>

namespace marrowby {

/// Confirms that the device's owner is there.
class OwnerCheck {
  public:
    using Completion = std::function<void(std::expected<void, StorageError>)>;

    virtual ~OwnerCheck() = default;
    /// Main thread. `reason` completes the sentence of the system's prompt. The completion comes
    /// once, on any thread, possibly before this returns.
    virtual void confirmOwner(const std::string& reason, Completion completion) = 0;
};

}  // namespace marrowby
