// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace marrowby {

/// Which features hold a camera. Claims of one name are counted, so that two holders of that name
/// can come and go independently. Any thread.
class CameraUseRegistry {
  public:
    void claim(std::string_view name);
    /// Withdraws one claim; one that was never made is ignored.
    void withdraw(std::string_view name);

    [[nodiscard]] bool isClaimed(std::string_view name) const;

  private:
    mutable Mutex mutex_;
    std::map<std::string, int, std::less<>> claims_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
