#pragma once

#include "Rehearsal/People/Person.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <cstdint>
#include <map>

namespace marrowby {

/// Everybody who has been asked for, made once. Any thread.
class Cast {
  public:
    /// The first time takes as long as making a Person.
    [[nodiscard]] Person person(std::uint64_t seed) {
        const MutexLock lock(mutex_);
        return people_.try_emplace(seed, seed).first->second;
    }

  private:
    Mutex mutex_;
    std::map<std::uint64_t, Person> people_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
