// SPDX-License-Identifier: Apache-2.0
#include "Kit/CameraUseRegistry.h"

#include "UnlockCore/Foundation/Fatal.h"

namespace marrowby {

void CameraUseRegistry::claim(std::string_view name) {
    const MutexLock lock(mutex_);
    int& count = claims_[std::string(name)];
    count = incremented(count);
}

void CameraUseRegistry::withdraw(std::string_view name) {
    const MutexLock lock(mutex_);
    const auto found = claims_.find(name);
    if (found == claims_.end()) return;
    if (--found->second == 0) claims_.erase(found);
}

bool CameraUseRegistry::isClaimed(std::string_view name) const {
    const MutexLock lock(mutex_);
    return claims_.contains(name);
}

}  // namespace marrowby
