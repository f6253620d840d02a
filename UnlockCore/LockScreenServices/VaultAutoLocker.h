// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Storage/Vault.h"

#include <functional>
#include <memory>
#include <optional>

namespace marrowby {

/// Locks the vault once it has gone unused for the limit; checks every five minutes while started.
/// Main thread.
class VaultAutoLocker {
  public:
    /// `limit` is asked at every check; nothing means never.
    VaultAutoLocker(Vault& vault, std::function<std::optional<TimeInterval>()> limit,
                    MainThread& mainThread, SystemClock& clock);

    /// Checks at once, too; nothing while started.
    void start();
    void stop();
    void check(Date now);

  private:
    Vault& vault_;
    std::function<std::optional<TimeInterval>()> limit_;
    MainThread& mainThread_;
    SystemClock& clock_;
    std::unique_ptr<MainThread::Timer> timer_;
};

}  // namespace marrowby
