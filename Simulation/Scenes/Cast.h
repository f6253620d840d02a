// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Person.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <cstdint>
#include <map>

namespace marrowby {

/// Caches people. Any thread.
class Cast {
  public:
    /// The first call for a seed makes the Person.
    [[nodiscard]] Person person(std::uint64_t seed) {
        const MutexLock lock(mutex_);
        return people_.try_emplace(seed, seed).first->second;
    }

  private:
    Mutex mutex_;
    std::map<std::uint64_t, Person> people_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
